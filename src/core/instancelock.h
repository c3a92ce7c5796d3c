// One running copy per data folder: an advisory, exclusive, non-blocking flock on
// <directory>/.lock, held for the life of the process. The kernel drops it when the descriptor
// closes or the process dies, so a crashed copy never leaves a stale lock; the file itself is
// never deleted.
#pragma once

#include <QString>

namespace tock {

class InstanceLock {
public:
    // Why the last acquire() returned false.
    enum class Failure {
        none,
        heldElsewhere, // another process holds the lock: another copy is running
        cannotOpen,    // the folder or the lock file cannot be made or opened; see reason()
    };

    // Touches no file.
    explicit InstanceLock(const QString &directory);
    // Releases.
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    // True when this process now holds the lock. Creates the folder if needed; never follows a
    // link at .lock and never waits. On failure, failure() and reason() say why. On success the
    // file holds this process's id and a line feed (unless it has other names, which are left
    // untouched).
    bool acquire();
    // Gives the lock up; does nothing when not held.
    void release();
    bool isHeld() const { return fd_ >= 0; }
    QString path() const { return path_; }
    Failure failure() const { return failure_; }
    // The system's text for cannotOpen ("Permission denied"); empty otherwise.
    QString reason() const { return reason_; }

private:
    bool refuse(Failure failure, QString reason = {});

    int fd_ = -1;
    QString path_;
    Failure failure_ = Failure::none;
    QString reason_;
};

} // namespace tock

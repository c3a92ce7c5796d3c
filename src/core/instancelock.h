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
    // Held, and the folder's path still names the folder that was locked, with this lock file
    // in it: false once the folder was moved, deleted or replaced (or its .lock was), so that
    // nothing is written into a folder another copy may have locked meanwhile. Two stat calls.
    bool coversFolder() const;
    // Takes the lock at the path again after the folder was moved, deleted or replaced (creating
    // it): on success the old lock is given up, on failure (failure(), reason()) it is kept.
    bool reacquire();
    QString path() const { return path_; }
    Failure failure() const { return failure_; }
    // The system's text for cannotOpen ("Permission denied"); empty otherwise.
    QString reason() const { return reason_; }

private:
    bool refuse(Failure failure, QString reason = {});

    // Opens and locks the lock file; -1 on failure (failure_ and reason_ set).
    int lockFile(unsigned long long &folderDevice, unsigned long long &folderInode);

    int fd_ = -1;
    QString path_;
    // The locked folder's identity, taken when the lock was.
    unsigned long long folderDevice_ = 0, folderInode_ = 0;
    Failure failure_ = Failure::none;
    QString reason_;
};

} // namespace tock

// One running copy per data folder: an advisory, exclusive, non-blocking flock on
// <directory>/.lock, held for the life of the process. The kernel drops it when the descriptor
// closes or the process dies, so a crashed copy never leaves a stale lock; the file itself is
// never deleted.
#pragma once

#include <QString>

namespace tock {

class InstanceLock {
public:
    // Touches no file.
    explicit InstanceLock(const QString &directory);
    // Releases.
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    // True when this process now holds the lock. Creates the folder if needed. Every failure
    // (folder or file cannot be made, another process holds it) is just false; no waiting.
    // On success the file holds this process's id and a line feed.
    bool acquire();
    // Gives the lock up; does nothing when not held.
    void release();
    bool isHeld() const { return fd_ >= 0; }
    QString path() const { return path_; }

private:
    int fd_ = -1;
    QString path_;
};

} // namespace tock

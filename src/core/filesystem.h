// Every file operation the store makes, behind one interface so that tests can make any of them
// fail (a full disk, a folder that cannot be created) even when running as root. The real
// implementation is a thin layer over POSIX calls.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace tock {

// A refused file operation. `reason` is the system's own text ("No space left on device");
// the store puts it into a sentence that names the file.
struct FileSystemError {
    QString reason;
    bool operator==(const FileSystemError &) const = default;
};

// All operations throw FileSystemError by value. Paths are absolute.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    // The process's shared real file system.
    static std::shared_ptr<FileSystem> real();

    // True when a file or folder is at the path (links followed).
    virtual bool exists(const QString &path) = 0;
    // Creates the folder and any missing parents; an existing folder is fine.
    virtual void createDirectories(const QString &path) = 0;
    // The whole content of a file.
    virtual QByteArray read(const QString &path) = 0;
    // Creates an empty file, emptying one already there.
    virtual void createFile(const QString &path) = 0;
    // Replaces the content of an existing file and waits until the device has it (F_FULLFSYNC
    // on macOS, fsync elsewhere) before closing. On failure the file may hold part of `data`.
    virtual void writeSynced(const QString &path, const QByteArray &data) = 0;
    // POSIX rename: atomically replaces whatever is at `to`. The reason is strerror's text.
    virtual void rename(const QString &from, const QString &to) = 0;
    // Moves a file or a whole folder; refuses when something is already at `to`.
    virtual void move(const QString &from, const QString &to) = 0;
    // Copies a file, leaving the source alone. The copy appears whole and flushed, or not at
    // all; refuses when something is already at `to`.
    virtual void copy(const QString &from, const QString &to) = 0;
    // Deletes one file.
    virtual void remove(const QString &path) = 0;
    // Flushes a folder's entries so that renames inside it survive a power cut. Best effort:
    // some file systems cannot, and the rename itself has already happened. Never throws.
    virtual void syncDirectory(const QString &path) = 0;
};

} // namespace tock

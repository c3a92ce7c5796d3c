// Every file operation the store makes, behind one interface so that tests can make any of them
// fail (a full disk, a folder that cannot be created) even when running as root. The real
// implementation is a thin layer over POSIX calls.
#pragma once

#include "timer.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace tock {

// A refused file operation. `reason` is the system's own text ("No space left on device");
// the store puts it into a sentence that names the file.
struct FileSystemError {
    QString reason;
    bool operator==(const FileSystemError &) const = default;
};

// The most Tock reads of one file: anything larger is not a timers file, and reading it whole
// would only exhaust memory.
inline constexpr qint64 maximumReadSize = 64 * 1024 * 1024;

// All operations throw FileSystemError by value. Paths are absolute. Nothing that creates or
// writes a file follows a symbolic link: the one link Tock writes through (timers.json) is
// resolved by the caller with resolveLinks() first. "Links followed" below means: only a chain
// of links that all belong to the user running Tock and that ends at a file of that user (or at
// nothing); any other link counts as a special file (not a regular file, never read or copied).
// Files are created private to the user (0600).
class FileSystem {
public:
    virtual ~FileSystem() = default;

    // The process's shared real file system.
    static std::shared_ptr<FileSystem> real();

    // True when a file or folder is at the path (links followed).
    virtual bool exists(const QString &path) = 0;
    // What is at the path, links followed: `special` is a pipe, device or socket.
    enum class Kind { missing, regular, directory, special };
    virtual Kind kind(const QString &path) = 0;
    // The names in a folder, hidden ones included (not "." and ".."); empty when it cannot be
    // listed.
    virtual QStringList list(const QString &folder) = 0;
    // Creates the folder and any missing parents; an existing folder is fine.
    virtual void createDirectories(const QString &path) = 0;
    // The whole content of a regular file (links followed). Never blocks on a pipe or device:
    // anything else fails with "not a regular file", and a file over maximumReadSize with
    // "larger than 64 MB".
    virtual QByteArray read(const QString &path) = 0;
    // Where the chain of symbolic links that starts at `path` ends (that need not exist); `path`
    // itself when it is no link.
    virtual QString resolveLinks(const QString &path) = 0;
    // The permission bits worth keeping when the file at the path (links followed) is replaced:
    // those of a regular file of this user, less group and world write and the special bits;
    // nothing for anything else.
    virtual std::optional<int> permissions(const QString &path) = 0;
    // When the file at the path (links followed) was last modified, or nothing when absent.
    virtual std::optional<Instant> modified(const QString &path) = 0;
    // Creates a new empty file; refuses when anything is already at the path, a link included.
    virtual void createFile(const QString &path) = 0;
    // Replaces the content of an existing regular file with a single link (not through a link)
    // and waits until the device has it (F_FULLFSYNC on macOS, fsync elsewhere) before closing.
    // On failure the file may hold part of `data`.
    virtual void writeSynced(const QString &path, const QByteArray &data) = 0;
    // Sets a file's permission bits exactly (no umask); refuses a link.
    virtual void setPermissions(const QString &path, int permissions) = 0;
    // POSIX rename: atomically replaces whatever is at `to` (a link itself, not its target).
    // The reason is strerror's text.
    virtual void rename(const QString &from, const QString &to) = 0;
    // Moves a file or a whole folder; refuses when something is already at `to`.
    virtual void move(const QString &from, const QString &to) = 0;
    // Copies a file, leaving the source alone. The copy appears whole and flushed, or not at
    // all; refuses when something is already at `to`.
    virtual void copy(const QString &from, const QString &to) = 0;
    // Deletes one name (a link, not its target).
    virtual void remove(const QString &path) = 0;
    // Flushes a folder's entries so that renames inside it survive a power cut. Best effort:
    // some file systems cannot, and the rename itself has already happened. Never throws.
    virtual void syncDirectory(const QString &path) = 0;
};

} // namespace tock

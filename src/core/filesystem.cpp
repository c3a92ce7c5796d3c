#include "filesystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tock {

namespace {

[[noreturn]] void fail(int error)
{
    throw FileSystemError{QString::fromLocal8Bit(std::strerror(error))};
}

[[noreturn]] void fail(const char *reason)
{
    throw FileSystemError{QString::fromLatin1(reason)};
}

QByteArray native(const QString &path) { return QFile::encodeName(path); }

const char *const notRegular = "not a regular file";
const char *const tooLarge = "larger than 64 MB";

// Closes on scope exit unless released; keeps the error paths below short.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return fd_; }
    // Closes now and reports the close's own failure, which on some file systems is the first
    // sign of a failed write.
    void close()
    {
        const int fd = fd_;
        fd_ = -1;
        if (::close(fd) != 0 && errno != EINTR)
            fail(errno);
    }

private:
    int fd_;
};

int openOrFail(const QString &path, int flags, mode_t mode = 0600)
{
    int fd;
    do {
        fd = ::open(native(path).constData(), flags | O_CLOEXEC, mode);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        fail(errno);
    return fd;
}

bool syncToDevice(int fd)
{
#ifdef Q_OS_MACOS
    // fsync on macOS only reaches the drive's cache; F_FULLFSYNC waits for the platters. Some
    // file systems refuse it, and then fsync is the best there is.
    if (::fcntl(fd, F_FULLFSYNC) == 0)
        return true;
#endif
    return ::fsync(fd) == 0;
}

void writeAll(int fd, const QByteArray &data)
{
    const char *p = data.constData();
    qsizetype left = data.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, size_t(left));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            fail(errno);
        }
        p += n;
        left -= n;
    }
}

// A new file that nothing was at before: never a link's target, never an existing file's content.
// Private to this user.
int createExclusive(const QString &path)
{
    return openOrFail(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
}

// Whether a link at the path may be followed: every link on the way and what it leads to (when
// anything) belong to the user running Tock, so nobody else can steer a read or a write to a
// file of their choosing. True for anything that is no link.
bool followable(const QString &path)
{
    const uid_t self = ::geteuid();
    QString current = path;
    for (int hop = 0; hop < 40; ++hop) {
        struct stat st;
        if (::lstat(native(current).constData(), &st) != 0)
            return hop > 0 || errno == ENOENT; // a link to nothing: nothing to be steered to
        if (!S_ISLNK(st.st_mode))
            return hop == 0 || st.st_uid == self;
        if (st.st_uid != self)
            return false;
        QByteArray target(qsizetype(st.st_size > 0 ? st.st_size : PATH_MAX) + 1, '\0');
        const ssize_t n = ::readlink(native(current).constData(), target.data(), size_t(target.size()));
        if (n < 0)
            return false;
        target.truncate(n);
        const QString next = QFile::decodeName(target);
        current = QDir::isAbsolutePath(next) ? next : QFileInfo(current).path() + QLatin1Char('/') + next;
    }
    return false;
}

bool isDirectory(const QString &path)
{
    struct stat st;
    return ::stat(native(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

class RealFileSystem final : public FileSystem {
public:
    bool exists(const QString &path) override
    {
        struct stat st;
        return ::stat(native(path).constData(), &st) == 0;
    }

    void createDirectories(const QString &path) override
    {
        if (isDirectory(path))
            return;
        // A parent that is a file is left for mkdir to report as "Not a directory".
        const QString parent = QFileInfo(path).path();
        if (!parent.isEmpty() && parent != path && !exists(parent))
            createDirectories(parent);
        if (::mkdir(native(path).constData(), 0755) != 0 && !(errno == EEXIST && isDirectory(path)))
            fail(errno);
    }

    Kind kind(const QString &path) override
    {
        // A link someone else could steer counts as neither a file nor a folder.
        if (!followable(path))
            return Kind::special;
        struct stat st;
        if (::stat(native(path).constData(), &st) != 0)
            return Kind::missing;
        return S_ISREG(st.st_mode) ? Kind::regular : S_ISDIR(st.st_mode) ? Kind::directory : Kind::special;
    }

    QStringList list(const QString &folder) override
    {
        // Names only: a directory listing that looks at each entry costs a start a lot more.
        QStringList names;
        DIR *dir = ::opendir(native(folder).constData());
        if (!dir)
            return names;
        while (const dirent *entry = ::readdir(dir)) {
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                names << QFile::decodeName(entry->d_name);
        }
        ::closedir(dir);
        names.sort();
        return names;
    }

    QByteArray read(const QString &path) override
    {
        // Checked before opening, so that a device is never opened at all, and again on the
        // descriptor, which is what is read; non-blocking, so a pipe cannot hang the open.
        struct stat st;
        if (::stat(native(path).constData(), &st) != 0)
            fail(errno);
        if (!S_ISREG(st.st_mode) || !followable(path))
            fail(notRegular);
        Descriptor fd(openOrFail(path, O_RDONLY | O_NONBLOCK));
        if (::fstat(fd.get(), &st) != 0)
            fail(errno);
        if (!S_ISREG(st.st_mode))
            fail(notRegular);
        if (st.st_size > maximumReadSize)
            fail(tooLarge);
        QByteArray data;
        char buffer[65536];
        for (;;) {
            const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                fail(errno);
            }
            if (n == 0)
                break;
            // A file that grows while it is read is held to the same limit.
            if (data.size() + n > maximumReadSize)
                fail(tooLarge);
            data.append(buffer, n);
        }
        return data;
    }

    QString resolveLinks(const QString &path) override
    {
        if (!followable(path))
            return path;
        QString current = path;
        for (int hop = 0; hop < 40; ++hop) {
            struct stat st;
            if (::lstat(native(current).constData(), &st) != 0 || !S_ISLNK(st.st_mode))
                return current;
            QByteArray target(qsizetype(st.st_size > 0 ? st.st_size : PATH_MAX) + 1, '\0');
            const ssize_t n = ::readlink(native(current).constData(), target.data(), size_t(target.size()));
            if (n < 0)
                fail(errno);
            target.truncate(n);
            const QString next = QFile::decodeName(target);
            current = QDir::isAbsolutePath(next) ? next : QFileInfo(current).path() + QLatin1Char('/') + next;
        }
        fail(ELOOP);
    }

    std::optional<int> permissions(const QString &path) override
    {
        struct stat st;
        if (!followable(path) || ::stat(native(path).constData(), &st) != 0 || !S_ISREG(st.st_mode)
            || st.st_uid != ::geteuid())
            return std::nullopt;
        return int(st.st_mode & 0755);
    }

    std::optional<Instant> modified(const QString &path) override
    {
        struct stat st;
        if (!followable(path) || ::stat(native(path).constData(), &st) != 0)
            return std::nullopt;
#ifdef Q_OS_MACOS
        return Instant(st.st_mtimespec.tv_sec) + st.st_mtimespec.tv_nsec / 1e9;
#else
        return Instant(st.st_mtim.tv_sec) + st.st_mtim.tv_nsec / 1e9;
#endif
    }

    void createFile(const QString &path) override
    {
        Descriptor fd(createExclusive(path));
        fd.close();
    }

    void setPermissions(const QString &path, int permissions) override
    {
        Descriptor fd(openOrFail(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
        if (::fchmod(fd.get(), mode_t(permissions)) != 0)
            fail(errno);
    }

    void writeSynced(const QString &path, const QByteArray &data) override
    {
        // Whatever was put at the path since it was created must not receive the data: no link
        // (O_NOFOLLOW), no pipe (non-blocking, then the type check), no second name of another
        // file.
        Descriptor fd(openOrFail(path, O_WRONLY | O_NOFOLLOW | O_NONBLOCK));
        struct stat st;
        if (::fstat(fd.get(), &st) != 0)
            fail(errno);
        if (!S_ISREG(st.st_mode))
            fail(notRegular);
        if (st.st_nlink != 1)
            fail("has more than one name");
        if (::ftruncate(fd.get(), 0) != 0)
            fail(errno);
        writeAll(fd.get(), data);
        if (!syncToDevice(fd.get()))
            fail(errno);
        fd.close();
    }

    void rename(const QString &from, const QString &to) override
    {
        if (::rename(native(from).constData(), native(to).constData()) != 0)
            fail(errno);
    }

    void move(const QString &from, const QString &to) override
    {
        // Moves stay inside the data folder, so a rename does it; the check keeps a move from
        // replacing anything.
        if (exists(to))
            fail(EEXIST);
        rename(from, to);
    }

    void copy(const QString &from, const QString &to) override
    {
        if (exists(to))
            fail(EEXIST);
        const QByteArray data = read(from);
        const QFileInfo target(to);
        const QString temporary = target.path() + QStringLiteral("/.") + target.fileName()
                                  + QStringLiteral(".copy.tmp");
        // The temporary name is this program's own; one left by a killed copy goes first.
        ::unlink(native(temporary).constData());
        try {
            Descriptor fd(createExclusive(temporary));
            writeAll(fd.get(), data);
            if (!syncToDevice(fd.get()))
                fail(errno);
            fd.close();
            move(temporary, to);
        } catch (const FileSystemError &) {
            ::unlink(native(temporary).constData());
            throw;
        }
        syncDirectory(target.path());
    }

    void remove(const QString &path) override
    {
        if (::unlink(native(path).constData()) != 0)
            fail(errno);
    }

    void syncDirectory(const QString &path) override
    {
        const int fd = ::open(native(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0)
            return;
        syncToDevice(fd);
        ::close(fd);
    }
};

} // namespace

std::shared_ptr<FileSystem> FileSystem::real()
{
    static const std::shared_ptr<FileSystem> shared = std::make_shared<RealFileSystem>();
    return shared;
}

} // namespace tock

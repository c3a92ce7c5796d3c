#include "filesystem.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tock {

namespace {

[[noreturn]] void fail(int error)
{
    throw FileSystemError{QString::fromLocal8Bit(std::strerror(error))};
}

QByteArray native(const QString &path) { return QFile::encodeName(path); }

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

int openOrFail(const QString &path, int flags, mode_t mode = 0644)
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

    QByteArray read(const QString &path) override
    {
        Descriptor fd(openOrFail(path, O_RDONLY));
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
            data.append(buffer, n);
        }
        return data;
    }

    void createFile(const QString &path) override
    {
        Descriptor fd(openOrFail(path, O_WRONLY | O_CREAT | O_TRUNC));
        fd.close();
    }

    void writeSynced(const QString &path, const QByteArray &data) override
    {
        Descriptor fd(openOrFail(path, O_WRONLY | O_TRUNC));
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
        try {
            Descriptor fd(openOrFail(temporary, O_WRONLY | O_CREAT | O_TRUNC));
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

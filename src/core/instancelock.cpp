#include "instancelock.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tock {

namespace {

QString systemText(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

// The first folder on the way that cannot be made, with the system's reason; empty when the
// folder is there.
QString makeFolder(const QString &folder)
{
    struct stat st;
    if (::stat(QFile::encodeName(folder).constData(), &st) == 0)
        return S_ISDIR(st.st_mode) ? QString() : systemText(ENOTDIR);
    const QString parent = QFileInfo(folder).path();
    if (parent != folder) {
        const QString problem = makeFolder(parent);
        if (!problem.isEmpty())
            return problem;
    }
    if (::mkdir(QFile::encodeName(folder).constData(), 0755) != 0 && errno != EEXIST)
        return systemText(errno);
    return {};
}

} // namespace

InstanceLock::InstanceLock(const QString &directory) : path_(directory + QStringLiteral("/.lock")) {}

InstanceLock::~InstanceLock() { release(); }

bool InstanceLock::refuse(Failure failure, QString reason)
{
    failure_ = failure;
    reason_ = std::move(reason);
    return false;
}

bool InstanceLock::acquire()
{
    if (fd_ >= 0)
        return true;
    failure_ = Failure::none;
    reason_.clear();
    const QString folderProblem = makeFolder(QFileInfo(path_).path());
    if (!folderProblem.isEmpty())
        return refuse(Failure::cannotOpen, folderProblem);
    const QByteArray path = QFile::encodeName(path_);
    // Opened without following a link and, when missing, created exclusively, so that a link
    // planted at .lock never leads the truncation below to another file. Non-blocking, so a
    // pipe there cannot hang the start.
    const int flags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 3; ++attempt) {
        fd = ::open(path.constData(), flags);
        if (fd < 0 && errno == ENOENT)
            fd = ::open(path.constData(), flags | O_CREAT | O_EXCL, 0644);
        if (fd < 0 && errno != EEXIST && errno != EINTR)
            break;
    }
    if (fd < 0) {
        const int error = errno;
        struct stat st;
        const bool link = ::lstat(path.constData(), &st) == 0 && S_ISLNK(st.st_mode);
        return refuse(Failure::cannotOpen, link ? QStringLiteral("it is a symbolic link") : systemText(error));
    }
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return refuse(Failure::cannotOpen, QStringLiteral("it is not a regular file"));
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        ::close(fd);
        if (error == EWOULDBLOCK)
            return refuse(Failure::heldElsewhere);
        return refuse(Failure::cannotOpen, systemText(error));
    }
    fd_ = fd;
    // Informational only; nobody reads it back, so a failed write changes nothing. A file with
    // other names is some other file's content as well: left alone.
    const QByteArray pid = QByteArray::number(qint64(::getpid())) + '\n';
    if (st.st_nlink == 1 && ::ftruncate(fd_, 0) == 0)
        (void)!::pwrite(fd_, pid.constData(), size_t(pid.size()), 0);
    return true;
}

void InstanceLock::release()
{
    if (fd_ < 0)
        return;
    ::flock(fd_, LOCK_UN);
    ::close(fd_);
    fd_ = -1;
}

} // namespace tock

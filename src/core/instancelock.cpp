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
    fd_ = lockFile(folderDevice_, folderInode_);
    return fd_ >= 0;
}

bool InstanceLock::reacquire()
{
    unsigned long long device = 0, inode = 0;
    const int fd = lockFile(device, inode);
    if (fd < 0)
        return false;
    release();
    fd_ = fd;
    folderDevice_ = device;
    folderInode_ = inode;
    return true;
}

bool InstanceLock::coversFolder() const
{
    if (fd_ < 0)
        return false;
    struct stat folder, file, held;
    return ::stat(QFile::encodeName(QFileInfo(path_).path()).constData(), &folder) == 0
        && (unsigned long long)folder.st_dev == folderDevice_ && (unsigned long long)folder.st_ino == folderInode_
        && ::lstat(QFile::encodeName(path_).constData(), &file) == 0 && ::fstat(fd_, &held) == 0
        && file.st_dev == held.st_dev && file.st_ino == held.st_ino;
}

int InstanceLock::lockFile(unsigned long long &folderDevice, unsigned long long &folderInode)
{
    failure_ = Failure::none;
    reason_.clear();
    const auto refused = [this](Failure failure, QString reason = {}) {
        refuse(failure, std::move(reason));
        return -1;
    };
    const QString folder = QFileInfo(path_).path();
    const QString folderProblem = makeFolder(folder);
    if (!folderProblem.isEmpty())
        return refused(Failure::cannotOpen, folderProblem);
    // The folder is opened once and the lock file opened inside it, so the identity recorded is
    // that of the folder the lock file is in, even if the path changes meanwhile.
    const int dir = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir < 0)
        return refused(Failure::cannotOpen, systemText(errno));
    struct stat folderStatus;
    if (::fstat(dir, &folderStatus) != 0) {
        const int error = errno;
        ::close(dir);
        return refused(Failure::cannotOpen, systemText(error));
    }
    const QByteArray name = QFile::encodeName(QFileInfo(path_).fileName());
    // Opened without following a link and, when missing, created exclusively, so that a link
    // planted at .lock never leads the truncation below to another file. Non-blocking, so a
    // pipe there cannot hang the start. Private to this user.
    const int flags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 3; ++attempt) {
        fd = ::openat(dir, name.constData(), flags);
        if (fd < 0 && errno == ENOENT)
            fd = ::openat(dir, name.constData(), flags | O_CREAT | O_EXCL, 0600);
        if (fd < 0 && errno != EEXIST && errno != EINTR)
            break;
    }
    if (fd < 0) {
        const int error = errno;
        struct stat st;
        const bool link = ::fstatat(dir, name.constData(), &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode);
        ::close(dir);
        return refused(Failure::cannotOpen, link ? QStringLiteral("it is a symbolic link") : systemText(error));
    }
    ::close(dir);
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return refused(Failure::cannotOpen, QStringLiteral("it is not a regular file"));
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        ::close(fd);
        if (error == EWOULDBLOCK)
            return refused(Failure::heldElsewhere);
        return refused(Failure::cannotOpen, systemText(error));
    }
    folderDevice = (unsigned long long)folderStatus.st_dev;
    folderInode = (unsigned long long)folderStatus.st_ino;
    // Informational only; nobody reads it back, so a failed write changes nothing. A file with
    // other names is some other file's content as well: left alone.
    // Written over in place, cut only when the old one was longer: emptying the file first
    // would free and allocate its block again at every start.
    const QByteArray pid = QByteArray::number(qint64(::getpid())) + '\n';
    if (st.st_nlink == 1 && ::pwrite(fd, pid.constData(), size_t(pid.size()), 0) == pid.size() && st.st_size > pid.size())
        (void)!::ftruncate(fd, pid.size());
    return fd;
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

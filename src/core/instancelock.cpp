#include "instancelock.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tock {

InstanceLock::InstanceLock(const QString &directory) : path_(directory + QStringLiteral("/.lock")) {}

InstanceLock::~InstanceLock() { release(); }

bool InstanceLock::acquire()
{
    if (fd_ >= 0)
        return true;
    QDir().mkpath(QFileInfo(path_).path());
    const int fd = ::open(QFile::encodeName(path_).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return false;
    }
    fd_ = fd;
    // Informational only; nobody reads it back, so a failed write changes nothing.
    const QByteArray pid = QByteArray::number(qint64(::getpid())) + '\n';
    if (::ftruncate(fd_, 0) == 0)
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

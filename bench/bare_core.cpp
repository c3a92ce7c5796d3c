// The yardsticks for terminal_bench: the least a Qt Core command-line program costs that writes
// one small file, as `tock --shell` writes its data file; with "durable", written the way Tock
// saves it (a staged copy flushed to the disk, renamed over the file, the folder flushed).
#include <QCoreApplication>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc < 2)
        return 2;
    const bool durable = argc > 2 && std::strcmp(argv[2], "durable") == 0;
    const QString target = QString::fromLocal8Bit(argv[1]);
    QFile file(durable ? target + QStringLiteral(".tmp") : target);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write("{\"timers\":[]}\n") <= 0)
        return 1;
    if (!durable)
        return 0;
    if (!file.flush() || ::fsync(file.handle()) != 0)
        return 1;
    file.close();
    if (std::rename(QFile::encodeName(file.fileName()).constData(), argv[1]) != 0)
        return 1;
    const QByteArray folder = QFile::encodeName(target.left(target.lastIndexOf(QLatin1Char('/')) + 1));
    const int fd = ::open(folder.isEmpty() ? "." : folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool synced = fd >= 0 && ::fsync(fd) == 0;
    if (fd >= 0)
        ::close(fd);
    return synced ? 0 : 1;
}

// The yardstick for terminal_bench: the least a Qt Core command-line program costs that writes
// one small file, as `tock --shell` writes its data file.
#include <QCoreApplication>
#include <QFile>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2)
        return 2;
    QFile file(QString::fromLocal8Bit(argv[1]));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 1;
    return file.write("{\"timers\":[]}\n") > 0 ? 0 : 1;
}

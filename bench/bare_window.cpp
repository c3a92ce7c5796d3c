// The yardstick for bench/measure-window: the least a Qt widget window costs, one label of text
// in a window of Tock's size, measured the same way as Tock itself.
#include <QApplication>
#include <QLabel>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QLabel label(QStringLiteral("Timer 1   01:00:00"));
    label.setWindowTitle(QStringLiteral("bare"));
    label.resize(256, 300);
    label.show();
    return QApplication::exec();
}

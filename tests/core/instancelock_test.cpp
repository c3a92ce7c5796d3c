#include "faultyfilesystem.h"
#include "instancelock.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <iostream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

using namespace tock;
using namespace tock::testing;

namespace {

const QByteArray ownPid = QByteArray::number(qint64(::getpid())) + '\n';

// Another copy of this test binary, holding (or failing to take) the lock on `directory`.
// It says "held" or "refused", then obeys "release" on its standard input until it closes.
void startHolder(QProcess &holder, const QString &directory)
{
    holder.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--hold-lock"), directory});
}

QByteArray nextLine(QProcess &holder)
{
    while (!holder.canReadLine())
        if (!holder.waitForReadyRead(10000))
            return "(no answer)";
    return holder.readLine().trimmed();
}

int holdLock(const char *directory)
{
    InstanceLock lock(QString::fromLocal8Bit(directory));
    std::cout << (lock.acquire() ? "held" : "refused") << std::endl;
    for (std::string line; std::getline(std::cin, line);)
        if (line == "release") {
            lock.release();
            std::cout << "released" << std::endl;
        }
    return 0;
}

} // namespace

class InstanceLockTest : public QObject {
    Q_OBJECT
private slots:
    void withinOneProcess()
    {
        QTemporaryDir dir;
        const QString folder = dir.path() + QStringLiteral("/not/yet");
        InstanceLock a(folder), b(folder);
        QCOMPARE(a.path(), folder + QStringLiteral("/.lock"));
        a.release();  // safe when not held
        QVERIFY(!QFileInfo::exists(folder));  // nothing touched before acquiring
        QVERIFY(a.acquire() && a.isHeld());
        QCOMPARE(readFile(a.path()), ownPid);
        QVERIFY(!b.acquire() && !b.isHeld());
#ifdef Q_OS_LINUX
        // A child process must not inherit the lock and keep it after this one dies.
        int descriptors = 0;
        for (const QFileInfo &fd : QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::System | QDir::Files))
            if (fd.symLinkTarget() == a.path()) {
                ++descriptors;
                QVERIFY(::fcntl(fd.fileName().toInt(), F_GETFD) & FD_CLOEXEC);
            }
        QCOMPARE(descriptors, 1);
#endif
        a.release();
        a.release();
        QVERIFY(!a.isHeld() && QFileInfo::exists(a.path()));
        writeFile(a.path(), "123456789 left over by an old copy\n");
        QVERIFY(b.acquire());
        QCOMPARE(readFile(b.path()), ownPid);
        InstanceLock refused(a.path() + QStringLiteral("/Tock"));  // a file where the folder should be
        QVERIFY(!refused.acquire() && !refused.isHeld());
    }

    void excludesASecondProcess()
    {
        QTemporaryDir dir;
        InstanceLock mine(dir.path());
        QProcess holder, other;
        startHolder(holder, dir.path());
        QCOMPARE(nextLine(holder), QByteArray("held"));
        QVERIFY(!mine.acquire());
        startHolder(other, dir.path());
        QCOMPARE(nextLine(other), QByteArray("refused"));
        other.closeWriteChannel();
        QVERIFY(other.waitForFinished());
        holder.write("release\n");
        QCOMPARE(nextLine(holder), QByteArray("released"));
        QVERIFY(mine.acquire());
        mine.release();
        holder.closeWriteChannel();
        QVERIFY(holder.waitForFinished());
        // Freed when the holder ends normally and when it is killed: no stale lock.
        for (const bool kill : {false, true}) {
            startHolder(holder, dir.path());
            QCOMPARE(nextLine(holder), QByteArray("held"));
            QVERIFY(!mine.acquire());
            if (kill)
                ::kill(pid_t(holder.processId()), SIGKILL);
            else
                holder.closeWriteChannel();
            QVERIFY(holder.waitForFinished());
            QCOMPARE(holder.exitStatus(), kill ? QProcess::CrashExit : QProcess::NormalExit);
            QVERIFY(mine.acquire());
            mine.release();
        }
    }
};

int main(int argc, char **argv)
{
    if (argc == 3 && std::string(argv[1]) == "--hold-lock")
        return holdLock(argv[2]);
    QCoreApplication app(argc, argv);
    InstanceLockTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "instancelock_test.moc"

#include "faultyfilesystem.h"
#include "instancelock.h"
#include "table.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <iostream>
#include <limits>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tock;
using namespace tock::testing;

namespace {

const QByteArray ownPid = QByteArray::number(qint64(::getpid())) + '\n';

// What a second copy of this test binary does: takes the lock on `directory`, says "held" or
// "refused", and holds it until its standard input closes.
int holdLock(const char *directory)
{
    InstanceLock lock(QString::fromLocal8Bit(directory));
    std::cout << (lock.acquire() ? "held" : "refused") << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max()); // until standard input closes
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
        QCOMPARE(b.failure(), InstanceLock::Failure::heldElsewhere);
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
        QCOMPARE(b.failure(), InstanceLock::Failure::none);
    }

    // What is at .lock or at the folder's place when the lock cannot be opened at all: told
    // apart from another copy, with the reason, and nothing outside the folder is touched.
    void cannotOpen_data()
    {
        // reason: empty: the lock is taken
        table<QString, QString, QString>({"case", "plant", "reason"}, {
            {"folder is a file", "file", "Not a directory"},
            {"lock links to a file", "link", "it is a symbolic link"},
            {"lock is a dangling link", "dangling", "it is a symbolic link"},
            {"lock is a pipe", "fifo", "it is not a regular file"},
            {"lock is a second name", "hardlink", ""},
        });
    }
    void cannotOpen()
    {
        QFETCH(QString, plant);
        QFETCH(QString, reason);
        QTemporaryDir dir;
        const QString victim = dir.filePath("victim"), folder = dir.filePath(plant == "file" ? "victim/Tock" : "data");
        writeFile(victim, "precious");
        QDir().mkpath(dir.filePath("data"));
        const QString lock = dir.filePath("data/.lock");
        if (plant == "link")
            QFile::link(victim, lock);
        else if (plant == "dangling")
            QFile::link(dir.filePath("nowhere"), lock);
        else if (plant == "fifo")
            QCOMPARE(::mkfifo(QFile::encodeName(lock).constData(), 0644), 0);
        else if (plant == "hardlink")
            QCOMPARE(::link(QFile::encodeName(victim).constData(), QFile::encodeName(lock).constData()), 0);
        InstanceLock l(folder);
        QCOMPARE(l.acquire(), reason.isEmpty());
        QCOMPARE(l.failure(), reason.isEmpty() ? InstanceLock::Failure::none : InstanceLock::Failure::cannotOpen);
        QCOMPARE(l.reason(), reason);
        QCOMPARE(readFile(victim), QByteArray("precious"));
        QVERIFY(!QFileInfo::exists(dir.filePath("nowhere")));
    }

    // The lock covers the folder at its path only while that path still names the folder (and
    // the lock file) that was locked; reacquire() takes the path's folder again.
    void coversFolder_data()
    {
        table<QString, QString, bool>({"case", "change", "covers"}, {
            {"unchanged", "", true},
            {"moved and back", "mv back", true},
            {"deleted", "rm", false},
            {"replaced by a new folder", "replace", false},
            {"lock file replaced", "new lock", false},
        });
    }
    void coversFolder()
    {
        QFETCH(QString, change);
        QFETCH(bool, covers);
        QTemporaryDir dir;
        const QString folder = dir.filePath("data"), away = dir.filePath("away");
        InstanceLock lock(folder);
        QVERIFY(lock.acquire());
        QCOMPARE(modeOf(lock.path()), 0600);
        if (change.startsWith("mv") || change == "replace")
            QVERIFY(QDir().rename(folder, away));
        if (change == "mv back")
            QVERIFY(QDir().rename(away, folder));
        if (change == "rm")
            QVERIFY(QDir(folder).removeRecursively());
        if (change == "replace")
            QVERIFY(QDir().mkpath(folder));
        if (change == "new lock")
            QVERIFY(QFile::remove(lock.path()) && QFile(lock.path()).open(QIODevice::WriteOnly));
        QCOMPARE(lock.coversFolder(), covers);
        InstanceLock other(folder);
        QCOMPARE(other.acquire(), !covers); // what the lock no longer covers, another copy can take
        if (covers)
            return;
        QVERIFY(!lock.reacquire());         // ... and then not this one: it keeps the old lock
        QCOMPARE(lock.failure(), InstanceLock::Failure::heldElsewhere);
        QVERIFY(lock.isHeld());
        other.release();
        QVERIFY(lock.reacquire());
        QVERIFY(lock.coversFolder());
        QVERIFY(!other.acquire());
    }

    // Refused while another process holds it, and freed when that one is killed: no stale lock.
    // (A normal end: startup_test secondCopyRefusedWhileTheFirstRuns.)
    void excludesASecondProcess()
    {
        QTemporaryDir dir;
        InstanceLock mine(dir.path());
        QProcess holder;
        holder.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--hold-lock"), dir.path()});
        while (!holder.canReadLine())
            QVERIFY(holder.waitForReadyRead(10000));
        QCOMPARE(holder.readLine().trimmed(), QByteArray("held"));
        QVERIFY(!mine.acquire());
        ::kill(pid_t(holder.processId()), SIGKILL);
        QVERIFY(holder.waitForFinished());
        QCOMPARE(holder.exitStatus(), QProcess::CrashExit);
        QVERIFY(mine.acquire());
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

#include "instancelock.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

using namespace tock;

namespace {

QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Another copy of this test binary, holding (or failing to take) the lock on `directory`.
// It says "held" or "refused", then obeys "release" on its standard input.
class Holder {
public:
    explicit Holder(const QString &directory)
    {
        process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--hold-lock"), directory});
        QVERIFY2(process.waitForStarted(), "helper did not start");
    }
    ~Holder()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
    }
    QByteArray nextLine()
    {
        while (!process.canReadLine())
            if (!process.waitForReadyRead(10000))
                return "(no answer)";
        return process.readLine().trimmed();
    }
    QProcess process;
};

int holdLock(const char *directory)
{
    InstanceLock lock(QString::fromLocal8Bit(directory));
    std::cout << (lock.acquire() ? "held" : "refused") << std::endl;
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line == "release") {
            lock.release();
            std::cout << "released" << std::endl;
        }
    }
    return 0;
}

} // namespace

class InstanceLockTest : public QObject {
    Q_OBJECT
private slots:
    void createsTheFolderAndWritesItsProcessId()
    {
        QTemporaryDir dir;
        const QString folder = dir.path() + QStringLiteral("/not/yet");

        InstanceLock lock(folder);
        QCOMPARE(lock.path(), folder + QStringLiteral("/.lock"));
        QVERIFY(!lock.isHeld());
        QVERIFY(!QFileInfo::exists(folder));  // constructing touches nothing
        QVERIFY(lock.acquire());
        QVERIFY(lock.isHeld());
        QCOMPARE(readFile(lock.path()), QByteArray::number(qint64(::getpid())) + '\n');
    }

    void overwritesALongerOldProcessId()
    {
        QTemporaryDir dir;
        QFile stale(dir.path() + QStringLiteral("/.lock"));
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.write("123456789 left over by an old copy\n");
        stale.close();
        InstanceLock lock(dir.path());
        QVERIFY(lock.acquire());
        QCOMPARE(readFile(lock.path()), QByteArray::number(qint64(::getpid())) + '\n');
        lock.release();
        QVERIFY(QFileInfo::exists(lock.path()));  // never deleted
    }

    void releaseIsSafeAnyTime()
    {
        QTemporaryDir dir;
        InstanceLock lock(dir.path());
        lock.release();
        QVERIFY(lock.acquire());
        lock.release();
        lock.release();
        QVERIFY(!lock.isHeld());
        QVERIFY(lock.acquire());
    }

    void failsWhenTheFolderCannotBeMade()
    {
        QTemporaryDir dir;
        QFile file(dir.path() + QStringLiteral("/file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        InstanceLock lock(dir.path() + QStringLiteral("/file/Tock"));
        QVERIFY(!lock.acquire());
        QVERIFY(!lock.isHeld());
    }

    void theDescriptorIsNotInherited()
    {
#ifdef Q_OS_LINUX
        QTemporaryDir dir;
        InstanceLock lock(dir.path());
        QVERIFY(lock.acquire());
        int found = 0;
        for (const QFileInfo &entry : QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::System | QDir::Files)) {
            if (entry.symLinkTarget() == lock.path()) {
                ++found;
                QVERIFY(::fcntl(entry.fileName().toInt(), F_GETFD) & FD_CLOEXEC);
            }
        }
        QCOMPARE(found, 1);
#else
        QSKIP("needs /proc");
#endif
    }

    void excludesASecondProcess()
    {
        QTemporaryDir dir;
        InstanceLock mine(dir.path());
        {
            Holder first(dir.path());
            QCOMPARE(first.nextLine(), QByteArray("held"));
            QVERIFY(!mine.acquire());
            QVERIFY(!mine.isHeld());
            first.process.write("release\n");
            QCOMPARE(first.nextLine(), QByteArray("released"));
            QVERIFY(mine.acquire());
        }
        {
            Holder second(dir.path());
            QCOMPARE(second.nextLine(), QByteArray("refused"));
        }
        mine.release();
        {
            // Freed when the holder ends normally...
            Holder third(dir.path());
            QCOMPARE(third.nextLine(), QByteArray("held"));
            third.process.closeWriteChannel();
            QVERIFY(third.process.waitForFinished());
            QVERIFY(mine.acquire());
            mine.release();
        }
        {
            // ...and when it is killed: no stale lock.
            Holder fourth(dir.path());
            QCOMPARE(fourth.nextLine(), QByteArray("held"));
            QVERIFY(!mine.acquire());
            ::kill(pid_t(fourth.process.processId()), SIGKILL);
            QVERIFY(fourth.process.waitForFinished());
            QVERIFY(mine.acquire());
        }
    }

    void excludesASecondCopyInOneProcess()
    {
        QTemporaryDir dir;
        InstanceLock a(dir.path()), b(dir.path());
        QVERIFY(a.acquire());
        QVERIFY(!b.acquire());
        a.release();
        QVERIFY(b.acquire());
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

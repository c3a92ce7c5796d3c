// Kills a process that saves as fast as it can, hundreds of times at random moments, and checks
// after each kill that timers.json and every backup are whole snapshots that process wrote, and
// that the history opens, passes its check and holds every run closed before the kill.
#include "faultyfilesystem.h"
#include "history.h"
#include "store.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <chrono>
#include <csignal>
#include <iostream>
#include <string>
#include <thread>

using namespace tock;
using namespace tock::testing;

namespace {

constexpr qint64 baseSeconds = 1794772403;
constexpr qint64 numbersPerRun = 1000000;

// Snapshot number n: deterministic, of varying length, recognisable from its savedAt.
Snapshot numbered(qint64 n)
{
    Snapshot s;
    s.savedAt = QDateTime::fromSecsSinceEpoch(baseSeconds + n, QTimeZone::utc());
    s.style = (n % 3 == 0) ? std::nullopt : std::optional<QString>(QStringLiteral("flap"));
    for (int i = 0; i < 1 + n % 7; ++i) {
        const QString name = QStringLiteral("timer %1.%2").arg(n).arg(i);
        s.timers.append({QUuid::createUuidV5(QUuid(), name), name, double(n % 1000) + i * 0.25, (n + i) % 2 == 0});
    }
    return s;
}

// The number of the snapshot `data` holds if runs 0...lastRun wrote it, else -1.
qint64 recognise(const QByteArray &data, qint64 lastRun)
{
    try {
        const Snapshot s = Snapshot::decode(data);
        const qint64 n = s.savedAt.toSecsSinceEpoch() - baseSeconds;
        if (n >= 0 && n < (lastRun + 1) * numbersPerRun && s == numbered(n))
            return n;
    } catch (const StoreError &) {
    }
    return -1;
}

// The helper: loads like a starting program, then saves numbered snapshots until killed.
// Rotates backups on every third save so that kills land in rotations too.
int saveLoop(const QString &directory, qint64 first)
{
    Store store(directory, 3, 3);
    const Store::LoadResult result = store.load(0);
    if (!std::holds_alternative<Store::LoadResult::Loaded>(result.value) && !std::holds_alternative<Store::LoadResult::Fresh>(result.value)) {
        std::cout << "bad load" << std::endl;
        return 3;
    }
    std::cout << "ready" << std::endl;
    try {
        store.rotateBackups();
        for (qint64 n = first;; ++n)
            store.save(numbered(n), Instant(n));
    } catch (const StoreError &e) {
        std::cout << "save failed: " << e.description().toStdString() << std::endl;
        return 4;
    }
}

const QUuid loopTimer = QUuid::createUuidV5(QUuid(), QStringLiteral("loop"));

// The number of runs the history holds closed.
qint64 closedRuns(History &history)
{
    qint64 n = 0;
    for (const History::Interval &i : history.intervals())
        n += i.end ? 1 : 0;
    return n;
}

// The history helper: opens the history as a starting program would, then starts and ends runs
// as fast as it can, each its own transaction, and after each end prints how many runs are closed.
int historyLoop(const QString &directory)
{
    try {
        History history(directory + QStringLiteral("/") + History::fileName(), History::Access::write);
        history.transaction([&] { history.closeAllIntervals(0); });
        qint64 closed = closedRuns(history);
        std::cout << "ready" << std::endl;
        for (Instant t = 1;; t += 1) {
            history.transaction([&] { history.openInterval(loopTimer, t); });
            history.transaction([&] { history.closeInterval(loopTimer, t + 0.5); });
            std::cout << ++closed << std::endl;
        }
    } catch (const HistoryError &e) {
        std::cout << "history failed: " << e.message.toStdString() << std::endl;
        return 4;
    }
}

} // namespace

class StoreCrashTest : public QObject {
    Q_OBJECT
private slots:
    void survivesBeingKilledWhileSaving()
    {
        QTemporaryDir dir;
        // CI keeps the count short; scripts/soak raises it.
        const int kills = qEnvironmentVariableIsSet("TOCK_CRASH_KILLS") ? qEnvironmentVariableIntValue("TOCK_CRASH_KILLS") : 250;
        QElapsedTimer clock;
        clock.start();
        qint64 highest = -1, savesSeen = 0;
        for (int run = 0; run < kills; ++run) {
            QProcess helper;
            helper.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--save-loop"), dir.path(), QString::number(run * numbersPerRun)});
            while (!helper.canReadLine())
                QVERIFY2(helper.waitForReadyRead(20000), "helper never became ready");
            QCOMPARE(helper.readLine().trimmed(), QByteArray("ready"));
            // A random moment inside the save loop; this wait is the point of the test.
            std::this_thread::sleep_for(std::chrono::microseconds(QRandomGenerator::global()->bounded(40000)));
            ::kill(pid_t(helper.processId()), SIGKILL);
            QVERIFY(helper.waitForFinished());
            // It must have died of our signal, not of its own failure.
            QVERIFY2(helper.readAllStandardOutput().isEmpty(), "the helper reported a failure");
            QVERIFY2(helper.exitStatus() == QProcess::CrashExit && helper.exitCode() == SIGKILL, helper.readAllStandardError().constData());

            if (!QFileInfo::exists(dir.filePath(QStringLiteral("timers.json")))) {
                QCOMPARE(highest, -1);  // only possible while no save has ever completed
                continue;
            }
            const qint64 n = recognise(readFile(dir.filePath(QStringLiteral("timers.json"))), run);
            QVERIFY2(n >= 0, qPrintable(QStringLiteral("timers.json is not a written snapshot after kill %1").arg(run)));
            highest = std::max(highest, n);
            savesSeen += (n >= run * numbersPerRun) ? n - run * numbersPerRun + 1 : 0;
            for (int b = 1; b <= 3; ++b) {
                const QString backup = dir.filePath(QStringLiteral("Backups/timers-%1.json").arg(b));
                QVERIFY2(!QFileInfo::exists(backup) || recognise(readFile(backup), run) >= 0,
                         qPrintable(QStringLiteral("backup %1 is not whole after kill %2").arg(b).arg(run)));
            }
            QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("Damaged"))));
        }
        QVERIFY2(savesSeen >= kills / 4, "too few saves completed for the kills to mean much");
        qInfo("%d kills in %lld ms; about %lld saves completed", kills, clock.elapsed(), savesSeen);
    }

    void historySurvivesBeingKilled()
    {
        QTemporaryDir dir;
        const int kills = qEnvironmentVariableIsSet("TOCK_CRASH_KILLS") ? qEnvironmentVariableIntValue("TOCK_CRASH_KILLS") : 100;
        QElapsedTimer clock;
        clock.start();
        qint64 reported = 0;
        for (int run = 0; run < kills; ++run) {
            QProcess helper;
            helper.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--history-loop"), dir.path()});
            while (!helper.canReadLine())
                QVERIFY2(helper.waitForReadyRead(20000), "helper never became ready");
            QCOMPARE(helper.readLine().trimmed(), QByteArray("ready"));
            std::this_thread::sleep_for(std::chrono::microseconds(QRandomGenerator::global()->bounded(40000)));
            ::kill(pid_t(helper.processId()), SIGKILL);
            QVERIFY(helper.waitForFinished());
            QVERIFY2(helper.exitStatus() == QProcess::CrashExit && helper.exitCode() == SIGKILL, helper.readAllStandardError().constData());
            // What it said it had closed before it died, it has.
            for (const QByteArray &line : helper.readAllStandardOutput().split('\n')) {
                if (!line.isEmpty())
                    reported = std::max(reported, line.toLongLong());
            }
            History history(dir.filePath(History::fileName()), History::Access::write);
            history.quickCheck();
            QVERIFY2(closedRuns(history) >= reported,
                     qPrintable(QStringLiteral("kill %1: %2 runs closed, %3 reported").arg(run).arg(closedRuns(history)).arg(reported)));
        }
        QVERIFY2(reported >= kills, "too few runs completed for the kills to mean much");
        qInfo("%d kills in %lld ms; %lld runs closed", kills, clock.elapsed(), reported);
    }
};

int main(int argc, char **argv)
{
    if (argc == 3 && std::string(argv[1]) == "--history-loop")
        return historyLoop(QString::fromLocal8Bit(argv[2]));
    if (argc == 4 && std::string(argv[1]) == "--save-loop")
        return saveLoop(QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toLongLong());
    QCoreApplication app(argc, argv);
    StoreCrashTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "store_crash_test.moc"

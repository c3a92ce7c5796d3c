// Kills a process that saves as fast as it can, hundreds of times at random moments, and checks
// after each kill that timers.json and every backup are whole snapshots that process wrote.
#include "faultyfilesystem.h"
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
};

int main(int argc, char **argv)
{
    if (argc == 4 && std::string(argv[1]) == "--save-loop")
        return saveLoop(QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toLongLong());
    QCoreApplication app(argc, argv);
    StoreCrashTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "store_crash_test.moc"

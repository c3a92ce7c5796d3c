#include "faultyfilesystem.h"
#include "store.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <unistd.h>

using namespace tock;
using namespace tock::testing;
using Op = FaultyFileSystem::Op;
using Result = Store::LoadResult;

namespace {

const QDateTime clockTime(QDate(2026, 11, 15), QTime(3, 4, 5, 6));
const QString stampText = QStringLiteral("2026-11-15T03-04-05-006");
const QString pausedMessage = QStringLiteral("Saving is paused because the existing data could not be read.");

// A valid snapshot told apart by its one timer's name.
Snapshot snap(const QString &tag)
{
    Snapshot s;
    s.savedAt = QDateTime::fromSecsSinceEpoch(1794772403, QTimeZone::utc());
    s.style = QStringLiteral("classic");
    s.timers = {{QUuid::createUuidV5(QUuid(), tag), tag, 61.5, false}};
    return s;
}

const QByteArray implausible = "{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": [{\"id\": "
                               "\"0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F\", \"name\": \"\", \"seconds\": -1, \"wasRunning\": false}]}";
const QByteArray formatTwo = QByteArray(implausible).replace("\"format\": 1", "\"format\": 2");

struct Fixture {
    explicit Fixture(int backupCount = 3, double interval = 600)
        : fs(std::make_shared<FaultyFileSystem>()), store(dir.path(), backupCount, interval, fs, [] { return clockTime; })
    {
    }
    QString path(const QString &relative) const { return dir.path() + QLatin1Char('/') + relative; }
    static QString backup(int n) { return QStringLiteral("Backups/timers-%1.json").arg(n); }
    // One letter per file: '-' missing, 'V' valid (tagged with the file's name), 'D' implausible values,
    // 'F' format 2, 'R' a folder in its place, 'E' valid but every read of it fails.
    void plant(const QString &relative, QChar kind)
    {
        switch (kind.toLatin1()) {
        case 'E': fs->failOn(Op::read, relative, QStringLiteral("Input/output error")); [[fallthrough]];
        case 'V': writeFile(path(relative), snap(relative).encoded()); break;
        case 'D': writeFile(path(relative), implausible); break;
        case 'F': writeFile(path(relative), formatTwo); break;
        case 'R': QDir().mkpath(path(relative)); break;
        }
    }
    void plant(const QString &main, const QString &backups)
    {
        plant(QStringLiteral("timers.json"), main.at(0));
        for (int n = 1; n <= backups.size(); ++n)
            plant(backup(n), backups.at(n - 1));
    }
    QMap<QString, QByteArray> contents() const { return folderContents(dir.path()); }

    QTemporaryDir dir;
    std::shared_ptr<FaultyFileSystem> fs;
    Store store;
};

QString describe(const std::function<void()> &action)
{
    try {
        action();
    } catch (const StoreError &e) {
        return e.description();
    }
    return QString();
}

} // namespace

class StoreTest : public QObject {
    Q_OBJECT
private slots:
    void recoveryMatrix_data()
    {
        QTest::addColumn<QString>("main");
        QTest::addColumn<QString>("backups");
        QTest::addColumn<QString>("from");          // "" loaded, "-" fresh, "?" unreadable, else the backup used
        QTest::addColumn<QStringList>("damaged");   // relative paths of the originals copied to Damaged/
        QTest::addColumn<QStringList>("reasons");
        QTest::addColumn<bool>("blocked");
        const QString bad = QStringLiteral("Implausible timer values");
        // clang-format off
        QTest::newRow("nothing") << "-" << "---" << "-" << QStringList() << QStringList() << false;
        QTest::newRow("valid main") << "V" << "---" << "" << QStringList() << QStringList() << false;
        QTest::newRow("valid main, bad backups") << "V" << "DFR" << "" << QStringList() << QStringList() << false;
        QTest::newRow("missing main, backup 1") << "-" << "V--" << "timers-1.json" << QStringList() << QStringList() << false;
        QTest::newRow("missing main, backup 3") << "-" << "--V" << "timers-3.json" << QStringList() << QStringList() << false;
        QTest::newRow("damaged main, backup 1") << "D" << "V--" << "timers-1.json" << QStringList{"timers.json"} << QStringList() << false;
        QTest::newRow("main read fails, backup 1") << "E" << "V--" << "timers-1.json" << QStringList{"timers.json"} << QStringList() << false;
        QTest::newRow("damaged main and backup 1") << "D" << "DV-" << "timers-2.json" << QStringList{"timers.json", "Backups/timers-1.json"} << QStringList() << false;
        QTest::newRow("missing main, bad 1 and 2") << "-" << "FDV" << "timers-3.json" << QStringList{"Backups/timers-1.json", "Backups/timers-2.json"} << QStringList() << false;
        QTest::newRow("foreign main, past a gap") << "F" << "-V-" << "timers-2.json" << QStringList{"timers.json"} << QStringList() << false;
        // A folder cannot be copied to Damaged/: recovered, but saving stays paused.
        QTest::newRow("folder main, backup 1") << "R" << "V--" << "timers-1.json" << QStringList() << QStringList() << true;
        QTest::newRow("damaged main alone") << "D" << "---" << "?" << QStringList() << QStringList{"timers.json: " + bad} << true;
        QTest::newRow("missing main, bad backups") << "-" << "FD-" << "?" << QStringList() << QStringList{"timers.json: missing", "timers-1.json: Unsupported file format 2", "timers-2.json: " + bad} << true;
        QTest::newRow("everything bad") << "R" << "D-E" << "?" << QStringList() << QStringList{"timers.json: Is a directory", "timers-1.json: " + bad, "timers-3.json: Input/output error"} << true;
        // clang-format on
    }
    void recoveryMatrix()
    {
        QFETCH(QString, main);
        QFETCH(QString, backups);
        QFETCH(QString, from);
        QFETCH(QStringList, damaged);
        QFETCH(QStringList, reasons);
        QFETCH(bool, blocked);
        Fixture f;
        f.plant(main, backups);
        const auto before = f.contents();
        QStringList existing;
        for (const QString &p : {QStringLiteral("timers.json"), f.backup(1), f.backup(2), f.backup(3)})
            if (before.contains(p))
                existing.append(f.path(p));

        const Result result = f.store.load();
        auto expected = before;
        if (from == QLatin1String("-")) {
            QCOMPARE(result, Result{Result::Fresh{}});
        } else if (from.isEmpty()) {
            QCOMPARE(result, Result{Result::Loaded{snap("timers.json")}});
        } else if (from == QLatin1String("?")) {
            QCOMPARE(result, (Result{Result::Unreadable{existing, reasons}}));
        } else {
            const Snapshot recovered = snap("Backups/" + from);
            QStringList copies;
            for (const QString &original : damaged) {
                const QString copy = "Damaged/" + stampText + "-" + QFileInfo(original).fileName();
                copies.append(f.path(copy));
                expected.insert(copy, before.value(original));
            }
            QCOMPARE(result, (Result{Result::Recovered{recovered, from, copies}}));
            if (!damaged.isEmpty() || blocked)
                expected.insert(QStringLiteral("Damaged"), "<dir>");
            if (!blocked)
                expected.insert(QStringLiteral("timers.json"), recovered.encoded());
        }
        QCOMPARE(f.store.isBlocked(), blocked);
        QCOMPARE(f.store.awaitingArchive(), blocked && from.size() > 1);
        QCOMPARE(f.contents(), expected);
    }

    void retriesPreservationOnceTheDiskRecovers()
    {
        Fixture f;
        f.plant("D", "V--");
        f.fs->failOn(Op::createDirectories, QStringLiteral("/Damaged"));
        const auto before = f.contents();
        QCOMPARE(f.store.load(), (Result{Result::Recovered{snap("Backups/timers-1.json"), "timers-1.json", {}}}));
        QVERIFY(f.store.isBlocked() && f.store.awaitingArchive());
        QCOMPARE(describe([&] { f.store.save(snap("new"), 0); }), pausedMessage);
        QCOMPARE(f.contents(), before);

        f.fs->faults = {{Op::copy, {}, QStringLiteral("No space left on device")}};
        QVERIFY(!f.store.retryPreservation());
        QVERIFY(f.store.isBlocked() && f.store.awaitingArchive());
        auto expected = before;
        expected.insert(QStringLiteral("Damaged"), "<dir>");
        QCOMPARE(f.contents(), expected);  // the damaged main file is still there, unchanged

        f.fs->faults.clear();
        QVERIFY(f.store.retryPreservation());
        QVERIFY(!f.store.isBlocked() && !f.store.awaitingArchive());
        expected.insert("Damaged/" + stampText + "-timers.json", implausible);
        expected.insert(QStringLiteral("timers.json"), snap("Backups/timers-1.json").encoded());
        QCOMPARE(f.contents(), expected);
        QVERIFY(f.store.retryPreservation());  // nothing pending, not blocked
    }

    void blockedSavingTouchesNothing()
    {
        Fixture f;
        f.plant("E", "DD-");
        f.store.load();
        QVERIFY(f.store.isBlocked());
        // The main file reads again, yet the unreadable backups stay the user's to set aside.
        f.fs->faults.clear();
        const auto before = f.contents();
        const int calls = f.fs->calls;
        QCOMPARE(describe([&] { f.store.save(snap("x"), 0); }), pausedMessage);
        QCOMPARE(describe([&] { f.store.write(snap("x")); }), pausedMessage);
        f.store.rotateBackups();
        QVERIFY(!f.store.retryPreservation());
        QCOMPARE(f.fs->calls, calls);
        QCOMPARE(f.contents(), before);
        f.store.write(snap("x"), Store::BlockPolicy::ignore);
        QCOMPARE(readFile(f.path("timers.json")), snap("x").encoded());
    }

    void setsUnreadableDataAside()
    {
        Fixture f;
        f.plant("D", "F-D");
        writeFile(f.path("Damaged/old-timers.json"), "kept");
        f.store.load();
        const auto before = f.contents();
        const QString aside = "Unreadable-" + stampText;
        f.fs->failOn(Op::createDirectories, aside, QStringLiteral("Disk quota exceeded"));
        QCOMPARE(describe([&] { f.store.setAsideUnreadableAndStartFresh(); }), "Could not create " + f.path(aside) + ": Disk quota exceeded");
        QCOMPARE(f.contents(), before);

        // Stops at the first failure; what was moved stays moved.
        f.fs->faults = {{Op::move, QStringLiteral("/Backups"), QStringLiteral("Device or resource busy")}};
        QCOMPARE(describe([&] { f.store.setAsideUnreadableAndStartFresh(); }),
                 "Could not move " + f.path("Backups") + " to " + f.path(aside) + "/Backups: Device or resource busy");
        QVERIFY(f.store.isBlocked());
        auto expected = before;
        expected.insert(aside, "<dir>");
        expected.insert(aside + "/timers.json", expected.take("timers.json"));
        QCOMPARE(f.contents(), expected);

        f.fs->faults.clear();
        QCOMPARE(f.store.setAsideUnreadableAndStartFresh(), f.path(aside));
        QVERIFY(!f.store.isBlocked());
        expected = {{"Backups", "<dir>"}, {aside, "<dir>"}};
        for (auto it = before.cbegin(); it != before.cend(); ++it)
            expected.insert(it.key().startsWith(QLatin1String("Damaged")) ? it.key() : aside + '/' + it.key(), it.value());
        QCOMPARE(f.contents(), expected);
        f.store.save(snap("fresh"), 0);
        QCOMPARE(readFile(f.path("timers.json")), snap("fresh").encoded());
    }

    void rotation_data()
    {
        QTest::addColumn<QString>("main");
        QTest::addColumn<QString>("present");   // backup numbers there before
        QTest::addColumn<QString>("expected");  // per number 1..5: the old number, '-' none, 'M' the main file
        QTest::newRow("none") << "V" << "" << "M----";
        QTest::newRow("full") << "V" << "12345" << "M1234";
        QTest::newRow("gaps") << "V" << "13" << "M1-3-";
        QTest::newRow("oldest only") << "V" << "5" << "M----";
        QTest::newRow("even") << "V" << "24" << "M-2-4";
        // A bad main file never enters the backups.
        QTest::newRow("missing main") << "-" << "12" << "12---";
        QTest::newRow("damaged main") << "D" << "12" << "12---";
        QTest::newRow("folder main") << "R" << "12" << "12---";
    }
    void rotation()
    {
        QFETCH(QString, main);
        QFETCH(QString, present);
        QFETCH(QString, expected);
        Fixture f(5);
        f.plant(QStringLiteral("timers.json"), main.at(0));
        for (QChar n : present)
            f.plant(f.backup(n.digitValue()), 'V');
        const auto before = f.contents();
        f.store.rotateBackups();
        auto after = before;
        after.insert(QStringLiteral("Backups"), "<dir>");
        for (int n = 1; n <= 5; ++n) {
            const QChar from = expected.at(n - 1);
            if (from == QLatin1Char('-'))
                after.remove(f.backup(n));
            else
                after.insert(f.backup(n), before.value(from == QLatin1Char('M') ? QStringLiteral("timers.json") : f.backup(from.digitValue())));
        }
        QCOMPARE(f.contents(), after);
    }

    void rotatesAtMostOncePerInterval()
    {
        Fixture f(5, 600);
        // The first save always rotates; the interval counts from that rotation, not from the last save.
        const QList<std::pair<Instant, int>> saves{{1000, 1}, {1300, 1}, {1599.5, 1}, {1600, 2}};
        for (const auto &[now, rotations] : saves) {
            f.store.save(snap(QString::number(now)), now);
            QCOMPARE(QDir(f.path("Backups")).entryList(QDir::Files).size(), rotations);
        }
        QCOMPARE(readFile(f.path(f.backup(1))), snap("1600").encoded());
        QCOMPARE(readFile(f.path(f.backup(2))), snap("1000").encoded());
        QCOMPARE(f.store.lastBackup(), 1600.0);
    }

    // Each failure leaves every file as it was except what the save had finished; a failed
    // rotation is retried by the next save (lastBackup stays unset).
    void faultsLeaveReadableFilesAlone_data()
    {
        QTest::addColumn<int>("op");
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("message");       // "@" stands for the data folder
        QTest::addColumn<bool>("mainReplaced");
        QTest::addColumn<QString>("backupsAfter");  // old numbers at 1..3, '-' none, 'M' the new main file
        const QString tmp = QStringLiteral(".timers.json.%1.tmp").arg(::getpid());
        const QString full = QStringLiteral("No space left on device");
        // clang-format off
        QTest::newRow("folder") << int(Op::createDirectories) << "/Backups" << "Permission denied" << "Could not create @: Permission denied" << false << "123";
        QTest::newRow("temporary file") << int(Op::createFile) << tmp << full << "Could not create temporary file" << false << "123";
        QTest::newRow("disk full") << int(Op::write) << tmp << full << "Could not write @/timers.json: No space left on device" << false << "123";
        QTest::newRow("flush") << int(Op::flush) << tmp << "Input/output error" << "Could not write @/timers.json: Input/output error" << false << "123";
        QTest::newRow("rename") << int(Op::rename) << tmp << "Read-only file system" << "Read-only file system" << false << "123";
        QTest::newRow("drop oldest") << int(Op::remove) << "timers-3.json" << "Operation not permitted" << "Could not remove @/Backups/timers-3.json: Operation not permitted" << true << "123";
        QTest::newRow("shift") << int(Op::move) << "/timers-2.json" << "Input/output error" << "Could not move @/Backups/timers-2.json to @/Backups/timers-3.json: Input/output error" << true << "12-";
        QTest::newRow("backup temporary") << int(Op::createFile) << ".backup.tmp" << full << "Could not create temporary file" << true << "-12";
        QTest::newRow("backup write") << int(Op::write) << ".backup.tmp" << full << "Could not write @/Backups/timers-1.json: No space left on device" << true << "-12";
        QTest::newRow("backup rename") << int(Op::rename) << ".backup.tmp" << "No such file or directory" << "No such file or directory" << true << "-12";
        // The rotation cannot read the new main file: it keeps away from the backups, quietly.
        QTest::newRow("rotation read") << int(Op::read) << "/timers.json" << "Input/output error" << "" << true << "123";
        // clang-format on
    }
    void faultsLeaveReadableFilesAlone()
    {
        QFETCH(int, op);
        QFETCH(QString, where);
        QFETCH(QString, reason);
        QFETCH(QString, message);
        QFETCH(bool, mainReplaced);
        QFETCH(QString, backupsAfter);
        Fixture f;
        f.plant("V", "VVV");
        const auto before = f.contents();
        f.fs->failOn(Op(op), where, reason);
        QCOMPARE(describe([&] { f.store.save(snap("new"), 0); }), message.replace('@', f.dir.path()));
        QCOMPARE(f.store.lastBackup(), message.isEmpty() ? std::optional<Instant>(0) : std::nullopt);
        auto expected = before;
        if (mainReplaced)
            expected.insert(QStringLiteral("timers.json"), snap("new").encoded());
        for (int n = 1; n <= 3; ++n) {
            const QChar old = backupsAfter.at(n - 1);
            if (old == QLatin1Char('-'))
                expected.remove(f.backup(n));
            else
                expected.insert(f.backup(n), before.value(f.backup(old.digitValue())));
        }
        QCOMPARE(f.contents(), expected);
    }

    void createsTheFolderOrNamesItInTheError()
    {
        QTemporaryDir dir;
        writeFile(dir.path() + "/file", "x");
        Store refused(dir.path() + "/file/Tock", 5, 600);  // a real fault: a file where a folder should be
        QCOMPARE(describe([&] { refused.save(snap("x"), 0); }), "Could not create " + dir.path() + "/file/Tock: Not a directory");
        Store nested(dir.path() + "/a/b", 5, 600);
        nested.save(snap("x"), 0);
        const QByteArray x = snap("x").encoded();
        QCOMPARE(folderContents(dir.path() + "/a"),
                 (QMap<QString, QByteArray>{{"b", "<dir>"}, {"b/timers.json", x}, {"b/Backups", "<dir>"}, {"b/Backups/timers-1.json", x}}));
    }

    void aFileCutAtAnyByteLoadsOrFallsBack()
    {
        Fixture f;
        const QByteArray full = snap("timers.json").encoded();
        f.plant(f.backup(1), 'V');
        for (qsizetype n = 0; n < full.size(); ++n) {
            writeFile(f.path("timers.json"), full.left(n));
            const Result result = Store(f.dir.path(), 3, 600, f.fs, [] { return clockTime; }).load();
            if (n == full.size() - 1)  // only the final newline gone
                QCOMPARE(result, Result{Result::Loaded{snap("timers.json")}});
            else
                QVERIFY2(std::get<Result::Recovered>(result.value).snapshot == snap(f.backup(1)), qPrintable(QString::number(n)));
        }
    }

    void defaultDirectory_data()
    {
        QTest::addColumn<QByteArray>("dataDir");  // "unset" leaves the variable out
        QTest::addColumn<QByteArray>("xdg");
        QTest::addColumn<QString>("expected");  // a leading "~" stands for the home folder
        QTest::newRow("override") << QByteArray("/srv/tock data/~/$HOME") << QByteArray("/xdg") << "/srv/tock data/~/$HOME";
#ifdef Q_OS_MACOS
        QTest::newRow("empty override") << QByteArray("") << QByteArray("/xdg") << "~/Library/Application Support/Tock";
#else
        QTest::newRow("empty override") << QByteArray("") << QByteArray("/xdg") << "/xdg/Tock";
        QTest::newRow("xdg unset") << QByteArray("unset") << QByteArray("unset") << "~/.local/share/Tock";
        QTest::newRow("relative xdg") << QByteArray("unset") << QByteArray("rel") << "~/.local/share/Tock";
#endif
    }
    void defaultDirectory()
    {
        QFETCH(QByteArray, dataDir);
        QFETCH(QByteArray, xdg);
        QFETCH(QString, expected);
        const auto set = [](const char *name, const QByteArray &value) { value == "unset" ? qunsetenv(name) : qputenv(name, value); };
        const QByteArray savedDataDir = qgetenv("TOCK_DATA_DIR");
        const QByteArray savedXdg = qEnvironmentVariableIsSet("XDG_DATA_HOME") ? qgetenv("XDG_DATA_HOME") : "unset";
        set("TOCK_DATA_DIR", dataDir);
        set("XDG_DATA_HOME", xdg);
        const QString actual = Store::defaultDirectory();
        set("TOCK_DATA_DIR", savedDataDir);
        set("XDG_DATA_HOME", savedXdg);
        QCOMPARE(actual, expected.startsWith('~') ? QDir::homePath() + expected.mid(1) : expected);
    }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "store_test.moc"

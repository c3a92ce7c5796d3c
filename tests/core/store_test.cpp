#include "faultyfilesystem.h"
#include "store.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <unistd.h>

using namespace tock;
using namespace tock::testing;
using Op = FaultyFileSystem::Op;

namespace {

const QDateTime clockTime(QDate(2026, 11, 15), QTime(19, 53, 23, 123));
const QString stampText = QStringLiteral("2026-11-15T19-53-23-123");

// A valid snapshot told apart by its one timer's name.
Snapshot snap(const QString &tag)
{
    Snapshot s;
    s.savedAt = QDateTime::fromSecsSinceEpoch(1794772403, QTimeZone::utc());
    s.style = QStringLiteral("classic");
    s.timers = {{QUuid::createUuidV5(QUuid(), tag), tag, 61.5, false}};
    return s;
}

const QByteArray implausible =
    "{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": "
    "[{\"id\": \"0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F\", \"name\": \"\", \"seconds\": -1, \"wasRunning\": false}]}";
const QByteArray formatTwo = QByteArray(implausible).replace("\"format\": 1", "\"format\": 2");

class Fixture {
public:
    explicit Fixture(int backupCount = 3, double interval = 600)
        : fs(std::make_shared<FaultyFileSystem>()),
          store(dir.path(), backupCount, interval, fs, [] { return clockTime; })
    {
    }
    QString path(const QString &relative) const { return dir.path() + QLatin1Char('/') + relative; }
    QString backup(int n) const { return QStringLiteral("Backups/timers-%1.json").arg(n); }
    // One letter per file: '-' missing, 'V' valid (tagged with the file's name), 'D' implausible
    // values, 'F' format 2, 'R' a folder where the file should be (reading fails).
    void plant(const QString &relative, QChar kind)
    {
        switch (kind.toLatin1()) {
        case 'V': writeFile(path(relative), snap(relative).encoded()); break;
        case 'D': writeFile(path(relative), implausible); break;
        case 'F': writeFile(path(relative), formatTwo); break;
        case 'R': QDir().mkpath(path(relative)); break;
        default: break;
        }
    }
    void plant(const QString &main, const QString &backups)
    {
        plant(QStringLiteral("timers.json"), main.at(0));
        for (int n = 1; n <= backups.size(); ++n)
            plant(backup(n), backups.at(n - 1));
    }
    QMap<QString, QByteArray> contents() const { return folderContents(dir.path()); }
    bool anyTemporaryFile() const
    {
        const auto files = contents().keys();
        return std::any_of(files.begin(), files.end(), [](const QString &f) { return f.endsWith(QLatin1String(".tmp")); });
    }

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
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QStringList>("damaged");  // relative paths of the originals
        QTest::addColumn<QStringList>("reasons");
        QTest::addColumn<bool>("blocked");
        const QString bad = QStringLiteral("Implausible timer values");
        const QString missing = QStringLiteral("timers.json: missing");
        // clang-format off
        QTest::newRow("nothing")             << "-" << "---" << "fresh" << "" << QStringList() << QStringList() << false;
        QTest::newRow("valid main")          << "V" << "---" << "loaded" << "" << QStringList() << QStringList() << false;
        QTest::newRow("valid main, bad backups") << "V" << "DFR" << "loaded" << "" << QStringList() << QStringList() << false;
        QTest::newRow("missing main, backup 1")  << "-" << "V--" << "recovered" << "timers-1.json" << QStringList() << QStringList() << false;
        QTest::newRow("missing main, backup 3")  << "-" << "--V" << "recovered" << "timers-3.json" << QStringList() << QStringList() << false;
        QTest::newRow("damaged main, backup 1")  << "D" << "V--" << "recovered" << "timers-1.json"
            << QStringList{"timers.json"} << QStringList() << false;
        QTest::newRow("damaged main and backup 1, backup 2") << "D" << "DV-" << "recovered" << "timers-2.json"
            << QStringList{"timers.json", "Backups/timers-1.json"} << QStringList() << false;
        QTest::newRow("missing main, damaged 1 and 2, backup 3") << "-" << "FDV" << "recovered" << "timers-3.json"
            << QStringList{"Backups/timers-1.json", "Backups/timers-2.json"} << QStringList() << false;
        QTest::newRow("foreign main, backup 2 past a gap") << "F" << "-V-" << "recovered" << "timers-2.json"
            << QStringList{"timers.json"} << QStringList() << false;
        // The folder in place of the main file cannot be copied: recovered, but saving stays paused.
        QTest::newRow("unreadable main, backup 1") << "R" << "V--" << "recovered" << "timers-1.json"
            << QStringList() << QStringList() << true;
        QTest::newRow("damaged main alone") << "D" << "---" << "unreadable" << ""
            << QStringList() << QStringList{"timers.json: " + bad} << true;
        QTest::newRow("missing main, damaged backups") << "-" << "FD-" << "unreadable" << ""
            << QStringList() << QStringList{missing, "timers-1.json: Unsupported file format 2", "timers-2.json: " + bad} << true;
        QTest::newRow("everything bad") << "R" << "D-R" << "unreadable" << ""
            << QStringList() << QStringList{"timers.json: Is a directory", "timers-1.json: " + bad, "timers-3.json: Is a directory"} << true;
        // clang-format on
    }
    void recoveryMatrix()
    {
        QFETCH(QString, main);
        QFETCH(QString, backups);
        QFETCH(QString, kind);
        QFETCH(QString, from);
        QFETCH(QStringList, damaged);
        QFETCH(QStringList, reasons);
        QFETCH(bool, blocked);
        Fixture f;
        f.plant(main, backups);
        const auto before = f.contents();
        QStringList existing;
        for (const QString &p : QStringList{"timers.json", f.backup(1), f.backup(2), f.backup(3)})
            if (before.contains(p))
                existing.append(f.path(p));

        const Store::LoadResult result = f.store.load();
        auto expected = before;
        if (kind == QLatin1String("fresh")) {
            QCOMPARE(result, Store::LoadResult{Store::LoadResult::Fresh{}});
        } else if (kind == QLatin1String("loaded")) {
            QCOMPARE(result, Store::LoadResult{Store::LoadResult::Loaded{snap("timers.json")}});
        } else if (kind == QLatin1String("unreadable")) {
            QCOMPARE(result, (Store::LoadResult{Store::LoadResult::Unreadable{existing, reasons}}));
        } else {
            const Snapshot recovered = snap("Backups/" + from);
            QStringList copies;
            for (const QString &original : damaged) {
                const QString copy = "Damaged/" + stampText + "-" + QFileInfo(original).fileName();
                copies.append(f.path(copy));
                expected.insert(copy, before.value(original));
            }
            QCOMPARE(result, (Store::LoadResult{Store::LoadResult::Recovered{recovered, from, copies}}));
            if (!damaged.isEmpty() || blocked)
                expected.insert(QStringLiteral("Damaged"), "<dir>");
            if (!blocked)
                expected.insert(QStringLiteral("timers.json"), recovered.encoded());
        }
        QCOMPARE(f.store.isBlocked(), blocked);
        QCOMPARE(f.store.awaitingArchive(), blocked && kind == QLatin1String("recovered"));
        QCOMPARE(f.contents(), expected);
    }

    void retriesPreservationOnceTheDiskRecovers()
    {
        Fixture f;
        f.plant("D", "V--");
        f.fs->failOn(Op::copy);
        const auto before = f.contents();
        const Store::LoadResult result = f.store.load();
        QCOMPARE(result, (Store::LoadResult{Store::LoadResult::Recovered{snap("Backups/timers-1.json"), "timers-1.json", {}}}));
        QVERIFY(f.store.isBlocked());
        QVERIFY(f.store.awaitingArchive());
        QCOMPARE(describe([&] { f.store.save(snap("new"), 0); }),
                 QStringLiteral("Saving is paused because the existing data could not be read."));
        QVERIFY(!f.store.retryPreservation());
        auto expected = before;
        expected.insert(QStringLiteral("Damaged"), "<dir>");
        QCOMPARE(f.contents(), expected);  // the damaged main file is still there, unchanged

        f.fs->faults.clear();
        QVERIFY(f.store.retryPreservation());
        QVERIFY(!f.store.isBlocked());
        QVERIFY(!f.store.awaitingArchive());
        expected.insert("Damaged/" + stampText + "-timers.json", implausible);
        expected.insert(QStringLiteral("timers.json"), snap("Backups/timers-1.json").encoded());
        QCOMPARE(f.contents(), expected);
        QVERIFY(f.store.retryPreservation());  // nothing pending, not blocked
    }

    void keepsSavingPausedWhenDamagedCannotBeCreated()
    {
        Fixture f;
        f.plant("D", "V--");
        f.fs->failOn(Op::createDirectories, QStringLiteral("/Damaged"));
        const auto before = f.contents();
        const auto result = f.store.load();
        QCOMPARE(std::get<Store::LoadResult::Recovered>(result.value).damaged, QStringList());
        QVERIFY(f.store.isBlocked());
        QCOMPARE(f.contents(), before);
    }

    void reportsAReadThatFails()
    {
        Fixture f;
        f.plant("V", "V--");
        f.fs->failOn(Op::read, QStringLiteral("/timers.json"), QStringLiteral("Input/output error"));
        const auto result = f.store.load();
        // The main file could not be read, so it is preserved before anything replaces it.
        QCOMPARE(result, (Store::LoadResult{Store::LoadResult::Recovered{snap("Backups/timers-1.json"), "timers-1.json",
                                                                         {f.path("Damaged/" + stampText + "-timers.json")}}}));
    }

    void retryWithNothingPendingFollowsTheBlock()
    {
        Fixture f;
        f.plant("D", "---");
        f.store.load();
        QVERIFY(!f.store.retryPreservation());
        Fixture g;
        g.store.load();
        QVERIFY(g.store.retryPreservation());
    }

    void blockedSavingTouchesNothing()
    {
        Fixture f;
        f.plant("F", "D--");
        f.store.load();
        const auto before = f.contents();
        const int calls = f.fs->calls;
        const StoreError blocked = StoreError::blocked();
        QCOMPARE(describe([&] { f.store.save(snap("x"), 0); }), blocked.description());
        QCOMPARE(describe([&] { f.store.write(snap("x")); }), blocked.description());
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
        const QString folder = f.store.setAsideUnreadableAndStartFresh();
        QCOMPARE(folder, f.path("Unreadable-" + stampText));
        QVERIFY(!f.store.isBlocked());
        const QString aside = "Unreadable-" + stampText + "/";
        QMap<QString, QByteArray> expected{
            {"Backups", "<dir>"},
            {"Damaged", "<dir>"},
            {"Damaged/old-timers.json", "kept"},
            {aside.chopped(1), "<dir>"},
            {aside + "timers.json", before.value("timers.json")},
            {aside + "Backups", "<dir>"},
            {aside + "Backups/timers-1.json", before.value("Backups/timers-1.json")},
            {aside + "Backups/timers-3.json", before.value("Backups/timers-3.json")},
        };
        QCOMPARE(f.contents(), expected);
        f.store.save(snap("fresh"), 0);
        QCOMPARE(readFile(f.path("timers.json")), snap("fresh").encoded());
    }

    void settingAsideStopsAtTheFirstFailure()
    {
        Fixture f;
        f.plant("D", "D--");
        f.store.load();
        const auto before = f.contents();
        const QString folder = f.path("Unreadable-" + stampText);
        f.fs->failOn(Op::createDirectories, "Unreadable-" + stampText, QStringLiteral("Disk quota exceeded"));
        QCOMPARE(describe([&] { f.store.setAsideUnreadableAndStartFresh(); }),
                 "Could not create " + folder + ": Disk quota exceeded");
        QCOMPARE(f.contents(), before);
        QVERIFY(f.store.isBlocked());

        f.fs->faults.clear();
        f.fs->failOn(Op::move, QStringLiteral("/Backups"), QStringLiteral("Device or resource busy"));
        QCOMPARE(describe([&] { f.store.setAsideUnreadableAndStartFresh(); }),
                 "Could not move " + f.path("Backups") + " to " + folder + "/Backups: Device or resource busy");
        QVERIFY(f.store.isBlocked());
        auto expected = before;
        expected.insert("Unreadable-" + stampText + "/timers.json", expected.take("timers.json"));
        expected.insert("Unreadable-" + stampText, "<dir>");
        QCOMPARE(f.contents(), expected);
    }

    void rotationShiftsUp_data()
    {
        QTest::addColumn<QString>("present");   // backup numbers there before
        QTest::addColumn<QString>("expected");  // after, per number 1..5: old number or '-' ; 'M' the main file
        QTest::newRow("none") << "" << "M----";
        QTest::newRow("full") << "12345" << "M1234";
        QTest::newRow("gaps") << "13" << "M1-3-";
        QTest::newRow("oldest only") << "5" << "M----";
        QTest::newRow("even") << "24" << "M-2-4";
        QTest::newRow("newest four") << "1234" << "M1234";
    }
    void rotationShiftsUp()
    {
        QFETCH(QString, present);
        QFETCH(QString, expected);
        Fixture f(5);
        f.plant(QStringLiteral("timers.json"), 'V');
        for (QChar n : present)
            f.plant(f.backup(n.digitValue()), 'V');
        f.store.rotateBackups();
        for (int n = 1; n <= 5; ++n) {
            const QChar want = expected.at(n - 1);
            const QByteArray got = readFile(f.path(f.backup(n)));
            if (want == QLatin1Char('-'))
                QVERIFY2(!QFileInfo::exists(f.path(f.backup(n))), qPrintable(f.backup(n)));
            else if (want == QLatin1Char('M'))
                QCOMPARE(got, readFile(f.path("timers.json")));
            else
                QCOMPARE(got, snap(f.backup(want.digitValue())).encoded());
        }
        QVERIFY(!f.anyTemporaryFile());
    }

    void aBadMainFileNeverEntersTheBackups()
    {
        for (QChar main : {QChar('-'), QChar('D'), QChar('R')}) {
            Fixture f;
            f.plant(QString(main), "VV-");
            const auto before = f.contents();
            f.store.rotateBackups();
            QCOMPARE(f.contents(), before);
        }
    }

    void noRotationWhileSavingIsPaused()
    {
        // The main file failed to read at load time and reads again now: the unreadable backups
        // are still the user's to set aside, so none is dropped.
        Fixture f(2);
        f.plant("V", "DD");
        f.fs->failOn(Op::read, QStringLiteral("/timers.json"), QStringLiteral("Input/output error"));
        f.store.load();
        QVERIFY(f.store.isBlocked());
        f.fs->faults.clear();
        const auto before = f.contents();
        f.store.rotateBackups();
        QCOMPARE(f.contents(), before);
    }

    void rotatesAtMostOncePerInterval()
    {
        Fixture f(5, 600);
        QCOMPARE(f.store.lastBackup(), std::nullopt);
        const auto rotations = [&] {
            int n = 0;
            while (QFileInfo::exists(f.path(f.backup(n + 1))))
                ++n;
            return n;
        };
        f.store.save(snap("a"), 1000);  // the first save after start always rotates
        QCOMPARE(rotations(), 1);
        QCOMPARE(f.store.lastBackup(), 1000.0);
        f.store.save(snap("b"), 1300);  // 5 minutes later
        QCOMPARE(rotations(), 1);
        f.store.save(snap("c"), 1599.5);
        QCOMPARE(rotations(), 1);
        QCOMPARE(f.store.lastBackup(), 1000.0);
        // Measured from the last rotation, not from the last save.
        f.store.save(snap("d"), 1600);
        QCOMPARE(rotations(), 2);
        QCOMPARE(readFile(f.path(f.backup(1))), snap("d").encoded());
        QCOMPARE(readFile(f.path(f.backup(2))), snap("a").encoded());
        QCOMPARE(f.store.lastBackup(), 1600.0);
    }

    void aFailedRotationIsRetriedByTheNextSave()
    {
        Fixture f(2, 600);
        f.plant("V", "VV");
        f.fs->failOn(Op::remove, QStringLiteral("timers-2.json"), QStringLiteral("Operation not permitted"));
        QCOMPARE(describe([&] { f.store.save(snap("a"), 0); }),
                 "Could not remove " + f.path(f.backup(2)) + ": Operation not permitted");
        QCOMPARE(readFile(f.path("timers.json")), snap("a").encoded());
        QCOMPARE(f.store.lastBackup(), std::nullopt);
        f.fs->faults.clear();
        f.store.save(snap("b"), 10);
        QCOMPARE(readFile(f.path(f.backup(1))), snap("b").encoded());
        QCOMPARE(f.store.lastBackup(), 10.0);
    }

    void faultsLeaveReadableFilesAlone_data()
    {
        QTest::addColumn<int>("op");
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("message");       // a path "@" stands for the data folder
        QTest::addColumn<bool>("mainReplaced");
        QTest::addColumn<QString>("backupsAfter");  // old numbers at 1..3, 'M' the new main file
        const QString tmp = QStringLiteral(".timers.json.%1.tmp").arg(::getpid());
        const QString full = QStringLiteral("No space left on device");
        // clang-format off
        QTest::newRow("folder") << int(Op::createDirectories) << "/Backups" << "Permission denied"
            << "Could not create @: Permission denied" << false << "123";
        QTest::newRow("temporary file") << int(Op::createFile) << tmp << full
            << "Could not create temporary file" << false << "123";
        QTest::newRow("disk full while writing") << int(Op::write) << tmp << full
            << "Could not write @/timers.json: No space left on device" << false << "123";
        QTest::newRow("flush") << int(Op::flush) << tmp << "Input/output error"
            << "Could not write @/timers.json: Input/output error" << false << "123";
        QTest::newRow("rename") << int(Op::rename) << tmp << "Read-only file system"
            << "Read-only file system" << false << "123";
        QTest::newRow("drop oldest") << int(Op::remove) << "timers-3.json" << "Operation not permitted"
            << "Could not remove @/Backups/timers-3.json: Operation not permitted" << true << "123";
        QTest::newRow("shift") << int(Op::move) << "/timers-2.json" << "Input/output error"
            << "Could not move @/Backups/timers-2.json to @/Backups/timers-3.json: Input/output error" << true << "12-";
        QTest::newRow("backup temporary") << int(Op::createFile) << ".backup.tmp" << full
            << "Could not create temporary file" << true << "-12";
        QTest::newRow("backup write") << int(Op::write) << ".backup.tmp" << full
            << "Could not write @/Backups/timers-1.json: No space left on device" << true << "-12";
        QTest::newRow("backup rename") << int(Op::rename) << ".backup.tmp" << "No such file or directory"
            << "No such file or directory" << true << "-12";
        // The rotation cannot read the new main file: it keeps away from the backups, quietly.
        QTest::newRow("rotation read") << int(Op::read) << "/timers.json" << "Input/output error"
            << "" << true << "123";
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
        QVERIFY(!f.anyTemporaryFile());

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

    void prepareDirectoryNamesTheDataFolder()
    {
        QTemporaryDir dir;
        writeFile(dir.path() + "/file", "x");
        // A real fault: a file where a folder should be.
        Store store(dir.path() + "/file/Tock", 5, 600);
        QCOMPARE(describe([&] { store.prepareDirectory(); }),
                 "Could not create " + dir.path() + "/file/Tock: Not a directory");
        QCOMPARE(describe([&] { store.save(snap("x"), 0); }),
                 "Could not create " + dir.path() + "/file/Tock: Not a directory");
        Store nested(dir.path() + "/a/b/c", 5, 600);
        nested.save(snap("x"), 0);
        QCOMPARE(readFile(dir.path() + "/a/b/c/timers.json"), snap("x").encoded());
        QCOMPARE(readFile(dir.path() + "/a/b/c/Backups/timers-1.json"), snap("x").encoded());
    }

    void aFileCutAtAnyByteLoadsOrFallsBack()
    {
        Fixture f;
        const QByteArray full = snap("timers.json").encoded();
        f.plant(f.backup(1), 'V');
        for (qsizetype n = 0; n < full.size(); ++n) {
            writeFile(f.path("timers.json"), full.left(n));
            Store store(f.dir.path(), 3, 600, f.fs, [] { return clockTime; });
            const auto result = store.load();
            if (n == full.size() - 1) {  // only the final newline gone
                QVERIFY(std::holds_alternative<Store::LoadResult::Loaded>(result.value));
            } else {
                const auto *recovered = std::get_if<Store::LoadResult::Recovered>(&result.value);
                QVERIFY2(recovered, qPrintable(QString::number(n)));
                QCOMPARE(recovered->snapshot, snap(f.backup(1)));
            }
        }
    }

    void stampIsSafeInFileNames()
    {
        Store store(QStringLiteral("/nowhere"), 5, 600, nullptr,
                    [] { return QDateTime(QDate(2027, 1, 2), QTime(3, 4, 5, 6)); });
        QCOMPARE(store.stamp(), QStringLiteral("2027-01-02T03-04-05-006"));
        QCOMPARE(store.backupPath(4), QStringLiteral("/nowhere/Backups/timers-4.json"));
        QCOMPARE(store.damagedPath(), QStringLiteral("/nowhere/Damaged"));
    }

    void defaultDirectory_data()
    {
        QTest::addColumn<QByteArray>("dataDir");   // "unset" leaves the variable out
        QTest::addColumn<QByteArray>("xdg");
        QTest::addColumn<QString>("expected");     // a leading "~" stands for the home folder
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
        const QByteArray savedDataDir = qgetenv("TOCK_DATA_DIR"), savedXdg = qgetenv("XDG_DATA_HOME");
        const bool hadXdg = qEnvironmentVariableIsSet("XDG_DATA_HOME");
        const auto set = [](const char *name, const QByteArray &value) {
            if (value == "unset")
                qunsetenv(name);
            else
                qputenv(name, value);
        };
        set("TOCK_DATA_DIR", dataDir);
        set("XDG_DATA_HOME", xdg);
        const QString actual = Store::defaultDirectory();
        qputenv("TOCK_DATA_DIR", savedDataDir);
        set("XDG_DATA_HOME", hadXdg ? savedXdg : QByteArray("unset"));
        if (expected.startsWith('~'))
            expected = QDir::homePath() + expected.mid(1);
        QCOMPARE(actual, expected);
    }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "store_test.moc"

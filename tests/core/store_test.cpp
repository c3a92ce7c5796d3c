#include "faultyfilesystem.h"
#include "instancelock.h"
#include "store.h"
#include "table.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <cmath>

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

using namespace tock;
using namespace tock::testing;
using Op = FaultyFileSystem::Op;
using Result = Store::LoadResult;

namespace {

// The moment stamped into names, and its local-time text.
const Instant clockTime = double(QDateTime(QDate(2026, 11, 15), QTime(3, 4, 5, 6)).toMSecsSinceEpoch()) / 1000;
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
        : fs(std::make_shared<FaultyFileSystem>()), store(dir.path(), backupCount, interval, fs)
    {
    }
    QString path(const QString &relative) const { return dir.path() + QLatin1Char('/') + relative; }
    static QString file(int n) { return n ? QStringLiteral("Backups/timers-%1.json").arg(n) : QStringLiteral("timers.json"); }
    // One letter per file, timers.json first, then each backup: '-' missing, 'V' valid (tagged with the
    // file's name), 'D' implausible values, 'F' format 2, 'R' a folder in its place, 'E' valid but every
    // read of it fails.
    void plant(const QString &layout)
    {
        for (int n = 0; n < layout.size(); ++n) {
            const QString name = file(n);
            switch (layout.at(n).toLatin1()) {
            case 'E': fs->failOn(Op::read, name, QStringLiteral("Input/output error")); [[fallthrough]];
            case 'V': writeFile(path(name), snap(name).encoded()); break;
            case 'D': writeFile(path(name), implausible); break;
            case 'F': writeFile(path(name), formatTwo); break;
            case 'R': QDir().mkpath(path(name)); break;
            }
        }
    }
    QMap<QString, QByteArray> contents() const { return folderContents(dir.path()); }

    QTemporaryDir dir;
    std::shared_ptr<FaultyFileSystem> fs;
    Store store;
};

// `before` with the backups rearranged: per number from 1, the old number now there, '-' none, 'M' timers.json.
QMap<QString, QByteArray> shifted(const QMap<QString, QByteArray> &before, const QString &backups)
{
    auto after = before;
    for (int n = 1; n <= backups.size(); ++n) {
        const QChar from = backups.at(n - 1);
        if (from == QLatin1Char('-'))
            after.remove(Fixture::file(n));
        else
            after.insert(Fixture::file(n), before.value(Fixture::file(from == QLatin1Char('M') ? 0 : from.digitValue())));
    }
    return after;
}

} // namespace

class StoreTest : public QObject {
    Q_OBJECT
private slots:
    void recoveryMatrix_data()
    {
        // from: "" loaded, "-" fresh, "?" unreadable, else the backup used
        // damaged: relative paths of the originals copied to Damaged/
        const QString bad = QStringLiteral("Implausible timer values");
        table<QString, QString, QString, QStringList, QStringList, bool>({"case", "layout", "from", "damaged", "reasons", "blocked"}, {
            {"nothing", "----", "-", {}, {}, false},
            {"valid main", "V---", "", {}, {}, false},
            {"valid main and backups", "VVVV", "", {}, {}, false},
            {"valid main, bad backups", "VDFR", "", {}, {}, false},
            {"missing main, backup 1", "-V--", "timers-1.json", {}, {}, false},
            {"damaged main, backup 1", "DV--", "timers-1.json", {"timers.json"}, {}, false},
            {"main read fails, backup 1", "EV--", "timers-1.json", {"timers.json"}, {}, false},
            {"damaged main and backup 1", "DDV-", "timers-2.json", {"timers.json", "Backups/timers-1.json"}, {}, false},
            {"missing main, bad 1 and 2", "-FDV", "timers-3.json", {"Backups/timers-1.json", "Backups/timers-2.json"}, {}, false},
            {"foreign main, past a gap", "F-V-", "timers-2.json", {"timers.json"}, {}, false},
            // A folder cannot be copied to Damaged/: recovered, but saving stays paused.
            {"folder main, backup 1", "RV--", "timers-1.json", {}, {}, true},
            {"damaged main alone", "D---", "?", {}, {"timers.json: " + bad}, true},
            {"missing main, bad backups", "-FD-", "?", {}, {"timers.json: missing", "timers-1.json: Unsupported file format 2", "timers-2.json: " + bad}, true},
            {"everything bad", "RD-E", "?", {}, {"timers.json: not a regular file", "timers-1.json: " + bad, "timers-3.json: Input/output error"}, true},
        });
    }
    void recoveryMatrix()
    {
        QFETCH(QString, layout);
        QFETCH(QString, from);
        QFETCH(QStringList, damaged);
        QFETCH(QStringList, reasons);
        QFETCH(bool, blocked);
        Fixture f;
        f.plant(layout);
        const auto before = f.contents();
        const Result result = f.store.load(clockTime);
        auto expected = before;
        if (from == QLatin1String("-")) {
            QCOMPARE(result, Result{Result::Fresh{}});
        } else if (from.isEmpty()) {
            QCOMPARE(result, Result{Result::Loaded{snap("timers.json")}});
        } else if (from == QLatin1String("?")) {
            QStringList existing;
            for (int n = 0; n < layout.size(); ++n)
                if (layout.at(n) != QLatin1Char('-'))
                    existing.append(f.path(f.file(n)));
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

    void savingWaitsUntilTheDamagedFileIsPreserved()
    {
        Fixture f;
        f.plant("EV");
        f.fs->failOn(Op::createDirectories, QStringLiteral("/Damaged"));
        const auto before = f.contents();
        QCOMPARE(f.store.load(clockTime), (Result{Result::Recovered{snap("Backups/timers-1.json"), "timers-1.json", {}}}));
        QVERIFY(f.store.isBlocked() && f.store.awaitingArchive());
        // timers.json reads again now, but nothing may touch any file until it has been copied.
        f.fs->faults = {{Op::copy, {}, QStringLiteral("No space left on device")}};
        const int calls = f.fs->calls;
        QCOMPARE(failure([&] { f.store.save(snap("new"), 0); }), pausedMessage);
        QCOMPARE(failure([&] { f.store.write(snap("new")); }), pausedMessage);
        f.store.rotateBackups();
        QCOMPARE(f.fs->calls, calls);
        QCOMPARE(f.contents(), before);

        QVERIFY(!f.store.retryPreservation(clockTime));
        QVERIFY(f.store.isBlocked() && f.store.awaitingArchive());
        auto expected = before;
        expected.insert(QStringLiteral("Damaged"), "<dir>");
        QCOMPARE(f.contents(), expected);

        f.fs->faults.clear();
        QVERIFY(f.store.retryPreservation(clockTime));
        QVERIFY(!f.store.isBlocked() && !f.store.awaitingArchive());
        expected.insert("Damaged/" + stampText + "-timers.json", before.value("timers.json"));
        expected.insert(QStringLiteral("timers.json"), snap("Backups/timers-1.json").encoded());
        QCOMPARE(f.contents(), expected);
        QVERIFY(f.store.retryPreservation(clockTime));  // nothing pending, not blocked
    }

    void setsUnreadableDataAside()
    {
        Fixture f;
        f.plant("DF-D");
        writeFile(f.path("Damaged/old-timers.json"), "kept");
        f.store.load(clockTime);
        QVERIFY(!f.store.retryPreservation(clockTime));  // nothing to preserve, and nothing readable
        f.store.write(snap("x"), Store::BlockPolicy::ignore);
        QCOMPARE(readFile(f.path("timers.json")), snap("x").encoded());
        const auto before = f.contents();
        const QString aside = "Unreadable-" + stampText;
        f.fs->failOn(Op::createDirectories, aside, QStringLiteral("Disk quota exceeded"));
        QCOMPARE(failure([&] { f.store.setAsideUnreadableAndStartFresh(clockTime); }), "Could not create " + f.path(aside) + ": Disk quota exceeded");
        QCOMPARE(f.contents(), before);

        // Stops at the first failure; what was moved stays moved.
        f.fs->faults = {{Op::move, QStringLiteral("/Backups"), QStringLiteral("Device or resource busy")}};
        QCOMPARE(failure([&] { f.store.setAsideUnreadableAndStartFresh(clockTime); }),
                 "Could not move " + f.path("Backups") + " to " + f.path(aside) + "/Backups: Device or resource busy");
        QVERIFY(f.store.isBlocked());
        auto expected = before;
        expected.insert(aside, "<dir>");
        expected.insert(aside + "/timers.json", expected.take("timers.json"));
        QCOMPARE(f.contents(), expected);

        f.fs->faults.clear();
        QCOMPARE(f.store.setAsideUnreadableAndStartFresh(clockTime), f.path(aside));
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
        // backups: as shifted() reads it
        table<QString, QString, QString>({"case", "layout", "backups"}, {
            {"none", "V", "M----"},
            {"full", "VVVVVV", "M1234"},
            {"gaps", "VV-V", "M1-3-"},
            {"oldest only", "V----V", "M----"},
            // A bad main file never enters the backups.
            {"missing main", "-VV", "12"},
            {"damaged main", "DVV", "12"},
        });
    }
    void rotation()
    {
        QFETCH(QString, layout);
        QFETCH(QString, backups);
        Fixture f(5);
        f.plant(layout);
        auto expected = shifted(f.contents(), backups);
        expected.insert(QStringLiteral("Backups"), "<dir>");
        f.store.rotateBackups();
        QCOMPARE(f.contents(), expected);
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
        QCOMPARE(readFile(f.path(f.file(1))), snap("1600").encoded());
        QCOMPARE(readFile(f.path(f.file(2))), snap("1000").encoded());
        QCOMPARE(f.store.lastBackup(), 1600.0);
    }

    // What each kind of save costs, after a start (load, rotation, first save) that reads the
    // data once: only a change to something besides running seconds flushes the folder, and a
    // rotation copies what was just written instead of reading it back.
    void whatASaveCosts_data()
    {
        // costs: file flushes, folder flushes, renames, reads
        table<QString, QString, Instant, QList<int>>({"case", "change", "now", "costs"}, {
            {"start", "", 0.0, {3, 3, 3, 1}},
            {"tick", "tick", 1.0, {1, 0, 1, 0}},
            {"tick, rotation due", "tick", 700.0, {2, 1, 2, 0}},
            {"rename", "rename", 1.0, {1, 1, 1, 0}},
            {"pause", "pause", 1.0, {1, 1, 1, 0}},
            {"paused time edited", "edit", 1.0, {1, 1, 1, 0}},
            {"style", "style", 1.0, {1, 1, 1, 0}},
        });
    }
    void whatASaveCosts()
    {
        QFETCH(QString, change);
        QFETCH(Instant, now);
        QFETCH(QList<int>, costs);
        Fixture f(3, 600);
        f.plant("VV");
        Snapshot s = snap("running");
        s.timers[0].wasRunning = true;
        s.timers.append(snap("paused").timers);
        const auto counts = [&] {
            return QList<int>{f.fs->fileFlushes, f.fs->folderFlushes, f.fs->renames, f.fs->reads};
        };
        f.store.load(clockTime);
        f.store.rotateBackupsAtStart(0);
        f.store.save(s, 0);
        if (change.isEmpty()) {
            QCOMPARE(counts(), costs);
            QCOMPARE(readFile(f.path(f.file(1))), s.encoded());
            return;
        }
        f.fs->fileFlushes = f.fs->folderFlushes = f.fs->renames = f.fs->reads = 0;
        if (change == "tick")
            s.timers[0].seconds += 1;
        else if (change == "rename")
            s.timers[1].name = QStringLiteral("renamed");
        else if (change == "pause")
            s.timers[0].wasRunning = false;
        else if (change == "edit")
            s.timers[1].seconds = 5;
        else if (change == "style")
            s.style = QStringLiteral("amber");
        f.store.save(s, now);
        QCOMPARE(counts(), costs);
        QCOMPARE(readFile(f.path(f.file(0))), s.encoded());
    }

    // Each failure leaves every file as it was except what the save had finished; a failed
    // rotation is retried by the next save (lastBackup stays unset), and one that cannot write
    // its new copy drops nothing, so retries against a full disk never drain the backups.
    void faultsLeaveReadableFilesAlone_data()
    {
        // message: "@" stands for the data folder
        // backups: as shifted() reads it
        const QString tmp = QStringLiteral(".timers.json.%1.tmp").arg(::getpid());
        const QString full = QStringLiteral("No space left on device");
        table<QString, int, QString, QString, QString, bool, QString>({"case", "op", "where", "reason", "message", "mainReplaced", "backups"}, {
            {"folder", int(Op::createDirectories), "/Backups", "Permission denied", "Could not create @: Permission denied", false, "123"},
            {"temporary file", int(Op::createFile), tmp, full, "Could not create temporary file: " + full, false, "123"},
            {"disk full", int(Op::write), tmp, full, "Could not write @/timers.json: No space left on device", false, "123"},
            {"flush", int(Op::flush), tmp, "Input/output error", "Could not write @/timers.json: Input/output error", false, "123"},
            {"rename", int(Op::rename), tmp, "Read-only file system", "Read-only file system", false, "123"},
            {"drop oldest", int(Op::remove), "timers-3.json", "Operation not permitted", "Could not remove @/Backups/timers-3.json: Operation not permitted", true, "123"},
            {"shift", int(Op::move), "/timers-2.json", "Input/output error", "Could not move @/Backups/timers-2.json to @/Backups/timers-3.json: Input/output error", true, "12-"},
            {"backup temporary", int(Op::createFile), ".backup.tmp", full, "Could not create temporary file: " + full, true, "123"},
            {"backup write", int(Op::write), ".backup.tmp", full, "Could not write @/Backups/timers-1.json: No space left on device", true, "123"},
            {"backup rename", int(Op::rename), ".backup.tmp", "No such file or directory", "No such file or directory", true, "-12"},
        });
    }
    void faultsLeaveReadableFilesAlone()
    {
        QFETCH(int, op);
        QFETCH(QString, where);
        QFETCH(QString, reason);
        QFETCH(QString, message);
        QFETCH(bool, mainReplaced);
        QFETCH(QString, backups);
        Fixture f;
        f.plant("VVVV");
        auto expected = shifted(f.contents(), backups);
        if (mainReplaced)
            expected.insert(QStringLiteral("timers.json"), snap("new").encoded());
        f.fs->failOn(Op(op), where, reason);
        if (mainReplaced) // only the rotation failed
            message.prepend("Your timers are saved, but the backups are not being refreshed: ");
        QCOMPARE(failure([&] { f.store.save(snap("new"), 0); }), message.replace('@', f.dir.path()));
        QCOMPARE(f.store.lastBackup(), std::nullopt);
        QCOMPARE(f.contents(), expected);
    }

    // Links and special files planted in the folder: reads never hang or exhaust memory, writes
    // never land in a link's target except timers.json's own, which stays a link.
    void hostileEntries_data()
    {
        // plant: what is at timers.json
        // backup: a valid Backups/timers-1.json as well
        // reason: the load's reason for timers.json; "" loaded or fresh
        // staysLink: timers.json is still a link after a save
        table<QString, QString, bool, QString, bool>({"case", "plant", "backup", "reason", "staysLink"}, {
            {"pipe", "fifo", false, "not a regular file", false},
            {"pipe, backup", "fifo", true, "not a regular file", false},
            {"link to a device, backup", "zero", true, "not a regular file", false},
            {"too large", "huge", false, "larger than 64 MB", false},
            {"link to a file", "link", false, "", true},
            {"dangling link", "dangling", false, "", false},
            // Links someone else could steer are not followed: never read, copied or written through.
            {"link to /dev/null, backup", "null", true, "not a regular file", false},
            {"link to another user's file, backup", "theirs", true, "not a regular file", false},
            {"another user's link, backup", "their link", true, "not a regular file", false},
            {"another user's link", "their link", false, "not a regular file", false},
        });
    }
    void hostileEntries()
    {
        QFETCH(QString, plant);
        QFETCH(bool, backup);
        QFETCH(QString, reason);
        QFETCH(bool, staysLink);
        Fixture f;
        QTemporaryDir outside;
        const QString target = outside.filePath("kept.json"), main = f.path("timers.json");
        const QByteArray main8 = QFile::encodeName(main);
        if (plant.startsWith("the") && ::geteuid() != 0)
            QSKIP("needs root to give a file to another user");
        if (plant == "fifo")
            QCOMPARE(::mkfifo(main8.constData(), 0644), 0);
        else if (plant == "zero" || plant == "null")
            QVERIFY(QFile::link(plant == "zero" ? "/dev/zero" : "/dev/null", main));
        else if (plant == "huge")
            QVERIFY(QFile(main).open(QIODevice::WriteOnly) && ::truncate(main8.constData(), maximumReadSize + 1) == 0);
        else {
            if (plant != "dangling")
                writeFile(target, snap("timers.json").encoded());
            QVERIFY(QFile::link(target, main));
        }
        if (plant == "link")
            QCOMPARE(::chmod(QFile::encodeName(target).constData(), 0600), 0);
        const uid_t nobody = 65534;
        if (plant == "theirs")
            QCOMPARE(::chown(QFile::encodeName(target).constData(), nobody, nobody), 0);
        if (plant == "their link")
            QCOMPARE(::lchown(main8.constData(), nobody, nobody), 0);
        if (backup)
            f.plant("-V");
        const Result result = f.store.load(clockTime);
        if (reason.isEmpty()) {
            QVERIFY(!f.store.isBlocked());
        } else if (backup) {
            QCOMPARE(result, (Result{Result::Recovered{snap(f.file(1)), "timers-1.json", {}}}));
            QVERIFY(!f.store.isBlocked());  // nothing in a pipe or device to archive first
            QCOMPARE(readFile(main), snap(f.file(1)).encoded());
        } else {
            QCOMPARE(result, (Result{Result::Unreadable{{main}, {"timers.json: " + reason}}}));
            QVERIFY(f.store.isBlocked());
            return;
        }
        f.store.save(snap("new"), 0);
        QCOMPARE(QFileInfo(main).isSymLink(), staysLink);
        QCOMPARE(readFile(main), snap("new").encoded());
        const bool hasTarget = plant == "link" || plant.startsWith("the");
        QCOMPARE(folderContents(outside.path()).keys(), hasTarget ? QStringList{"kept.json"} : QStringList());
        if (plant.startsWith("the"))
            QCOMPARE(readFile(target), snap("timers.json").encoded());
        // What Tock makes anew is private, whatever was there.
        QCOMPARE(modeOf(staysLink ? target : main), 0600);
    }

    // The store's temporary names hold links to other files: they are replaced, never written
    // through; stale ones are removed once, and nothing else is. A save keeps timers.json's
    // permission bits less group and world write (new files are private: hostileEntries).
    void temporaryNamesAreNeverFollowed()
    {
        Fixture f;
        f.plant("VV");
        QTemporaryDir outside;
        const QString victim = outside.filePath("victim");
        writeFile(victim, "precious");
        const QString tmp = QStringLiteral(".timers.json.%1.tmp").arg(::getpid());
        QVERIFY(QFile::link(victim, f.path(tmp)) && QFile::link(victim, f.path("Backups/.backup.tmp")));
        QCOMPARE(::chmod(QFile::encodeName(f.path("timers.json")).constData(), 0666), 0);
        f.store.save(snap("new"), 0);
        QCOMPARE(readFile(victim), QByteArray("precious"));
        QCOMPARE(readFile(f.path("timers.json")), snap("new").encoded());
        QCOMPARE(readFile(f.path(f.file(1))), snap("new").encoded());
        QCOMPARE(modeOf(f.path("timers.json")), 0644);
        QCOMPARE(modeOf(f.path(f.file(1))), 0600);

        for (const char *name : {".timers.json.1.tmp", ".timers.json.77.tmp", "Backups/.backup.tmp", ".timers.json.x.tmp",
                                 ".timers.json.1.tmp~", ".timers.json..tmp", ".timers.json.tmp", "Backups/.timers.json.1.tmp", "Damaged/.backup.tmp"})
            writeFile(f.path(name), "left over");
        const auto before = f.contents();
        f.store.removeStaleTemporaryFiles();
        auto expected = before;
        for (const char *name : {".timers.json.1.tmp", ".timers.json.77.tmp", "Backups/.backup.tmp"})
            expected.remove(name);
        QCOMPARE(f.contents(), expected);
    }

    // Scripted runs in a row: with byNewestBackup pacing a rotation waits until the newest backup
    // on disk is older than the interval, at start and at save alike.
    void backupPacing_data()
    {
        // age: of Backups/timers-1.json, seconds
        table<QString, int, double, bool>({"case", "pacing", "age", "rotates"}, {
            {"per run, recent", int(Store::BackupPacing::perRun), 10.0, true},
            {"newest, recent", int(Store::BackupPacing::byNewestBackup), 599.0, false},
            {"newest, old", int(Store::BackupPacing::byNewestBackup), 601.0, true},
            {"newest, future", int(Store::BackupPacing::byNewestBackup), -100.0, true},
            {"newest, this millisecond", int(Store::BackupPacing::byNewestBackup), -0.0005, false},
        });
    }
    void backupPacing()
    {
        QFETCH(int, pacing);
        QFETCH(double, age);
        const Instant now = 1'800'000'000;
        for (const bool atStart : {true, false}) {
            Fixture f;
            f.plant("VV");
            f.store.setBackupPacing(Store::BackupPacing(pacing));
            const double at = now - age;
            const auto whole = time_t(std::floor(at));
            const auto micro = suseconds_t(std::lround((at - double(whole)) * 1e6));
            const struct timeval times[2] = {{whole, micro}, {whole, micro}};
            QCOMPARE(::utimes(QFile::encodeName(f.path(f.file(1))).constData(), times), 0);
            if (atStart)
                f.store.rotateBackupsAtStart(now);
            else
                f.store.save(snap("timers.json"), now);
            QTEST(QFileInfo::exists(f.path(f.file(2))), "rotates");
        }
    }

    void aFileCutAtAnyByteLoadsOrFallsBack()
    {
        Fixture f;
        const QByteArray full = snap("timers.json").encoded();
        f.plant("-V");
        for (qsizetype n = 0; n < full.size(); ++n) {
            writeFile(f.path("timers.json"), full.left(n));
            const Result result = Store(f.dir.path(), 3, 600, f.fs).load(clockTime);
            if (n == full.size() - 1)  // only the final newline gone
                QCOMPARE(result, Result{Result::Loaded{snap("timers.json")}});
            else
                QVERIFY2(std::get<Result::Recovered>(result.value).snapshot == snap(f.file(1)), qPrintable(QString::number(n)));
        }
    }

    // The folder written is always the one locked: once its path names another folder (or none)
    // nothing is created or written there until the lock is taken again, and what someone else
    // saved there meanwhile is kept as the newest backup (or in Damaged/ when it is not valid).
    void lostFolder_data()
    {
        // found: a timers.json written there meanwhile
        // kept: where it ends up
        table<QString, QString, QByteArray, QString>({"case", "change", "found", "kept"}, {
            {"replaced, theirs valid", "mv", snap("theirs").encoded(), "Backups/timers-1.json"},
            {"replaced, theirs damaged", "rm", QByteArray("{"), "Damaged/" + stampText + "-timers.json"},
            {"another copy holds it", "other", {}, ""},
        });
    }
    void lostFolder()
    {
        QFETCH(QString, change);
        QFETCH(QByteArray, found);
        QFETCH(QString, kept);
        QTemporaryDir root;
        const QString data = root.filePath("data"), away = root.filePath("away");
        InstanceLock lock(data);
        QVERIFY(lock.acquire());
        Store store(data, 3, 600, std::make_shared<FaultyFileSystem>());
        store.setLock(&lock);
        store.load(clockTime);
        store.save(snap("mine"), 0);
        const auto before = folderContents(data);
        if (change == "rm")
            QVERIFY(QDir(data).removeRecursively());
        else
            QVERIFY(QDir().rename(data, away));
        if (!found.isEmpty())
            writeFile(data + "/timers.json", found);
        InstanceLock other(data);
        if (change == "other")
            QVERIFY(other.acquire());
        const auto atPath = folderContents(data);
        const QString gone = QStringLiteral("The Tock data folder %1 was moved or deleted. Your timers are kept in "
                                            "this window and nothing is written until you press Retry, which saves "
                                            "them in %1 again.").arg(data);
        QCOMPARE(failure([&] { store.save(snap("later"), 1000); }), gone);
        if (kept.startsWith("Backups"))
            QCOMPARE(failure([&] { store.rotateBackups(); }), gone);
        QVERIFY(store.folderLost());
        QCOMPARE(folderContents(data), atPath);  // nothing created or written at the path
        if (change != "rm")
            QCOMPARE(folderContents(away), before); // nor in the folder that moved away

        const QString retake = failure([&] { store.retakeFolder(clockTime); });
        if (change == "other") {
            QCOMPARE(retake, QStringLiteral("Another copy of Tock is using the data folder %1. Close it, then press Retry.").arg(data));
            QVERIFY(store.folderLost());
            other.release();
            QCOMPARE(failure([&] { store.retakeFolder(clockTime); }), QString());
        } else {
            QCOMPARE(retake, QString());
        }
        QVERIFY(!store.folderLost());
        QVERIFY(lock.coversFolder());
        store.save(snap("later"), 100);
        QCOMPARE(readFile(data + "/timers.json"), snap("later").encoded());
        if (!kept.isEmpty())
            QCOMPARE(readFile(data + "/" + kept), found);
    }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "store_test.moc"

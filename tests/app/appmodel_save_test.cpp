// Saving against a real store in a temporary folder: bursts, failures, the archive and the
// blocked store (the tick and the saving cadence are self-check scenarios). Virtual time throughout.
#include "files.h"
#include "instancelock.h"
#include "modelfixture.h"

#include <QDir>
#include <QTest>

using namespace tock;
using namespace tock::testing;

class AppModelSaveTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aBurstOfChangesIsOneSave()
    {
        ModelFixture f;
        for (const char *name : {"X", "Y", "Z"}) {
            f.m().rename(f.id(0), name);
            f.advance(0.25);
        }
        QVERIFY(!f.saved());
        f.advance(0.0625);
        QCOMPARE(f.saved()->timers.at(0).name, QStringLiteral("Z"));
        QCOMPARE(f.saved()->style, std::optional<QString>("classic"));
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    void failedSaveShowsTheSystemTextAndRetriesAboutOnceASecond()
    {
        ModelFixture f(WithStore::no);
        const QString folder = f.dir.filePath("data");
        writeFile(folder, "in the way"); // a file where the folder should be
        f.store = std::make_shared<Store>(folder, 5, 600);
        f.make(ModelFixture::board({"A"}));
        const Instant start = f.v.clock->now();
        f.m().toggle(f.id(0));
        f.advance(1);
        QCOMPARE(f.m().notice(), StorageNotice::saveFailed("Could not create " + folder + ": File exists"));
        QVERIFY(qFuzzyCompare(ModelProbe::lastSave(f.m()), start + 0.3)); // advances on failure too
        f.advance(1);
        QCOMPARE(ModelProbe::lastSave(f.m()), start + 2);
        QVERIFY(QFile::remove(folder));
        f.advance(1);
        QVERIFY(!f.m().notice());
        QCOMPARE(f.saved()->timers.at(0).seconds, 3.0);

        ModelFixture other(WithStore::yes, {"A"}, StorageNotice::recovered("timers-1.json"));
        other.m().retrySave(); // success clears only its own kind of notice
        QCOMPARE(other.m().notice(), StorageNotice::recovered("timers-1.json"));
    }

    // The data folder moved away: every change stays in memory and unsaved, nothing is written
    // until Retry takes the folder's lock again; a scripted change learns it is not saved.
    void lostFolderWaitsForRetry()
    {
        QTemporaryDir root;
        const QString folder = root.filePath("data");
        InstanceLock lock(folder);
        QVERIFY(lock.acquire());
        ModelFixture f(WithStore::no);
        f.store = std::make_shared<Store>(folder, 5, 600);
        f.store->setLock(&lock);
        f.make(ModelFixture::board({"A"}));
        f.m().toggle(f.id(0));
        f.advance(1);
        QVERIFY(f.saved() && !f.m().hasUnsavedChanges());
        QVERIFY(QDir().rename(folder, root.filePath("away")));
        f.m().addTimer(QString("B"));
        f.advance(2);
        const QString gone = StoreError::folderGone(folder).description();
        QCOMPARE(f.m().notice(), StorageNotice::saveFailed(gone));
        QVERIFY(!QFileInfo::exists(folder));
        QCOMPARE(f.m().unsavedReason(), gone);
        QVERIFY(!f.m().saveNow());
        f.m().retrySave();
        QVERIFY(!f.m().notice());
        QVERIFY(!f.m().unsavedReason());
        QCOMPARE(f.saved()->timers.size(), 2);
    }

    void archiveIsRetriedBeforeSaving()
    {
        ModelFixture f(WithStore::no);
        const QString folder = f.dir.path();
        writeFile(folder + "/timers.json", "{ damaged");
        writeFile(folder + "/Backups/timers-1.json", Snapshot(ModelFixture::board({"Kept"}), QString("amber"), 1000).encoded());
        writeFile(folder + "/Damaged", "not a folder");
        f.store = std::make_shared<Store>(folder, 5, 600);
        const Store::LoadResult loaded = f.store->load(0);
        const auto *recovered = std::get_if<Store::LoadResult::Recovered>(&loaded.value);
        QVERIFY(recovered && f.store->awaitingArchive());
        f.make(recovered->snapshot.board(), StorageNotice::saveFailed(archiveFailedMessage()));

        f.m().rename(f.id(0), "Renamed");
        f.advance(0.5);
        QCOMPARE(f.m().notice()->detail(),
                 "Tock restored your timers from a backup but could not archive the damaged data file, so "
                 "nothing is being saved yet (to keep that file). Check disk space and permissions of the "
                 "Tock data folder, then press Retry.");
        QCOMPARE(readFile(folder + "/timers.json"), QByteArray("{ damaged")); // kept for the archive
        QVERIFY(QFile::remove(folder + "/Damaged"));
        f.m().retrySave(); // the banner's Retry
        QVERIFY(!f.m().notice());
        QCOMPARE(f.saved()->timers.at(0).name, QStringLiteral("Renamed"));
        QCOMPARE(QDir(folder + "/Damaged").entryList(QDir::Files).size(), 1);
    }

    void blockedStoreWritesNothingUntilStartFresh()
    {
        ModelFixture f(WithStore::no);
        const QString folder = f.dir.path();
        writeFile(folder + "/timers.json", "[]");
        f.store = std::make_shared<Store>(folder, 5, 600);
        const Store::LoadResult loaded = f.store->load(0);
        const auto *unreadable = std::get_if<Store::LoadResult::Unreadable>(&loaded.value);
        QVERIFY(unreadable);
        f.make(Board(), StorageNotice::unreadable(unreadable->reasons));
        f.m().addTimer();
        f.m().toggle(f.id(0));
        f.advance(2);
        QCOMPARE(readFile(folder + "/timers.json"), QByteArray("[]"));
        QVERIFY(f.m().notice() && !f.m().notice()->isSaveFailed());

        f.confirmStartFresh = false;
        f.m().startFreshAfterUnreadable();
        QCOMPARE(f.startFreshQuestions, 1);
        QCOMPARE(readFile(folder + "/timers.json"), QByteArray("[]"));
        f.confirmStartFresh = true;
        f.m().startFreshAfterUnreadable();
        QVERIFY(!f.m().notice());
        QCOMPARE(f.saved()->timers.at(0).name, QStringLiteral("Timer 1")); // saved at once
        const QStringList aside = QDir(folder).entryList({"Unreadable-*"}, QDir::Dirs);
        QCOMPARE(aside.size(), 1);
        QCOMPARE(readFile(folder + "/" + aside.first() + "/timers.json"), QByteArray("[]"));
    }
};

QTEST_GUILESS_MAIN(AppModelSaveTest)
#include "appmodel_save_test.moc"

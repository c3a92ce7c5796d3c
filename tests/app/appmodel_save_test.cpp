// The once-a-second tick, the shown seconds and the saving cadence, against a real store in a
// temporary folder. Virtual time throughout.
#include "modeltest.h"

#include "timevalues.h"

#include <QDir>

using namespace tock;

namespace {

void writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(data);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class AppModelSaveTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void sharedClockOneTickPerSecondOnlyWhileRunningStepsOfOne()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        QCOMPARE(f.v.scheduler->repeatingCount(), 1);
        const auto tasks = f.v.scheduler->tasks();
        const auto tick = std::find_if(tasks.begin(), tasks.end(), [](const auto &t) { return t.interval > 0; });
        QCOMPARE(tick->interval, 1.0);
        QCOMPARE(tick->tolerance, 0.1);
        f.advance(3);
        QCOMPARE(f.m().displayTick()->tick(), 3);
        f.m().toggle(f.id(1)); // a second running timer shares the one tick
        QCOMPARE(f.v.scheduler->repeatingCount(), 1);
        SignalCounter counter(f.model.get());
        f.advance(1);
        QCOMPARE(f.m().displayTick()->tick(), 4);
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(0)), 4);
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(1)), 1);
        QCOMPARE(counter.emitted(), QStringList()); // the tick changes nothing else

        f.v.clock->advance(2); // one late wake-up: a small lag is made up a second at a time
        ModelProbe::tick(f.m());
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(0)), 5);
        f.v.clock->advance(3); // a large one jumps
        ModelProbe::tick(f.m());
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(0)), 9);
        QCOMPARE(f.m().displayTick()->tick(), 6);

        f.m().pauseAll();
        QCOMPARE(f.v.scheduler->repeatingCount(), 0);
        QVERIFY(!ModelProbe::shownValue(f.m(), f.id(0)));
        f.advance(5);
        QCOMPARE(f.m().displayTick()->tick(), 6);
    }

    void theDisplayFollowsEditsStopsAtTheCapAndPausedIsExact()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(2);
        f.set(0, 100); // the shown value goes stale on any edit
        QVERIFY(!ModelProbe::shownValue(f.m(), f.id(0)));
        QCOMPARE(f.m().displayedSeconds(f.id(0)), 100);
        f.advance(1);
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(0)), 101);
        f.v.clock->advance(3.5); // no tick yet: the display keeps its second
        QCOMPARE(f.m().displayedSeconds(f.id(0)), 101);
        f.m().toggle(f.id(0));
        QCOMPARE(f.m().displayedSeconds(f.id(0)), 104);

        f.set(1, HMS::maxSeconds - 1);
        f.m().toggle(f.id(1));
        const qint64 ticks = f.m().displayTick()->tick();
        f.advance(1);
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(1)), HMS::maxSeconds);
        f.advance(5); // capped: no redraw while no shown value changes
        QCOMPARE(f.m().displayTick()->tick(), ticks + 1);
    }

    void keptCountingWhileHidden()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.m().setWindowVisible(false);
        QSignalSpy seconds(f.m().displayTick(), &DisplayTick::secondsChanged);
        f.advance(3.5);
        QCOMPARE(f.m().displayTick()->tick(), 0);
        QCOMPARE(seconds.count(), 3); // what shows times outside the window still follows
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(0)), 3);
        QCOMPARE(f.saved()->timers.at(0).seconds, 3.0); // and saving
        f.m().setWindowVisible(true);
        QCOMPARE(f.m().displayTick()->tick(), 1); // caught up at once
        f.advance(0.5);
        QCOMPARE(f.m().displayTick()->tick(), 2);
        QCOMPARE(ModelProbe::shownValue(f.m(), f.id(0)), 4);
    }

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

    void tickSavesAboutOnceASecondAndPauseAllAtOnce()
    {
        ModelFixture f;
        const Instant start = f.v.clock->now();
        f.m().toggle(f.id(0));
        f.advance(1); // the debounced save at 0.3; the tick at 1.0 is too soon after it
        QVERIFY(qFuzzyCompare(ModelProbe::lastSave(f.m()), start + 0.3));
        f.advance(1);
        QCOMPARE(ModelProbe::lastSave(f.m()), start + 2);
        QCOMPARE(f.saved()->timers.at(0).seconds, 2.0);
        QVERIFY(f.saved()->timers.at(0).wasRunning);
        f.advance(1);
        QCOMPARE(ModelProbe::lastSave(f.m()), start + 3);
        f.v.clock->advance(0.75);
        f.m().pauseAll();
        QCOMPARE(f.saved()->timers.at(0).seconds, 3.75);
        QVERIFY(!f.saved()->timers.at(0).wasRunning);
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    void failedSaveShowsTheSystemTextAndRetriesAboutOnceASecond()
    {
        QTemporaryDir root;
        const QString folder = root.filePath("data");
        writeFile(folder, "in the way"); // a file where the folder should be
        QString expected;
        try {
            Store(folder, 5, 600).save(Snapshot(Board(), std::nullopt, 0), 0);
        } catch (const StoreError &e) {
            expected = e.description();
        }
        QVERIFY(expected.startsWith("Could not create " + folder + ": "));

        ModelFixture f(WithStore::no);
        f.store = std::make_shared<Store>(folder, 5, 600);
        f.make(ModelFixture::board({"A"}));
        const Instant start = f.v.clock->now();
        f.m().toggle(f.id(0));
        f.advance(1);
        QCOMPARE(f.m().notice(), StorageNotice::saveFailed(expected));
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

    void archiveIsRetriedBeforeSaving()
    {
        ModelFixture f(WithStore::no);
        const QString folder = f.dir.path();
        QVERIFY(QDir(folder).mkpath("Backups"));
        writeFile(folder + "/timers.json", "{ damaged");
        writeFile(folder + "/Backups/timers-1.json", Snapshot(ModelFixture::board({"Kept"}), QString("amber"), 1000).encoded());
        writeFile(folder + "/Damaged", "not a folder");
        f.store = std::make_shared<Store>(folder, 5, 600);
        const Store::LoadResult loaded = f.store->load();
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
        const Store::LoadResult loaded = f.store->load();
        const auto *unreadable = std::get_if<Store::LoadResult::Unreadable>(&loaded.value);
        QVERIFY(unreadable);
        f.make(Board(), StorageNotice::unreadable(unreadable->reasons));
        f.m().addTimer();
        f.m().toggle(f.id(0));
        f.advance(2);
        QCOMPARE(readFile(folder + "/timers.json"), QByteArray("[]"));
        QVERIFY(f.m().notice() && !f.m().notice()->isSaveFailed());

        const Confirmation question{
            "Start with an empty list?",
            QString::fromUtf8("The unreadable files will be moved to a folder named “Unreadable-…” inside the "
                              "Tock data folder. Nothing is deleted."),
            "Start Fresh", "Cancel"};
        QCOMPARE(AppModel::startFreshQuestion(), question);
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

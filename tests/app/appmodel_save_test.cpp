// The once-a-second tick, the shown seconds and the saving cadence, against a real store in a
// temporary folder. Virtual time throughout.
#include "modelfixture.h"

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
    // --- The tick --------------------------------------------------------------------------

    void sharedClockOneTickPerSecondOnlyWhileRunningStepsOfOne()
    {
        ModelFixture f;
        QVERIFY(!f.m().isTicking());
        QCOMPARE(f.v.scheduler->pendingCount(), 0);

        f.m().toggle(f.id(0));
        QVERIFY(f.m().isTicking());
        QCOMPARE(f.v.scheduler->repeatingCount(), 1);
        const auto tasks = f.v.scheduler->tasks();
        const auto tick = std::find_if(tasks.begin(), tasks.end(), [](const auto &t) { return t.interval > 0; });
        QCOMPARE(tick->interval, 1.0);
        QCOMPARE(tick->tolerance, 0.1);

        SignalCounter counter(f.model.get());
        for (int second = 1; second <= 3; ++second) {
            f.advance(1);
            QCOMPARE(f.m().displayTick()->tick(), second);
            QCOMPARE(f.m().shownValue(f.id(0)), second);
        }
        f.m().toggle(f.id(1)); // a second running timer shares the one tick
        QCOMPARE(f.v.scheduler->repeatingCount(), 1);
        counter.clear();
        f.advance(1);
        QCOMPARE(f.m().displayTick()->tick(), 4);
        QCOMPARE(f.m().shownValue(f.id(0)), 4);
        QCOMPARE(f.m().shownValue(f.id(1)), 1);
        QCOMPARE(counter.emitted(), QStringList()); // the tick changes nothing else

        // A late wake-up catches up one second at a time.
        f.v.clock->advance(2);
        f.v.scheduler->runDue();
        QCOMPARE(f.m().shownValue(f.id(0)), 6);
        QCOMPARE(f.m().displayTick()->tick(), 6);

        f.m().pauseAll();
        QVERIFY(!f.m().isTicking());
        QCOMPARE(f.v.scheduler->repeatingCount(), 0);
        QVERIFY(!f.m().shownValue(f.id(0)));
        f.advance(5);
        QCOMPARE(f.m().displayTick()->tick(), 6);
    }

    void noRedrawWhileNoShownValueChanges()
    {
        ModelFixture f;
        f.m().setTime(f.id(0), HMS::maxSeconds - 1, f.timer(0), f.v.clock->now());
        f.m().toggle(f.id(0));
        f.advance(1);
        QCOMPARE(f.m().shownValue(f.id(0)), HMS::maxSeconds);
        QCOMPARE(f.m().displayTick()->tick(), 1);
        f.advance(5); // capped: the display stands still
        QCOMPARE(f.m().displayTick()->tick(), 1);
    }

    void pausedShowsTheExactTime()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(1);
        f.v.clock->advance(3.5); // no tick yet: the display keeps its second
        QCOMPARE(f.m().displayedSeconds(f.id(0)), 1);
        f.m().toggle(f.id(0));
        QCOMPARE(f.m().displayedSeconds(f.id(0)), 4);
        QCOMPARE(f.elapsed(0), 4.5);
        QCOMPARE(f.m().displayedSeconds(QUuid::createUuid()), 0);
    }

    void shownValueGoesStaleOnAnyEdit()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(2);
        QCOMPARE(f.m().shownValue(f.id(0)), 2);
        f.m().setTime(f.id(0), 100, f.timer(0), f.v.clock->now());
        QVERIFY(!f.m().shownValue(f.id(0)));
        QCOMPARE(f.m().displayedSeconds(f.id(0)), 100);
        f.advance(1);
        QCOMPARE(f.m().shownValue(f.id(0)), 101);
    }

    void keptCountingWhileHidden()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.m().setWindowVisible(false);
        f.advance(3.5);
        QCOMPARE(f.m().displayTick()->tick(), 0);
        QCOMPARE(f.m().shownValue(f.id(0)), 3);
        QCOMPARE(f.saved()->timers.at(0).seconds, 3.0); // and saving
        f.m().setWindowVisible(true);
        f.advance(0.5);
        QCOMPARE(f.m().displayTick()->tick(), 1);
        QCOMPARE(f.m().shownValue(f.id(0)), 4);
    }

    void deletingTheLastRunningTimerStopsTheTick()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.m().toggle(f.id(1));
        f.m().reset(f.id(0));
        QVERIFY(f.m().isTicking());
        f.m().deleteTimer(f.id(1)); // B, the last one running
        QVERIFY(!f.m().isTicking());
        f.undo.undo();
        QVERIFY(f.m().isTicking());
    }

    // --- Saving ----------------------------------------------------------------------------

    void aBurstOfChangesIsOneSave()
    {
        ModelFixture f;
        f.m().rename(f.id(0), "X");
        f.advance(0.25);
        f.m().rename(f.id(1), "Y");
        f.advance(0.25);
        f.m().rename(f.id(2), "Z");
        const Instant last = f.v.clock->now();
        f.advance(0.25);
        QVERIFY(!f.saved());
        f.advance(0.0625);
        const std::optional<Snapshot> saved = f.saved();
        QVERIFY(saved);
        QCOMPARE(saved->timers.size(), 3);
        QCOMPARE(saved->timers.at(2).name, QStringLiteral("Z"));
        QCOMPARE(saved->style, std::optional<QString>("classic"));
        QVERIFY(qFuzzyCompare(f.m().lastSave(), last + 0.3));
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    void tickSavesAboutOnceASecond()
    {
        ModelFixture f;
        const Instant start = f.v.clock->now();
        f.m().toggle(f.id(0));
        f.advance(1); // the debounced save at 0.3; the tick at 1.0 is too soon after it
        QVERIFY(qFuzzyCompare(f.m().lastSave(), start + 0.3));
        f.advance(1);
        QCOMPARE(f.m().lastSave(), start + 2);
        const Snapshot saved = *f.saved();
        QCOMPARE(saved.timers.at(0).seconds, 2.0);
        QVERIFY(saved.timers.at(0).wasRunning);
        f.advance(1);
        QCOMPARE(f.m().lastSave(), start + 3);
    }

    void pauseAllSavesAtOnce()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(0.5);
        f.v.clock->advance(0.25);
        f.m().pauseAll();
        const Snapshot saved = *f.saved();
        QCOMPARE(saved.timers.at(0).seconds, 0.75);
        QVERIFY(!saved.timers.at(0).wasRunning);
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
        f.advance(0.5);
        QCOMPARE(f.m().notice(), StorageNotice::saveFailed(expected));
        QVERIFY(qFuzzyCompare(f.m().lastSave(), start + 0.3)); // advances on failure too
        f.advance(0.5);
        QVERIFY(qFuzzyCompare(f.m().lastSave(), start + 0.3));
        f.advance(1);
        QCOMPARE(f.m().lastSave(), start + 2);

        QVERIFY(QFile::remove(folder));
        f.advance(1);
        QVERIFY(!f.m().notice());
        QCOMPARE(f.saved()->timers.at(0).seconds, 3.0);
    }

    void successfulSaveKeepsOtherNotices()
    {
        ModelFixture f(WithStore::yes, {"A"}, StorageNotice::recovered("timers-1.json"));
        f.m().save();
        QVERIFY(f.saved());
        QCOMPARE(f.m().notice(), StorageNotice::recovered("timers-1.json"));
    }

    void archiveIsRetriedBeforeSaving()
    {
        ModelFixture f(WithStore::no);
        const QString folder = f.dir.path();
        QVERIFY(QDir(folder).mkpath("Backups"));
        writeFile(folder + "/timers.json", "{ damaged");
        Board backup = ModelFixture::board({"Kept"});
        writeFile(folder + "/Backups/timers-1.json", Snapshot(backup, QString("amber"), 1000).encoded());
        writeFile(folder + "/Damaged", "not a folder");
        f.store = std::make_shared<Store>(folder, 5, 600);
        const Store::LoadResult loaded = f.store->load();
        const auto *recovered = std::get_if<Store::LoadResult::Recovered>(&loaded.value);
        QVERIFY(recovered);
        QVERIFY(f.store->awaitingArchive());
        f.make(recovered->snapshot.board(), StorageNotice::saveFailed(archiveFailedMessage()));

        f.m().rename(f.id(0), "Renamed");
        f.advance(0.5);
        QCOMPARE(f.m().notice(), StorageNotice::saveFailed(archiveFailedMessage()));
        QCOMPARE(readFile(folder + "/timers.json"), QByteArray("{ damaged")); // kept for the archive

        QVERIFY(QFile::remove(folder + "/Damaged"));
        f.m().save(); // the banner's Retry
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
        *f.v.answer = false;
        f.m().startFreshAfterUnreadable();
        QCOMPARE(*f.v.confirmations, QList<Confirmation>{question});
        QCOMPARE(readFile(folder + "/timers.json"), QByteArray("[]"));
        QVERIFY(f.m().notice());

        *f.v.answer = true;
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

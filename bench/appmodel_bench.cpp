// Costs of the model's hot paths: one tick with many running timers, and one action followed
// by its debounced save into a real data folder. Run: build/dev/bench/appmodel_bench
#include "appmodel.h"
#include "store.h"
#include "modelfixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tock;

namespace {

Board runningBoard(int count, Instant now)
{
    Board board;
    for (int i = 0; i < count; ++i) {
        const TimerItem added = board.add();
        board.toggle(added.id, now - i);
    }
    return board;
}

} // namespace

class AppModelBench : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void onTick_data()
    {
        QTest::addColumn<int>("running");
        QTest::newRow("1 running") << 1;
        QTest::newRow("10 running") << 10;
        QTest::newRow("1000 running") << 1000;
    }
    // Without a store, so the figure is the tick alone (the save it may trigger is measured
    // below); the clock moves a second per call so every shown value changes.
    void onTick()
    {
        QFETCH(int, running);
        VirtualServices v;
        UndoManager undo;
        AppModel model(nullptr, runningBoard(running, v.clock->now()), std::nullopt, std::nullopt, v.services(), undo);
        ModelProbe::tick(model);
        QBENCHMARK {
            v.clock->advance(1);
            ModelProbe::tick(model);
        }
        QVERIFY(model.displayTick()->tick() > 0);
    }

    void actionToSave_data()
    {
        QTest::addColumn<int>("timers");
        QTest::newRow("3 timers") << 3;
        QTest::newRow("1000 timers") << 1000;
    }
    // A rename, then the debounced save: snapshot, encoding, temporary file, flush and rename.
    void actionToSave()
    {
        QFETCH(int, timers);
        QTemporaryDir dir;
        VirtualServices v;
        auto store = std::make_shared<Store>(dir.path(), 5, 600);
        Board board;
        for (int i = 0; i < timers; ++i)
            board.add();
        UndoManager undo;
        AppModel model(store, board, std::nullopt, std::nullopt, v.services(), undo);
        const QUuid id = model.board().timers.first().id;
        int n = 0;
        QBENCHMARK {
            model.rename(id, QString::number(++n));
            v.advance(0.3);
        }
        QVERIFY(ModelProbe::lastSave(model) > 0);
        QVERIFY(!model.notice());
    }
};

QTEST_GUILESS_MAIN(AppModelBench)
#include "appmodel_bench.moc"

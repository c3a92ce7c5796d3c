// Undo, redo and toasts: the menu path and the toast path share one history, and a toast undoes
// exactly its own action whatever lies above it.
#include "modeltest.h"

using namespace tock;

class AppModelUndoTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // The newest toast: its step is on top, so it goes through the manager and redo works.
    void toastUndoInOrder_data()
    {
        QTest::addColumn<bool>("remove");
        QTest::addColumn<QString>("message");
        QTest::newRow("two resets: the toast undoes its own reset only") << false << "Reset “B”";
        QTest::newRow("toast undo in order goes through the undo manager") << true << "Deleted “B”";
    }
    void toastUndoInOrder()
    {
        QFETCH(bool, remove);
        QFETCH(QString, message);
        ModelFixture f;
        f.set(0, 100);
        f.set(1, 200);
        f.m().reset(f.id(0));
        remove ? f.m().deleteTimer(f.id(1)) : f.m().reset(f.id(1));
        QCOMPARE(f.m().toast()->entry.message(), message);
        f.m().undoToast();
        QVERIFY(!f.m().toast());
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QCOMPARE(f.elapsed(0), 0.0);
        QCOMPARE(f.elapsed(1), 200.0);
        QCOMPARE(f.undo.undoMenuItemTitle(), "Undo Reset Timer");
        QCOMPARE(f.undo.redoMenuItemTitle(), remove ? "Redo Delete Timer" : "Redo Reset Timer");
        f.undo.redo(); // again, with a fresh toast and a fresh undo step
        QCOMPARE(f.m().toast()->entry.message(), message);
        QVERIFY(!f.undo.canRedo());
        f.undo.undo();
        QCOMPARE(f.elapsed(1), 200.0);
    }

    // An older toast pressed under a newer step undoes only its own action, and the manager's
    // copy of that step later does nothing.
    void toastUndoOutOfOrderDoesNotScrambleTheHistory_data()
    {
        QTest::addColumn<QString>("newer");
        QTest::newRow("move above it") << "move";
        QTest::newRow("set above it") << "set";
        QTest::newRow("an old toast with a same-named newer action above it") << "reset";
    }
    void toastUndoOutOfOrderDoesNotScrambleTheHistory()
    {
        QFETCH(QString, newer);
        ModelFixture f;
        const QUuid a = f.id(0);
        f.set(0, 100);
        f.set(1, 200);
        f.m().reset(a);
        const Toast old = *f.m().toast();
        if (newer == "move")
            f.m().moveTimer(f.id(2), 0);
        else if (newer == "set")
            f.set(2, 30);
        else
            f.m().reset(f.id(1));
        const Board afterNewer = f.m().board();
        ModelProbe::showToast(f.m(), old); // the older toast is the one on screen
        f.m().undoToast();
        QVERIFY(!f.m().toast());
        QCOMPARE(f.m().board().timer(a)->elapsed(0), 100.0);
        Board expected = afterNewer; // nothing but A changed
        expected.timers[*expected.index(a)] = *f.m().board().timer(a);
        QCOMPARE(f.m().board().timers, expected.timers);

        f.undo.undo(); // the newer step first
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.elapsed(1), 200.0);
        QCOMPARE(f.elapsed(2), 0.0);
        f.undo.undo(); // the reset's own step: already done, so nothing
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.elapsed(1), 200.0);
        f.undo.undo();
        f.undo.undo();
        QCOMPARE(f.elapsed(0) + f.elapsed(1), 0.0);
        QVERIFY(!f.undo.canUndo());
    }

    void toastUndoAfterAnUndoneNewerStepGoesThroughTheManager()
    {
        ModelFixture f;
        f.set(0, 100);
        f.m().reset(f.id(0));
        f.m().moveTimer(f.id(2), 0);
        f.undo.undo(); // the move is gone; the reset's step is on top again
        f.m().undoToast();
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.undo.redoMenuItemTitle(), "Redo Reset Timer");
        QCOMPARE(f.undo.undoMenuItemTitle(), "Undo Set Time");
        f.undo.redo();
        QCOMPARE(f.elapsed(0), 0.0);
    }

    void aStaleToastAfterTheMenuUndoIsANoOp()
    {
        ModelFixture f;
        f.set(0, 100);
        f.m().reset(f.id(0));
        f.undo.undo();
        QVERIFY(!f.m().toast()); // the menu's undo takes the toast with it
        f.set(0, 7);
        f.m().undoToast();
        QCOMPARE(f.elapsed(0), 7.0);
    }

    // Undo puts a running timer back as if the set never happened; redo sets it again.
    void redoMustExistAfterUndoingSet()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(10);
        f.set(0, 3600);
        f.advance(5);
        QList<double> trace;
        for (const auto command : {&UndoManager::undo, &UndoManager::redo, &UndoManager::undo, &UndoManager::redo}) {
            (f.undo.*command)();
            trace << f.elapsed(0);
            f.advance(1);
        }
        QCOMPARE(trace, (QList<double>{15, 3600, 17, 3600}));
        QVERIFY(f.timer(0).isRunning());
        QCOMPARE(f.undo.undoMenuItemTitle(), "Undo Set Time");
        QVERIFY(!f.undo.canRedo());
    }

    void undoAfterPauseAllThroughTheRealModel()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(10);
        f.m().reset(f.id(0));
        f.advance(3);
        f.m().pauseAll();
        f.advance(100);
        f.undo.undo();
        // Restored as it was, but stopped at the pause-all: no time while everything was paused.
        QVERIFY(!f.timer(0).isRunning());
        QCOMPARE(f.elapsed(0), 13.0);
        QVERIFY(!ModelProbe::isTicking(f.m()));
    }

    // Also: a deleted running timer never stops counting, through undo, redo and undo again.
    void rmAllIsOneUndoStep()
    {
        ModelFixture f;
        f.m().toggle(f.id(1));
        f.advance(5);
        f.undo.beginGrouping();
        for (const QUuid &id : {f.id(0), f.id(1), f.id(2)})
            f.m().deleteTimer(id);
        f.undo.endGrouping();
        QVERIFY(!ModelProbe::isTicking(f.m()));
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QVERIFY(f.timer(1).isRunning());
        QVERIFY(ModelProbe::isTicking(f.m()));
        QVERIFY(!f.m().toast());
        QVERIFY(!f.undo.canUndo());
        f.undo.redo();
        QVERIFY(f.m().board().timers.isEmpty());
        f.advance(5);
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QCOMPARE(f.elapsed(1), 10.0);
    }

    void toastLivesTwelveSecondsAndANewerOneKeepsItsFullTime()
    {
        ModelFixture f(WithStore::no);
        f.m().reset(f.id(0));
        f.advance(11.5);
        QVERIFY(f.m().toast());
        f.advance(0.5);
        QVERIFY(!f.m().toast());
        f.m().reset(f.id(0));
        f.advance(6);
        f.m().reset(f.id(1));
        f.advance(7); // 13 s after the first
        QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Reset “B”"));
        f.advance(5);
        QVERIFY(!f.m().toast());
    }
};

QTEST_GUILESS_MAIN(AppModelUndoTest)
#include "appmodel_undo_test.moc"

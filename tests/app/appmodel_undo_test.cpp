// Undo, redo and toasts: the menu path and the toast path share one history, and a toast undoes
// exactly its own action whatever lies above it.
#include "modelfixture.h"

using namespace tock;

class AppModelUndoTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void twoResetsTheToastUndoesItsOwnResetOnly()
    {
        ModelFixture f;
        f.m().setTime(f.id(0), 100, f.timer(0), f.v.clock->now());
        f.m().setTime(f.id(1), 200, f.timer(1), f.v.clock->now());
        f.m().reset(f.id(0));
        f.m().reset(f.id(1));
        QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Reset “B”"));
        f.m().undoToast();
        QCOMPARE(f.elapsed(0), 0.0);
        QCOMPARE(f.elapsed(1), 200.0);
        QVERIFY(!f.m().toast());
    }

    void toastUndoInOrderGoesThroughTheUndoManager()
    {
        ModelFixture f;
        f.m().setTime(f.id(0), 100, f.timer(0), f.v.clock->now());
        f.m().deleteTimer(f.id(0));
        f.m().undoToast();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.undo.undoMenuItemTitle(), QStringLiteral("Undo Set Time"));
        QCOMPARE(f.undo.redoMenuItemTitle(), QStringLiteral("Redo Delete Timer"));
    }

    void redoAvailableAfterToastUndo()
    {
        ModelFixture f;
        f.m().reset(f.id(2));
        f.m().undoToast();
        QVERIFY(f.undo.canRedo());
        f.undo.redo(); // resets again, with a fresh toast and a fresh undo step
        QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Reset “C”"));
        QVERIFY(f.undo.canUndo());
        QVERIFY(!f.undo.canRedo());
    }

    void toastUndoAfterAnUndoneNewerStepGoesThroughTheManager()
    {
        ModelFixture f;
        f.m().setTime(f.id(0), 100, f.timer(0), f.v.clock->now());
        f.m().reset(f.id(0));
        f.m().moveTimer(f.id(2), 0);
        f.undo.undo(); // the move is gone; the reset's step is on top again
        QCOMPARE(f.undo.redoMenuItemTitle(), QStringLiteral("Redo Move Timer"));
        f.m().undoToast();
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.undo.redoMenuItemTitle(), QStringLiteral("Redo Reset Timer"));
        QCOMPARE(f.undo.undoMenuItemTitle(), QStringLiteral("Undo Set Time"));
        f.undo.redo();
        QCOMPARE(f.elapsed(0), 0.0);
    }

    void deleteUndoRedoUndo()
    {
        ModelFixture f;
        f.m().toggle(f.id(1));
        f.advance(5);
        f.m().deleteTimer(f.id(1));
        QVERIFY(!f.m().isTicking());
        QCOMPARE(f.undo.undoMenuItemTitle(), QStringLiteral("Undo Delete Timer"));
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QVERIFY(f.timer(1).isRunning()); // it never stopped counting
        QVERIFY(f.m().isTicking());
        QVERIFY(!f.m().toast());
        f.undo.redo();
        QCOMPARE(f.names(), (QStringList{"A", "C"}));
        QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Deleted “B”"));
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QCOMPARE(f.elapsed(1), 5.0);
    }

    void toastUndoOutOfOrderDoesNotScrambleTheHistory_data()
    {
        QTest::addColumn<QString>("newer");
        QTest::newRow("move above it") << "move";
        QTest::newRow("set above it") << "set";
    }
    void toastUndoOutOfOrderDoesNotScrambleTheHistory()
    {
        QFETCH(QString, newer);
        ModelFixture f;
        const QUuid a = f.id(0);
        f.m().setTime(a, 100, f.timer(0), f.v.clock->now());
        f.m().reset(a);
        if (newer == "move")
            f.m().moveTimer(f.id(2), 0);
        else
            f.m().setTime(f.id(2), 30, f.timer(2), f.v.clock->now());
        const QStringList afterNewer = f.names();

        f.m().undoToast();
        QCOMPARE(f.m().board().timer(a)->elapsed(0), 100.0);
        QCOMPARE(f.names(), afterNewer); // the newer step is untouched
        QVERIFY(!f.m().toast());

        f.undo.undo(); // the newer step first
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QCOMPARE(f.elapsed(2), 0.0);
        f.undo.undo(); // the reset's own step: already done, so nothing
        QCOMPARE(f.elapsed(0), 100.0);
        f.undo.undo(); // the first set
        QCOMPARE(f.elapsed(0), 0.0);
        QVERIFY(!f.undo.canUndo());
    }

    void anOldToastWithASameNamedNewerActionAboveIt()
    {
        ModelFixture f;
        f.m().setTime(f.id(0), 100, f.timer(0), f.v.clock->now());
        f.m().setTime(f.id(1), 200, f.timer(1), f.v.clock->now());
        f.m().reset(f.id(0));
        const Toast old = *f.m().toast();
        f.m().reset(f.id(1));
        f.m().showToast(old); // the older toast is the one on screen
        f.m().undoToast();
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.elapsed(1), 0.0);
        f.undo.undo();
        QCOMPARE(f.elapsed(1), 200.0);
        f.undo.undo(); // A's step, already carried out
        QCOMPARE(f.elapsed(0), 100.0);
        QCOMPARE(f.elapsed(1), 200.0);
    }

    void secondUndoOfTheSameStepIsANoOp()
    {
        ModelFixture f;
        f.m().setTime(f.id(0), 100, f.timer(0), f.v.clock->now());
        f.m().reset(f.id(0));
        const Toast toast = *f.m().toast();
        f.undo.undo(); // menu first
        QVERIFY(!f.m().toast());
        f.m().setTime(f.id(0), 7, f.timer(0), f.v.clock->now());
        f.m().performUndo(toast.entry, toast.token); // then a stale toast
        QCOMPARE(f.elapsed(0), 7.0);
    }

    void redoMustExistAfterUndoingSet()
    {
        ModelFixture f;
        f.m().setTime(f.id(1), 90, f.timer(1), f.v.clock->now());
        QCOMPARE(f.undo.undoMenuItemTitle(), QStringLiteral("Undo Set Time"));
        f.undo.undo();
        QCOMPARE(f.elapsed(1), 0.0);
        QVERIFY(f.undo.canRedo());
        QCOMPARE(f.undo.redoMenuItemTitle(), QStringLiteral("Redo Set Time"));
    }

    void shellSetUndoAndRedoBothWork()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(10);
        f.m().setTime(f.id(0), 3600, f.timer(0), f.v.clock->now());
        f.advance(5);
        QCOMPARE(f.elapsed(0), 3605.0);
        f.undo.undo(); // as if the set never happened: still running from its old start
        QCOMPARE(f.elapsed(0), 15.0);
        QVERIFY(f.timer(0).isRunning());
        f.undo.redo();
        QCOMPARE(f.elapsed(0), 3600.0);
        f.advance(1);
        f.undo.undo();
        QCOMPARE(f.elapsed(0), 16.0);
        f.undo.redo();
        QCOMPARE(f.elapsed(0), 3600.0);
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
        QVERIFY(!f.m().isTicking());
    }

    void rmAllIsOneUndoStep()
    {
        ModelFixture f;
        f.undo.beginGrouping();
        for (const QUuid &id : {f.id(0), f.id(1), f.id(2)})
            f.m().deleteTimer(id);
        f.undo.endGrouping();
        QVERIFY(f.m().board().timers.isEmpty());
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        QVERIFY(!f.undo.canUndo());
        f.undo.redo();
        QVERIFY(f.m().board().timers.isEmpty());
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
    }

    void toastsWorkWithoutAnUndoManager()
    {
        ModelFixture f(WithStore::no);
        f.m().setUndoManager(nullptr);
        f.m().deleteTimer(f.id(0));
        f.m().undoToast();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        f.m().moveTimer(f.id(0), 2); // undoable moves still move
        QCOMPARE(f.names(), (QStringList{"B", "C", "A"}));
    }

    void undoManagerIsHeldWeakly()
    {
        ModelFixture f;
        auto *manager = new UndoManager;
        f.m().setUndoManager(manager);
        f.m().reset(f.id(0));
        delete manager;
        QVERIFY(!f.m().undoManager());
        f.m().undoToast(); // the direct path
        f.m().reset(f.id(1));
        QVERIFY(f.m().toast());
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
        const QUuid newer = f.m().toast()->id;
        f.advance(7); // 13 s after the first
        QCOMPARE(f.m().toast()->id, newer);
        f.advance(5);
        QVERIFY(!f.m().toast());
    }
};

QTEST_GUILESS_MAIN(AppModelUndoTest)
#include "appmodel_undo_test.moc"

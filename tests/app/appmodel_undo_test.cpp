// Undo, redo and toasts: the menu path and the toast path share one history, and a toast undoes
// exactly its own action whatever lies above it (the self-check runs the main toast scenarios).
#include "modelfixture.h"

#include <QTest>

using namespace tock;

class AppModelUndoTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
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

// The undo manager's stack discipline, which the model's tokens and toasts build on.
#include "undomanager.h"

#include <QSignalSpy>
#include <QTest>

using namespace tock;

namespace {

// A counter with an undoable increment whose undo registers the redo, as model actions do.
struct Counter {
    UndoManager &manager;
    int value = 0;
    void add(int n, const QString &name = QStringLiteral("Add"))
    {
        value += n;
        manager.registerUndo([this, n, name] { add(-n, name); });
        manager.setActionName(name);
    }
};

} // namespace

class UndoManagerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void undoRegistersRedoAndRedoRegistersUndo()
    {
        UndoManager m;
        Counter c{m};
        c.add(1);
        c.add(10);
        QCOMPARE(c.value, 11);
        QVERIFY(m.canUndo() && !m.canRedo());

        m.undo();
        QCOMPARE(c.value, 1);
        QVERIFY(m.canRedo());
        m.undo();
        QCOMPARE(c.value, 0);
        QVERIFY(!m.canUndo());

        m.redo();
        QCOMPARE(c.value, 1);
        QVERIFY(m.canUndo());
        QVERIFY(m.canRedo()); // the second redo step survives a redo
        m.redo();
        QCOMPARE(c.value, 11);
        QVERIFY(!m.canRedo());

        m.undo();
        m.undo();
        QCOMPARE(c.value, 0);
    }

    void newStepClearsRedo()
    {
        UndoManager m;
        Counter c{m};
        c.add(1);
        m.undo();
        QVERIFY(m.canRedo());
        c.add(5);
        QVERIFY(!m.canRedo());
        QCOMPARE(m.undoActionName(), QStringLiteral("Add"));
    }

    void modeIsVisibleToHandlers()
    {
        UndoManager m;
        QList<std::pair<bool, bool>> seen;
        std::function<void()> step = [&] {
            seen.append({m.isUndoing(), m.isRedoing()});
            m.registerUndo(step);
        };
        m.registerUndo(step);
        QVERIFY(!m.isUndoing() && !m.isRedoing());
        m.undo();
        m.redo();
        QCOMPARE(seen, (QList<std::pair<bool, bool>>{{true, false}, {false, true}}));
        QVERIFY(!m.isUndoing() && !m.isRedoing());
    }

    void groupIsOneStepUndoneInReverse()
    {
        UndoManager m;
        QStringList order;
        m.beginGrouping();
        QCOMPARE(m.groupingLevel(), 1);
        m.registerUndo([&] { order << "a"; });
        m.beginGrouping(); // nested groups fold into the outer one
        m.registerUndo([&] { order << "b"; });
        m.endGrouping();
        m.registerUndo([&] { order << "c"; });
        m.setActionName(QStringLiteral("Delete Timer"));
        QVERIFY(!m.canUndo()); // nothing lands before the group closes
        m.endGrouping();
        QCOMPARE(m.groupingLevel(), 0);
        QCOMPARE(m.undoActionName(), QStringLiteral("Delete Timer"));
        m.undo();
        QCOMPARE(order, (QStringList{"c", "b", "a"}));
        QVERIFY(!m.canUndo());
    }

    void emptyGroupAddsNothing()
    {
        UndoManager m;
        m.beginGrouping();
        m.endGrouping();
        QVERIFY(!m.canUndo());
    }

    void redoStepsFromOneUndoFormOneStep()
    {
        UndoManager m;
        int value = 0;
        std::function<void(int)> change = [&](int n) {
            value += n;
            m.registerUndo([&, n] { change(-n); });
        };
        m.beginGrouping();
        change(1);
        change(2);
        m.setActionName(QStringLiteral("Reset Timer"));
        m.endGrouping();
        m.undo();
        QCOMPARE(value, 0);
        QCOMPARE(m.redoActionName(), QStringLiteral("Reset Timer")); // inherited
        m.redo();
        QCOMPARE(value, 3);
        QVERIFY(!m.canRedo());
        m.undo();
        QCOMPARE(value, 0);
    }

    void stepWithoutInverseLeavesNoRedo()
    {
        UndoManager m;
        m.registerUndo([] {});
        m.undo();
        QVERIFY(!m.canUndo());
        QVERIFY(!m.canRedo());
    }

    void menuTitles()
    {
        UndoManager m;
        Counter c{m};
        QCOMPARE(m.undoMenuItemTitle(), QStringLiteral("Undo"));
        QCOMPARE(m.redoMenuItemTitle(), QStringLiteral("Redo"));
        c.add(1, QStringLiteral("Reset Timer"));
        c.add(1, QStringLiteral("Move Timer"));
        QCOMPARE(m.undoMenuItemTitle(), QStringLiteral("Undo Move Timer"));
        m.undo();
        QCOMPARE(m.undoMenuItemTitle(), QStringLiteral("Undo Reset Timer"));
        QCOMPARE(m.redoMenuItemTitle(), QStringLiteral("Redo Move Timer"));
    }

    void changedSignalAndRemoveAll()
    {
        UndoManager m;
        Counter c{m};
        QSignalSpy spy(&m, &UndoManager::changed);
        c.add(1);
        QVERIFY(spy.count() >= 1);
        const int before = spy.count();
        m.undo();
        QCOMPARE(spy.count(), before + 1);
        m.removeAllActions();
        QVERIFY(!m.canUndo() && !m.canRedo());
        QCOMPARE(m.undoMenuItemTitle(), QStringLiteral("Undo"));
        QCOMPARE(spy.count(), before + 2);
        m.undo(); // nothing to undo: harmless
        m.redo();
    }
};

QTEST_GUILESS_MAIN(UndoManagerTest)
#include "undomanager_test.moc"

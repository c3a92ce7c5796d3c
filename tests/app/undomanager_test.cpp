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
    void undoRegistersRedoAndANewStepClearsRedo()
    {
        UndoManager m;
        Counter c{m};
        QCOMPARE(m.undoMenuItemTitle(), "Undo");
        c.add(1, "Reset Timer");
        c.add(10, "Move Timer");
        QCOMPARE(m.undoMenuItemTitle(), "Undo Move Timer");
        m.undo();
        QCOMPARE(c.value, 1);
        QCOMPARE(m.undoMenuItemTitle(), "Undo Reset Timer");
        QCOMPARE(m.redoMenuItemTitle(), "Redo Move Timer");
        m.undo();
        QVERIFY(!m.canUndo());
        m.redo();
        QCOMPARE(c.value, 1);
        QCOMPARE(m.redoMenuItemTitle(), "Redo Move Timer"); // the second redo step survives a redo
        m.redo();
        QCOMPARE(c.value, 11);
        QVERIFY(!m.canRedo());
        m.undo();
        c.add(5); // a new step clears redo
        QVERIFY(!m.canRedo());
        m.undo();
        m.undo();
        QCOMPARE(c.value, 0);

        m.registerUndo([] {}); // a step without an inverse leaves no redo
        m.undo();
        QVERIFY(!m.canUndo() && !m.canRedo());
    }

    // As `rm all` uses it: one step, undone in reverse, whose redo is again one step.
    void groupIsOneStepUndoneInReverse()
    {
        UndoManager m;
        m.beginGrouping();
        m.endGrouping(); // an empty group adds nothing
        QVERIFY(!m.canUndo());
        QStringList order;
        std::function<void(QString)> remove = [&](const QString &what) {
            order << what;
            m.registerUndo([&, what] { remove(what); });
        };
        m.beginGrouping();
        m.registerUndo([&] { remove("a"); });
        m.beginGrouping(); // nested groups fold into the outer one
        m.registerUndo([&] { remove("b"); });
        m.endGrouping();
        m.registerUndo([&] { remove("c"); });
        m.setActionName("Delete Timer");
        QVERIFY(!m.canUndo()); // nothing lands before the group closes
        m.endGrouping();
        QCOMPARE(m.groupingLevel(), 0);
        m.undo();
        QCOMPARE(order, (QStringList{"c", "b", "a"}));
        QVERIFY(!m.canUndo());
        QCOMPARE(m.redoActionName(), "Delete Timer"); // inherited
        m.redo();
        QCOMPARE(order, (QStringList{"c", "b", "a", "a", "b", "c"}));
        QVERIFY(!m.canRedo());
        m.undo();
        QCOMPARE(order.size(), 9);
        QVERIFY(!m.canUndo());
    }

    void changedSignalAndRemoveAll()
    {
        UndoManager m;
        Counter c{m};
        QSignalSpy spy(&m, &UndoManager::changed);
        c.add(1);
        QVERIFY(spy.count() >= 1);
        spy.clear();
        m.undo();
        m.removeAllActions();
        QCOMPARE(spy.count(), 2);
        QVERIFY(!m.canUndo() && !m.canRedo());
        m.undo(); // nothing to undo: harmless
        m.redo();
    }
};

QTEST_GUILESS_MAIN(UndoManagerTest)
#include "undomanager_test.moc"

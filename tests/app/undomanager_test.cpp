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
        QStringList trace; // value, then the two menu titles, after each command
        const auto note = [&] { trace << QStringLiteral("%1 %2 / %3").arg(c.value).arg(m.undoMenuItemTitle(), m.redoMenuItemTitle()); };
        note();
        c.add(1, "Reset Timer");
        c.add(10, "Move Timer");
        for (const auto command : {&UndoManager::undo, &UndoManager::undo, &UndoManager::redo, &UndoManager::redo, &UndoManager::undo}) {
            (m.*command)();
            note();
        }
        c.add(5); // a new step clears redo
        note();
        QCOMPARE(trace, (QStringList{"0 Undo / Redo", "1 Undo Reset Timer / Redo Move Timer", "0 Undo / Redo Reset Timer",
                                     "1 Undo Reset Timer / Redo Move Timer", "11 Undo Move Timer / Redo",
                                     "1 Undo Reset Timer / Redo Move Timer", "6 Undo Add / Redo"}));
        m.removeAllActions();
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

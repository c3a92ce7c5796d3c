// The undo manager's stack discipline, which the model's tokens and toasts build on. Its groups
// are the shell's multi-timer commands (shellsession_test, the self-check's rm all).
#include "undomanager.h"

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
        UndoManager fresh;
        fresh.registerUndo([] {}); // a step without an inverse leaves no redo
        fresh.undo();
        QVERIFY(!fresh.canUndo() && !fresh.canRedo());
    }
};

QTEST_GUILESS_MAIN(UndoManagerTest)
#include "undomanager_test.moc"

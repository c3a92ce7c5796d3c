// A small undo manager with the semantics the model relies on: steps registered while undoing
// become redo steps; steps registered while redoing go onto the undo stack without clearing the
// redo stack; any other new step clears redo. Explicit grouping makes several registrations one
// step (undone in reverse order). A handler may carry a token, so the model can ask whether its
// step is next and carry one out of order without the stack running it a second time.
#pragma once

#include <QObject>
#include <QString>
#include <QUuid>

#include <functional>
#include <vector>

namespace tock {

class UndoManager : public QObject {
    Q_OBJECT
public:
    // The most steps each stack keeps; beyond it the oldest is dropped.
    static constexpr std::size_t maxSteps = 1000;

    explicit UndoManager(QObject *parent = nullptr);

    // Adds a handler to the open group, or as a step of its own when no group is open.
    void registerUndo(std::function<void()> handler, const QUuid &token = {});
    // Names the step being registered (the open group, else the latest step on the stack that
    // registration went to).
    void setActionName(const QString &name);

    void beginGrouping();
    void endGrouping();
    int groupingLevel() const;

    bool canUndo() const;
    bool canRedo() const;
    bool isUndoing() const;
    void undo();
    void redo();

    // The step undo() would run next holds `token` (in its newest handler) not yet carried out.
    bool isNextUndo(const QUuid &token) const;
    // The caller carries out the handler under `token` itself: the stacks will skip it. False
    // when that handler already ran, by either way, as far as the held steps remember.
    bool takeOutOfOrder(const QUuid &token);

    QString undoActionName() const;
    QString redoActionName() const;
    // "Undo" or "Undo Reset Timer"; likewise "Redo …", for menu items.
    QString undoMenuItemTitle() const;
    QString redoMenuItemTitle() const;

Q_SIGNALS:
    // Emitted after any change of the stacks, for menu items.
    void changed();

private:
    struct Handler {
        std::function<void()> run;
        QUuid token;
        bool taken = false; // carried out of order already
    };
    struct Step {
        QString name;
        std::vector<Handler> handlers; // run last to first
        std::vector<QUuid> replayed;   // the tokens whose undo (or redo) made this step
    };
    enum class Mode { normal, undoing, redoing };
    // Runs the top step of `from`; whatever its handlers register becomes one step on the
    // other stack (redo for an undo, undo for a redo).
    void replay(std::vector<Step> &from, Mode mode);
    // Where a finished step goes, given the current mode.
    void push(Step step);

    std::vector<Step> undoStack_;
    std::vector<Step> redoStack_;
    Mode mode_ = Mode::normal;
    int level_ = 0;
    Step open_;                            // the open group, while level_ > 0
    std::vector<Step> *lastTarget_ = nullptr; // the stack the latest step went to
};

} // namespace tock

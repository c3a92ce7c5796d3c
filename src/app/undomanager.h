// A small undo manager with the semantics the model relies on: steps registered while undoing
// become redo steps; steps registered while redoing go onto the undo stack without clearing the
// redo stack; any other new step clears redo. Explicit grouping makes several registrations one
// step (undone in reverse order).
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

namespace tock {

class UndoManager : public QObject {
    Q_OBJECT
public:
    explicit UndoManager(QObject *parent = nullptr);

    // Adds a handler to the open group, or as a step of its own when no group is open.
    void registerUndo(std::function<void()> handler);
    // Names the step being registered (the open group, else the latest step on the stack that
    // registration went to).
    void setActionName(const QString &name);

    void beginGrouping();
    void endGrouping();
    int groupingLevel() const;

    bool canUndo() const;
    bool canRedo() const;
    bool isUndoing() const;
    bool isRedoing() const;
    void undo();
    void redo();
    void removeAllActions();

    QString undoActionName() const;
    QString redoActionName() const;
    // "Undo" or "Undo Reset Timer"; likewise "Redo …", for menu items.
    QString undoMenuItemTitle() const;
    QString redoMenuItemTitle() const;

Q_SIGNALS:
    // Emitted after any change of the stacks, for menu items.
    void changed();

private:
    struct Step {
        QString name;
        std::vector<std::function<void()>> handlers; // run last to first
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

#include "undomanager.h"

#include "require.h"

#include <algorithm>
#include <utility>

namespace tock {

UndoManager::UndoManager(QObject *parent) : QObject(parent) {}

void UndoManager::registerUndo(std::function<void()> handler, const QUuid &token)
{
    TOCK_REQUIRE(handler != nullptr, "undo handler must be callable");
    if (level_ > 0) {
        open_.handlers.push_back({std::move(handler), token});
        return;
    }
    Step step;
    step.handlers.push_back({std::move(handler), token});
    push(std::move(step));
    Q_EMIT changed();
}

void UndoManager::setActionName(const QString &name)
{
    if (level_ > 0) {
        open_.name = name;
        return;
    }
    if (lastTarget_ && !lastTarget_->empty() && lastTarget_->back().name != name) {
        lastTarget_->back().name = name;
        Q_EMIT changed();
    }
}

void UndoManager::beginGrouping()
{
    if (level_++ == 0)
        open_ = Step{};
}

void UndoManager::endGrouping()
{
    TOCK_REQUIRE(level_ > 0, "endGrouping without beginGrouping");
    if (--level_ > 0)
        return;
    Step step = std::exchange(open_, Step{});
    if (step.handlers.empty())
        return;
    push(std::move(step));
    Q_EMIT changed();
}

int UndoManager::groupingLevel() const
{
    return level_;
}

bool UndoManager::canUndo() const
{
    return !undoStack_.empty();
}

bool UndoManager::canRedo() const
{
    return !redoStack_.empty();
}

bool UndoManager::isUndoing() const
{
    return mode_ == Mode::undoing;
}

void UndoManager::undo()
{
    replay(undoStack_, Mode::undoing);
}

void UndoManager::redo()
{
    replay(redoStack_, Mode::redoing);
}

void UndoManager::replay(std::vector<Step> &from, Mode mode)
{
    TOCK_REQUIRE(mode_ == Mode::normal, "undo or redo from inside an undo handler");
    TOCK_REQUIRE(level_ == 0, "undo or redo while a group is open");
    if (from.empty())
        return;
    Step step = std::move(from.back());
    from.pop_back();

    // The handlers' own registrations form the inverse step, under the same name unless they
    // set another.
    mode_ = mode;
    beginGrouping();
    open_.name = step.name;
    for (auto it = step.handlers.rbegin(); it != step.handlers.rend(); ++it) {
        if (!it->taken)
            it->run();
    }
    Step inverse = std::exchange(open_, Step{});
    level_ = 0;
    for (const Handler &handler : step.handlers) {
        if (!handler.token.isNull() && !handler.taken)
            inverse.replayed.push_back(handler.token);
    }
    if (!inverse.handlers.empty())
        push(std::move(inverse));
    mode_ = Mode::normal;
    Q_EMIT changed();
}

void UndoManager::push(Step step)
{
    switch (mode_) {
    case Mode::normal:
        redoStack_.clear();
        lastTarget_ = &undoStack_;
        break;
    case Mode::undoing:
        lastTarget_ = &redoStack_;
        break;
    case Mode::redoing:
        lastTarget_ = &undoStack_;
        break;
    }
    lastTarget_->push_back(std::move(step));
    // Only the most recent steps are kept, so a scripted flood cannot grow memory without bound.
    if (lastTarget_->size() > maxSteps)
        lastTarget_->erase(lastTarget_->begin());
}

bool UndoManager::isNextUndo(const QUuid &token) const
{
    if (undoStack_.empty() || token.isNull())
        return false;
    const Handler &newest = undoStack_.back().handlers.back();
    return newest.token == token && !newest.taken;
}

bool UndoManager::takeOutOfOrder(const QUuid &token)
{
    if (token.isNull())
        return true;
    for (std::vector<Step> *stack : {&undoStack_, &redoStack_}) {
        for (Step &step : *stack) {
            if (std::find(step.replayed.begin(), step.replayed.end(), token) != step.replayed.end())
                return false;
            for (Handler &handler : step.handlers) {
                if (handler.token == token)
                    return !std::exchange(handler.taken, true);
            }
        }
    }
    return true;
}

QString UndoManager::undoActionName() const
{
    return undoStack_.empty() ? QString() : undoStack_.back().name;
}

QString UndoManager::redoActionName() const
{
    return redoStack_.empty() ? QString() : redoStack_.back().name;
}

QString UndoManager::undoMenuItemTitle() const
{
    const QString name = undoActionName();
    return name.isEmpty() ? QStringLiteral("Undo") : QStringLiteral("Undo ") + name;
}

QString UndoManager::redoMenuItemTitle() const
{
    const QString name = redoActionName();
    return name.isEmpty() ? QStringLiteral("Redo") : QStringLiteral("Redo ") + name;
}

} // namespace tock

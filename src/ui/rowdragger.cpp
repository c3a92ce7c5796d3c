#include "rowdragger.h"

#include "appmodel.h"
#include "namefield.h"
#include "rowlist.h"
#include "timerrow.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWindow>

#include <cmath>

namespace tock {

RowDragger::RowDragger(AppModel *model, RowList *list, std::function<double()> rowWidth, QObject *parent)
    : QObject(parent), model_(model), list_(list), rowWidth_(std::move(rowWidth))
{
}

void RowDragger::attach(QWidget *window)
{
    window_ = window;
    if (!window->windowHandle())
        window->winId(); // creates the platform window
    handle_ = window->windowHandle();
    handle_->installEventFilter(this);
}

QPointF RowDragger::inList(const QPointF &windowPos) const
{
    return QPointF(list_->mapFrom(window_, windowPos.toPoint()));
}

std::optional<QUuid> RowDragger::rowAt(const QPointF &listPos) const
{
    for (TimerRow *row : list_->rows()) {
        if (row->isVisible() && row->geometry().contains(listPos.toPoint()))
            return row->id();
    }
    return std::nullopt;
}

bool RowDragger::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != handle_ || replaying_)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto *e = static_cast<QMouseEvent *>(event);
        if (e->button() != Qt::LeftButton || !press(e->position()))
            return false;
        // A name starts renaming as soon as it is pressed, so a press there waits until it is
        // known to be a click and not the start of a drag.
        deferred_.reset(e->clone());
        return true;
    }
    case QEvent::MouseMove: {
        const auto *e = static_cast<QMouseEvent *>(event);
        return e->buttons().testFlag(Qt::LeftButton) ? move(e->position()) : false;
    }
    case QEvent::MouseButtonRelease: {
        const auto *e = static_cast<QMouseEvent *>(event);
        if (e->button() != Qt::LeftButton)
            return false;
        const bool dragged = release();
        std::unique_ptr<QMouseEvent> pressed = std::move(deferred_);
        if (dragged) {
            if (!pressed)
                cancelPress(*e);
            return true;
        }
        if (pressed) {
            replaying_ = true;
            QCoreApplication::sendEvent(handle_, pressed.get());
            replaying_ = false;
        }
        return false;
    }
    default:
        return false;
    }
}

bool RowDragger::press(const QPointF &at)
{
    state_ = State::idle;
    const QPointF p = inList(at);
    const std::optional<QUuid> row = list_->rect().contains(p.toPoint()) ? rowAt(p) : std::nullopt;
    if (model_->revealedID() && row != model_->revealedID())
        model_->closeReveal();
    if (!row || model_->editingID() == row)
        return false;
    state_ = State::pressed;
    id_ = *row;
    start_ = p;
    swiped_ = 0;
    for (QWidget *w = window_->childAt(at.toPoint()); w; w = w->parentWidget()) {
        if (auto *name = qobject_cast<NameField *>(w))
            return !name->isEditing();
    }
    return false; // the press reaches the row at once: a click stays a click
}

bool RowDragger::move(const QPointF &at)
{
    const QPointF d = inList(at) - start_;
    switch (state_) {
    case State::idle:
    case State::ignoring:
        return false;
    case State::pressed: {
        if (d.manhattanLength() < QApplication::startDragDistance())
            return false;
        if (std::abs(d.x()) > std::abs(d.y())) {
            if (d.x() > 0) {
                state_ = State::ignoring; // rows only ever slide left
                return false;
            }
            model_->beginSwipe(id_);
            if (model_->swipeID() != id_) {
                state_ = State::ignoring;
                return false;
            }
            state_ = State::swiping;
        } else {
            const QList<QUuid> order = [this] {
                QList<QUuid> ids;
                for (const TimerItem &t : model_->board().timers)
                    ids << t.id;
                return ids;
            }();
            if (order.size() < 2) {
                state_ = State::ignoring;
                return false;
            }
            from_ = target_ = order.indexOf(id_);
            state_ = State::reordering;
            if (TimerRow *row = list_->row(id_))
                row->raise();
        }
        return move(at);
    }
    case State::swiping:
        model_->swipe(d.x() - swiped_);
        swiped_ = d.x();
        return true;
    case State::reordering:
        placeRows(d.y());
        return true;
    }
    return false;
}

void RowDragger::placeRows(double dy)
{
    const Theme &t = Theme::of(model_->style());
    const double z = std::max(model_->zoom(), 0.1);
    const double pitch = t.rowHeight + t.rowSpacing;
    const QList<TimerRow *> rows = list_->rows();
    const qsizetype n = rows.size();
    const double moved = dy / z;
    target_ = std::clamp<qsizetype>(from_ + qsizetype(std::lround(moved / pitch)), 0, n - 1);
    // The rows as they stand in the list, the dragged one under the pointer, the others
    // closing the gap it left and opening one where it would land.
    const double top = t.contentPadding - list_->scrollOffset();
    const double width = list_->unzoomedSize().width() - 2 * t.contentPadding;
    const double height = TimerRow::widgetHeight(t);
    qsizetype slot = 0;
    for (TimerRow *row : rows) {
        if (row->id() == id_) {
            const double y = std::clamp(top + from_ * pitch + moved, top, top + (n - 1) * pitch);
            row->setUnzoomedGeometry(QRectF(t.contentPadding, y, width, height));
            continue;
        }
        if (slot == target_)
            ++slot;
        row->setUnzoomedGeometry(QRectF(t.contentPadding, top + slot * pitch, width, height));
        ++slot;
    }
}

bool RowDragger::release()
{
    const State was = std::exchange(state_, State::idle);
    if (was == State::swiping) {
        if (model_->swipeID())
            model_->endSwipe(rowWidth_());
        return true;
    }
    if (was == State::reordering) {
        if (target_ != from_)
            model_->moveTimer(id_, target_);
        else
            list_->relayout();
        return true;
    }
    return false;
}

void RowDragger::cancelPress(const QMouseEvent &release)
{
    const QPointF away(-1e5, -1e5);
    QMouseEvent off(QEvent::MouseButtonRelease, away, away, away, release.button(), release.buttons(),
                    release.modifiers(), release.pointingDevice());
    replaying_ = true;
    QCoreApplication::sendEvent(handle_, &off);
    replaying_ = false;
}

} // namespace tock

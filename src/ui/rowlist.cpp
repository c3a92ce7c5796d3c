#include "rowlist.h"

#include "timerrow.h"

#include "namefield.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QSet>
#include <QWheelEvent>

namespace tock {

RowList::RowList(AppModel *model, const ViewContext &context, QWidget *parent) : View(model, parent), context_(context)
{
    sync();
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        for (QWidget *w = now; w && w != this; w = w->parentWidget()) {
            if (const auto *row = qobject_cast<TimerRow *>(w)) {
                ensureVisible(row);
                return;
            }
        }
    });
}

void RowList::keyPressEvent(QKeyEvent *event)
{
    QWidget *focus = QApplication::focusWidget();
    const QList<TimerRow *> ordered = rows();
    qsizetype at = -1;
    for (qsizetype i = 0; i < ordered.size() && at < 0; ++i) {
        if (ordered.at(i)->isAncestorOf(focus))
            at = i;
    }
    const int kind = at < 0 ? -1 : ordered.at(at)->controlKind(focus);
    if (kind < 0)
        return View::keyPressEvent(event);
    TimerRow *row = ordered.at(at);
    const QUuid id = row->id();
    const Qt::KeyboardModifiers held = event->modifiers() & ~Qt::KeypadModifier;
    const int key = event->key();
    const bool up = key == Qt::Key_Up, down = key == Qt::Key_Down;
    if ((up || down) && held == Qt::NoModifier) {
        const qsizetype to = at + (up ? -1 : 1);
        if (to >= 0 && to < ordered.size())
            ordered.at(to)->control(kind)->setFocus(Qt::OtherFocusReason);
    } else if ((up || down) && held == Qt::AltModifier) {
        model()->moveTimer(id, at + (up ? -1 : 1)); // the row keeps its focus
    } else if ((key == Qt::Key_Delete || key == Qt::Key_Backspace) && (held & ~Qt::ShiftModifier) == Qt::NoModifier) {
        model()->deleteTimer(id);
        // The focus goes on to the row that took its place, same control.
        const QList<TimerRow *> left = rows();
        if (!left.isEmpty())
            left.at(std::min<qsizetype>(at, left.size() - 1))->control(kind)->setFocus(Qt::OtherFocusReason);
        else
            focusNextPrevChild(true);
    } else if (key == Qt::Key_F2 && held == Qt::NoModifier) {
        row->nameField()->rename();
    } else if ((key == Qt::Key_F10 && held == Qt::ShiftModifier) || key == Qt::Key_Menu) {
        row->showMenu(focus->mapToGlobal(focus->rect().center()));
    } else {
        return View::keyPressEvent(event);
    }
}

void RowList::ensureVisible(const TimerRow *row)
{
    const qreal top = row->y() / zoom();
    const qreal bottom = (row->y() + row->height()) / zoom();
    const qreal view = unzoomedSize().height();
    if (top < 0)
        scrollBy(top - theme().contentPadding);
    else if (bottom > view)
        scrollBy(bottom - view + theme().contentPadding);
}

QList<TimerRow *> RowList::rows() const
{
    QList<TimerRow *> ordered;
    for (const TimerItem &timer : model()->board().timers) {
        if (TimerRow *row = rows_.value(timer.id))
            ordered.append(row);
    }
    return ordered;
}

void RowList::sync()
{
    const QList<TimerItem> &timers = model()->board().timers;
    QSet<QUuid> present;
    for (const TimerItem &timer : timers)
        present.insert(timer.id);
    bool removed = false;
    for (auto it = rows_.begin(); it != rows_.end();) {
        if (!present.contains(it.key())) {
            removed = true;
            it.value()->hide();
            it.value()->deleteLater();
            it = rows_.erase(it);
        } else {
            ++it;
        }
    }
    for (int i = 0; i < timers.size(); ++i) {
        TimerRow *row = rows_.value(timers.at(i).id);
        if (!row) {
            row = new TimerRow(model(), context_, this, timers.at(i).id);
            rows_.insert(timers.at(i).id, row);
            row->show();
        }
        row->setPlace(i, i + 1 == timers.size());
        row->refresh();
    }
    relayout();
    if (removed)
        hoverUnderPointer();
}

void RowList::hoverUnderPointer()
{
    // A row that moves up under a pointer standing still gets no enter event; without this,
    // ⌫ pressed twice would delete the first row only.
    if (!underMouse())
        return;
    const QPoint at = mapFromGlobal(QCursor::pos());
    for (TimerRow *row : rows()) {
        if (row->geometry().contains(at)) {
            model()->setHoveredID(row->id());
            return;
        }
    }
}

void RowList::leaveEvent(QEvent *event)
{
    // A row hovered by hoverUnderPointer() was never entered, so it gets no leave event of its
    // own: the list clears the hover when the pointer leaves it.
    if (model()->hoveredID())
        model()->setHoveredID(std::nullopt);
    View::leaveEvent(event);
}

qreal RowList::contentHeight() const
{
    const Theme &t = theme();
    const qsizetype n = model()->board().timers.size();
    if (n == 0)
        return 0;
    return 2 * t.contentPadding + n * t.rowHeight + (n - 1) * t.rowSpacing + (TimerRow::widgetHeight(t) - t.rowHeight);
}

qreal RowList::maxScroll() const
{
    return std::max<qreal>(0, contentHeight() - unzoomedSize().height());
}

void RowList::scrollBy(qreal delta)
{
    const qreal next = std::clamp(scroll_ + delta, 0.0, maxScroll());
    if (next == scroll_)
        return;
    scroll_ = next;
    relayout();
}

void RowList::relayout()
{
    const Theme &t = theme();
    scroll_ = std::clamp(scroll_, 0.0, maxScroll());
    const qreal width = unzoomedSize().width() - 2 * t.contentPadding;
    const qreal height = TimerRow::widgetHeight(t);
    qreal y = t.contentPadding - scroll_;
    for (TimerRow *row : rows()) {
        row->setUnzoomedGeometry(QRectF(t.contentPadding, y, width, height));
        y += t.rowHeight + t.rowSpacing;
    }
}

void RowList::refreshAll()
{
    for (TimerRow *row : std::as_const(rows_))
        row->refresh();
    relayout();
}

void RowList::resizeEvent(QResizeEvent *)
{
    relayout();
}

void RowList::wheelEvent(QWheelEvent *event)
{
    // Precise deltas where the device gives them, else 40 points per notch.
    const qreal delta = !event->pixelDelta().isNull() ? -event->pixelDelta().y() / zoom()
                                                      : -event->angleDelta().y() / 120.0 * 40;
    if (maxScroll() <= 0 || delta == 0)
        return event->ignore();
    scrollBy(delta);
    event->accept();
}

void RowList::paintEvent(QPaintEvent *)
{
    if (scroll_ <= 0.5)
        return;
    // A hairline under the title shows that rows are scrolled out of view.
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    QColor line = t.ruleInk;
    line.setAlpha(90);
    painter.fillRect(QRectF(0, 0, unzoomedSize().width(), 1), line);
}

} // namespace tock

#include "rowlist.h"

#include "timerrow.h"

#include <QCursor>
#include <QSet>
#include <QWheelEvent>

namespace tock {

RowList::RowList(AppModel *model, const ViewContext &context, QWidget *parent) : View(model, parent), context_(context)
{
    sync();
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

#include "view.h"

#include "accessibility.h"

#include <QCoreApplication>
#include <QResizeEvent>

#include <cmath>

namespace tock {

View::View(AppModel *model, QWidget *parent) : QWidget(parent), model_(model)
{
    // Before any view is described to a reader: an interface, once made, is kept.
    Accessibility::install();
}

qreal View::zoom() const
{
    return std::max(model_->zoom(), 0.1);
}

QRect View::zoomedRect(const QRectF &rect) const
{
    const qreal z = zoom();
    const int left = int(std::floor(rect.left() * z));
    const int top = int(std::floor(rect.top() * z));
    const int right = int(std::ceil(rect.right() * z));
    const int bottom = int(std::ceil(rect.bottom() * z));
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1));
}

void View::setUnzoomedGeometry(const QRectF &rect)
{
    // Edges rounded separately so neighbours share an edge without gaps at any zoom.
    const qreal z = zoom();
    const int left = int(std::lround(rect.left() * z));
    const int top = int(std::lround(rect.top() * z));
    const int right = int(std::lround(rect.right() * z));
    const int bottom = int(std::lround(rect.bottom() * z));
    place(this, QRect(left, top, std::max(0, right - left), std::max(0, bottom - top)));
}

void View::place(QWidget *widget, const QRect &geometry)
{
    const QSize old = widget->size();
    widget->setGeometry(geometry);
    if (!widget->isVisible() && old != geometry.size()) {
        QResizeEvent event(geometry.size(), old);
        QCoreApplication::sendEvent(widget, &event);
    }
}

bool View::looksActive() const
{
    const QWidget *top = window();
    if (top->property("tockInactive").toBool())
        return false;
    return !top->isVisible() || isActiveWindow();
}

void View::begin(QPainter &painter)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.scale(zoom(), zoom());
}

} // namespace tock

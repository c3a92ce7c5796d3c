#include "view.h"

#include <QCoreApplication>
#include <QResizeEvent>

#include <cmath>

namespace tock {

View::View(AppModel *model, QWidget *parent) : QWidget(parent), model_(model) {}

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

namespace {

// A widget's origin in the window: as the layout meant it for views, else where it is.
QPointF originOf(const QWidget *widget, qreal zoom)
{
    if (!widget)
        return {};
    if (const auto *view = qobject_cast<const View *>(widget))
        return view->layoutOrigin();
    return QPointF(widget->mapTo(widget->window(), QPoint(0, 0))) / zoom;
}

void setPixelGeometry(QWidget *widget, const QRect &geometry)
{
    const QSize old = widget->size();
    widget->setGeometry(geometry);
    if (!widget->isVisible() && old != geometry.size()) {
        QResizeEvent event(geometry.size(), old);
        QCoreApplication::sendEvent(widget, &event);
    }
}

QPoint pixelOriginOf(const QWidget *widget)
{
    return widget ? widget->mapTo(widget->window(), QPoint(0, 0)) : QPoint();
}

} // namespace

QPointF View::layoutOrigin() const
{
    const QPointF own = layoutRect_ ? layoutRect_->topLeft() : QPointF(pos()) / zoom();
    return isWindow() ? QPointF() : originOf(parentWidget(), zoom()) + own;
}

QPointF View::pixelShift() const
{
    return layoutOrigin() * zoom() - QPointF(pixelOriginOf(this));
}

void View::setUnzoomedGeometry(const QRectF &rect)
{
    // Each edge is rounded once, in window coordinates, and made relative to the parent's
    // rounded origin: rounding inside each parent again would let a child end a pixel past it.
    const qreal z = zoom();
    const QPointF base = originOf(parentWidget(), z);
    const QPoint basePixels = pixelOriginOf(parentWidget());
    const auto edge = [z](qreal at, qreal from, int fromPixels) { return int(std::lround((from + at) * z)) - fromPixels; };
    const int left = edge(rect.left(), base.x(), basePixels.x());
    const int top = edge(rect.top(), base.y(), basePixels.y());
    const int right = edge(rect.right(), base.x(), basePixels.x());
    const int bottom = edge(rect.bottom(), base.y(), basePixels.y());
    // Known before the resize event, so the children are laid out from the exact size.
    layoutRect_ = rect;
    setPixelGeometry(this, QRect(left, top, std::max(0, right - left), std::max(0, bottom - top)));
}

void View::place(QWidget *widget, const QRect &geometry)
{
    if (auto *view = qobject_cast<View *>(widget))
        view->layoutRect_.reset(); // placed in pixels: its place is exact
    setPixelGeometry(widget, geometry);
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
    // Drawn where the layout meant the view to be, less than half a pixel from its rounded
    // place, so shapes snapped to pixels (Draw::panel) land on the window's one pixel grid.
    painter.translate(pixelShift());
    painter.scale(zoom(), zoom());
}

} // namespace tock

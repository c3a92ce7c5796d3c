#include "shapes.h"

#include <QPainter>

#include <cmath>

namespace tock {

QPainterPath NotchedRect::path(const QRectF &r, qreal step)
{
    QPainterPath path;
    const qreal s = std::clamp<qreal>(step, 0, std::min(r.width(), r.height()) / 2);
    if (s <= 0) {
        path.addRect(r);
        return path;
    }
    const qreal l = r.left(), t = r.top(), rt = r.right(), b = r.bottom();
    path.moveTo(l + s, t);
    path.lineTo(rt - s, t);
    path.lineTo(rt - s, t + s);
    path.lineTo(rt, t + s);
    path.lineTo(rt, b - s);
    path.lineTo(rt - s, b - s);
    path.lineTo(rt - s, b);
    path.lineTo(l + s, b);
    path.lineTo(l + s, b - s);
    path.lineTo(l, b - s);
    path.lineTo(l, t + s);
    path.lineTo(l + s, t + s);
    path.closeSubpath();
    return path;
}

QPainterPath shapePath(const ShapeKind &shape, const QRectF &rect)
{
    QPainterPath path;
    const qreal half = std::min(rect.width(), rect.height()) / 2;
    switch (shape.kind) {
    case ShapeKind::Rect:
        if (shape.radius > 0) {
            const qreal radius = std::min(shape.radius, half);
            path.addRoundedRect(rect, radius, radius);
        } else {
            path.addRect(rect);
        }
        break;
    case ShapeKind::Notched:
        return NotchedRect::path(rect, shape.radius);
    case ShapeKind::Circle:
        path.addRoundedRect(rect, half, half);
        break;
    }
    return path;
}

void paintShape(QPainter &painter, const ShapeKind &shape, const QRectF &rect, const QBrush &fill,
                const QColor &border, qreal borderWidth)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, shape.kind != ShapeKind::Notched);
    const bool hasBorder = borderWidth > 0 && border.alpha() > 0;
    const bool clearFill = fill.style() == Qt::NoBrush
                           || (fill.style() == Qt::SolidPattern && fill.color().alpha() == 0);
    if (!clearFill)
        painter.fillPath(shapePath(shape, rect), fill);
    if (hasBorder) {
        // The border is the ring between the outline and the outline inset by its width,
        // filled rather than stroked so notched corners stay square.
        ShapeKind inner = shape;
        if (inner.kind == ShapeKind::Rect)
            inner.radius = std::max<qreal>(0, inner.radius - borderWidth);
        QPainterPath ring = shapePath(shape, rect);
        ring.addPath(shapePath(inner, rect.adjusted(borderWidth, borderWidth, -borderWidth,
                                                    -borderWidth)));
        ring.setFillRule(Qt::OddEvenFill);
        painter.fillPath(ring, border);
    }
    painter.restore();
}

void paintSeparator(QPainter &painter, SeparatorKind kind, const QPointF &from, qreal length,
                    qreal width, const QColor &color)
{
    if (kind == SeparatorKind::none || length <= 0 || width <= 0 || color.alpha() == 0)
        return;
    QPainterPath path;
    switch (kind) {
    case SeparatorKind::solid:
        path.addRect(QRectF(from, QSizeF(length, width)));
        break;
    case SeparatorKind::dotted:
    case SeparatorKind::dashed: {
        const qreal on = kind == SeparatorKind::dotted ? width : 4 * width;
        const qreal period = on + (kind == SeparatorKind::dotted ? 2 * width : 3 * width);
        for (qreal x = 0; x < length; x += period)
            path.addRect(QRectF(from.x() + x, from.y(), std::min(on, length - x), width));
        break;
    }
    case SeparatorKind::none:
        break;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.fillPath(path, color);
    painter.restore();
}

} // namespace tock

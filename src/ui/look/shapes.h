// Shapes: the outlines of theme shapes, their fill and border, and the separator lines.
#pragma once

#include "theme.h"

#include <QBrush>
#include <QPainterPath>
#include <QRectF>

class QPainter;

namespace tock {

// The pixel-style rectangle: a rectangle with each corner cell cut away by one `step`.
struct NotchedRect {
    static QPainterPath path(const QRectF &rect, qreal step);
};

// The outline of `shape` filling `rect`. Rect radii are clamped to half the shorter side; a
// circle in a rectangle that is not square becomes a capsule.
QPainterPath shapePath(const ShapeKind &shape, const QRectF &rect);

// Fills `shape` in `rect` and draws a border `borderWidth` wide inside its edge, so the
// outer edge stays at `rect` whatever the width. Transparent colours or a zero width skip
// that part.
void paintShape(QPainter &painter, const ShapeKind &shape, const QRectF &rect, const QBrush &fill,
                const QColor &border, qreal borderWidth);

// A horizontal line `width` thick whose top edge runs from `from` for `length` points.
// Dots are squares `width` wide two widths apart; dashes four widths long, three apart. The
// pattern starts at `from`, so abutting pieces of one line (partial repaints) line up.
void paintSeparator(QPainter &painter, SeparatorKind kind, const QPointF &from, qreal length,
                    qreal width, const QColor &color);

} // namespace tock

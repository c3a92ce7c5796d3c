// Drawing helpers the views share: themed panels (fill, border, hard or soft shadow, emboss),
// separators, text with tracking and case, glowing text and the window overlays. Coordinates
// are whatever the painter is set up for (the views use unzoomed points).
#pragma once

#include "theme.h"

#include <QPainter>
#include <QImage>
#include <QPainterPath>
#include <QRegion>

#include <functional>

class QWidget;

namespace tock::Draw {

// The outline of a shape kind inside `rect`.
QPainterPath shape(const ShapeKind &kind, const QRectF &rect);

struct Panel {
    QColor fill;
    QColor fill2;      // bottom of a vertical gradient; invalid or equal to fill for a flat fill
    QColor border;
    qreal borderWidth = 0;
    ShapeKind shape;
    bool hardShadow = false;
    QColor shadowColor;
    qreal shadowOffset = 0;
    bool softShadow = false;
    bool lip = false;       // a darker solid edge under the shape, as under a key
    bool embossed = false;  // a light top edge and a dark bottom edge
    bool recessed = false;  // an inner shadow along the top
    QColor highlight;       // a thin light line along the top inside; invalid for none
};

// Paints the panel in `rect`; shadows fall outside it (right and below).
void panel(QPainter &painter, const QRectF &rect, const Panel &panel);

// A line from `a` to `b` drawn as the separator kind says.
void separator(QPainter &painter, QPointF a, QPointF b, SeparatorKind kind, const QColor &color, qreal width);

// `font` with the tracking applied as absolute letter spacing.
QFont tracked(QFont font, qreal tracking);

// Text in one line inside `rect`, elided at the right when too long.
void text(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QString &text, const QFont &font,
          const QColor &color);

// Text with a soft halo in the same colour, as phosphor digits glow.
void glowText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QString &text,
              const QFont &font, const QColor &color);

// The window-wide overlay (pixel grid or scan lines) over `rect`.
void overlay(QPainter &painter, const QRectF &rect, Theme::Overlay kind, const QColor &ink);

// The width `text` takes in `font`.
qreal textWidth(const QFont &font, const QString &text);

// A widget's background drawn once into an image and copied while its key stays the same:
// filling a card's shadowed, antialiased paths again for every repaint is most of a tick's
// cost, and a tick dirties only small rectangles.
class Layer {
public:
    // Paints `widget`'s dirty rectangles from the image, first drawing it with `draw` (a painter
    // on the image, set up in the widget's logical pixels) when `key`, the size, the pixel
    // ratio or the widget's sub-pixel `shift` changed.
    void paint(QWidget *widget, QPointF shift, const QRegion &dirty, const QString &key,
               const std::function<void(QPainter &)> &draw);

private:
    QImage image_;
    QString key_;
};

} // namespace tock::Draw

// Overlays: the textures some styles lay over the whole window once everything else is drawn.
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace tock {

// The fine lines between the cells of a handheld screen.
struct PixelGridOverlay {
    static constexpr qreal cell = 3;   // points between lines
    static constexpr int alpha = 22;   // of 255: a texture, never a pattern that competes

    // Lines in `ink` (its alpha replaced) over `area`, anchored at area's top-left so partial
    // repaints line up. Under a pure scale the lines are one device pixel or more, on pixels.
    static void paint(QPainter &painter, const QRectF &area, const QColor &ink);
};

// The dark horizontal bands of a phosphor tube.
struct ScanlineOverlay {
    static constexpr qreal pitch = 3;  // points from one band to the next
    static constexpr int alpha = 60;

    static void paint(QPainter &painter, const QRectF &area, const QColor &ink);
};

} // namespace tock

#include "overlays.h"

#include <QPaintDevice>
#include <QPainter>

#include <cmath>

namespace tock {

namespace {

// Calls `line(position, thickness)` in device pixels for every band of one axis: the band
// starts every `pitch` device pixels from `start`, covering [lo, hi). Bands closer than three
// pixels would read as a flat tint, so small scales spread them to three.
template<typename Line>
void bands(qreal start, qreal pitch, qreal thickness, qreal lo, qreal hi, Line line)
{
    pitch = std::max<qreal>(3, std::round(pitch));
    const qreal first = start + std::ceil((lo - start - thickness) / pitch) * pitch;
    for (qreal at = first; at < hi; at += pitch)
        line(std::round(at), thickness);
}

// The visible part of `area` in device pixels, and a painter set to draw in device pixels.
// False when the painter is rotated or sheared: overlays are then skipped, being texture only.
bool toDevicePixels(QPainter &painter, const QRectF &area, QRectF &deviceArea, qreal &scale)
{
    const QTransform device = painter.deviceTransform();
    if (device.type() > QTransform::TxScale || device.m11() <= 0)
        return false;
    scale = device.m11();
    deviceArea = device.mapRect(area);
    if (painter.hasClipping())
        deviceArea &= device.mapRect(painter.clipBoundingRect());
    painter.setWorldTransform(device.inverted() * painter.worldTransform());
    return !deviceArea.isEmpty();
}

// Runs `draw(origin, visible, scale, color)` with the painter in device pixels, unsmoothed, and
// `ink` at `alpha`; `origin` is area's top-left in device pixels. Skipped where the painter is
// rotated or sheared.
template<typename Draw>
void inDevicePixels(QPainter &painter, const QRectF &area, const QColor &ink, int alpha, Draw draw)
{
    painter.save();
    const QPointF origin = painter.deviceTransform().map(area.topLeft());
    QRectF visible;
    qreal scale = 1;
    if (toDevicePixels(painter, area, visible, scale)) {
        QColor color = ink;
        color.setAlpha(alpha);
        painter.setRenderHint(QPainter::Antialiasing, false);
        draw(origin, visible, scale, color);
    }
    painter.restore();
}

} // namespace

void PixelGridOverlay::paint(QPainter &painter, const QRectF &area, const QColor &ink)
{
    inDevicePixels(painter, area, ink, alpha, [&](QPointF origin, const QRectF &visible, qreal scale, const QColor &color) {
        const qreal thickness = std::max<qreal>(1, std::round(scale / 2));
        const qreal pitch = cell * scale;
        bands(origin.x(), pitch, thickness, visible.left(), visible.right(), [&](qreal x, qreal w) {
            painter.fillRect(QRectF(x, visible.top(), w, visible.height()), color);
        });
        bands(origin.y(), pitch, thickness, visible.top(), visible.bottom(), [&](qreal y, qreal h) {
            painter.fillRect(QRectF(visible.left(), y, visible.width(), h), color);
        });
    });
}

void ScanlineOverlay::paint(QPainter &painter, const QRectF &area, const QColor &ink)
{
    inDevicePixels(painter, area, ink, alpha, [&](QPointF origin, const QRectF &visible, qreal scale, const QColor &color) {
        const qreal thickness = std::max<qreal>(1, std::round(scale));
        bands(origin.y() + thickness, pitch * scale, thickness, visible.top(), visible.bottom(),
              [&](qreal y, qreal h) {
                  painter.fillRect(QRectF(visible.left(), y, visible.width(), h), color);
              });
    });
}

} // namespace tock

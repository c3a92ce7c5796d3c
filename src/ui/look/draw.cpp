#include "draw.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QStaticText>
#include <QWidget>

#include <cmath>
#include <optional>

#include "overlays.h"
#include "shapes.h"

namespace tock::Draw {

QPainterPath shape(const ShapeKind &kind, const QRectF &rect)
{
    return shapePath(kind, rect);
}

namespace {

// `rect` with its edges on whole pixels of the painter's logical grid, which View::begin makes
// the window's: a card, its border and its shadow then meet without a lighter seam. Left alone
// under rotation or perspective (the split-flap tiles).
QRectF snapped(const QPainter &painter, const QRectF &rect)
{
    const QTransform &t = painter.worldTransform();
    if (t.type() > QTransform::TxScale)
        return rect;
    const QRectF mapped = t.mapRect(rect);
    const QRectF pixels(QPointF(std::round(mapped.left()), std::round(mapped.top())),
                        QPointF(std::round(mapped.right()), std::round(mapped.bottom())));
    return t.inverted().mapRect(pixels);
}

// A length made a whole number (at least one) of the pixels `scale` says a point takes.
qreal wholePixels(qreal length, qreal scale)
{
    return scale > 0 ? std::max<qreal>(1, std::round(length * scale)) / scale : length;
}

} // namespace

void panel(QPainter &painter, const QRectF &unsnapped, const Panel &given)
{
    const QRectF rect = snapped(painter, unsnapped);
    Panel p = given;
    if (painter.worldTransform().type() <= QTransform::TxScale) {
        // Shadows move by whole pixels, borders are whole device pixels wide.
        p.shadowOffset = p.shadowOffset > 0 ? wholePixels(p.shadowOffset, painter.worldTransform().m11()) : 0;
        if (p.borderWidth > 0)
            p.borderWidth = wholePixels(p.borderWidth, painter.deviceTransform().m11());
    }
    painter.save();
    painter.setPen(Qt::NoPen);
    const QPainterPath outline = shape(p.shape, rect);
    if (p.softShadow) {
        // A few widening translucent layers: cheap and close enough to a blur at this size.
        for (int i = 6; i >= 1; --i) {
            const qreal grow = i * 1.6;
            ShapeKind wider = p.shape;
            if (wider.kind == ShapeKind::Rect)
                wider.radius += grow;
            painter.setBrush(QColor(0, 0, 0, 9 + (6 - i) * 3));
            painter.drawPath(shape(wider, rect.adjusted(-grow, -grow + 3, grow, grow + 3)));
        }
    }
    if (p.hardShadow && p.shadowOffset > 0) {
        painter.setBrush(p.shadowColor);
        painter.drawPath(outline.translated(p.shadowOffset, p.shadowOffset));
    }
    if (p.lip) {
        painter.setBrush(p.fill.darker(150));
        painter.drawPath(outline.translated(0, 2));
    }
    QBrush base(p.fill);
    if (p.fill2.isValid() && p.fill2 != p.fill) {
        QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
        gradient.setColorAt(0, p.fill);
        gradient.setColorAt(1, p.fill2);
        base = QBrush(gradient);
    }
    const bool edges = p.embossed || (p.highlight.isValid() && p.highlight.alpha() > 0);
    if (!edges) {
        painter.setBrush(base);
        painter.drawPath(outline);
    } else {
        // Edges by overpainting inside the outline (path booleans are too slow for a tick): the
        // edge colours first, then the body slightly inset over them.
        painter.save();
        painter.setClipPath(outline);
        qreal top = 0, bottom = 0;
        if (p.embossed) {
            painter.setBrush(QColor(0, 0, 0, 45));
            painter.drawPath(outline);
            painter.setBrush(p.fill);
            painter.drawPath(shape(p.shape, rect.adjusted(0, 0, 0, -1.5)));
            bottom = 1.5;
        }
        const QColor light = p.embossed ? QColor(255, 255, 255, 150) : p.highlight;
        painter.setBrush(light);
        painter.drawPath(shape(p.shape, rect.adjusted(0, 0, 0, -bottom)));
        top = p.embossed ? 1.5 : 1;
        painter.setBrush(base);
        painter.drawPath(shape(p.shape, rect.adjusted(0, top, 0, -bottom)));
        painter.restore();
    }
    if (p.recessed) {
        painter.save();
        painter.setClipPath(outline);
        QLinearGradient inner(rect.topLeft(), rect.topLeft() + QPointF(0, 5));
        inner.setColorAt(0, QColor(0, 0, 0, 55));
        inner.setColorAt(1, QColor(0, 0, 0, 0));
        painter.fillRect(rect, inner);
        painter.restore();
    }
    if (p.borderWidth > 0 && p.border.isValid() && p.border.alpha() > 0) {
        // Inside the outline, so a thick border never grows the shape.
        const qreal half = p.borderWidth / 2;
        QPen pen(p.border, p.borderWidth);
        pen.setJoinStyle(p.shape.kind == ShapeKind::Notched ? Qt::MiterJoin : Qt::RoundJoin);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        ShapeKind inner = p.shape;
        if (inner.kind == ShapeKind::Rect)
            inner.radius = std::max<qreal>(0, inner.radius - half);
        painter.drawPath(shape(inner, rect.adjusted(half, half, -half, -half)));
    }
    painter.restore();
}

void separator(QPainter &painter, QPointF a, QPointF b, SeparatorKind kind, const QColor &color, qreal width)
{
    if (kind == SeparatorKind::none || width <= 0)
        return;
    paintSeparator(painter, kind, QPointF(a.x(), a.y() - width / 2), b.x() - a.x(), width, color);
}

QFont tracked(QFont font, qreal tracking)
{
    if (tracking != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, tracking);
    return font;
}

namespace {

// Cells to the em of Tock's own grid fonts (their glyph tables say so); 0 for any other font.
int gridCellsPerEm(const QFont &font)
{
    if (font.family() == QLatin1String("TockPixel"))
        return 8;
    if (font.family() == QLatin1String("TockTerm"))
        return 12;
    return 0;
}

// How much to shrink a grid font so one cell of it is a whole number of device pixels; absent
// for other fonts, under rotation and where that would shrink it too much.
std::optional<qreal> wholeCellScale(const QPainter &painter, const QFont &font)
{
    const int cells = gridCellsPerEm(font);
    const QTransform &t = painter.deviceTransform();
    if (cells == 0 || t.type() > QTransform::TxScale || font.pixelSize() <= 0)
        return std::nullopt;
    // Only ever a little smaller: the layout measured the text at its own size, so a larger one
    // would run into its neighbours, and much smaller would not read as the same type. Cells
    // under a pixel, or too far above a whole one, stay as they are.
    const qreal cell = font.pixelSize() / qreal(cells) * t.m11();
    const qreal whole = std::floor(cell + 1e-6);
    if (whole < 1 || whole / cell < 0.8)
        return std::nullopt;
    return whole / cell;
}

// The grid font with its letter spacing made whole device pixels at `scale` device pixels per
// font pixel, so every glyph starts on a pixel.
QFont onWholePixels(QFont font, qreal scale)
{
    if (font.letterSpacingType() == QFont::AbsoluteSpacing && font.letterSpacing() != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, std::round(font.letterSpacing() * scale) / scale);
    return font;
}

// `at` moved to the nearest whole device pixel.
QPointF onPixel(const QPainter &painter, QPointF at)
{
    const QTransform &device = painter.deviceTransform();
    const QPointF pixel = device.map(at);
    return device.inverted().map(QPointF(std::round(pixel.x()), std::round(pixel.y())));
}

} // namespace

void text(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QString &string, const QFont &given,
          const QColor &color)
{
    painter.save();
    painter.setPen(color);
    // Widget edges are rounded to whole pixels and hinted text can be a little wider on screen
    // than measured, so a label sized to its text may get up to a pixel and a half less: draw it
    // whole rather than elide it for that.
    const std::optional<qreal> grid = wholeCellScale(painter, given);
    if (!grid) {
        painter.setFont(given);
        const QString shown = QFontMetricsF(given).elidedText(string, Qt::ElideRight, rect.width() + 1.5);
        painter.drawText(rect, int(alignment) | Qt::TextSingleLine | Qt::TextDontClip, shown);
        painter.restore();
        return;
    }
    const qreal k = *grid;
    const QFont font = onWholePixels(given, painter.deviceTransform().m11() * k);
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    // Spacing made whole pixels can add up to half a pixel a letter: a text the layout measured
    // as fitting is drawn whole, not elided for that.
    const bool fits = QFontMetricsF(given).horizontalAdvance(string) <= rect.width() + 1.5;
    const QString shown = fits ? string : metrics.elidedText(string, Qt::ElideRight, (rect.width() + 1.5) / k);
    // A grid font is drawn a little larger or smaller, from a whole device pixel, so each of its
    // cells covers whole pixels: strokes stay even at every zoom.
    const qreal width = metrics.horizontalAdvance(shown) * k;
    const qreal height = metrics.height() * k;
    QPointF at(rect.left(), rect.top() + metrics.ascent() * k);
    if (alignment & Qt::AlignHCenter)
        at.rx() += (rect.width() - width) / 2;
    else if (alignment & Qt::AlignRight)
        at.rx() += rect.width() - width;
    if (alignment & Qt::AlignVCenter)
        at.ry() += (rect.height() - height) / 2;
    else if (alignment & Qt::AlignBottom)
        at.ry() += rect.height() - height;
    painter.translate(onPixel(painter, at));
    painter.scale(k, k);
    painter.drawText(QPointF(0, 0), shown);
    painter.restore();
}

void glowText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QString &string,
              const QFont &given, const QColor &color)
{
    QColor halo = color;
    halo.setAlpha(38);
    static const QPointF offsets[] = {{-1.2, 0}, {1.2, 0}, {0, -1.2}, {0, 1.2},
                                      {-0.8, -0.8}, {0.8, 0.8}, {-0.8, 0.8}, {0.8, -0.8}};
    // Laid out once and drawn nine times: a running time glows on every tick.
    painter.save();
    const std::optional<qreal> grid = wholeCellScale(painter, given); // as in text()
    const qreal k = grid.value_or(1);
    const QFont font = grid ? onWholePixels(given, painter.deviceTransform().m11() * k) : given;
    painter.setFont(font);
    const bool fits = QFontMetricsF(given).horizontalAdvance(string) <= rect.width() + 1.5; // as in text()
    const QString shown =
        fits ? string : QFontMetricsF(font).elidedText(string, Qt::ElideRight, (rect.width() + 1.5) / k);
    QStaticText laidOut(shown);
    laidOut.setTextFormat(Qt::PlainText);
    laidOut.prepare(painter.transform(), font);
    const QSizeF size = laidOut.size() * k;
    QPointF at = rect.topLeft();
    if (alignment & Qt::AlignHCenter)
        at.rx() += (rect.width() - size.width()) / 2;
    else if (alignment & Qt::AlignRight)
        at.rx() += rect.width() - size.width();
    if (alignment & Qt::AlignVCenter)
        at.ry() += (rect.height() - size.height()) / 2;
    else if (alignment & Qt::AlignBottom)
        at.ry() += rect.height() - size.height();
    if (grid) {
        painter.translate(onPixel(painter, at));
        painter.scale(k, k);
        at = QPointF(0, 0);
        laidOut.prepare(painter.transform(), font);
    }
    painter.setPen(halo);
    for (const QPointF &offset : offsets)
        painter.drawStaticText(at + offset, laidOut);
    painter.setPen(color);
    painter.drawStaticText(at, laidOut);
    painter.restore();
}

void overlay(QPainter &painter, const QRectF &rect, Theme::Overlay kind, const QColor &ink)
{
    if (kind == Theme::Overlay::pixelGrid)
        PixelGridOverlay::paint(painter, rect, ink);
    else if (kind == Theme::Overlay::scanlines)
        ScanlineOverlay::paint(painter, rect, ink);
}

qreal textWidth(const QFont &font, const QString &string)
{
    return QFontMetricsF(font).horizontalAdvance(string);
}

void Layer::paint(QWidget *widget, QPointF shift, const QRegion &dirty, const QString &key,
                  const std::function<void(QPainter &)> &draw)
{
    QPainter painter(widget);
    // The painter's own scale, not the widget's ratio: rendered into a sharper image (a
    // screenshot), the widget still reports its screen's ratio.
    const QTransform device = painter.deviceTransform();
    const qreal dpr = std::max(0.01, qRound(std::hypot(device.m11(), device.m12()) * 100) / 100.0);
    const QSize pixels = (QSizeF(widget->size()) * dpr).toSize();
    // A widget drawn shifted by a fraction of a pixel draws its layer again when that shift
    // changes.
    const QString fullKey = key + QStringLiteral("|%1,%2").arg(shift.x(), 0, 'f', 3).arg(shift.y(), 0, 'f', 3);
    if (fullKey != key_ || image_.size() != pixels || image_.devicePixelRatio() != dpr) {
        key_ = fullKey;
        image_ = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        image_.setDevicePixelRatio(dpr);
        image_.fill(Qt::transparent);
        QPainter layer(&image_);
        draw(layer);
    }
    // One copy per rectangle, each at one-to-one scale: the cheapest thing a painter does.
    for (const QRect &rect : dirty)
        painter.drawImage(rect, image_, QRectF(QPointF(rect.topLeft()) * dpr, QSizeF(rect.size()) * dpr));
}

} // namespace tock::Draw

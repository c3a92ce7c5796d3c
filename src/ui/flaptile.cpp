#include "flaptile.h"

#include "flapclock.h"

#include <QCache>
#include <QEasingCurve>
#include <QFontMetricsF>
#include <QImage>
#include <QMatrix4x4>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace tock {

namespace {

constexpr qreal shadePeak = 0.55;
constexpr qreal eyeInTileHeights = 3; // close enough for a small tile to show its depth

struct FaceKey {
    QString style;
    QChar c;
    QSize pixels;
    qreal dpr;
    bool operator==(const FaceKey &) const = default;
};

size_t qHash(const FaceKey &k, size_t seed = 0)
{
    return qHashMulti(seed, k.style, k.c, k.pixels.width(), k.pixels.height(), k.dpr);
}

// Shared by every tile of the process, so sixty tiles showing digits hold ten faces, not six
// hundred. The cost unit is a kilobyte.
QCache<FaceKey, QImage> &faceCache()
{
    static QCache<FaceKey, QImage> cache(16 * 1024);
    return cache;
}

int renderedFaces = 0;

QImage renderFace(const FlapStyle &style, QChar c, QSize pixels, qreal dpr)
{
    ++renderedFaces;
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(Qt::transparent);
    const QSizeF size(pixels.width() / dpr, pixels.height() / dpr);

    QPainter p(&image);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(style.tile);
    p.drawRoundedRect(QRectF(QPointF(), size), style.radius, style.radius);

    QFont font = style.font;
    font.setPixelSize(std::max(1, qRound(size.height() * style.fontScale)));
    const QFontMetricsF metrics(font, &image);
    const QString text(c);
    const qreal advance = metrics.horizontalAdvance(text);
    // Wide letters are squeezed rather than shrunk, as a station board's are.
    const qreal room = size.width() * 0.9;
    const qreal squeeze = advance > room ? room / advance : 1.0;
    p.setFont(font);
    p.setPen(style.ink);
    p.translate(size.width() / 2, (size.height() + metrics.capHeight()) / 2);
    p.scale(squeeze, 1);
    p.drawText(QPointF(-advance / 2, 0), text);
    return image;
}

// One half of a tile's rounded outline, in tile coordinates, cut at the hinge.
QPainterPath halfOutline(QSizeF size, qreal radius, qreal hinge, bool top)
{
    const qreal w = size.width();
    const qreal h = size.height();
    const qreal r = std::clamp(radius, 0.0, std::min(w, h) / 2);
    QPainterPath path;
    if (top) {
        path.moveTo(0, hinge);
        path.lineTo(0, r);
        path.arcTo(QRectF(0, 0, 2 * r, 2 * r), 180, -90);
        path.lineTo(w - r, 0);
        path.arcTo(QRectF(w - 2 * r, 0, 2 * r, 2 * r), 90, -90);
        path.lineTo(w, hinge);
    } else {
        path.moveTo(0, hinge);
        path.lineTo(0, h - r);
        path.arcTo(QRectF(0, h - 2 * r, 2 * r, 2 * r), 180, 90);
        path.lineTo(w - r, h);
        path.arcTo(QRectF(w - 2 * r, h - 2 * r, 2 * r, 2 * r), 270, 90);
        path.lineTo(w, hinge);
    }
    path.closeSubpath();
    return path;
}

// A leaf turned by `angle` degrees about the hinge line; positive angles bring the upper edge
// towards the eye, negative ones the lower edge.
QTransform leafTransform(qreal angle, qreal centreX, qreal hinge, qreal eye)
{
    QMatrix4x4 turn;
    turn.rotate(float(-angle), 1, 0, 0);
    return QTransform::fromTranslate(-centreX, -hinge) * turn.toTransform(float(eye))
        * QTransform::fromTranslate(centreX, hinge);
}

} // namespace

FlapTile::FlapTile(FlapClock *clock, QWidget *host) : clock_(clock), host_(host) {}

FlapTile::~FlapTile()
{
    if (clock_)
        clock_->forget(this);
}

void FlapTile::setGeometry(const QRectF &rect)
{
    if (rect == rect_)
        return;
    repaint();
    rect_ = rect;
    repaint();
}

QRect FlapTile::paintRect() const
{
    // The upper edge of a leaf standing out towards the eye is drawn wider, by at most this much
    // on each side.
    const qreal eye = eyeInTileHeights * rect_.height();
    const qreal overhang = rect_.width() / 2 * (eye / (eye - rect_.height() / 2) - 1);
    return rect_.adjusted(-overhang - 1, -1, overhang + 1, 1).toAlignedRect();
}

void FlapTile::setStyle(const FlapStyle &style)
{
    if (style == style_)
        return;
    style_ = style;
    styleKey_ = style.font.key() + QLatin1Char('|') + style.tile.name(QColor::HexArgb)
        + style.ink.name(QColor::HexArgb) + QLatin1Char('|') + QString::number(style.radius)
        + QLatin1Char('|') + QString::number(style.fontScale);
    repaint();
}

void FlapTile::show(QChar c)
{
    if (c == target_)
        return;
    if (!clock_ || !host_ || !host_->isVisible()) {
        setResting(c);
        return;
    }
    from_ = target_;
    target_ = c;
    flipping_ = true;
    start_ = clock_->now();
    clock_->track(this, ++flipToken_, start_);
}

void FlapTile::setResting(QChar c)
{
    ++flipToken_;
    if (clock_)
        clock_->forget(this);
    if (flipping_ || c != target_)
        repaint(); // taken before the flip ends, so it covers the leaves' overhang too
    flipping_ = false;
    shown_ = from_ = target_ = c;
}

void FlapTile::settle(int token)
{
    if (token != flipToken_)
        return;
    repaint();
    flipping_ = false;
    shown_ = from_ = target_;
}

void FlapTile::repaint() const
{
    if (host_ && !rect_.isEmpty())
        host_->update(flipping_ ? paintRect() : rect_.toAlignedRect());
}

int FlapTile::renderedFaceCount()
{
    return renderedFaces;
}

QImage FlapTile::face(QChar c, qreal dpr) const
{
    const QSize pixels(std::max(1, qRound(rect_.width() * dpr)), std::max(1, qRound(rect_.height() * dpr)));
    const FaceKey key{styleKey_, c, pixels, dpr};
    if (const QImage *cached = faceCache().object(key))
        return *cached;
    const QImage image = renderFace(style_, c, pixels, dpr);
    faceCache().insert(key, new QImage(image), std::max<qsizetype>(1, image.sizeInBytes() / 1024));
    return image;
}

void FlapTile::paint(QPainter &painter) const
{
    if (rect_.isEmpty())
        return;
    // The painter's own scale, not its device's ratio: a widget rendered into an image for a
    // screenshot reports its screen's ratio as the device, and a zoomed window scales the painter.
    const QTransform device = painter.deviceTransform();
    const qreal dpr = std::max(0.01, qRound(std::hypot(device.m11(), device.m12()) * 100) / 100.0);
    const QSizeF size = rect_.size();
    const QImage next = face(target_, dpr);
    // The hinge sits on a whole device pixel so the two halves meet without a seam.
    const int mid = next.height() / 2;
    const qreal hinge = mid / dpr;
    const QRectF topTarget(0, 0, size.width(), hinge);
    const QRectF bottomTarget(0, hinge, size.width(), size.height() - hinge);
    const QRectF topSource(0, 0, next.width(), mid);
    const QRectF bottomSource(0, mid, next.width(), next.height() - mid);

    painter.save();
    painter.translate(rect_.topLeft());
    if (!flipping_) {
        painter.drawImage(QRectF(QPointF(), size), next);
    } else {
        const QImage previous = face(from_, dpr);
        painter.drawImage(topTarget, next, topSource);
        painter.drawImage(bottomTarget, previous, bottomSource);
    }
    const int line = std::max(1, qRound(size.height() * 0.025 * dpr));
    painter.fillRect(QRectF(0, (mid - line / 2) / dpr, size.width(), line / dpr), style_.split);

    if (flipping_) {
        const double half = clock_ ? clock_->halfFlip() : 0;
        const double t = clock_ ? clock_->now() - start_ : 0;
        const double first = half > 0 ? std::clamp(t / half, 0.0, 1.0) : 1.0;
        const double second = half > 0 ? std::clamp(t / half - 1, 0.0, 1.0) : 1.0;
        const qreal eye = eyeInTileHeights * size.height();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        // Smoothing a projected leaf's edges is most of a frame's cost; from two device pixels a
        // point on, the steps are too fine to see.
        painter.setRenderHint(QPainter::Antialiasing, dpr < 1.5);
        auto leaf = [&](const QImage &image, bool top, qreal angle, qreal shade) {
            painter.save();
            painter.setTransform(leafTransform(angle, size.width() / 2, hinge, eye), true);
            painter.drawImage(top ? topTarget : bottomTarget, image, top ? topSource : bottomSource);
            if (shade > 0) {
                QColor dark = style_.shade;
                dark.setAlphaF(float(shade * dark.alphaF()));
                painter.fillPath(halfOutline(size, style_.radius, hinge, top), dark);
            }
            painter.restore();
        };
        // The old upper half falls, darkening as it turns away from the light; once it is edge-on
        // the new lower half lands, brightening.
        static const QEasingCurve easeIn(QEasingCurve::InQuad);
        static const QEasingCurve easeOut(QEasingCurve::OutQuad);
        if (first < 1)
            leaf(face(from_, dpr), true, 90 * easeIn.valueForProgress(first), shadePeak * first);
        if (second > 0)
            leaf(next, false, -90 * (1 - easeOut.valueForProgress(second)), shadePeak * (1 - second));
    }
    painter.restore();
}

} // namespace tock

#include "flaptile.h"

#include "flapclock.h"

#include <QCache>
#include <QEasingCurve>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
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

// One leaf of a tile, turned by `angle` degrees (0 flat, 90 edge-on) about the hinge row `mid`
// and seen in perspective from `eye` pixels away: the rows of `face` above the hinge (`top`) or
// below it, drawn into an image `overhang` pixels wider on each side, since the edge coming
// towards the eye looks wider than the tile. `shade` (0 to 1) darkens it towards `shadeInk`.
// Everything is in device pixels; each output row samples the one source row that projects
// there, and the slanted sides are smoothed by their coverage. Done by hand because the
// painter's perspective path, with the shade's rounded outline filled through it, costs more
// than all the rest of a frame.
QImage warpLeaf(const QImage &face, int mid, bool top, qreal angle, qreal eye, int overhang, qreal shade,
                const QColor &shadeInk)
{
    const int w = face.width();
    const int rows = top ? mid : face.height() - mid;
    QImage out(w + 2 * overhang, std::max(1, rows), QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    const QImage source = face.format() == QImage::Format_ARGB32_Premultiplied
                              ? face
                              : face.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const qreal theta = std::abs(angle) * M_PI / 180;
    const qreal sine = std::sin(theta);
    const qreal cosine = std::cos(theta);
    const qreal cx = w / 2.0;
    // Fixed point, 8 fraction bits: a leaf is a few hundred pixels, warped afresh every frame.
    const qreal k = std::clamp(shade, 0.0, 1.0);
    const int keep = int((1 - k) * 256 + 0.5);
    const int inkR = int(shadeInk.redF() * k * 256 + 0.5);
    const int inkG = int(shadeInk.greenF() * k * 256 + 0.5);
    const int inkB = int(shadeInk.blueF() * k * 256 + 0.5);
    for (int r = 0; r < rows; ++r) {
        // Distance of this output row's centre from the hinge, and of the source row seen there.
        const qreal u = top ? rows - (r + 0.5) : r + 0.5;
        const qreal denominator = cosine * eye + u * sine;
        if (denominator <= 0)
            continue;
        const qreal d = u * eye / denominator;
        if (d >= rows)
            continue; // above the turned edge: nothing of the leaf here
        const qreal f = eye / (eye - d * sine);
        const int sy = std::clamp(int(top ? mid - d : mid + d), 0, face.height() - 1);
        const auto *in = reinterpret_cast<const QRgb *>(source.constScanLine(sy));
        auto *line = reinterpret_cast<QRgb *>(out.scanLine(r));
        const qreal left = cx - cx * f + overhang;
        const qreal right = cx + (w - cx) * f + overhang;
        const int from = std::max(0, int(std::floor(left)));
        const int to = std::min(out.width(), int(std::ceil(right)));
        const qreal step = 1 / f;
        qreal sourceX = cx + (from + 0.5 - overhang - cx) * step;
        for (int x = from; x < to; ++x, sourceX += step) {
            const QRgb p = in[std::clamp(int(sourceX), 0, w - 1)];
            const int a = qAlpha(p);
            int red = (qRed(p) * keep + inkR * a) >> 8;
            int green = (qGreen(p) * keep + inkG * a) >> 8;
            int blue = (qBlue(p) * keep + inkB * a) >> 8;
            int alpha = a;
            if (x == from || x + 1 == to) {
                const int cover = int(std::clamp(std::min<qreal>(x + 1, right) - std::max<qreal>(x, left), 0.0, 1.0) * 256);
                red = red * cover >> 8;
                green = green * cover >> 8;
                blue = blue * cover >> 8;
                alpha = alpha * cover >> 8;
            }
            line[x] = qRgba(std::min(red, 255), std::min(green, 255), std::min(blue, 255), alpha);
        }
    }
    return out;
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

void FlapTile::settle(int token, bool endShown)
{
    if (token != flipToken_)
        return;
    // The motion's last frame already shows the face at rest, leaves flat and nothing in the
    // overhang; only a flip whose end was never drawn (the loop was busy) needs a frame more.
    if (!endShown)
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
        // In device pixels, on the face images' own grid.
        const qreal eye = eyeInTileHeights * next.height();
        const int overhang = int(std::ceil(next.width() / 2.0 * (eye / (eye - mid) - 1))) + 1;
        auto leaf = [&](const QImage &image, bool top, qreal angle, qreal shade) {
            QImage warped = warpLeaf(image, mid, top, angle, eye, overhang, shade * style_.shade.alphaF(), style_.shade);
            warped.setDevicePixelRatio(dpr);
            painter.drawImage(QPointF(-overhang / dpr, top ? 0 : hinge), warped);
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

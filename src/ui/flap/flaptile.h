// One split-flap tile: a character on a small dark tile that changes by a mechanical flip, the
// upper half of the old character falling forward and the lower half of the new one landing.
// A tile is not a widget: a host widget places it, paints it from its paintEvent, and the
// window's FlapClock repaints just the tile's rectangle of the host while it flips.
#pragma once

#include "flapclock.h"
#include "flapstyle.h"

#include <QPointer>
#include <QRectF>
#include <QString>

class QImage;
class QPainter;
class QWidget;

namespace tock {

class FlapTile final : public Flipping {
public:
    // Neither the clock nor the host is owned; either may go first.
    FlapTile(FlapClock *clock, QWidget *host);
    ~FlapTile();
    FlapTile(const FlapTile &) = delete;
    FlapTile &operator=(const FlapTile &) = delete;

    // In the host's coordinates. Whole logical pixels keep the glyphs crisp.
    void setGeometry(const QRectF &rect);
    QRectF geometry() const { return rect_; }
    // What a flip may paint: the tile plus the overhang of a leaf turned towards the eye.
    QRect paintRect() const;
    void setStyle(const FlapStyle &style);

    // The character the tile last rested on.
    QChar shown() const { return shown_; }
    // The character it shows, or is flipping to.
    QChar target() const { return target_; }
    bool isFlipping() const { return flipping_; }
    // Raised by every change; only the flip holding the latest token may settle the tile.
    int flipToken() const { return flipToken_; }

    // Flips from what the tile shows or is flipping to onto `c`; nothing when that is `c`
    // already. Without a visible host there is nobody to watch, so the tile just rests on `c`.
    void show(QChar c);
    // Shows `c` at once, ending any flip.
    void setResting(QChar c);

    // Draws the tile at the clock's present moment, its faces rendered at the painter's scale to
    // device pixels.
    void paint(QPainter &painter) const;

    // How many character faces have been rendered in this process: each character, tile size,
    // style and scale is rendered once and then reused.
    static int renderedFaceCount();

private:
    friend class FlapClock;
    void repaint() const override;
    void settle(int token, bool endShown) override;
    QImage face(QChar c, qreal dpr) const;

    QPointer<FlapClock> clock_;
    QPointer<QWidget> host_;
    QRectF rect_;
    FlapStyle style_;
    QString styleKey_; // identifies the style's look in the shared face cache
    QChar shown_ = QLatin1Char(' ');
    QChar from_ = QLatin1Char(' ');
    QChar target_ = QLatin1Char(' ');
    bool flipping_ = false;
    int flipToken_ = 0;
    double start_ = 0;
};

} // namespace tock

// A row of split-flap tiles showing a text, such as a running time "01:23:45": one tile per
// character, separator characters (':') drawn narrow between the tiles. A new text flips only
// the tiles whose character changed. Made for times and plain words: a character is one UTF-16
// unit, so characters outside the basic plane do not fit on a tile.
#pragma once

#include "flapstyle.h"

#include <QWidget>

#include <memory>
#include <vector>

namespace tock {

class FlapClock;
class FlapTile;

class FlapText final : public QWidget {
    Q_OBJECT
public:
    // `clock` drives the flips and is shared by every FlapText of a window; not owned.
    explicit FlapText(FlapClock *clock, QWidget *parent = nullptr);
    ~FlapText() override;

    void setStyle(const FlapStyle &style);
    const FlapStyle &style() const { return style_; }

    // Flips the tiles whose character changed. A text of another shape (length or separator
    // positions) is laid out afresh and shown at once.
    void setText(const QString &text);
    QString text() const { return text_; }

    // Off (for screenshots and still renders), every change shows at once and running flips end.
    void setAnimated(bool animated);
    bool isAnimated() const { return animated_; }

    // The tiles, left to right, separators not counted.
    int tileCount() const { return int(tiles_.size()); }
    FlapTile *tile(int index) const { return tiles_.at(size_t(index)).get(); }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Slot {
        QChar c;
        int tile; // index into tiles_, or -1 for a separator
        QRectF rect;
    };
    bool isSeparator(QChar c) const { return style_.separators.contains(c); }
    bool sameShape(const QString &text) const;
    void rebuild();
    void layoutSlots();
    qreal margin() const;

    FlapClock *clock_;
    FlapStyle style_ = FlapStyle::board();
    QString text_;
    bool animated_ = true;
    std::vector<Slot> slots_;
    std::vector<std::unique_ptr<FlapTile>> tiles_;
};

} // namespace tock

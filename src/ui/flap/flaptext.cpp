#include "flaptext.h"

#include "flapclock.h"
#include "flaptile.h"

#include <QPaintEvent>
#include <QPainter>

#include <cmath>

namespace tock {

FlapText::FlapText(FlapClock *clock, QWidget *parent) : QWidget(parent), clock_(clock)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

FlapText::~FlapText() = default;

void FlapText::setStyle(const FlapStyle &style)
{
    if (style == style_)
        return;
    style_ = style;
    setAttribute(Qt::WA_OpaquePaintEvent, style_.ground.isValid() && style_.ground.alpha() == 255);
    // The separator set decides which characters get tiles.
    rebuild();
}

void FlapText::setText(const QString &text)
{
    if (text == text_)
        return;
    const bool reuse = sameShape(text);
    text_ = text;
    setAccessibleName(text);
    if (!reuse) {
        rebuild();
        return;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        Slot &slot = slots_[size_t(i)];
        slot.c = text[i];
        if (slot.tile < 0)
            continue;
        FlapTile &tile = *tiles_[size_t(slot.tile)];
        if (animated_)
            tile.show(slot.c);
        else
            tile.setResting(slot.c);
    }
}

void FlapText::setAnimated(bool animated)
{
    if (animated == animated_)
        return;
    animated_ = animated;
    if (!animated) {
        for (auto &tile : tiles_)
            tile->setResting(tile->target());
    }
}

bool FlapText::sameShape(const QString &text) const
{
    if (text.size() != text_.size())
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isSeparator(text[i]) != isSeparator(text_[i]))
            return false;
    }
    return true;
}

void FlapText::rebuild()
{
    tiles_.clear();
    slots_.clear();
    for (QChar c : std::as_const(text_)) {
        int index = -1;
        if (!isSeparator(c)) {
            index = int(tiles_.size());
            auto tile = std::make_unique<FlapTile>(clock_, this);
            tile->setStyle(style_);
            tile->setResting(c);
            tiles_.push_back(std::move(tile));
        }
        slots_.push_back({c, index, {}});
    }
    layoutSlots();
    updateGeometry();
    update();
}

qreal FlapText::margin() const
{
    // Room for the leaves of the end tiles to stand out while they flip.
    const qreal eye = 3 * style_.tileSize.height();
    return std::ceil(style_.tileSize.width() / 2 * (eye / (eye - style_.tileSize.height() / 2) - 1)) + 1;
}

void FlapText::layoutSlots()
{
    // Whole logical pixels, so every tile's face maps one to one onto device pixels.
    const QSizeF tileSize(std::round(style_.tileSize.width()), std::round(style_.tileSize.height()));
    const qreal gap = std::round(style_.gap);
    const qreal separatorWidth = std::round(style_.separatorWidth);
    qreal x = margin();
    for (Slot &slot : slots_) {
        const qreal width = slot.tile < 0 ? separatorWidth : tileSize.width();
        slot.rect = QRectF(x, 1, width, tileSize.height());
        if (slot.tile >= 0)
            tiles_[size_t(slot.tile)]->setGeometry(slot.rect);
        x += width + gap;
    }
}

QSize FlapText::sizeHint() const
{
    qreal width = 2 * margin();
    if (!slots_.empty())
        width += slots_.back().rect.right() - slots_.front().rect.left();
    return QSize(int(std::ceil(width)), int(std::ceil(std::round(style_.tileSize.height()) + 2)));
}

void FlapText::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const QRect dirty = event->rect();
    if (testAttribute(Qt::WA_OpaquePaintEvent))
        painter.fillRect(dirty, style_.ground);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const Slot &slot : slots_) {
        if (slot.tile >= 0 || !slot.rect.intersects(dirty))
            continue;
        // Two dots, at a third and two thirds of the tile height.
        const qreal dot = std::max<qreal>(2, std::round(slot.rect.width() * 0.4));
        const qreal x = slot.rect.center().x() - dot / 2;
        painter.setPen(Qt::NoPen);
        painter.setBrush(style_.separatorInk);
        for (qreal at : {1.0 / 3, 2.0 / 3}) {
            const qreal y = std::round(slot.rect.top() + slot.rect.height() * at - dot / 2);
            painter.drawRoundedRect(QRectF(x, y, dot, dot), dot / 4, dot / 4);
        }
    }
    // Resting tiles first: the leaves of a flipping tile may stand out over its neighbours.
    for (bool flipping : {false, true}) {
        for (const auto &tile : tiles_) {
            if (tile->isFlipping() == flipping && tile->paintRect().intersects(dirty))
                tile->paint(painter);
        }
    }
}

} // namespace tock

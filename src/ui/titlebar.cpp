#include "titlebar.h"

#include "stylebutton.h"
#include "windowbuttons.h"
#include "draw.h"
#include "glyph.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <QWindow>

namespace tock {

TitleBar::TitleBar(AppModel *model, QWidget *parent)
    : View(model, parent), buttons_(new WindowButtons(model, this)), styleButton_(new StyleButton(model, this))
{
}

namespace {

// The mark after the title that says it opens a menu, drawn like the style button's chevron.
qreal menuMarkWidth(const Theme &t)
{
    return t.chevron == ChevronKind::text ? Draw::textWidth(t.sbFont, QStringLiteral("v")) + 6 : 12;
}

void paintMenuMark(QPainter &painter, const Theme &t, const QRectF &mark, const QColor &ink)
{
    switch (t.chevron) {
    case ChevronKind::text:
        Draw::text(painter, mark.adjusted(6, 0, 0, 0), Qt::AlignCenter, QStringLiteral("v"), t.sbFont, ink);
        break;
    case ChevronKind::triangle: {
        const QPointF c = mark.center() + QPointF(1, 1);
        painter.save();
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawPolygon(QPolygonF({c + QPointF(-3, -1.5), c + QPointF(3, -1.5), c + QPointF(0, 2)}));
        painter.restore();
        break;
    }
    case ChevronKind::icon:
        Glyphs::paint(painter, t, Glyph::chevron, QRectF(mark.center() + QPointF(-3, -4), QSizeF(8, 8)), ink);
        break;
    }
}

} // namespace

QRectF TitleBar::menuArea() const
{
    const Theme &t = theme();
    const QRectF text = titleRect();
    // The title keeps its text whole: the mark goes where there is no room for both.
    const qreal title = Draw::textWidth(Draw::tracked(t.titleFont, t.titleTracking), t.titleText);
    const qreal mark = title + menuMarkWidth(t) <= text.width() ? menuMarkWidth(t) : 0;
    const qreal width = std::min(title + mark, text.width());
    const qreal left = t.titleCentered ? text.center().x() - width / 2 : text.left();
    return {left, text.top(), width, text.height()};
}

QRectF TitleBar::titleRect() const
{
    const Theme &t = theme();
    const QSizeF size = unzoomedSize();
    const qreal height = size.height() - t.titleRuleWidth;
    // The free stretch between the controls: lights lead on the left, boxes and the style
    // button close the bar on the right.
    qreal left = t.contentPadding;
    qreal right = styleButton_->x() / zoom() - 6;
    if (WindowButtons::leadOnLeft(t))
        left = (buttons_->x() + buttons_->width()) / zoom() + 10;
    if (t.titleCentered) {
        // Centred on the window where it fits, else centred in the free stretch.
        const qreal half = (Draw::textWidth(Draw::tracked(t.titleFont, t.titleTracking), t.titleText) + menuMarkWidth(t)) / 2 + 2;
        qreal centre = size.width() / 2;
        if (centre - half < left || centre + half > right)
            centre = (left + right) / 2;
        return {std::max(left, centre - half), 0, std::min(right, centre + half) - std::max(left, centre - half), height};
    }
    return {left, 0, std::max<qreal>(0, right - left), height};
}

void TitleBar::relayout()
{
    const Theme &t = theme();
    const QSizeF size = unzoomedSize();
    const qreal pad = t.contentPadding;
    const qreal mid = (size.height() - t.titleRuleWidth) / 2;
    const QSizeF wb = buttons_->preferredSize();
    const QSizeF sb = styleButton_->preferredSize();
    const qreal sbTop = mid - (sb.height() - (t.sbHardShadow ? t.shadowOffset : 0)) / 2;
    if (WindowButtons::leadOnLeft(t)) {
        // Lights lead on the left; the style button sits at the far right.
        buttons_->setUnzoomedGeometry(QRectF(QPointF(pad, mid - wb.height() / 2), wb));
        styleButton_->setUnzoomedGeometry(QRectF(QPointF(size.width() - pad - sb.width() + 3, sbTop), sb));
    } else {
        // Boxes close the bar on the right, the style button just before them.
        const qreal right = size.width() - pad;
        buttons_->setUnzoomedGeometry(QRectF(QPointF(right - wb.width(), mid - wb.height() / 2), wb));
        styleButton_->setUnzoomedGeometry(QRectF(QPointF(right - wb.width() - 10 - sb.width(), sbTop), sb));
    }
    buttons_->relayout();
    styleButton_->refresh();
    update();
}

void TitleBar::resizeEvent(QResizeEvent *)
{
    relayout();
}

void TitleBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    if (t.titleFill.alpha() > 0)
        painter.fillRect(area, t.titleFill);
    const QFont font = Draw::tracked(t.titleFont, t.titleTracking);
    const QRectF menu = menuArea();
    const qreal title = Draw::textWidth(font, t.titleText);
    const qreal mark = std::max<qreal>(0, menu.width() - title);
    Draw::text(painter, menu.adjusted(0, 0, -mark, 0), Qt::AlignVCenter | Qt::AlignLeft, t.titleText, font,
               looksActive() ? t.titleInk : t.muted);
    if (mark > 0)
        paintMenuMark(painter, t, QRectF(menu.right() - mark, menu.top(), mark, menu.height()), t.muted);
    const qreal y = area.bottom() - t.titleRuleWidth / 2;
    Draw::separator(painter, QPointF(0, y), QPointF(area.right(), y), t.titleRule, t.ruleInk, t.titleRuleWidth);
}

void TitleBar::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    pressing_ = true;
    movingByHand_ = false;
    pressGlobal_ = event->globalPosition().toPoint();
    pressWindowPos_ = window()->pos();
    if (model()->styleMenuOpen())
        model()->setStyleMenuOpen(false);
}

void TitleBar::mouseMoveEvent(QMouseEvent *event)
{
    if (!pressing_)
        return;
    const QPoint delta = event->globalPosition().toPoint() - pressGlobal_;
    if (!movingByHand_) {
        if (delta.manhattanLength() < QApplication::styleHints()->startDragDistance())
            return;
        // The window manager moves the window where it can (and must, on Wayland).
        if (QWindow *handle = window()->windowHandle(); handle && handle->startSystemMove()) {
            pressing_ = false;
            return;
        }
        movingByHand_ = true;
    }
    window()->move(pressWindowPos_ + delta);
}

void TitleBar::mouseReleaseEvent(QMouseEvent *event)
{
    // A click on the title, not a drag, opens the menu: the one visible way to it on desktops
    // without a global menu bar.
    const bool clicked = pressing_ && !movingByHand_ && event->button() == Qt::LeftButton;
    pressing_ = false;
    movingByHand_ = false;
    const QRectF menu = menuArea();
    if (clicked && menu.contains(unzoomed(event->position())))
        Q_EMIT menuRequested(mapToGlobal(zoomedRect(menu).bottomLeft() + QPoint(0, 1)));
}

} // namespace tock

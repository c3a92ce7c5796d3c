#include "stylemenu.h"

#include "draw.h"
#include "glyph.h"

#include <QApplication>
#include <QKeyEvent>


namespace tock {

namespace {
constexpr qreal menuPadding = 6;
constexpr qreal markerWidth = 22;
} // namespace

StyleMenuItem::StyleMenuItem(AppModel *model, QWidget *parent, StyleID style)
    : ButtonView(model, parent), style_(style)
{
    setAccessibleName(StyleIDs::displayName(style));
    setAccessibleChecked(model->style() == style);
    connect(model, &AppModel::styleChanged, this, [this] { setAccessibleChecked(this->model()->style() == style_); });
    connect(this, &ButtonView::clicked, this, [this] {
        AppModel *m = this->model();
        m->setStyleMenuOpen(false);
        m->setStyle(style_);
    });
}

void StyleMenuItem::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    QColor ink = t.sbInk.isValid() ? t.nameInk : t.nameInk;
    if (isHovered() || hasFocus()) {
        Draw::Panel panel;
        panel.fill = panel.fill2 = t.menuSelectedFill;
        panel.shape = t.menuItemShape;
        Draw::panel(painter, area, panel);
        ink = t.menuSelectedInk;
    }
    const bool current = model()->style() == style_;
    if (current)
        paintMarker(painter, QRectF(area.left() + 4, area.top(), markerWidth - 6, area.height()), ink);
    QFont font = t.sbFont;
    const QString name = Theme::applyCase(t.labelCase, StyleIDs::displayName(style_));
    Draw::text(painter, area.adjusted(markerWidth + 2, 0, -6, 0), Qt::AlignVCenter | Qt::AlignLeft, name, font, ink);
}

void StyleMenuItem::paintMarker(QPainter &painter, const QRectF &rect, const QColor &color)
{
    const Theme &t = theme();
    const QPointF c = rect.center();
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    switch (t.menuMarker) {
    case MarkerKind::square:
        painter.drawRect(QRectF(c - QPointF(3, 3), QSizeF(6, 6)));
        break;
    case MarkerKind::pixelArrow: {
        // A cell-built arrow, the handheld screen's cursor.
        const qreal cell = 1.5;
        static const char *rows[] = {"#...", "##..", "###.", "####", "###.", "##..", "#..."};
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 4; ++x) {
                if (rows[y][x] == '#')
                    painter.drawRect(QRectF(c.x() - 3 + x * cell, c.y() - 5.25 + y * cell, cell, cell));
            }
        }
        break;
    }
    case MarkerKind::star: {
        QPolygonF star;
        for (int i = 0; i < 10; ++i) {
            const qreal radius = i % 2 ? 2.4 : 5.6;
            const qreal angle = -M_PI / 2 + i * M_PI / 5;
            star << c + QPointF(radius * std::cos(angle), radius * std::sin(angle));
        }
        painter.drawPolygon(star);
        break;
    }
    case MarkerKind::check: {
        painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(QPolygonF({c + QPointF(-4.5, 0), c + QPointF(-1.5, 3.5), c + QPointF(4.5, -4)}));
        break;
    }
    }
    painter.restore();
}

// ---------------------------------------------------------------------------------------------

StyleMenu::StyleMenu(AppModel *model, QWidget *parent) : View(model, parent)
{
    for (const StyleID style : StyleIDs::allCases())
        items_.append(new StyleMenuItem(model, this, style));
}

StyleMenuItem *StyleMenu::item(StyleID style) const
{
    for (StyleMenuItem *item : items_) {
        if (item->style() == style)
            return item;
    }
    return nullptr;
}

QMarginsF StyleMenu::shadowRoom() const
{
    const Theme &t = theme();
    // The soft shadow spreads about 10 points each way and sinks 3.
    const QMarginsF soft = t.menuSoftShadow ? QMarginsF(10, 7, 10, 13) : QMarginsF();
    const qreal hard = t.menuHardShadow ? t.shadowOffset : 0;
    return {soft.left(), soft.top(), std::max(soft.right(), hard), std::max(soft.bottom(), hard)};
}

QSizeF StyleMenu::preferredSize() const
{
    const Theme &t = theme();
    qreal widest = 0;
    for (const StyleID style : StyleIDs::allCases())
        widest = std::max(widest, Draw::textWidth(t.sbFont, Theme::applyCase(t.labelCase, StyleIDs::displayName(style))));
    const qreal width = std::max<qreal>(150, widest + markerWidth + 2 * menuPadding + 16);
    const qreal height = items_.size() * t.menuRowHeight + 2 * menuPadding;
    const QMarginsF room = shadowRoom();
    return {width + room.left() + room.right(), height + room.top() + room.bottom()};
}

void StyleMenu::relayout()
{
    const Theme &t = theme();
    const QMarginsF room = shadowRoom();
    const qreal width = unzoomedSize().width() - room.left() - room.right() - 2 * menuPadding;
    qreal y = room.top() + menuPadding;
    for (StyleMenuItem *item : items_) {
        item->setUnzoomedGeometry(QRectF(room.left() + menuPadding, y, width, t.menuRowHeight));
        item->update();
        y += t.menuRowHeight;
    }
    update();
}

void StyleMenu::keyPressEvent(QKeyEvent *event)
{
    const qsizetype at = items_.indexOf(QApplication::focusWidget());
    const int key = event->key();
    if (key == Qt::Key_Escape) {
        model()->setStyleMenuOpen(false);
    } else if ((key == Qt::Key_Up || key == Qt::Key_Down) && at >= 0) {
        const qsizetype n = items_.size();
        items_.at(((at + (key == Qt::Key_Up ? -1 : 1)) % n + n) % n)->setFocus(Qt::OtherFocusReason);
    } else if (key == Qt::Key_Home || key == Qt::Key_End) {
        items_.at(key == Qt::Key_Home ? 0 : items_.size() - 1)->setFocus(Qt::OtherFocusReason);
    } else {
        View::keyPressEvent(event);
    }
}

void StyleMenu::resizeEvent(QResizeEvent *)
{
    relayout();
}

void StyleMenu::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF body = unzoomedRect().marginsRemoved(shadowRoom());
    Draw::Panel panel;
    panel.fill = panel.fill2 = t.menuFill;
    panel.border = t.menuBorder;
    panel.borderWidth = t.menuBorderWidth;
    panel.shape = t.menuShape;
    panel.hardShadow = t.menuHardShadow;
    panel.shadowColor = t.hardShadowColor;
    panel.shadowOffset = t.shadowOffset;
    panel.softShadow = t.menuSoftShadow;
    Draw::panel(painter, body, panel);
}

} // namespace tock

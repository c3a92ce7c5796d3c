#include "stylebutton.h"

#include "draw.h"
#include "glyph.h"

namespace tock {

StyleButton::StyleButton(AppModel *model, QWidget *parent) : ButtonView(model, parent)
{
    connect(this, &ButtonView::clicked, this, [this] { this->model()->setStyleMenuOpen(!this->model()->styleMenuOpen()); });
    setAccessibleName(QStringLiteral("Change style"));
    setToolTip(QStringLiteral("Change style"));
    refresh();
}

QString StyleButton::label() const
{
    return Theme::applyCase(theme().labelCase, StyleIDs::displayName(model()->style()));
}

void StyleButton::refresh()
{
    setAccessibleDescription(accessibleValue());
    update();
}

QString StyleButton::accessibleValue() const
{
    return QStringLiteral("Style: ") + StyleIDs::displayName(model()->style());
}

QSizeF StyleButton::preferredSize() const
{
    const Theme &t = theme();
    const qreal chevron = t.chevron == ChevronKind::text ? Draw::textWidth(t.sbFont, QStringLiteral(" v")) : 10;
    const qreal shadow = t.sbHardShadow ? t.shadowOffset : 0;
    return {Draw::textWidth(t.sbFont, label()) + chevron + 20 + shadow, t.sbHeight + shadow};
}

void StyleButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const bool open = model()->styleMenuOpen();
    const qreal shadow = t.sbHardShadow ? t.shadowOffset : 0;
    const QRectF body = unzoomedRect().adjusted(0, 0, -shadow, -shadow);
    Draw::Panel panel;
    panel.fill = panel.fill2 = open ? t.sbOpenFill : isHovered() ? t.sbHover : t.sbFill;
    panel.border = t.sbBorder;
    panel.borderWidth = t.sbBorderWidth;
    panel.shape = t.sbShape;
    panel.hardShadow = t.sbHardShadow;
    panel.shadowColor = t.hardShadowColor;
    panel.shadowOffset = t.shadowOffset;
    Draw::panel(painter, body, panel);
    const QColor ink = open ? t.sbOpenInk : t.sbInk;
    const qreal chevronWidth = t.chevron == ChevronKind::text ? Draw::textWidth(t.sbFont, QStringLiteral(" v")) : 10;
    const QRectF text = body.adjusted(10, 0, -10 - chevronWidth, 0);
    Draw::text(painter, text, Qt::AlignVCenter | Qt::AlignLeft, label(), t.sbFont, ink);
    const QRectF mark(text.right(), body.top(), chevronWidth, body.height());
    switch (t.chevron) {
    case ChevronKind::text:
        Draw::text(painter, mark, Qt::AlignCenter, QStringLiteral(" v"), t.sbFont, ink);
        break;
    case ChevronKind::triangle: {
        const QPointF c = mark.center() + QPointF(2, 1);
        QPolygonF triangle({c + QPointF(-3.5, -2), c + QPointF(3.5, -2), c + QPointF(0, 2.5)});
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawPolygon(triangle);
        break;
    }
    case ChevronKind::icon:
        Glyphs::paint(painter, t, Glyph::chevron, QRectF(mark.center() + QPointF(-3, -5), QSizeF(10, 10)), ink);
        break;
    }
}

} // namespace tock

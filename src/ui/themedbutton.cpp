#include "themedbutton.h"

#include "draw.h"


namespace tock {

ThemedButton::ThemedButton(AppModel *model, QWidget *parent, Role role) : ButtonView(model, parent), role_(role) {}

void ThemedButton::setRole(Role role)
{
    if (role_ == role)
        return;
    role_ = role;
    update();
}

void ThemedButton::setGlyph(std::optional<Glyph> glyph)
{
    if (glyph_ == glyph)
        return;
    glyph_ = glyph;
    update();
}

void ThemedButton::setText(const QString &text)
{
    if (text_ == text)
        return;
    text_ = text;
    setAccessibleName(text);
    update();
}

void ThemedButton::setRowIndex(int index)
{
    if (rowIndex_ == index)
        return;
    rowIndex_ = index;
    update();
}

void ThemedButton::setOpacity(qreal opacity)
{
    if (qFuzzyCompare(opacity_, opacity))
        return;
    opacity_ = opacity;
    update();
}

QString ThemedButton::label() const
{
    const Theme &t = theme();
    const QString cased = Theme::applyCase(t.labelCase, text_);
    return t.icons == IconKind::word && t.bracketWords ? QLatin1Char('[') + cased + QLatin1Char(']') : cased;
}

bool ThemedButton::isWord() const
{
    return text_.isEmpty() && glyph_ && theme().icons == IconKind::word;
}

QSizeF ThemedButton::preferredSize() const
{
    const Theme &t = theme();
    if (isWord())
        return {Draw::textWidth(Glyphs::wordFont(t), Glyphs::word(t, *glyph_)) + 2, t.buttonSize};
    if (!text_.isEmpty()) {
        const bool glyph = glyph_ && t.icons != IconKind::word;
        return {Draw::textWidth(t.labelFont, label()) + 20 + (glyph ? t.iconSize + 4 : 0), t.buttonSize};
    }
    return {t.buttonSize, t.buttonSize};
}

void ThemedButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    painter.setOpacity(opacity_);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    // Room for the shadow or lip below and to the right, so the key never paints outside itself.
    const qreal shadow = t.buttonShadow ? t.shadowOffset : (t.lipShadow ? 2 : 0);
    QRectF key = area.adjusted(0, 0, -shadow, -shadow);

    QColor ink = t.buttonInk;
    Draw::Panel panel;
    panel.fill = t.buttonFill;
    panel.fill2 = t.buttonFill2;
    panel.border = t.buttonBorder;
    panel.borderWidth = t.buttonBorderWidth;
    panel.shape = t.buttonShape;
    panel.hardShadow = t.buttonShadow;
    panel.shadowColor = t.hardShadowColor;
    panel.shadowOffset = t.shadowOffset;
    panel.lip = t.lipShadow;
    panel.highlight = t.buttonHighlight;
    if (role_ == Role::running) {
        panel.fill = panel.fill2 = t.runningFillAt(rowIndex_);
        panel.border = t.runningBorder;
        ink = t.runningInk;
    } else if (role_ == Role::primary) {
        panel.fill = panel.fill2 = t.primaryFill;
        panel.border = t.primaryBorder;
        ink = t.primaryInk;
    }
    if (isPressed()) {
        panel.fill = panel.fill2 = t.buttonPressed;
        ink = t.buttonPressedInk;
        if (panel.hardShadow || panel.lip) {
            // The key goes down onto its shadow.
            key.translate(shadow, shadow);
            panel.hardShadow = panel.lip = false;
        }
    } else if (isHovered() && role_ == Role::key) {
        panel.fill = panel.fill2 = t.buttonHover;
    }
    if (isWord()) {
        if (isHovered() && role_ != Role::running)
            ink = t.accent;
        Draw::text(painter, key, Qt::AlignCenter, Glyphs::word(t, *glyph_), Glyphs::wordFont(t), ink);
        return;
    }
    Draw::panel(painter, key, panel);
    if (role_ == Role::running && t.runningGlow) {
        QColor halo = t.runningFillAt(rowIndex_);
        halo.setAlpha(70);
        painter.setPen(QPen(halo, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(Draw::shape(t.buttonShape, key.adjusted(-1, -1, 1, 1)));
    }
    if (!text_.isEmpty()) {
        QRectF textRect = key;
        // Word themes spell everything out; a glyph beside the word would say it twice.
        if (glyph_ && t.icons != IconKind::word) {
            const QRectF icon(key.left() + 8, key.center().y() - t.iconSize / 2, t.iconSize, t.iconSize);
            Glyphs::paint(painter, t, *glyph_, icon, ink);
            textRect.setLeft(icon.right() + 2);
        }
        Draw::text(painter, textRect, Qt::AlignCenter, label(), t.labelFont, ink);
    } else if (glyph_) {
        const qreal s = t.iconSize;
        Glyphs::paint(painter, t, *glyph_, QRectF(key.center() - QPointF(s / 2, s / 2), QSizeF(s, s)), ink);
    }
}

qreal ThemedButton::shadowRoom(const Theme &t)
{
    return t.buttonShadow ? t.shadowOffset : (t.lipShadow ? 2 : 0);
}

} // namespace tock

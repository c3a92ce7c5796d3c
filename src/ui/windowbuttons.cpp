#include "windowbuttons.h"

#include "draw.h"
#include "glyph.h"

namespace tock {

namespace {

constexpr qreal lightSize = 12;
constexpr qreal lightGap = 8;
constexpr qreal boxSize = 16;
constexpr qreal boxGap = 5;

bool lights(const Theme &theme)
{
    return theme.windowButtons == WindowButtonsKind::traffic;
}

} // namespace

WindowButton::WindowButton(AppModel *model, QWidget *parent, Action action)
    : ButtonView(model, parent), action_(action)
{
    unsetCursor();
    // Not a Tab stop: the window's keys close, minimize and resize it.
    setFocusPolicy(Qt::NoFocus);
    setToolTip(helpText(action));
    setAccessibleName(helpText(action));
}

QString WindowButton::helpText(Action action)
{
    switch (action) {
    case Action::close: return QStringLiteral("Close (timers pause)");
    case Action::minimize: return QStringLiteral("Minimize");
    case Action::zoom: return QStringLiteral("Larger / smaller");
    }
    return {};
}

QSizeF WindowButton::preferredSize() const
{
    const Theme &t = theme();
    if (lights(t))
        return {lightSize, lightSize};
    if (t.icons == IconKind::word)
        return {Draw::textWidth(Glyphs::wordFont(t), word()) + 2, boxSize};
    return {boxSize, boxSize};
}

QString WindowButton::word() const
{
    const Theme &t = theme();
    if (action_ != Action::zoom)
        return Glyphs::word(t, action_ == Action::close ? Glyph::close : Glyph::minimize);
    // The size key has no word of its own; "add" would read as adding a timer.
    return t.bracketWords ? QStringLiteral("[+]") : QStringLiteral("+");
}

void WindowButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    if (lights(theme()))
        paintLight(painter, unzoomedRect());
    else
        paintBox(painter, unzoomedRect());
}

void WindowButton::paintLight(QPainter &painter, const QRectF &rect)
{
    const Theme &t = theme();
    const bool active = looksActive();
    QColor fill = action_ == Action::close ? Theme::Palette::coral
                  : action_ == Action::minimize ? Theme::Palette::yellow : Theme::Palette::mint;
    if (!active)
        fill = t.dark ? QColor(0x4A, 0x4B, 0x50) : QColor(0xD8, 0xD4, 0xCC);
    if (isPressed())
        fill = fill.darker(125);
    const QRectF light = rect.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(t.dark ? fill.darker(160) : t.windowBorder, t.dark ? 0.8 : 1.2));
    painter.setBrush(fill);
    painter.drawEllipse(light);
    // The glyphs show while the pointer is over the group, as the lights' hint.
    const auto *group = qobject_cast<const View *>(parentWidget());
    if (group && group->underMouse() && active) {
        QPen pen(QColor(0, 0, 0, 150), 1.1, Qt::SolidLine, Qt::RoundCap);
        painter.setPen(pen);
        const QPointF c = light.center();
        const qreal r = light.width() * 0.22;
        if (action_ == Action::close) {
            painter.drawLine(c + QPointF(-r, -r), c + QPointF(r, r));
            painter.drawLine(c + QPointF(r, -r), c + QPointF(-r, r));
        } else if (action_ == Action::minimize) {
            painter.drawLine(c + QPointF(-r * 1.2, 0), c + QPointF(r * 1.2, 0));
        } else {
            painter.drawLine(c + QPointF(-r * 1.2, 0), c + QPointF(r * 1.2, 0));
            painter.drawLine(c + QPointF(0, -r * 1.2), c + QPointF(0, r * 1.2));
        }
    }
}

void WindowButton::paintBox(QPainter &painter, const QRectF &rect)
{
    const Theme &t = theme();
    const Glyph glyph = action_ == Action::close ? Glyph::close
                        : action_ == Action::minimize ? Glyph::minimize : Glyph::zoom;
    QColor ink = t.buttonInk;
    if (t.icons == IconKind::word) {
        Draw::text(painter, rect, Qt::AlignCenter, word(), Glyphs::wordFont(t),
                   isHovered() ? t.accent : t.muted);
        return;
    }
    Draw::Panel panel;
    panel.fill = panel.fill2 = isPressed() ? t.buttonPressed : isHovered() ? t.buttonHover : t.buttonFill;
    panel.border = t.buttonBorder;
    panel.borderWidth = std::min<qreal>(t.buttonBorderWidth, 1.5);
    ShapeKind shape = t.buttonShape;
    if (shape.kind == ShapeKind::Circle)
        shape = ShapeKind::rect(4);
    else if (shape.kind == ShapeKind::Rect)
        shape.radius = std::min<qreal>(shape.radius, 4);
    else
        shape.radius = std::min<qreal>(shape.radius, 2);
    panel.shape = shape;
    panel.lip = t.lipShadow;
    const QRectF box = t.lipShadow ? rect.adjusted(0, 0, 0, -1.5) : rect;
    Draw::panel(painter, box, panel);
    if (isPressed())
        ink = t.buttonPressedInk;
    const qreal s = rect.width() * 0.62;
    Glyphs::paint(painter, t, glyph, QRectF(box.center() - QPointF(s / 2, s / 2), QSizeF(s, s)), ink);
}

WindowButton *WindowButtons::button(WindowButton::Action action) const
{
    return buttons_[int(action)];
}

WindowButtons::WindowButtons(AppModel *model, QWidget *parent) : View(model, parent)
{
    using A = WindowButton::Action;
    int i = 0;
    for (const A action : {A::close, A::minimize, A::zoom})
        buttons_[i++] = new WindowButton(model, this, action);
}

QSizeF WindowButtons::preferredSize() const
{
    const qreal gap = lights(theme()) ? lightGap : boxGap;
    qreal width = 0, height = 0;
    for (const WindowButton *b : buttons_) {
        width += b->preferredSize().width();
        height = std::max(height, b->preferredSize().height());
    }
    return {width + 2 * gap, height};
}

void WindowButtons::relayout()
{
    const qreal gap = lights(theme()) ? lightGap : boxGap;
    qreal x = 0;
    for (WindowButton *b : buttons_) {
        const QSizeF s = b->preferredSize();
        b->setUnzoomedGeometry(QRectF(QPointF(x, (unzoomedSize().height() - s.height()) / 2), s));
        b->update();
        x += s.width() + gap;
    }
}

void WindowButtons::enterEvent(QEnterEvent *)
{
    for (WindowButton *b : buttons_)
        b->update();
}

void WindowButtons::leaveEvent(QEvent *)
{
    for (WindowButton *b : buttons_)
        b->update();
}

bool WindowButtons::leadOnLeft(const Theme &theme)
{
    return lights(theme);
}

} // namespace tock

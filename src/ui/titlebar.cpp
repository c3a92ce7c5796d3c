#include "titlebar.h"

#include "draw.h"
#include "glyph.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <QWindow>

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

// ---------------------------------------------------------------------------------------------

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

// ---------------------------------------------------------------------------------------------

WindowButtons::WindowButtons(AppModel *model, QWidget *parent) : View(model, parent)
{
    using A = WindowButton::Action;
    int i = 0;
    for (const A action : {A::close, A::minimize, A::zoom})
        buttons_[i++] = new WindowButton(model, this, action);
}

WindowButton *WindowButtons::button(WindowButton::Action action) const
{
    return buttons_[int(action)];
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

// ---------------------------------------------------------------------------------------------

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

// ---------------------------------------------------------------------------------------------

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
    if (lights(t))
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
    if (lights(t)) {
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

#include "buttonview.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace tock {

ButtonView::ButtonView(AppModel *model, QWidget *parent) : View(model, parent)
{
    // Tab reaches every button; a click does not leave the focus (and its mark) behind.
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
}

void ButtonView::setAccessibleChecked(std::optional<bool> checked)
{
    if (checked_ == checked)
        return;
    checked_ = checked;
    if (QAccessible::isActive()) {
        QAccessible::State changed;
        changed.checked = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}

void ButtonView::click()
{
    if (isEnabled())
        Q_EMIT clicked();
}

void ButtonView::enterEvent(QEnterEvent *)
{
    hovered_ = true;
    pressStateChanged();
}

void ButtonView::leaveEvent(QEvent *)
{
    hovered_ = false;
    pressStateChanged();
}

void ButtonView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return View::mousePressEvent(event);
    pressed_ = true;
    pressStateChanged();
}

void ButtonView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !pressed_)
        return View::mouseReleaseEvent(event);
    pressed_ = false;
    pressStateChanged();
    if (rect().contains(event->position().toPoint()))
        click();
}

void ButtonView::keyPressEvent(QKeyEvent *event)
{
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const int key = event->key();
    if (plain && (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) && !event->isAutoRepeat()) {
        click();
        return;
    }
    View::keyPressEvent(event);
}

void ButtonView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange && !isEnabled() && pressed_) {
        pressed_ = false;
        pressStateChanged();
    }
    View::changeEvent(event);
}

} // namespace tock

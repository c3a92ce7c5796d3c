// The base of every clickable thing the window draws. Hover, press and the click are decided
// here once: a click is a left press followed by a release inside the button, and a disabled
// button neither shows a press nor clicks. `click()` is the one way a press happens, whether it
// comes from the mouse, a key or a screen reader.
#pragma once

#include "view.h"

#include <QAccessible>

#include <optional>

namespace tock {

class ButtonView : public View {
    Q_OBJECT
public:
    ButtonView(AppModel *model, QWidget *parent);

    bool isHovered() const { return hovered_; }
    bool isPressed() const { return pressed_; }
    // Carries out the button's action, as a click does; nothing while disabled.
    void click();

    // What a screen reader is told. The label is the name (the accessible name unless a
    // button computes it when asked); the value and the checked state are absent by default.
    virtual QAccessible::Role accessibleRole() const { return QAccessible::Button; }
    virtual QString accessibleLabel() const { return accessibleName(); }
    virtual QString accessibleValue() const { return {}; }
    std::optional<bool> accessibleChecked() const { return checked_; }
    void setAccessibleChecked(std::optional<bool> checked);

Q_SIGNALS:
    void clicked();

protected:
    // Hover or press changed; the default repaints the whole button. A view whose look does not
    // depend on them overrides it to do nothing, so the pointer passing costs no repaint.
    virtual void pressStateChanged() { update(); }

    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    bool hovered_ = false;
    bool pressed_ = false;
    std::optional<bool> checked_;
};

} // namespace tock

// The window's own buttons (close, minimize, zoom): square boxes or round lights, as the theme says.
#pragma once

#include "buttonview.h"

namespace tock {

// One window button: close, minimize or zoom.
class WindowButton : public ButtonView {
    Q_OBJECT
public:
    enum class Action { close, minimize, zoom };
    WindowButton(AppModel *model, QWidget *parent, Action action);
    Action action() const { return action_; }
    QSizeF preferredSize() const;
    // The window being inactive greys the lights out.
    static QString helpText(Action action);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString word() const; // the button in word themes
    void paintLight(QPainter &painter, const QRectF &rect);
    void paintBox(QPainter &painter, const QRectF &rect);
    Action action_;
};

// Close, minimize and zoom, in that order: the window's own buttons.
class WindowButtons : public View {
    Q_OBJECT
public:
    WindowButtons(AppModel *model, QWidget *parent);
    // Round lights lead the title bar on the left; boxes close it on the right.
    static bool leadOnLeft(const Theme &theme);
    WindowButton *button(WindowButton::Action action) const;
    QSizeF preferredSize() const;
    void relayout();

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    WindowButton *buttons_[3];
};

} // namespace tock

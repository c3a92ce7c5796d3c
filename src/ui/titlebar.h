// The title bar: window buttons (square boxes or round lights, as the theme says), the title
// text and the style button. Its empty area drags the window.
#pragma once

#include "buttonview.h"

#include <QPoint>

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
    WindowButton *button(WindowButton::Action action) const;
    QSizeF preferredSize() const;
    void relayout();

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    WindowButton *buttons_[3];
};

// The button that opens the style menu: the current style's name and an open indicator.
class StyleButton : public ButtonView {
    Q_OBJECT
public:
    StyleButton(AppModel *model, QWidget *parent);
    QSizeF preferredSize() const;
    void refresh(); // the style or the menu changed
    QString accessibleValue() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString label() const;
};

class TitleBar : public View {
    Q_OBJECT
public:
    TitleBar(AppModel *model, QWidget *parent);
    WindowButtons *windowButtons() const { return buttons_; }
    StyleButton *styleButton() const { return styleButton_; }
    void relayout();
    // Where the title text goes, in unzoomed points: clear of the buttons on either side.
    QRectF titleRect() const;
    // The title text and its menu mark as drawn, in unzoomed points: a click there opens the
    // application's menu.
    QRectF menuArea() const;

Q_SIGNALS:
    // The title was clicked: the menu should open at `globalPos` (below the title).
    void menuRequested(QPoint globalPos);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    WindowButtons *buttons_;
    StyleButton *styleButton_;
    QPoint pressGlobal_;
    QPoint pressWindowPos_;
    bool pressing_ = false;
    bool movingByHand_ = false;
};

} // namespace tock

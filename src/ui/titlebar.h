// The title bar: window buttons (square boxes or round lights, as the theme says), the title
// text and the style button. Its empty area drags the window.
#pragma once

#include "view.h"

#include <QPoint>

namespace tock {

class StyleButton;
class WindowButtons;

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

// The button that opens the style menu.
#pragma once

#include "buttonview.h"

namespace tock {

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

} // namespace tock

// The style menu: the seven styles in order, the current one marked as the theme says.
// Choosing one sets the style and closes the menu.
#pragma once

#include "buttonview.h"

#include <QList>

namespace tock {

class StyleMenuItem : public ButtonView {
    Q_OBJECT
public:
    StyleMenuItem(AppModel *model, QWidget *parent, StyleID style);
    StyleID style() const { return style_; }
    QAccessible::Role accessibleRole() const override { return QAccessible::MenuItem; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintMarker(QPainter &painter, const QRectF &rect, const QColor &color);
    StyleID style_;
};

class StyleMenu : public View {
    Q_OBJECT
public:
    StyleMenu(AppModel *model, QWidget *parent);
    // The menu's size in unzoomed points, its shadow included.
    QSizeF preferredSize() const;
    // The room around the menu's body for its shadow, in unzoomed points.
    QMarginsF shadowRoom() const;
    void relayout();
    StyleMenuItem *item(StyleID style) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    // ↑ and ↓ move between the items, Escape closes the menu; Return and Space choose.
    void keyPressEvent(QKeyEvent *event) override;

private:
    QList<StyleMenuItem *> items_;
};

} // namespace tock

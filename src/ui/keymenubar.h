// The window's menus as a menu bar for the keyboard (F10) on desktops without a menu bar of
// their own: it shows over the top of the window with the first menu's title highlighted and
// that menu open; Left and Right go from menu to menu, Up and Down through the items, Return
// chooses, Escape closes. It hides again once no menu of it is open and it has no keys.
#pragma once

#include <QMenuBar>

namespace tock {

class KeyMenuBar : public QMenuBar {
    Q_OBJECT
public:
    // Over `window`'s top edge, holding `menus` (shared with the window's other menus).
    KeyMenuBar(QWidget *window, const QList<QMenu *> &menus);

    // Shows the bar and opens its first menu.
    void open();

protected:
    void focusOutEvent(QFocusEvent *event) override;

private:
    // Hides the bar once nothing of it is in use; asked after each change settles.
    void hideWhenDone();
};

} // namespace tock

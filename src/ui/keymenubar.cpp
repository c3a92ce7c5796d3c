#include "keymenubar.h"

#include <QMenu>
#include <QTimer>

#include <algorithm>

namespace tock {

KeyMenuBar::KeyMenuBar(QWidget *window, const QList<QMenu *> &menus) : QMenuBar(window)
{
    // Drawn in the window even where the desktop shows menu bars of its own: this one exists
    // for the keys alone.
    setNativeMenuBar(false);
    // Its own small window over the window's top edge, so every title shows even when the
    // window is narrower than the titles; it never takes the focus from the window.
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    for (QMenu *menu : menus) {
        addMenu(menu);
        // Going from one menu to the next also hides one; only the settled state counts.
        connect(menu, &QMenu::aboutToHide, this, [this] {
            QTimer::singleShot(0, this, &KeyMenuBar::hideWhenDone);
        });
    }
    hide();
}

void KeyMenuBar::open()
{
    // The window's drawn content (its visible children) leaves out the shadow margin.
    QRect content;
    for (const QObject *child : parentWidget()->children()) {
        const auto *w = qobject_cast<const QWidget *>(child);
        if (w && w != this && w->isVisible() && !w->isWindow())
            content |= w->geometry();
    }
    if (content.isEmpty())
        content = parentWidget()->rect();
    const QSize hint = sizeHint();
    setGeometry(QRect(parentWidget()->mapToGlobal(content.topLeft()),
                      QSize(std::max(content.width(), hint.width()), hint.height())));
    raise();
    show();
    if (!actions().isEmpty())
        setActiveAction(actions().first());
}

void KeyMenuBar::focusOutEvent(QFocusEvent *event)
{
    QMenuBar::focusOutEvent(event);
    QTimer::singleShot(0, this, &KeyMenuBar::hideWhenDone);
}

void KeyMenuBar::hideWhenDone()
{
    const QAction *active = activeAction();
    const bool menuOpen = active && active->menu() && active->menu()->isVisible();
    if (!menuOpen && !hasFocus())
        hide();
}

} // namespace tock

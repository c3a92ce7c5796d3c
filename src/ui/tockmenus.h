// The application's menus and their shortcuts. On macOS they form the global menu bar; elsewhere
// they are submenus of one context menu (a right-click on the title bar) and every shortcut
// works anywhere in the window.
#pragma once

#include <QList>
#include <QObject>

#include <functional>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace tock {

class AppModel;
class KeyMenuBar;

// What the menus ask of the window and the desktop; an empty action leaves its item disabled.
struct MenuActions {
    std::function<void()> about;
    std::function<void()> showDataFolder;
    std::function<void()> quit;
    std::function<void()> minimize;
    std::function<void()> close;
    std::function<void()> paste;     // into whatever has the keys
    std::function<void()> selectAll; // likewise
    std::function<void()> report;    // opens or closes the week's report
    std::function<void()> hide;       // macOS only
    std::function<void()> hideOthers; // macOS only
};

class TockMenus : public QObject {
    Q_OBJECT
public:
    // Builds the menus over `model`; the shortcuts are added to `window`.
    TockMenus(AppModel *model, QWidget *window, MenuActions actions);
    ~TockMenus() override;

    // The menus in order: application, Edit, Timer, Size, Style, Window.
    const QList<QMenu *> &menus() const { return menus_; }
    // All menus as submenus of one menu, for a right-click.
    QMenu *contextMenu() const { return context_; }
    // The bar F10 opens; null on macOS, where the menu bar is the system's.
    KeyMenuBar *keyMenuBar() const { return keyBar_; }

    QAction *undoAction() const { return undo_; }
    QAction *redoAction() const { return redo_; }
    // The style items, in style order.
    const QList<QAction *> &styleActions() const { return styles_; }

private:
    QAction *item(QMenu *menu, const QString &title, std::function<void()> action);
    void refreshUndo();
    void refreshStyle();

    AppModel *model_;
    QWidget *window_;
    QList<QMenu *> menus_;
    QMenu *context_ = nullptr;
    QMenuBar *bar_ = nullptr;
    KeyMenuBar *keyBar_ = nullptr; // F10's, off macOS
    QAction *undo_ = nullptr;
    QAction *redo_ = nullptr;
    QList<QAction *> styles_;
};

} // namespace tock

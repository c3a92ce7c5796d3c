#include "tockmenus.h"

#include "appmodel.h"
#include "keymenubar.h"
#include "styleid.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace tock {

namespace {

QKeySequence chord(int key, Qt::KeyboardModifiers extra = Qt::NoModifier)
{
    // Qt's Ctrl is the Command key on macOS, so one chord serves both desktops.
    return QKeySequence(QKeyCombination(Qt::ControlModifier | extra, Qt::Key(key)));
}

} // namespace

TockMenus::TockMenus(AppModel *model, QWidget *window, MenuActions actions)
    : QObject(window), model_(model), window_(window)
{
    AppModel &m = *model;

    QMenu *app = new QMenu(QStringLiteral("Tock"), window);
    QAction *about = item(app, QStringLiteral("About Tock"), actions.about);
    about->setMenuRole(QAction::AboutRole);
    item(app, QStringLiteral("Show Data Folder"), actions.showDataFolder);
#ifdef Q_OS_MACOS
    app->addSeparator();
    item(app, QStringLiteral("Hide Tock"), actions.hide)->setShortcut(chord(Qt::Key_H));
    item(app, QStringLiteral("Hide Others"), actions.hideOthers)->setShortcut(chord(Qt::Key_H, Qt::AltModifier));
#endif
    app->addSeparator();
    QAction *quit = item(app, QStringLiteral("Quit Tock"), actions.quit);
    quit->setMenuRole(QAction::QuitRole);
    quit->setShortcut(chord(Qt::Key_Q));

    QMenu *edit = new QMenu(QStringLiteral("Edit"), window);
    undo_ = item(edit, QStringLiteral("Undo"), [model] {
        // An open time edit is finished first, as before any other change.
        if (model->commitEdit() && model->undoManager().canUndo())
            model->undoManager().undo();
    });
    undo_->setShortcut(chord(Qt::Key_Z));
    redo_ = item(edit, QStringLiteral("Redo"), [model] {
        if (model->commitEdit() && model->undoManager().canRedo())
            model->undoManager().redo();
    });
    redo_->setShortcuts({chord(Qt::Key_Z, Qt::ShiftModifier), chord(Qt::Key_Y)});
    edit->addSeparator();
    item(edit, QStringLiteral("Paste"), actions.paste)->setShortcut(chord(Qt::Key_V));
    item(edit, QStringLiteral("Select All"), actions.selectAll)->setShortcut(chord(Qt::Key_A));
    connect(&m.undoManager(), &UndoManager::changed, this, &TockMenus::refreshUndo);
    connect(edit, &QMenu::aboutToShow, this, &TockMenus::refreshUndo);

    QMenu *timer = new QMenu(QStringLiteral("Timer"), window);
    item(timer, QStringLiteral("Add Timer"), [model] { model->addTimer(); })->setShortcut(chord(Qt::Key_N));
    item(timer, QStringLiteral("Pause All"), [model] { model->pauseAll(); })
        ->setShortcut(chord(Qt::Key_P, Qt::ShiftModifier));
    timer->addSeparator();
    item(timer, QStringLiteral("Report"), actions.report)->setShortcut(chord(Qt::Key_R));

    QMenu *size = new QMenu(QStringLiteral("Size"), window);
    // Ctrl+= is the same key as Ctrl++ without Shift on most layouts.
    item(size, QStringLiteral("Make Larger"), [model] { model->zoomIn(); })
        ->setShortcuts({chord(Qt::Key_Plus), chord(Qt::Key_Equal)});
    item(size, QStringLiteral("Make Smaller"), [model] { model->zoomOut(); })->setShortcut(chord(Qt::Key_Minus));
    item(size, QStringLiteral("Actual Size"), [model] { model->zoomReset(); })->setShortcut(chord(Qt::Key_0));

    QMenu *style = new QMenu(QStringLiteral("Style"), window);
    auto *group = new QActionGroup(this);
    const QList<StyleID> &all = StyleIDs::allCases();
    for (qsizetype i = 0; i < all.size(); ++i) {
        const StyleID id = all.at(i);
        QAction *a = item(style, StyleIDs::displayName(id), [model, id] { model->setStyle(id); });
        a->setCheckable(true);
        a->setActionGroup(group);
        a->setShortcut(chord(Qt::Key_1 + int(i)));
        styles_.append(a);
    }
    connect(&m, &AppModel::styleChanged, this, &TockMenus::refreshStyle);

    QMenu *win = new QMenu(QStringLiteral("Window"), window);
    item(win, QStringLiteral("Minimize"), actions.minimize)->setShortcut(chord(Qt::Key_M));
    item(win, QStringLiteral("Close"), actions.close)->setShortcut(chord(Qt::Key_W));

    menus_ = {app, edit, timer, size, style, win};
    context_ = new QMenu(window);
    for (QMenu *menu : std::as_const(menus_))
        context_->addMenu(menu);
#ifdef Q_OS_MACOS
    bar_ = new QMenuBar(nullptr); // parentless: the one global menu bar
    for (QMenu *menu : std::as_const(menus_))
        bar_->addMenu(menu);
#else
    // Where the desktop shows a global menu (a registrar on the session bus), the menus are
    // exported there too; otherwise the bar would be drawn inside the window, so it goes.
    auto *bar = new QMenuBar(window);
    if (bar->isNativeMenuBar()) {
        for (QMenu *menu : std::as_const(menus_))
            bar->addMenu(menu);
    } else {
        delete bar;
    }
#endif
    refreshUndo();
    refreshStyle();

#ifndef Q_OS_MACOS
    // F10 opens the menus as a menu bar, ready for the arrows.
    auto *menusKey = new QAction(this);
    menusKey->setShortcut(QKeySequence(Qt::Key_F10));
    menusKey->setShortcutContext(Qt::WindowShortcut);
    window->addAction(menusKey);
    keyBar_ = new KeyMenuBar(window, menus_);
    connect(menusKey, &QAction::triggered, keyBar_, &KeyMenuBar::open);
#endif
}

TockMenus::~TockMenus()
{
    delete bar_;
}

QAction *TockMenus::item(QMenu *menu, const QString &title, std::function<void()> action)
{
    QAction *a = menu->addAction(title);
    if (action)
        connect(a, &QAction::triggered, this, [action = std::move(action)] { action(); });
    else
        a->setEnabled(false);
    a->setShortcutContext(Qt::WindowShortcut);
    // Shortcuts work in the window whether or not a menu is showing.
    window_->addAction(a);
    return a;
}

void TockMenus::refreshUndo()
{
    const UndoManager &undo = model_->undoManager();
    undo_->setText(undo.undoMenuItemTitle());
    undo_->setEnabled(undo.canUndo());
    redo_->setText(undo.redoMenuItemTitle());
    redo_->setEnabled(undo.canRedo());
}

void TockMenus::refreshStyle()
{
    const qsizetype current = StyleIDs::allCases().indexOf(model_->style());
    for (qsizetype i = 0; i < styles_.size(); ++i)
        styles_.at(i)->setChecked(i == current);
}

} // namespace tock

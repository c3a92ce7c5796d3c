#include "windowinteraction.h"

#include "appmodel.h"
#include "dialogs.h"
#include "gesturerouter.h"
#include "reportview.h"
#include "rootview.h"
#include "rowdragger.h"
#include "keyrouter.h"
#include "theme.h"
#include "titlebar.h"
#include "tockmenus.h"
#include "tockwindow.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QScreen>
#include <QWindow>

namespace tock {

namespace {

QLineEdit *focusedField(QWidget *window)
{
    auto *field = qobject_cast<QLineEdit *>(window->focusWidget());
    return field && field->isVisible() ? field : nullptr;
}

} // namespace

WindowInteraction::WindowInteraction(AppModel *model, TockWindow *window, QString folder)
    : QObject(window), model_(model), window_(window), folder_(std::move(folder))
{
    keys_ = new KeyRouter(model, window);
    gestures_ = new GestureRouter(model, this);
    gestures_->setRowWidth([this] { return rowWidth(); });
    gestures_->attach(window);
    dragger_ = new RowDragger(model, window->rootView()->rowList(), [this] { return rowWidth(); }, this);
    dragger_->attach(window);

    MenuActions actions;
    actions.about = [this] { Dialogs::showAbout(window_, folder_); };
    if (!folder_.isEmpty())
        actions.showDataFolder = [this] { Dialogs::showDataFolder(folder_); };
    // Quitting is closing the one window: timers pause and the board is saved.
    actions.quit = [this] { window_->close(); };
    actions.close = [this] { window_->close(); };
    actions.minimize = [this] { window_->showMinimized(); };
    actions.paste = [this] {
        if (QLineEdit *field = focusedField(window_))
            field->paste();
        else if (!keys_->isTyping() && keys_->promptHasKeys())
            model_->shell().promptInsert(systemClipboardText());
    };
    actions.selectAll = [this] {
        if (QLineEdit *field = focusedField(window_))
            field->selectAll();
    };
    actions.report = [this] { window_->rootView()->reportView()->toggle(); };
#ifdef Q_OS_MACOS
    actions.hide = [this] { window_->hide(); };
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive && window_->isHidden())
            window_->show();
    });
#endif
    menus_ = new TockMenus(model, window, actions);

    window->rootView()->titleBar()->installEventFilter(this);
    connect(window->rootView()->titleBar(), &TitleBar::menuRequested, this,
            [this](QPoint at) { menus_->contextMenu()->popup(at); });
    Dialogs::answerStartFresh(model, window);

    connect(window->windowHandle(), &QWindow::screenChanged, this, &WindowInteraction::followScreen);
    followScreen();
}

double WindowInteraction::rowWidth() const
{
    return Theme::contentWidth - 2 * Theme::of(model_->style()).rowInset;
}

bool WindowInteraction::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ContextMenu && watched == window_->rootView()->titleBar()) {
        menus_->contextMenu()->popup(static_cast<QContextMenuEvent *>(event)->globalPos());
        return true;
    }
    return false;
}

void WindowInteraction::followScreen()
{
    delete screenWatch_;
    screenWatch_ = new QObject(this);
    if (QScreen *screen = window_->windowHandle()->screen())
        connect(screen, &QScreen::availableGeometryChanged, screenWatch_, [this] { window_->trackScreen(); });
    window_->trackScreen();
}

} // namespace tock

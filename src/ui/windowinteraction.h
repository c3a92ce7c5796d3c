// Everything that lets the user drive the window beyond its own buttons: the keys, scroll
// swipes, mouse drags on rows, the menus and their shortcuts, the title bar's right-click menu,
// the About panel and the start-fresh question; and the screen's height kept current.
#pragma once

#include <QObject>
#include <QString>

namespace tock {

class AppModel;
class GestureRouter;
class KeyRouter;
class RowDragger;
class TockMenus;
class TockWindow;

class WindowInteraction : public QObject {
    Q_OBJECT
public:
    // `folder` is the data folder shown by About and Show Data Folder; empty without a store.
    WindowInteraction(AppModel *model, TockWindow *window, QString folder);

    KeyRouter *keys() const { return keys_; }
    TockMenus *menus() const { return menus_; }
    // The width a swiped row is measured against.
    double rowWidth() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void followScreen();

    AppModel *model_;
    TockWindow *window_;
    QString folder_;
    KeyRouter *keys_;
    GestureRouter *gestures_;
    RowDragger *dragger_;
    TockMenus *menus_;
    QObject *screenWatch_ = nullptr; // the connection to the current screen's geometry
};

} // namespace tock

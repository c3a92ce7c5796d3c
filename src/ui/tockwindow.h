// The one main window: frameless, drawn entirely by Tock. It paints the card (fill, border,
// shadows) inside a transparent margin, holds the RootView in the card and follows the size the
// content wants times the zoom. Closing it pauses every timer.
#pragma once

#include "appmodel.h"
#include "draw.h"

#include <QWidget>

#include <functional>

namespace tock {

class RootView;

class TockWindow : public QWidget {
    Q_OBJECT
public:
    enum class Margin { shadow, none };

    // `showFiles` opens the data folder (the storage banner's "Show Files").
    TockWindow(AppModel *model, std::function<void()> showFiles, QWidget *parent = nullptr);

    RootView *rootView() const { return root_; }
    AppModel *model() const { return model_; }
    // Whether transparent pixels can show the desktop; without it the shadow margin goes and
    // the card's shape becomes the window's mask.
    void setMargin(Margin margin);
    // The margin around the card in pixels at the current zoom.
    int marginPixels() const;
    // Where the window takes pointer input: the card, not its shadow margin.
    QRegion inputRegion() const;
    // Refits the window to the content (called when the content, zoom or screen changes).
    void fitToContent();
    // Every change shows at once; for still renders.
    void setAnimated(bool animated);
    // The screen's available height changed or the window moved to another screen.
    void trackScreen();
    // Closes without asking, also with unsaved changes (an ending signal: the session ends).
    void closeWithoutAsking();

Q_SIGNALS:
    // The window closed (its timers are paused by then).
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void applyInputRegion();
    AppModel *model_;
    RootView *root_;
    Margin margin_ = Margin::shadow;
    bool leaving_ = false; // close without asking
    Draw::Layer card_;
};

// True when the X11 screen has a compositing manager (or the platform is not X11).
bool desktopComposites();

} // namespace tock

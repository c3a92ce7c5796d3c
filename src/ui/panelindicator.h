// Tock in the desktop's panel while the window runs: an icon that shows whether any timer runs,
// a tooltip with the running timers and their times, and a menu to start and pause each timer,
// pause all, show or hide the window and quit; a left click shows or hides the window.
//
// It appears when PanelHost finds a panel and not at all without one. It follows the model
// instead of keeping time: the board's changes, and the seconds the model's tick announces
// while a timer runs (window shown or hidden), so it adds no wake-up of its own and, while
// nothing runs, none at all. Each second it changes only the tooltip, and only when it reads
// differently; the menu's times are brought up to date as the panel opens the menu.
#pragma once

#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

class QAction;
class QIcon;
class QImage;
class QMenu;
class QPainter;
class QRectF;
class QSystemTrayIcon;
class QWidget;

namespace tock {

class AppModel;
class PanelHost;
struct BoardChange;
struct TimerItem;

// What the indicator's menu asks of the rest of the window application.
struct PanelActions {
    // Opens the report of the recorded history; without it the menu has no "Report" item.
    std::function<void()> report;
};

class PanelIndicator : public QObject {
    Q_OBJECT
public:
    // Over `model` and the window it shows, hides and closes; both must outlive it. Builds the
    // menu, which follows the board from then on.
    PanelIndicator(AppModel *model, QWidget *window, PanelActions actions = {});
    ~PanelIndicator() override;

    // Puts the icon in the panel as soon as there is one (see PanelHost); quietly never
    // without one.
    void showInPanel();

    // The menu the panel shows.
    QMenu *menu() const { return menu_; }
    // The icon in the panel; null while there is no panel.
    QSystemTrayIcon *trayIcon() const { return tray_; }
    // Hides a shown window; shows a hidden or minimized one where it was. Hiding keeps the
    // timers running.
    void toggleWindow();

    // Tock's icon, with a play mark while `running`, drawn for each panel size. One drawing
    // reads on light and dark panels: a dark outline against the one, a light card against
    // the other.
    static QIcon icon(bool running);
    // The same drawing into `rect` (a square).
    static void paintIcon(QPainter &painter, const QRectF &rect, bool running);
    // The tooltip: one line per running timer ("Lunch · 00:12:34", board order, at most
    // maxTooltipLines then how many more), or "Tock · no timer running".
    static QString toolTip(const AppModel &model);
    static constexpr int maxTooltipLines = 8;
    // Whose menu shows the labels: Qt's own, or a panel's built from the exported labels, where
    // a single underscore marks an access key.
    enum class Labels { drawn, exported };
    // A timer's menu entry: its shown name, cut to 40 characters, and its time, with '&' (and,
    // exported, '_') doubled so no character of a name is taken for an access key.
    static QString entryText(const TimerItem &timer, int64_t seconds, Labels labels = Labels::drawn);

    enum class Panel { light, dark };
    // A still of the indicator for screenshots: a strip of a light or dark panel with the icon
    // idle and running, and the menu over `model` open below it in the panel's colours.
    static QImage still(AppModel &model, Panel panel, qreal pixelRatio);

private:
    void install();
    void onBoardChanged(const BoardChange &change);
    void rebuildTimers();
    void refreshEntry(qsizetype index);
    void refreshEntries();
    void refreshTooltip();
    void refreshIcon();
    void refreshWindowItem();
    void showWindow();
    void hideWindow();
    bool eventFilter(QObject *watched, QEvent *event) override;

    AppModel *model_;
    QWidget *window_;
    PanelActions actions_;
    PanelHost *host_ = nullptr;
    QSystemTrayIcon *tray_ = nullptr;
    QMenu *menu_ = nullptr;
    QAction *timersEnd_ = nullptr; // the separator after the timer entries
    QList<QAction *> entries_;     // one per timer, in board order
    QAction *empty_ = nullptr;     // "No timers yet"
    QAction *pauseAll_ = nullptr;
    QAction *windowItem_ = nullptr; // "Show Tock" / "Hide Tock"
    QString tooltip_;
    Labels labels_ = Labels::drawn;
    std::optional<bool> running_; // what the icon shows
    std::optional<QPoint> hiddenAt_; // where the window was when the indicator hid it
};

} // namespace tock

// Whether the desktop has a panel that can show Tock's status indicator, now or later.
//
// Qt decides once per process, at the first use of its tray icon, whether a panel speaks the
// status-notifier protocol on the session bus, and never looks again. So Tock creates its tray
// icon only when a panel is known to be there: at once on macOS (the menu bar), otherwise when
// a status-notifier watcher on the session bus says a panel is registered with it, or, without
// one, when an X11 tray owns its selection. A panel that registers later is noticed through the
// bus; until then nothing wakes and nothing is printed.
#pragma once

#include <QObject>

namespace tock {

class PanelHost : public QObject {
    Q_OBJECT
public:
    explicit PanelHost(QObject *parent = nullptr);
    ~PanelHost() override;

    // A panel can show an indicator. Once true it stays true: Qt re-registers its item by
    // itself when the panel restarts.
    bool isPresent() const { return present_; }
    // The panel draws Tock's menu from the labels Qt exports on the bus (status notifier), rather
    // than showing the menu Qt draws (the older X11 tray, the macOS menu bar).
    bool drawsExportedMenu() const { return exported_; }

Q_SIGNALS:
    // The panel is there; emitted once, and never from inside the constructor.
    void appeared();

private Q_SLOTS:
    void ask();

private:
    void found();
    void noWatcher();

    bool present_ = false;
    bool exported_ = false;
    bool askedXEmbed_ = false;
};

// An X11 tray (the older embedding protocol) owns _NET_SYSTEM_TRAY_S<screen>; false on
// other platforms and without the xcb headers.
bool xembedTrayPresent();

} // namespace tock

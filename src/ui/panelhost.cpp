#include "panelhost.h"

#include <QGuiApplication>
#include <QTimer>

#ifdef TOCK_HAVE_QTDBUS
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#endif

#ifdef TOCK_HAVE_XCB
#include <xcb/xcb.h>
#endif

namespace tock {

namespace {

#ifdef TOCK_HAVE_QTDBUS
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString hostRegistered = QStringLiteral("StatusNotifierHostRegistered");
#endif

} // namespace

PanelHost::PanelHost(QObject *parent) : QObject(parent)
{
#if defined(Q_OS_MACOS) || defined(Q_OS_WIN)
    // The menu bar and the notification area are always there.
    QTimer::singleShot(0, this, &PanelHost::found);
#elif defined(TOCK_HAVE_QTDBUS)
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        QTimer::singleShot(0, this, &PanelHost::noWatcher);
        return;
    }
    // A watcher that starts later, and a panel that registers with a running watcher, are
    // both announced on the bus; neither costs anything until it happens.
    auto *watch = new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watch, &QDBusServiceWatcher::serviceRegistered, this, &PanelHost::ask);
    bus.connect(watcherService, watcherPath, watcherService, hostRegistered, this, SLOT(ask()));
    ask();
#else
    QTimer::singleShot(0, this, &PanelHost::noWatcher);
#endif
}

PanelHost::~PanelHost() = default;

void PanelHost::ask()
{
#ifdef TOCK_HAVE_QTDBUS
    if (present_)
        return;
    // Asked without waiting, so a slow or hung watcher never holds up the window.
    QDBusMessage call = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                       QStringLiteral("org.freedesktop.DBus.Properties"),
                                                       QStringLiteral("Get"));
    call << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    auto *pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *answer) {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isError())
            noWatcher();
        else if (reply.value().variant().toBool()) {
            exported_ = true;
            found();
        }
    });
#endif
}

void PanelHost::noWatcher()
{
    // The older X11 tray is looked for once, at start: Qt follows it by itself from then on,
    // but once Qt's tray is in use a status-notifier panel could no longer be taken up.
    if (askedXEmbed_)
        return;
    askedXEmbed_ = true;
    if (xembedTrayPresent())
        found();
}

void PanelHost::found()
{
    if (present_)
        return;
    present_ = true;
#ifdef TOCK_HAVE_QTDBUS
    QDBusConnection::sessionBus().disconnect(watcherService, watcherPath, watcherService, hostRegistered, this,
                                             SLOT(ask()));
    qDeleteAll(findChildren<QDBusServiceWatcher *>());
#endif
    Q_EMIT appeared();
}

bool xembedTrayPresent()
{
#ifdef TOCK_HAVE_XCB
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return false;
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return false;
    const QByteArray name = "_NET_SYSTEM_TRAY_S0";
    xcb_intern_atom_reply_t *atom =
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 1, uint16_t(name.size()), name.constData()), nullptr);
    if (!atom)
        return false;
    // only_if_exists: no tray ever ran on this display when the atom is missing.
    bool owned = false;
    if (atom->atom != XCB_NONE) {
        xcb_get_selection_owner_reply_t *owner =
            xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr);
        owned = owner && owner->owner != XCB_NONE;
        free(owner);
    }
    free(atom);
    return owned;
#else
    return false;
#endif
}

} // namespace tock

#include "platformwindow.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QWidget>
#include <QWindow>

#ifdef TOCK_HAVE_XCB
#include <xcb/xcb.h>
#ifdef TOCK_HAVE_XCB_SHAPE
#include <xcb/shape.h>
#endif
#endif

#include <algorithm>
#include <vector>

namespace tock {

namespace {

Q_LOGGING_CATEGORY(activationLog, "tock.activation", QtWarningMsg)

bool onWayland()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

#ifdef TOCK_HAVE_XCB
xcb_connection_t *x11Connection()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return nullptr;
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t *connection, const QByteArray &name)
{
    xcb_intern_atom_reply_t *reply =
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, uint16_t(name.size()), name.constData()), nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    free(reply);
    return result;
}

xcb_window_t rootOf(xcb_connection_t *connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

// The launch time a startup id carries ("…_TIME<timestamp>"); 0 when it has none.
uint32_t launchTime(const QString &startupId)
{
    static const QRegularExpression time(QStringLiteral("_TIME(\\d+)$"));
    const QRegularExpressionMatch match = time.match(startupId);
    return match.hasMatch() ? match.captured(1).toUInt() : 0;
}

// Asks the window manager to activate `window` as of the launch's time, so focus-stealing
// prevention weighs the click that launched the second copy, and ends that launch's startup
// notification (the busy pointer) with a "remove" message.
void activateOnX11(xcb_connection_t *connection, xcb_window_t window, const QString &startupId)
{
    const xcb_window_t root = rootOf(connection);
    if (const uint32_t time = launchTime(startupId)) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom(connection, "_NET_ACTIVE_WINDOW");
        event.data.data32[0] = 1; // from an application
        event.data.data32[1] = time;
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char *>(&event));
    }
    QByteArray id = startupId.toUtf8();
    id.replace('\\', "\\\\").replace('"', "\\\"");
    QByteArray message = "remove: ID=\"" + id + "\"";
    message.append('\0');
    // The message goes in 20-byte pieces, the first one marked as the beginning.
    const xcb_atom_t begin = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t more = atom(connection, "_NET_STARTUP_INFO");
    for (qsizetype at = 0; at < message.size(); at += 20) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 8;
        event.window = window;
        event.type = at == 0 ? begin : more;
        const QByteArray piece = message.mid(at, 20);
        std::copy(piece.cbegin(), piece.cend(), event.data.data8);
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char *>(&event));
    }
    xcb_flush(connection);
}
#endif

} // namespace

void setInputRegion(QWidget *window, const QRegion &region)
{
    QWindow *handle = window->windowHandle();
    if (!handle)
        return;
    if (onWayland()) {
        // Qt turns a window's mask into the surface's input region there; it clips no drawing.
        handle->setMask(region);
        return;
    }
#if defined(TOCK_HAVE_XCB) && defined(TOCK_HAVE_XCB_SHAPE)
    // Qt's mask on X11 is the bounding shape, which would cut off the shadow: set the input
    // shape alone.
    if (xcb_connection_t *connection = x11Connection()) {
        std::vector<xcb_rectangle_t> rects;
        for (const QRect &r : region) {
            const QRect device(r.topLeft() * window->devicePixelRatio(), r.size() * window->devicePixelRatio());
            rects.push_back({int16_t(device.x()), int16_t(device.y()), uint16_t(device.width()), uint16_t(device.height())});
        }
        xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                             xcb_window_t(handle->winId()), 0, 0, uint32_t(rects.size()), rects.data());
        xcb_flush(connection);
    }
#endif
}

void bringToFront(QWidget *window, const ActivationTokens &tokens)
{
    qCInfo(activationLog).noquote() << "raise requested; activation token:" << tokens.xdgActivationToken
                                    << "startup id:" << tokens.startupId;
    // Qt on Wayland activates with the token it finds in the environment at that moment.
    if (onWayland() && !tokens.xdgActivationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", tokens.xdgActivationToken.toUtf8());
    if (window->isMinimized())
        window->showNormal();
    window->show();
    window->raise();
    window->activateWindow();
#ifdef TOCK_HAVE_XCB
    if (xcb_connection_t *connection = x11Connection(); connection && !tokens.startupId.isEmpty() && window->windowHandle())
        activateOnX11(connection, xcb_window_t(window->windowHandle()->winId()), tokens.startupId);
#endif
}

} // namespace tock

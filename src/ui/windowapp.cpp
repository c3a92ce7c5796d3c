#include "windowapp.h"

#include "controlclient.h"
#include "controlserver.h"
#include "controlsocket.h"
#include "dialogs.h"
#include "rootview.h"
#include "startup.h"
#include "store.h"
#include "tockwindow.h"
#include "windowinteraction.h"

#include <QApplication>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace tock {

namespace {

// SIGINT and SIGTERM close the window the normal way (timers paused, board saved): the handler
// only writes a byte to a socket the event loop watches.
class CloseOnSignal {
public:
    explicit CloseOnSignal(QWidget *window)
    {
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, fds_) != 0)
            return;
        notifier_ = std::make_unique<QSocketNotifier>(fds_[1], QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, window, [window] {
            window->close();
            QApplication::quit();
        });
        writeEnd_ = fds_[0];
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction action = {};
            action.sa_handler = &CloseOnSignal::handle;
            sigemptyset(&action.sa_mask);
            action.sa_flags = SA_RESTART;
            ::sigaction(signal, &action, nullptr);
        }
    }
    ~CloseOnSignal()
    {
        if (!notifier_)
            return;
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            ::signal(signal, SIG_DFL);
        writeEnd_ = -1;
        notifier_.reset();
        ::close(fds_[0]);
        ::close(fds_[1]);
    }
    CloseOnSignal(const CloseOnSignal &) = delete;
    CloseOnSignal &operator=(const CloseOnSignal &) = delete;

private:
    static void handle(int)
    {
        const char byte = 1;
        if (writeEnd_ >= 0) {
            const ssize_t written = ::write(writeEnd_, &byte, 1);
            (void)written;
        }
    }
    static inline volatile sig_atomic_t writeEnd_ = -1;
    int fds_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace

bool displayMissing()
{
#if defined(Q_OS_MACOS)
    return false;
#else
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return false;
    return qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
#endif
}

QString noDisplayMessage()
{
    return QStringLiteral("tock: no display available; run `tock --shell` to use your timers in this terminal");
}

int runWindow(const QString &directory)
{
    AppSession session(directory, Services::real());
    const QString socket = ControlSocket::path(directory);
    if (session.start() == AppSession::Start::alreadyRunning) {
        // The running copy comes to the front and this one leaves quietly; only a copy that
        // does not answer needs the alert.
        if (ControlClient::raise(socket))
            return 0;
        Dialogs::showStartAlert(alreadyRunningTitle(), alreadyRunningText());
        return 3;
    }
    AppModel &model = *session.model();
    QObject::connect(&model, &AppModel::exitRequested, qApp, [] { QApplication::quit(); });
    QObject::connect(&model, &AppModel::beepRequested, qApp, [] { QApplication::beep(); });
    const QString folder = session.store()->directory();
    TockWindow window(&model, [folder] { Dialogs::showDataFolder(folder); });
    window.setMargin(desktopComposites() ? TockWindow::Margin::shadow : TockWindow::Margin::none);
    // The one window closing ends the application.
    QObject::connect(&window, &TockWindow::closed, qApp, &QApplication::quit, Qt::QueuedConnection);
    new WindowInteraction(&model, &window, folder);
    ControlServer control(socket);
    control.setOnRaise([&window] {
        window.showNormal();
        window.raise();
        window.activateWindow();
    });
    control.setOnRun([&model](const QString &line) { return ControlServer::runOnModel(model, line); });
    control.listen(); // without it a second copy shows the alert instead; nothing else is lost
    const CloseOnSignal closeOnSignal(&window);
    window.show();
    const int status = QApplication::exec();
    session.end();
    return status;
}

} // namespace tock

#include "windowapp.h"

#include "controlclient.h"
#include "controlserver.h"
#include "controlsocket.h"
#include "dialogs.h"
#include "endingsignals.h"
#include "platformwindow.h"
#include "panelindicator.h"
#include "reportview.h"
#include "rootview.h"
#include "startup.h"
#include "store.h"
#include "tockwindow.h"
#include "windowinteraction.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>

#include <functional>

#include <cstdio>

namespace tock {

namespace {

// Runs `work` once, just after `window` has painted for the first time (or after a second, for a
// window that is never painted, such as one started minimized).
class AfterFirstFrame : public QObject {
public:
    AfterFirstFrame(QWidget *window, std::function<void()> work) : QObject(window), work_(std::move(work))
    {
        window->installEventFilter(this);
        QTimer::singleShot(1000, this, [this] { run(); });
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // Queued, so the frame reaches the screen first.
            QTimer::singleShot(0, this, [this] { run(); });
        }
        return false;
    }

private:
    void run()
    {
        if (!work_)
            return;
        const std::function<void()> work = std::exchange(work_, nullptr);
        work();
    }
    std::function<void()> work_;
};

void openAfterFirstFrame(QWidget *window, std::function<void()> work)
{
    new AfterFirstFrame(window, std::move(work));
}

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

int runWindow(const QString &directory, const ActivationTokens &tokens)
{
    AppSession session(directory, Services::real());
    const ControlSocket::Location location = ControlSocket::locate(directory);
    const QString socket = location.path;
    if (session.start() == AppSession::Start::alreadyRunning) {
        // The running copy comes to the front and this one leaves quietly; only a copy that
        // does not answer needs the alert.
        if (ControlClient::raise(socket, ControlClient::answerMs, tokens))
            return 0;
        Dialogs::showStartAlert(alreadyRunningTitle(), alreadyRunningText());
        return 3;
    }
    AppModel &model = *session.model();
    QObject::connect(&model, &AppModel::beepRequested, qApp, [] { QApplication::beep(); });
    const QString folder = session.store()->directory();
    TockWindow window(&model, [folder] { Dialogs::showDataFolder(folder); });
    window.setMargin(desktopComposites() ? TockWindow::Margin::shadow : TockWindow::Margin::none);
    // The one window closing ends the application.
    QObject::connect(&window, &TockWindow::closed, qApp, &QApplication::quit, Qt::QueuedConnection);
    // The prompt's `exit` quits like the menu: asking first when changes are unsaved.
    QObject::connect(&model.shell(), &ShellSession::exitRequested, &window, [&window] { window.close(); }, Qt::QueuedConnection);
    new WindowInteraction(&model, &window, folder);
    ControlServer control(socket);
    control.setOnRaise([&window](const ActivationTokens &asker) { bringToFront(&window, asker); });
    control.setOnRun([&model](const QString &line) { return ControlServer::runOnModel(model, line); });
    // Without it scripting is off (said plainly here and by `tock --shell`); nothing else is lost.
    if (socket.isEmpty())
        std::fprintf(stderr, "tock: scripting is off: no private folder for the control socket (%s)\n",
                     qPrintable(location.problem));
    else if (!control.listen())
        std::fprintf(stderr, "tock: scripting is off: %s\n", qPrintable(control.errorString()));
    // A signal (logging out) ends without asking, as the session has to end.
    // The panel's "Report" shows the window on this week's report.
    PanelActions panelActions;
    panelActions.report = [&window] { window.rootView()->reportView()->open(); };
    PanelIndicator panel(&model, &window, panelActions);
    panel.showInPanel();
    const EndingSignals closeOnSignal(&window, [&window] {
        window.closeWithoutAsking();
        QApplication::quit();
    });
    window.show();
    // The history opens once the window has been drawn, so launching does not wait for it.
    openAfterFirstFrame(&window, [&session] { session.openHistory(HistoryRecorder::Check::full); });
    const int status = QApplication::exec();
    session.end();
    return status;
}

} // namespace tock

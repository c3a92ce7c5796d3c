#include "terminal.h"

#include "controlsocket.h"
#include "endingsignals.h"
#include "rawterminal.h"
#include "remoteterminal.h"
#include "startup.h"
#include "store.h"
#include "text.h"
#include "timevalues.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace tock {

namespace {

// Feeds standard input to the session line by line from inside the event loop, so the model's
// tick and debounced saves run between lines exactly as between keystrokes in the window.
class InputReader {
public:
    InputReader(TerminalSession &session, const std::function<void()> &prompt, QEventLoop &loop)
        : session_(session), prompt_(prompt), loop_(loop)
    {
    }

    // False when there is nothing to read at all (standard input closed).
    bool begin()
    {
        if (fcntl(STDIN_FILENO, F_GETFD) == -1)
            return false;
        notifier_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { readSome(); });
        prompt_();
        return true;
    }

private:
    void readSome()
    {
        char buffer[4096];
        const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (count <= 0) {
            if (!pending_.isEmpty())
                handle(std::exchange(pending_, {}));
            finish();
            return;
        }
        pending_.append(buffer, count);
        // A line ends at a line feed, a carriage return, or both together; a carriage return
        // that ended the last chunk may have its line feed at the start of this one.
        qsizetype end;
        while (!session_.exitRequested() && (end = lineEnd()) >= 0) {
            const QByteArray line = pending_.left(end);
            const bool carriageReturn = pending_.at(end) == '\r';
            pending_.remove(0, end + 1);
            if (carriageReturn && pending_.startsWith('\n'))
                pending_.remove(0, 1);
            if (line.isEmpty() && !carriageReturn && skipLineFeed_) {
                skipLineFeed_ = false;
                continue;
            }
            skipLineFeed_ = carriageReturn && pending_.isEmpty();
            handle(line);
            if (!session_.exitRequested())
                prompt_();
        }
        if (session_.exitRequested())
            finish();
    }

    qsizetype lineEnd() const
    {
        for (qsizetype i = 0; i < pending_.size(); ++i)
            if (pending_.at(i) == '\n' || pending_.at(i) == '\r')
                return i;
        return -1;
    }

    void handle(const QByteArray &line) { session_.run(QString::fromUtf8(line)); }

    void finish()
    {
        notifier_->setEnabled(false);
        loop_.quit();
    }

    TerminalSession &session_;
    std::function<void()> prompt_;
    QEventLoop &loop_;
    std::unique_ptr<QSocketNotifier> notifier_;
    QByteArray pending_;
    bool skipLineFeed_ = false; // the last line ended with a carriage return at a chunk's end
};

Instant clockNow(const Services &services)
{
    return services.clock ? services.clock->now() : 0;
}

} // namespace

int runTerminal(const QStringList &lines, const QString &directory, const Services &given, QTextStream &out,
                QTextStream &err)
{
    // Every command may change the history or the style: held until the end, the settings file
    // is written once per run instead of once per command.
    Services services = given;
    std::shared_ptr<HeldSettings> heldSettings;
    if (given.settings)
        services.settings = heldSettings = std::make_shared<HeldSettings>(given.settings);
    // Scripts start many short runs in a row: backups follow the age of the newest one, not
    // the number of runs, so a run does not push out the state that the last ones began from.
    AppSession app(directory, services, Store::BackupPacing::byNewestBackup);
    switch (app.start()) {
    case AppSession::Start::started:
        break;
    case AppSession::Start::alreadyRunning:
    {
        // The copy holding the folder runs the lines itself when it answers.
        const ControlSocket::Location socket = ControlSocket::locate(directory);
        if (socket.path.isEmpty()) {
            err << cannotReachTitle() << '\n' << cannotReachText(socket.problem) << '\n';
            err.flush();
            return TerminalStatus::alreadyRunning;
        }
        if (const std::optional<int> status = runOnRunningCopy(lines, socket.path, out, err))
            return *status;
    }
        err << alreadyRunningTitle() << '\n' << alreadyRunningText() << '\n';
        err.flush();
        return TerminalStatus::alreadyRunning;
    case AppSession::Start::cannotUseFolder:
        err << cannotUseFolderTitle() << '\n' << cannotUseFolderText(directory, app.lock().reason()) << '\n';
        err.flush();
        return TerminalStatus::failed;
    }
    AppModel &model = *app.model();
    const bool interactive = lines.isEmpty() && isatty(STDIN_FILENO);
    TerminalSession session(model, out, err,
                            interactive ? TerminalSession::Echo::withTimers : TerminalSession::Echo::outputOnly);
    QObject::connect(&model, &AppModel::beepRequested, &model, [&err] {
        err << '\a';
        err.flush();
    });
    // Nothing here offers to start fresh: unreadable data stays set aside untouched.
    session.setStore(app.store());
    model.setWindowVisible(false);

    if (app.startingNotice())
        session.printNotice(*app.startingNotice());
    // Later notices (a save that failed) are news too, and a failed save fails the run.
    const QMetaObject::Connection notices = QObject::connect(&model, &AppModel::noticeChanged, &model, [&] {
        if (const std::optional<StorageNotice> &notice = model.notice()) {
            session.printNotice(*notice);
            if (notice->changesUnsaved())
                session.markFailed();
        }
    });
    // Short runs trust the file; the window checks every page at its launch.
    app.openHistory(HistoryRecorder::Check::none);

    if (!lines.isEmpty()) {
        for (const QString &line : lines) {
            session.run(line);
            if (session.exitRequested())
                break;
        }
    } else {
        const auto prompt = [&] {
            if (!interactive)
                return;
            session.printTimers(clockNow(services));
            session.printPrompt();
        };
        QEventLoop loop;
        const EndingSignals endOnSignal(&loop, [&loop] { loop.quit(); });
        InputReader reader(session, prompt, loop);
        // At a terminal, keys edit the line in place; the plain line reader is the fallback.
        const bool edited =
            interactive && runInteractiveTerminal(session, model, out, loop, [&services] { return clockNow(services); });
        if (!edited && reader.begin())
            loop.exec();
        if (interactive && !session.exitRequested())
            session.print(out, QStringLiteral("\n"));
    }

    app.end();
    if (heldSettings)
        heldSettings->commit();
    QObject::disconnect(notices);
    session.reportUnsavedChanges();
    return session.succeeded() ? TerminalStatus::succeeded : TerminalStatus::failed;
}

int runTerminal(const QStringList &lines)
{
    // A reader that goes away (`| head -1`) must not end the run before it has saved: writes to
    // it fail instead, and printing stops.
    ::signal(SIGPIPE, SIG_IGN);
    QTextStream out(stdout);
    QTextStream err(stderr);
    return runTerminal(lines, Store::defaultDirectory(), Services::real(), out, err);
}

} // namespace tock

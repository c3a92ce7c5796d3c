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

TerminalSession::TerminalSession(AppModel &model, QTextStream &out, QTextStream &err, Echo echo)
    : model_(model), out_(out), err_(err), echo_(echo)
{
}

void TerminalSession::print(QTextStream &stream, const QString &text)
{
    if (stream.status() != QTextStream::Ok)
        return;
    stream << text;
    stream.flush();
}

bool TerminalSession::run(const QString &line)
{
    const Board board = model_.board();
    const StyleID style = model_.style();
    const ShellSession::Result result = model_.shell().run(line);
    if (!(model_.board() == board) || model_.style() != style)
        changed_ = true;
    if (result.exit)
        exitRequested_ = true;
    QString text;
    for (const QString &output : result.lines)
        text += output + QLatin1Char('\n');
    print(result.failed ? err_ : out_, text);
    if (result.failed)
        succeeded_ = false;
    return !result.failed;
}

void TerminalSession::printTimers(Instant now)
{
    const QList<TimerItem> &timers = model_.board().timers;
    qsizetype width = 0;
    for (const TimerItem &timer : timers)
        width = std::max(width, Text::graphemeCount(timer.displayName()));
    const int positions = int(QString::number(timers.size()).size());
    QString text;
    for (qsizetype i = 0; i < timers.size(); ++i) {
        const TimerItem &timer = timers.at(i);
        const QString name = timer.displayName();
        const QString padding(width - Text::graphemeCount(name), QLatin1Char(' '));
        text += QStringLiteral("%1  ").arg(i + 1, positions) + name + padding + QStringLiteral("  ")
              + TimeFormat::string(timer.elapsed(now)) + QStringLiteral("  ")
              + (timer.isRunning() ? QStringLiteral("running") : QStringLiteral("paused")) + QLatin1Char('\n');
    }
    if (timers.isEmpty())
        text = QStringLiteral("no timers\n");
    print(out_, text);
}

void TerminalSession::printPrompt()
{
    print(out_, QStringLiteral("tock> "));
}

namespace {

QString folderOf(const Store *store)
{
    return store ? store->directory() : QStringLiteral("the Tock data folder");
}

} // namespace

// The banner's words point at its buttons; here they say what can be done from a terminal.
QStringList TerminalSession::noticeLines(const StorageNotice &notice, const Store *store)
{
    const QString folder = folderOf(store);
    QStringList lines{notice.title()};
    if (const auto *unreadable = std::get_if<StorageNotice::Unreadable>(&notice.value)) {
        lines << QStringLiteral("Nothing has been overwritten and saving is paused.") << unreadable->reasons
              << QStringLiteral("Check the files in %1, or set them aside with Start Fresh in the Tock window.").arg(folder);
    } else if (const auto *failed = std::get_if<StorageNotice::SaveFailed>(&notice.value)) {
        if (failed->message == archiveFailedMessage())
            lines << QStringLiteral("Tock restored your timers from a backup but could not archive the damaged data file, "
                                    "so nothing is being saved yet (to keep that file).")
                  << QStringLiteral("Check disk space and permissions of %1, then run Tock again (the window offers "
                                    "Retry).").arg(folder);
        else if (store && store->folderLost())
            lines << failed->message;
        else
            lines << failed->message << QStringLiteral("Check disk space and permissions of %1.").arg(folder);
    } else {
        lines << notice.detail();
    }
    return lines;
}

void TerminalSession::printNotice(const StorageNotice &notice)
{
    print(err_, noticeLines(notice, store_).join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

QString TerminalSession::pausedMessage(const Store &store)
{
    const QString folder = store.directory();
    return store.awaitingArchive()
               ? QStringLiteral("Nothing was saved: Tock keeps the damaged data file until it can be archived. Check "
                                "disk space and permissions of %1, then run Tock again (the window offers Retry).")
                     .arg(folder)
               : QStringLiteral("Nothing was saved: saving is paused so that the unreadable files are not "
                                "overwritten. Check the files in %1, or set them aside with Start Fresh in the "
                                "Tock window.")
                     .arg(folder);
}

void TerminalSession::reportUnsavedChanges()
{
    const Store *store = store_;
    if (!changed_ || !store || !store->isBlocked())
        return;
    print(err_, pausedMessage(*store) + QLatin1Char('\n'));
    succeeded_ = false;
}

QStringList unsavedChangeLines(const AppModel &model)
{
    if (!model.hasUnsavedChanges())
        return {};
    if (model.notice() && model.notice()->changesUnsaved())
        return TerminalSession::noticeLines(*model.notice(), model.store());
    if (model.store() && model.store()->isBlocked())
        return {TerminalSession::pausedMessage(*model.store())};
    return {QStringLiteral("Nothing was saved: the change could not be written to %1.").arg(folderOf(model.store()))};
}

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

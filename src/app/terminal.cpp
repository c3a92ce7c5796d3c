#include "terminal.h"

#include "controlsocket.h"
#include "remoteterminal.h"
#include "startup.h"
#include "text.h"
#include "timevalues.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tock {

TerminalSession::TerminalSession(AppModel &model, QTextStream &out, QTextStream &err, Echo echo)
    : model_(model), out_(out), err_(err), echo_(echo)
{
}

bool TerminalSession::run(const QString &line)
{
    // Each line starts with an empty output, so a command that prints nothing (clear, exit, a
    // blank line) does not repeat the previous one.
    model_.clearShellOutput();
    model_.setPrompt(line, Text::graphemeCount(line));
    model_.promptRun();
    const bool failed = model_.shellOutputIsError();
    QTextStream &stream = failed ? err_ : out_;
    for (const QString &output : model_.shellOutput())
        stream << output << '\n';
    stream.flush();
    if (failed)
        succeeded_ = false;
    return !failed;
}

void TerminalSession::printTimers(Instant now)
{
    const QList<TimerItem> &timers = model_.board().timers;
    qsizetype width = 0;
    for (const TimerItem &timer : timers)
        width = std::max(width, Text::graphemeCount(timer.displayName()));
    const int positions = int(QString::number(timers.size()).size());
    for (qsizetype i = 0; i < timers.size(); ++i) {
        const TimerItem &timer = timers.at(i);
        const QString name = timer.displayName();
        const QString padding(width - Text::graphemeCount(name), QLatin1Char(' '));
        out_ << QStringLiteral("%1  ").arg(i + 1, positions) << name << padding << "  "
             << TimeFormat::string(timer.elapsed(now)) << "  "
             << (timer.isRunning() ? QStringLiteral("running") : QStringLiteral("paused")) << '\n';
    }
    if (timers.isEmpty())
        out_ << "no timers\n";
    out_.flush();
}

void TerminalSession::printNotice(const StorageNotice &notice)
{
    err_ << notice.title() << '\n' << notice.detail() << '\n';
    err_.flush();
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
        qsizetype end;
        while (!session_.exitRequested() && (end = pending_.indexOf('\n')) >= 0) {
            const QByteArray line = pending_.left(end);
            pending_.remove(0, end + 1);
            handle(line);
            if (!session_.exitRequested())
                prompt_();
        }
        if (session_.exitRequested())
            finish();
    }

    void handle(QByteArray line)
    {
        if (line.endsWith('\r'))
            line.chop(1);
        session_.run(QString::fromUtf8(line));
    }

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
};

// Ctrl-C, a closed terminal or a polite kill end the session the normal way (timers paused,
// board saved) instead of losing the last seconds: the handler only writes a byte to a socket
// that the event loop watches.
class EndOnSignal {
public:
    explicit EndOnSignal(QEventLoop &loop)
    {
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, fds_) != 0)
            return;
        notifier_ = std::make_unique<QSocketNotifier>(fds_[1], QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, &loop, [&loop] { loop.quit(); });
        writeEnd_ = fds_[0];
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction action = {};
            action.sa_handler = &EndOnSignal::handle;
            sigemptyset(&action.sa_mask);
            action.sa_flags = SA_RESTART;
            ::sigaction(signal, &action, nullptr);
        }
    }
    ~EndOnSignal()
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
    EndOnSignal(const EndOnSignal &) = delete;
    EndOnSignal &operator=(const EndOnSignal &) = delete;

private:
    static void handle(int)
    {
        const char byte = 1;
        if (writeEnd_ >= 0) {
            const ssize_t written = ::write(writeEnd_, &byte, 1);
            (void)written; // nothing sensible to do in a handler if the socket is full
        }
    }

    static inline volatile sig_atomic_t writeEnd_ = -1;
    int fds_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

Instant clockNow(const Services &services)
{
    return services.clock ? services.clock->now() : 0;
}

} // namespace

int runTerminal(const QStringList &lines, const QString &directory, const Services &services, QTextStream &out,
                QTextStream &err)
{
    AppSession app(directory, services);
    if (app.start() == AppSession::Start::alreadyRunning) {
        // The copy holding the folder runs the lines itself when it answers.
        if (const std::optional<int> status = runOnRunningCopy(lines, ControlSocket::path(directory), out, err))
            return *status;
        err << alreadyRunningTitle() << '\n' << alreadyRunningText() << '\n';
        err.flush();
        return TerminalStatus::alreadyRunning;
    }
    AppModel &model = *app.model();
    const bool interactive = lines.isEmpty() && isatty(STDIN_FILENO);
    TerminalSession session(model, out, err,
                            interactive ? TerminalSession::Echo::withTimers : TerminalSession::Echo::outputOnly);
    QObject::connect(&model, &AppModel::exitRequested, &model, [&session] { session.requestExit(); });
    QObject::connect(&model, &AppModel::beepRequested, &model, [&err] {
        err << '\a';
        err.flush();
    });
    // Nothing here offers to start fresh: unreadable data stays set aside untouched.
    model.setWindowVisible(false);

    if (app.startingNotice())
        session.printNotice(*app.startingNotice());
    // Later notices (a save that failed) are news too, and a failed save fails the run.
    const QMetaObject::Connection notices = QObject::connect(&model, &AppModel::noticeChanged, &model, [&] {
        if (const std::optional<StorageNotice> &notice = model.notice()) {
            session.printNotice(*notice);
            if (notice->isSaveFailed())
                session.markFailed();
        }
    });

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
            out << "tock> ";
            out.flush();
        };
        QEventLoop loop;
        const EndOnSignal endOnSignal(loop);
        InputReader reader(session, prompt, loop);
        if (reader.begin())
            loop.exec();
        if (interactive && !session.exitRequested()) {
            out << '\n';
            out.flush();
        }
    }

    app.end();
    QObject::disconnect(notices);
    return session.succeeded() ? TerminalStatus::succeeded : TerminalStatus::failed;
}

int runTerminal(const QStringList &lines)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    return runTerminal(lines, Store::defaultDirectory(), Services::real(), out, err);
}

} // namespace tock

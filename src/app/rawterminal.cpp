#include "rawterminal.h"

#include "appmodel.h"
#include "keydecoder.h"
#include "lineeditor.h"
#include "terminalsession.h"
#include "text.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tock {

namespace {

// Pastes arrive marked, so their line breaks do not run half a line.
constexpr char pasteOn[] = "\x1b[?2004h";
constexpr char pasteOff[] = "\x1b[?2004l";
const QString promptSign = QStringLiteral("tock> ");

// What the fatal-signal handler needs, set only while a RawMode is active. Plain statics, as a
// handler may touch nothing else.
volatile sig_atomic_t crashFd = -1;
volatile sig_atomic_t crashOutput = -1;
struct termios crashSettings;
constexpr std::array fatalSignals{SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
std::array<struct sigaction, fatalSignals.size()> previousActions;

void restoreOnCrash(int signal)
{
    const int fd = crashFd;
    if (fd >= 0) {
        ::tcsetattr(fd, TCSANOW, &crashSettings);
        const ssize_t written = ::write(crashOutput, pasteOff, sizeof pasteOff - 1);
        (void)written; // the process is dying; nothing else to try
    }
    // Whoever handled the signal before (a sanitizer, the default) gets it next.
    for (std::size_t i = 0; i < fatalSignals.size(); ++i)
        if (fatalSignals[i] == signal)
            ::sigaction(signal, &previousActions[i], nullptr);
    ::raise(signal);
}

void writeAll(int fd, const char *bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, bytes, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        bytes += written;
        size -= std::size_t(written);
    }
}

int terminalColumns(int fd)
{
    struct winsize size = {};
    return ::ioctl(fd, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

} // namespace

RawMode::RawMode(int fd, int output) : fd_(fd), output_(output)
{
    if (!::isatty(fd) || ::tcgetattr(fd, &saved_) != 0)
        return;
    struct termios raw = saved_;
    // Keys arrive one by one, unechoed, with Ctrl-C, Ctrl-Z and Ctrl-S as plain bytes. Output
    // processing stays on, so printed lines still end with a carriage return.
    raw.c_lflag &= ~tcflag_t(ICANON | ECHO | ISIG | IEXTEN);
    raw.c_iflag &= ~tcflag_t(ICRNL | INLCR | IGNCR | IXON | ISTRIP | BRKINT);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;

    crashSettings = saved_;
    crashOutput = output;
    crashFd = fd;
    for (std::size_t i = 0; i < fatalSignals.size(); ++i) {
        struct sigaction action = {};
        action.sa_handler = &restoreOnCrash;
        sigemptyset(&action.sa_mask);
        ::sigaction(fatalSignals[i], &action, &previousActions[i]);
    }
    if (::tcsetattr(fd, TCSAFLUSH, &raw) != 0) {
        restore();
        return;
    }
    active_ = true;
    writeAll(output_, pasteOn, sizeof pasteOn - 1);
}

RawMode::~RawMode()
{
    restore();
}

void RawMode::restore()
{
    if (crashFd != fd_)
        return;
    if (active_)
        writeAll(output_, pasteOff, sizeof pasteOff - 1);
    ::tcsetattr(fd_, TCSAFLUSH, &saved_);
    crashFd = -1;
    for (std::size_t i = 0; i < fatalSignals.size(); ++i)
        ::sigaction(fatalSignals[i], &previousActions[i], nullptr);
    active_ = false;
}

namespace {

// The screen below where the session started: the timers listing, then the prompt line.
class Interactive {
public:
    Interactive(TerminalSession &session, AppModel &model, QTextStream &out, QEventLoop &loop,
                const std::function<Instant()> &now)
        : session_(session), model_(model), out_(out), loop_(loop), now_(now),
          notifier_(STDIN_FILENO, QSocketNotifier::Read)
    {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { readSome(); });
        // The model ticks once a second only while a timer runs and the times are on show.
        tick_ = QObject::connect(model_.displayTick(), &DisplayTick::tickChanged, &notifier_, [this] { redrawListing(); });
        model_.setWindowVisible(true);
    }
    ~Interactive()
    {
        model_.setWindowVisible(false);
        QObject::disconnect(tick_);
    }
    Interactive(const Interactive &) = delete;
    Interactive &operator=(const Interactive &) = delete;

    void drawAll()
    {
        listingLines_ = std::max<qsizetype>(1, model_.board().timers.size());
        session_.printTimers(now_());
        drawLine();
    }

private:
    void write(const QByteArray &bytes) { session_.print(out_, QString::fromUtf8(bytes)); }

    void drawLine()
    {
        write(LineEditor::render(promptSign, model_.shell().promptText(), model_.shell().promptCaret(), terminalColumns(STDOUT_FILENO)));
    }

    void redrawListing()
    {
        if (listingLines_ == 0 || ended_)
            return;
        write("\r\x1b[" + QByteArray::number(listingLines_) + "A\x1b[J");
        drawAll();
    }

    void readSome()
    {
        char buffer[4096];
        const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (count <= 0) {
            end();
            return;
        }
        for (const KeyEvent &key : decoder_.feed(QByteArrayView(buffer, count))) {
            apply(key);
            if (ended_)
                return;
        }
        drawLine();
    }

    void apply(const KeyEvent &key)
    {
        using Key = KeyEvent::Key;
        const qsizetype length = Text::graphemeCount(model_.shell().promptText());
        switch (key.key) {
        case Key::text:
            model_.shell().promptInsert(key.text);
            break;
        case Key::enter:
            run();
            break;
        case Key::tab:
            model_.shell().promptComplete();
            break;
        case Key::backspace:
            model_.shell().promptBackspace();
            break;
        case Key::forwardDelete:
            model_.shell().promptForwardDelete();
            break;
        case Key::left:
            model_.shell().promptMove(-1);
            break;
        case Key::right:
            model_.shell().promptMove(1);
            break;
        case Key::up:
        case Key::down:
            model_.shell().promptHistory(key.key == Key::up);
            break;
        case Key::home:
            model_.shell().promptMove(-model_.shell().promptCaret());
            break;
        case Key::end:
            model_.shell().promptMove(length - model_.shell().promptCaret());
            break;
        case Key::clearLine:
        case Key::interrupt:
            model_.shell().setPrompt({}, 0);
            break;
        case Key::clearScreen:
            write("\x1b[H\x1b[2J");
            drawAll();
            break;
        case Key::endOfInput:
            if (length == 0)
                end();
            else
                model_.shell().promptForwardDelete();
            break;
        }
    }

    void run()
    {
        // The typed line stays on screen as typed; what it printed follows, then a fresh listing.
        const QString line = model_.shell().promptText();
        write(LineEditor::render(promptSign, line, length(), 0) + '\n');
        listingLines_ = 0;
        model_.shell().setPrompt({}, 0);
        session_.run(line);
        if (session_.exitRequested()) {
            ended_ = true;
            loop_.quit();
            return;
        }
        drawAll();
    }

    qsizetype length() const { return Text::graphemeCount(model_.shell().promptText()); }

    void end()
    {
        ended_ = true;
        notifier_.setEnabled(false);
        loop_.quit();
    }

    TerminalSession &session_;
    AppModel &model_;
    QTextStream &out_;
    QEventLoop &loop_;
    std::function<Instant()> now_;
    QSocketNotifier notifier_;
    QMetaObject::Connection tick_;
    KeyDecoder decoder_;
    qsizetype listingLines_ = 0; // lines of the listing right above the prompt line
    bool ended_ = false;
};

} // namespace

bool runInteractiveTerminal(TerminalSession &session, AppModel &model, QTextStream &out, QEventLoop &loop,
                            const std::function<Instant()> &now)
{
    // Redrawing in place needs a screen: with output going elsewhere, lines stay plain.
    if (!::isatty(STDOUT_FILENO))
        return false;
    out.flush();
    const RawMode raw(STDIN_FILENO, STDOUT_FILENO);
    if (!raw.active())
        return false;
    {
        Interactive interactive(session, model, out, loop, now);
        interactive.drawAll();
        loop.exec();
    }
    out.flush();
    return true;
}

} // namespace tock

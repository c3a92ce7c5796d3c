// The real `tock --shell` at a pseudo-terminal: keys edit the line through the model, the
// listing ticks while a timer runs, and the terminal's settings come back however it ends.
#include "table.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

using tock::table;

namespace {

// A pseudo-terminal whose far end becomes the child's standard streams; this end reads what
// it prints and types into it.
class Pty {
public:
    Pty()
    {
        master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0)
            return;
        name_ = QString::fromLocal8Bit(::ptsname(master_));
        slave_ = ::open(::ptsname(master_), O_RDWR | O_NOCTTY);
        struct winsize size = {};
        size.ws_col = 80;
        size.ws_row = 24;
        ::ioctl(slave_, TIOCSWINSZ, &size);
    }
    ~Pty()
    {
        ::close(slave_);
        ::close(master_);
    }
    bool isOpen() const { return slave_ >= 0; }
    const QString &name() const { return name_; }

    struct termios settings() const
    {
        struct termios t = {};
        ::tcgetattr(slave_, &t);
        return t;
    }

    void type(const QByteArray &bytes) { QVERIFY(::write(master_, bytes.constData(), size_t(bytes.size())) == bytes.size()); }

    // Reads until `needle` appears after what earlier waits matched, or the deadline passes.
    bool waitFor(const QByteArray &needle, int ms = 10000)
    {
        QDeadlineTimer deadline(ms);
        for (;;) {
            const qsizetype at = seen_.indexOf(needle, matched_);
            if (at >= 0) {
                matched_ = at + needle.size();
                return true;
            }
            struct pollfd fd = {master_, POLLIN, 0};
            const int remaining = int(deadline.remainingTime());
            if (remaining <= 0 || ::poll(&fd, 1, remaining) <= 0)
                return false;
            char buffer[4096];
            const ssize_t count = ::read(master_, buffer, sizeof buffer);
            if (count <= 0)
                return false;
            seen_.append(buffer, count);
        }
    }
    QByteArray unmatched() const { return seen_.mid(matched_); }

private:
    int master_ = -1;
    int slave_ = -1;
    QString name_;
    QByteArray seen_;
    qsizetype matched_ = 0;
};

bool sameSettings(const struct termios &a, const struct termios &b)
{
    return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag && a.c_lflag == b.c_lflag
        && a.c_cc[VMIN] == b.c_cc[VMIN] && a.c_cc[VTIME] == b.c_cc[VTIME];
}

} // namespace

class RawTerminalTest : public QObject {
    Q_OBJECT

    QTemporaryDir root_;

    // `tock --shell` with all three standard streams on the pseudo-terminal and a fresh data
    // folder (three timers).
    void start(QProcess &process, const Pty &pty)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const QString name = QString::fromLatin1(QTest::currentTestFunction()) + QString::fromLatin1(QTest::currentDataTag());
        environment.insert(QStringLiteral("TOCK_DATA_DIR"), root_.filePath(name));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root_.filePath(name + QStringLiteral("-config")));
        process.setProcessEnvironment(environment);
        process.setStandardInputFile(pty.name());
        process.setStandardOutputFile(pty.name());
        process.setStandardErrorFile(pty.name());
        // The crash case must not leave a core file behind.
        process.setChildProcessModifier([] {
            const struct rlimit none = {0, 0};
            ::setrlimit(RLIMIT_CORE, &none);
        });
        process.start(QStringLiteral(TOCK_BINARY), {QStringLiteral("--shell")});
    }

private Q_SLOTS:
    void editsLikeAShell()
    {
        Pty pty;
        QVERIFY(pty.isOpen());
        const struct termios before = pty.settings();
        QProcess process;
        start(process, pty);
        QVERIFY2(pty.waitFor("tock> "), pty.unmatched().constData());
        QVERIFY(!(pty.settings().c_lflag & (ICANON | ECHO)));

        pty.type("ad");
        pty.type("\t");
        QVERIFY2(pty.waitFor("tock> add \x1b[K"), pty.unmatched().constData());
        // Keys split mid-character and mid-sequence: "é" then ⌫, "uz", ← and Delete take the z.
        pty.type("Foc\xc3");
        pty.type("\xa9\x7fuz\x1b[");
        pty.type("D\x1b[3~s\r");
        QVERIFY2(pty.waitFor("added “Focus” as 4"), pty.unmatched().constData());
        QVERIFY(pty.waitFor("4  Focus    00:00:00  paused"));

        pty.type("\x1b[A");
        QVERIFY2(pty.waitFor("tock> add Focus\x1b[K"), pty.unmatched().constData());
        pty.type("\x01");
        QVERIFY2(pty.waitFor("tock> add Focus\x1b[K\r\x1b[6C"), pty.unmatched().constData());
        pty.type("\x15zzz\t");
        QVERIFY2(pty.waitFor("\a"), pty.unmatched().constData());
        pty.type("\x03");
        QVERIFY(pty.waitFor("tock> \x1b[K"));

        // A running timer redraws the listing in place, once a second.
        pty.type("start 4\r");
        QVERIFY2(pty.waitFor("started “Focus”"), pty.unmatched().constData());
        QVERIFY2(pty.waitFor("\x1b[4A\x1b[J"), pty.unmatched().constData());
        QVERIFY(pty.waitFor("00:00:01  running"));
        pty.type("pause all\r");
        QVERIFY(pty.waitFor("paused “Focus”"));

        pty.type("\x04");
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(sameSettings(pty.settings(), before));
    }

    void restoresTheTerminal_data()
    {
        table<QString, QByteArray, int, bool>({"case", "keys", "signal", "crashes"}, {
            {"exit", QByteArray("\x15" "exit\r"), 0, false},
            {"Ctrl-C does not end it, Ctrl-D does", QByteArray("\x03\x04"), 0, false},
            {"SIGTERM", QByteArray(), SIGTERM, false},
            {"SIGINT", QByteArray(), SIGINT, false},
            {"SIGHUP", QByteArray(), SIGHUP, false},
            {"crash", QByteArray(), SIGABRT, true},
        });
    }

    void restoresTheTerminal()
    {
        QFETCH(QByteArray, keys);
        QFETCH(int, signal);
        QFETCH(bool, crashes);
        Pty pty;
        QVERIFY(pty.isOpen());
        const struct termios before = pty.settings();
        QProcess process;
        start(process, pty);
        QVERIFY2(pty.waitFor("tock> "), pty.unmatched().constData());
        pty.type("ad");
        QVERIFY(pty.waitFor("tock> ad\x1b[K"));
        QVERIFY(!(pty.settings().c_lflag & ICANON));
        if (signal != 0)
            ::kill(pid_t(process.processId()), signal);
        pty.type(keys);
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), crashes ? QProcess::CrashExit : QProcess::NormalExit);
        if (!crashes)
            QCOMPARE(process.exitCode(), 0);
        QVERIFY(sameSettings(pty.settings(), before));
    }
};

QTEST_GUILESS_MAIN(RawTerminalTest)
#include "rawterminal_test.moc"

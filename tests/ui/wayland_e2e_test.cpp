// The real tock on a headless Wayland compositor, read through the requests it sends
// (WAYLAND_DEBUG): its app id is the installed entry's id, its input region leaves out the
// shadow margin, and a second copy's activation token reaches the first, which activates with
// it where the compositor offers activation. Skipped where weston or Qt's Wayland plugin is
// missing.
#include "run.h"

#include <QtTest>

using namespace tock::testing;

namespace {

constexpr auto appId = "app.tock.Tock";

struct Rect {
    int x, y, w, h;
};

} // namespace

class WaylandEndToEndTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir runtime_; // XDG_RUNTIME_DIR of the compositor and of tock (0700)
    QString socket_;
    QProcess weston_;
    QProcess tock_;
    QByteArray log_; // the first copy's standard error: Wayland requests and events
    QProcessEnvironment env_;
    QTemporaryFile suppressions_;

    void readLog() { log_ += tock_.readAllStandardError(); }
    bool logMatches(const QRegularExpression &pattern)
    {
        readLog();
        return pattern.match(QString::fromUtf8(log_)).hasMatch();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString weston = QStandardPaths::findExecutable("weston");
        const QString plugins = QLibraryInfo::path(QLibraryInfo::PluginsPath);
        if (weston.isEmpty() || QDir(plugins + "/platforms").entryList({"libqwayland*"}).isEmpty())
            QSKIP("needs weston and Qt's Wayland plugin (scripts/deps installs them)");
        QVERIFY(runtime_.isValid());
        socket_ = QStringLiteral("tock-test-%1").arg(QCoreApplication::applicationPid());
        QProcessEnvironment compositor = QProcessEnvironment::systemEnvironment();
        compositor.insert("XDG_RUNTIME_DIR", runtime_.path());
        compositor.remove("WAYLAND_DISPLAY");
        compositor.remove("DISPLAY");
        weston_.setProcessEnvironment(compositor);
        weston_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        weston_.setStandardOutputFile(QProcess::nullDevice());
        weston_.start(weston, {"--backend=headless-backend.so", "--socket=" + socket_, "--use-pixman", "--idle-time=0",
                               "--width=1024", "--height=768"});
        QVERIFY(weston_.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(runtime_.path() + "/" + socket_), 20000);

        env_ = QProcessEnvironment::systemEnvironment();
        env_.insert("XDG_RUNTIME_DIR", runtime_.path());
        env_.insert("WAYLAND_DISPLAY", socket_);
        env_.insert("QT_QPA_PLATFORM", "wayland");
        env_.remove("DISPLAY");
        env_.insert("TOCK_DATA_DIR", runtime_.path() + "/data");
        env_.insert("XDG_CONFIG_HOME", runtime_.path() + "/config");
        env_.remove("XDG_ACTIVATION_TOKEN");
        env_.remove("DESKTOP_STARTUP_ID");
        // Qt's Wayland plugin leaves the display's proxies to the end of the process; under the
        // leak checker that is not Tock's to answer for.
        suppressLeaks(suppressions_, env_, {"libwayland-client.so", "libdbus-1.so"});

        QProcessEnvironment first = env_;
        first.insert("WAYLAND_DEBUG", "1");
        first.insert("QT_LOGGING_RULES", "tock.activation.info=true");
        tock_.setProcessEnvironment(first);
        tock_.start(QStringLiteral(TOCK_BINARY), {});
        QVERIFY(tock_.waitForStarted());
        // The first frame is committed once the window is configured and drawn.
        QTRY_VERIFY_WITH_TIMEOUT(logMatches(QRegularExpression("xdg_toplevel@\\d+\\.set_app_id")), 30000);
        QTRY_VERIFY_WITH_TIMEOUT(logMatches(QRegularExpression("wl_surface@\\d+\\.set_input_region")), 30000);
    }

    void cleanupTestCase()
    {
        stop(tock_);
        stop(weston_);
    }

    void theAppIdIsTheEntrysId()
    {
        const QRegularExpression appIdRequest("xdg_toplevel@\\d+\\.set_app_id\\(\"([^\"]*)\"\\)");
        QRegularExpressionMatch last;
        for (const QRegularExpressionMatch &m : appIdRequest.globalMatch(QString::fromUtf8(log_)))
            last = m;
        QCOMPARE(last.captured(1), QString::fromLatin1(appId));
    }

    void theInputRegionLeavesOutTheShadowMargin()
    {
        // The region's rectangles are added before it is set; the window's size is its buffer's
        // (at scale 1), which comes once the window is drawn.
        QTRY_VERIFY_WITH_TIMEOUT(logMatches(QRegularExpression("create_buffer\\(")), 30000);
        const QString log = QString::fromUtf8(log_);
        QHash<QString, QList<Rect>> regions;
        std::optional<QList<Rect>> input;
        static const QRegularExpression add("(wl_region@\\d+)\\.add\\((-?\\d+), (-?\\d+), (\\d+), (\\d+)\\)");
        static const QRegularExpression set("set_input_region\\((wl_region@\\d+|nil)\\)");
        static const QRegularExpression geometry("create_buffer\\(new id wl_buffer@\\d+, \\d+, (\\d+), (\\d+),");
        QSize window;
        for (const QString &line : log.split('\n')) {
            if (const QRegularExpressionMatch m = add.match(line); m.hasMatch())
                regions[m.captured(1)] << Rect{m.captured(2).toInt(), m.captured(3).toInt(), m.captured(4).toInt(), m.captured(5).toInt()};
            else if (const QRegularExpressionMatch s = set.match(line); s.hasMatch())
                input = regions.take(s.captured(1));
            else if (const QRegularExpressionMatch g = geometry.match(line); g.hasMatch())
                window = QSize(g.captured(1).toInt(), g.captured(2).toInt());
        }
        QVERIFY(input && !input->isEmpty());
        QVERIFY(window.isValid());
        for (const Rect &r : *input) {
            QVERIFY2(r.x > 0 && r.y > 0 && r.x + r.w < window.width() && r.y + r.h < window.height(),
                     qPrintable(QString("region %1,%2 %3x%4 in %5x%6").arg(r.x).arg(r.y).arg(r.w).arg(r.h)
                                    .arg(window.width()).arg(window.height())));
        }
    }

    void aSecondCopyHandsOverItsActivationToken()
    {
        QProcessEnvironment env = env_;
        env.insert("XDG_ACTIVATION_TOKEN", "tock-test-token-7");
        const Run second = run(QStringLiteral(TOCK_BINARY), {}, env, {}, 30000);
        QVERIFY2(second.status == 0, qPrintable(second.err));
        QTRY_VERIFY_WITH_TIMEOUT(logMatches(QRegularExpression("activation token: tock-test-token-7")), 10000);
        // Compositors that offer activation get the request with that very token (weston 10 does
        // not offer it; GNOME, KDE and wlroots-based ones do).
        if (logMatches(QRegularExpression("\"xdg_activation_v1\"")))
            QTRY_VERIFY_WITH_TIMEOUT(logMatches(QRegularExpression("xdg_activation_v1@\\d+\\.activate\\(\"tock-test-token-7\"")),
                                     10000);
        else
            qInfo("the compositor offers no xdg_activation_v1; the token was checked up to Qt");
    }
};

QTEST_GUILESS_MAIN(WaylandEndToEndTest)
#include "wayland_e2e_test.moc"

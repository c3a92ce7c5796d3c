// The window's costs, measured by hand (never by CTest):
//   window_bench launch   time from process start to the first painted frame, Tock's window
//                         against a bare widget window, each in fresh child processes
//   window_bench rss      resident memory of the idle window with 10 timers, and of the bare one
//   window_bench tick     CPU per tick's repaint of 10 running time displays, in each style
//   window_bench idle S   context switches of the idle window's process over S seconds
// tock --bench STYLE TIMERS SECONDS runs the window ticking for real; bench/measure-window
// measures the real program under a display server.
// Run it with a display or QT_QPA_PLATFORM=offscreen.
#include "renderbench.h"
#include "rootview.h"
#include "rowlist.h"
#include "screenshots.h"
#include "livetimebutton.h"
#include "timerrow.h"
#include "tockwindow.h"
#include "fontloader.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <memory>

using namespace tock;

namespace {

qint64 statusField(const char *name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(name))
            return line.mid(qstrlen(name)).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

// Reports on stdout once the watched window has painted for the first time.
class FirstPaint : public QObject {
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !done_) {
            done_ = true;
            // After this paint returns the frame is flushed; report then.
            QTimer::singleShot(0, [] {
                QTextStream(stdout) << "painted\n";
                QCoreApplication::exit(0);
            });
        }
        return false;
    }

private:
    bool done_ = false;
};

struct Scene {
    UndoManager undo;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<TockWindow> window;
    std::unique_ptr<QLabel> bare;

    Scene(bool tock, bool running, StyleID style = StyleID::classic)
    {
        if (tock) {
            FontLoader::registerBundledFonts();
            Services services = Screenshots::stillServices();
            model = std::make_unique<AppModel>(nullptr, RenderBench::board(10, running, services.clock->now()), style,
                                               std::nullopt, services, undo);
            window = std::make_unique<TockWindow>(model.get(), [] {});
        } else {
            bare = std::make_unique<QLabel>(QStringLiteral("Timer 1   01:00:00"));
            bare->resize(256, 300);
        }
    }
    QWidget *widget() const { return window ? static_cast<QWidget *>(window.get()) : bare.get(); }
};

int child(const QString &what, bool tock)
{
    Scene scene(tock, false);
    if (what == QLatin1String("launch")) {
        FirstPaint first;
        scene.widget()->installEventFilter(&first);
        scene.widget()->show();
        return QApplication::exec();
    }
    scene.widget()->show();
    QTimer::singleShot(1000, [] { QCoreApplication::exit(0); });
    QApplication::exec();
    QTextStream(stdout) << statusField("VmRSS:") << '\n';
    return 0;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

void launch(QTextStream &out)
{
    for (const char *kind : {"bare", "tock"}) {
        QList<double> times;
        for (int run = 0; run < 7; ++run) {
            QProcess process;
            QElapsedTimer clock;
            clock.start();
            process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("child-launch"), QLatin1String(kind)});
            process.waitForFinished(30000);
            times.append(clock.nsecsElapsed() / 1e6);
        }
        out << "launch to first frame (" << kind << "): median " << median(times) << " ms of 7\n";
    }
}

void rss(QTextStream &out)
{
    for (const char *kind : {"bare", "tock"}) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("child-rss"), QLatin1String(kind)});
        process.waitForFinished(30000);
        out << "idle RSS (" << kind << ", 10 timers): " << process.readAllStandardOutput().trimmed() << " kB\n";
    }
}

void tick(QTextStream &out)
{
    for (const StyleID style : StyleIDs::allCases()) {
        Scene scene(true, true, style);
        scene.window->setAnimated(false);
        scene.window->show();
        QCoreApplication::processEvents();
        QList<QWidget *> times;
        for (TimerRow *row : scene.window->rootView()->rowList()->rows())
            times.append(row->timeButton());
        const int ticks = 300;
        const double cpuBefore = RenderBench::cpuSeconds();
        QElapsedTimer wall;
        wall.start();
        for (int i = 0; i < ticks; ++i) {
            for (QWidget *time : times)
                time->repaint();
        }
        const double wallMs = wall.nsecsElapsed() / 1e6 / ticks;
        const double cpuMs = (RenderBench::cpuSeconds() - cpuBefore) * 1000 / ticks;
        out << "tick repaint, 10 running (" << StyleIDs::rawValue(style) << "): " << cpuMs << " ms CPU, " << wallMs
            << " ms wall\n";
    }
}

void idle(QTextStream &out, int seconds)
{
    Scene scene(true, false);
    scene.window->show();
    QTimer::singleShot(500, [] { QCoreApplication::exit(0); });
    QApplication::exec(); // settle
    const qint64 voluntary = statusField("voluntary_ctxt_switches:");
    const qint64 involuntary = statusField("nonvoluntary_ctxt_switches:");
    QTimer::singleShot(seconds * 1000, [] { QCoreApplication::exit(0); });
    QApplication::exec();
    out << "idle window over " << seconds << " s: " << statusField("voluntary_ctxt_switches:") - voluntary
        << " voluntary and " << statusField("nonvoluntary_ctxt_switches:") - involuntary
        << " involuntary context switches (one is the timer that ends the wait)\n";
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    QTextStream out(stdout);
    const QString mode = args.value(0);
    if (mode.startsWith(QLatin1String("child-")))
        return child(mode.mid(6), args.value(1) == QLatin1String("tock"));
    if (mode == QLatin1String("launch"))
        launch(out);
    else if (mode == QLatin1String("rss"))
        rss(out);
    else if (mode == QLatin1String("tick"))
        tick(out);
    else if (mode == QLatin1String("idle"))
        idle(out, std::max(1, args.value(1).toInt()));
    else
        out << "usage: window_bench launch | rss | tick | idle SECONDS\n";
    return 0;
}

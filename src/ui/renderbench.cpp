#include "renderbench.h"

#include "appmodel.h"
#include "screenshots.h"
#include "tockwindow.h"
#include "undomanager.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QUuid>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>

namespace tock {

namespace RenderBench {

namespace {

// Counts the frames the window composes: every repaint, however small, is one update request
// on the top-level widget.
class FrameCounter : public QObject {
public:
    int frames = 0;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::UpdateRequest)
            ++frames;
        return false;
    }
};

double percentile(QList<double> values, double p)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const auto index = qsizetype(std::ceil(p * double(values.size()))) - 1;
    return values.at(std::clamp<qsizetype>(index, 0, values.size() - 1));
}

} // namespace

Board board(int count, bool running, Instant now)
{
    QList<TimerItem> timers;
    for (int i = 0; i < count; ++i) {
        TimerItem t;
        t.id = QUuid::createUuid();
        t.name = QStringLiteral("Timer %1").arg(i + 1);
        t.accumulated = 3600 + i * 61;
        if (running)
            t.startedAt = now;
        timers.append(t);
    }
    return Board(timers);
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
         + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

long peakResidentKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

int run(StyleID style, int timers, double seconds, QTextStream &out)
{
    // The real clock and timers, but settings in memory: nothing is read or written on disk.
    Services services = Services::real();
    services.settings = Screenshots::stillServices().settings;
    UndoManager undo;
    AppModel model(nullptr, board(timers, true, services.clock->now()), style, std::nullopt, services, undo);
    TockWindow window(&model, [] {});
    FrameCounter counter;
    window.installEventFilter(&counter);
    window.show();

    // Each sample is the CPU of one whole second: the tick, its repaints and any flips it started.
    QList<double> perTick;
    double cpuAtTick = cpuSeconds();
    QTimer ticker;
    ticker.setInterval(1000);
    QObject::connect(&ticker, &QTimer::timeout, &model, [&] {
        const double cpu = cpuSeconds();
        perTick.append((cpu - cpuAtTick) * 1000);
        cpuAtTick = cpu;
        model.tick();
    });
    QTimer::singleShot(0, &ticker, [&] {
        // Start-up is not a tick: the first sample begins once the first frame is up.
        counter.frames = 0;
        cpuAtTick = cpuSeconds();
        ticker.start();
    });
    QTimer::singleShot(int(std::lround(std::max(seconds, 0.0) * 1000)), qApp, &QApplication::quit);
    QApplication::exec();

    // The first sample also holds the first frame's leftovers; drop it when there are others.
    if (perTick.size() > 1)
        perTick.removeFirst();
    out << "bench " << StyleIDs::rawValue(style) << ' ' << timers << " timers " << seconds << " s: " << counter.frames
        << " frames, " << perTick.size() << " ticks, CPU per tick " << QString::number(percentile(perTick, 0.5), 'f', 2)
        << " ms median, " << QString::number(percentile(perTick, 0.95), 'f', 2) << " ms p95, peak RSS "
        << peakResidentKb() << " kB\n";
    out.flush();
    return 0;
}

} // namespace RenderBench

} // namespace tock

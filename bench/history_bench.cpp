// What the history costs: recording a start and a pause (one transaction each), a week's report,
// the window's week and an export over five years of heavy use (100,000 runs), and the size of
// that database.
// Each figure is printed beside a yardstick measured in the same run: a save of timers.json with
// ten timers (written, flushed, renamed), which every start and pause already costs.
//   history_bench [DIR]   (DIR: where the database is built; a temporary folder by default)
#include "history.h"
#include "historyrecorder.h"
#include "report.h"
#include "snapshot.h"
#include "store.h"
#include "weekreport.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <vector>

using namespace tock;

namespace {

template <typename F>
double medianMs(int rounds, F &&f)
{
    std::vector<double> samples;
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer t;
        t.start();
        f(i);
        samples.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
}

Board tenTimers()
{
    Board b;
    for (int i = 0; i < 10; ++i)
        b.add(QStringLiteral("Timer %1").arg(i + 1));
    return b;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTemporaryDir temporary;
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : temporary.path();

    // The yardstick: the save every start and pause already makes.
    Store store(dir, 5, 1e9);
    Board board = tenTimers();
    store.save(Snapshot(board, std::nullopt, 0), 0);
    const double save = medianMs(200, [&](int i) { store.save(Snapshot(board, std::nullopt, 1 + i), 1); });

    // Recording: a start, then a pause, of one timer of ten, each its own transaction.
    HistoryRecorder::Opening opening = HistoryRecorder::open(dir, QStringLiteral("bench"), HistoryRecorder::Check::full);
    HistoryRecorder &recorder = *opening.recorder;
    recorder.start(board, std::nullopt, 0);
    Instant now = 1'700'000'000;
    const double record = medianMs(400, [&](int i) {
        Board next = board;
        next.toggle(next.timers.at(i % 10).id, now);
        recorder.record(board, next, now, HistoryCause::edit);
        board = std::move(next);
        now += 600;
    });

    // Five years of heavy use: 100,000 runs of ten timers, about 55 a day, and an edit a day.
    History &history = recorder.history();
    QRandomGenerator random(7);
    Instant t = 1'640'995'200; // 2022-01-01
    history.transaction([&] {
        for (int i = 0; i < 100'000; ++i) {
            const QUuid &id = board.timers.at(random.bounded(10)).id;
            history.openInterval(id, t);
            const double length = 300 + random.bounded(3000);
            history.closeInterval(id, t + length);
            if (i % 55 == 0)
                history.addAdjustment(id, t + length, 60.0 * (random.bounded(30) - 10));
            t += length + 60 + random.bounded(1200);
        }
    });
    history.transaction([] {}); // hands the log to the database file at the next checkpoint
    const QString path = QDir(dir).filePath(History::fileName());

    const QDate today = QDateTime::fromSecsSinceEpoch(qint64(t)).date();
    const auto reportOf = [&](const QString &range) {
        return medianMs(20, [&](int) {
            History reader(path, History::Access::read);
            const ReportRange r = ReportRange::parse(range, today, Qt::Monday);
            QList<History::Interval> intervals;
            QList<History::Adjustment> adjustments;
            QList<History::Timer> timers;
            reader.transaction([&] {
                intervals = reader.intervals(r.start(), r.end());
                adjustments = reader.adjustments(r.start(), r.end());
                timers = reader.timers();
            });
            const QString text = Report::build(r, intervals, adjustments, timers, t).text();
            Q_UNUSED(text);
        });
    };
    const double week = reportOf(QStringLiteral("week"));
    const double month = reportOf(QStringLiteral("month"));
    const double all = reportOf(QStringLiteral("all"));
    const double exportAll = medianMs(5, [&](int) {
        History reader(path, History::Access::read);
        const QByteArray csv = exportHistory(ExportFormat::csv, reader.intervals(), reader.adjustments(),
                                             reader.timers(), t);
        Q_UNUSED(csv);
    });
    // The window's report: this week read through the window's own connection and built, and
    // the rebuild a running timer's tick makes from what was read.
    const QDate thisWeek = WeekReport::weekStart(today, Qt::Monday);
    const double windowWeek = medianMs(20, [&](int) {
        const WeekReport r = WeekReport::build(WeekHistory::read(history, thisWeek), t);
        Q_UNUSED(r);
    });
    const WeekHistory read = WeekHistory::read(history, thisWeek);
    const double windowTick = medianMs(200, [&](int i) {
        const WeekReport r = WeekReport::build(read, t + i);
        Q_UNUSED(r);
    });
    const double check = medianMs(5, [&](int) { History(path, History::Access::write).quickCheck(); });
    const qint64 bytes = QFileInfo(path).size() + QFileInfo(path + QStringLiteral("-wal")).size();

    out << "| what | median (ms) | × timers.json save |\n|---|---|---|\n";
    const auto row = [&](const char *what, double ms) {
        out << "| " << what << " | " << QString::number(ms, 'f', 3) << " | " << QString::number(ms / save, 'f', 2)
            << " |\n";
    };
    row("timers.json save, 10 timers (yardstick)", save);
    row("record a start or a pause", record);
    row("report week, 100,000 runs", week);
    row("report month, 100,000 runs", month);
    row("report all, 100,000 runs", all);
    row("export csv all, 100,000 runs", exportAll);
    row("window report, a week read and built, 100,000 runs", windowWeek);
    row("window report, rebuilt on a tick", windowTick);
    row("open with quick_check, 100,000 runs", check);
    out << "\nhistory.db with 100,000 runs and " << history.adjustments().size() << " adjustments: "
        << QString::number(double(bytes) / 1e6, 'f', 1) << " MB\n";
    return 0;
}

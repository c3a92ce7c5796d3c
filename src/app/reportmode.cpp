#include "reportmode.h"

#include "history.h"
#include "report.h"
#include "store.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <memory>

namespace tock {

namespace {

struct Recorded {
    QList<History::Interval> intervals;
    QList<History::Adjustment> adjustments;
    QList<History::Timer> timers;
};

// Everything in the range, read in one consistent view. Nothing at all before the first run
// recorded (no history.db yet). Throws HistoryError.
Recorded read(const QString &directory, const ReportRange &range)
{
    Recorded recorded;
    const QString path = QDir(directory).filePath(History::fileName());
    if (!QFileInfo::exists(path))
        return recorded;
    History history(path, History::Access::read);
    history.transaction([&] {
        recorded.intervals = history.intervals(range.start(), range.end());
        recorded.adjustments = history.adjustments(range.start(), range.end());
        recorded.timers = history.timers();
    });
    return recorded;
}

QDate today(Instant now)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(now * 1000)).date();
}

Instant systemNow()
{
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

int failed(QTextStream &err, const QString &message)
{
    err << "tock: " << message << '\n';
    err.flush();
    return 1;
}

} // namespace

namespace {

// Reads what RANGE covers and hands it to `write`; a bad range or an unreadable history is one
// line on standard error and status 1.
template <typename Write>
int withRange(const QString &range, const QString &directory, Instant now, Qt::DayOfWeek firstDay, QTextStream &out,
              QTextStream &err, Write write)
{
    try {
        const ReportRange parsed = ReportRange::parse(range, today(now), firstDay);
        const Recorded r = read(directory, parsed);
        out << write(parsed, r);
        out.flush();
        return 0;
    } catch (const ReportError &error) {
        return failed(err, error.message);
    } catch (const HistoryError &error) {
        return failed(err, error.message);
    }
}

} // namespace

int runReport(const QString &range, const QString &directory, Instant now, Qt::DayOfWeek firstDay, QTextStream &out,
              QTextStream &err)
{
    return withRange(range, directory, now, firstDay, out, err, [now](const ReportRange &parsed, const Recorded &r) {
        return Report::build(parsed, r.intervals, r.adjustments, r.timers, now).text();
    });
}

int runExport(const QString &format, const QString &range, const QString &directory, Instant now,
              Qt::DayOfWeek firstDay, QTextStream &out, QTextStream &err)
{
    ExportFormat kind = ExportFormat::csv;
    if (format == QLatin1String("json"))
        kind = ExportFormat::json;
    else if (format != QLatin1String("csv"))
        return failed(err, QStringLiteral("export writes csv or json: tock --export csv|json [RANGE]"));
    return withRange(range, directory, now, firstDay, out, err, [kind, now](const ReportRange &, const Recorded &r) {
        return QString::fromUtf8(exportHistory(kind, r.intervals, r.adjustments, r.timers, now));
    });
}

int runReport(const QString &range)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    return runReport(range, Store::defaultDirectory(), systemNow(), QLocale::system().firstDayOfWeek(), out, err);
}

int runExport(const QString &format, const QString &range)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    return runExport(format, range, Store::defaultDirectory(), systemNow(), QLocale::system().firstDayOfWeek(), out,
                     err);
}

} // namespace tock

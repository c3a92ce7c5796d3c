#include "weekreport.h"

#include <QLocale>

#include <algorithm>

namespace tock {

namespace {

ReportRange rangeOf(QDate start)
{
    return {start, start.addDays(6)};
}

} // namespace

WeekHistory WeekHistory::read(History &history, QDate start)
{
    WeekHistory week;
    week.start = start;
    const ReportRange range = rangeOf(start);
    history.transaction([&] {
        week.intervals = history.intervals(range.start(), range.end());
        week.adjustments = history.adjustments(range.start(), range.end());
        week.timers = history.timers();
    });
    return week;
}

QDate WeekReport::weekStart(QDate day, Qt::DayOfWeek firstDay)
{
    return day.addDays(-((day.dayOfWeek() - int(firstDay) + 7) % 7));
}

WeekReport WeekReport::empty(QDate start)
{
    return build(WeekHistory{start, {}, {}, {}}, 0);
}

WeekReport WeekReport::build(const WeekHistory &week, Instant now)
{
    const ReportRange range = rangeOf(week.start);
    const Report report = Report::build(range, week.intervals, week.adjustments, week.timers, now);
    WeekReport out;
    out.start = week.start;
    out.days = report.days;
    out.rows = report.rows;
    out.dayTotals = report.dayTotals;
    out.total = report.total;
    const Instant end = *range.end();
    const Instant begin = *range.start();
    out.live = std::any_of(week.intervals.cbegin(), week.intervals.cend(), [&](const History::Interval &i) {
        return !i.end && i.start <= now && now >= begin && now < end;
    });
    return out;
}

QString WeekReport::title() const
{
    const QLocale c = QLocale::c();
    const QDate last = start.addDays(6);
    if (start.year() != last.year())
        return c.toString(start, QStringLiteral("MMM d, yyyy")) + QStringLiteral(" \u2013 ")
             + c.toString(last, QStringLiteral("MMM d, yyyy"));
    if (start.month() != last.month())
        return c.toString(start, QStringLiteral("MMM d")) + QStringLiteral(" \u2013 ")
             + c.toString(last, QStringLiteral("MMM d, yyyy"));
    return c.toString(start, QStringLiteral("MMM d")) + QStringLiteral(" \u2013 ")
         + c.toString(last, QStringLiteral("d, yyyy"));
}

double WeekReport::longestDay() const
{
    double longest = 0;
    for (const double d : dayTotals)
        longest = std::max(longest, d);
    return longest;
}

} // namespace tock

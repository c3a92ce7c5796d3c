// The week the window's report shows: for each local day of one week, the seconds each timer
// recorded, each timer's week total and the day totals. Built by the terminal report's own
// range and day-splitting rules (a run across midnight split between the days, 23- and 25-hour
// days), so the window and `tock --report week` never disagree.
#pragma once

#include "history.h"
#include "report.h"

#include <QDate>
#include <QList>
#include <QString>

namespace tock {

// What history.db holds for one week, read once; the figures are built from it for any `now`,
// so a running timer's growth needs no new read.
struct WeekHistory {
    QDate start;
    QList<History::Interval> intervals;
    QList<History::Adjustment> adjustments;
    QList<History::Timer> timers;

    // One consistent read of the seven days from `start`. Throws HistoryError.
    static WeekHistory read(History &history, QDate start);
    bool operator==(const WeekHistory &) const = default;
};

struct WeekReport {
    QDate start;                // the week's first day
    QList<QDate> days;          // the seven days
    QList<Report::Row> rows;    // timers with time in the week, in the order they were first recorded
    QList<double> dayTotals;    // seven
    double total = 0;
    bool live = false;          // a run still open falls in this week: the figures grow with `now`

    // The first day of the week holding `day`, weeks starting on `firstDay`.
    static QDate weekStart(QDate day, Qt::DayOfWeek firstDay);
    // The week from `week.start`; runs still open count up to `now`.
    static WeekReport build(const WeekHistory &week, Instant now);
    // An empty week (no history yet).
    static WeekReport empty(QDate start);

    // "Nov 23 – 29, 2026", "Nov 30 – Dec 6, 2026", "Dec 28, 2026 – Jan 3, 2027".
    QString title() const;
    // The longest day in seconds; bars are drawn against it.
    double longestDay() const;
    bool operator==(const WeekReport &) const = default;
};

} // namespace tock

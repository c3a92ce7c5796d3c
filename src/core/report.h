// Where the time went: the days a report covers, the time of each timer per local calendar day
// (a run across midnight is split between the days, and a day is as long as the clock says,
// 23 or 25 hours when daylight saving changes), the report as text and the history as CSV or
// JSON. Pure functions of what History read and the `now` and `today` given.
#pragma once

#include "history.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QTimeZone>

#include <optional>

namespace tock {

// A range the user typed that means nothing; `message` says what is accepted.
struct ReportError {
    QString message;
    bool operator==(const ReportError &) const = default;
};

// Inclusive local calendar days; both absent for `all`.
struct ReportRange {
    std::optional<QDate> from;
    std::optional<QDate> to;

    // `today` (default for an empty text), `yesterday`, `week`, `last-week`, `month`,
    // `last-month`, `all`, a date YYYY-MM-DD or FROM..TO. Weeks start on `firstDay`. Throws
    // ReportError.
    static ReportRange parse(const QString &text, QDate today, Qt::DayOfWeek firstDay);
    // The instants of the first day's start and the day after the last one's start; none for
    // `all`.
    std::optional<Instant> start() const;
    std::optional<Instant> end() const;
    bool operator==(const ReportRange &) const = default;
};

struct Report {
    // Ranges up to this many days get a column per day.
    static constexpr qint64 maxDayColumns = 31;

    struct Row {
        QUuid id;
        QString name; // " (deleted)" appended for a deleted timer
        QList<double> perDay;
        double total = 0;
        bool operator==(const Row &) const = default;
    };
    QString title;      // the range in words
    QList<QDate> days;  // the day columns; empty for one day, `all` and long ranges
    QList<Row> rows;    // timers with anything recorded in the range, in the order they were first recorded
    QList<double> dayTotals;
    double total = 0;

    // Runs still open count until `now`.
    static Report build(const ReportRange &range, const QList<History::Interval> &intervals,
                        const QList<History::Adjustment> &adjustments, const QList<History::Timer> &timers,
                        Instant now);
    // One line per timer (name, a cell per day as h:mm, the total as hh:mm:ss), then the total.
    QString text() const;
    bool operator==(const Report &) const = default;
};

enum class ExportFormat { csv, json };

// Every interval overlapping the range and every adjustment in it, oldest first: CSV with the
// header timer_id,timer,start,end,seconds,kind (RFC 4180, CRLF) or a JSON array of objects with
// those fields. Instants in ISO 8601 with the local offset; an open run has no end and counts
// until `now`.
QByteArray exportHistory(ExportFormat format, const QList<History::Interval> &intervals,
                         const QList<History::Adjustment> &adjustments, const QList<History::Timer> &timers,
                         Instant now);

// Instants as "2026-11-25T09:00:00+01:00": whole seconds, local time with its offset. Local time
// through QDateTime asks the C library, which looks at the zone file again at every call; this
// reads the system's zone once and keeps each offset for as long as the zone keeps it, so an
// export of years of runs does not look hundreds of thousands of times.
class LocalIso {
public:
    QString operator()(Instant instant);

private:
    QTimeZone zone_ = QTimeZone::systemTimeZone();
    int64_t from_ = 1, to_ = 0; // the stretch [from_, to_) in seconds that offset_ holds for
    int offset_ = 0;
};

// "h:mm:ss" with at least two digits of hours, a leading "-" when negative; whole seconds.
QString reportDuration(double seconds);

} // namespace tock

#include "report.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tock {

namespace {

QString rangeWords()
{
    return QStringLiteral("use today, yesterday, week, last-week, month, last-month, all, a date YYYY-MM-DD "
                          "or FROM..TO");
}

std::optional<QDate> parseDate(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})$"));
    const QRegularExpressionMatch m = pattern.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const QDate date(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    if (!date.isValid())
        throw ReportError{QStringLiteral("no such date: ") + text};
    return date;
}

Instant startOf(QDate day)
{
    return double(day.startOfDay().toMSecsSinceEpoch()) / 1000.0;
}

// Whole seconds, rounding away the last bits of floating-point sums.
int64_t wholeSeconds(double seconds)
{
    return int64_t(std::floor(seconds + 1e-6));
}

QString dayCell(double seconds)
{
    const int64_t s = wholeSeconds(seconds);
    if (s == 0)
        return QStringLiteral("-");
    const int64_t a = s < 0 ? -s : s;
    return QStringLiteral("%1%2:%3").arg(s < 0 ? QStringLiteral("-") : QString()).arg(a / 3600).arg(a / 60 % 60, 2, 10, QLatin1Char('0'));
}

QString padLeft(const QString &text, qsizetype width)
{
    return QString(std::max<qsizetype>(0, width - text.size()), QLatin1Char(' ')) + text;
}

QString padRight(const QString &text, qsizetype width)
{
    return text + QString(std::max<qsizetype>(0, width - text.size()), QLatin1Char(' '));
}

QString elided(const QString &text, qsizetype width)
{
    return text.size() <= width ? text : text.left(width - 1) + QChar(0x2026);
}

QString csvField(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) && !text.contains(QLatin1Char('\n'))
        && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString jsonString(const QString &text)
{
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '"': out += QLatin1String("\\\""); break;
        case '\\': out += QLatin1String("\\\\"); break;
        case '\n': out += QLatin1String("\\n"); break;
        case '\r': out += QLatin1String("\\r"); break;
        case '\t': out += QLatin1String("\\t"); break;
        default:
            if (c.unicode() < 0x20)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    return out + QLatin1Char('"');
}

// Seconds with at most three decimals and no trailing zeros.
QString number(double seconds)
{
    QString text = QString::number(std::round(seconds * 1000) / 1000, 'f', 3);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

} // namespace

ReportRange ReportRange::parse(const QString &text, QDate today, Qt::DayOfWeek firstDay)
{
    const QString word = text.trimmed().toLower();
    const QDate weekStart = today.addDays(-((today.dayOfWeek() - int(firstDay) + 7) % 7));
    const QDate monthStart(today.year(), today.month(), 1);
    if (word.isEmpty() || word == QLatin1String("today"))
        return {today, today};
    if (word == QLatin1String("yesterday"))
        return {today.addDays(-1), today.addDays(-1)};
    if (word == QLatin1String("week"))
        return {weekStart, weekStart.addDays(6)};
    if (word == QLatin1String("last-week"))
        return {weekStart.addDays(-7), weekStart.addDays(-1)};
    if (word == QLatin1String("month"))
        return {monthStart, monthStart.addMonths(1).addDays(-1)};
    if (word == QLatin1String("last-month"))
        return {monthStart.addMonths(-1), monthStart.addDays(-1)};
    if (word == QLatin1String("all"))
        return {};
    if (const std::optional<QDate> day = parseDate(word))
        return {*day, *day};
    const qsizetype dots = word.indexOf(QLatin1String(".."));
    if (dots > 0) {
        const std::optional<QDate> from = parseDate(word.left(dots));
        const std::optional<QDate> to = parseDate(word.mid(dots + 2));
        if (from && to) {
            if (*to < *from)
                throw ReportError{QStringLiteral("the range ends before it starts: ") + text.trimmed()};
            return {*from, *to};
        }
    }
    throw ReportError{QStringLiteral("unknown range \u201C%1\u201D: %2").arg(text.trimmed(), rangeWords())};
}

std::optional<Instant> ReportRange::start() const
{
    return from ? std::optional<Instant>(startOf(*from)) : std::nullopt;
}

std::optional<Instant> ReportRange::end() const
{
    return to ? std::optional<Instant>(startOf(to->addDays(1))) : std::nullopt;
}

Report Report::build(const ReportRange &range, const QList<History::Interval> &intervals,
                     const QList<History::Adjustment> &adjustments, const QList<History::Timer> &timers,
                     Instant now)
{
    Report report;
    const QLocale c = QLocale::c();
    if (!range.from) {
        report.title = QStringLiteral("All recorded time");
    } else if (range.from == range.to) {
        report.title = c.toString(*range.from, QStringLiteral("dddd yyyy-MM-dd"));
    } else {
        report.title = c.toString(*range.from, QStringLiteral("ddd yyyy-MM-dd")) + QStringLiteral(" to ")
                     + c.toString(*range.to, QStringLiteral("ddd yyyy-MM-dd"));
        const qint64 count = range.from->daysTo(*range.to) + 1;
        if (count <= maxDayColumns) {
            for (qint64 i = 0; i < count; ++i)
                report.days.append(range.from->addDays(i));
        }
    }
    // Where each column begins, and where the last one ends. Without columns, one bucket.
    QList<Instant> bounds;
    for (const QDate &day : std::as_const(report.days))
        bounds.append(startOf(day));
    if (!report.days.isEmpty())
        bounds.append(startOf(report.days.last().addDays(1)));
    const qsizetype columns = std::max<qsizetype>(1, report.days.size());
    const Instant lo = range.start().value_or(-1e300);
    const Instant hi = range.end().value_or(1e300);

    QHash<QUuid, qsizetype> rowOf;
    QHash<QUuid, History::Timer> known;
    for (const History::Timer &t : timers)
        known.insert(t.id, t);
    const auto row = [&](const QUuid &id) -> Row & {
        auto it = rowOf.constFind(id);
        if (it == rowOf.constEnd()) {
            const History::Timer t = known.value(id, History::Timer{id, QString(), false});
            QString name = t.name.isEmpty() ? TimerItem::untitled() : t.name;
            if (t.deleted)
                name += QStringLiteral(" (deleted)");
            report.rows.append({id, name, QList<double>(columns, 0.0), 0});
            it = rowOf.insert(id, report.rows.size() - 1);
        }
        return report.rows[*it];
    };
    const auto column = [&](Instant at) -> qsizetype {
        if (bounds.isEmpty())
            return 0;
        return std::clamp<qsizetype>(std::upper_bound(bounds.cbegin(), bounds.cend(), at) - bounds.cbegin() - 1, 0,
                                     columns - 1);
    };

    for (const History::Interval &interval : intervals) {
        const Instant start = std::max(interval.start, lo);
        const Instant end = std::min(interval.end.value_or(std::max(now, interval.start)), hi);
        if (end <= start)
            continue;
        Row &r = row(interval.timer);
        // Split at every day boundary the run crosses.
        for (qsizetype col = column(start); col < columns; ++col) {
            const Instant from = std::max(start, bounds.isEmpty() ? start : bounds.at(col));
            const Instant to = bounds.isEmpty() ? end : std::min(end, bounds.at(col + 1));
            if (to <= from)
                break;
            r.perDay[col] += to - from;
        }
        r.total += end - start;
    }
    for (const History::Adjustment &a : adjustments) {
        if (a.at < lo || a.at >= hi)
            continue;
        Row &r = row(a.timer);
        r.perDay[column(a.at)] += a.seconds;
        r.total += a.seconds;
    }
    // In the order the timers were first recorded.
    QHash<QUuid, qsizetype> order;
    for (qsizetype i = 0; i < timers.size(); ++i)
        order.insert(timers.at(i).id, i);
    std::stable_sort(report.rows.begin(), report.rows.end(), [&](const Row &a, const Row &b) {
        return order.value(a.id, timers.size()) < order.value(b.id, timers.size());
    });
    report.dayTotals = QList<double>(columns, 0.0);
    for (const Row &r : std::as_const(report.rows)) {
        for (qsizetype i = 0; i < columns; ++i)
            report.dayTotals[i] += r.perDay.at(i);
        report.total += r.total;
    }
    if (report.days.isEmpty())
        report.dayTotals.clear();
    if (report.days.isEmpty()) {
        for (Row &r : report.rows)
            r.perDay.clear();
    }
    return report;
}

QString Report::text() const
{
    const QLocale c = QLocale::c();
    constexpr qsizetype cell = 6;
    constexpr qsizetype totalWidth = 10;
    // A week's seven columns and the total leave this much of 80 columns for the names.
    const qsizetype nameLimit = days.isEmpty() ? 40 : std::max<qsizetype>(12, 79 - days.size() * cell - totalWidth);
    qsizetype nameWidth = 5;
    for (const Row &r : rows)
        nameWidth = std::max(nameWidth, std::min(r.name.size(), nameLimit));

    QString out = title + QLatin1Char('\n');
    if (rows.isEmpty())
        return out + QStringLiteral("nothing recorded\n");
    if (!days.isEmpty()) {
        QString header = QString(nameWidth, QLatin1Char(' '));
        for (const QDate &day : days)
            header += padLeft(c.toString(day, QStringLiteral("ddd")).left(2) + QString::number(day.day()), cell);
        out += header + padLeft(QStringLiteral("total"), totalWidth) + QLatin1Char('\n');
    }
    const auto line = [&](const QString &name, const QList<double> &perDay, double sum) {
        QString text = padRight(elided(name, nameWidth), nameWidth);
        for (const double seconds : perDay)
            text += QLatin1Char(' ') + padLeft(dayCell(seconds), cell - 1); // never run into the last one
        text += padLeft(reportDuration(sum), totalWidth);
        out += text + QLatin1Char('\n');
    };
    for (const Row &r : rows)
        line(r.name, r.perDay, r.total);
    line(QStringLiteral("Total"), dayTotals, total);
    return out;
}

QString reportDuration(double seconds)
{
    const int64_t s = wholeSeconds(seconds);
    const int64_t a = s < 0 ? -s : s;
    return QStringLiteral("%1%2:%3:%4")
        .arg(s < 0 ? QStringLiteral("-") : QString())
        .arg(a / 3600, 2, 10, QLatin1Char('0'))
        .arg(a / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(a % 60, 2, 10, QLatin1Char('0'));
}

QString LocalIso::operator()(Instant instant)
{
    const int64_t secs = int64_t(std::floor(instant));
    if (secs < from_ || secs >= to_) {
        const QDateTime at = QDateTime::fromSecsSinceEpoch(secs, QTimeZone::utc());
        if (!zone_.isValid()) {
            // A zone Qt cannot read: the C library's answer for this instant alone.
            offset_ = QDateTime::fromSecsSinceEpoch(secs).offsetFromUtc();
            from_ = to_ = secs;
            ++to_;
        } else {
            offset_ = zone_.offsetFromUtc(at);
            const QTimeZone::OffsetData before = zone_.previousTransition(at.addSecs(1));
            const QTimeZone::OffsetData after = zone_.nextTransition(at);
            from_ = before.atUtc.isValid() ? before.atUtc.toSecsSinceEpoch() : std::numeric_limits<int64_t>::min();
            to_ = after.atUtc.isValid() ? after.atUtc.toSecsSinceEpoch() : std::numeric_limits<int64_t>::max();
        }
    }
    const int64_t local = secs + offset_;
    const int64_t days = local >= 0 ? local / 86400 : -((-local + 86399) / 86400);
    const int64_t second = local - days * 86400;
    const QDate date = QDate::fromJulianDay(2440588 + days); // 1970-01-01
    const int a = std::abs(offset_);
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02d:%02d", date.year(), date.month(), date.day(),
                  int(second / 3600), int(second / 60 % 60), int(second % 60), offset_ < 0 ? '-' : '+', a / 3600,
                  a / 60 % 60);
    return QString::fromLatin1(text);
}

QByteArray exportHistory(ExportFormat format, const QList<History::Interval> &intervals,
                         const QList<History::Adjustment> &adjustments, const QList<History::Timer> &timers,
                         Instant now)
{
    struct Line {
        Instant at;
        QUuid timer;
        QString start, end, seconds, kind;
        bool open = false;
    };
    QList<Line> lines;
    lines.reserve(intervals.size() + adjustments.size());
    LocalIso isoLocal;
    for (const History::Interval &i : intervals) {
        const Instant end = i.end.value_or(std::max(now, i.start));
        lines.append({i.start, i.timer, isoLocal(i.start), i.end ? isoLocal(*i.end) : QString(), number(end - i.start),
                      QStringLiteral("interval"), !i.end});
    }
    for (const History::Adjustment &a : adjustments)
        lines.append({a.at, a.timer, isoLocal(a.at), isoLocal(a.at), number(a.seconds), QStringLiteral("adjustment")});
    std::stable_sort(lines.begin(), lines.end(), [](const Line &a, const Line &b) { return a.at < b.at; });

    QHash<QUuid, QString> names;
    for (const History::Timer &t : timers)
        names.insert(t.id, t.name);
    QString out;
    if (format == ExportFormat::csv) {
        out = QStringLiteral("timer_id,timer,start,end,seconds,kind\r\n");
        for (const Line &l : std::as_const(lines)) {
            out += QString::fromLatin1(l.timer.toByteArray(QUuid::WithoutBraces).toUpper()) + QLatin1Char(',')
                 + csvField(names.value(l.timer)) + QLatin1Char(',') + l.start + QLatin1Char(',') + l.end
                 + QLatin1Char(',') + l.seconds + QLatin1Char(',') + l.kind + QStringLiteral("\r\n");
        }
        return out.toUtf8();
    }
    out = QStringLiteral("[");
    for (qsizetype n = 0; n < lines.size(); ++n) {
        const Line &l = lines.at(n);
        out += (n ? QStringLiteral(",\n  ") : QStringLiteral("\n  "));
        out += QStringLiteral("{\"timer_id\": \"%1\", \"timer\": %2, \"start\": \"%3\", \"end\": %4, \"seconds\": %5, "
                              "\"kind\": \"%6\"}")
                   .arg(QString::fromLatin1(l.timer.toByteArray(QUuid::WithoutBraces).toUpper()),
                        jsonString(names.value(l.timer)), l.start,
                        l.open ? QStringLiteral("null") : QLatin1Char('"') + l.end + QLatin1Char('"'), l.seconds, l.kind);
    }
    out += lines.isEmpty() ? QStringLiteral("]\n") : QStringLiteral("\n]\n");
    return out.toUtf8();
}

} // namespace tock

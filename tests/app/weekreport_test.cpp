// The window's week: where a week starts for each first day, a run still open counting up to
// now (and only then growing), and the read from history.db taking only what touches the week.
// The split into local days is the terminal report's (history_test). Local time is Berlin's.
#include "history.h"
#include "table.h"
#include "zone.h"
#include "weekreport.h"

#include <QtTest>

using namespace tock;
Q_DECLARE_METATYPE(Qt::DayOfWeek)

namespace {

Instant at(const QString &local)
{
    return double(QDateTime::fromString(local, Qt::ISODate).toSecsSinceEpoch());
}

const QUuid a = QUuid::fromString(QStringLiteral("{00000000-0000-0000-0000-00000000000a}"));
const QUuid b = QUuid::fromString(QStringLiteral("{00000000-0000-0000-0000-00000000000b}"));

} // namespace

class WeekReportTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void weekStartsOnTheLocalesDay_data()
    {
        table<QDate, Qt::DayOfWeek, QDate>({"day", "firstDay", "start"}, {
            {QDate(2026, 11, 25), Qt::Monday, QDate(2026, 11, 23)},
            {QDate(2026, 11, 25), Qt::Sunday, QDate(2026, 11, 22)},
            {QDate(2026, 11, 23), Qt::Monday, QDate(2026, 11, 23)},
            {QDate(2026, 11, 22), Qt::Monday, QDate(2026, 11, 16)},
        });
    }
    void weekStartsOnTheLocalesDay()
    {
        QFETCH(QDate, day);
        QFETCH(Qt::DayOfWeek, firstDay);
        QTEST(WeekReport::weekStart(day, firstDay), "start");
    }

    // Each row: one run of timer a left open, now, and the seconds expected on each day of the
    // week and whether the figures still grow.
    void runsAreSplitByLocalDays_data()
    {
        table<QString, QDate, QString, QString, QList<double>, bool>(
            {"what", "week", "from", "now", "perDay", "live"}, {
                {"running, counted to now", QDate(2026, 11, 23), "2026-11-27T09:00:00",
                 "2026-11-27T10:00:00", {0, 0, 0, 0, 3600, 0, 0}, true},
                {"running since last week", QDate(2026, 11, 23), "2026-11-22T23:00:00",
                 "2026-11-23T01:00:00", {3600, 0, 0, 0, 0, 0, 0}, true},
                {"a past week with a run still open", QDate(2026, 11, 16), "2026-11-22T23:00:00",
                 "2026-11-25T10:00:00", {0, 0, 0, 0, 0, 0, 3600}, false},
            });
    }
    void runsAreSplitByLocalDays()
    {
        QFETCH(QDate, week);
        QFETCH(QString, from);
        QFETCH(QString, now);
        QFETCH(QList<double>, perDay);
        QFETCH(bool, live);
        const History::Interval run{a, at(from), std::nullopt};
        const WeekReport r = WeekReport::build(WeekHistory{week, {run}, {}, {{a, QStringLiteral("A"), false}}}, at(now));
        QCOMPARE(r.days.size(), 7);
        QCOMPARE(r.days.first(), week);
        QCOMPARE(r.rows.size(), 1);
        QCOMPARE(r.rows.first().perDay, perDay);
        QCOMPARE(r.dayTotals, perDay);
        QCOMPARE(r.live, live);
    }

    void readsOnlyTheWeek()
    {
        History history(QStringLiteral(":memory:"), History::Access::write);
        history.transaction([&] {
            history.setTimer(a, QStringLiteral("Focus"), false);
            history.setTimer(b, QStringLiteral("Email"), false);
            history.openInterval(b, at(QStringLiteral("2026-11-20T10:00:00"))); // the week before
            history.closeInterval(b, at(QStringLiteral("2026-11-20T11:00:00")));
            history.openInterval(a, at(QStringLiteral("2026-11-22T23:00:00"))); // into Monday
            history.closeInterval(a, at(QStringLiteral("2026-11-23T01:00:00")));
            history.addAdjustment(a, at(QStringLiteral("2026-11-24T12:00:00")), 900);
            history.openInterval(b, at(QStringLiteral("2026-11-30T08:00:00"))); // the week after
            history.closeInterval(b, at(QStringLiteral("2026-11-30T09:00:00")));
        });
        const WeekHistory week = WeekHistory::read(history, QDate(2026, 11, 23));
        QCOMPARE(week.intervals.size(), 1);
        QCOMPARE(week.adjustments.size(), 1);
        const WeekReport r = WeekReport::build(week, at(QStringLiteral("2026-11-30T12:00:00")));
        QCOMPARE(r.rows.size(), 1);
        QCOMPARE(r.rows.first().name, QStringLiteral("Focus"));
        QCOMPARE(r.rows.first().perDay, (QList<double>{3600, 900, 0, 0, 0, 0, 0}));
        QCOMPARE(r.total, 4500.0);
        QCOMPARE(r.title(), QStringLiteral("Nov 23 \u2013 29, 2026"));
        QCOMPARE(WeekReport::empty(QDate(2026, 11, 30)).title(), QStringLiteral("Nov 30 \u2013 Dec 6, 2026"));
        QCOMPARE(WeekReport::empty(QDate(2026, 12, 28)).title(), QStringLiteral("Dec 28, 2026 \u2013 Jan 3, 2027"));
    }
};

TOCK_TEST_MAIN_IN_ZONE(WeekReportTest, QCoreApplication, "Europe/Berlin")

#include "weekreport_test.moc"

// The history database and the reports made from it. Runs in Europe/Berlin (set below, before
// anything reads the zone), so days of 23 and 25 hours occur on the dates below.
#include "history.h"
#include "report.h"
#include "table.h"
#include "zone.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace tock;

namespace {

// Local wall-clock time in the test's zone.
Instant at(const char *localTime)
{
    return double(QDateTime::fromString(QLatin1String(localTime), Qt::ISODate).toMSecsSinceEpoch()) / 1000.0;
}

const QUuid focus = QUuid::createUuidV5(QUuid(), QStringLiteral("focus"));
const QUuid email = QUuid::createUuidV5(QUuid(), QStringLiteral("email"));

QList<History::Timer> twoTimers()
{
    return {{focus, QStringLiteral("Focus"), false}, {email, QStringLiteral("Email, \"inbox\""), true}};
}

} // namespace

class HistoryTest : public QObject {
    Q_OBJECT
private slots:
    void storesAndReadsBesideTheWriter()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(History::fileName());
        History writer(path, History::Access::write);
        writer.transaction([&] {
            writer.setTimer(focus, QStringLiteral("Focus"), false);
            writer.openInterval(focus, 100);
            writer.addAdjustment(focus, 150, -30);
        });
        History reader(path, History::Access::read);
        QCOMPARE(reader.intervals(), (QList<History::Interval>{{focus, 100, std::nullopt}}));
        writer.transaction([&] { writer.closeInterval(focus, 90); }); // never before its start
        QCOMPARE(reader.intervals(), (QList<History::Interval>{{focus, 100, 100}}));
        QCOMPARE(reader.adjustments(0, 150), QList<History::Adjustment>{});
        QCOMPARE(reader.adjustments(150, 151), (QList<History::Adjustment>{{focus, 150, -30}}));
        QCOMPARE(reader.timers(), (QList<History::Timer>{{focus, QStringLiteral("Focus"), false}}));
        QCOMPARE(reader.firstInstant(), std::optional<Instant>(100));
        reader.quickCheck();
        // Private to its owner, and made so when an older copy left it readable by others.
        const QFileDevice::Permissions own = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
        QCOMPARE(QFile::permissions(path) & ~(QFileDevice::ReadUser | QFileDevice::WriteUser), own);
        QVERIFY(QFile::setPermissions(path, own | QFileDevice::ReadGroup | QFileDevice::ReadOther));
        History again(path, History::Access::write);
        QCOMPARE(QFile::permissions(path) & ~(QFileDevice::ReadUser | QFileDevice::WriteUser), own);
    }

    void aFailedTransactionLeavesNothing()
    {
        QTemporaryDir dir;
        History history(dir.filePath(History::fileName()), History::Access::write);
        QVERIFY_THROWS_EXCEPTION(int, history.transaction([&] {
            history.openInterval(focus, 1);
            throw 7;
        }));
        QCOMPARE(history.intervals().size(), 0);
        QCOMPARE(history.timers().size(), 0);
    }

    void versionsAndDamage()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(History::fileName());
        { History(path, History::Access::write); }
        { History(path, History::Access::write); } // opening again migrates nothing
        // A newer program's file is not ours to write.
        {
            History h(path, History::Access::write);
            h.transaction([&] { h.setTimer(focus, QStringLiteral("x"), false); });
        }
        QFile raw(path);
        QVERIFY(raw.open(QIODevice::ReadWrite));
        raw.seek(60); // the header's user_version field
        raw.write(QByteArray("\x00\x00\x00\x09", 4));
        raw.close();
        try {
            History h(path, History::Access::write);
            QFAIL("a newer schema was accepted");
        } catch (const HistoryError &e) {
            QVERIFY(e.damaged);
            QCOMPARE(e.message, QStringLiteral("history.db was written by a newer version of Tock"));
        }
        const QString moved = History::setAside(dir.path(), QStringLiteral("2026-11-25T09-00-00-000"));
        QCOMPARE(moved, dir.filePath(QStringLiteral("Damaged/2026-11-25T09-00-00-000-history.db")));
        QVERIFY(QFile::exists(moved) && !QFile::exists(path));
    }

    void ranges_data()
    {
        // Wednesday 25 November 2026; weeks from Monday unless said.
        tock::table<QString, int, QString, QString>(
            {"text", "firstDay", "from", "to"},
            {
                {"", 1, "2026-11-25", "2026-11-25"},
                {"today", 1, "2026-11-25", "2026-11-25"},
                {" Yesterday ", 1, "2026-11-24", "2026-11-24"},
                {"week", 1, "2026-11-23", "2026-11-29"},
                {"week", 7, "2026-11-22", "2026-11-28"},
                {"week", 3, "2026-11-25", "2026-12-01"},
                {"last-week", 1, "2026-11-16", "2026-11-22"},
                {"month", 1, "2026-11-01", "2026-11-30"},
                {"last-month", 1, "2026-10-01", "2026-10-31"},
                {"all", 1, "", ""},
                {"2024-02-29", 1, "2024-02-29", "2024-02-29"},
                {"2026-12-30..2027-01-02", 1, "2026-12-30", "2027-01-02"},
                {"fortnight", 1, "unknown range \u201Cfortnight\u201D: use today, yesterday, week, last-week, month, "
                                 "last-month, all, a date YYYY-MM-DD or FROM..TO", ""},
                {"2026-02-29", 1, "no such date: 2026-02-29", ""},
                {"2026-11-25..2026-11-13", 1, "the range ends before it starts: 2026-11-25..2026-11-13", ""},
            });
    }
    void ranges()
    {
        QFETCH(QString, text);
        QFETCH(int, firstDay);
        QFETCH(QString, from);
        QFETCH(QString, to);
        const QDate today(2026, 11, 25);
        try {
            const ReportRange r = ReportRange::parse(text, today, Qt::DayOfWeek(firstDay));
            QCOMPARE(r.from ? r.from->toString(Qt::ISODate) : QString(), from);
            QCOMPARE(r.to ? r.to->toString(Qt::ISODate) : QString(), to);
        } catch (const ReportError &e) {
            QCOMPARE(e.message, from);
        }
    }

    void daysSplitAtLocalMidnight_data()
    {
        // One run of Focus; the seconds it gives each day of the range (the last column is the
        // total). Both days of daylight-saving change hold their real length.
        tock::table<QString, QString, QString, QString, QList<double>>(
            {"name", "range", "start", "end", "perDay"},
            {
                {"across midnight", "2026-11-24..2026-11-26", "2026-11-24T23:30:00", "2026-11-25T00:45:00",
                 {1800, 2700, 0, 4500}},
                {"clipped by the range", "2026-11-25..2026-11-26", "2026-11-24T23:30:00", "2026-11-25T00:45:00",
                 {2700, 0, 2700}},
                {"spring forward: a 23 h day", "2026-03-28..2026-03-30", "2026-03-28T12:00:00",
                 "2026-03-30T12:00:00", {43200, 82800, 43200, 169200}},
                {"fall back: a 25 h day", "2026-10-24..2026-10-26", "2026-10-24T12:00:00", "2026-10-26T12:00:00",
                 {43200, 90000, 43200, 176400}},
                {"over the repeated hour", "2026-10-25..2026-10-26", "2026-10-25T01:30:00", "2026-10-25T03:30:00",
                 {10800, 0, 10800}},
            });
    }
    void daysSplitAtLocalMidnight()
    {
        QFETCH(QString, range);
        QFETCH(QString, start);
        QFETCH(QString, end);
        QFETCH(QList<double>, perDay);
        const ReportRange r = ReportRange::parse(range, QDate(2026, 11, 25), Qt::Monday);
        const Report report = Report::build(r, {{focus, at(qPrintable(start)), at(qPrintable(end))}}, {}, twoTimers(), 0);
        QCOMPARE(report.rows.size(), 1);
        QList<double> got = report.rows.first().perDay;
        got << report.rows.first().total;
        QCOMPARE(got, perDay);
        QCOMPARE(report.total, perDay.last());
    }

    void reportText()
    {
        const ReportRange week = ReportRange::parse(QStringLiteral("week"), QDate(2026, 11, 25), Qt::Monday);
        const QList<History::Interval> intervals{
            {focus, at("2026-11-23T09:00:00"), at("2026-11-23T10:30:00")},
            {email, at("2026-11-25T08:00:00"), at("2026-11-25T08:20:02")},
            {focus, at("2026-11-25T11:00:00"), std::nullopt}, // still running: counts until now
        };
        const QList<History::Adjustment> adjustments{{focus, at("2026-11-24T12:00:00"), 900},
                                                     {focus, at("2026-11-30T00:00:00"), 60}}; // after the week
        QList<History::Timer> timers = twoTimers();
        timers[1].name += QStringLiteral(" and a long tail"); // cut to leave the week its 80 columns
        const Report report = Report::build(week, intervals, adjustments, timers, at("2026-11-25T11:10:00"));
        const QString expected = QStringLiteral(
            "Mon 2026-11-23 to Sun 2026-11-29\n"
            "                             Mo23  Tu24  We25  Th26  Fr27  Sa28  Su29     total\n"
            "Focus                        1:30  0:15  0:10     -     -     -     -  01:55:00\n"
            "Email, \"inbox\" and a long …     -     -  0:20     -     -     -     -  00:20:02\n"
            "Total                        1:30  0:15  0:30     -     -     -     -  02:15:02\n");
        QCOMPARE(report.text(), expected);
        for (const QString &line : report.text().split(QLatin1Char('\n')))
            QVERIFY(line.size() <= 80);
        const Report nothing = Report::build(ReportRange::parse({}, QDate(2026, 11, 25), Qt::Monday), {}, {}, {}, 0);
        QCOMPARE(nothing.text(), QStringLiteral("Wednesday 2026-11-25\nnothing recorded\n"));
        // A day that an edit made longer than 99 hours stays apart from the day before it.
        const Report heavy = Report::build(week, {}, {{focus, at("2026-11-24T12:00:00"), 150 * 3600.0}}, timers, 0);
        QVERIFY(heavy.text().contains(QStringLiteral("     - 150:00     -")));
    }

    // Instants in local time with their offset, on both sides of each daylight-saving change.
    void isoLocalFollowsTheChanges_data()
    {
        table<QString, qint64, QString>({"what", "utc", "local"}, {
            {"before the clocks go forward", 1774745999, "2026-03-29T01:59:59+01:00"},
            {"after the clocks go forward", 1774746000, "2026-03-29T03:00:00+02:00"},
            {"the first 2:30 in autumn", 1792888200, "2026-10-25T02:30:00+02:00"},
            {"the second 2:30 in autumn", 1792891800, "2026-10-25T02:30:00+01:00"},
            {"before 1970", -3600, "1970-01-01T00:00:00+01:00"},
        });
    }
    void isoLocalFollowsTheChanges()
    {
        QFETCH(qint64, utc);
        QFETCH(QString, local);
        QCOMPARE(LocalIso()(double(utc)), local);
        QCOMPARE(LocalIso()(double(utc) + 0.75), local);
        // One formatter across all rows, as an export uses it: the offset it keeps from the
        // last row must not leak across a change, forwards or back.
        static LocalIso shared;
        QCOMPARE(shared(double(utc)), local);
    }

    void exports()
    {
        const QList<History::Interval> intervals{{focus, at("2026-11-25T09:00:00"), at("2026-11-25T09:00:02.500")},
                                                 {email, at("2026-11-25T09:30:00"), std::nullopt}};
        const QList<History::Adjustment> adjustments{{focus, at("2026-11-25T09:10:00"), 900}};
        const Instant now = at("2026-11-25T09:30:10");
        const QString f = focus.toString(QUuid::WithoutBraces).toUpper();
        const QString e = email.toString(QUuid::WithoutBraces).toUpper();
        QCOMPARE(QString::fromUtf8(exportHistory(ExportFormat::csv, intervals, adjustments, twoTimers(), now)),
                 QStringLiteral("timer_id,timer,start,end,seconds,kind\r\n"
                                "%1,Focus,2026-11-25T09:00:00+01:00,2026-11-25T09:00:02+01:00,2.5,interval\r\n"
                                "%1,Focus,2026-11-25T09:10:00+01:00,2026-11-25T09:10:00+01:00,900,adjustment\r\n"
                                "%2,\"Email, \"\"inbox\"\"\",2026-11-25T09:30:00+01:00,,10,interval\r\n")
                     .arg(f, e));
        QCOMPARE(QString::fromUtf8(exportHistory(ExportFormat::json, intervals.mid(1), {}, twoTimers(), now)),
                 QStringLiteral("[\n  {\"timer_id\": \"%1\", \"timer\": \"Email, \\\"inbox\\\"\", \"start\": "
                                "\"2026-11-25T09:30:00+01:00\", \"end\": null, \"seconds\": 10, \"kind\": \"interval\"}\n]\n")
                     .arg(e));
        QCOMPARE(exportHistory(ExportFormat::json, {}, {}, {}, now), QByteArray("[]\n"));
        QCOMPARE(LocalIso()(at("2026-07-01T12:00:00")), QStringLiteral("2026-07-01T12:00:00+02:00"));
    }
};

TOCK_TEST_MAIN_IN_ZONE(HistoryTest, QCoreApplication, "Europe/Berlin")

#include "history_test.moc"

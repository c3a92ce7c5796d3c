#include "shelltime.h"
#include "shellprint.h"

#include <QTest>

using namespace tock;

namespace {
const QString tooLong = QStringLiteral("too long: the most is 999:59:59");
}

class ShellTimeTest : public QObject {
    Q_OBJECT
private slots:
    void accepted_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<ShellTime>("time");
        const auto abs = ShellTime::absolute;
        const auto rel = ShellTime::relative;
        QTest::newRow("h:mm:ss") << "1:30:00" << abs(5400);
        QTest::newRow("zero") << "0" << abs(0);
        QTest::newRow("minus zero") << "-0" << rel(0);
        QTest::newRow("bare seconds") << "90" << abs(90);
        QTest::newRow("m:ss leftmost unbounded") << "90:00" << abs(5400);
        QTest::newRow("h:mm:ss hours unbounded") << "100:00:00" << abs(360000);
        QTest::newRow("d:hh:mm:ss") << "1:00:00:00" << abs(86400);
        QTest::newRow("days unbounded") << "41:15:00:00" << abs(3596400);
        QTest::newRow("d:hh:mm:ss limits") << "0:23:59:59" << abs(86399);
        QTest::newRow("single-digit pieces") << "0:0" << abs(0);
        QTest::newRow("the most") << "999:59:59" << abs(3599999);
        QTest::newRow("the most relative") << "-999:59:59" << rel(-3599999);
        QTest::newRow("the most in seconds") << "3599999" << abs(3599999);
        QTest::newRow("plus minutes") << "+15m" << rel(900);
        QTest::newRow("minus minutes") << "-5m" << rel(-300);
        QTest::newRow("upper-case units") << "+1H30M" << rel(5400);
        QTest::newRow("every unit") << "1d2h3m4s" << abs(86400 + 7200 + 180 + 4);
        QTest::newRow("any order") << "30m1h" << abs(5400);
        QTest::newRow("repeated unit") << "1m1m" << abs(120);
        QTest::newRow("minutes beyond 59") << "90m" << abs(5400);
        QTest::newRow("unit form at the most") << "999h59m59s" << abs(3599999);
    }
    void accepted()
    {
        QFETCH(QString, word);
        QFETCH(ShellTime, time);
        QCOMPARE(parseTime(word), time);
    }

    void refused_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("message");
        const auto notATime = [](const QString &w) { return QStringLiteral("not a time: ") + w; };
        const auto row = [&](const char *tag, const QString &word, const QString &message) {
            QTest::newRow(tag) << word << message;
        };
        row("seconds 60", "5:60", notATime("5:60"));
        row("minutes 60", "1:60:00", notATime("1:60:00"));
        row("hours 24 with days", "1:24:00:00", notATime("1:24:00:00"));
        row("five pieces", "1:2:3:4:5", notATime("1:2:3:4:5"));
        row("empty leftmost", ":30", notATime(":30"));
        row("empty pieces", "1::", notATime("1::"));
        row("unit in colon form", "1:30m", notATime("1:30m"));
        row("sign alone", "+", notATime("+"));
        row("minus alone", "-", notATime("-"));
        row("empty", "", QStringLiteral("not a time: "));
        row("two signs", "+-5m", notATime("+-5m"));
        row("inner sign", "1h-5m", notATime("1h-5m"));
        row("digits without unit", "1h30", notATime("1h30"));
        row("unit without number", "h", notATime("h"));
        row("unit first", "m5", notATime("m5"));
        row("unknown unit", "1w", notATime("1w"));
        row("decimal point", "1.5h", notATime("1.5h"));
        row("arabic-indic digits", u8"٣٠", notATime(u8"٣٠"));
        row("digit with accent", u8"1\u0301h", notATime(u8"1\u0301h"));
        row("unit with accent", u8"1h\u0301", notATime(u8"1h\u0301"));
        row("colon overflow is not a time", "99999999999999999999:00",
            notATime("99999999999999999999:00"));
        row("over the most", "1000:00:00", tooLong);
        row("over the most in seconds", "3600000", tooLong);
        row("over the most in units", "1000h", tooLong);
        row("bare overflow", "99999999999999999999", tooLong);
        row("unit number overflow", "99999999999999999999h", tooLong);
        row("unit product overflow", "9223372036854775807d", tooLong);
        row("unit sum overflow", "9223372036854775807s1s", tooLong);
        row("colon product overflow", "9223372036854775807:00", tooLong);
        row("overflow before bad unit", "99999999999999999999w", tooLong);
    }
    void refused()
    {
        QFETCH(QString, word);
        QFETCH(QString, message);
        QCOMPARE(shellErrorOf([&] { parseTime(word); }), message);
    }
};

QTEST_APPLESS_MAIN(ShellTimeTest)
#include "shelltime_test.moc"

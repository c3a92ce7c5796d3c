#include "timevalues.h"

#include <QLocale>
#include <QTest>

#include <cmath>

using namespace tock;

namespace tock {
char *toString(const HMS &v)
{
    return qstrdup(QStringLiteral("HMS(%1, %2, %3)").arg(v.hours).arg(v.minutes).arg(v.seconds).toUtf8().constData());
}
} // namespace tock

class TimeValuesTest : public QObject {
    Q_OBJECT
private slots:
    void split_data()
    {
        QTest::addColumn<double>("total");
        QTest::addColumn<HMS>("expected");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << HMS{0, 0, 0} << "00:00:00";
        QTest::newRow("fraction rounds down") << 59.9 << HMS{0, 0, 59} << "00:00:59";
        QTest::newRow("mixed") << 3661.7 << HMS{1, 1, 1} << "01:01:01";
        QTest::newRow("one hour") << 3600.0 << HMS{1, 0, 0} << "01:00:00";
        QTest::newRow("99 hours") << 359999.0 << HMS{99, 59, 59} << "99:59:59";
        QTest::newRow("three-digit hours") << 360000.0 << HMS{100, 0, 0} << "100:00:00";
        QTest::newRow("the most") << 3599999.0 << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("above the most") << 5000000.0 << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("far above") << 1e12 << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("infinity") << HUGE_VAL << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("negative") << -1.0 << HMS{0, 0, 0} << "00:00:00";
        QTest::newRow("negative infinity") << -HUGE_VAL << HMS{0, 0, 0} << "00:00:00";
        QTest::newRow("NaN") << std::nan("") << HMS{0, 0, 0} << "00:00:00";
    }
    void split()
    {
        QFETCH(double, total);
        QFETCH(HMS, expected);
        QFETCH(QString, text);
        const HMS hms = HMS::fromTotalSeconds(total);
        QCOMPARE(hms, expected);
        QVERIFY(hms.isValid());
        QCOMPARE(TimeFormat::string(total), text);
    }

    void formatIgnoresLocale()
    {
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
        const QString text = TimeFormat::string(3725);
        QLocale::setDefault(saved);
        QCOMPARE(text, "01:02:05");
    }

    void validity_data()
    {
        QTest::addColumn<HMS>("hms");
        QTest::addColumn<bool>("valid");
        QTest::newRow("zero") << HMS{0, 0, 0} << true;
        QTest::newRow("the most") << HMS{999, 59, 59} << true;
        QTest::newRow("1000 hours") << HMS{1000, 0, 0} << false;
        QTest::newRow("60 minutes") << HMS{0, 60, 0} << false;
        QTest::newRow("60 seconds") << HMS{0, 0, 60} << false;
        QTest::newRow("negative hours") << HMS{-1, 0, 0} << false;
        QTest::newRow("negative minutes") << HMS{0, -1, 0} << false;
        QTest::newRow("negative seconds") << HMS{0, 0, -1} << false;
    }
    void validity()
    {
        QFETCH(HMS, hms);
        QFETCH(bool, valid);
        QCOMPARE(hms.isValid(), valid);
    }

    void totalSeconds()
    {
        QCOMPARE((HMS{999, 59, 59}.totalSeconds()), HMS::maxSeconds);
        QCOMPARE((HMS{1, 2, 5}.totalSeconds()), 3725);
        // Memberwise values are not checked: out-of-range parts still add up.
        QCOMPARE((HMS{0, 90, -5}.totalSeconds()), 5395);
    }

    void wholeSeconds_data()
    {
        QTest::addColumn<double>("elapsed");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("zero") << 0.0 << qint64(0);
        QTest::newRow("rounds down") << 7.99 << qint64(7);
        QTest::newRow("negative") << -0.5 << qint64(0);
        QTest::newRow("NaN") << std::nan("") << qint64(0);
        QTest::newRow("capped") << 4e6 << qint64(3599999);
        QTest::newRow("infinity") << HUGE_VAL << qint64(3599999);
    }
    void wholeSeconds()
    {
        QFETCH(double, elapsed);
        QFETCH(qint64, expected);
        QCOMPARE(DisplayClock::wholeSeconds(elapsed), expected);
    }

    void advance_data()
    {
        QTest::addColumn<bool>("hasShown");
        QTest::addColumn<qint64>("shown");
        QTest::addColumn<qint64>("exact");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("nothing shown") << false << qint64(0) << qint64(7) << qint64(7);
        QTest::newRow("in step") << true << qint64(5) << qint64(5) << qint64(5);
        QTest::newRow("one ahead") << true << qint64(5) << qint64(6) << qint64(6);
        QTest::newRow("two behind catches up by one") << true << qint64(5) << qint64(7) << qint64(6);
        QTest::newRow("three behind jumps") << true << qint64(5) << qint64(8) << qint64(8);
        QTest::newRow("never back by itself") << true << qint64(9) << qint64(2) << qint64(9);
        QTest::newRow("extreme gap jumps") << true << std::numeric_limits<qint64>::min() << qint64(10) << qint64(10);
    }
    void advance()
    {
        QFETCH(bool, hasShown);
        QFETCH(qint64, shown);
        QFETCH(qint64, exact);
        QFETCH(qint64, expected);
        QCOMPARE(DisplayClock::advance(hasShown ? std::optional<int64_t>(shown) : std::nullopt, exact), expected);
    }
};

QTEST_APPLESS_MAIN(TimeValuesTest)
#include "timevalues_test.moc"

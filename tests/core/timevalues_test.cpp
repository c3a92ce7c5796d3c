#include "timevalues.h"

#include <QLocale>
#include <QTest>

#include <cmath>

using namespace tock;

class TimeValuesTest : public QObject {
    Q_OBJECT
private slots:
    void split_data()
    {
        QTest::addColumn<double>("total");
        QTest::addColumn<HMS>("expected");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << HMS{0, 0, 0} << "00:00:00";
        QTest::newRow("rounds down") << 59.9 << HMS{0, 0, 59} << "00:00:59";
        QTest::newRow("mixed") << 3661.7 << HMS{1, 1, 1} << "01:01:01";
        QTest::newRow("three-digit hours") << 360000.0 << HMS{100, 0, 0} << "100:00:00";
        QTest::newRow("the most") << 3599999.0 << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("above the most") << 5e6 << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("infinity") << HUGE_VAL << HMS{999, 59, 59} << "999:59:59";
        QTest::newRow("negative") << -1.0 << HMS{0, 0, 0} << "00:00:00";
        QTest::newRow("NaN") << std::nan("") << HMS{0, 0, 0} << "00:00:00";
    }
    void split()
    {
        QFETCH(double, total);
        QFETCH(HMS, expected);
        QFETCH(QString, text);
        QCOMPARE(HMS::fromTotalSeconds(total), expected);
        QCOMPARE(TimeFormat::string(total), text);
        QCOMPARE(DisplayClock::wholeSeconds(total), expected.totalSeconds());
    }

    void formatIgnoresLocale()
    {
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
        const QString text = TimeFormat::string(3725);
        QLocale::setDefault(saved);
        QCOMPARE(text, "01:02:05");
    }

    void validity()
    {
        QVERIFY((HMS{999, 59, 59}.isValid()));
        QVERIFY(!(HMS{1000, 0, 0}.isValid()));
        QVERIFY(!(HMS{0, 60, 0}.isValid()));
        QVERIFY(!(HMS{0, 0, 60}.isValid()));
        QVERIFY(!(HMS{-1, 0, 0}.isValid()));
        QVERIFY(!(HMS{0, 0, -1}.isValid()));
        QCOMPARE((HMS{0, 90, -5}.totalSeconds()), 5395); // memberwise values are not checked
    }

    void advance_data()
    {
        QTest::addColumn<qint64>("shown"); // -1: nothing shown yet
        QTest::addColumn<qint64>("exact");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("nothing shown") << qint64(-1) << qint64(7) << qint64(7);
        QTest::newRow("in step") << qint64(5) << qint64(5) << qint64(5);
        QTest::newRow("one behind") << qint64(5) << qint64(6) << qint64(6);
        QTest::newRow("two behind: one step") << qint64(5) << qint64(7) << qint64(6);
        QTest::newRow("three behind: jump") << qint64(5) << qint64(8) << qint64(8);
        QTest::newRow("never back") << qint64(9) << qint64(2) << qint64(9);
    }
    void advance()
    {
        QFETCH(qint64, shown);
        QFETCH(qint64, exact);
        QFETCH(qint64, expected);
        QCOMPARE(DisplayClock::advance(shown < 0 ? std::nullopt : std::optional<int64_t>(shown), exact), expected);
    }
};

QTEST_APPLESS_MAIN(TimeValuesTest)
#include "timevalues_test.moc"

#include "styleid.h"

#include <QTest>

using namespace tock;

class StyleIdTest : public QObject {
    Q_OBJECT
private slots:
    void roundTrip_data()
    {
        QTest::addColumn<int>("order");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::newRow("1") << 0 << "classic" << "Neo Classic";
        QTest::newRow("2") << 1 << "color" << "Neo Color";
        QTest::newRow("3") << 2 << "gameboy" << "Play Kid";
        QTest::newRow("4") << 3 << "braun" << "Calculator";
        QTest::newRow("5") << 4 << "amber" << "Amber Terminal";
        QTest::newRow("6") << 5 << "flap" << "Split-Flap";
        QTest::newRow("7") << 6 << "shell" << "Shell";
    }
    void roundTrip()
    {
        QFETCH(int, order);
        QFETCH(QString, raw);
        QFETCH(QString, title);
        const StyleID style = StyleIDs::allCases().at(order);
        QCOMPARE(StyleIDs::rawValue(style), raw);
        QCOMPARE(StyleIDs::displayName(style), title);
        QCOMPARE(StyleIDs::fromRawValue(raw), std::optional<StyleID>(style));
    }

    void unknownTextGivesNoStyle_data()
    {
        QTest::addColumn<QString>("raw");
        QTest::newRow("empty") << "";
        QTest::newRow("case") << "Classic";
        QTest::newRow("title") << "Neo Classic";
        QTest::newRow("space") << "classic ";
    }
    void unknownTextGivesNoStyle()
    {
        QFETCH(QString, raw);
        QVERIFY(!StyleIDs::fromRawValue(raw).has_value());
    }

    void sevenInMenuOrder()
    {
        QCOMPARE(StyleIDs::allCases().size(), 7);
        QCOMPARE(StyleIDs::allCases().first(), StyleID::classic);
        QCOMPARE(StyleIDs::allCases().last(), StyleID::shell);
    }
};

QTEST_APPLESS_MAIN(StyleIdTest)
#include "styleid_test.moc"

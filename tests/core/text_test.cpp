#include "text.h"

#include <QTest>

using namespace tock;

class TextTest : public QObject {
    Q_OBJECT
private slots:
    void graphemes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("clusters");
        QTest::newRow("empty") << "" << QStringList{};
        QTest::newRow("ascii") << "ab " << QStringList{"a", "b", " "};
        QTest::newRow("combining mark") << u8"e\u0301x" << QStringList{u8"e\u0301", "x"};
        QTest::newRow("crlf") << "a\r\nb" << QStringList{"a", "\r\n", "b"};
        QTest::newRow("zwj sequence") << u8"👩‍💻!" << QStringList{u8"👩‍💻", "!"};
        QTest::newRow("flag") << u8"🇩🇪🇫🇷" << QStringList{u8"🇩🇪", u8"🇫🇷"};
    }
    void graphemes()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, clusters);
        QCOMPARE(Text::graphemes(text), clusters);
        QCOMPARE(Text::graphemeCount(text), clusters.size());
        QCOMPARE(Text::dropLastGraphemes(text, 1), clusters.mid(0, qMax(0, clusters.size() - 1)).join(""));
    }

    void comparisons()
    {
        QVERIFY(Text::canonicallyEqual(u8"caf\u00E9", u8"cafe\u0301"));
        QVERIFY(!Text::canonicallyEqual("Cafe", "cafe"));
        QCOMPARE(Text::folded(u8"CAFE\u0301"), QString(u8"caf\u00E9"));
        QCOMPARE(Text::folded(u8"\u0130"), QString(u8"i\u0307")); // one letter becomes two
        QVERIFY(Text::hasPrefix(u8"cafe\u0301s", u8"caf\u00E9"));
        QVERIFY(!Text::hasPrefix(u8"cafe\u0301", "cafe"));
        QVERIFY(!Text::hasPrefix(u8"x\u0301", "x")); // no composed form: the cluster boundary decides
        QVERIFY(Text::hasPrefix("abc", ""));
    }
};

QTEST_APPLESS_MAIN(TextTest)
#include "text_test.moc"

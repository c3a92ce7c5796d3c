#include "timeedit.h"

#include <QTest>

using namespace tock;

namespace {

// "00:45:00" -> the three field texts.
std::array<QString, 3> fields(const QString &s)
{
    const QStringList parts = s.split(u':');
    return {parts[0], parts[1], parts[2]};
}

// "Mfa": the field's initial, then f for fresh and a for justAdvanced.
MaskCursor cursor(const QString &s)
{
    MaskCursor c(s[0] == u'H' ? TimeField::hours : s[0] == u'M' ? TimeField::minutes : TimeField::seconds,
                 s.contains(u'f'));
    c.justAdvanced = s.contains(u'a');
    return c;
}

} // namespace

class TimeEditTest : public QObject {
    Q_OBJECT
private slots:
    void fieldTexts()
    {
        QCOMPARE(TimeFields::label(TimeField::hours), "Hours");
        QCOMPARE(TimeFields::label(TimeField::seconds), "Seconds");
        QCOMPARE(TimeFields::sanitize(TimeField::hours, "1a2b3c4"), "123");
        QCOMPARE(TimeFields::sanitize(TimeField::seconds, "1a2b3c4"), "12");
        QCOMPARE(TimeFields::sanitize(TimeField::minutes, QStringLiteral("\u0663\uFF14 5")), "5");
    }

    void value_data()
    {
        QTest::addColumn<TimeField>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("expected"); // -1: absent
        QTest::newRow("empty hours") << TimeField::hours << "" << qint64(0);
        QTest::newRow("empty seconds") << TimeField::seconds << "" << qint64(0);
        QTest::newRow("leading zeros") << TimeField::hours << "007" << qint64(7);
        QTest::newRow("most hours") << TimeField::hours << "999" << qint64(999);
        QTest::newRow("hours too long") << TimeField::hours << "1000" << qint64(-1);
        QTest::newRow("60 minutes") << TimeField::minutes << "60" << qint64(-1);
        QTest::newRow("seconds too long") << TimeField::seconds << "005" << qint64(-1);
        QTest::newRow("plus sign") << TimeField::minutes << "+5" << qint64(-1);
        QTest::newRow("non-ASCII digit") << TimeField::seconds << QStringLiteral("\u0665") << qint64(-1);
    }
    void value()
    {
        QFETCH(TimeField, field);
        QFETCH(QString, text);
        QFETCH(qint64, expected);
        QCOMPARE(TimeFields::value(field, text), expected < 0 ? std::nullopt : std::optional<int64_t>(expected));
    }

    void cursorDoesNotWrap()
    {
        MaskCursor c = cursor("S");
        c.next();
        QCOMPARE(c, cursor("S"));
        c.justAdvanced = true;
        c.previous();
        c.previous();
        QCOMPARE(c, cursor("Hf"));
        c.fresh = false;
        c.previous();
        QCOMPARE(c, cursor("H"));
    }

    void draftFromSeconds()
    {
        QCOMPARE(TimeEditDraft(3725).texts, fields("01:02:05"));
        QCOMPARE(TimeEditDraft(432000).texts, fields("120:00:00"));
        QCOMPARE(TimeEditDraft(5e6).texts, fields("999:59:59"));
        QCOMPARE(TimeEditDraft(5e6).original, fields("999:59:59"));
    }

    // "⌫" is backspace, "↑"/"↓" step by one, anything else is typed; `used` has one 1 or 0 per
    // typed key telling whether it was taken. The draft starts with texts = original = `from`.
    void keys_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("used");
        QTest::addColumn<QString>("texts");
        QTest::addColumn<QString>("end");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<bool>("unchanged");
        QTest::newRow("seven digits") << "00:00:00" << "Hf" << "1234567" << "1111111" << "123:45:67" << "S" << false << false;
        QTest::newRow("fresh replaces") << "00:45:00" << "Mf" << "7" << "1" << "00:7:00" << "M" << true << false;
        QTest::newRow("full advances") << "00:45:00" << "Mf" << "78" << "11" << "00:78:00" << "Sfa" << false << false;
        QTest::newRow("separator swallowed") << "00:45:00" << "Mf" << "78:" << "111" << "00:78:00" << "Sf" << false << false;
        QTest::newRow("short hours") << "00:00:00" << "Hf" << "1." << "11" << "1:00:00" << "Mf" << true << false;
        QTest::newRow("retyped is unchanged") << "01:02:05" << "Hf" << "1:" << "11" << "1:02:05" << "Mf" << true << true;
        QTest::newRow("spaces move on") << "00:00:00" << "Hf" << "  " << "11" << "00:00:00" << "Sf" << true << true;
        QTest::newRow("separator on seconds") << "00:00:00" << "S" << ":" << "1" << "00:00:00" << "S" << true << true;
        QTest::newRow("refused keys") << "00:00:00" << "Hf" << QStringLiteral("a-\u0661") << "000" << "00:00:00" << "Hf" << true << true;
        QTest::newRow("full seconds restart") << "00:00:00" << "S" << "123" << "111" << "00:00:3" << "S" << true << false;
        QTest::newRow("backspace") << "00:45:00" << "M" << "⌫" << "" << "00:4:00" << "M" << true << false;
        QTest::newRow("backspace fresh") << "00:45:00" << "Mfa" << "⌫⌫" << "" << "00::00" << "Ma" << true << false;
        QTest::newRow("step wraps") << "00:59:00" << "Ma" << "↑" << "" << "00:00:00" << "Mfa" << true << false;
        QTest::newRow("hours below zero") << "00:00:00" << "H" << "↓" << "" << "999:00:00" << "Hf" << true << false;
        QTest::newRow("hours above 999") << "999:00:00" << "H" << "↑" << "" << "00:00:00" << "Hf" << true << false;
        QTest::newRow("invalid counts as 0") << "00:75:00" << "M" << "↑" << "" << "00:01:00" << "Mf" << true << false;
        QTest::newRow("digit after step") << "00:00:00" << "S" << "↑4" << "1" << "00:00:4" << "S" << true << false;
    }
    void keys()
    {
        QFETCH(QString, from);
        QFETCH(QString, start);
        QFETCH(QString, keys);
        QFETCH(QString, used);
        QFETCH(QString, texts);
        QFETCH(QString, end);
        QFETCH(bool, valid);
        QFETCH(bool, unchanged);
        TimeEditDraft draft(0);
        draft.texts = draft.original = fields(from);
        MaskCursor c = cursor(start);
        QString taken;
        for (QChar key : keys) {
            if (key == u'⌫')
                draft.backspace(c);
            else if (key == u'↑' || key == u'↓')
                draft.step(key == u'↑' ? 1 : -1, c);
            else
                taken += draft.type(key, c) ? u'1' : u'0';
        }
        QCOMPARE(taken, used);
        QCOMPARE(draft.texts, fields(texts));
        QCOMPARE(c, cursor(end));
        QCOMPARE(draft.isValid(), valid);
        QCOMPARE(draft.value().has_value(), valid);
        QCOMPARE(draft.isUnchanged(), unchanged);
        QCOMPARE(draft.original, fields(from));
    }
};

QTEST_APPLESS_MAIN(TimeEditTest)
#include "timeedit_test.moc"

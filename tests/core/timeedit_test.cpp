#include "timeedit.h"

#include <QTest>

using namespace tock;

namespace tock {
char *toString(const MaskCursor &c)
{
    return qstrdup(QStringLiteral("MaskCursor(%1, fresh=%2, justAdvanced=%3)")
                       .arg(TimeFields::label(c.field))
                       .arg(c.fresh)
                       .arg(c.justAdvanced)
                       .toUtf8()
                       .constData());
}
} // namespace tock

namespace {

QStringList textsOf(const TimeEditDraft &draft)
{
    return {draft.texts[0], draft.texts[1], draft.texts[2]};
}

// Plays keys into the draft: "⌫" is backspace, "↑"/"↓" step by one, anything else is typed.
QString play(TimeEditDraft &draft, MaskCursor &cursor, const QString &keys)
{
    QString used; // one '1' or '0' per typed key: whether type() took it
    for (QChar key : keys) {
        if (key == u'⌫')
            draft.backspace(cursor);
        else if (key == u'↑')
            draft.step(1, cursor);
        else if (key == u'↓')
            draft.step(-1, cursor);
        else
            used += draft.type(key, cursor) ? u'1' : u'0';
    }
    return used;
}

} // namespace

class TimeEditTest : public QObject {
    Q_OBJECT
private slots:
    void fields()
    {
        QCOMPARE(TimeFields::all, (std::array{TimeField::hours, TimeField::minutes, TimeField::seconds}));
        QCOMPARE(TimeFields::label(TimeField::hours), "Hours");
        QCOMPARE(TimeFields::label(TimeField::minutes), "Minutes");
        QCOMPARE(TimeFields::label(TimeField::seconds), "Seconds");
        QCOMPARE(TimeFields::maxValue(TimeField::hours), 999);
        QCOMPARE(TimeFields::maxValue(TimeField::seconds), 59);
        QCOMPARE(TimeFields::maxDigits(TimeField::hours), 3);
        QCOMPARE(TimeFields::maxDigits(TimeField::minutes), 2);
    }

    void sanitize_data()
    {
        QTest::addColumn<TimeField>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("hours drop letters") << TimeField::hours << "1a2b3c4" << "123";
        QTest::newRow("seconds drop letters") << TimeField::seconds << "1a2b3c4" << "12";
        QTest::newRow("non-ASCII digits dropped") << TimeField::minutes << QStringLiteral("\u0663\uFF14 5") << "5";
        QTest::newRow("empty") << TimeField::hours << "" << "";
    }
    void sanitize()
    {
        QFETCH(TimeField, field);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(TimeFields::sanitize(field, text), expected);
    }

    void value_data()
    {
        QTest::addColumn<TimeField>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("expected"); // -1: absent
        QTest::newRow("empty hours") << TimeField::hours << "" << qint64(0);
        QTest::newRow("empty minutes") << TimeField::minutes << "" << qint64(0);
        QTest::newRow("empty seconds") << TimeField::seconds << "" << qint64(0);
        QTest::newRow("leading zeros") << TimeField::hours << "007" << qint64(7);
        QTest::newRow("most hours") << TimeField::hours << "999" << qint64(999);
        QTest::newRow("hours too long") << TimeField::hours << "1000" << qint64(-1);
        QTest::newRow("59 minutes") << TimeField::minutes << "59" << qint64(59);
        QTest::newRow("60 minutes") << TimeField::minutes << "60" << qint64(-1);
        QTest::newRow("seconds too long") << TimeField::seconds << "005" << qint64(-1);
        QTest::newRow("plus sign") << TimeField::minutes << "+5" << qint64(-1);
        QTest::newRow("space") << TimeField::minutes << " 5" << qint64(-1);
        QTest::newRow("non-ASCII digit") << TimeField::seconds << QStringLiteral("\u0665") << qint64(-1);
    }
    void value()
    {
        QFETCH(TimeField, field);
        QFETCH(QString, text);
        QFETCH(qint64, expected);
        const std::optional<int64_t> want = expected < 0 ? std::nullopt : std::optional<int64_t>(expected);
        QCOMPARE(TimeFields::value(field, text), want);
    }

    void cursorMoves()
    {
        MaskCursor c(TimeField::minutes, false);
        QCOMPARE(c.justAdvanced, false);
        c.justAdvanced = true;
        c.next();
        QCOMPARE(c, MaskCursor(TimeField::seconds, true));
        c.fresh = false;
        c.next(); // no wrap-around
        QCOMPARE(c, MaskCursor(TimeField::seconds, false));
        c.previous();
        c.previous();
        QCOMPARE(c, MaskCursor(TimeField::hours, true));
        c.fresh = false;
        c.previous();
        QCOMPARE(c, MaskCursor(TimeField::hours, false));
        c.justAdvanced = true;
        c.focus(TimeField::seconds);
        QCOMPARE(c, MaskCursor(TimeField::seconds, true));
    }

    void draftFromSeconds_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("zero") << 0.0 << QStringList{"00", "00", "00"};
        QTest::newRow("mixed") << 3725.0 << QStringList{"01", "02", "05"};
        QTest::newRow("three-digit hours") << 432000.0 << QStringList{"120", "00", "00"};
        QTest::newRow("capped") << 5e6 << QStringList{"999", "59", "59"};
    }
    void draftFromSeconds()
    {
        QFETCH(double, seconds);
        QFETCH(QStringList, texts);
        const TimeEditDraft draft(seconds);
        QCOMPARE(textsOf(draft), texts);
        QCOMPARE(draft.original, draft.texts);
        QVERIFY(draft.isUnchanged());
        QVERIFY(draft.isValid());
    }

    void setSanitizes()
    {
        TimeEditDraft draft(0);
        draft.set(TimeField::seconds, "4x56");
        QCOMPARE(draft[TimeField::seconds], "45");
        QCOMPARE(draft.original[2], "00");
    }

    // Key sequences from a given start; see play() for the key symbols.
    void keys_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QStringList>("initial"); // texts to start from; empty: those of `seconds`
        QTest::addColumn<MaskCursor>("start");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("used");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<MaskCursor>("cursor");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<bool>("unchanged");
        const auto cursor = [](TimeField f, bool fresh, bool justAdvanced = false) {
            MaskCursor c(f, fresh);
            c.justAdvanced = justAdvanced;
            return c;
        };
        const MaskCursor freshHours = cursor(TimeField::hours, true);
        const MaskCursor freshMinutes = cursor(TimeField::minutes, true);
        const MaskCursor freshSeconds = cursor(TimeField::seconds, true);
        const MaskCursor minutes = cursor(TimeField::minutes, false);
        const MaskCursor seconds = cursor(TimeField::seconds, false);
        const QStringList zeros{"00", "00", "00"};

        QTest::newRow("seven digits fill the mask") << 0.0 << QStringList{} << freshHours << "1234567" << "1111111"
            << QStringList{"123", "45", "67"} << seconds << false << false;
        QTest::newRow("fresh digit replaces") << 2700.0 << QStringList{} << freshMinutes << "7" << "1"
            << QStringList{"00", "7", "00"} << minutes << true << false;
        QTest::newRow("second digit advances") << 2700.0 << QStringList{} << freshMinutes << "78" << "11"
            << QStringList{"00", "78", "00"} << cursor(TimeField::seconds, true, true) << false << false;
        QTest::newRow("separator after advance is swallowed") << 2700.0 << QStringList{} << freshMinutes << "78:"
            << "111" << QStringList{"00", "78", "00"} << freshSeconds << false << false;
        QTest::newRow("short hours need a separator") << 0.0 << QStringList{} << freshHours << "1." << "11"
            << QStringList{"1", "00", "00"} << freshMinutes << true << false;
        QTest::newRow("retyped hours stay unchanged") << 3725.0 << QStringList{} << freshHours << "1:" << "11"
            << QStringList{"1", "02", "05"} << freshMinutes << true << true;
        QTest::newRow("space is a separator") << 0.0 << QStringList{} << freshHours << "  " << "11"
            << zeros << freshSeconds << true << true;
        QTest::newRow("separator on seconds does nothing") << 0.0 << QStringList{} << seconds << ":" << "1"
            << zeros << seconds << true << true;
        QTest::newRow("letter and minus refused") << 0.0 << QStringList{} << freshHours << "a-" << "00"
            << zeros << freshHours << true << true;
        QTest::newRow("non-ASCII digit refused") << 0.0 << QStringList{} << freshHours << QStringLiteral("\u0661")
            << "0" << zeros << freshHours << true << true;
        QTest::newRow("full seconds restart") << 0.0 << QStringList{} << seconds << "123" << "111"
            << QStringList{"00", "00", "3"} << seconds << true << false;
        QTest::newRow("backspace non-fresh") << 2700.0 << QStringList{} << minutes << "⌫" << ""
            << QStringList{"00", "4", "00"} << minutes << true << false;
        QTest::newRow("backspace fresh clears") << 2700.0 << QStringList{} << freshMinutes << "⌫" << ""
            << QStringList{"00", "", "00"} << minutes << true << false;
        QTest::newRow("backspace on empty") << 0.0 << QStringList{} << freshSeconds << "⌫⌫⌫" << ""
            << QStringList{"00", "00", ""} << seconds << true << true;
        QTest::newRow("backspace keeps justAdvanced") << 0.0 << QStringList{} << cursor(TimeField::seconds, true, true)
            << "⌫" << "" << QStringList{"00", "00", ""} << cursor(TimeField::seconds, false, true) << true << true;
        QTest::newRow("step wraps up") << 3540.0 << QStringList{} << minutes << "↑" << ""
            << zeros << freshMinutes << true << false;
        QTest::newRow("step wraps down") << 0.0 << QStringList{} << freshSeconds << "↓" << ""
            << QStringList{"00", "00", "59"} << freshSeconds << true << false;
        QTest::newRow("hours wrap below zero") << 0.0 << QStringList{} << freshHours << "↓" << ""
            << QStringList{"999", "00", "00"} << freshHours << true << false;
        QTest::newRow("hours wrap above 999") << 3596400.0 << QStringList{} << freshHours << "↑" << ""
            << zeros << freshHours << true << false;
        QTest::newRow("step keeps justAdvanced") << 0.0 << QStringList{} << cursor(TimeField::seconds, false, true)
            << "↑" << "" << QStringList{"00", "00", "01"} << cursor(TimeField::seconds, true, true) << true << false;
        QTest::newRow("invalid counts as zero") << 0.0 << QStringList{"00", "75", "00"} << minutes << "↑" << ""
            << QStringList{"00", "01", "00"} << freshMinutes << true << false;
        QTest::newRow("digit after step replaces") << 0.0 << QStringList{} << seconds << "↑4" << "1"
            << QStringList{"00", "00", "4"} << seconds << true << false;
        QTest::newRow("invalid back to original") << 2700.0 << QStringList{"00", "99", "00"} << minutes << "⌫⌫45"
            << "11" << QStringList{"00", "45", "00"} << cursor(TimeField::seconds, true, true) << true << true;
    }
    void keys()
    {
        QFETCH(double, seconds);
        QFETCH(QStringList, initial);
        QFETCH(MaskCursor, start);
        QFETCH(QString, keys);
        QFETCH(QString, used);
        QFETCH(QStringList, texts);
        QFETCH(MaskCursor, cursor);
        QFETCH(bool, valid);
        QFETCH(bool, unchanged);
        TimeEditDraft draft(seconds);
        for (qsizetype i = 0; i < initial.size(); ++i)
            draft.texts[i] = initial[i];
        const auto original = draft.original;
        MaskCursor c = start;
        QCOMPARE(play(draft, c, keys), used);
        QCOMPARE(textsOf(draft), texts);
        QCOMPARE(c, cursor);
        QCOMPARE(draft.isValid(), valid);
        QCOMPARE(draft.value().has_value(), valid);
        QCOMPARE(draft.isUnchanged(), unchanged);
        QCOMPARE(draft.original, original);
    }

    void validityAndValue()
    {
        TimeEditDraft draft(3725);
        QCOMPARE(draft.value(), std::optional<HMS>(HMS{1, 2, 5}));
        draft.texts[1] = "60";
        QVERIFY(draft.isValid(TimeField::hours));
        QVERIFY(!draft.isValid(TimeField::minutes));
        QVERIFY(!draft.isValid());
        QVERIFY(!draft.value());
        QVERIFY(!draft.isUnchanged());
        draft.texts[1] = "";
        QCOMPARE(draft.value(), std::optional<HMS>(HMS{1, 0, 5}));
    }

    void largeStepsWrap()
    {
        TimeEditDraft draft(0);
        MaskCursor c(TimeField::minutes, false);
        draft.step(-61, c);
        QCOMPARE(draft[TimeField::minutes], "59");
        draft.step(std::numeric_limits<int64_t>::max(), c);
        QCOMPARE(draft[TimeField::minutes], QString::number((59 + std::numeric_limits<int64_t>::max() % 60) % 60).rightJustified(2, u'0'));
    }
};

QTEST_APPLESS_MAIN(TimeEditTest)
#include "timeedit_test.moc"

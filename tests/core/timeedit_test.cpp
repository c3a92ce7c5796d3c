// Durations as shown and the H:MM:SS edit mask.
#include "timeedit.h"

#include <QLocale>
#include <QTest>

#include <cmath>

using namespace tock;

namespace {

// "00:45:00" -> the three field texts.
std::array<QString, 3> fields(const QString &s)
{
    const QStringList parts = s.split(u':');
    return {parts[0], parts[1], parts[2]};
}

// "Mfa": the field's initial, then f for fresh and a for justAdvanced.
QString code(const MaskCursor &c)
{
    return QString(u"HMS"[int(c.field)]) + (c.fresh ? "f" : "") + (c.justAdvanced ? "a" : "");
}

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
    void durations()
    {
        for (const auto &[total, text] : {std::pair<double, QString>{0, "00:00:00"}, {59.9, "00:00:59"},
                                          {3661.7, "01:01:01"}, {360000, "100:00:00"}, {3599999, "999:59:59"},
                                          {5e6, "999:59:59"}, {HUGE_VAL, "999:59:59"}, {-1, "00:00:00"},
                                          {std::nan(""), "00:00:00"}}) {
            const QStringList parts = text.split(u':');
            const HMS hms{parts[0].toInt(), parts[1].toInt(), parts[2].toInt()};
            QCOMPARE(TimeFormat::string(total), text);
            QCOMPARE(HMS::fromTotalSeconds(total), hms);
            QCOMPARE(DisplayClock::wholeSeconds(total), hms.totalSeconds());
        }
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
        const QString text = TimeFormat::string(3725);
        QLocale::setDefault(saved);
        QCOMPARE(text, "01:02:05"); // ASCII digits in every locale
        QVERIFY((HMS{999, 59, 59}.isValid()));
        for (const HMS bad : {HMS{1000, 0, 0}, HMS{0, 60, 0}, HMS{0, 0, 60}, HMS{-1, 0, 0}, HMS{0, 0, -1}})
            QVERIFY(!bad.isValid());
        // The display never goes back by itself, steps when 1-2 s behind and jumps at 3 (-1: nothing shown yet).
        for (const auto &[shown, exact, next] : {std::tuple<int64_t, int64_t, int64_t>{-1, 7, 7}, {5, 5, 5}, {5, 6, 6},
                                                 {5, 7, 6}, {5, 8, 8}, {9, 2, 9}})
            QCOMPARE(DisplayClock::advance(shown < 0 ? std::nullopt : std::optional(shown), exact), next);
    }

    void mask()
    {
        QCOMPARE(TimeFields::sanitize(TimeField::hours, "1a2b3c4"), "123");
        QCOMPARE(TimeFields::sanitize(TimeField::seconds, QStringLiteral("\u0663\uFF14 5x67")), "56");
        // The field, its text, the value ("-": absent).
        using enum TimeField;
        for (const auto &[field, text, value] :
             {std::tuple<TimeField, QString, QString>{hours, "", "0"}, {hours, "007", "7"}, {hours, "999", "999"},
              {hours, "1000", "-"}, {minutes, "60", "-"}, {seconds, "005", "-"}, {minutes, "+5", "-"},
              {seconds, QStringLiteral("\u0665"), "-"}}) {
            const std::optional<int64_t> v = TimeFields::value(field, text);
            QCOMPARE(text + " -> " + (v ? QString::number(*v) : "-"), text + " -> " + value);
        }
        QCOMPARE(TimeEditDraft(3725).texts, fields("01:02:05"));
        MaskCursor c = cursor("Sa");
        c.next();
        QCOMPARE(code(c), "Sa"); // no wrap either way
        for (int i = 0; i < 3; ++i)
            c.previous();
        QCOMPARE(code(c), "Hf");
    }

    // From a draft whose texts and original are `from` and a cursor, keys are pressed: "⌫" is
    // backspace, "↑"/"↓" step by one, anything else is typed. The outcome reads: the texts, the
    // cursor, 1 or 0 per typed key for whether it was taken, valid or not, unchanged or not.
    void keys()
    {
        const QStringList rows{
            "00:00:00 Hf 1234567 -> 123:45:67 S 1111111 invalid changed",
            "00:45:00 Mf 7 -> 00:7:00 M 1 valid changed",
            "00:45:00 Mf 78 -> 00:78:00 Sfa 11 invalid changed",
            "00:45:00 Mf 78: -> 00:78:00 Sf 111 invalid changed", // the separator is swallowed
            "00:00:00 Hf 1. -> 1:00:00 Mf 11 valid changed",
            "01:02:05 Hf 1: -> 1:02:05 Mf 11 valid unchanged",
            "00:00:00 Hf ␣␣ -> 00:00:00 Sf 11 valid unchanged", // ␣ types a space
            "00:00:00 S : -> 00:00:00 S 1 valid unchanged",
            QStringLiteral("00:00:00 Hf a-\u0661 -> 00:00:00 Hf 000 valid unchanged"),
            "00:00:00 S 123 -> 00:00:3 S 111 valid changed", // a full seconds field starts over
            "00:45:00 M ⌫ -> 00:4:00 M  valid changed",
            "00:45:00 Mfa ⌫⌫ -> 00::00 Ma  valid changed",
            "00:59:00 Ma ↑ -> 00:00:00 Mfa  valid changed",
            "00:00:00 H ↓ -> 999:00:00 Hf  valid changed",
            "00:75:00 M ↑ -> 00:01:00 Mf  valid changed", // an invalid field counts as 0
            "00:00:00 S ↑4 -> 00:00:4 S 1 valid changed",
        };
        for (const QString &row : rows) {
            const QStringList in = row.section(QStringLiteral(" -> "), 0, 0).split(u' ');
            TimeEditDraft draft(0);
            draft.texts = draft.original = fields(in[0]);
            MaskCursor c = cursor(in[1]);
            QString taken;
            for (QChar key : in[2]) {
                if (key == u'⌫')
                    draft.backspace(c);
                else if (key == u'↑' || key == u'↓')
                    draft.step(key == u'↑' ? 1 : -1, c);
                else
                    taken += draft.type(key == u'␣' ? u' ' : key, c) ? u'1' : u'0';
            }
            QCOMPARE(draft.isValid(), draft.value().has_value());
            QCOMPARE(draft.original, fields(in[0]));
            const QString outcome = QStringList(draft.texts.cbegin(), draft.texts.cend()).join(u':') + ' ' + code(c)
                + ' ' + taken + (draft.isValid() ? " valid" : " invalid")
                + (draft.isUnchanged() ? " unchanged" : " changed");
            QCOMPARE(in.join(u' ') + " -> " + outcome, row);
        }
    }
};

QTEST_APPLESS_MAIN(TimeEditTest)
#include "timeedit_test.moc"

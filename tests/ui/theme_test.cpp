// The seven themes: readable, distinct, and consistent in their tints and fonts.
#include "table.h"
#include "theme.h"

#include <QtTest>

#include <cmath>

using namespace tock;

namespace {

double channel(double c)
{
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &c)
{
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

// Composites a translucent colour over an opaque one, as the views paint them.
QColor over(const QColor &top, const QColor &bottom)
{
    const double a = top.alphaF();
    return QColor::fromRgbF(float(top.redF() * a + bottom.redF() * (1 - a)),
                            float(top.greenF() * a + bottom.greenF() * (1 - a)),
                            float(top.blueF() * a + bottom.blueF() * (1 - a)));
}

double contrast(const QColor &a, const QColor &b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

// What a row's text actually sits on: the row's fill over the window, or the well.
QColor rowGround(const Theme &t, int row)
{
    return over(t.rowFillAt(row), t.windowFill);
}

QColor timeGround(const Theme &t, int row)
{
    if (t.timeKind != TimeKind::plain && t.wellFill.alpha() > 0)
        return over(t.wellFill, rowGround(t, row));
    return rowGround(t, row);
}

} // namespace

class ThemeTest : public QObject {
    Q_OBJECT

private slots:
    void themesAreReadable_data()
    {
        QTest::addColumn<StyleID>("style");
        for (StyleID style : StyleIDs::allCases())
            QTest::newRow(qPrintable(StyleIDs::rawValue(style))) << style;
    }
    void themesAreReadable()
    {
        QFETCH(StyleID, style);
        const Theme &t = Theme::of(style);
        const int rows = std::max<qsizetype>(1, t.rowTints.size());
        for (int row = 0; row < rows; ++row) {
            const QColor ground = rowGround(t, row);
            QVERIFY2(contrast(t.timeInk, timeGround(t, row)) >= 4.5, "time on its ground");
            QVERIFY2(contrast(t.runningTimeInk, timeGround(t, row)) >= 4.5, "running time");
            QVERIFY2(contrast(t.nameInk, ground) >= 4.5, "name on the row");
            // Buttons and secondary text are large or iconic: the weaker bound for UI parts.
            QVERIFY2(contrast(t.buttonInk, over(t.buttonFill, ground)) >= 3.0, "button ink");
            QVERIFY2(contrast(t.runningInk, over(t.runningFillAt(row), ground)) >= 3.0, "running button");
        }
        // A title may be as quiet as an inactive terminal's, but never vanish.
        QVERIFY2(contrast(t.titleInk, over(t.titleFill, t.windowFill)) >= 2.5, "title");
        QVERIFY2(contrast(t.muted, t.windowFill) >= 3.0, "muted text");
        QVERIFY2(contrast(t.primaryInk, over(t.primaryFill, t.windowFill)) >= 4.5, "add control");
        QVERIFY2(contrast(t.menuSelectedInk, over(t.menuSelectedFill, t.menuFill)) >= 4.5, "menu");
        QVERIFY2(contrast(t.fieldInk, over(t.fieldFill, t.windowFill)) >= 4.5, "field");
        QVERIFY2(contrast(t.invalidInk, over(t.invalidFill, t.windowFill)) >= 4.5, "invalid entry");
        QVERIFY2(contrast(t.sbOpenInk, over(t.sbOpenFill, t.windowFill)) >= 4.5, "open style button");
        QVERIFY2((luminance(t.windowFill) < 0.05) == t.dark, "a dark theme is dark, a light one light");
        for (const QFont &font : {t.titleFont, t.sbFont, t.nameFont, t.timeFont, t.labelFont, t.captionFont, t.digitFont})
            QVERIFY(font.pixelSize() > 0);
        QCOMPARE(t.timeFont.pixelSize(), qRound(t.timeSize));
        QCOMPARE(t.digitFont.pixelSize(), qRound(t.fieldDigitSize));
        // The tints take turns, wrapping after the last; untinted rows keep the one fill.
        for (int row = 0; row < 9; ++row)
            QCOMPARE(t.rowFillAt(row), t.rowTints.isEmpty() ? t.rowFill : t.rowTints.at(row % t.rowTints.size()));
        const QFont bigger = t.digitFontAt(40);
        QCOMPARE(bigger.pixelSize(), 40);
        QCOMPARE(bigger.families(), t.digitFont.families());
        QCOMPARE(bigger.weight(), t.digitFont.weight());
    }

    void themesDifferInKeyFields()
    {
        // No two styles may be a recolouring of each other: each differs from every other in at
        // least a few of the fields that shape the look, not just in colour.
        const auto signature = [](const Theme &t) {
            return QList<QString>{
                t.windowFill.name(),
                QString::number(int(t.windowShape.kind)) + QString::number(t.windowShape.radius),
                QString::number(int(t.overlay)),
                t.titleText + t.titleFont.family(),
                QString::number(int(t.windowButtons)),
                QString::number(int(t.rowShape.kind)) + QString::number(t.rowShape.radius),
                QString::number(int(t.rowSeparator)),
                t.rowFill.name(QColor::HexArgb),
                QString::number(t.rowTints.size()),
                QString::number(int(t.timeKind)) + t.timeFont.families().join(u','),
                QString::number(int(t.buttonShape.kind)),
                QString::number(int(t.icons)) + QString::number(int(t.addStyle)),
                QString::number(int(t.menuMarker)) + QString::number(int(t.caret)),
            };
        };
        const QList<StyleID> &all = StyleIDs::allCases();
        for (int i = 0; i < all.size(); ++i) {
            for (int j = i + 1; j < all.size(); ++j) {
                const QList<QString> a = signature(Theme::of(all[i]));
                const QList<QString> b = signature(Theme::of(all[j]));
                int differing = 0;
                for (int k = 0; k < a.size(); ++k)
                    differing += a[k] != b[k];
                QVERIFY2(differing >= 3, qPrintable(StyleIDs::rawValue(all[i]) + QStringLiteral(" vs ")
                                                    + StyleIDs::rawValue(all[j])));
            }
        }
    }

    void applyCase_data()
    {
        table<TextCase, QString, QString>({"textCase", "input", "expected"}, {
            {TextCase::upper, QString::fromUtf8("Straße"), QString::fromUtf8("STRASSE")},
            {TextCase::lower, QString::fromUtf8("ÉMAIL"), QString::fromUtf8("émail")},
            {TextCase::unchanged, "MiXed", "MiXed"},
        });
    }
    void applyCase()
    {
        QFETCH(TextCase, textCase);
        QFETCH(QString, input);
        QTEST(Theme::applyCase(textCase, input), "expected");
    }
};

QTEST_MAIN(ThemeTest)
#include "theme_test.moc"

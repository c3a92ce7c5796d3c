// The seven themes: distinct, and consistent in their tints and fonts (their contrast is
// contrast_test's).
#include "styles.h"
#include "theme.h"

#include <QtTest>

#include <cmath>

using namespace tock;
using namespace tock::testing;

namespace {

double luminance(const QColor &c)
{
    const auto channel = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

} // namespace

class ThemeTest : public QObject {
    Q_OBJECT

private slots:
    // What contrast_test does not cover: a dark theme is dark, the fonts are sized, the tints
    // take turns (wrapping after the last; untinted rows keep the one fill).
    void themesAreConsistent_data() { styleRows(); }
    void themesAreConsistent()
    {
        QFETCH(StyleID, style);
        const Theme &t = Theme::of(style);
        QCOMPARE(luminance(t.windowFill) < 0.05, t.dark);
        for (const QFont &font : {t.titleFont, t.sbFont, t.nameFont, t.timeFont, t.labelFont, t.captionFont, t.digitFont})
            QVERIFY(font.pixelSize() > 0);
        QCOMPARE(t.timeFont.pixelSize(), qRound(t.timeSize));
        QCOMPARE(t.digitFont.pixelSize(), qRound(t.fieldDigitSize));
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

    void applyCase()
    {
        QCOMPARE(Theme::applyCase(TextCase::upper, QString::fromUtf8("Straße")), QString::fromUtf8("STRASSE"));
        QCOMPARE(Theme::applyCase(TextCase::lower, QString::fromUtf8("ÉMAIL")), QString::fromUtf8("émail"));
        QCOMPARE(Theme::applyCase(TextCase::unchanged, "MiXed"), QString("MiXed"));
    }
};

QTEST_MAIN(ThemeTest)
#include "theme_test.moc"

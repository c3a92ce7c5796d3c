// The seven themes: distinct, consistent in their tints and fonts, and readable. Every text the
// views draw is measured against the ground it is drawn on: WCAG 2.2 AA asks 4.5:1 for small
// text and 3:1 for large text, and 3:1 for the focus mark against what surrounds it.
// Translucent fills are laid over what lies beneath them, as the window shows them.
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

// `top` laid over the opaque `ground`.
QColor over(const QColor &top, const QColor &ground)
{
    const double a = top.alphaF();
    const auto mix = [a](int t, int g) { return int(std::lround(t * a + g * (1 - a))); };
    return QColor(mix(top.red(), ground.red()), mix(top.green(), ground.green()), mix(top.blue(), ground.blue()));
}

double ratio(const QColor &a, const QColor &b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

struct Pair {
    QString what;
    QColor ink;
    QColor ground; // opaque
    double least;
};

constexpr double small = 4.5;
constexpr double large = 3.0;

// What the views draw, read from the theme the way the views read it.
QList<Pair> pairsOf(const Theme &t)
{
    const QColor window = t.windowFill;
    const QColor title = over(t.titleFill, window);
    QList<Pair> pairs{
        {"title", t.titleInk, title, small},
        {"style button", t.sbInk, over(t.sbFill, title), small},
        {"style button open", t.sbOpenInk, over(t.sbOpenFill, title), small},
        {"menu item", t.nameInk, t.menuFill, small},
        {"menu item chosen", t.menuSelectedInk, over(t.menuSelectedFill, t.menuFill), small},
        {"toast and banner text", t.nameInk, window, small},
        {"empty hint", t.muted, window, small},
        {"time field", t.fieldInk, over(t.fieldFill, window), small},
        {"time field active", t.fieldFocusInk, over(t.fieldFocusFill, window), small},
        {"time field invalid", t.invalidInk, over(t.invalidFill, window), small},
        {"banner", t.nameInk, over(QColor(t.danger.red(), t.danger.green(), t.danger.blue(), t.dark ? 50 : 34), window),
         small},
    };
    if (t.addStyle == AddStyle::prompt) {
        pairs.append({"prompt text", t.nameInk, window, small});
        pairs.append({"prompt sign", t.accent, window, small});
        pairs.append({"placeholder and output", t.muted, window, small});
        pairs.append({"prompt error", t.danger, window, small});
    } else {
        pairs.append({"add key", t.primaryInk, over(t.primaryFill, window), small});
    }
    if (t.icons == IconKind::word) {
        // Words stand on the window or the row; the window buttons' words are muted.
        pairs.append({"window button word", t.muted, title, small});
        pairs.append({"delete word", t.danger, window, small});
        pairs.append({"labelled key", t.buttonInk, over(t.buttonFill, window), small});
    } else {
        pairs.append({"labelled key", t.buttonInk, over(t.buttonFill, window), small});
        pairs.append({"delete key", QColor(Qt::white), t.danger, small});
    }
    const int rows = std::max<int>(1, int(t.rowTints.size()));
    for (int i = 0; i < rows; ++i) {
        const QColor row = over(t.rowFillAt(i), window);
        const QString n = QString::number(i);
        pairs.append({"name, row " + n, t.nameInk, row, small});
        if (t.rowTints.isEmpty())
            pairs.append({"name, hovered row " + n, t.nameInk, over(t.rowHoverFill, row), small});
        pairs.append({"untitled name, row " + n, t.muted, row, small});
        const QColor timeGround = t.timeKind == TimeKind::plain ? row : over(t.wellFill, row);
        // The time is large text: at least 18 points in every style.
        pairs.append({"time, row " + n, t.timeInk, timeGround, large});
        pairs.append({"running time, row " + n, t.runningTimeInk, timeGround, large});
        if (t.icons == IconKind::word) {
            pairs.append({"key word, row " + n, t.buttonInk, row, small});
            pairs.append({"running key word, row " + n, t.runningInk, row, small});
        } else {
            pairs.append({"key, row " + n, t.buttonInk, over(t.buttonFill, row), large});
            pairs.append({"running key, row " + n, t.runningInk, over(t.runningFillAt(i), row), large});
        }
        // The focus mark against the row it sits on.
        pairs.append({"focus mark, row " + n, t.focusInk, row, large});
    }
    // The week's report: dates, names and totals, then the fainter dates and scale, on its ground.
    const QColor report = over(t.reportFill, window);
    pairs.append({"report text", t.reportInk, report, small});
    pairs.append({"report dates and scale", t.reportMuted, report, small});
    pairs.append({"focus mark, report", t.focusInk, report, large});
    // A bar (and its legend swatch) stands out from the ground by its fill or by its edge: 3:1,
    // as for any shape that carries meaning.
    for (qsizetype i = 0; i < t.reportSeries.size(); ++i) {
        const QColor fill = t.reportSeries.at(i);
        const bool byEdge = t.reportBarEdge.isValid() && ratio(t.reportBarEdge, report) > ratio(fill, report);
        pairs.append({"report bar " + QString::number(i + 1), byEdge ? t.reportBarEdge : fill, report, large});
    }
    pairs.append({"focus mark, window", t.focusInk, window, large});
    pairs.append({"focus mark, title", t.focusInk, title, large});
    return pairs;
}

} // namespace

class ThemeTest : public QObject {
    Q_OBJECT

private slots:
    // A dark theme is dark, the fonts are sized, the tints take turns (wrapping after the last;
    // untinted rows keep the one fill), and every text is readable.
    void eachTheme_data() { styleRows(); }
    void eachTheme()
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

        QStringList failures;
        for (const Pair &p : pairsOf(t)) {
            const double r = ratio(p.ink, p.ground);
            if (r + 1e-9 < p.least)
                failures << QString("%1: %2 on %3 is %4:1, needs %5:1")
                                .arg(p.what, p.ink.name(), p.ground.name())
                                .arg(r, 0, 'f', 2)
                                .arg(p.least);
        }
        QVERIFY2(failures.isEmpty(), qPrintable(failures.join("\n")));
    }

    void ratiosAreMeasuredRight()
    {
        QCOMPARE(std::round(ratio(Qt::black, Qt::white) * 100) / 100, 21.0);
        // Just under the small-text threshold, where a rounding slip would pass it.
        QCOMPARE(std::round(ratio(QColor(0x77, 0x77, 0x77), Qt::white) * 100) / 100, 4.48);
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

// Every text the views draw, against the ground it is drawn on, in every style: WCAG 2.2 AA
// asks 4.5:1 for small text and 3:1 for large text, and 3:1 for the focus mark against what
// surrounds it. Translucent fills are laid over what lies beneath them, as the window shows them.
#include "styles.h"
#include "table.h"
#include "theme.h"

#include <QtTest>

#include <cmath>

using namespace tock;

namespace {

double channel(double c)
{
    c /= 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &c)
{
    return 0.2126 * channel(c.red()) + 0.7152 * channel(c.green()) + 0.0722 * channel(c.blue());
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

class ContrastTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyTextIsReadable_data() { testing::styleRows(); }

    void everyTextIsReadable()
    {
        QFETCH(StyleID, style);
        QStringList failures;
        for (const Pair &p : pairsOf(Theme::of(style))) {
            const double r = ratio(p.ink, p.ground);
            if (r + 1e-9 < p.least)
                failures << QString("%1: %2 on %3 is %4:1, needs %5:1")
                                .arg(p.what, p.ink.name(), p.ground.name())
                                .arg(r, 0, 'f', 2)
                                .arg(p.least);
        }
        QVERIFY2(failures.isEmpty(), qPrintable(failures.join("\n")));
    }

    void ratiosAreMeasuredRight_data()
    {
        table<QColor, QColor, double>({"a", "b", "expected"}, {
            {QColor(Qt::black), QColor(Qt::white), 21.0},
            {QColor(0x77, 0x77, 0x77), QColor(Qt::white), 4.48},
            {QColor(0x6B, 0x6F, 0x7A), QColor(0x2A, 0x2B, 0x30), 2.81},
        });
    }

    void ratiosAreMeasuredRight()
    {
        QFETCH(QColor, a);
        QFETCH(QColor, b);
        QFETCH(double, expected);
        QCOMPARE(std::round(ratio(a, b) * 100) / 100, expected);
    }
};

QTEST_MAIN(ContrastTest)

#include "contrast_test.moc"

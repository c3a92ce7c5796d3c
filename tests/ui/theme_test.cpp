// The seven themes: the fixed palettes, the style mapping, readability and distinctness.
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
    void palettesHoldTheirValues_data();
    void palettesHoldTheirValues();
    void rowCycleIsYellowSkyMintCoral();
    void ofMapsEveryStyle();
    void themesAreReadable_data();
    void themesAreReadable();
    void themesDifferInKeyFields();
    void threeLightOneGreenThreeDark();
    void applyCase_data();
    void applyCase();
    void fontsCarryPixelSizes();
};

void ThemeTest::palettesHoldTheirValues_data()
{
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<QString>("hex");
    using T = Theme;
    const QList<std::pair<const char *, std::pair<QColor, const char *>>> rows{
        {"coral", {T::Palette::coral, "#ff7a66"}}, {"sky", {T::Palette::sky, "#7cc8ff"}},
        {"mint", {T::Palette::mint, "#7ee0b5"}},   {"yellow", {T::Palette::yellow, "#ffd43b"}},
        {"c0", {T::DMG::c0, "#0f380f"}},           {"c1", {T::DMG::c1, "#306230"}},
        {"c2", {T::DMG::c2, "#8bac0f"}},           {"c3", {T::DMG::c3, "#9bbc0f"}},
        {"amber bg", {T::Amber::bg, "#15100a"}},   {"amber ink", {T::Amber::ink, "#e6a23c"}},
        {"amber dim", {T::Amber::dim, "#9c6c2a"}}, {"amber faint", {T::Amber::faint, "#4a3418"}},
        {"amber deep", {T::Amber::deep, "#24190d"}}, {"flap body", {T::Flap::body, "#171717"}},
        {"flap tile", {T::Flap::tile, "#2b2b2b"}}, {"flap digit", {T::Flap::digit, "#f1ecdd"}},
        {"flap label", {T::Flap::label, "#bdb7a8"}}, {"flap yellow", {T::Flap::yellow, "#f2c230"}},
        {"term bg", {T::Term::bg, "#1c1d21"}},     {"term bar", {T::Term::bar, "#2a2b30"}},
        {"term text", {T::Term::text, "#d6d8de"}}, {"term dim", {T::Term::dim, "#6b6f7a"}},
        {"term green", {T::Term::green, "#98c379"}}, {"term yellow", {T::Term::yellow, "#e5c07b"}},
        {"term red", {T::Term::red, "#e06c75"}},   {"term sel", {T::Term::sel, "#264f78"}},
    };
    for (const auto &[name, value] : rows)
        QTest::newRow(name) << value.first << QString::fromLatin1(value.second);
}

void ThemeTest::palettesHoldTheirValues()
{
    QFETCH(QColor, colour);
    QFETCH(QString, hex);
    QCOMPARE(colour.name(), hex);
    QCOMPARE(colour.alpha(), 255);
}

void ThemeTest::rowCycleIsYellowSkyMintCoral()
{
    const QList<QColor> expected{Theme::Palette::yellow, Theme::Palette::sky,
                                 Theme::Palette::mint, Theme::Palette::coral};
    QCOMPARE(Theme::Palette::rowCycle(), expected);
    // The tinted style takes them in turn, wrapping after the fourth row.
    const Theme &color = Theme::color();
    for (int row = 0; row < 9; ++row)
        QCOMPARE(color.rowFillAt(row), expected.at(row % 4));
    QCOMPARE(Theme::classic().rowFillAt(5), Theme::classic().rowFill);
}

void ThemeTest::ofMapsEveryStyle()
{
    const QList<const Theme *> expected{&Theme::classic(), &Theme::color(), &Theme::gameboy(),
                                        &Theme::braun(),   &Theme::amber(), &Theme::flap(),
                                        &Theme::shell()};
    QCOMPARE(StyleIDs::allCases().size(), expected.size());
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(&Theme::of(StyleIDs::allCases().at(i)), expected.at(i));
    QCOMPARE(&Theme::classic(), &Theme::classic()); // built once
}

void ThemeTest::themesAreReadable_data()
{
    QTest::addColumn<StyleID>("style");
    for (StyleID style : StyleIDs::allCases())
        QTest::newRow(qPrintable(StyleIDs::rawValue(style))) << style;
}

void ThemeTest::themesAreReadable()
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
}

void ThemeTest::themesDifferInKeyFields()
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

void ThemeTest::threeLightOneGreenThreeDark()
{
    QList<bool> dark;
    for (StyleID style : StyleIDs::allCases())
        dark << Theme::of(style).dark;
    QCOMPARE(dark, (QList<bool>{false, false, false, false, true, true, true}));
    // Dark themes really are dark and light ones light.
    for (StyleID style : StyleIDs::allCases()) {
        const Theme &t = Theme::of(style);
        QVERIFY2((luminance(t.windowFill) < 0.05) == t.dark,
                 qPrintable(StyleIDs::rawValue(style)));
    }
    QCOMPARE(Theme::shell().titleText, QString::fromUtf8("tock — zsh"));
}

void ThemeTest::applyCase_data()
{
    QTest::addColumn<TextCase>("textCase");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    QTest::newRow("upper") << TextCase::upper << "Deep work" << "DEEP WORK";
    QTest::newRow("upper sharp s") << TextCase::upper << QString::fromUtf8("Straße")
                                   << QString::fromUtf8("STRASSE");
    QTest::newRow("lower") << TextCase::lower << QString::fromUtf8("ÉMAIL") << QString::fromUtf8("émail");
    QTest::newRow("unchanged") << TextCase::unchanged << "MiXed" << "MiXed";
    QTest::newRow("empty") << TextCase::upper << "" << "";
}

void ThemeTest::applyCase()
{
    QFETCH(TextCase, textCase);
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QCOMPARE(Theme::applyCase(textCase, input), expected);
}

void ThemeTest::fontsCarryPixelSizes()
{
    for (StyleID style : StyleIDs::allCases()) {
        const Theme &t = Theme::of(style);
        const QString name = StyleIDs::rawValue(style);
        for (const QFont &font : {t.titleFont, t.sbFont, t.nameFont, t.timeFont, t.labelFont,
                                  t.captionFont, t.digitFont})
            QVERIFY2(font.pixelSize() > 0, qPrintable(name));
        QCOMPARE(t.timeFont.pixelSize(), qRound(t.timeSize));
        QCOMPARE(t.digitFont.pixelSize(), qRound(t.fieldDigitSize));
        const QFont bigger = t.digitFontAt(40);
        QCOMPARE(bigger.pixelSize(), 40);
        QCOMPARE(bigger.families(), t.digitFont.families());
        QCOMPARE(bigger.weight(), t.digitFont.weight());
    }
}

QTEST_MAIN(ThemeTest)
#include "theme_test.moc"

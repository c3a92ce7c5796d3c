// The look: the seven themes (consistent in their tints and fonts, and readable), the
// bundled fonts, the icons and the overlays.
//
// Every text the views draw is measured against the ground it is drawn on: WCAG 2.2 AA asks
// 4.5:1 for small text and 3:1 for large text, and 3:1 for the focus mark against what surrounds
// it. Translucent fills are laid over what lies beneath them, as the window shows them. The grid
// fonts cover every character Tock writes and stay on whole pixels.
#include "fontloader.h"
#include "icons.h"
#include "overlays.h"
#include "styles.h"
#include "table.h"
#include "theme.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QRawFont>
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

// Everything outside ASCII that Tock puts on screen itself.
const QString tockCharacters = QStringLiteral("·“”‘’—–…←→↑↓⌘⌫⌥⇧×°−÷≤≥≠•■▶★✓");

QFont gridFont(const QString &family, int pixelSize)
{
    return FontLoader::font({family}, pixelSize);
}

// The weight the face declares for itself, which is what the font database matches on.
int weightClass(const QRawFont &font)
{
    const QByteArray os2 = font.fontTable("OS/2");
    return os2.size() < 6 ? -1 : (uchar(os2[4]) << 8 | uchar(os2[5]));
}

int litCells(const QStringList &rows)
{
    int lit = 0;
    for (const QString &row : rows)
        lit += int(row.count(u'#'));
    return lit;
}

constexpr QRgb white = 0xFFFFFFFF;

QImage blank(QSize size, qreal dpr = 1)
{
    QImage image(size * dpr, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(white);
    return image;
}

} // namespace

class LookTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(FontLoader::registerBundledFonts()); }

    // Every font a theme asks for by a bundled family is that face at that weight, whatever
    // else is installed (a name it lacks falls through to the next), and its digits share one
    // width.
    void themeFontsAreTheBundledFaces_data() { styleRows(); }
    void themeFontsAreTheBundledFaces()
    {
        QFETCH(StyleID, style);
        const Theme &t = Theme::of(style);
        const QStringList bundled{"TockPixel", "TockTerm", "Roboto Condensed", "Roboto"};
        for (const QFont &font : {t.titleFont, t.sbFont, t.nameFont, t.timeFont, t.labelFont, t.captionFont, t.digitFont}) {
            const QStringList families = font.families().isEmpty() ? QStringList{font.family()} : font.families();
            if (std::none_of(families.begin(), families.end(), [&](const QString &f) { return bundled.contains(f); }))
                continue;
            const QRawFont raw = QRawFont::fromFont(font);
            QVERIFY2(bundled.contains(raw.familyName()), qPrintable(families.join(", ") + " is " + raw.familyName()));
            QCOMPARE(weightClass(raw), font.weight());
            const QFontMetricsF metrics(font);
            for (char digit = '1'; digit <= '9'; ++digit)
                QCOMPARE(metrics.horizontalAdvance(QLatin1Char(digit)), metrics.horizontalAdvance(QLatin1Char('0')));
        }
        const QFont fallback = FontLoader::font({"No Such Face Tock", "Roboto"}, 20.4, QFont::Medium);
        QCOMPARE(fallback.pixelSize(), 20);
        QCOMPARE(QRawFont::fromFont(fallback).familyName(), QString("Roboto"));
    }

    // A grid font covers every character Tock writes, and at a whole number of pixels per grid
    // cell every glyph edge falls on a pixel edge: no grey pixels, and the line height is the
    // font's own rows, not something Qt made up.
    void gridFontsStayOnPixels_data()
    {
        table<QString, int, int>({"family", "pixelSize", "lineHeight"},
                                 {{"TockPixel", 24, 30}, {"TockTerm", 12, 13}});
    }
    void gridFontsStayOnPixels()
    {
        QFETCH(QString, family);
        QFETCH(int, pixelSize);
        QFETCH(int, lineHeight);
        const QFont font = gridFont(family, pixelSize);
        const QRawFont raw = QRawFont::fromFont(font);
        QString missing;
        for (char32_t c = 0x20; c < 0x7F; ++c)
            missing += raw.supportsCharacter(c) ? QString() : QString(QChar(c));
        for (const QChar c : tockCharacters)
            missing += raw.supportsCharacter(c) ? QString() : QString(c);
        QVERIFY2(missing.isEmpty(), qPrintable(family + QStringLiteral(" lacks ") + missing));
        const QFontMetrics metrics(font);
        QCOMPARE(metrics.height(), lineHeight);

        QImage image(400, 3 * lineHeight, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.setFont(font);
        painter.setPen(Qt::black);
        painter.drawText(QPoint(0, metrics.ascent()), QStringLiteral("Agy@0:9 ⌘⌫…"));
        painter.drawText(QPoint(0, lineHeight + metrics.ascent()), QStringLiteral("$%&{}|~“”"));
        painter.end();
        int inked = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const int alpha = qAlpha(image.pixel(x, y));
                QVERIFY2(alpha == 0 || alpha == 255, qPrintable(QStringLiteral("grey at %1,%2").arg(x).arg(y)));
                inked += alpha == 255;
            }
        }
        QVERIFY(inked > 100);
    }

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

    // Every name has a distinct raw value, a word for the word styles, and a bitmap of '#' and
    // '.' in rows of one length with something lit.
    void everyNameHasItsParts()
    {
        QCOMPARE(PixelIcon::bitmaps().size(), allIconNames().size());
        QSet<QString> raws;
        for (IconName name : allIconNames()) {
            const QString raw = iconRawValue(name);
            QVERIFY2(!raw.isEmpty() && !raws.contains(raw), qPrintable(raw));
            raws << raw;
            QVERIFY2(!IconButtonBody::word(name).isEmpty(), qPrintable(raw));
            const QStringList &rows = PixelIcon::rows(name);
            QVERIFY2(litCells(rows) > 0, qPrintable(raw));
            for (const QString &row : rows) {
                QCOMPARE(row.size(), PixelIcon::cells(rows).width());
                QVERIFY2(QString(row).remove(u'#').remove(u'.').isEmpty(), qPrintable(row));
            }
        }
        QCOMPARE(PixelIcon::cells({}), QSize(0, 0));
        QCOMPARE(PixelIcon::cells({"##", "#...", ""}), QSize(4, 3));
        QVERIFY(PixelIcon::path({}, 2).isEmpty());
    }

    void pixelPathCoversExactlyTheLitCells_data()
    {
        QTest::addColumn<QStringList>("rows");
        for (IconName name : allIconNames())
            QTest::newRow(qPrintable(iconRawValue(name))) << PixelIcon::rows(name);
        QTest::newRow("ragged rows") << QStringList{"#", "###", "", "..#"};
        QTest::newRow("stacked runs that differ") << QStringList{"##..", "###.", "##.."};
    }

    void pixelPathCoversExactlyTheLitCells()
    {
        QFETCH(QStringList, rows);
        const int s = 3;
        const QPainterPath path = PixelIcon::path(rows, s);

        // The path covers exactly the lit cells, pixel for pixel.
        const QSize cells = PixelIcon::cells(rows);
        QImage image(cells * s + QSize(1, 1), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.fillPath(path, Qt::black);
        painter.end();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const int r = y / s, c = x / s;
                const bool lit = r < rows.size() && c < rows.at(r).size() && rows.at(r).at(c) == u'#';
                QVERIFY2((image.pixel(x, y) == qRgb(0, 0, 0)) == lit,
                         qPrintable(QStringLiteral("pixel %1,%2").arg(x).arg(y)));
            }
        }
    }

    void pixelIconsAreSharpWhenScaled_data()
    {
        table<qreal, qreal, QPointF>({"zoom", "dpr", "at"}, {{1.8, 2.0, {3.3, 5.7}}, {0.8, 1.0, {2.1, 1.45}}, {1.25, 1.5, {0.4, 0.9}}});
    }

    void pixelIconsAreSharpWhenScaled()
    {
        QFETCH(qreal, zoom);
        QFETCH(qreal, dpr);
        QFETCH(QPointF, at);
        const QColor ink(0x0F, 0x38, 0x0F);
        for (IconName name : allIconNames()) {
            QImage image = blank(QSize(40, 40), dpr);
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.scale(zoom, zoom);
            PixelIcon::paint(painter, PixelIcon::rows(name), QRectF(at, QSizeF(14, 14)), ink);
            painter.end();

            // Every pixel is either untouched or fully inked: no soft edges, no seams.
            int inked = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const QRgb p = image.pixel(x, y);
                    QVERIFY2(p == white || p == ink.rgb(), qPrintable(iconRawValue(name)));
                    inked += p == ink.rgb();
                }
            }
            const int deviceCell = std::max(1, qRound(2 * zoom * dpr));
            QCOMPARE(inked, litCells(PixelIcon::rows(name)) * deviceCell * deviceCell);
        }
    }

    void overlaysStayInTheirAreaAndLineUp_data()
    {
        table<QString, bool, qreal, qreal>({"case", "grid", "zoom", "dpr"}, {
            {"grid", true, 1.8, 2.0},
            {"grid", true, 0.8, 1.0},
            {"scanlines", false, 1.8, 2.0},
        });
    }

    void overlaysStayInTheirAreaAndLineUp()
    {
        QFETCH(bool, grid);
        QFETCH(qreal, zoom);
        QFETCH(qreal, dpr);
        const QRectF area(5.5, 4.25, 60, 40);
        const auto draw = [&](QImage &image, const QRectF &clip) {
            QPainter painter(&image);
            painter.scale(zoom, zoom);
            if (!clip.isNull())
                painter.setClipRect(clip);
            if (grid)
                PixelGridOverlay::paint(painter, area, Qt::black);
            else
                ScanlineOverlay::paint(painter, area, Qt::black);
        };
        const QSize size(int(80 * zoom), int(56 * zoom));
        QImage whole = blank(size, dpr);
        draw(whole, {});
        // Repainting the two halves separately, as partial updates do, gives the same picture.
        QImage halves = blank(size, dpr);
        draw(halves, QRectF(0, 0, 30, 56));
        draw(halves, QRectF(30, 0, 50, 56));
        QCOMPARE(halves, whole);

        int inked = 0;
        const QRectF deviceArea(area.topLeft() * zoom * dpr, area.size() * zoom * dpr);
        for (int y = 0; y < whole.height(); ++y) {
            for (int x = 0; x < whole.width(); ++x) {
                if (whole.pixel(x, y) == white)
                    continue;
                ++inked;
                QVERIFY2(deviceArea.adjusted(-1, -1, 1, 1).contains(QPointF(x, y)),
                         qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));
            }
        }
        // A texture, not a fill: some of the area and far from all of it.
        const double share = inked / (deviceArea.width() * deviceArea.height());
        QVERIFY2(share > 0.05 && share < 0.7, qPrintable(QString::number(share)));
    }
};

QTEST_MAIN(LookTest)
#include "look_test.moc"

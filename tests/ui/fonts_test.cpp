// The bundled fonts: each face registers under its contract name and weight, the grid fonts
// cover every character Tock writes, stay on whole pixels and leave the rest to fallback.
#include "fontloader.h"
#include "styles.h"
#include "table.h"
#include "theme.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>
#include <QtTest>

using namespace tock;
using namespace tock::testing;

namespace {

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

} // namespace

class FontsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(FontLoader::registerBundledFonts()); }

    void registrationIsIdempotent()
    {
        const int before = QFontDatabase::families().size();
        QVERIFY(FontLoader::registerBundledFonts());
        QCOMPARE(QFontDatabase::families().size(), before);
    }

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

    void gridFontsCoverWhatTockShows()
    {
        for (const QString family : {"TockPixel", "TockTerm"}) {
            const QRawFont raw = QRawFont::fromFont(gridFont(family, 16));
            QString missing;
            for (char32_t c = 0x20; c < 0x7F; ++c)
                missing += raw.supportsCharacter(c) ? QString() : QString(QChar(c));
            for (const QChar c : tockCharacters)
                missing += raw.supportsCharacter(c) ? QString() : QString(c);
            QVERIFY2(missing.isEmpty(), qPrintable(family + QStringLiteral(" lacks ") + missing));
        }
    }

    // At a whole number of pixels per grid cell every glyph edge falls on a pixel edge: no grey
    // pixels, and the line height is the font's own rows, not something Qt made up.
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

    // Names may be in any script; what the grid fonts lack comes from a face that has it.
    void missingCharactersFallBack_data()
    {
        table<QString, QString, QFontDatabase::WritingSystem>({"family", "text", "script"}, {
            {"TockPixel", "é", QFontDatabase::Latin},
            {"TockTerm", "Ж", QFontDatabase::Cyrillic},
            {"TockPixel", "日本", QFontDatabase::Japanese},
        });
    }
    void missingCharactersFallBack()
    {
        QFETCH(QString, family);
        QFETCH(QString, text);
        QFETCH(QFontDatabase::WritingSystem, script);
        const QStringList others = QFontDatabase::families(script);
        if (others.isEmpty() || (others.size() == 1 && others.first() == family))
            QSKIP("no installed face has these characters");

        QTextLayout layout(QStringLiteral("A") + text, gridFont(family, 16));
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        bool fellBack = false;
        for (const QGlyphRun &run : layout.glyphRuns()) {
            QVERIFY2(!run.glyphIndexes().contains(0), "a missing-glyph box was drawn");
            fellBack |= run.rawFont().familyName() != family;
        }
        QVERIFY(fellBack);
    }
};

QTEST_MAIN(FontsTest)
#include "fonts_test.moc"

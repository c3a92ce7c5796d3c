// The bundled fonts: each face registers under its contract name and weight, the grid fonts
// cover every character Tock writes, stay on whole pixels and leave the rest to fallback.
#include "fontloader.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>
#include <QtTest>

using tock::FontLoader;

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

    // What Qt reads from each file is the contract with the themes, whatever else is installed.
    void facesCarryTheirNames_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("weight");
        QTest::newRow("pixel") << "TockPixel.ttf" << "TockPixel" << int(QFont::Normal);
        QTest::newRow("term") << "TockTerm.ttf" << "TockTerm" << int(QFont::Normal);
        QTest::newRow("condensed bold") << "RobotoCondensed-Bold.ttf" << "Roboto Condensed" << int(QFont::Bold);
        QTest::newRow("medium") << "Roboto-Medium.ttf" << "Roboto" << int(QFont::Medium);
        QTest::newRow("bold") << "Roboto-Bold.ttf" << "Roboto" << int(QFont::Bold);
    }
    void facesCarryTheirNames()
    {
        QFETCH(QString, file);
        QFETCH(QString, family);
        QFETCH(int, weight);
        QFile data(QStringLiteral(":/fonts/") + file);
        QVERIFY(data.open(QIODevice::ReadOnly));
        const QRawFont raw(data.readAll(), 16);
        QVERIFY(raw.isValid());
        QCOMPARE(raw.familyName(), family);
        QCOMPARE(weightClass(raw), weight);
    }

    void familyAndWeightPickTheFace_data()
    {
        QTest::addColumn<QStringList>("families");
        QTest::addColumn<int>("weight");
        QTest::addColumn<QString>("family");
        QTest::newRow("medium") << QStringList{"Roboto"} << int(QFont::Medium) << "Roboto";
        QTest::newRow("bold") << QStringList{"Roboto"} << int(QFont::Bold) << "Roboto";
        QTest::newRow("condensed") << QStringList{"Roboto Condensed"} << int(QFont::Bold) << "Roboto Condensed";
        QTest::newRow("absent first") << QStringList{"No Such Face Tock", "Roboto"} << int(QFont::Medium) << "Roboto";
        QTest::newRow("pixel") << QStringList{"TockPixel"} << int(QFont::Normal) << "TockPixel";
        QTest::newRow("term") << QStringList{"TockTerm"} << int(QFont::Normal) << "TockTerm";
    }
    void familyAndWeightPickTheFace()
    {
        QFETCH(QStringList, families);
        QFETCH(int, weight);
        QFETCH(QString, family);
        const QFont font = FontLoader::font(families, 20.4, QFont::Weight(weight));
        QCOMPARE(font.pixelSize(), 20);
        const QRawFont raw = QRawFont::fromFont(font);
        QCOMPARE(raw.familyName(), family);
        QCOMPARE(weightClass(raw), weight);
    }

    void digitsAreTabular_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("weight");
        QTest::newRow("pixel") << "TockPixel" << int(QFont::Normal);
        QTest::newRow("term") << "TockTerm" << int(QFont::Normal);
        QTest::newRow("condensed bold") << "Roboto Condensed" << int(QFont::Bold);
        QTest::newRow("medium") << "Roboto" << int(QFont::Medium);
        QTest::newRow("bold") << "Roboto" << int(QFont::Bold);
    }
    void digitsAreTabular()
    {
        QFETCH(QString, family);
        QFETCH(int, weight);
        const QFontMetricsF metrics(FontLoader::font({family}, 24, QFont::Weight(weight)));
        const qreal zero = metrics.horizontalAdvance(QLatin1Char('0'));
        for (char digit = '1'; digit <= '9'; ++digit)
            QCOMPARE(metrics.horizontalAdvance(QLatin1Char(digit)), zero);
    }

    void gridFontsCoverWhatTockShows_data()
    {
        QTest::addColumn<QString>("family");
        QTest::newRow("pixel") << "TockPixel";
        QTest::newRow("term") << "TockTerm";
    }
    void gridFontsCoverWhatTockShows()
    {
        QFETCH(QString, family);
        const QRawFont raw = QRawFont::fromFont(gridFont(family, 16));
        QCOMPARE(raw.familyName(), family);
        QString missing;
        for (char32_t c = 0x20; c < 0x7F; ++c) {
            if (!raw.supportsCharacter(c))
                missing += QChar(c);
        }
        for (const QChar c : tockCharacters) {
            if (!raw.supportsCharacter(c))
                missing += c;
        }
        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("missing: ") + missing));
    }

    // At a whole number of pixels per grid cell every glyph edge falls on a pixel edge: no grey
    // pixels, and the line height is the font's own rows, not something Qt made up.
    void gridFontsStayOnPixels_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("pixelSize");
        QTest::addColumn<int>("lineHeight");
        QTest::newRow("pixel 16") << "TockPixel" << 16 << 20;
        QTest::newRow("pixel 24") << "TockPixel" << 24 << 30;
        QTest::newRow("term 12") << "TockTerm" << 12 << 13;
        QTest::newRow("term 24") << "TockTerm" << 24 << 26;
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
        QTest::addColumn<QString>("family");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QFontDatabase::WritingSystem>("script");
        QTest::newRow("pixel accents") << "TockPixel" << "é" << QFontDatabase::Latin;
        QTest::newRow("term cyrillic") << "TockTerm" << "Ж" << QFontDatabase::Cyrillic;
        QTest::newRow("pixel japanese") << "TockPixel" << "日本" << QFontDatabase::Japanese;
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

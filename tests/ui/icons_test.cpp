// Icons: every name has its word and bitmap; and how bitmaps and glyphs land on pixels.
#include "icons.h"
#include "table.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

using namespace tock;

namespace {

int litCells(const QStringList &rows)
{
    int lit = 0;
    for (const QString &row : rows)
        lit += int(row.count(u'#'));
    return lit;
}

double polygonArea(const QPolygonF &polygon)
{
    double twice = 0;
    for (int i = 0; i < polygon.size(); ++i) {
        const QPointF a = polygon.at(i), b = polygon.at((i + 1) % polygon.size());
        twice += a.x() * b.y() - b.x() * a.y();
    }
    return std::abs(twice) / 2;
}

QImage canvas(QSize logical, qreal dpr)
{
    QImage image(logical * dpr, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(Qt::white);
    return image;
}

} // namespace

class IconsTest : public QObject {
    Q_OBJECT

private slots:
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
        QTest::newRow("a block") << QStringList{"###", "###"};
        QTest::newRow("stacked runs that differ") << QStringList{"##..", "###.", "##.."};
    }

    void pixelPathCoversExactlyTheLitCells()
    {
        QFETCH(QStringList, rows);
        const int s = 3;
        const QPainterPath path = PixelIcon::path(rows, s);

        // The pieces never overlap: their areas add up to the lit cells.
        double area = 0;
        for (const QPolygonF &polygon : path.toSubpathPolygons())
            area += polygonArea(polygon);
        QCOMPARE(area, double(litCells(rows) * s * s));

        // And they cover exactly the lit cells, pixel for pixel.
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
            QImage image = canvas(QSize(40, 40), dpr);
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
                    QVERIFY2(p == qRgb(255, 255, 255) || p == ink.rgb(), qPrintable(iconRawValue(name)));
                    inked += p == ink.rgb();
                }
            }
            const int deviceCell = std::max(1, qRound(2 * zoom * dpr));
            QCOMPARE(inked, litCells(PixelIcon::rows(name)) * deviceCell * deviceCell);
        }
    }

    // Drawn into a frame, each glyph inks pixels there and nowhere outside it (its stroke may
    // stand half its width past the frame).
    void vectorGlyphsStayInTheirBox()
    {
        for (IconName name : allIconNames()) {
            const auto [fill, stroke] = VectorIcon::paths(name);
            QVERIFY2(!fill.isEmpty() || !stroke.isEmpty(), qPrintable(iconRawValue(name)));
            QImage image = canvas(QSize(30, 30), 2);
            QPainter painter(&image);
            VectorIcon::paint(painter, name, QRectF(8, 8, 14, 14), Qt::black);
            painter.end();
            int inside = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (image.pixel(x, y) == qRgb(255, 255, 255))
                        continue;
                    const QPointF p(x / 2.0, y / 2.0);
                    QVERIFY2(QRectF(7, 7, 16, 16).contains(p), qPrintable(iconRawValue(name)));
                    ++inside;
                }
            }
            QVERIFY(inside > 20);
        }
    }

    void wordsFollowTheTheme()
    {
        QCOMPARE(Icon::text(IconName::play, Theme::amber()), QStringLiteral("[start]"));
        QCOMPARE(Icon::text(IconName::trash, Theme::shell()), QStringLiteral("del"));
        QCOMPARE(Icon::naturalWidth(IconName::play, Theme::classic()), Theme::classic().iconSize);
        const qreal plain = Icon::naturalWidth(IconName::play, Theme::shell());
        QCOMPARE(plain, QFontMetricsF(Theme::shell().labelFont).horizontalAdvance("start"));
        QVERIFY(Icon::naturalWidth(IconName::minimize, Theme::shell()) < plain);

        // A word is not clipped by a frame narrower than itself.
        QImage image = canvas(QSize(80, 20), 1);
        QPainter painter(&image);
        Icon::paint(painter, IconName::styles, Theme::shell(), QRectF(35, 2, 10, 16), Qt::black);
        painter.end();
        bool inkedOutsideFrame = false;
        for (int y = 0; y < 20 && !inkedOutsideFrame; ++y)
            for (int x = 0; x < 30; ++x)
                inkedOutsideFrame = inkedOutsideFrame || image.pixel(x, y) != qRgb(255, 255, 255);
        QVERIFY(inkedOutsideFrame);
    }
};

QTEST_MAIN(IconsTest)
#include "icons_test.moc"

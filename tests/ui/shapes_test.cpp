// Shapes, separators and overlays: outlines, borders kept inside, patterns that line up.
#include "overlays.h"
#include "shapes.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

using namespace tock;

using Runs = QList<std::pair<int, int>>;

namespace {

constexpr QRgb white = 0xFFFFFFFF;

QImage blank(QSize size, qreal dpr = 1)
{
    QImage image(size * dpr, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(white);
    return image;
}

// The runs of non-white pixels along row y, as [start, end) spans.
Runs inkRuns(const QImage &image, int y)
{
    Runs runs;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixel(x, y) == white)
            continue;
        if (!runs.isEmpty() && runs.last().second == x)
            runs.last().second = x + 1;
        else
            runs.append({x, x + 1});
    }
    return runs;
}

} // namespace

class ShapesTest : public QObject {
    Q_OBJECT

private slots:
    void outlines_data();
    void outlines();
    void bordersStayInside_data();
    void bordersStayInside();
    void separators_data();
    void separators();
    void overlaysStayInTheirAreaAndLineUp_data();
    void overlaysStayInTheirAreaAndLineUp();
};

void ShapesTest::outlines_data()
{
    QTest::addColumn<ShapeKind>("shape");
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QPointF>("inside");
    QTest::addColumn<QPointF>("outside");
    const QRectF wide(10, 10, 40, 20);
    QTest::newRow("square corners") << ShapeKind::rect() << wide << QPointF(10.2, 10.2) << QPointF(9.8, 20);
    QTest::newRow("rounded") << ShapeKind::rect(6) << wide << QPointF(12, 16) << QPointF(10.5, 10.5);
    QTest::newRow("radius clamped to a capsule") << ShapeKind::rect(50) << wide << QPointF(11, 20)
                                                 << QPointF(12, 12);
    QTest::newRow("circle in a wide rect is a capsule") << ShapeKind::circle() << wide
                                                        << QPointF(30, 10.5) << QPointF(11, 11);
    QTest::newRow("notched corner cut") << ShapeKind::notched(3) << wide << QPointF(13.5, 10.5)
                                        << QPointF(12.5, 12.5);
    QTest::newRow("notched far corner") << ShapeKind::notched(3) << wide << QPointF(49.5, 13.5)
                                        << QPointF(48, 29);
}

void ShapesTest::outlines()
{
    QFETCH(ShapeKind, shape);
    QFETCH(QRectF, rect);
    QFETCH(QPointF, inside);
    QFETCH(QPointF, outside);
    const QPainterPath path = shapePath(shape, rect);
    QCOMPARE(path.boundingRect(), rect);
    QVERIFY(path.contains(inside));
    QVERIFY(!path.contains(outside));
}

void ShapesTest::bordersStayInside_data()
{
    QTest::addColumn<ShapeKind>("shape");
    QTest::addColumn<qreal>("width");
    QTest::newRow("rect") << ShapeKind::rect() << 3.0;
    QTest::newRow("rounded") << ShapeKind::rect(8) << 2.0;
    QTest::newRow("notched") << ShapeKind::notched(4) << 4.0;
    QTest::newRow("circle") << ShapeKind::circle() << 2.0;
}

void ShapesTest::bordersStayInside()
{
    QFETCH(ShapeKind, shape);
    QFETCH(qreal, width);
    const QRect rect(10, 10, 40, 24);
    const QColor fill(0x20, 0x80, 0x20), border(0x80, 0x20, 0x20);
    QImage image = blank(QSize(60, 44));
    QPainter painter(&image);
    paintShape(painter, shape, rect, fill, border, width);
    painter.end();

    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (!rect.contains(x, y))
                QVERIFY2(image.pixel(x, y) == white, qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));
    const QPoint mid = rect.center();
    QCOMPARE(image.pixel(mid), fill.rgb());
    QCOMPARE(image.pixel(rect.left() + int(width) - 1, mid.y()), border.rgb());
    QCOMPARE(image.pixel(rect.left() + int(width) + 1, mid.y()), fill.rgb());
    QCOMPARE(image.pixel(mid.x(), rect.bottom() - int(width) + 1), border.rgb());

    // A clear fill leaves the inside alone: only the ring is drawn.
    QImage ring = blank(QSize(60, 44));
    QPainter again(&ring);
    paintShape(again, shape, rect, Qt::NoBrush, border, width);
    again.end();
    QCOMPARE(ring.pixel(mid), white);
}

void ShapesTest::separators_data()
{
    QTest::addColumn<SeparatorKind>("kind");
    QTest::addColumn<Runs>("runs");
    QTest::newRow("solid") << SeparatorKind::solid << Runs{{5, 35}};
    QTest::newRow("dotted") << SeparatorKind::dotted
                            << Runs{{5, 7}, {11, 13}, {17, 19}, {23, 25}, {29, 31}};
    QTest::newRow("dashed") << SeparatorKind::dashed
                            << Runs{{5, 13}, {19, 27}, {33, 35}};
    QTest::newRow("none") << SeparatorKind::none << Runs{};
}

void ShapesTest::separators()
{
    QFETCH(SeparatorKind, kind);
    QFETCH(Runs, runs);
    QImage image = blank(QSize(40, 6));
    QPainter painter(&image);
    paintSeparator(painter, kind, QPointF(5, 2), 30, 2, Qt::black);
    painter.end();
    QCOMPARE(inkRuns(image, 2), runs);
    QCOMPARE(inkRuns(image, 3), runs);
    QVERIFY(inkRuns(image, 1).isEmpty());
    QVERIFY(inkRuns(image, 4).isEmpty());
}

void ShapesTest::overlaysStayInTheirAreaAndLineUp_data()
{
    QTest::addColumn<bool>("grid");
    QTest::addColumn<qreal>("zoom");
    QTest::addColumn<qreal>("dpr");
    QTest::newRow("grid 1.0 x2") << true << 1.0 << 2.0;
    QTest::newRow("grid 1.8 x2") << true << 1.8 << 2.0;
    QTest::newRow("grid 0.8 x1") << true << 0.8 << 1.0;
    QTest::newRow("scanlines 1.0 x1") << false << 1.0 << 1.0;
    QTest::newRow("scanlines 1.8 x2") << false << 1.8 << 2.0;
}

void ShapesTest::overlaysStayInTheirAreaAndLineUp()
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

QTEST_MAIN(ShapesTest)
#include "shapes_test.moc"

// Shapes, separators and overlays: outlines, borders kept inside, patterns that line up.
#include "overlays.h"
#include "shapes.h"
#include "table.h"

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
    void outlines_data()
    {
        // In a 40 × 20 rectangle at (10, 10): a point inside the outline and one outside it.
        table<QString, ShapeKind, QPointF, QPointF>({"case", "shape", "inside", "outside"}, {
            {"square corners", ShapeKind::rect(), {10.2, 10.2}, {9.8, 20}},
            {"rounded", ShapeKind::rect(6), {12, 16}, {10.5, 10.5}},
            {"radius clamped to a capsule", ShapeKind::rect(50), {11, 20}, {12, 12}},
            {"circle in a wide rect is a capsule", ShapeKind::circle(), {30, 10.5}, {11, 11}},
            {"notched corner cut", ShapeKind::notched(3), {13.5, 10.5}, {12.5, 12.5}},
            {"notched far corner", ShapeKind::notched(3), {49.5, 13.5}, {48, 29}},
        });
    }

    void outlines()
    {
        QFETCH(ShapeKind, shape);
        QFETCH(QPointF, inside);
        const QRectF rect(10, 10, 40, 20);
        QFETCH(QPointF, outside);
        const QPainterPath path = shapePath(shape, rect);
        QCOMPARE(path.boundingRect(), rect);
        QVERIFY(path.contains(inside));
        QVERIFY(!path.contains(outside));
    }

    void bordersStayInside_data()
    {
        table<QString, ShapeKind, qreal>({"case", "shape", "width"}, {
            {"rect", ShapeKind::rect(), 3.0},
            {"rounded", ShapeKind::rect(8), 2.0},
            {"notched", ShapeKind::notched(4), 4.0},
            {"circle", ShapeKind::circle(), 2.0},
        });
    }

    void bordersStayInside()
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

    void separators_data()
    {
        table<QString, SeparatorKind, Runs>({"case", "kind", "runs"}, {
            {"solid", SeparatorKind::solid, {{5, 35}}},
            {"dotted", SeparatorKind::dotted, {{5, 7}, {11, 13}, {17, 19}, {23, 25}, {29, 31}}},
            {"dashed", SeparatorKind::dashed, {{5, 13}, {19, 27}, {33, 35}}},
            {"none", SeparatorKind::none, {}},
        });
    }

    void separators()
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

    void overlaysStayInTheirAreaAndLineUp_data()
    {
        table<QString, bool, qreal, qreal>({"case", "grid", "zoom", "dpr"}, {
            {"grid", true, 1.0, 2.0},
            {"grid", true, 1.8, 2.0},
            {"grid", true, 0.8, 1.0},
            {"scanlines", false, 1.0, 1.0},
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

QTEST_MAIN(ShapesTest)
#include "shapes_test.moc"

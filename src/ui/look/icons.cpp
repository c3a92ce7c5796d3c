#include "icons.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>

#include <cmath>

namespace tock {

namespace {

QStringList repeated(const QString &row, int count)
{
    QStringList rows;
    for (int i = 0; i < count; ++i)
        rows << row;
    return rows;
}

QList<QStringList> buildBitmaps()
{
    // The triangle is kept 7 wide like its neighbours in the table and cut to its 4 cells.
    QStringList play{QStringLiteral("#......"), QStringLiteral("##....."), QStringLiteral("###...."),
                     QStringLiteral("####..."), QStringLiteral("###...."), QStringLiteral("##....."),
                     QStringLiteral("#......")};
    for (QString &row : play)
        row.truncate(4);

    const QStringList cross{QStringLiteral("#.....#"), QStringLiteral(".#...#."),
                            QStringLiteral("..#.#.."), QStringLiteral("...#..."),
                            QStringLiteral("..#.#.."), QStringLiteral(".#...#."),
                            QStringLiteral("#.....#")};

    QList<QStringList> table(allIconNames().size());
    const auto set = [&table](IconName name, QStringList rows) {
        table[int(name)] = std::move(rows);
    };
    set(IconName::play, play);
    set(IconName::pause, repeated(QStringLiteral("##.##"), 7));
    set(IconName::reset, {QStringLiteral("..#...."), QStringLiteral(".#####."),
                          QStringLiteral("..#...#"), QStringLiteral("#.....#"),
                          QStringLiteral("#.....#"), QStringLiteral(".#...#."),
                          QStringLiteral("..###..")});
    set(IconName::plus, repeated(QStringLiteral("...#..."), 3) + QStringList{QStringLiteral("#######")}
                            + repeated(QStringLiteral("...#..."), 3));
    set(IconName::close, cross);
    set(IconName::minimize, repeated(QStringLiteral("......."), 6) + QStringList{QStringLiteral("#######")});
    set(IconName::check, {QStringLiteral("......#"), QStringLiteral(".....##"),
                          QStringLiteral("#...##."), QStringLiteral("##.##.."),
                          QStringLiteral(".###..."), QStringLiteral("..#....")});
    set(IconName::cancel, cross);
    set(IconName::chevron, {QStringLiteral("#.....#"), QStringLiteral("##...##"),
                            QStringLiteral(".##.##."), QStringLiteral("..###.."),
                            QStringLiteral("...#...")});
    set(IconName::undo, {QStringLiteral("..#...."), QStringLiteral(".##...."),
                         QStringLiteral("######."), QStringLiteral(".##...#"),
                         QStringLiteral("..#...#"), QStringLiteral("......#"),
                         QStringLiteral("..####.")});
    set(IconName::styles, repeated(QStringLiteral("###.###"), 3) + QStringList{QStringLiteral(".......")}
                              + repeated(QStringLiteral("###.###"), 3));
    set(IconName::trash, {QStringLiteral("..###.."), QStringLiteral("#######"),
                          QStringLiteral(".#####."), QStringLiteral(".#.#.#."),
                          QStringLiteral(".#.#.#."), QStringLiteral(".#.#.#."),
                          QStringLiteral("..###..")});
    return table;
}

// The lit runs of one row as [start, end) cell spans.
QList<std::pair<int, int>> runsOf(const QString &row)
{
    QList<std::pair<int, int>> runs;
    int c = 0;
    while (c < row.size()) {
        if (row.at(c) != u'#') {
            ++c;
            continue;
        }
        const int start = c;
        while (c < row.size() && row.at(c) == u'#')
            ++c;
        runs.append({start, c});
    }
    return runs;
}

// The largest square centred in `frame`.
QRectF centredSquare(const QRectF &frame)
{
    const qreal side = std::min(frame.width(), frame.height());
    return QRectF(frame.center().x() - side / 2, frame.center().y() - side / 2, side, side);
}

// A word centred on the frame but never clipped by it: a word is as wide as it is.
void drawWord(QPainter &painter, const QString &word, const QRectF &frame, const QColor &color,
              const QFont &font)
{
    painter.save();
    painter.setFont(font);
    painter.setPen(color);
    const qreal wide = 1e4;
    painter.drawText(QRectF(frame.center().x() - wide / 2, frame.top(), wide, frame.height()),
                     Qt::AlignCenter | Qt::TextDontClip, word);
    painter.restore();
}

QPainterPath polyline(std::initializer_list<QPointF> points)
{
    QPainterPath path;
    auto it = points.begin();
    path.moveTo(*it);
    for (++it; it != points.end(); ++it)
        path.lineTo(*it);
    return path;
}

} // namespace

const QList<IconName> &allIconNames()
{
    static const QList<IconName> names{IconName::play,    IconName::pause,    IconName::reset,
                                       IconName::plus,    IconName::close,    IconName::minimize,
                                       IconName::check,   IconName::cancel,   IconName::chevron,
                                       IconName::undo,    IconName::styles,   IconName::trash};
    return names;
}

QString iconRawValue(IconName name)
{
    switch (name) {
    case IconName::play: return QStringLiteral("play");
    case IconName::pause: return QStringLiteral("pause");
    case IconName::reset: return QStringLiteral("reset");
    case IconName::plus: return QStringLiteral("plus");
    case IconName::close: return QStringLiteral("close");
    case IconName::minimize: return QStringLiteral("minimize");
    case IconName::check: return QStringLiteral("check");
    case IconName::cancel: return QStringLiteral("cancel");
    case IconName::chevron: return QStringLiteral("chevron");
    case IconName::undo: return QStringLiteral("undo");
    case IconName::styles: return QStringLiteral("styles");
    case IconName::trash: return QStringLiteral("trash");
    }
    return {};
}

QString IconButtonBody::word(IconName name)
{
    switch (name) {
    case IconName::play: return QStringLiteral("start");
    case IconName::pause: return QStringLiteral("pause");
    case IconName::reset: return QStringLiteral("reset");
    case IconName::plus: return QStringLiteral("add");
    case IconName::close: return QStringLiteral("esc");
    case IconName::minimize: return QStringLiteral("_");
    case IconName::check: return QStringLiteral("save");
    case IconName::cancel: return QStringLiteral("esc");
    case IconName::chevron: return QStringLiteral("v");
    case IconName::undo: return QStringLiteral("undo");
    case IconName::styles: return QStringLiteral("style");
    case IconName::trash: return QStringLiteral("del");
    }
    return {};
}

const QList<QStringList> &PixelIcon::bitmaps()
{
    static const QList<QStringList> table = buildBitmaps();
    return table;
}

const QStringList &PixelIcon::rows(IconName name)
{
    return bitmaps().at(int(name));
}

QSize PixelIcon::cells(const QStringList &rows)
{
    qsizetype width = 0;
    for (const QString &row : rows)
        width = std::max(width, row.size());
    return QSize(int(width), int(rows.size()));
}

QPainterPath PixelIcon::path(const QStringList &rows, qreal cell)
{
    // Runs of lit cells, and equal runs stacked in consecutive rows, become one rectangle
    // each; the rectangles touch but never overlap, so one winding fill covers them exactly.
    struct Open {
        int start, end, top;
    };
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    QList<Open> open;
    const auto close = [&](const Open &o, int bottom) {
        path.addRect(QRectF(o.start * cell, o.top * cell, (o.end - o.start) * cell,
                            (bottom - o.top) * cell));
    };
    for (int r = 0; r <= rows.size(); ++r) {
        const QList<std::pair<int, int>> runs = r < rows.size() ? runsOf(rows.at(r))
                                                               : QList<std::pair<int, int>>{};
        QList<Open> next;
        for (const auto &[start, end] : runs) {
            auto same = std::find_if(open.begin(), open.end(), [&](const Open &o) {
                return o.start == start && o.end == end;
            });
            if (same != open.end()) {
                next.append(*same);
                open.erase(same);
            } else {
                next.append({start, end, r});
            }
        }
        for (const Open &o : open)
            close(o, r);
        open = next;
    }
    return path;
}

void PixelIcon::paint(QPainter &painter, const QStringList &rows, const QRectF &frame,
                      const QColor &color)
{
    const QSize size = cells(rows);
    if (size.isEmpty())
        return;
    const qreal cell = std::min(frame.width(), frame.height()) / 7;
    const QPointF centre = frame.center();

    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    const QTransform device = painter.deviceTransform();
    if (device.type() <= QTransform::TxScale && device.m11() > 0 && device.m22() > 0) {
        // Work in device pixels: a whole number of pixels per cell and a whole-pixel origin.
        const qreal scale = device.m11();
        const qreal deviceCell = std::max<qreal>(1, std::round(cell * scale));
        const QPointF c = device.map(centre);
        const QPointF origin(std::round(c.x() - size.width() * deviceCell / 2),
                             std::round(c.y() - size.height() * deviceCell / 2));
        // A world transform under which path coordinates are device pixels from `origin`.
        const QTransform world = painter.worldTransform();
        painter.setWorldTransform(QTransform::fromTranslate(origin.x(), origin.y())
                                  * device.inverted() * world);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.drawPath(path(rows, deviceCell));
    } else {
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.translate(centre.x() - size.width() * cell / 2, centre.y() - size.height() * cell / 2);
        painter.drawPath(path(rows, cell));
    }
    painter.restore();
}

std::pair<QPainterPath, QPainterPath> VectorIcon::paths(IconName name)
{
    QPainterPath fill, stroke;
    switch (name) {
    case IconName::play: {
        // A slightly rounded triangle, optically centred (its mass sits right of the box centre).
        QPainterPath tri;
        tri.moveTo(0.26, 0.14);
        tri.lineTo(0.86, 0.5);
        tri.lineTo(0.26, 0.86);
        tri.closeSubpath();
        fill = tri;
        break;
    }
    case IconName::pause:
        fill.addRoundedRect(QRectF(0.22, 0.15, 0.19, 0.70), 0.05, 0.05);
        fill.addRoundedRect(QRectF(0.59, 0.15, 0.19, 0.70), 0.05, 0.05);
        break;
    case IconName::reset: {
        // Most of a circle, open at the top right, with the arrowhead at its start.
        const QRectF ring(0.18, 0.2, 0.64, 0.64);
        stroke.arcMoveTo(ring, 60);
        stroke.arcTo(ring, 60, 290);
        QPainterPath head;
        head.moveTo(0.48, 0.06);
        head.lineTo(0.72, 0.22);
        head.lineTo(0.5, 0.4);
        head.closeSubpath();
        fill = head;
        break;
    }
    case IconName::plus:
        stroke = polyline({{0.5, 0.16}, {0.5, 0.84}});
        stroke.addPath(polyline({{0.16, 0.5}, {0.84, 0.5}}));
        break;
    case IconName::close:
    case IconName::cancel:
        stroke = polyline({{0.22, 0.22}, {0.78, 0.78}});
        stroke.addPath(polyline({{0.78, 0.22}, {0.22, 0.78}}));
        break;
    case IconName::minimize:
        stroke = polyline({{0.2, 0.5}, {0.8, 0.5}});
        break;
    case IconName::check:
        stroke = polyline({{0.16, 0.54}, {0.4, 0.77}, {0.85, 0.25}});
        break;
    case IconName::chevron:
        stroke = polyline({{0.2, 0.36}, {0.5, 0.66}, {0.8, 0.36}});
        break;
    case IconName::undo:
        // A hook: left along the top, round the right, back along the bottom; the head left.
        stroke.moveTo(0.24, 0.36);
        stroke.lineTo(0.58, 0.36);
        stroke.arcTo(QRectF(0.38, 0.36, 0.44, 0.44), 90, -180);
        stroke.lineTo(0.36, 0.8);
        stroke.addPath(polyline({{0.4, 0.18}, {0.22, 0.36}, {0.4, 0.54}}));
        break;
    case IconName::styles:
        for (const QPointF &at : {QPointF(0.12, 0.12), QPointF(0.55, 0.12), QPointF(0.12, 0.55),
                                  QPointF(0.55, 0.55)})
            fill.addRoundedRect(QRectF(at, QSizeF(0.33, 0.33)), 0.07, 0.07);
        break;
    case IconName::trash:
        stroke = polyline({{0.16, 0.27}, {0.84, 0.27}});
        stroke.addPath(polyline({{0.39, 0.27}, {0.39, 0.14}, {0.61, 0.14}, {0.61, 0.27}}));
        stroke.addPath(polyline({{0.25, 0.27}, {0.3, 0.86}, {0.7, 0.86}, {0.75, 0.27}}));
        stroke.addPath(polyline({{0.44, 0.42}, {0.44, 0.7}}));
        stroke.addPath(polyline({{0.56, 0.42}, {0.56, 0.7}}));
        break;
    }
    return {fill, stroke};
}

void VectorIcon::paint(QPainter &painter, IconName name, const QRectF &frame, const QColor &color)
{
    const QRectF box = centredSquare(frame);
    if (box.isEmpty())
        return;
    const auto [fill, stroke] = paths(name);
    QTransform toBox = QTransform::fromScale(box.width(), box.height());
    toBox *= QTransform::fromTranslate(box.left(), box.top());

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    if (!fill.isEmpty())
        painter.fillPath(toBox.map(fill), color);
    if (!stroke.isEmpty()) {
        QPen pen(color, strokeWidth * box.width(), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        painter.strokePath(toBox.map(stroke), pen);
    }
    painter.restore();
}

void Icon::paint(QPainter &painter, IconName name, IconKind kind, const QRectF &frame,
                 const QColor &color, const QFont &wordFont)
{
    switch (kind) {
    case IconKind::vector:
        VectorIcon::paint(painter, name, frame, color);
        return;
    case IconKind::pixel:
        PixelIcon::paint(painter, PixelIcon::rows(name), frame, color);
        return;
    case IconKind::word:
        drawWord(painter, IconButtonBody::word(name), frame, color, wordFont);
        return;
    }
}

QString Icon::text(IconName name, const Theme &theme)
{
    const QString word = IconButtonBody::word(name);
    return theme.bracketWords ? u'[' + word + u']' : word;
}

void Icon::paint(QPainter &painter, IconName name, const Theme &theme, const QRectF &frame,
                 const QColor &color)
{
    if (theme.icons != IconKind::word) {
        paint(painter, name, theme.icons, frame, color, theme.labelFont);
        return;
    }
    drawWord(painter, text(name, theme), frame, color, theme.labelFont);
}

qreal Icon::naturalWidth(IconName name, const Theme &theme)
{
    if (theme.icons != IconKind::word)
        return theme.iconSize;
    return QFontMetricsF(theme.labelFont).horizontalAdvance(text(name, theme));
}

} // namespace tock

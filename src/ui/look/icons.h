// Icons: every button glyph of the window by name, drawn as a vector glyph, a word or a bitmap.
#pragma once

#include "theme.h"

#include <QFont>
#include <QList>
#include <QPainterPath>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <utility>

class QPainter;

namespace tock {

enum class IconName { play, pause, reset, plus, close, minimize, check, cancel, chevron, undo, styles, trash };

// The twelve names in declaration order.
const QList<IconName> &allIconNames();
// The name as text, equal to the enumerator ("play", "minimize", ...).
QString iconRawValue(IconName name);

// What a button shows in the styles whose icons are words.
struct IconButtonBody {
    // "start", "pause", "reset", ...: close and cancel share "esc"; minimize is "_".
    static QString word(IconName name);
};

// The bitmaps: rows of '#' (lit) and '.' (unlit), top row first, at most 7 by 7 cells.
struct PixelIcon {
    // Every name's rows, built once. Indexed by IconName.
    static const QList<QStringList> &bitmaps();
    static const QStringList &rows(IconName name);

    // Width (the longest row) and height in cells; empty for no rows.
    static QSize cells(const QStringList &rows);

    // The lit cells of `rows`, `cell` points square, from the origin, as one path whose
    // rectangles are merged runs: filled once it has no seams between cells.
    static QPainterPath path(const QStringList &rows, qreal cell);

    // Draws the bitmap centred in `frame` with cells of min(width, height) / 7, so every
    // icon of one size shares one cell. Under a pure scale the cells are snapped to whole
    // device pixels, which keeps the edges sharp at any zoom and pixel ratio.
    static void paint(QPainter &painter, const QStringList &rows, const QRectF &frame,
                      const QColor &color);
};

// The vector glyphs, designed in the unit box (0,0)-(1,1).
struct VectorIcon {
    // first: the parts to fill; second: the parts to stroke with a pen strokeWidth wide (in
    // unit-box terms) and round caps and joins. Either may be empty.
    static std::pair<QPainterPath, QPainterPath> paths(IconName name);
    static constexpr qreal strokeWidth = 0.13;

    // Draws the glyph scaled to the largest square centred in `frame`.
    static void paint(QPainter &painter, IconName name, const QRectF &frame, const QColor &color);
};

struct Icon {
    // Draws `name` as `kind` says, centred in `frame`. Words are set in `wordFont` at its
    // natural size (they may spill past a small frame; size the button with naturalWidth).
    static void paint(QPainter &painter, IconName name, IconKind kind, const QRectF &frame,
                      const QColor &color, const QFont &wordFont);
    // The same with the theme's kind and font; word icons get brackets where the theme asks.
    static void paint(QPainter &painter, IconName name, const Theme &theme, const QRectF &frame,
                      const QColor &color);

    // The text a word icon shows under `theme` ("start" or "[start]").
    static QString text(IconName name, const Theme &theme);
    // The width the icon needs: iconSize for glyphs, the text's advance for words.
    static qreal naturalWidth(IconName name, const Theme &theme);
};

} // namespace tock

// The block caret of the terminal-like styles: a cell that is solid while its window is active
// and hollow otherwise, and the character cell that carries such a block over its glyph.
#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

namespace tock {

class TerminalCursor {
public:
    // Filled with `color` while `active`; otherwise a 1-point outline drawn inside `rect`, so a
    // hollow block covers exactly the same cell as a solid one.
    static void paint(QPainter &painter, const QRectF &rect, const QColor &color, bool active);
};

// One character cell with an optional block cursor over it.
struct CursorCharacter {
    // The block of a 13-point monospaced line; other sizes scale from it.
    static constexpr QSizeF cellSize{7.8, 16};

    QString character;   // may be empty: a block at the end of a line covers nothing
    bool cursor = false; // draw the block
    bool active = true;  // the window is active: a solid block, the character knocked out

    // Draws the block in `cursorColor` (when `cursor`) and the character centred in `cell` in
    // `ink`, or in `knockoutInk` where a solid block lies under it.
    void paint(QPainter &painter, const QRectF &cell, const QFont &font, const QColor &ink,
               const QColor &cursorColor, const QColor &knockoutInk) const;
};

} // namespace tock

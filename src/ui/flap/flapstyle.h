// How split-flap tiles look: colours, font and geometry, filled by whoever hosts the tiles (the
// window from its theme, the flip demonstration from the dark board colours). Sizes are in
// logical pixels, already multiplied by any zoom.
#pragma once

#include <QColor>
#include <QFont>
#include <QSizeF>
#include <QString>

namespace tock {

struct FlapStyle {
    QFont font;               // family and weight; the pixel size follows the tile height
    QColor tile;              // the tile's face
    QColor ink;               // the character
    QColor split;             // the line across the middle of a tile
    QColor shade;             // darkens a leaf as it turns away from the light
    QColor separatorInk;      // the dots of a separator such as ':'
    QSizeF tileSize{28, 40};
    qreal radius = 3;         // corner radius of a tile
    qreal gap = 2;            // between neighbouring tiles
    qreal separatorWidth = 10;
    qreal fontScale = 0.78;   // glyph pixel size relative to the tile height
    QString separators = QStringLiteral(":"); // drawn narrow between tiles rather than on one
    // The flat colour under the tiles, when the host has one: the tiles then fill it first and
    // Qt need not repaint the host's layers under every frame of a flip. Invalid for none.
    QColor ground;

    bool operator==(const FlapStyle &) const = default;

    // The split-flap board's own colours: near-black body, dark tiles, warm off-white digits,
    // in the condensed bold face carried for it.
    static FlapStyle board();
};

} // namespace tock

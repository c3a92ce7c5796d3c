// The glyph on a button: one place where a view asks for "the play glyph in this theme", so the
// choice between vector shapes, pixel bitmaps and words stays out of the views.
#pragma once

#include "theme.h"

#include <QPainter>

namespace tock {

enum class Glyph { play, pause, reset, plus, close, minimize, check, cancel, chevron, undo, styles, trash, zoom };

namespace Glyphs {
// The word a word-icon theme shows for the glyph ("start", "pause", ...), bracketed when the
// theme says so.
QString word(const Theme &theme, Glyph glyph);
// The font words are drawn in.
QFont wordFont(const Theme &theme);
// Paints the glyph centred in `rect` in the theme's icon kind.
void paint(QPainter &painter, const Theme &theme, Glyph glyph, const QRectF &rect, const QColor &color);
} // namespace Glyphs

} // namespace tock

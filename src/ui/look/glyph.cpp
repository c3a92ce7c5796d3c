#include "glyph.h"

#include "icons.h"

namespace tock::Glyphs {

namespace {

IconName iconOf(Glyph glyph)
{
    switch (glyph) {
    case Glyph::play: return IconName::play;
    case Glyph::pause: return IconName::pause;
    case Glyph::reset: return IconName::reset;
    case Glyph::plus: return IconName::plus;
    case Glyph::close: return IconName::close;
    case Glyph::minimize: return IconName::minimize;
    case Glyph::check: return IconName::check;
    case Glyph::cancel: return IconName::cancel;
    case Glyph::chevron: return IconName::chevron;
    case Glyph::undo: return IconName::undo;
    case Glyph::styles: return IconName::styles;
    case Glyph::trash: return IconName::trash;
    case Glyph::zoom: return IconName::plus; // the zoom box shows a plus, as a "larger" key
    }
    return IconName::plus;
}

} // namespace

QString word(const Theme &theme, Glyph glyph)
{
    return Icon::text(iconOf(glyph), theme);
}

QFont wordFont(const Theme &theme)
{
    return theme.labelFont;
}

void paint(QPainter &painter, const Theme &theme, Glyph glyph, const QRectF &rect, const QColor &color)
{
    Icon::paint(painter, iconOf(glyph), theme, rect, color);
}

} // namespace tock::Glyphs

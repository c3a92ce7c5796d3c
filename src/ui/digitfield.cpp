#include "digitfield.h"

#include "shapes.h"
#include "terminalcursor.h"
#include "theme.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tock {

namespace {

qreal padH(const Theme &theme) { return std::max<qreal>(4, theme.digitAdvance * 0.35); }
qreal padV(const Theme &theme) { return std::max<qreal>(2, theme.fieldDigitSize * 0.12); }
// The height of one digit cell: a terminal block is 16 for a 13-point line.
qreal cellHeight(const Theme &theme)
{
    return theme.fieldDigitSize * CursorCharacter::cellSize.height() / 13.0;
}

} // namespace

QSizeF DigitField::size(const Theme &theme, TimeField field)
{
    return {TimeFields::maxDigits(field) * theme.digitAdvance + 2 * padH(theme),
            cellHeight(theme) + 2 * padV(theme)};
}

int DigitField::cellCount() const
{
    // A bar stands between cells and takes no room; a block at the end needs a cell of its own.
    return std::max<int>(int(text.size()), caretCell + 1);
}

QRectF DigitField::cellRect(const Theme &theme, const QRectF &box, int cell) const
{
    // The digits sit centred as a group, so two-digit hours do not hug one side of the box.
    const qreal h = cellHeight(theme);
    const qreal left = box.center().x() - cellCount() * theme.digitAdvance / 2;
    return {left + cell * theme.digitAdvance, box.center().y() - h / 2, theme.digitAdvance, h};
}

QRectF DigitField::caretRect(const Theme &theme, const QRectF &box) const
{
    if (caretCell < 0)
        return {};
    const QRectF cell = cellRect(theme, box, caretCell);
    if (theme.caret == CaretKind::block)
        return cell;
    return {cell.left() - 1, cell.top(), 2, cell.height()};
}

void DigitField::paint(QPainter &painter, const QRectF &box, const Theme &theme) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, theme.fieldShape.kind != ShapeKind::Notched);

    const QColor fill = invalid ? theme.invalidFill : focused ? theme.fieldFocusFill : theme.fieldFill;
    const QColor ink = invalid ? theme.invalidInk : focused ? theme.fieldFocusInk : theme.fieldInk;
    const QColor border = focused ? theme.fieldFocusBorder : theme.fieldBorder;
    const qreal bw = theme.fieldBorderWidth;

    if (theme.fieldHardShadow && theme.shadowOffset > 0) {
        const QPainterPath shadow = shapePath(theme.fieldShape, box);
        painter.fillPath(shadow.translated(theme.shadowOffset, theme.shadowOffset), theme.hardShadowColor);
    }
    paintShape(painter, theme.fieldShape, box, fill, border, bw);

    QColor textInk = ink;
    if (selected && !text.isEmpty()) {
        // Inverse video: the digits about to be replaced stand out as clearly as they read.
        const QRectF first = cellRect(theme, box, 0);
        painter.fillRect(first.united(cellRect(theme, box, int(text.size()) - 1)), ink);
        textInk = fill;
    }
    const bool block = theme.caret == CaretKind::block && caretCell >= 0 && caretShown;
    for (int cell = 0; cell < cellCount(); ++cell) {
        CursorCharacter ch;
        ch.character = cell < text.size() ? QString(text.at(cell)) : QString();
        ch.cursor = block && cell == caretCell;
        ch.active = windowActive;
        ch.paint(painter, cellRect(theme, box, cell), theme.digitFont, textInk, ink, fill);
    }
    if (theme.caret == CaretKind::bar && caretCell >= 0 && caretShown)
        painter.fillRect(caretRect(theme, box), ink);
    painter.restore();
}

} // namespace tock

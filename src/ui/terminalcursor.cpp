#include "terminalcursor.h"

#include <QPainter>
#include <QPen>

namespace tock {

void TerminalCursor::paint(QPainter &painter, const QRectF &rect, const QColor &color, bool active)
{
    painter.save();
    if (active) {
        painter.fillRect(rect, color);
    } else {
        QPen pen(color, 1.0);
        pen.setJoinStyle(Qt::MiterJoin);
        pen.setMiterLimit(10);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect.adjusted(0.5, 0.5, -0.5, -0.5));
    }
    painter.restore();
}

void CursorCharacter::paint(QPainter &painter, const QRectF &cell, const QFont &font, const QColor &ink,
                            const QColor &cursorColor, const QColor &knockoutInk) const
{
    if (cursor)
        TerminalCursor::paint(painter, cell, cursorColor, active);
    if (character.isEmpty())
        return;
    painter.save();
    painter.setFont(font);
    painter.setPen(cursor && active ? knockoutInk : ink);
    painter.drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, character);
    painter.restore();
}

} // namespace tock

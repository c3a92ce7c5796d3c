// One box of the time mask: the digits of one field in fixed-advance cells, with the focus,
// invalid and caret looks the theme gives fields.
#pragma once

#include "timeedit.h"

#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

namespace tock {

struct Theme;

struct DigitField {
    TimeField field = TimeField::hours;
    QString text;
    bool focused = false;
    bool invalid = false;
    // Where the next digit lands: the cell under a block caret, or the cell a bar stands
    // before; -1 draws no caret.
    int caretCell = -1;
    // The whole text is marked as about to be replaced (a fresh field under a bar caret, which
    // would otherwise show nothing of where the keys go).
    bool selected = false;
    bool caretShown = true;   // the blink phase
    bool windowActive = true; // a block caret is hollow in an inactive window

    // The box of `field` in points: room for its most digits plus padding.
    static QSizeF size(const Theme &theme, TimeField field);
    // The caret's rectangle within `box`, empty when there is none; for repainting only it.
    QRectF caretRect(const Theme &theme, const QRectF &box) const;
    void paint(QPainter &painter, const QRectF &box, const Theme &theme) const;

    bool operator==(const DigitField &) const = default;

private:
    int cellCount() const;
    QRectF cellRect(const Theme &theme, const QRectF &box, int cell) const;
};

} // namespace tock

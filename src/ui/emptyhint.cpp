#include "emptyhint.h"

#include "draw.h"

namespace tock {

void EmptyHint::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    Draw::text(painter, unzoomedRect(), Qt::AlignCenter, Theme::applyCase(t.labelCase, text()),
               Draw::tracked(t.nameFont, t.nameTracking), t.muted);
}

} // namespace tock

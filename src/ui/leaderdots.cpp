#include "leaderdots.h"

#include "draw.h"

namespace tock {

void LeaderDots::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    painter.setPen(Qt::NoPen);
    painter.setBrush(t.muted);
    const qreal step = 5;
    const qreal y = area.center().y() + t.nameFont.pixelSize() * 0.3;
    for (qreal x = area.left() + 2; x + 1 < area.right(); x += step)
        painter.drawRect(QRectF(x, y, 1.2, 1.2));
}

} // namespace tock

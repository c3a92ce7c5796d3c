#include "cursorblink.h"

#include <QTimerEvent>

namespace tock {

CursorBlink::CursorBlink(QObject *parent) : QObject(parent) {}

void CursorBlink::setBlinking(bool on)
{
    if (on == timer_.isActive())
        return;
    if (on)
        timer_.start(halfPeriodMs, Qt::CoarseTimer, this);
    else
        timer_.stop();
    setShown(true);
}

void CursorBlink::restart()
{
    if (timer_.isActive())
        timer_.start(halfPeriodMs, Qt::CoarseTimer, this);
    setShown(true);
}

void CursorBlink::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer_.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    setShown(!shown_);
}

void CursorBlink::setShown(bool shown)
{
    if (shown == shown_)
        return;
    shown_ = shown;
    Q_EMIT shownChanged();
}

} // namespace tock

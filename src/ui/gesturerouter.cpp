#include "gesturerouter.h"

#include "appmodel.h"
#include "rootview.h"
#include "theme.h"

#include <QTimer>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>

#include <cmath>

namespace tock {

GestureRouter::GestureRouter(AppModel *model, QObject *parent)
    : QObject(parent), model_(model), burst_(new QTimer(this))
{
    rowWidth_ = [model] { return Theme::contentWidth - 2 * Theme::of(model->style()).rowInset; };
    burst_->setSingleShot(true);
    burst_->setInterval(burstGapMs);
    connect(burst_, &QTimer::timeout, this, &GestureRouter::endBurst);
}

void GestureRouter::setRowWidth(std::function<double()> rowWidth)
{
    rowWidth_ = std::move(rowWidth);
}

void GestureRouter::attach(QWidget *window)
{
    // The platform window sees each scroll once, before any view can take it.
    if (!window->windowHandle())
        window->winId(); // creates the platform window
    watched_ = window->windowHandle();
    watched_->installEventFilter(this);
}

bool GestureRouter::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == watched_ && event->type() == QEvent::Wheel)
        return handleWheel(*static_cast<QWheelEvent *>(event));
    return false;
}

GestureRouter::Scroll GestureRouter::scrollOf(const QWheelEvent &event)
{
    Scroll s;
    switch (event.phase()) {
    case Qt::NoScrollPhase:
        s.phase = Phase::none;
        break;
    case Qt::ScrollBegin:
        s.phase = Phase::began;
        break;
    case Qt::ScrollUpdate:
        s.phase = Phase::changed;
        break;
    case Qt::ScrollEnd:
        s.phase = Phase::ended;
        break;
    case Qt::ScrollMomentum:
        s.phase = Phase::momentum;
        break;
    }
    // Precise deltas where the device has them; a wheel's notches otherwise.
    s.delta = !event.pixelDelta().isNull() ? QPointF(event.pixelDelta())
                                           : QPointF(event.angleDelta()) / 120.0 * pointsPerNotch;
    s.inverted = event.inverted();
    return s;
}

bool GestureRouter::handleWheel(const QWheelEvent &event)
{
    return handleScroll(scrollOf(event));
}

double GestureRouter::dxOf(const Scroll &scroll) const
{
    // The same finger movement means the same thing whichever way the device scrolls.
    return scroll.inverted ? scroll.delta.x() : -scroll.delta.x();
}

bool GestureRouter::handleScroll(const Scroll &scroll)
{
    switch (scroll.phase) {
    case Phase::momentum:
        if (!inMomentum_) {
            // Some platforms report the lifted fingers only after the coasting ends; the first
            // coasting event ends the gesture instead.
            end();
            inMomentum_ = true;
        }
        return swallowMomentum_;
    case Phase::began:
        inMomentum_ = false;
        begin();
        return false;
    case Phase::changed:
        return change(dxOf(scroll), std::abs(scroll.delta.y()));
    case Phase::ended:
        if (inMomentum_) {
            inMomentum_ = false;
            const bool swallow = swallowMomentum_;
            swallowMomentum_ = false;
            return swallow;
        }
        return end();
    case Phase::none:
        if (!inBurst_) {
            inBurst_ = true;
            begin();
        }
        burst_->start();
        return change(dxOf(scroll), std::abs(scroll.delta.y()));
    }
    return false;
}

void GestureRouter::endBurst()
{
    burst_->stop();
    if (!inBurst_)
        return;
    inBurst_ = false;
    end();
}

void GestureRouter::begin()
{
    axis_ = Axis::undecided;
    accum_ = QPointF();
    target_ = model_->hoveredID() ? model_->hoveredID() : model_->revealedID();
    swallowMomentum_ = false;
}

bool GestureRouter::change(double dx, double dy)
{
    if (axis_ == Axis::undecided) {
        accum_ += QPointF(std::abs(dx), dy);
        if (accum_.x() + accum_.y() > axisThreshold) {
            axis_ = accum_.x() <= horizontalRatio * accum_.y() ? Axis::vertical : Axis::horizontal;
            if (axis_ == Axis::horizontal && target_)
                model_->beginSwipe(*target_);
        }
    }
    if (axis_ == Axis::horizontal && model_->swipeID()) {
        model_->swipe(dx);
        return true;
    }
    return false;
}

bool GestureRouter::end()
{
    const bool swiping = axis_ == Axis::horizontal && model_->swipeID();
    axis_ = Axis::undecided;
    if (!swiping)
        return false;
    model_->endSwipe(rowWidth_());
    swallowMomentum_ = true;
    return true;
}

} // namespace tock

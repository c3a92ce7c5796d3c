#include "flapclock.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace tock {

namespace {

constexpr double baseHalfFlip = 0.12;
constexpr int frameMs = 30; // 33 frames a second: four to a 0.12 s half turn, half the work of 60

} // namespace

double flipTimeFor(const std::optional<QString> &env)
{
    if (!env)
        return baseHalfFlip;
    bool ok = false;
    const double factor = env->trimmed().toDouble(&ok);
    // A negative or endless flip would never settle; such values count as not a number.
    if (!ok || !std::isfinite(factor) || factor < 0)
        return baseHalfFlip;
    return baseHalfFlip * factor;
}

double flipTime()
{
    static const double value = flipTimeFor(qEnvironmentVariableIsSet("TOCK_FLIP_SLOWDOWN")
                                                ? std::optional(qEnvironmentVariable("TOCK_FLIP_SLOWDOWN"))
                                                : std::nullopt);
    return value;
}

FlapClock::FlapClock(QObject *parent)
    : FlapClock(
          [elapsed = std::make_shared<QElapsedTimer>()] {
              if (!elapsed->isValid())
                  elapsed->start();
              return double(elapsed->nsecsElapsed()) / 1e9;
          },
          flipTime(), parent)
{
}

FlapClock::FlapClock(FlapTimeSource now, double halfFlip, QObject *parent)
    : QObject(parent), now_(std::move(now)), halfFlip_(halfFlip)
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &FlapClock::advance);
}

void FlapClock::track(Flipping *tile, int token, double start)
{
    forget(tile);
    flips_.push_back({tile, token, start, false});
    if (!timer_.isActive())
        arm(0);
}

void FlapClock::forget(const Flipping *tile)
{
    std::erase_if(flips_, [tile](const Flip &f) { return f.tile == tile; });
    if (flips_.empty())
        timer_.stop();
}

void FlapClock::advance()
{
    const double t = now();
    const double motion = 2 * halfFlip_;
    double wait = std::numeric_limits<double>::infinity();
    std::vector<Flip> due;
    for (auto it = flips_.begin(); it != flips_.end();) {
        if (t >= it->start + settleDelay()) {
            due.push_back(*it);
            it = flips_.erase(it);
            continue;
        }
        if (!it->endPainted) {
            it->tile->repaint();
            it->endPainted = t >= it->start + motion;
        }
        // Between the end of the motion and the settle there is nothing to draw: sleep through it.
        wait = std::min(wait, it->endPainted ? it->start + settleDelay() - t : 0.0);
        ++it;
    }
    // Settling repaints and may, through a host's reaction, start new flips; the list is
    // consistent by now.
    for (const Flip &f : due)
        f.tile->settle(f.token, f.endPainted);
    if (flips_.empty())
        timer_.stop();
    else if (!timer_.isActive())
        arm(wait);
}

void FlapClock::arm(double wait)
{
    timer_.start(wait <= 0 ? frameMs : std::max(1, int(std::ceil(wait * 1000))));
}

} // namespace tock

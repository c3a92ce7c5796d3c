#include "timer.h"

#include "timevalues.h"

#include <algorithm>

namespace tock {

double TimerItem::elapsed(Instant now) const
{
    // A clock that went backwards never takes time away.
    const double running = startedAt ? std::max(0.0, now - *startedAt) : 0.0;
    return std::min(accumulated + running, double(HMS::maxSeconds));
}

} // namespace tock

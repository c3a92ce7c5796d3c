// Durations as the user sees them: hours/minutes/seconds with the system-wide limits, the one
// text form of a duration, and the rule by which a running display advances its second.
#pragma once

#include <QString>

#include <algorithm>
#include <cstdint>
#include <optional>

namespace tock {

// A duration split into parts. Memberwise construction does no checking; fromTotalSeconds
// always yields a valid value.
struct HMS {
    static constexpr int64_t maxHours = 999;
    // 999:59:59, the largest duration any timer reports, stores through setElapsed, or shows.
    static constexpr int64_t maxSeconds = 3599999;

    int64_t hours = 0;
    int64_t minutes = 0;
    int64_t seconds = 0;

    // NaN and negatives give 0, the rest is capped at maxSeconds and rounded down.
    static HMS fromTotalSeconds(double t);
    // 0 for negative values and NaN, maxSeconds for anything larger (infinity included).
    static double clamped(double seconds) { return !(seconds >= 0) ? 0.0 : std::min(seconds, double(maxSeconds)); }

    // hours * 3600 + minutes * 60 + seconds; overflow is a programming error.
    int64_t totalSeconds() const;
    // 0 <= hours <= 999, 0 <= minutes <= 59, 0 <= seconds <= 59.
    bool isValid() const;

    bool operator==(const HMS &) const = default;
};

namespace TimeFormat {
// "%02d:%02d:%02d" of HMS::fromTotalSeconds, ASCII digits whatever the locale.
QString string(double seconds);
}

namespace DisplayClock {
// Whole seconds to show for an elapsed time: NaN and negatives give 0, capped at maxSeconds.
int64_t wholeSeconds(double elapsed);
// The next value to show, given what is shown now (absent: nothing yet) and the exact value.
// Never goes back by itself; catches up one second per call when 1-2 s behind; jumps at 3+.
int64_t advance(std::optional<int64_t> shown, int64_t exact);
}

} // namespace tock

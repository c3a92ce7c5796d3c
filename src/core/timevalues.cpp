#include "timevalues.h"

#include "require.h"

#include <algorithm>
#include <cmath>

namespace tock {

HMS HMS::fromTotalSeconds(double t)
{
    const auto n = static_cast<int64_t>(std::floor(clamped(t)));
    return {n / 3600, (n % 3600) / 60, n % 60};
}

int64_t HMS::totalSeconds() const
{
    int64_t h = 0;
    int64_t m = 0;
    int64_t sum = 0;
    const bool overflow = __builtin_mul_overflow(hours, int64_t(3600), &h)
        || __builtin_mul_overflow(minutes, int64_t(60), &m)
        || __builtin_add_overflow(h, m, &sum)
        || __builtin_add_overflow(sum, seconds, &sum);
    TOCK_REQUIRE(!overflow, "HMS::totalSeconds overflows");
    return sum;
}

bool HMS::isValid() const
{
    return hours >= 0 && hours <= maxHours && minutes >= 0 && minutes <= 59 && seconds >= 0
        && seconds <= 59;
}

namespace {

// Writes at least two ASCII digits of v (0 <= v <= 999) and returns the position after them.
char16_t *putPadded(char16_t *out, int64_t v)
{
    if (v >= 100)
        *out++ = char16_t(u'0' + v / 100);
    *out++ = char16_t(u'0' + (v / 10) % 10);
    *out++ = char16_t(u'0' + v % 10);
    return out;
}

} // namespace

QString TimeFormat::string(double seconds)
{
    // Runs on every redraw of every visible timer: formatted by hand into a stack buffer, so the
    // only allocation is the resulting string, and the digits stay ASCII in every locale.
    const HMS hms = HMS::fromTotalSeconds(seconds);
    char16_t buffer[9];
    char16_t *end = putPadded(buffer, hms.hours);
    *end++ = u':';
    end = putPadded(end, hms.minutes);
    *end++ = u':';
    end = putPadded(end, hms.seconds);
    return QString(reinterpret_cast<const QChar *>(buffer), end - buffer);
}

int64_t DisplayClock::wholeSeconds(double elapsed)
{
    return static_cast<int64_t>(std::floor(HMS::clamped(elapsed)));
}

int64_t DisplayClock::advance(std::optional<int64_t> shown, int64_t exact)
{
    if (!shown)
        return exact;
    if (*shown >= exact)
        return *shown;
    int64_t d = 0;
    if (__builtin_sub_overflow(exact, *shown, &d))
        return exact; // farther apart than any step: a jump
    return d < 3 ? *shown + 1 : exact;
}

} // namespace tock

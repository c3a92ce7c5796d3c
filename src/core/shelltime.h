// The time word of the shell's `set` command: an absolute duration ("1:30:00", "90", "1h30m")
// or a signed change ("+15m", "-5m").
#pragma once

#include "shellerror.h"

#include <QString>

#include <cstdint>
#include <variant>

namespace tock {

struct ShellTime {
    // Set the elapsed time to this many whole seconds, 0 ... 3599999.
    struct Absolute {
        int64_t seconds = 0;
        bool operator==(const Absolute &) const = default;
    };
    // Change the elapsed time by this many whole seconds, -3599999 ... +3599999.
    struct Relative {
        int64_t seconds = 0;
        bool operator==(const Relative &) const = default;
    };
    std::variant<Absolute, Relative> value;

    static ShellTime absolute(int64_t seconds) { return {Absolute{seconds}}; }
    static ShellTime relative(int64_t seconds) { return {Relative{seconds}}; }
    bool operator==(const ShellTime &) const = default;
};

// Reads one time word as the tokenizer delivered it. Forms: "h:mm:ss", "m:ss" and "d:hh:mm:ss"
// (the leftmost piece is unbounded), bare seconds, and number-unit pairs with d/h/m/s in any
// order and repetition; an optional single leading + or - makes it relative. Unit letters may be
// upper case; only ASCII digits count. Throws ShellError "not a time: <word>" or, above
// 999:59:59 (overflow included), "too long: the most is 999:59:59".
ShellTime parseTime(const QString &word);

} // namespace tock

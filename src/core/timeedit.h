// The logic behind the H:MM:SS edit mask: one field's limits and text rules, the cursor, and
// the draft being edited. The view forwards every key here; Board::commit applies the result.
#pragma once

#include "timevalues.h"

#include <QChar>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace tock {

enum class TimeField { hours = 0, minutes = 1, seconds = 2 };

namespace TimeFields {
inline constexpr std::array<TimeField, 3> all{TimeField::hours, TimeField::minutes, TimeField::seconds};
QString label(TimeField field);  // "Hours", "Minutes", "Seconds"
int64_t maxValue(TimeField field); // 999, 59, 59
int maxDigits(TimeField field);  // 3, 2, 2
// Only ASCII digits, the first maxDigits of them.
QString sanitize(TimeField field, const QString &text);
// Empty gives 0; a non-digit, too many digits or a value above maxValue give absent.
std::optional<int64_t> value(TimeField field, const QString &text);
} // namespace TimeFields

struct MaskCursor {
    TimeField field = TimeField::hours;
    bool fresh = true;          // the next digit replaces the field; backspace clears it
    bool justAdvanced = false;  // moved on by itself; a separator typed next is swallowed

    MaskCursor() = default;
    MaskCursor(TimeField f, bool isFresh) : field(f), fresh(isFresh) {}

    void focus(TimeField f);
    void next();      // hours -> minutes -> seconds, no wrap
    void previous();  // seconds -> minutes -> hours, no wrap

    bool operator==(const MaskCursor &) const = default;
};

struct TimeEditDraft {
    std::array<QString, 3> texts;     // indexed by TimeField
    std::array<QString, 3> original;  // what the draft started from; never edited

    // "%02d" of each part of min(seconds, HMS::maxSeconds).
    explicit TimeEditDraft(double seconds);

    const QString &operator[](TimeField f) const { return texts[static_cast<int>(f)]; }
    // Stores the sanitized text.
    void set(TimeField f, const QString &text);

    bool isValid(TimeField f) const;
    bool isValid() const;
    std::optional<HMS> value() const;
    // Field by field, the parsed values of texts and original are equal (two absent count equal).
    bool isUnchanged() const;

    // A digit or separator; false (nothing changed) for any other character.
    bool type(QChar c, MaskCursor &cursor);
    void backspace(MaskCursor &cursor);
    // Adds delta to the focused field, wrapping within it.
    void step(int64_t delta, MaskCursor &cursor);

    bool operator==(const TimeEditDraft &) const = default;
};

} // namespace tock

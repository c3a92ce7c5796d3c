// How to revert a reset or a deletion, plus the two texts the change is shown under: the undo
// menu's action name and the toast's message.
#pragma once

#include "timer.h"

#include <QString>

#include <cstdint>
#include <variant>

namespace tock {

struct UndoEntry {
    // The timer as it was just before the reset, and the board's pause epoch at that moment.
    struct Reset {
        TimerItem before;
        int64_t epoch = 0;
        bool operator==(const Reset &) const = default;
    };
    // The removed timer, the position it was removed from, and the pause epoch at that moment.
    struct Delete {
        TimerItem item;
        int64_t index = 0;
        int64_t epoch = 0;
        bool operator==(const Delete &) const = default;
    };

    std::variant<Reset, Delete> value;

    static UndoEntry reset(TimerItem before, int64_t epoch) { return {Reset{std::move(before), epoch}}; }
    static UndoEntry remove(TimerItem item, int64_t index, int64_t epoch)
    {
        return {Delete{std::move(item), index, epoch}};
    }

    bool isReset() const { return std::holds_alternative<Reset>(value); }
    // The timer the entry is about (before for a reset, item for a deletion).
    const TimerItem &timer() const;

    // "Reset Timer" / "Delete Timer".
    QString actionName() const;
    // Reset “name” / Deleted “name”, with "Untitled" for an empty name.
    QString message() const;

    bool operator==(const UndoEntry &) const = default;
};

} // namespace tock

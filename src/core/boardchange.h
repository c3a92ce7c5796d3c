// The difference between two boards in rows: what the model tells views after each edit.
#pragma once

#include "board.h"

#include <QList>
#include <QUuid>

namespace tock {

// What one edit did to the board, so views repaint or animate exactly those rows. Positions are
// indexes: `position` and `to` in the board after the edit, `from` in the board before it.
// Timers that only slid along because others were inserted, removed or moved are not listed.
struct BoardChange {
    struct Inserted {
        QUuid id;
        qsizetype position = 0;
        bool operator==(const Inserted &) const = default;
    };
    struct Moved {
        QUuid id;
        qsizetype from = 0;
        qsizetype to = 0;
        bool operator==(const Moved &) const = default;
    };
    QList<Inserted> inserted;
    QList<QUuid> removed;
    QList<Moved> moved;
    QList<QUuid> changed; // name, time or running state changed

    bool isEmpty() const;
    // The difference between two boards; the fewest timers count as moved.
    static BoardChange between(const Board &before, const Board &after);
    bool operator==(const BoardChange &) const = default;
};

} // namespace tock

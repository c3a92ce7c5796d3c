// The ordered list of timers and every edit the application, the command line and the checks
// make to it. A plain value: copying a Board copies its timers. Operations on an id that is not
// on the board change nothing.
#pragma once

#include "timeedit.h"
#include "timer.h"
#include "undoentry.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace tock {

struct Board {
    QList<TimerItem> timers;      // display order; ids unique
    QList<Instant> pauseHistory;  // one entry per pauseAll, oldest first; its length is the pause epoch

    Board() = default;
    explicit Board(QList<TimerItem> initialTimers) : timers(std::move(initialTimers)) {}

    // Lookups are linear scans in list order that stop at the first match.
    std::optional<qsizetype> index(const QUuid &id) const;
    std::optional<TimerItem> timer(const QUuid &id) const;
    bool anyRunning() const;
    int64_t epoch() const { return pauseHistory.size(); }

    // "Timer n", n counting up from the number of timers + 1 past names already taken.
    QString nextDefaultName() const;
    // Appends a stopped timer with a fresh random id; an absent name takes nextDefaultName().
    // A given name is used exactly as passed.
    TimerItem add(std::optional<QString> name = std::nullopt);
    // Every newline character becomes one space; nothing else is cleaned.
    void rename(const QUuid &id, const QString &name);
    // Starts a stopped timer; pauses a running one, adding its run uncapped.
    void toggle(const QUuid &id, Instant now);
    // Zeroes and stops the timer; returns how to undo it, or nothing for an unknown id.
    std::optional<UndoEntry> reset(const QUuid &id);
    // Removes the timer (`delete` in the design; that word is reserved in C++).
    std::optional<UndoEntry> remove(const QUuid &id);
    // Reverts a reset or deletion, settled against any pause-all since; true if the board changed.
    bool undo(const UndoEntry &entry);
    // Clamps to 0...HMS::maxSeconds; a running timer keeps running and shows exactly that at now.
    void setElapsed(const QUuid &id, double seconds, Instant now);
    // Records the pause (always) and stops every running timer, capped at HMS::maxSeconds.
    void pauseAll(Instant now);
    // Moves the timer at index `from` so that it ends up at index `to`. An index outside the
    // list stops the program.
    void move(qsizetype from, qsizetype to);
    // Applies a finished time edit: false for an invalid draft, true otherwise; an unchanged draft
    // leaves the board alone so a running timer is not restarted.
    bool commit(const TimeEditDraft &draft, const QUuid &id, Instant now);

    bool operator==(const Board &) const = default;
};

} // namespace tock

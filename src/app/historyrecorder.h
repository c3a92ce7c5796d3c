// What the application model's board edits mean for the history: a run that began or ended, a
// total an edit changed (the difference becomes an adjustment, so a timer's total always equals
// its intervals plus its adjustments), a timer added, renamed, deleted or brought back, a reset.
// The model hands it every edit as the boards before and after and the edit's instant; it writes
// at most one transaction per edit and nothing at all for edits that change no run or total
// (moves) and for ticks, which are not edits.
#pragma once

#include "board.h"
#include "history.h"

#include <QHash>

#include <memory>
#include <optional>

namespace tock {

// Why the board changed, where the board alone cannot tell: a reset starts a new count rather
// than taking time away, so neither it nor its undo is an adjustment.
enum class HistoryCause { edit, reset, resetUndone };

class HistoryRecorder {
public:
    // When opening looks at every page (the window, once per launch) or trusts the file (short
    // terminal runs, which meet damage as a failed write instead).
    enum class Check { full, none };

    struct Opening {
        std::shared_ptr<HistoryRecorder> recorder; // null when no history could be opened
        std::optional<QString> setAsideTo;        // a damaged history.db moved here; a new one started
        std::optional<QString> failure;           // why there is no history this run
    };

    // Opens `directory`/history.db for writing, creating it when missing. A damaged file is
    // moved into Damaged/<stamp>-history.db and a new one started. Only the lock holder calls this.
    static Opening open(const QString &directory, const QString &stamp, Check check);

    explicit HistoryRecorder(std::unique_ptr<History> history);

    // Brings the history in line with the board at the start of a run: runs left open by a copy
    // that died end at `lastSaved` (when timers.json was last written, so no more is lost than
    // the totals lost), the board's timers are recorded as they are, and its running timers get
    // an open run. Throws HistoryError.
    void start(const Board &board, std::optional<Instant> lastSaved, Instant now);
    // One edit made at `at`. Throws HistoryError; then nothing of this edit was written.
    void record(const Board &before, const Board &after, Instant at, HistoryCause cause);

    History &history() { return *history_; }

private:
    std::unique_ptr<History> history_;
    // What this run knows beyond the board: when each timer's last run was ended here (a run
    // brought back by an undo goes on from there) and the recorded total of each deleted timer
    // (an undone deletion comes back with it). Undo lives only as long as the run, so this does too.
    QHash<QUuid, Instant> lastClose_;
    QHash<QUuid, double> deletedTotal_;
};

} // namespace tock

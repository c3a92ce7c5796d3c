#include "historyrecorder.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace tock {

namespace {

// Differences below this are the last bits of floating-point sums, not edits.
constexpr double negligible = 1e-6;

// The timer's total at `at`, uncapped as Board::toggle adds a run: the history keeps what was
// worked, and a cap applied by a pause-all shows up as the adjustment it is.
double total(const TimerItem &t, Instant at)
{
    return t.accumulated + (t.startedAt ? std::max(0.0, at - *t.startedAt) : 0.0);
}

} // namespace

HistoryRecorder::Opening HistoryRecorder::open(const QString &directory, const QString &stamp, Check check)
{
    const QString path = QDir(directory).filePath(History::fileName());
    Opening opening;
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            auto history = std::make_unique<History>(path, History::Access::write);
            if (check == Check::full)
                history->quickCheck();
            opening.recorder = std::make_shared<HistoryRecorder>(std::move(history));
            return opening;
        } catch (const HistoryError &error) {
            if (!error.damaged || attempt > 0) {
                opening.failure = error.message;
                return opening;
            }
        }
        try {
            opening.setAsideTo = History::setAside(directory, stamp);
        } catch (const HistoryError &error) {
            opening.failure = error.message;
            return opening;
        }
    }
    return opening;
}

HistoryRecorder::HistoryRecorder(std::unique_ptr<History> history) : history_(std::move(history)) {}

void HistoryRecorder::start(const Board &board, std::optional<Instant> lastSaved, Instant now)
{
    QHash<QUuid, History::Timer> known;
    for (const History::Timer &t : history_->timers())
        known.insert(t.id, t);
    history_->transaction([&] {
        // Without a saved file to go by, a run left open counts nothing.
        history_->closeAllIntervals(lastSaved.value_or(-1e300));
        for (const TimerItem &t : board.timers) {
            const auto it = known.constFind(t.id);
            if (it == known.constEnd() || it->name != t.name || it->deleted)
                history_->setTimer(t.id, t.name, false);
            if (t.startedAt)
                history_->openInterval(t.id, std::min(*t.startedAt, now));
            known.remove(t.id);
        }
        // Whatever the history knows that is not on the board any more is gone from it.
        for (const History::Timer &t : std::as_const(known)) {
            if (!t.deleted)
                history_->setTimer(t.id, t.name, true);
        }
    });
}

void HistoryRecorder::record(const Board &before, const Board &after, Instant at, HistoryCause cause)
{
    // Decide everything first, so an edit that means nothing to the history opens no transaction
    // and a failed one leaves this object's memory as it was.
    std::vector<std::function<void()>> writes;
    QHash<QUuid, Instant> closes;
    QHash<QUuid, double> gone;
    QList<QUuid> returned;
    QHash<QUuid, const TimerItem *> old;
    for (const TimerItem &t : before.timers)
        old.insert(t.id, &t);

    for (const TimerItem &a : after.timers) {
        const TimerItem *b = old.take(a.id);
        if (b && *b == a)
            continue;
        const QUuid id = a.id;
        // What the history holds for this timer until now.
        double recorded = 0;
        if (b) {
            recorded = total(*b, at);
            if (a.name != b->name)
                writes.push_back([this, id, name = a.name] { history_->setTimer(id, name, false); });
        } else {
            const auto it = deletedTotal_.constFind(id);
            const bool undone = it != deletedTotal_.constEnd();
            recorded = undone ? *it : 0;
            if (undone)
                returned << id;
            writes.push_back([this, id, name = a.name, undone, at] {
                history_->setTimer(id, name, false);
                if (undone)
                    history_->addEvent(id, at, History::Event::deleteUndone);
            });
        }
        const bool restarted = b && b->startedAt && a.startedAt != b->startedAt;
        if (restarted || (b && b->startedAt && !a.startedAt)) {
            writes.push_back([this, id, at] { history_->closeInterval(id, at); });
            closes.insert(id, at);
        }
        if (a.startedAt && (!b || a.startedAt != b->startedAt)) {
            // A run an undo brought back goes on from where this run ended it.
            const Instant from = std::clamp(*a.startedAt, closes.value(id, lastClose_.value(id, at)), at);
            writes.push_back([this, id, from] { history_->openInterval(id, from); });
            recorded += at - from;
        }
        const double difference = total(a, at) - recorded;
        if (cause == HistoryCause::edit) {
            if (std::abs(difference) > negligible)
                writes.push_back([this, id, at, difference] { history_->addAdjustment(id, at, difference); });
        } else if (std::abs(difference) > negligible || a.startedAt != (b ? b->startedAt : std::nullopt)) {
            const History::Event event =
                cause == HistoryCause::reset ? History::Event::reset : History::Event::resetUndone;
            writes.push_back([this, id, at, event] { history_->addEvent(id, at, event); });
        }
    }
    // What is left of the old board was deleted.
    for (const TimerItem *b : std::as_const(old)) {
        const QUuid id = b->id;
        gone.insert(id, total(*b, at));
        if (b->startedAt) {
            writes.push_back([this, id, at] { history_->closeInterval(id, at); });
            closes.insert(id, at);
        }
        writes.push_back([this, id, name = b->name, at] {
            history_->setTimer(id, name, true);
            history_->addEvent(id, at, History::Event::deleted);
        });
    }
    if (writes.empty())
        return;
    history_->transaction([&] {
        for (const auto &write : writes)
            write();
    });
    for (auto it = closes.cbegin(); it != closes.cend(); ++it)
        lastClose_.insert(it.key(), it.value());
    for (auto it = gone.cbegin(); it != gone.cend(); ++it)
        deletedTotal_.insert(it.key(), it.value());
    for (const QUuid &id : std::as_const(returned))
        deletedTotal_.remove(id);
}

} // namespace tock

#include "board.h"

#include "require.h"
#include "text.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace tock {

namespace {

// The platform's newline set: LF, VT, FF, CR, NEL and the Unicode line and paragraph separators.
bool isNewline(QChar c)
{
    switch (c.unicode()) {
    case 0x000A: case 0x000B: case 0x000C: case 0x000D:
    case 0x0085: case 0x2028: case 0x2029:
        return true;
    default:
        return false;
    }
}

const QString kDefaultPrefix = QStringLiteral("Timer ");

// The n of a name that reads exactly "Timer n" (n >= 1, plain decimal), else 0.
uint64_t defaultNameNumber(const QString &name)
{
    const qsizetype digits = name.size() - kDefaultPrefix.size();
    if (digits < 1 || digits > 19 || !name.startsWith(kDefaultPrefix))
        return 0;
    const std::optional<int64_t> n = Text::decimal(QStringView(name).mid(kDefaultPrefix.size()));
    // A leading zero is not how the number would be written, so "Timer 07" is not "Timer 7".
    if (!n || name.at(kDefaultPrefix.size()) == u'0')
        return 0;
    return uint64_t(*n);
}

} // namespace

std::optional<qsizetype> Board::index(const QUuid &id) const
{
    for (qsizetype i = 0; i < timers.size(); ++i) {
        if (timers[i].id == id)
            return i;
    }
    return std::nullopt;
}

std::optional<TimerItem> Board::timer(const QUuid &id) const
{
    if (const auto i = index(id))
        return timers[*i];
    return std::nullopt;
}

bool Board::anyRunning() const
{
    return std::any_of(timers.cbegin(), timers.cend(), [](const TimerItem &t) { return t.isRunning(); });
}

QString Board::nextDefaultName() const
{
    // Counting from the number of timers (not the lowest free number) means a new timer is never
    // numbered below the count. With c timers the answer lies in c+1 ... 2c+1, so only names in
    // that window matter: a bitmap over it replaces a set of every name.
    const auto count = static_cast<uint64_t>(timers.size());
    TOCK_REQUIRE(count < uint64_t(std::numeric_limits<int64_t>::max()) / 2,
                 "default name number overflows");
    const uint64_t first = count + 1;
    std::vector<bool> taken(count + 1, false);
    for (const TimerItem &t : timers) {
        const uint64_t n = defaultNameNumber(t.name);
        if (n >= first && n - first <= count)
            taken[n - first] = true;
    }
    uint64_t n = first;
    while (taken[n - first]) {
        TOCK_REQUIRE(n < uint64_t(std::numeric_limits<int64_t>::max()), "default name number overflows");
        ++n;
    }
    return kDefaultPrefix + QString::number(n);
}

TimerItem Board::add(std::optional<QString> name)
{
    TimerItem item;
    item.id = QUuid::createUuid();
    item.name = name ? std::move(*name) : nextDefaultName();
    timers.append(item);
    return item;
}

void Board::rename(const QUuid &id, const QString &name)
{
    const auto i = index(id);
    if (!i)
        return;
    QString flat = name;
    for (QChar &c : flat) {
        if (isNewline(c))
            c = u' ';
    }
    timers[*i].name = std::move(flat);
}

void Board::toggle(const QUuid &id, Instant now)
{
    const auto i = index(id);
    if (!i)
        return;
    TimerItem &t = timers[*i];
    if (t.startedAt) {
        // Not capped here, unlike pauseAll: elapsed() caps when the value is read.
        t.accumulated += std::max(0.0, now - *t.startedAt);
        t.startedAt.reset();
    } else {
        t.startedAt = now;
    }
}

std::optional<UndoEntry> Board::reset(const QUuid &id)
{
    const auto i = index(id);
    if (!i)
        return std::nullopt;
    TimerItem &t = timers[*i];
    UndoEntry entry = UndoEntry::reset(t, epoch());
    // A reset stops the timer rather than letting it count on from zero.
    t.accumulated = 0;
    t.startedAt.reset();
    return entry;
}

std::optional<UndoEntry> Board::remove(const QUuid &id)
{
    const auto i = index(id);
    if (!i)
        return std::nullopt;
    TimerItem item = timers.takeAt(*i);
    return UndoEntry::remove(std::move(item), *i, epoch());
}

namespace {

// A timer restored from an undo entry must not count the time everything stood still: if a
// pause-all came after the entry was made, the timer stops as if it had run until that pause.
TimerItem settled(TimerItem item, int64_t entryEpoch, const QList<Instant> &pauseHistory)
{
    const qsizetype since = std::max<int64_t>(entryEpoch, 0);
    if (item.startedAt && pauseHistory.size() > since) {
        const Instant pause = pauseHistory[since];
        item.accumulated += std::max(0.0, pause - *item.startedAt);
        item.startedAt.reset();
    }
    return item;
}

} // namespace

bool Board::undo(const UndoEntry &entry)
{
    if (const auto *del = std::get_if<UndoEntry::Delete>(&entry.value)) {
        if (index(del->item.id))
            return false; // already undone
        const qsizetype at = std::clamp<int64_t>(del->index, 0, timers.size());
        timers.insert(at, settled(del->item, del->epoch, pauseHistory));
        return true;
    }
    const auto &res = std::get<UndoEntry::Reset>(entry.value);
    const auto i = index(res.before.id);
    if (!i)
        return false;
    // Only the time comes back: a rename or move made after the reset survives its undo.
    const TimerItem restored = settled(res.before, res.epoch, pauseHistory);
    TimerItem &t = timers[*i];
    t.accumulated = restored.accumulated;
    t.startedAt = restored.startedAt;
    return true;
}

void Board::setElapsed(const QUuid &id, double seconds, Instant now)
{
    const auto i = index(id);
    if (!i)
        return;
    TimerItem &t = timers[*i];
    t.accumulated = HMS::clamped(seconds);
    if (t.startedAt)
        t.startedAt = now;
}

void Board::pauseAll(Instant now)
{
    pauseHistory.append(now);
    for (TimerItem &t : timers) {
        if (!t.startedAt)
            continue;
        t.accumulated = std::min(t.accumulated + std::max(0.0, now - *t.startedAt), double(HMS::maxSeconds));
        t.startedAt.reset();
    }
}

void Board::move(qsizetype from, qsizetype to)
{
    const qsizetype size = timers.size();
    TOCK_REQUIRE(from >= 0 && from < size && to >= 0 && to < size, "move offset outside the board");
    timers.move(from, to);
}

bool Board::commit(const TimeEditDraft &draft, const QUuid &id, Instant now)
{
    const std::optional<HMS> hms = draft.value();
    if (!hms || !hms->isValid())
        return false;
    // Committing an untouched edit must not restart a running timer.
    if (draft.isUnchanged())
        return true;
    setElapsed(id, double(hms->totalSeconds()), now);
    return true;
}

} // namespace tock

#include "boardchange.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace tock {

bool BoardChange::isEmpty() const
{
    return inserted.isEmpty() && removed.isEmpty() && moved.isEmpty() && changed.isEmpty();
}

BoardChange BoardChange::between(const Board &before, const Board &after)
{
    BoardChange change;
    QHash<QUuid, qsizetype> oldIndex;
    for (qsizetype i = 0; i < before.timers.size(); ++i)
        oldIndex.insert(before.timers.at(i).id, i);
    QSet<QUuid> kept;
    // Timers on both boards, in their new order, with their old index.
    QList<std::pair<qsizetype, qsizetype>> common; // (old index, new index)
    for (qsizetype i = 0; i < after.timers.size(); ++i) {
        const TimerItem &timer = after.timers.at(i);
        const auto it = oldIndex.constFind(timer.id);
        if (it == oldIndex.constEnd()) {
            change.inserted.append({timer.id, i});
            continue;
        }
        kept.insert(timer.id);
        common.append({*it, i});
        if (before.timers.at(*it) != timer)
            change.changed.append(timer.id);
    }
    for (const TimerItem &timer : before.timers) {
        if (!kept.contains(timer.id))
            change.removed.append(timer.id);
    }

    // The longest run whose old order survives stayed put; everything else moved. Patience
    // sorting on the old indexes, with links back to rebuild the run.
    QList<qsizetype> tails;              // positions in `common` ending the best run of each length
    QList<qsizetype> previous(common.size(), -1);
    for (qsizetype i = 0; i < common.size(); ++i) {
        const auto pos = std::lower_bound(tails.begin(), tails.end(), common.at(i).first,
                                          [&](qsizetype t, qsizetype value) { return common.at(t).first < value; });
        if (pos != tails.begin())
            previous[i] = *(pos - 1);
        if (pos == tails.end())
            tails.append(i);
        else
            *pos = i;
    }
    QList<bool> stayed(common.size(), false);
    for (qsizetype i = tails.isEmpty() ? -1 : tails.last(); i >= 0; i = previous.at(i))
        stayed[i] = true;
    for (qsizetype i = 0; i < common.size(); ++i) {
        if (!stayed.at(i))
            change.moved.append({after.timers.at(common.at(i).second).id, common.at(i).first, common.at(i).second});
    }
    return change;
}

} // namespace tock

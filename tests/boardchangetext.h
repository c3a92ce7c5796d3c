// Board changes written as words, so tables can state them: shared by the board and model tests.
#pragma once

#include "board.h"
#include "boardchange.h"

#include <QStringList>

namespace tock {

// A change in words, naming timers by their names on either board: "+D@3 -B A:0>2 ~C".
inline QString describe(const BoardChange &change, const Board &before, const Board &after)
{
    const auto name = [&](const QUuid &id) {
        const std::optional<TimerItem> timer = after.timer(id) ? after.timer(id) : before.timer(id);
        return timer ? timer->name : QStringLiteral("?");
    };
    QStringList words;
    for (const BoardChange::Inserted &i : change.inserted)
        words << QStringLiteral("+%1@%2").arg(name(i.id)).arg(i.position);
    for (const QUuid &id : change.removed)
        words << QLatin1Char('-') + name(id);
    for (const BoardChange::Moved &m : change.moved)
        words << QStringLiteral("%1:%2>%3").arg(name(m.id)).arg(m.from).arg(m.to);
    for (const QUuid &id : change.changed)
        words << QLatin1Char('~') + name(id);
    return words.join(QLatin1Char(' '));
}

} // namespace tock

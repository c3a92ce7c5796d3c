// What the application tests add to the shared fixture: QtTest and a counter of change signals.
#pragma once

#include "modelfixture.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <vector>

namespace tock {

// Counts every signal of the model, to prove what did not notify.
class SignalCounter {
public:
    explicit SignalCounter(QObject *object)
    {
        const QMetaObject *meta = object->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            if (method.methodType() == QMetaMethod::Signal)
                spies_.push_back(std::make_unique<QSignalSpy>(object, method));
        }
    }
    // Names of the signals emitted since construction, with repeats.
    QStringList emitted() const
    {
        QStringList out;
        for (const auto &spy : spies_) {
            for (int n = 0; n < spy->count(); ++n)
                out << QString::fromLatin1(spy->signal()).section(QLatin1Char('('), 0, 0);
        }
        return out;
    }
    void clear()
    {
        for (const auto &spy : spies_)
            spy->clear();
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> spies_;
};

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

// One named count-up timer. A timer does not tick: a running one remembers when its current
// run began, and its elapsed time is computed from that on demand.
#pragma once

#include <QString>
#include <QUuid>

#include <optional>

namespace tock {

// A wall-clock instant: seconds since 1970-01-01T00:00:00Z. The core never reads the clock;
// every time-dependent operation is handed `now`.
using Instant = double;

struct TimerItem {
    QUuid id;                        // stable identity, random version 4
    QString name;                    // may be empty (shown as "Untitled")
    double accumulated = 0;          // seconds gathered by finished runs; may exceed the cap after toggle
    std::optional<Instant> startedAt; // present exactly while running

    bool isRunning() const { return startedAt.has_value(); }
    // The name as lists and messages show it: "Untitled" for an empty one.
    QString displayName() const { return name.isEmpty() ? untitled() : name; }
    static QString untitled() { return QStringLiteral("Untitled"); }
    // accumulated + max(0, now - startedAt) while running, capped at HMS::maxSeconds.
    double elapsed(Instant now) const;

    bool operator==(const TimerItem &) const = default;
};

} // namespace tock

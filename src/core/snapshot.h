// The persisted form of the board: the whole content of timers.json and of every backup.
// Every check that decides whether a file is usable lives in decode(), so "decodes" and
// "usable" mean the same thing to the store.
#pragma once

#include "board.h"
#include "storeerror.h"
#include "timer.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>

#include <cstdint>
#include <optional>

namespace tock {

struct Snapshot {
    static constexpr int64_t currentFormat = 1;

    struct Entry {
        QUuid id;
        QString name;
        double seconds = 0;       // elapsed at savedAt, fractions kept, at most HMS::maxSeconds
        bool wasRunning = false;  // for information only; loading never restarts a timer
        bool operator==(const Entry &) const = default;
    };

    int64_t format = currentFormat;
    QString app = QStringLiteral("Tock");
    QDateTime savedAt;            // UTC; written with whole seconds
    std::optional<QString> style; // a StyleID raw value, or anything a newer program wrote
    QList<Entry> timers;          // board order

    Snapshot() = default;
    // Elapsed times are clamped to HMS::maxSeconds here, so a file this program writes always
    // passes decode()'s bound check. A start time after `now` adds nothing.
    Snapshot(const Board &board, std::optional<QString> style, Instant now);

    // Every timer paused (whatever wasRunning says), negative seconds as 0, empty pauseHistory.
    Board board() const;

    // Pretty-printed JSON with keys sorted; "style" left out when absent. Throws StoreError::invalidContent for a
    // value JSON cannot carry (an invalid savedAt, a non-finite number), which a snapshot built
    // from a board never has.
    QByteArray encoded() const;

    // Throws StoreError::invalidContent for bad syntax, a missing key or a wrong type; then, in this order,
    // StoreError::invalidContent "Unsupported file format <n>" for a foreign format or app tag,
    // and "Implausible timer values" for a time outside 0...HMS::maxSeconds or a repeated id.
    // Unknown keys are ignored.
    static Snapshot decode(const QByteArray &data);

    bool operator==(const Snapshot &) const = default;
};

} // namespace tock

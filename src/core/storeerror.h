// The two ways reading or writing the data folder fails in words the user can be shown.
#pragma once

#include <QString>

namespace tock {

// The JSON reader's own complaint about a document: bad syntax, a missing key or a value of the
// wrong type. Thrown by value by Snapshot::decode and Snapshot::encoded.
struct JsonError {
    QString description;
    bool operator==(const JsonError &) const = default;
};

// Every error the store throws (by value). `message` is empty for `blocked`.
struct StoreError {
    enum class Kind { invalidContent, io, blocked };
    Kind kind = Kind::io;
    QString message;

    // The file parsed but its content is not something this program wrote.
    static StoreError invalidContent(QString m) { return {Kind::invalidContent, std::move(m)}; }
    // The file system refused; the message carries the system's own text.
    static StoreError io(QString m) { return {Kind::io, std::move(m)}; }
    // Saving is paused so that data that could not be read is not overwritten.
    static StoreError blocked() { return {Kind::blocked, {}}; }

    // The user-facing text.
    QString description() const;

    bool operator==(const StoreError &) const = default;
};

} // namespace tock

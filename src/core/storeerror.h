// The three kinds of failure of the data folder (content that is not ours, a refusing file system,
// saving paused), in words the user can be shown.
#pragma once

#include <QString>

namespace tock {

// Every error the store throws (by value). `message` is empty for `blocked`.
struct StoreError {
    enum class Kind { invalidContent, io, blocked, folderGone, backupsFailed };
    Kind kind = Kind::io;
    QString message;

    // The file is not something this program wrote: bad JSON syntax, a missing key, a value of
    // the wrong type, or content that parsed but makes no sense.
    static StoreError invalidContent(QString m) { return {Kind::invalidContent, std::move(m)}; }
    // The file system refused; the message carries the system's own text.
    static StoreError io(QString m) { return {Kind::io, std::move(m)}; }
    // Saving is paused so that data that could not be read is not overwritten.
    static StoreError blocked() { return {Kind::blocked, {}}; }
    // The data folder's path no longer names the folder whose lock this copy holds (moved,
    // deleted or replaced); `m` is the folder's path. Nothing was written.
    static StoreError folderGone(QString folder) { return {Kind::folderGone, std::move(folder)}; }
    // timers.json was written; only the backup rotation failed, for the reason `m`.
    static StoreError backupsFailed(QString m) { return {Kind::backupsFailed, std::move(m)}; }

    // The user-facing text.
    QString description() const;

    bool operator==(const StoreError &) const = default;
};

} // namespace tock

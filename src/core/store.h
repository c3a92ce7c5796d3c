// The data folder: loading timers.json with recovery from the numbered backups, saving it by
// atomic replacement, rotating the backups, and keeping damaged or unreadable files out of
// harm's way. Nothing in the folder is ever deleted except the oldest backup during rotation
// and a temporary file whose write failed; while existing data could not be read, saving is
// paused (`isBlocked`) so that it is not overwritten.
//
// Layout: timers.json, Backups/timers-1.json (newest) ... timers-<backupCount>.json,
// Damaged/<stamp>-<name>, Unreadable-<stamp>/, plus transient temporary files.
#pragma once

#include "filesystem.h"
#include "snapshot.h"
#include "storeerror.h"
#include "timer.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <variant>

namespace tock {

class InstanceLock;

class Store {
public:
    struct LoadResult {
        // timers.json was read and is valid.
        struct Loaded {
            Snapshot snapshot;
            bool operator==(const Loaded &) const = default;
        };
        // timers.json was missing or bad and a backup was used. `from` is the backup's file
        // name; `damaged` the full paths of the copies made in Damaged/ (empty when none were
        // needed or preserving them failed: see awaitingArchive()).
        struct Recovered {
            Snapshot snapshot;
            QString from;
            QStringList damaged;
            bool operator==(const Recovered &) const = default;
        };
        // Files exist but none could be used: their full paths, and one line per failure in
        // the order tried. Saving is paused.
        struct Unreadable {
            QStringList files;
            QStringList reasons;
            bool operator==(const Unreadable &) const = default;
        };
        // Neither a main file nor a backup exists: the first start.
        struct Fresh {
            bool operator==(const Fresh &) const = default;
        };
        std::variant<Loaded, Recovered, Unreadable, Fresh> value;
        bool operator==(const LoadResult &) const = default;
    };

    enum class BlockPolicy { respect, ignore };

    // When backups are rotated. `perRun`: at every start and at the first save of a run, then
    // at most once per minimumBackupInterval (for the window, which runs for hours).
    // `byNewestBackup`: only when the newest backup on disk is older than the interval, at start
    // and at save alike, so that many short runs in a row (scripts in a terminal) do not push
    // out the state they began from.
    enum class BackupPacing { perRun, byNewestBackup };

    // Touches no file. `backupCount` must be at least 1. `fm` defaults to the real file system.
    Store(QString directory, int backupCount, double minimumBackupInterval, std::shared_ptr<FileSystem> fm = {});

    // TOCK_DATA_DIR when set and not empty (used verbatim); else the per-user data folder with
    // "Tock" appended: ~/Library/Application Support on macOS, $XDG_DATA_HOME (default
    // ~/.local/share) elsewhere.
    static QString defaultDirectory();

    const QString &directory() const { return directory_; }
    int backupCount() const { return backupCount_; }
    double minimumBackupInterval() const { return minimumBackupInterval_; }
    // Saving is paused; write() and save() throw StoreError::blocked().
    bool isBlocked() const { return isBlocked_; }
    // Files that failed to load still wait to be copied to Damaged/.
    bool awaitingArchive() const { return !pendingDamaged_.isEmpty(); }
    // When save() last rotated the backups; in memory only.
    std::optional<Instant> lastBackup() const { return lastBackup_; }
    BackupPacing backupPacing() const { return backupPacing_; }
    void setBackupPacing(BackupPacing pacing) { backupPacing_ = pacing; }

    // The lock this store writes under (held by its owner, which outlives the store). With it,
    // nothing is created, written or renamed in the folder unless the folder's path still names
    // the folder the lock covers: otherwise those calls throw StoreError::folderGone and
    // folderLost() is true until the folder is back or retakeFolder() succeeded.
    void setLock(InstanceLock *lock) { lock_ = lock; }
    bool folderLost() const { return folderLost_; }
    // The "Retry" after the folder was lost: takes the lock at the path again (creating the
    // folder). A timers.json found there is someone else's: it is kept as the newest backup (or
    // in Damaged/ when it is not valid) before anything is written. Throws StoreError (io) when
    // another copy holds the lock or the folder cannot be used; what was found is kept then too.
    void retakeFolder(Instant now);

    QString mainPath() const;
    QString backupsPath() const;
    QString damagedPath() const;
    QString backupPath(int n) const;

    // Tries timers.json, then each backup from the newest; every problem becomes a result.
    // On a recovery, the files that failed are copied to Damaged/ and the recovered snapshot
    // becomes the new timers.json; if the copies fail, saving stays paused instead. `now`
    // stamps the copies' names.
    LoadResult load(Instant now);
    // The "Retry" after a recovery whose copies failed: true when saving works again.
    bool retryPreservation(Instant now);
    // The user's choice after an unreadable load: moves timers.json and Backups/ into a new
    // Unreadable-<stamp of now>/ folder and starts an empty folder. Returns that folder's path;
    // stops at the first failure (what was moved stays moved).
    QString setAsideUnreadableAndStartFresh(Instant now);
    // Removes the temporary files a killed copy may have left (.timers.json.<pid>.tmp and
    // Backups/.backup.tmp, nothing else). Only while holding the instance lock: then no other
    // copy can be writing them. Failures are ignored.
    void removeStaleTemporaryFiles();
    // Creates the folder and Backups/; throws io "Could not create <directory>: <reason>".
    void prepareDirectory();
    // Replaces timers.json through a flushed temporary file and a rename. On failure the old
    // timers.json is untouched and the temporary file removed. A timers.json that is a link
    // whose every link and target this user owns is written through: the file it leads to is
    // replaced (the temporary file beside it), so it stays a link; any other link is replaced
    // itself. The replaced file's permission bits are kept when it was a regular file of this
    // user, less group and world write; otherwise the new file is private (0600). The folder is flushed too,
    // except when the only change since the previous write is the running timers' seconds:
    // then a power cut keeps the previous, whole file and costs at most those seconds.
    void write(const Snapshot &snapshot, BlockPolicy policy = BlockPolicy::respect);
    // write(), then rotateBackups() if none was made by save() in the last
    // minimumBackupInterval seconds (measured from that rotation, not from the last save) and,
    // with byNewestBackup pacing, the newest backup on disk is older than that too.
    // A failed rotation throws StoreError::backupsFailed: timers.json was written all the same.
    void save(const Snapshot &snapshot, Instant now);
    // The rotation made once at start: always with perRun pacing, only when the newest backup
    // is older than the interval with byNewestBackup. Does not set lastBackup().
    void rotateBackupsAtStart(Instant now);
    // Shifts the backups up by one (dropping the oldest) and copies timers.json as
    // timers-1.json. Does nothing when timers.json cannot be read or is not valid, so a bad
    // main file never enters the backups, and nothing while saving is paused.
    void rotateBackups();
    // `now` in local time as "yyyy-MM-ddTHH-mm-ss-SSS", safe in file names.
    static QString stamp(Instant now);

    // Copies the pending damaged files, then writes the pending recovered snapshot. Returns the
    // copies' paths, or nothing (saving paused, everything kept for a retry) if copying failed.
    std::optional<QStringList> finishRecovery(Instant now);
    // Copies each file to Damaged/<one stamp>-<name>, leaving the original; an existing copy
    // is kept and counted, a pipe or device skipped (it holds nothing). Nothing when Damaged/
    // cannot be made or a copy fails.
    std::optional<QStringList> preserveDamaged(const QStringList &paths, Instant now);

private:
    // Writes a flushed temporary file; removes it and throws StoreError on failure.
    void stage(const QString &temporary, const QByteArray &data, const QString &what,
               std::optional<int> permissions = std::nullopt);
    // The newest backup on disk was written less than the interval before `now`.
    bool newestBackupIsRecent(Instant now);
    // Renames a staged file over its target and, with `syncFolder`, syncs the folder; removes it
    // on failure.
    void renameStaged(const QString &temporary, const QString &target, bool syncFolder = true);
    // Rotates from `current`, the valid content of timers.json.
    void rotateFrom(const QByteArray &current);
    // Rotates from the bytes this store last wrote or loaded when it has them, else from disk.
    void rotateAfterWriting();
    void discard(const QString &temporary);
    // Throws folderGone when the lock does not cover the folder at the path.
    void checkFolder();
    // Keeps a timers.json found after retakeFolder() before it is replaced.
    void keepFoundMainFile();

    QString directory_;
    int backupCount_;
    double minimumBackupInterval_;
    bool isBlocked_ = false;
    std::optional<Instant> lastBackup_;
    BackupPacing backupPacing_ = BackupPacing::perRun;
    std::shared_ptr<FileSystem> fm_;
    QStringList pendingDamaged_;
    std::optional<Snapshot> pendingRecovered_;
    // What timers.json holds, as this store last wrote or loaded it: the rotation copies these
    // bytes instead of reading and checking the file again. Dropped whenever that may be stale.
    std::optional<QByteArray> mainBytes_;
    // The last snapshot written with its folder synced or differing from such a one only in
    // running seconds: a save that changes nothing else skips the folder flush.
    std::optional<Snapshot> lastWritten_;
    InstanceLock *lock_ = nullptr;
    bool folderLost_ = false;
    bool keepFoundMain_ = false; // a retaken folder's timers.json still has to be kept
    Instant retakenAt_ = 0;      // when: names it in Damaged/ if it cannot be read
};

} // namespace tock

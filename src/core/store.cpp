#include "store.h"

#include "instancelock.h"
#include "require.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <cmath>
#include <unistd.h>

namespace tock {

namespace {

QString fileName(const QString &path) { return QFileInfo(path).fileName(); }

// Only the running timers' seconds (and the save time) differ: losing this write in a power cut
// loses nothing else.
bool onlyRunningSecondsDiffer(const Snapshot &before, const Snapshot &after)
{
    if (before.format != after.format || before.app != after.app || before.style != after.style
        || before.timers.size() != after.timers.size())
        return false;
    for (qsizetype i = 0; i < before.timers.size(); ++i) {
        const Snapshot::Entry &a = before.timers.at(i), &b = after.timers.at(i);
        if (a.id != b.id || a.name != b.name || a.wasRunning != b.wasRunning)
            return false;
        if (a.seconds != b.seconds && !(a.wasRunning && b.wasRunning))
            return false;
    }
    return true;
}

StoreError couldNot(const char *verb, const QString &path, const FileSystemError &e)
{
    return StoreError::io(QStringLiteral("Could not %1 %2: %3").arg(QLatin1String(verb), path, e.reason));
}

} // namespace

Store::Store(QString directory, int backupCount, double minimumBackupInterval, std::shared_ptr<FileSystem> fm)
    : directory_(std::move(directory)), backupCount_(backupCount),
      minimumBackupInterval_(minimumBackupInterval),
      fm_(fm ? std::move(fm) : FileSystem::real())
{
    TOCK_REQUIRE(backupCount_ >= 1, "a store keeps at least one backup");
}

QString Store::defaultDirectory()
{
    const QString override = qEnvironmentVariable("TOCK_DATA_DIR");
    if (!override.isEmpty())
        return override;
    const QString home = QDir::homePath();
    TOCK_REQUIRE(!home.isEmpty(), "no home folder to keep the data in");
#ifdef Q_OS_MACOS
    return home + QStringLiteral("/Library/Application Support/Tock");
#else
    // The XDG rule: a relative XDG_DATA_HOME is invalid and ignored.
    QString base = qEnvironmentVariable("XDG_DATA_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = home + QStringLiteral("/.local/share");
    return base + QStringLiteral("/Tock");
#endif
}

QString Store::mainPath() const { return directory_ + QStringLiteral("/timers.json"); }
QString Store::backupsPath() const { return directory_ + QStringLiteral("/Backups"); }
QString Store::damagedPath() const { return directory_ + QStringLiteral("/Damaged"); }
QString Store::backupPath(int n) const
{
    return backupsPath() + QStringLiteral("/timers-%1.json").arg(n);
}

QString Store::stamp(Instant now)
{
    return QDateTime::fromMSecsSinceEpoch(std::llround(now * 1000)).toString(QStringLiteral("yyyy-MM-dd'T'HH-mm-ss-zzz"));
}

Store::LoadResult Store::load(Instant now)
{
    mainBytes_.reset();
    lastWritten_.reset();
    QStringList candidates{mainPath()};
    for (int n = 1; n <= backupCount_; ++n)
        candidates.append(backupPath(n));
    QStringList existing;
    for (const QString &path : candidates)
        if (fm_->exists(path))
            existing.append(path);
    if (existing.isEmpty()) {
        isBlocked_ = false;
        return {LoadResult::Fresh{}};
    }

    QStringList reasons, failed;
    for (const QString &path : candidates) {
        const bool isMain = path == candidates.first();
        if (!existing.contains(path)) {
            if (isMain)
                reasons.append(QStringLiteral("timers.json: missing"));
            continue;
        }
        const auto reject = [&](const QString &why) {
            reasons.append(fileName(path) + QStringLiteral(": ") + why);
            failed.append(path);
        };
        Snapshot snapshot;
        QByteArray bytes;
        try {
            bytes = fm_->read(path);
            snapshot = Snapshot::decode(bytes);
        } catch (const FileSystemError &e) {
            reject(e.reason);
            continue;
        } catch (const StoreError &e) {
            reject(e.description());
            continue;
        }
        isBlocked_ = false;
        if (isMain) {
            mainBytes_ = std::move(bytes);
            return {LoadResult::Loaded{std::move(snapshot)}};
        }
        pendingDamaged_ = failed;
        pendingRecovered_ = snapshot;
        const std::optional<QStringList> copies = finishRecovery(now);
        return {LoadResult::Recovered{std::move(snapshot), fileName(path), copies.value_or(QStringList())}};
    }
    isBlocked_ = true;
    return {LoadResult::Unreadable{existing, reasons}};
}

std::optional<QStringList> Store::finishRecovery(Instant now)
{
    std::optional<QStringList> names = preserveDamaged(pendingDamaged_, now);
    if (!names) {
        // The damaged main file has not been copied yet: it must not be overwritten.
        isBlocked_ = true;
        return std::nullopt;
    }
    pendingDamaged_.clear();
    isBlocked_ = false;
    if (pendingRecovered_) {
        try {
            write(*pendingRecovered_);
        } catch (const StoreError &) {
            // The next save tries again; the damaged files are safe in Damaged/ by now.
        }
        pendingRecovered_.reset();
    }
    return names;
}

std::optional<QStringList> Store::preserveDamaged(const QStringList &paths, Instant now)
{
    if (paths.isEmpty())
        return QStringList();
    try {
        checkFolder();
    } catch (const StoreError &) {
        return std::nullopt;
    }
    try {
        fm_->createDirectories(damagedPath());
    } catch (const FileSystemError &) {
        return std::nullopt;
    }
    const QString prefix = stamp(now);
    QStringList copies;
    for (const QString &path : paths) {
        // A pipe or device holds nothing to keep, and replacing it loses nothing.
        if (fm_->kind(path) == FileSystem::Kind::special)
            continue;
        const QString destination = damagedPath() + QLatin1Char('/') + prefix + QLatin1Char('-') + fileName(path);
        if (!fm_->exists(destination)) {
            try {
                fm_->copy(path, destination);
            } catch (const FileSystemError &) {
                return std::nullopt;
            }
        }
        copies.append(destination);
    }
    return copies;
}

bool Store::retryPreservation(Instant now)
{
    if (!pendingDamaged_.isEmpty())
        return finishRecovery(now).has_value();
    return !isBlocked_;
}

QString Store::setAsideUnreadableAndStartFresh(Instant now)
{
    checkFolder();
    const QString folder = directory_ + QStringLiteral("/Unreadable-") + stamp(now);
    mainBytes_.reset();
    lastWritten_.reset();
    try {
        fm_->createDirectories(folder);
    } catch (const FileSystemError &e) {
        throw couldNot("create", folder, e);
    }
    const auto moveAside = [&](const QString &from, const QString &name) {
        if (!fm_->exists(from))
            return;
        const QString to = folder + QLatin1Char('/') + name;
        try {
            fm_->move(from, to);
        } catch (const FileSystemError &e) {
            throw StoreError::io(QStringLiteral("Could not move %1 to %2: %3").arg(from, to, e.reason));
        }
    };
    moveAside(mainPath(), QStringLiteral("timers.json"));
    moveAside(backupsPath(), QStringLiteral("Backups"));
    fm_->syncDirectory(folder);
    fm_->syncDirectory(directory_);
    prepareDirectory();
    isBlocked_ = false;
    return folder;
}

void Store::checkFolder()
{
    if (!lock_)
        return;
    folderLost_ = !lock_->coversFolder();
    if (folderLost_)
        throw StoreError::folderGone(directory_);
}

void Store::retakeFolder(Instant now)
{
    retakenAt_ = now;
    if (!lock_ || lock_->coversFolder()) {
        folderLost_ = false;
        return;
    }
    if (!lock_->reacquire()) {
        if (lock_->failure() == InstanceLock::Failure::heldElsewhere)
            throw StoreError::io(QStringLiteral("Another copy of Tock is using the data folder %1. Close it, then "
                                                "press Retry.")
                                     .arg(directory_));
        throw StoreError::io(QStringLiteral("Could not use the data folder %1: %2").arg(directory_, lock_->reason()));
    }
    folderLost_ = false;
    mainBytes_.reset();
    lastWritten_.reset();
    keepFoundMain_ = true;
    keepFoundMainFile();
}

void Store::keepFoundMainFile()
{
    if (!keepFoundMain_)
        return;
    if (fm_->kind(mainPath()) == FileSystem::Kind::regular) {
        QByteArray found;
        bool valid = true;
        try {
            found = fm_->read(mainPath());
            Snapshot::decode(found);
        } catch (const FileSystemError &) {
            valid = false;
        } catch (const StoreError &) {
            valid = false;
        }
        if (valid) {
            try {
                rotateFrom(found);
            } catch (const StoreError &e) {
                throw StoreError::io(QStringLiteral("Could not keep the timers.json found in %1 as a backup: %2")
                                         .arg(directory_, e.description()));
            }
        } else if (!preserveDamaged({mainPath()}, retakenAt_)) {
            throw StoreError::io(QStringLiteral("Could not keep the timers.json found in %1 in the Damaged folder")
                                     .arg(directory_));
        }
    }
    keepFoundMain_ = false;
}

void Store::prepareDirectory()
{
    checkFolder();
    try {
        fm_->createDirectories(directory_);
        fm_->createDirectories(backupsPath());
    } catch (const FileSystemError &e) {
        // Names the data folder even when it is Backups/ that failed: that is the folder the
        // user knows and can check.
        throw couldNot("create", directory_, e);
    }
}

void Store::discard(const QString &temporary)
{
    try {
        fm_->remove(temporary);
    } catch (const FileSystemError &) {
    }
}

void Store::stage(const QString &temporary, const QByteArray &data, const QString &what,
                  std::optional<int> permissions)
{
    try {
        try {
            fm_->createFile(temporary);
        } catch (const FileSystemError &) {
            // The name is this program's own: whatever holds it (one of our failed temporary
            // files, or a link put there) goes, and the file is made afresh.
            discard(temporary);
            fm_->createFile(temporary);
        }
    } catch (const FileSystemError &e) {
        discard(temporary);
        throw StoreError::io(QStringLiteral("Could not create temporary file: ") + e.reason);
    }
    try {
        fm_->writeSynced(temporary, data);
        if (permissions)
            fm_->setPermissions(temporary, *permissions);
    } catch (const FileSystemError &e) {
        discard(temporary);
        throw couldNot("write", what, e);
    }
}

void Store::renameStaged(const QString &temporary, const QString &target, bool syncFolder)
{
    try {
        fm_->rename(temporary, target);
    } catch (const FileSystemError &e) {
        discard(temporary);
        throw StoreError::io(e.reason);
    }
    if (syncFolder)
        fm_->syncDirectory(QFileInfo(target).path());
}

void Store::write(const Snapshot &snapshot, BlockPolicy policy)
{
    if (isBlocked_ && policy == BlockPolicy::respect)
        throw StoreError::blocked();
    prepareDirectory();
    keepFoundMainFile();
    QByteArray data;
    try {
        data = snapshot.encoded();
    } catch (const StoreError &e) {
        throw StoreError::io(QStringLiteral("Could not encode the timers: %1").arg(e.description()));
    }
    // A link to a file is written through so that it stays a link; a link to anything else
    // (nothing, a device) is replaced itself, so nothing outside the folder is created or hit.
    QString target = mainPath();
    try {
        target = fm_->resolveLinks(mainPath());
    } catch (const FileSystemError &) {
    }
    if (fm_->kind(target) != FileSystem::Kind::regular)
        target = mainPath();
    const QFileInfo info(target);
    const QString temporary = info.path() + QStringLiteral("/.%1.%2.tmp").arg(info.fileName()).arg(::getpid());
    const bool syncFolder = !lastWritten_ || !onlyRunningSecondsDiffer(*lastWritten_, snapshot);
    // Until the rename has happened, what is on disk is unknown.
    mainBytes_.reset();
    lastWritten_.reset();
    stage(temporary, data, mainPath(), fm_->permissions(target));
    renameStaged(temporary, target, syncFolder);
    mainBytes_ = std::move(data);
    lastWritten_ = snapshot;
}

bool Store::newestBackupIsRecent(Instant now)
{
    const std::optional<Instant> written = fm_->modified(backupPath(1));
    // A date in the future says nothing about the age; then the backup is not trusted as recent.
    // A moment ahead is only the grain of two clocks: the file system's stamp has nanoseconds,
    // `now` whole milliseconds, so a backup written this millisecond can look a little younger
    // than zero.
    constexpr double clockGrain = 1.0;
    return written && now + clockGrain >= *written && now - *written < minimumBackupInterval_;
}

void Store::save(const Snapshot &snapshot, Instant now)
{
    write(snapshot);
    if (lastBackup_ && now - *lastBackup_ < minimumBackupInterval_)
        return;
    if (backupPacing_ == BackupPacing::byNewestBackup && newestBackupIsRecent(now))
        return;
    try {
        rotateAfterWriting();
    } catch (const StoreError &e) {
        throw StoreError::backupsFailed(e.description());
    }
    lastBackup_ = now;
}

void Store::rotateBackupsAtStart(Instant now)
{
    if (backupPacing_ == BackupPacing::byNewestBackup && newestBackupIsRecent(now))
        return;
    rotateAfterWriting();
}

namespace {

// ".timers.json.<pid>.tmp", the name write() stages under. Matched by hand: a run of the
// terminal would spend more compiling a pattern than on everything else in this file.
bool isMainTemporary(const QString &name)
{
    const QLatin1String prefix(".timers.json."), suffix(".tmp");
    if (name.size() <= prefix.size() + suffix.size() || !name.startsWith(prefix) || !name.endsWith(suffix))
        return false;
    for (qsizetype i = prefix.size(); i < name.size() - suffix.size(); ++i) {
        if (name.at(i) < QLatin1Char('0') || name.at(i) > QLatin1Char('9'))
            return false;
    }
    return true;
}

} // namespace

void Store::removeStaleTemporaryFiles()
{
    if (lock_ && !lock_->coversFolder())
        return;
    for (const QString &name : fm_->list(directory_))
        if (isMainTemporary(name))
            discard(directory_ + QLatin1Char('/') + name);
    if (fm_->list(backupsPath()).contains(QStringLiteral(".backup.tmp")))
        discard(backupsPath() + QStringLiteral("/.backup.tmp"));
}

void Store::rotateBackups()
{
    // While saving is paused the backups are part of the data the user may set aside.
    if (isBlocked_)
        return;
    QByteArray current;
    try {
        current = fm_->read(mainPath());
        Snapshot::decode(current);
    } catch (const FileSystemError &) {
        return;
    } catch (const StoreError &) {
        return;
    }
    rotateFrom(current);
}

void Store::rotateAfterWriting()
{
    if (!mainBytes_) {
        rotateBackups();
        return;
    }
    if (isBlocked_)
        return;
    rotateFrom(*mainBytes_);
}

void Store::rotateFrom(const QByteArray &current)
{
    prepareDirectory();
    // The new copy is written before anything is dropped or shifted: a disk that keeps failing
    // that write then costs no backups, however often the rotation is retried.
    const QString temporary = backupsPath() + QStringLiteral("/.backup.tmp");
    stage(temporary, current, backupPath(1));
    try {
        const QString oldest = backupPath(backupCount_);
        if (fm_->exists(oldest)) {
            try {
                fm_->remove(oldest);
            } catch (const FileSystemError &e) {
                throw couldNot("remove", oldest, e);
            }
        }
        for (int n = backupCount_ - 1; n >= 1; --n) {
            const QString from = backupPath(n), to = backupPath(n + 1);
            if (!fm_->exists(from))
                continue;
            try {
                fm_->move(from, to);
            } catch (const FileSystemError &e) {
                throw StoreError::io(QStringLiteral("Could not move %1 to %2: %3").arg(from, to, e.reason));
            }
        }
    } catch (const StoreError &) {
        discard(temporary);
        throw;
    }
    renameStaged(temporary, backupPath(1));
}

} // namespace tock

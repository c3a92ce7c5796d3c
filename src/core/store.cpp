#include "store.h"

#include "require.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace tock {

namespace {

QString fileName(const QString &path) { return QFileInfo(path).fileName(); }

StoreError couldNot(const char *verb, const QString &path, const FileSystemError &e)
{
    return StoreError::io(QStringLiteral("Could not %1 %2: %3").arg(QLatin1String(verb), path, e.reason));
}

} // namespace

Store::Store(QString directory, int backupCount, double minimumBackupInterval,
             std::shared_ptr<FileSystem> fm, std::function<QDateTime()> wallClock)
    : directory_(std::move(directory)), backupCount_(backupCount),
      minimumBackupInterval_(minimumBackupInterval),
      fm_(fm ? std::move(fm) : FileSystem::real()),
      wallClock_(wallClock ? std::move(wallClock) : [] { return QDateTime::currentDateTime(); })
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

QString Store::stamp() const
{
    return wallClock_().toString(QStringLiteral("yyyy-MM-dd'T'HH-mm-ss-zzz"));
}

Store::LoadResult Store::load()
{
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
        try {
            snapshot = Snapshot::decode(fm_->read(path));
        } catch (const FileSystemError &e) {
            reject(e.reason);
            continue;
        } catch (const StoreError &e) {
            reject(e.description());
            continue;
        }
        isBlocked_ = false;
        if (isMain)
            return {LoadResult::Loaded{std::move(snapshot)}};
        pendingDamaged_ = failed;
        pendingRecovered_ = snapshot;
        const std::optional<QStringList> copies = finishRecovery();
        return {LoadResult::Recovered{std::move(snapshot), fileName(path), copies.value_or(QStringList())}};
    }
    isBlocked_ = true;
    return {LoadResult::Unreadable{existing, reasons}};
}

std::optional<QStringList> Store::finishRecovery()
{
    std::optional<QStringList> names = preserveDamaged(pendingDamaged_);
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

std::optional<QStringList> Store::preserveDamaged(const QStringList &paths)
{
    if (paths.isEmpty())
        return QStringList();
    try {
        fm_->createDirectories(damagedPath());
    } catch (const FileSystemError &) {
        return std::nullopt;
    }
    const QString prefix = stamp();
    QStringList copies;
    for (const QString &path : paths) {
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

bool Store::retryPreservation()
{
    if (!pendingDamaged_.isEmpty())
        return finishRecovery().has_value();
    return !isBlocked_;
}

QString Store::setAsideUnreadableAndStartFresh()
{
    const QString folder = directory_ + QStringLiteral("/Unreadable-") + stamp();
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

void Store::prepareDirectory()
{
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

void Store::stage(const QString &temporary, const QByteArray &data, const QString &what)
{
    try {
        fm_->createFile(temporary);
    } catch (const FileSystemError &) {
        discard(temporary);
        throw StoreError::io(QStringLiteral("Could not create temporary file"));
    }
    try {
        fm_->writeSynced(temporary, data);
    } catch (const FileSystemError &e) {
        discard(temporary);
        throw couldNot("write", what, e);
    }
}

void Store::renameStaged(const QString &temporary, const QString &target)
{
    try {
        fm_->rename(temporary, target);
    } catch (const FileSystemError &e) {
        discard(temporary);
        throw StoreError::io(e.reason);
    }
    fm_->syncDirectory(QFileInfo(target).path());
}

void Store::replaceAtomically(const QString &temporary, const QString &target, const QByteArray &data,
                              const QString &what)
{
    stage(temporary, data, what);
    renameStaged(temporary, target);
}

void Store::write(const Snapshot &snapshot, BlockPolicy policy)
{
    if (isBlocked_ && policy == BlockPolicy::respect)
        throw StoreError::blocked();
    prepareDirectory();
    QByteArray data;
    try {
        data = snapshot.encoded();
    } catch (const StoreError &e) {
        throw StoreError::io(QStringLiteral("Could not encode the timers: %1").arg(e.description()));
    }
    const QString temporary = directory_ + QStringLiteral("/.timers.json.%1.tmp").arg(::getpid());
    replaceAtomically(temporary, mainPath(), data, mainPath());
}

void Store::save(const Snapshot &snapshot, Instant now)
{
    write(snapshot);
    if (lastBackup_ && now - *lastBackup_ < minimumBackupInterval_)
        return;
    rotateBackups();
    lastBackup_ = now;
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

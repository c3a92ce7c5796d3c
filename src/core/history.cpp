#include "history.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>

namespace tock {

namespace {

// One step per schema version: migrations[v] takes a database at version v to v + 1. Timers are
// referred to by a small integer key so that a hundred thousand intervals stay a few megabytes.
const char *const migrations[] = {
    "CREATE TABLE timers(key INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, name TEXT NOT NULL DEFAULT '',"
    "  deleted INTEGER NOT NULL DEFAULT 0);"
    "CREATE TABLE intervals(timer INTEGER NOT NULL REFERENCES timers(key), start REAL NOT NULL, end REAL);"
    // Reports ask for what ended after a day began; open intervals have no end.
    "CREATE INDEX intervals_by_end ON intervals(end);"
    "CREATE INDEX intervals_open ON intervals(timer) WHERE end IS NULL;"
    "CREATE TABLE adjustments(timer INTEGER NOT NULL REFERENCES timers(key), at REAL NOT NULL,"
    "  seconds REAL NOT NULL);"
    "CREATE INDEX adjustments_by_at ON adjustments(at);"
    "CREATE TABLE events(timer INTEGER NOT NULL REFERENCES timers(key), at REAL NOT NULL, kind TEXT NOT NULL);",
};
static_assert(std::size(migrations) == History::schemaVersion);

const char *eventName(History::Event event)
{
    switch (event) {
    case History::Event::reset:
        return "reset";
    case History::Event::resetUndone:
        return "reset-undone";
    case History::Event::deleted:
        return "deleted";
    case History::Event::deleteUndone:
        return "delete-undone";
    }
    return "";
}

bool isDamage(int code)
{
    const int primary = code & 0xff;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB || primary == SQLITE_FORMAT;
}

QByteArray idText(const QUuid &id)
{
    return id.toByteArray(QUuid::WithoutBraces).toUpper();
}

QUuid idFrom(sqlite3_stmt *s, int column)
{
    return QUuid::fromString(QLatin1String(reinterpret_cast<const char *>(sqlite3_column_text(s, column))));
}

// Resets a cached statement when it goes out of scope, whatever happened.
struct Use {
    sqlite3_stmt *s;
    ~Use() { sqlite3_reset(s); sqlite3_clear_bindings(s); }
};

// What a timer was doing when is the user's own business: a new history starts readable by its
// owner alone (SQLite gives its log files the same mode), and one left readable by others is
// made private. Links are not followed here; SQLite refuses them when it opens the file.
void keepPrivate(const QString &path)
{
    const QFileInfo info(path);
    if (info.isSymLink())
        return;
    constexpr QFileDevice::Permissions own = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    if (!info.exists()) {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly, own))
            file.close();
    } else if (info.isFile() && (info.permissions() & ~(own | QFileDevice::ReadUser | QFileDevice::WriteUser))) {
        QFile::setPermissions(path, own | QFileDevice::ReadUser | QFileDevice::WriteUser);
    }
}

} // namespace

History::History(const QString &path, Access access) : path_(path), access_(access)
{
    try {
        open(access);
    } catch (...) {
        // No destructor runs for a constructor that throws: let go of the handle here.
        close();
        throw;
    }
}

void History::open(Access access)
{
    const int flags = access == Access::write ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
    if (access == Access::write)
        keepPrivate(path_);
    const int code = sqlite3_open_v2(QFile::encodeName(path_).constData(), &db_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK)
        fail(QStringLiteral("could not open"), code);
    // A reader may meet the writer's checkpoint; wait a little rather than fail.
    sqlite3_busy_timeout(db_, 2000);
    if (access == Access::write) {
        // The log keeps readers off the writer's back; NORMAL syncing in WAL mode survives any
        // crash of the process (a power cut may cost the last transactions, never consistency).
        {
            sqlite3_stmt *mode = prepare("PRAGMA journal_mode=WAL");
            Use use{mode};
            if (sqlite3_step(mode) != SQLITE_ROW)
                fail(QStringLiteral("could not open"), sqlite3_errcode(db_));
        }
        exec("PRAGMA synchronous=NORMAL");
        migrate();
    } else {
        sqlite3_stmt *version = prepare("PRAGMA user_version");
        Use use{version};
        if (sqlite3_step(version) != SQLITE_ROW)
            fail(QStringLiteral("could not read"), sqlite3_errcode(db_));
        const int v = sqlite3_column_int(version, 0);
        if (v > schemaVersion)
            throw HistoryError{QStringLiteral("%1 was written by a newer version of Tock").arg(QFileInfo(path_).fileName()), true};
        if (v < schemaVersion)
            throw HistoryError{QStringLiteral("%1 holds no history yet").arg(QFileInfo(path_).fileName()), false};
    }
}

History::~History()
{
    close();
}

void History::close()
{
    for (sqlite3_stmt *s : std::as_const(statements_))
        sqlite3_finalize(s);
    statements_.clear();
    sqlite3_close_v2(db_); // frees even a handle a failed step left busy
    db_ = nullptr;
}

void History::write(sqlite3_stmt *statement)
{
    if (const int code = sqlite3_step(statement); code != SQLITE_DONE)
        fail(QStringLiteral("could not write"), code);
}

void History::fail(const QString &what, int code)
{
    const QString name = QFileInfo(path_).fileName();
    const QString reason = db_ && sqlite3_errcode(db_) == code ? QString::fromUtf8(sqlite3_errmsg(db_))
                                                               : QString::fromUtf8(sqlite3_errstr(code));
    throw HistoryError{QStringLiteral("%1 %2: %3").arg(what, name, reason), isDamage(code)};
}

void History::exec(const char *sql)
{
    const int code = sqlite3_exec(db_, sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        fail(QStringLiteral("could not write"), code);
}

sqlite3_stmt *History::prepare(const char *sql)
{
    if (sqlite3_stmt *cached = statements_.value(sql))
        return cached;
    sqlite3_stmt *s = nullptr;
    const int code = sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &s, nullptr);
    if (code != SQLITE_OK)
        fail(QStringLiteral("could not read"), code);
    statements_.insert(sql, s);
    return s;
}

void History::migrate()
{
    sqlite3_stmt *version = prepare("PRAGMA user_version");
    int v = 0;
    {
        Use use{version};
        if (sqlite3_step(version) != SQLITE_ROW)
            fail(QStringLiteral("could not read"), sqlite3_errcode(db_));
        v = sqlite3_column_int(version, 0);
    }
    if (v > schemaVersion)
        throw HistoryError{QStringLiteral("%1 was written by a newer version of Tock").arg(QFileInfo(path_).fileName()), true};
    for (; v < schemaVersion; ++v) {
        // Each step and its version number land together.
        transaction([&] {
            exec(migrations[v]);
            exec(QByteArray("PRAGMA user_version=" + QByteArray::number(v + 1)).constData());
        });
    }
}

void History::quickCheck()
{
    sqlite3_stmt *s = nullptr;
    const int code = sqlite3_prepare_v2(db_, "PRAGMA quick_check", -1, &s, nullptr);
    if (code != SQLITE_OK)
        fail(QStringLiteral("could not read"), code);
    const int step = sqlite3_step(s);
    const QString answer = step == SQLITE_ROW ? QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(s, 0)))
                                              : QString();
    const int error = sqlite3_errcode(db_);
    sqlite3_finalize(s);
    if (step != SQLITE_ROW)
        fail(QStringLiteral("could not read"), error);
    if (answer != QLatin1String("ok"))
        throw HistoryError{QStringLiteral("%1 is damaged: %2").arg(QFileInfo(path_).fileName(), answer), true};
}

void History::begin()
{
    // IMMEDIATE takes the write lock up front, so a transaction never fails half-way for it.
    exec(access_ == Access::write ? "BEGIN IMMEDIATE" : "BEGIN");
}

void History::commit()
{
    const int code = sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        rollback();
        fail(QStringLiteral("could not write"), code);
    }
}

void History::rollback()
{
    if (!sqlite3_get_autocommit(db_))
        sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
}

int64_t History::timerKey(const QUuid &id)
{
    if (const auto it = keys_.constFind(id); it != keys_.constEnd())
        return *it;
    const QByteArray text = idText(id);
    sqlite3_stmt *find = prepare("SELECT key FROM timers WHERE id = ?1");
    {
        Use use{find};
        sqlite3_bind_text(find, 1, text.constData(), int(text.size()), SQLITE_STATIC);
        if (sqlite3_step(find) == SQLITE_ROW) {
            const int64_t key = sqlite3_column_int64(find, 0);
            keys_.insert(id, key);
            return key;
        }
    }
    sqlite3_stmt *add = prepare("INSERT INTO timers(id) VALUES(?1)");
    Use use{add};
    sqlite3_bind_text(add, 1, text.constData(), int(text.size()), SQLITE_STATIC);
    write(add);
    const int64_t key = sqlite3_last_insert_rowid(db_);
    keys_.insert(id, key);
    return key;
}

void History::setTimer(const QUuid &id, const QString &name, bool deleted)
{
    const int64_t key = timerKey(id);
    const QByteArray utf8 = name.toUtf8();
    sqlite3_stmt *s = prepare("UPDATE timers SET name = ?2, deleted = ?3 WHERE key = ?1");
    Use use{s};
    sqlite3_bind_int64(s, 1, key);
    sqlite3_bind_text(s, 2, utf8.constData(), int(utf8.size()), SQLITE_STATIC);
    sqlite3_bind_int(s, 3, deleted ? 1 : 0);
    write(s);
}

void History::openInterval(const QUuid &timer, Instant start)
{
    const int64_t key = timerKey(timer);
    sqlite3_stmt *s = prepare("INSERT INTO intervals(timer, start) VALUES(?1, ?2)");
    Use use{s};
    sqlite3_bind_int64(s, 1, key);
    sqlite3_bind_double(s, 2, start);
    write(s);
}

void History::closeInterval(const QUuid &timer, Instant end)
{
    const int64_t key = timerKey(timer);
    sqlite3_stmt *s = prepare("UPDATE intervals SET end = max(start, ?2) WHERE timer = ?1 AND end IS NULL");
    Use use{s};
    sqlite3_bind_int64(s, 1, key);
    sqlite3_bind_double(s, 2, end);
    write(s);
}

void History::closeAllIntervals(Instant end)
{
    sqlite3_stmt *s = prepare("UPDATE intervals SET end = max(start, ?1) WHERE end IS NULL");
    Use use{s};
    sqlite3_bind_double(s, 1, end);
    write(s);
}

void History::addAdjustment(const QUuid &timer, Instant at, double seconds)
{
    const int64_t key = timerKey(timer);
    sqlite3_stmt *s = prepare("INSERT INTO adjustments(timer, at, seconds) VALUES(?1, ?2, ?3)");
    Use use{s};
    sqlite3_bind_int64(s, 1, key);
    sqlite3_bind_double(s, 2, at);
    sqlite3_bind_double(s, 3, seconds);
    write(s);
}

void History::addEvent(const QUuid &timer, Instant at, Event event)
{
    const int64_t key = timerKey(timer);
    sqlite3_stmt *s = prepare("INSERT INTO events(timer, at, kind) VALUES(?1, ?2, ?3)");
    Use use{s};
    sqlite3_bind_int64(s, 1, key);
    sqlite3_bind_double(s, 2, at);
    sqlite3_bind_text(s, 3, eventName(event), -1, SQLITE_STATIC);
    write(s);
}

QList<History::Interval> History::intervals(std::optional<Instant> from, std::optional<Instant> to)
{
    // Finished intervals through the index on their end, then the few still open.
    sqlite3_stmt *s = prepare(
        "SELECT t.id, i.start, i.end FROM intervals i JOIN timers t ON t.key = i.timer"
        " WHERE (i.end > ?1 OR i.end IS NULL) AND i.start < ?2 ORDER BY i.start");
    Use use{s};
    sqlite3_bind_double(s, 1, from.value_or(-1e300));
    sqlite3_bind_double(s, 2, to.value_or(1e300));
    QList<Interval> result;
    int code;
    while ((code = sqlite3_step(s)) == SQLITE_ROW) {
        Interval interval{idFrom(s, 0), sqlite3_column_double(s, 1), std::nullopt};
        if (sqlite3_column_type(s, 2) != SQLITE_NULL)
            interval.end = sqlite3_column_double(s, 2);
        result.append(interval);
    }
    if (code != SQLITE_DONE)
        fail(QStringLiteral("could not read"), code);
    return result;
}

QList<History::Adjustment> History::adjustments(std::optional<Instant> from, std::optional<Instant> to)
{
    sqlite3_stmt *s = prepare(
        "SELECT t.id, a.at, a.seconds FROM adjustments a JOIN timers t ON t.key = a.timer"
        " WHERE a.at >= ?1 AND a.at < ?2 ORDER BY a.at");
    Use use{s};
    sqlite3_bind_double(s, 1, from.value_or(-1e300));
    sqlite3_bind_double(s, 2, to.value_or(1e300));
    QList<Adjustment> result;
    int code;
    while ((code = sqlite3_step(s)) == SQLITE_ROW)
        result.append({idFrom(s, 0), sqlite3_column_double(s, 1), sqlite3_column_double(s, 2)});
    if (code != SQLITE_DONE)
        fail(QStringLiteral("could not read"), code);
    return result;
}

QList<History::Timer> History::timers()
{
    sqlite3_stmt *s = prepare("SELECT id, name, deleted FROM timers ORDER BY key");
    Use use{s};
    QList<Timer> result;
    int code;
    while ((code = sqlite3_step(s)) == SQLITE_ROW) {
        result.append({idFrom(s, 0),
                       QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(s, 1)),
                                         sqlite3_column_bytes(s, 1)),
                       sqlite3_column_int(s, 2) != 0});
    }
    if (code != SQLITE_DONE)
        fail(QStringLiteral("could not read"), code);
    return result;
}

std::optional<Instant> History::firstInstant()
{
    sqlite3_stmt *s = prepare("SELECT min((SELECT min(start) FROM intervals), (SELECT min(at) FROM adjustments)),"
                              " (SELECT min(start) FROM intervals), (SELECT min(at) FROM adjustments)");
    Use use{s};
    if (sqlite3_step(s) != SQLITE_ROW)
        fail(QStringLiteral("could not read"), sqlite3_errcode(db_));
    // min() of two values is NULL when either is; then the other one answers.
    for (int column = 0; column < 3; ++column) {
        if (sqlite3_column_type(s, column) != SQLITE_NULL)
            return sqlite3_column_double(s, column);
    }
    return std::nullopt;
}

int64_t History::eventCount()
{
    sqlite3_stmt *s = prepare("SELECT count(*) FROM events");
    Use use{s};
    if (sqlite3_step(s) != SQLITE_ROW)
        fail(QStringLiteral("could not read"), sqlite3_errcode(db_));
    return sqlite3_column_int64(s, 0);
}

QString History::setAside(const QString &directory, const QString &stamp)
{
    const QDir dir(directory);
    const QString damaged = dir.filePath(QStringLiteral("Damaged"));
    if (!QDir().mkpath(damaged))
        throw HistoryError{QStringLiteral("could not create %1").arg(damaged), false};
    const QString target = QDir(damaged).filePath(stamp + QLatin1Char('-') + fileName());
    // The log files belong to the database: they move with it, under the same stamp.
    for (const char *suffix : {"-wal", "-shm", ""}) {
        const QString from = dir.filePath(fileName() + QLatin1String(suffix));
        if (!QFileInfo::exists(from))
            continue;
        const QString to = target + QLatin1String(suffix);
        if (QFileInfo::exists(to) || ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
            throw HistoryError{QStringLiteral("could not move %1 to %2").arg(from, to), false};
    }
    return target;
}

} // namespace tock

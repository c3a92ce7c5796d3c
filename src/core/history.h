// The history of every run: history.db in the data folder, an SQLite database written only by
// the copy that holds the instance lock and read by anyone (reports, export) beside it. It keeps
// intervals (one per run, start to pause), adjustments (signed seconds by which an edit changed a
// total) and the timers with their current names. Write-ahead log, so readers never wait for the
// writer; every write is one transaction. The core never reads the clock: every instant is given.
#pragma once

#include "timer.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

struct sqlite3;
struct sqlite3_stmt;

namespace tock {

// Every failure of the history, with the user-facing text. `damaged`: the file is not a database
// this program can use (not SQLite, corrupt, or from a newer version), as opposed to the system
// refusing (permissions, a full disk).
struct HistoryError {
    QString message;
    bool damaged = false;
    bool operator==(const HistoryError &) const = default;
};

class History {
public:
    enum class Access { write, read };
    // What happened to a timer besides its time: kept for the record, not counted in reports.
    enum class Event { reset, resetUndone, deleted, deleteUndone };

    struct Interval {
        QUuid timer;
        Instant start = 0;
        std::optional<Instant> end; // none while the run goes on
        bool operator==(const Interval &) const = default;
    };
    struct Adjustment {
        QUuid timer;
        Instant at = 0;
        double seconds = 0; // new total minus old; negative when an edit took time away
        bool operator==(const Adjustment &) const = default;
    };
    struct Timer {
        QUuid id;
        QString name;
        bool deleted = false;
        bool operator==(const Timer &) const = default;
    };

    static constexpr int schemaVersion = 1;
    static QString fileName() { return QStringLiteral("history.db"); }

    // Opens the database at `path`. `write` creates it when missing, turns on the write-ahead
    // log and migrates an older schema; `read` never creates or changes anything. Throws
    // HistoryError (damaged for a file that is not ours or is newer than this program).
    History(const QString &path, Access access);
    ~History();
    History(const History &) = delete;
    History &operator=(const History &) = delete;

    // SQLite's own consistency check of every page; throws HistoryError{damaged} when it fails.
    void quickCheck();

    // Runs `writes` as one transaction: all of it lands or none. Opened for reading, it holds
    // one consistent view for several reads while a writer goes on. Throws HistoryError; a throw
    // from `writes` rolls back and is passed on.
    template <typename Writes>
    void transaction(Writes &&writes)
    {
        begin();
        try {
            writes();
        } catch (...) {
            rollback();
            throw;
        }
        commit();
    }

    // Writes, for use inside transaction(). Unknown timer ids are added on first use.
    void setTimer(const QUuid &id, const QString &name, bool deleted);
    void openInterval(const QUuid &timer, Instant start);
    // Ends the timer's open interval, if any, at `end` (never before its start).
    void closeInterval(const QUuid &timer, Instant end);
    // Ends every open interval at `end` (never before its start): after a copy that died.
    void closeAllIntervals(Instant end);
    void addAdjustment(const QUuid &timer, Instant at, double seconds);
    void addEvent(const QUuid &timer, Instant at, Event event);

    // Reads. Intervals that overlap [from, to) and adjustments inside it, oldest first; an
    // absent bound is open.
    QList<Interval> intervals(std::optional<Instant> from = {}, std::optional<Instant> to = {});
    QList<Adjustment> adjustments(std::optional<Instant> from = {}, std::optional<Instant> to = {});
    QList<Timer> timers();
    // The earliest instant recorded, none for an empty history.
    std::optional<Instant> firstInstant();
    int64_t eventCount();

    // Moves history.db and its log files from `directory` into Damaged/<stamp>-<name>, so that
    // a new history can start; nothing is deleted. Returns the new path of the database file.
    // Throws HistoryError when the move fails.
    static QString setAside(const QString &directory, const QString &stamp);

private:
    void open(Access access);
    void close();
    void begin();
    void commit();
    void rollback();
    void exec(const char *sql);
    void migrate();
    [[noreturn]] void fail(const QString &what, int code);
    sqlite3_stmt *prepare(const char *sql);
    // Runs a bound writing statement to its end.
    void write(sqlite3_stmt *statement);
    // The timers table's key for `id`, adding the timer (nameless) when unknown.
    int64_t timerKey(const QUuid &id);

    sqlite3 *db_ = nullptr;
    QString path_;
    Access access_;
    QHash<const char *, sqlite3_stmt *> statements_; // prepared once, by their text's address
    QHash<QUuid, int64_t> keys_;
};

} // namespace tock

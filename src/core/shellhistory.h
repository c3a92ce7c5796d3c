// The prompt's command history: earlier lines, oldest first, with up/down browsing that gives
// back the line that was being typed when browsing began.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tock {

class ShellHistory {
public:
    static constexpr qsizetype defaultLimit = 50;
    // Where the application keeps the entries between runs.
    static QString settingsKey() { return QStringLiteral("shellHistory"); }

    // Keeps the last `limit` of entries as given (they are trusted: the app saved them from
    // entries()); limit must not be negative. Not browsing, empty draft.
    explicit ShellHistory(QStringList entries = {}, qsizetype limit = defaultLimit);

    const QStringList &entries() const { return m_entries; }
    qsizetype limit() const { return m_limit; }

    // Ends browsing, then stores the line trimmed of spaces and tabs unless it is blank or equal
    // to the newest entry, dropping the oldest entries beyond the limit.
    void record(const QString &line);
    // The entry one older than the one shown (the newest when browsing begins, keeping current as
    // the draft); stays at the oldest. With no entries returns current.
    QString up(const QString &current);
    // The entry one newer; past the newest browsing ends and the draft comes back. When not
    // browsing returns current.
    QString down(const QString &current);
    // Ends browsing; the draft stays until the next up replaces it.
    void resetBrowsing() { m_position.reset(); }

    bool operator==(const ShellHistory &) const = default;

private:
    QStringList m_entries;
    qsizetype m_limit;
    std::optional<qsizetype> m_position; // index into m_entries while browsing
    QString m_draft;
};

} // namespace tock

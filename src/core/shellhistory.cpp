#include "shellhistory.h"

#include "require.h"

namespace tock {
namespace {

// Spaces and tabs only: a line break is part of what was typed.
QString trimmed(const QString &line)
{
    qsizetype start = 0;
    qsizetype end = line.size();
    const auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (start < end && blank(line[start]))
        ++start;
    while (end > start && blank(line[end - 1]))
        --end;
    return line.mid(start, end - start);
}

} // namespace

ShellHistory::ShellHistory(QStringList entries, qsizetype limit)
    : m_entries(std::move(entries)), m_limit(limit)
{
    TOCK_REQUIRE(limit >= 0, "history limit is not negative");
    if (m_entries.size() > m_limit)
        m_entries.remove(0, m_entries.size() - m_limit);
}

void ShellHistory::record(const QString &line)
{
    m_position.reset();
    const QString entry = trimmed(line);
    if (entry.isEmpty())
        return;
    if (m_entries.isEmpty() || m_entries.last() != entry)
        m_entries.append(entry);
    if (m_entries.size() > m_limit)
        m_entries.remove(0, m_entries.size() - m_limit);
}

QString ShellHistory::up(const QString &current)
{
    if (m_entries.isEmpty())
        return current;
    if (!m_position) {
        m_draft = current;
        m_position = m_entries.size() - 1;
    } else if (*m_position > 0) {
        --*m_position;
    }
    return m_entries.at(*m_position);
}

QString ShellHistory::down(const QString &current)
{
    if (!m_position)
        return current;
    if (*m_position + 1 >= m_entries.size()) {
        m_position.reset();
        return m_draft;
    }
    ++*m_position;
    return m_entries.at(*m_position);
}

} // namespace tock

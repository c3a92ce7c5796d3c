// Text as the user perceives it: grapheme clusters, full Unicode lower-casing and comparisons
// under canonical equivalence. The command language and the prompt editor count, split and
// compare text through these so that "é" typed precomposed or decomposed is the same thing and
// one accented letter is one character.
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <QTextBoundaryFinder>

#include <cstdint>
#include <optional>

namespace tock::Text {

// The grapheme clusters of s, in order; empty for empty s. Joined they give s back.
QStringList graphemes(const QString &s);
qsizetype graphemeCount(const QString &s);

// Calls f(QStringView cluster) for every grapheme cluster of s, in order, without building a list.
template <typename F>
void forEachGrapheme(const QString &s, F &&f)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, s);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end > 0; end = finder.toNextBoundary()) {
        f(QStringView(s).mid(start, end - start));
        start = end;
    }
}

// s without its last n grapheme clusters (all of them when n >= graphemeCount(s)).
QString dropLastGraphemes(const QString &s, qsizetype n);

// Full Unicode lower-casing (one character may become several), then NFC, so that the result
// can be compared with plain equality.
QString folded(const QString &s);

// The value of plain ASCII decimal digits (no sign, no spaces, other scripts' digits refused);
// absent for empty text or a value beyond 64 bits.
std::optional<int64_t> decimal(QStringView digits);
// A name as messages quote it: between curly double quotes.
QString quoted(const QString &name);

// True when prefix, under canonical equivalence, is the beginning of s and ends on one of s's
// grapheme boundaries (so "x" is not a prefix of "x" followed by a combining accent). Exact
// otherwise; pass folded() texts for a case-insensitive test.
bool hasPrefix(const QString &s, const QString &prefix);

} // namespace tock::Text

#include "text.h"

namespace tock::Text {

QStringList graphemes(const QString &s)
{
    QStringList result;
    forEachGrapheme(s, [&](QStringView g) { result.append(g.toString()); });
    return result;
}

qsizetype graphemeCount(const QString &s)
{
    qsizetype n = 0;
    forEachGrapheme(s, [&](QStringView) { ++n; });
    return n;
}

QString dropLastGraphemes(const QString &s, qsizetype n)
{
    if (n <= 0)
        return s;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, s);
    finder.toEnd();
    qsizetype position = s.size();
    for (qsizetype i = 0; i < n && position > 0; ++i)
        position = finder.toPreviousBoundary();
    return s.left(qMax<qsizetype>(position, 0));
}

QString folded(const QString &s)
{
    return s.toLower().normalized(QString::NormalizationForm_C);
}

std::optional<int64_t> decimal(QStringView digits)
{
    if (digits.isEmpty())
        return std::nullopt;
    int64_t value = 0;
    for (const QChar c : digits) {
        if (c < u'0' || c > u'9' || __builtin_mul_overflow(value, int64_t(10), &value)
            || __builtin_add_overflow(value, int64_t(c.unicode() - u'0'), &value))
            return std::nullopt;
    }
    return value;
}

QString quoted(const QString &name)
{
    return QStringLiteral("\u201C") + name + QStringLiteral("\u201D");
}

bool hasPrefix(const QString &s, const QString &prefix)
{
    const QString whole = s.normalized(QString::NormalizationForm_C);
    const QString start = prefix.normalized(QString::NormalizationForm_C);
    if (!whole.startsWith(start))
        return false;
    if (start.isEmpty() || start.size() == whole.size())
        return true;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, whole);
    finder.setPosition(start.size());
    return finder.isAtBoundary();
}

} // namespace tock::Text

#include "shelltime.h"

#include "text.h"
#include "timevalues.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>

namespace tock {
namespace {

// Seconds, minutes, hours, days: limits and weights counted from the right of a colon form.
// The leftmost piece is never limited, so "90:00" is ninety minutes and "100:00:00" is valid.
constexpr std::array<int64_t, 4> pieceLimits{59, 59, 23, 0};
constexpr std::array<int64_t, 4> pieceWeights{1, 60, 3600, 86400};

bool isAsciiDigit(QStringView character)
{
    return character.size() == 1 && character[0] >= u'0' && character[0] <= u'9';
}

ShellError notATime(const QString &word)
{
    return ShellError{QStringLiteral("not a time: ") + word};
}

ShellError tooLong()
{
    return ShellError{QStringLiteral("too long: the most is ")
                      + TimeFormat::string(double(HMS::maxSeconds))};
}

// Adds number * weight to total, throwing the too-long failure on overflow.
void accumulate(int64_t &total, int64_t number, int64_t weight)
{
    int64_t product = 0;
    if (__builtin_mul_overflow(number, weight, &product)
        || __builtin_add_overflow(total, product, &total))
        throw tooLong();
}

int64_t colonTotal(const QStringList &pieces, const QString &word)
{
    if (pieces.size() < 2 || pieces.size() > 4)
        throw notATime(word);
    std::array<int64_t, 4> values{};
    for (qsizetype i = 0; i < pieces.size(); ++i) {
        const std::optional<int64_t> value = Text::decimal(pieces.at(i));
        if (!value)
            throw notATime(word);
        values[size_t(pieces.size() - 1 - i)] = *value; // index 0 is the rightmost piece
    }
    const auto count = size_t(pieces.size());
    for (size_t i = 0; i + 1 < count; ++i) {
        if (values[i] > pieceLimits[i])
            throw notATime(word);
    }
    int64_t total = 0;
    for (size_t i = 0; i < count; ++i)
        accumulate(total, values[i], pieceWeights[i]);
    return total;
}

int64_t unitTotal(const QStringList &characters, const QString &word)
{
    QString pending;
    int64_t total = 0;
    for (const QString &c : characters) {
        if (isAsciiDigit(c)) {
            pending += c;
            continue;
        }
        if (pending.isEmpty())
            throw notATime(word); // a unit with no number: "h", "m5"
        const std::optional<int64_t> number = Text::decimal(pending);
        if (!number)
            throw tooLong();
        int64_t weight = 0;
        if (c == u"d")
            weight = 86400;
        else if (c == u"h")
            weight = 3600;
        else if (c == u"m")
            weight = 60;
        else if (c == u"s")
            weight = 1;
        else
            throw notATime(word);
        accumulate(total, *number, weight);
        pending.clear();
    }
    if (!pending.isEmpty())
        throw notATime(word); // digits without a unit: "1h30"
    return total;
}

} // namespace

ShellTime parseTime(const QString &word)
{
    // Characters are grapheme clusters: a digit, colon or sign carrying a combining mark is
    // something else altogether.
    QStringList characters = Text::graphemes(word.toLower());
    int sign = 0; // 0: absolute
    if (!characters.isEmpty() && (characters.first() == u"+" || characters.first() == u"-")) {
        sign = characters.first() == u"+" ? 1 : -1;
        characters.removeFirst();
    }
    if (characters.isEmpty())
        throw notATime(word);
    if (characters.contains(QStringLiteral("+")) || characters.contains(QStringLiteral("-")))
        throw notATime(word);

    const QString text = characters.join(QString());
    int64_t total = 0;
    if (characters.contains(QStringLiteral(":"))) {
        // Only whole-cluster colons split; a colon with a combining mark stays inside its piece,
        // which then fails as a piece that is not all digits.
        QStringList pieces{QString()};
        for (const QString &c : characters) {
            if (c == u":")
                pieces.append(QString());
            else
                pieces.last() += c;
        }
        total = colonTotal(pieces, word);
    } else if (const std::optional<int64_t> seconds = Text::decimal(text)) {
        total = *seconds; // "90" is ninety seconds
    } else if (std::all_of(characters.cbegin(), characters.cend(),
                           [](const QString &c) { return isAsciiDigit(c); })) {
        throw tooLong();
    } else {
        total = unitTotal(characters, word);
    }

    if (total > HMS::maxSeconds)
        throw tooLong();
    return sign == 0 ? ShellTime::absolute(total) : ShellTime::relative(sign * total);
}

} // namespace tock

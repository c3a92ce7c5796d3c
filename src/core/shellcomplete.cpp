// Target resolution and tab completion.
#include "shell.h"

#include "text.h"

namespace tock::Shell {

namespace {

// Indexes of the names `typed` picks, compared under full case folding: an exact name alone
// (even when it also starts others), else every name it is the start of.
QList<qsizetype> matching(const QString &typed, const QStringList &names)
{
    const QString wanted = Text::folded(typed);
    QStringList folded;
    folded.reserve(names.size());
    for (qsizetype i = 0; i < names.size(); ++i) {
        folded.append(Text::folded(names.at(i)));
        if (folded.last() == wanted)
            return {i};
    }
    QList<qsizetype> matches;
    for (qsizetype i = 0; i < folded.size(); ++i) {
        if (Text::hasPrefix(folded.at(i), wanted))
            matches.append(i);
    }
    return matches;
}

QString joinedAt(const QStringList &names, const QList<qsizetype> &indexes)
{
    QStringList picked;
    for (const qsizetype i : indexes)
        picked.append(names.at(i));
    return picked.join(QStringLiteral(", "));
}

} // namespace

QList<QUuid> resolve(const ShellTarget &target, const QList<TimerItem> &timers, AllowAll allowAll)
{
    if (const auto *number = std::get_if<ShellTarget::Number>(&target.value)) {
        if (number->n < 1 || number->n > timers.size())
            throw ShellError{QStringLiteral("no timer ") + QString::number(number->n)};
        return {timers.at(qsizetype(number->n - 1)).id};
    }
    if (std::holds_alternative<ShellTarget::All>(target.value)) {
        if (allowAll == AllowAll::no)
            throw ShellError{QStringLiteral("pick one timer, not all")};
        if (timers.isEmpty())
            throw ShellError{QStringLiteral("no timers")};
        QList<QUuid> ids;
        ids.reserve(timers.size());
        for (const TimerItem &timer : timers)
            ids.append(timer.id);
        return ids;
    }

    const QString &typed = std::get<ShellTarget::Name>(target.value).text;
    QStringList names;
    names.reserve(timers.size());
    for (const TimerItem &timer : timers)
        names.append(timer.name);
    const QList<qsizetype> matches = matching(typed, names);
    if (matches.isEmpty())
        throw ShellError{QStringLiteral("no timer named ") + typed};
    if (matches.size() > 1)
        throw ShellError{QStringLiteral("ambiguous: ") + joinedAt(names, matches)};
    return {timers.at(matches.first()).id};
}

qsizetype resolveStyle(const QString &typed, const QStringList &styleNames)
{
    QString wanted = typed;
    wanted.replace(QLatin1Char(' '), QLatin1Char('-')); // "neo classic" is neo-classic
    const QList<qsizetype> matches = matching(wanted, styleNames);
    if (matches.isEmpty())
        throw ShellError{QStringLiteral("no style ") + typed + QStringLiteral(" \u2014 ")
                         + styleNames.join(QStringLiteral(", "))};
    if (matches.size() > 1)
        throw ShellError{QStringLiteral("ambiguous: ") + joinedAt(styleNames, matches)};
    return matches.first();
}

qsizetype rawLength(const QString &line)
{
    const QStringList characters = Text::graphemes(line);
    bool inQuotes = false;
    qsizetype n = 0;
    for (qsizetype i = characters.size() - 1; i >= 0; --i) {
        const QString &c = characters.at(i);
        if (c == u"\"")
            inQuotes = !inQuotes;
        else if (c == u" " && !inQuotes)
            break;
        ++n;
    }
    return n;
}

std::optional<QString> complete(const QString &line, const QStringList &timerNames,
                                const QStringList &styleNames)
{
    const QString beforeLast = Text::dropLastGraphemes(line, 1);
    const bool endsWithSpace = QStringView(line).mid(beforeLast.size()) == u" "; // not a tab
    QStringList words;
    try {
        words = tokenize(line);
    } catch (const ShellError &) {
        return std::nullopt; // an unclosed quote: nothing sensible to complete
    }

    QString partial;
    qsizetype k = 0; // index of the word being completed
    if (!words.isEmpty()) {
        if (endsWithSpace) {
            k = words.size();
        } else {
            partial = words.last();
            k = words.size() - 1;
        }
    }

    QStringList candidates;
    if (k == 0) {
        for (const Command &command : commands())
            candidates.append(command.name); // aliases are accepted but never offered
    } else {
        const std::optional<QString> command = canonical(words.first().toLower());
        if (!command)
            return std::nullopt;
        static const QStringList noArguments{
            QStringLiteral("add"),  QStringLiteral("help"), QStringLiteral("undo"),
            QStringLiteral("redo"), QStringLiteral("clear"), QStringLiteral("exit"),
            QStringLiteral("version")};
        if (*command == u"style") {
            candidates = styleNames; // a style name may have several words
        } else if (noArguments.contains(*command)) {
            return std::nullopt;
        } else if (k == 1) {
            candidates = timerNames;
            candidates.append(QStringLiteral("all"));
        }
    }

    const QString wanted = Text::folded(partial);
    QStringList matches;
    for (const QString &candidate : std::as_const(candidates)) {
        if (Text::hasPrefix(Text::folded(candidate), wanted))
            matches.append(candidate);
    }
    if (matches.isEmpty())
        return std::nullopt;

    // The longest start all matches share regardless of case, spelled as the first match.
    QStringList common = Text::graphemes(matches.first());
    for (qsizetype i = 1; i < matches.size(); ++i) {
        const QString match = Text::folded(matches.at(i));
        while (!common.isEmpty() && !Text::hasPrefix(match, Text::folded(common.join(QString()))))
            common.removeLast();
    }
    if (matches.size() > 1 && Text::graphemeCount(partial) >= common.size())
        return std::nullopt; // nothing would be added

    const bool unique = matches.size() == 1;
    QString insertion = common.join(QString());
    if (common.contains(QStringLiteral(" ")))
        insertion = QStringLiteral("\"") + insertion + (unique ? QStringLiteral("\"") : QString());
    if (unique)
        insertion += u' ';

    const QString base = !endsWithSpace && !words.isEmpty()
        ? Text::dropLastGraphemes(line, rawLength(line))
        : line;
    return base + insertion;
}

} // namespace tock::Shell

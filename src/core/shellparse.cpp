// Splitting a line into words and turning the words into one command.
#include "shell.h"

#include "require.h"
#include "text.h"

namespace tock::Shell {
namespace {

constexpr char16_t leftCurlyQuote = u'\u201C';
constexpr char16_t rightCurlyQuote = u'\u201D';

// The quote that closes a run opened by c, or 0 when c opens none.
char16_t closingQuoteFor(QChar c)
{
    switch (c.unicode()) {
    case u'"':
    case u'\'':
    case rightCurlyQuote:
        return c.unicode();
    case leftCurlyQuote:
        return rightCurlyQuote;
    default:
        return 0;
    }
}

// A position of at least 1: optional single sign, ASCII digits only, no 64-bit overflow.
std::optional<int64_t> position(const QString &word)
{
    const ShellTarget target = parseTarget(word);
    if (const auto *number = std::get_if<ShellTarget::Number>(&target.value))
        return number->n;
    return std::nullopt;
}

} // namespace

QStringList tokenize(const QString &line)
{
    QStringList words;
    QString word;
    bool open = false;    // a word has begun, possibly empty (`""`)
    char16_t awaited = 0; // the closing quote being waited for, 0 outside quotes
    // Word characters come in contiguous runs of the line between dropped quotes and separators;
    // copying whole runs instead of single clusters keeps long lines fast.
    qsizetype runStart = -1;
    const auto flushRun = [&](qsizetype end) {
        if (runStart >= 0)
            word += QStringView(line).mid(runStart, end - runStart);
        runStart = -1;
    };
    const auto keep = [&](qsizetype at) {
        if (runStart < 0)
            runStart = at;
    };
    Text::forEachGrapheme(line, [&](QStringView g) {
        const qsizetype at = g.data() - line.constData();
        // A quote or blank carrying a combining mark is one ordinary character.
        const QChar single = g.size() == 1 ? g[0] : QChar();
        if (awaited != 0) {
            if (single == QChar(awaited)) {
                flushRun(at);
                awaited = 0;
            } else {
                keep(at);
            }
            return;
        }
        if (g.size() == 1) {
            if (const char16_t closing = closingQuoteFor(single)) {
                flushRun(at);
                awaited = closing;
                open = true;
                return;
            }
            if (single == u' ' || single == u'\t') {
                flushRun(at);
                if (open) {
                    words.append(std::move(word));
                    word = QString();
                    open = false;
                }
                return;
            }
        }
        keep(at);
        open = true;
    });
    if (awaited != 0)
        throw ShellError{QStringLiteral("missing closing quote")};
    flushRun(line.size());
    if (open)
        words.append(word);
    return words;
}

std::optional<ShellCommand> parse(const QString &line)
{
    const QStringList words = tokenize(line);
    if (words.isEmpty())
        return std::nullopt;
    const std::optional<QString> found = canonical(words.first().toLower());
    if (!found)
        throw ShellError{QStringLiteral("unknown command: ") + words.first()
                         + QStringLiteral(" (type help)")};
    const QString &name = *found;
    const QStringList args = words.mid(1);
    const auto usageError = [&] { return ShellError{QStringLiteral("usage: ") + usage(name)}; };
    const auto noMore = [&](qsizetype k) {
        if (args.size() > k)
            throw usageError();
    };
    const auto target = [&](qsizetype i) {
        if (i >= args.size())
            throw usageError();
        return parseTarget(args.at(i));
    };
    const auto joinedFrom = [&](qsizetype i) { return args.mid(i).join(u' '); };

    if (name == u"add") {
        if (args.isEmpty())
            return ShellCommand{ShellCommand::Add{}};
        return ShellCommand{ShellCommand::Add{joinedFrom(0)}};
    }
    if (name == u"start") {
        noMore(1);
        return ShellCommand{ShellCommand::Start{target(0)}};
    }
    if (name == u"pause") {
        noMore(1);
        return ShellCommand{ShellCommand::Pause{target(0)}};
    }
    if (name == u"toggle") {
        noMore(1); // `toggle all` parses; resolution refuses it
        return ShellCommand{ShellCommand::Toggle{target(0)}};
    }
    if (name == u"reset") {
        noMore(1);
        return ShellCommand{ShellCommand::Reset{target(0)}};
    }
    if (name == u"rm") {
        noMore(1);
        return ShellCommand{ShellCommand::Remove{target(0)}};
    }
    if (name == u"rename") {
        if (args.size() < 2)
            throw usageError();
        return ShellCommand{ShellCommand::Rename{target(0), joinedFrom(1)}};
    }
    if (name == u"set") {
        if (args.size() != 2)
            throw usageError();
        return ShellCommand{ShellCommand::Set{target(0), parseTime(args.at(1))}};
    }
    if (name == u"mv") {
        const std::optional<int64_t> to = args.size() == 2 ? position(args.at(1)) : std::nullopt;
        if (!to)
            throw usageError();
        return ShellCommand{ShellCommand::Move{target(0), *to}};
    }
    if (name == u"style") {
        if (args.isEmpty())
            throw usageError();
        return ShellCommand{ShellCommand::Style{joinedFrom(0)}};
    }
    if (name == u"help")
        return ShellCommand{ShellCommand::Help{}}; // `help rm` is plain help, on purpose
    noMore(0);
    if (name == u"undo")
        return ShellCommand{ShellCommand::Undo{}};
    if (name == u"redo")
        return ShellCommand{ShellCommand::Redo{}};
    if (name == u"clear")
        return ShellCommand{ShellCommand::Clear{}};
    if (name == u"exit")
        return ShellCommand{ShellCommand::Exit{}};
    TOCK_REQUIRE(name == u"version", "every command in the table is parsed");
    return ShellCommand{ShellCommand::Version{}};
}

} // namespace tock::Shell

// The command language typed at the prompt: the command table, splitting a line into words,
// parsing it into one ShellCommand, resolving targets against the timers and tab completion.
// Everything here is a pure function of its arguments; executing commands is the app's job.
#pragma once

#include "shellerror.h"
#include "shelltime.h"
#include "timer.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <cstdint>
#include <optional>
#include <variant>

namespace tock {

// What a command is aimed at; matched against the timers only by Shell::resolve.
struct ShellTarget {
    // A 1-based position in the list; at least 1 when it comes from parseTarget.
    struct Number {
        int64_t n = 0;
        bool operator==(const Number &) const = default;
    };
    // A timer name or the start of one, exactly as typed.
    struct Name {
        QString text;
        bool operator==(const Name &) const = default;
    };
    struct All {
        bool operator==(const All &) const = default;
    };
    std::variant<Number, Name, All> value;

    static ShellTarget number(int64_t n) { return {Number{n}}; }
    static ShellTarget name(QString s) { return {Name{std::move(s)}}; }
    static ShellTarget all() { return {All{}}; }
    bool operator==(const ShellTarget &) const = default;
};

// One parsed command line. The cases carry the long names (Remove, Move) while the command
// words are the short ones (rm, mv).
struct ShellCommand {
    struct Add {
        std::optional<QString> name; // absent when no name was typed; `add ""` gives an empty one
        bool operator==(const Add &) const = default;
    };
    struct Start {
        ShellTarget target;
        bool operator==(const Start &) const = default;
    };
    struct Pause {
        ShellTarget target;
        bool operator==(const Pause &) const = default;
    };
    struct Toggle {
        ShellTarget target;
        bool operator==(const Toggle &) const = default;
    };
    struct Reset {
        ShellTarget target;
        bool operator==(const Reset &) const = default;
    };
    struct Remove {
        ShellTarget target;
        bool operator==(const Remove &) const = default;
    };
    struct Rename {
        ShellTarget target;
        QString name;
        bool operator==(const Rename &) const = default;
    };
    struct Set {
        ShellTarget target;
        ShellTime time;
        bool operator==(const Set &) const = default;
    };
    struct Move {
        ShellTarget target;
        int64_t position = 1; // 1-based destination
        bool operator==(const Move &) const = default;
    };
    struct Style {
        QString name; // as typed; the app decides whether it names a style
        bool operator==(const Style &) const = default;
    };
    struct Undo {
        bool operator==(const Undo &) const = default;
    };
    struct Redo {
        bool operator==(const Redo &) const = default;
    };
    struct Clear {
        bool operator==(const Clear &) const = default;
    };
    struct Help {
        bool operator==(const Help &) const = default;
    };
    struct Exit {
        bool operator==(const Exit &) const = default;
    };
    struct Version {
        bool operator==(const Version &) const = default;
    };
    std::variant<Add, Start, Pause, Toggle, Reset, Remove, Rename, Set, Move, Style, Undo, Redo,
                 Clear, Help, Exit, Version>
        value;
    bool operator==(const ShellCommand &) const = default;
};

namespace Shell {

struct Command {
    QString name;        // the canonical word, lower case
    QStringList aliases; // other accepted words, lower case
    QString usage;       // shown after "usage: "
    bool operator==(const Command &) const = default;
};

// The sixteen commands; this order is also the order completion offers them in.
const QList<Command> &commands();

// The name of the first command whose name or alias equals word (canonically equivalent text
// counts as equal; case does matter, so callers lower-case first); absent if none.
std::optional<QString> canonical(const QString &word);
// The usage text of the command called name, or name itself for an unknown one.
QString usage(const QString &name);

// Splits a line into words, one grapheme cluster at a time. Spaces and tabs separate words
// outside quotes; a quoted run (" ' or curly quotes; U+201C is closed by U+201D, the others by
// themselves) belongs to the word around it, so ab"c d"e is one word. No escapes. Throws
// ShellError "missing closing quote".
QStringList tokenize(const QString &line);

// "all" in any case, else a decimal position of at least 1 (optional sign, ASCII digits, fits
// in 64 bits), else the word as a name. Never fails.
ShellTarget parseTarget(const QString &word);

// One command from a line; absent when the line holds no words. Throws ShellError for a
// tokenizer failure, "unknown command: <word> (type help)", "usage: <usage>" and bad times.
std::optional<ShellCommand> parse(const QString &line);

// The six lines `help` prints.
const QStringList &helpText();

enum class AllowAll { no, yes };

// The ids a target means among timers (in display order, position 1 first). Names match
// case-insensitively: an exact name wins, else a unique prefix. Throws ShellError "no timer 7",
// "pick one timer, not all", "no timers", "no timer named x" or "ambiguous: A, B".
QList<QUuid> resolve(const ShellTarget &target, const QList<TimerItem> &timers, AllowAll allowAll);

// The index of the style name `typed` picks, matched like a timer name with spaces standing for
// '-'. Throws ShellError "no style x — <all names>" or "ambiguous: A, B".
qsizetype resolveStyle(const QString &typed, const QStringList &styleNames);
// The line with the word at its end completed (command words, timer names and "all", style
// names), with a trailing space once the completion is unique; absent when there is nothing to
// add or the line does not tokenize.
std::optional<QString> complete(const QString &line, const QStringList &timerNames,
                                const QStringList &styleNames);

// How many grapheme clusters the last word takes at the end of the raw line, quotes included.
// Deliberately simpler than the tokenizer: only the straight double quote and the space count,
// so single and curly quotes and tabs are plain characters here.
qsizetype rawLength(const QString &line);

} // namespace Shell
} // namespace tock

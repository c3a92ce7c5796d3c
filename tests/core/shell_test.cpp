// The command language: words, commands, times, targets, completion and the prompt's history.
#include "shell.h"
#include "shellhistory.h"
#include "table.h"

#include <QTest>

namespace tock {

inline QString describe(const ShellTarget &t)
{
    if (const auto *n = std::get_if<ShellTarget::Number>(&t.value))
        return QStringLiteral("#%1").arg(n->n);
    if (const auto *n = std::get_if<ShellTarget::Name>(&t.value))
        return QStringLiteral("name(%1)").arg(n->text);
    return QStringLiteral("all");
}

// "90" for an absolute time, "+90" / "-90" for a relative one.
inline QString describe(const ShellTime &t)
{
    if (const auto *a = std::get_if<ShellTime::Absolute>(&t.value))
        return QString::number(a->seconds);
    const int64_t s = std::get<ShellTime::Relative>(t.value).seconds;
    return (s < 0 ? QString() : QStringLiteral("+")) + QString::number(s);
}

inline QString describe(const ShellCommand &c)
{
    return std::visit([&](const auto &v) {
        QStringList parts{QStringLiteral("case %1").arg(c.value.index())};
        if constexpr (requires { v.target; }) parts << describe(v.target);
        if constexpr (requires { v.name.value_or(QString()); }) parts << v.name.value_or("<none>");
        else if constexpr (requires { v.name; }) parts << v.name;
        if constexpr (requires { v.time; }) parts << describe(v.time);
        if constexpr (requires { v.position; }) parts << QString::number(v.position);
        return parts.join(u", ");
    }, c.value);
}

inline char *toString(const ShellTarget &t) { return QTest::toString(describe(t)); }
inline char *toString(const ShellCommand &c) { return QTest::toString(describe(c)); }

// What f returns, or the message of the ShellError it throws as a T.
template <typename T, typename F>
T orError(F &&f)
{
    try {
        return f();
    } catch (const ShellError &e) {
        return T{e.message};
    }
}

} // namespace tock

using namespace tock;
using C = ShellCommand;
using T = ShellTarget;

namespace {

const QStringList three{"Deep work", "Design", "Email"};

QList<TimerItem> timersNamed(const QStringList &names)
{
    QList<TimerItem> timers;
    for (const QString &name : names)
        timers.append(TimerItem{QUuid::createUuid(), name, 0, {}});
    return timers;
}

const QString tooLong = QStringLiteral("too long: the most is 999:59:59");

} // namespace

class ShellTest : public QObject {
    Q_OBJECT
private slots:
    void tokenize_data()
    {
        table<QString, QStringList>({"line", "words"}, {
            {" \t  \t", {}},
            {"  a \t\t b  ", {"a", "b"}},
            {"a\nb\r\nc", {"a\nb\r\nc"}}, // a line break separates nothing
            {"rename 2 \"Deep  work\"", {"rename", "2", "Deep  work"}},
            {"ab\"c d\"e", {"abc de"}},
            {"add ''", {"add", ""}},
            {u8"rm “Deep work”", {"rm", "Deep work"}},
            {u8"“a “b”", {u8"a “b"}}, // a left curly quote is plain inside
            {u8"”a “b”", {u8"a “b"}}, // a right curly quote closes itself
            {u8"\"\u0301a b", {u8"\"\u0301a", "b"}}, // a quote with an accent is plain
            {u8"a \u0301b", {u8"a \u0301b"}},         // so is a space
            {u8"add 👩‍💻 x", {"add", u8"👩‍💻", "x"}},
            {"\"unterminated", {"missing closing quote"}},
            {u8"“a“", {"missing closing quote"}},
        });
    }
    void tokenize()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, words);
        QCOMPARE(orError<QStringList>([&] { return Shell::tokenize(line); }), words);
    }

    // Each command word, an alias of some, and the forms of a target.
    void parse_data()
    {
        table<QString, ShellCommand>({"line", "command"}, {
            {"add", C{C::Add{}}},
            {"NEW \"\"", C{C::Add{""}}},
            {"add  my   timer", C{C::Add{"my timer"}}},
            {"start 1", C{C::Start{T::number(1)}}},
            {"STOP Email", C{C::Pause{T::name("Email")}}},
            {"toggle all", C{C::Toggle{T::all()}}},
            {"reset ALL", C{C::Reset{T::all()}}},
            {"rm 0", C{C::Remove{T::name("0")}}}, // a position is at least 1
            {"rm +3", C{C::Remove{T::number(3)}}},
            {"rm 007", C{C::Remove{T::number(7)}}},
            {"rm 9223372036854775807", C{C::Remove{T::number(INT64_MAX)}}},
            {"rm 9223372036854775808", C{C::Remove{T::name("9223372036854775808")}}},
            {"rm \"\"", C{C::Remove{T::name("")}}},
            {"rm -2", C{C::Remove{T::name("-2")}}},
            {"rm 007x", C{C::Remove{T::name("007x")}}},
            {u8"rm ٣", C{C::Remove{T::name(u8"٣")}}},
            {"del 3", C{C::Remove{T::number(3)}}},
            {"rename 2 \"Deep  work\"", C{C::Rename{T::number(2), "Deep  work"}}},
            {"rename 2 Deep  work", C{C::Rename{T::number(2), "Deep work"}}},
            {"set work +15m", C{C::Set{T::name("work"), ShellTime::relative(900)}}},
            {"mv 1 +2", C{C::Move{T::number(1), 2}}},
            {"style Neo   Classic", C{C::Style{"Neo Classic"}}},
            {"\"undo\"", C{C::Undo{}}},
            {"help me \"now\"", C{C::Help{}}}, // help ignores its arguments
            {"? rm", C{C::Help{}}},
        });
    }
    void parse()
    {
        QFETCH(QString, line);
        QFETCH(ShellCommand, command);
        QCOMPARE(Shell::parse(line), std::optional<ShellCommand>(command));
        QCOMPARE(Shell::parse(" \t "), std::nullopt);
    }

    void parseFailure_data()
    {
        table<QString, QString>({"line", "message"}, {
            {"Frob x", "unknown command: Frob (type help)"},
            {"remove 1", "unknown command: remove (type help)"}, // the case name is no command word
            {"frob \"x", "missing closing quote"},
            {"start", "usage: start <timer|all>"},
            {"pause 1 2", "usage: pause <timer|all>"},
            {"del", "usage: rm <timer|all>"},
            {"rename 2", "usage: rename <timer> <name>"},
            {"set 1", "usage: set <timer> 1:30:00 | +15m | -5m"},
            {"set 1 5:60", "not a time: 5:60"},
            {"mv 1 0", "usage: mv <timer> <position>"},
            {"mv 1 9223372036854775808", "usage: mv <timer> <position>"},
            {"style", "usage: style <name>"},
            {"undo \"\"", "usage: undo"}, // an empty argument counts
            {"exit now", "usage: exit"},
        });
    }
    void parseFailure()
    {
        QFETCH(QString, line);
        QTEST(orError<QString>([&] { return describe(Shell::parse(line).value()); }), "message");
    }

    // A time as "90" (absolute) or "+90" (relative), else the error message.
    void parseTime_data()
    {
        table<QString, QString>({"word", "result"}, {
            {"1:30:00", "5400"},
            {"-0", "+0"},
            {"90:00", "5400"},
            {"41:15:00:00", "3596400"},
            {"-999:59:59", "-3599999"},
            {"+15m", "+900"},
            {"-5m", "-300"},
            {"1d2H3m4S", "93784"},
            {"999h59m59s", "3599999"},
            {"5:60", "not a time: 5:60"},
            {"1:24:00:00", "not a time: 1:24:00:00"},
            {"1:2:3:4:5", "not a time: 1:2:3:4:5"},
            {":30", "not a time: :30"},
            {"1:30m", "not a time: 1:30m"},
            {"", "not a time: "},
            {"1h-5m", "not a time: 1h-5m"},
            {"1h30", "not a time: 1h30"},
            {"m5", "not a time: m5"},
            {u8"٣٠", u8"not a time: ٣٠"},
            {"99999999999999999999:00", "not a time: 99999999999999999999:00"},
            {"1000:00:00", tooLong},
            {"99999999999999999999", tooLong},
            {"9223372036854775807d", tooLong},
            {"9223372036854775807s1s", tooLong},
            {"99999999999999999999w", tooLong},
        });
    }
    void parseTime()
    {
        QFETCH(QString, word);
        QFETCH(QString, result);
        QCOMPARE(orError<QString>([&] { return describe(tock::parseTime(word)); }), result);
    }

    // The names of the timers resolved, joined by " + ", or the error message.
    void resolve_data()
    {
        using enum Shell::AllowAll;
        table<QStringList, ShellTarget, Shell::AllowAll, QString>({"names", "target", "allowAll", "result"}, {
            {three, T::number(3), no, "Email"},
            {three, T::all(), yes, "Deep work + Design + Email"},
            {three, T::name("e"), no, "Email"},
            {{"Design review", "design"}, T::name("Design"), no, "design"}, // exact beats prefix
            {{"x", "Work", "work"}, T::name("WORK"), no, "Work"},
            {{"Solo"}, T::name(""), no, "Solo"},
            {{u8"ÉCOLE"}, T::name(u8"école"), no, u8"ÉCOLE"},
            {{u8"Caf\u00E9"}, T::name(u8"cafe\u0301"), no, u8"Caf\u00E9"},
            {{u8"Cafe\u0301 au lait"}, T::name(u8"caf\u00E9"), no, u8"Cafe\u0301 au lait"},
            {three, T::number(4), yes, "no timer 4"},
            {{}, T::all(), no, "pick one timer, not all"},
            {{}, T::all(), yes, "no timers"},
            {three, T::name("X"), yes, "no timer named X"},
            {three, T::name("de"), yes, "ambiguous: Deep work, Design"},
            {{u8"Cafe\u0301"}, T::name("cafe"), yes, "no timer named cafe"}, // whole characters only
        });
    }
    void resolve()
    {
        QFETCH(QStringList, names);
        QFETCH(ShellTarget, target);
        QFETCH(Shell::AllowAll, allowAll);
        QFETCH(QString, result);
        const QList<TimerItem> timers = timersNamed(names);
        const auto resolved = [&] {
            QStringList found;
            for (const QUuid &id : Shell::resolve(target, timers, allowAll))
                found.append(std::find_if(timers.cbegin(), timers.cend(), [&](auto &t) { return t.id == id; })->name);
            return found.join(" + ");
        };
        QCOMPARE(orError<QString>(resolved), result);
    }

    // Style names match like timer names, with spaces standing for '-'.
    void resolveStyle_data()
    {
        table<QString, QString>({"typed", "result"}, {
            {"SH", "shell"},
            {"Neo Classic", "neo-classic"},
            {"neo", "ambiguous: neo-classic, neo-color"},
            {"classic", u8"no style classic \u2014 neo-classic, neo-color, shell"},
        });
    }
    void resolveStyle()
    {
        QFETCH(QString, typed);
        QFETCH(QString, result);
        const QStringList names{"neo-classic", "neo-color", "shell"};
        QCOMPARE(orError<QString>([&] { return names.at(Shell::resolveStyle(typed, names)); }), result);
    }

    void complete_data()
    {
        table<QString, QStringList, QString>({"line", "names", "expected"}, { // "-": no completion
            {"  sta", three, "  start "},
            {"rm dee", three, "rm \"Deep work\" "},
            {"style cl", three, "style classic "},
            {"st", three, "-"},
        });
    }
    void complete()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, names);
        const QStringList styles{"classic", "color", "gameboy", "braun", "amber", "flap", "shell"};
        QTEST(Shell::complete(line, names, styles).value_or("-"), "expected");
    }

    void rawLength()
    {
        for (const auto &[line, length] : {std::pair<QString, int>{"rm ", 0}, {"rm \"a b\"", 5}, {"rm 'a b'", 2},
                                           {"rm a\tb", 3}, {"rm \"a b", 1}, {"a b\"", 4}})
            QCOMPARE(line + u' ' + QString::number(Shell::rawLength(line)), line + u' ' + QString::number(length));
    }

    // Entries given, then lines recorded, under a limit.
    void record_data()
    {
        table<QStringList, QStringList, int, QStringList>({"given", "lines", "limit", "entries"}, {
            {{"a", "b", "c", "d"}, {}, 2, {"c", "d"}},
            {{"a"}, {}, 0, {}},
            {{}, {"ls", "ls", "  ls  "}, 50, {"ls"}},
            {{}, {"ls", "pwd", "ls"}, 50, {"ls", "pwd", "ls"}},
            {{}, {"", " \t ", "\tadd  x \t"}, 50, {"add  x"}},
            {{}, {"a\n", "\na"}, 50, {"a\n", "\na"}},
            {{"a"}, {"b", "c"}, 2, {"b", "c"}},
        });
    }
    void record()
    {
        QFETCH(QStringList, given);
        QFETCH(QStringList, lines);
        QFETCH(int, limit);
        QFETCH(QStringList, entries);
        ShellHistory history(given, limit);
        for (const QString &line : lines)
            history.record(line);
        QCOMPARE(history.entries(), entries);
    }

    // Steps: "u:<current>" up, "d:<current>" down, "r:<line>" record, "x" reset browsing; the
    // results are what each up and down returned.
    void browsing_data()
    {
        const QStringList abc{"a", "b", "c"};
        table<QStringList, QStringList, QStringList>({"entries", "steps", "results"}, {
            {abc, {"u:new", "u:c", "d:b", "d:c", "d:z"}, {"c", "b", "c", "new", "z"}},
            {abc, {"u:", "u:", "u:", "u:", "d:"}, {"c", "b", "a", "a", "b"}},
            {{}, {"u:x", "d:y"}, {"x", "y"}},
            {abc, {"d:typed"}, {"typed"}},
            {abc, {"u:t", "r: ", "d:now"}, {"c", "now"}},
            {abc, {"u:t", "r:d", "u:e", "d:d"}, {"c", "d", "e"}},
            {abc, {"u:one", "x", "d:z", "u:two", "d:c"}, {"c", "z", "c", "two"}},
        });
    }
    void browsing()
    {
        QFETCH(QStringList, entries);
        QFETCH(QStringList, steps);
        ShellHistory history(entries);
        QStringList returned;
        for (const QString &step : steps) {
            if (step.startsWith(u"u:"))
                returned.append(history.up(step.mid(2)));
            else if (step.startsWith(u"d:"))
                returned.append(history.down(step.mid(2)));
            else if (step.startsWith(u"r:"))
                history.record(step.mid(2));
            else
                history.resetBrowsing();
        }
        QTEST(returned, "results");
    }
};

QTEST_APPLESS_MAIN(ShellTest)
#include "shell_test.moc"

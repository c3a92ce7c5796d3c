#include "shell.h"
#include "shellprint.h"

#include <QTest>

using namespace tock;
using C = ShellCommand;
using T = ShellTarget;

class ShellTest : public QObject {
    Q_OBJECT
private slots:
    void commandTable_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("aliases");
        QTest::addColumn<QString>("usage");
        int index = 0;
        const auto row = [&](const char *name, QStringList aliases, const char *usage) {
            QTest::newRow(name) << index++ << QString::fromUtf8(name) << aliases
                                << QString::fromUtf8(usage);
        };
        row("add", {"new"}, "add [name]");
        row("start", {"play"}, "start <timer|all>");
        row("pause", {"stop"}, "pause <timer|all>");
        row("toggle", {}, "toggle <timer>");
        row("reset", {}, "reset <timer|all>");
        row("rm", {"del", "delete"}, "rm <timer|all>");
        row("rename", {}, "rename <timer> <name>");
        row("set", {}, "set <timer> 1:30:00 | +15m | -5m");
        row("mv", {"move"}, "mv <timer> <position>");
        row("undo", {}, "undo");
        row("redo", {}, "redo");
        row("style", {}, "style <name>");
        row("clear", {}, "clear");
        row("help", {"?"}, "help");
        row("version", {"about"}, "version");
        row("exit", {"quit"}, "exit");
    }
    void commandTable()
    {
        QFETCH(int, index);
        QFETCH(QString, name);
        QFETCH(QStringList, aliases);
        QFETCH(QString, usage);
        QCOMPARE(Shell::commands().size(), 16);
        const Shell::Command &command = Shell::commands().at(index);
        QCOMPARE(command.name, name);
        QCOMPARE(command.aliases, aliases);
        QCOMPARE(command.usage, usage);
        QCOMPARE(Shell::usage(name), usage);
        QCOMPARE(Shell::canonical(name), std::optional<QString>(name));
        for (const QString &alias : aliases) {
            QCOMPARE(Shell::canonical(alias), std::optional<QString>(name));
            QCOMPARE(Shell::usage(alias), alias); // usage looks at names only
        }
    }

    void lookupMisses_data()
    {
        QTest::addColumn<QString>("word");
        QTest::newRow("upper case") << "RM";   // callers lower-case first
        QTest::newRow("case name") << "remove"; // the case is called that, the command is not
        QTest::newRow("empty") << "";
    }
    void lookupMisses()
    {
        QFETCH(QString, word);
        QCOMPARE(Shell::canonical(word), std::nullopt);
        QCOMPARE(Shell::usage(word), word);
    }

    void helpText()
    {
        const QStringList expected{
            u8"add [name] · start · pause · toggle <t>",
            u8"reset <t> · rm <t> · rename <t> <name>",
            u8"set <t> 1:30:00 | +15m | -5m · mv <t> <pos>",
            u8"undo · redo · style <name> · clear · exit",
            u8"version · help",
            u8"<t> = number, name or all · ↑↓ history · tab",
        };
        QCOMPARE(Shell::helpText(), expected);
    }

    void tokenize_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("empty") << "" << QStringList{};
        QTest::newRow("blanks only") << " \t  \t" << QStringList{};
        QTest::newRow("plain") << "add Lunch" << QStringList{"add", "Lunch"};
        QTest::newRow("separator runs") << "  a \t\t b  " << QStringList{"a", "b"};
        QTest::newRow("line break is no separator") << "a\nb\r\nc" << QStringList{"a\nb\r\nc"};
        QTest::newRow("quoted spaces kept") << "rename 2 \"Deep  work\""
                                            << QStringList{"rename", "2", "Deep  work"};
        QTest::newRow("quotes do not split") << "ab\"c d\"e" << QStringList{"abc de"};
        QTest::newRow("empty quotes") << "\"\"" << QStringList{""};
        QTest::newRow("empty argument") << "add ''" << QStringList{"add", ""};
        QTest::newRow("adjacent runs") << "'it'\"s\"" << QStringList{"its"};
        QTest::newRow("curly pair") << u8"rm “Deep work”" << QStringList{"rm", "Deep work"};
        QTest::newRow("left curly is plain inside") << u8"“a “b”" << QStringList{u8"a “b"};
        QTest::newRow("right curly closes itself") << u8"”a “b”" << QStringList{u8"a “b"};
        QTest::newRow("quote with accent is plain") << u8"\"\u0301a b"
                                                    << QStringList{u8"\"\u0301a", "b"};
        QTest::newRow("space with accent joins") << u8"a \u0301b" << QStringList{u8"a \u0301b"};
        QTest::newRow("emoji sequence") << u8"add 👩‍💻 x" << QStringList{"add", u8"👩‍💻", "x"};
    }
    void tokenize()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, words);
        QCOMPARE(Shell::tokenize(line), words);
    }

    void unclosedQuote_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("straight") << "\"unterminated";
        QTest::newRow("single") << "rm 'a b";
        QTest::newRow("left curly awaits right") << u8"“a“";
        QTest::newRow("right curly awaits right") << u8"a”b“";
    }
    void unclosedQuote()
    {
        QFETCH(QString, line);
        QCOMPARE(shellErrorOf([&] { Shell::tokenize(line); }), QString("missing closing quote"));
        QCOMPARE(shellErrorOf([&] { Shell::parse(line); }), QString("missing closing quote"));
    }

    void parseTarget_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<ShellTarget>("target");
        QTest::newRow("all") << "all" << T::all();
        QTest::newRow("ALL") << "ALL" << T::all();
        QTest::newRow("All") << "All" << T::all();
        QTest::newRow("empty") << "" << T::name("");
        QTest::newRow("number") << "3" << T::number(3);
        QTest::newRow("plus sign") << "+3" << T::number(3);
        QTest::newRow("leading zeros") << "007" << T::number(7);
        QTest::newRow("largest") << "9223372036854775807" << T::number(INT64_MAX);
        QTest::newRow("overflow") << "9223372036854775808" << T::name("9223372036854775808");
        QTest::newRow("zero") << "0" << T::name("0");
        QTest::newRow("negative") << "-2" << T::name("-2");
        QTest::newRow("two signs") << "++3" << T::name("++3");
        QTest::newRow("trailing text") << "007x" << T::name("007x");
        QTest::newRow("arabic-indic") << u8"٣" << T::name(u8"٣");
        QTest::newRow("digit with accent") << u8"3\u0301" << T::name(u8"3\u0301");
    }
    void parseTarget()
    {
        QFETCH(QString, word);
        QFETCH(ShellTarget, target);
        QCOMPARE(Shell::parseTarget(word), target);
    }

    void parse_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<ShellCommand>("command");
        QTest::newRow("add") << "add" << C{C::Add{}};
        QTest::newRow("ADD") << "ADD Lunch" << C{C::Add{"Lunch"}};
        QTest::newRow("add empty name") << "add \"\"" << C{C::Add{""}};
        QTest::newRow("add joins") << "add  my   timer" << C{C::Add{"my timer"}};
        QTest::newRow("add quoted") << "add \"my   timer\"" << C{C::Add{"my   timer"}};
        QTest::newRow("start") << "start 1" << C{C::Start{T::number(1)}};
        QTest::newRow("stop") << "STOP Email" << C{C::Pause{T::name("Email")}};
        QTest::newRow("toggle all") << "toggle all" << C{C::Toggle{T::all()}};
        QTest::newRow("reset") << "reset ALL" << C{C::Reset{T::all()}};
        QTest::newRow("rm name 0") << "rm 0" << C{C::Remove{T::name("0")}};
        QTest::newRow("rm 3") << "rm 3" << C{C::Remove{T::number(3)}};
        QTest::newRow("delete") << "Delete \"Deep work\"" << C{C::Remove{T::name("Deep work")}};
        QTest::newRow("rename quoted") << "rename 2 \"Deep  work\""
                                       << C{C::Rename{T::number(2), "Deep  work"}};
        QTest::newRow("rename joins") << "rename 2 Deep  work" << C{C::Rename{T::number(2), "Deep work"}};
        QTest::newRow("set") << "set 1 1:30:00" << C{C::Set{T::number(1), ShellTime::absolute(5400)}};
        QTest::newRow("set relative") << "set work +15m"
                                      << C{C::Set{T::name("work"), ShellTime::relative(900)}};
        QTest::newRow("mv") << "mv 1 2" << C{C::Move{T::number(1), 2}};
        QTest::newRow("mv signed") << "mv 1 +2" << C{C::Move{T::number(1), 2}};
        QTest::newRow("style") << "style amber" << C{C::Style{"amber"}};
        QTest::newRow("style joins") << "style Neo   Classic" << C{C::Style{"Neo Classic"}};
        QTest::newRow("help") << "help" << C{C::Help{}};
        QTest::newRow("help ignores arguments") << "help me \"now\"" << C{C::Help{}};
        QTest::newRow("? ignores arguments") << "? rm" << C{C::Help{}};
        QTest::newRow("exit") << "exit" << C{C::Exit{}};
        QTest::newRow("version") << "version" << C{C::Version{}};
        QTest::newRow("quoted command word") << "\"undo\"" << C{C::Undo{}};
    }
    void parse()
    {
        QFETCH(QString, line);
        QFETCH(ShellCommand, command);
        QCOMPARE(Shell::parse(line), std::optional<ShellCommand>(command));
    }

    // The case order is part of the value's identity (comparison, any serialisation).
    void caseOrder()
    {
        const char *lines[] = {"add", "start 1", "pause 1", "toggle 1", "reset 1", "rm 1",
                               "rename 1 x", "set 1 0", "mv 1 1", "style x", "undo", "redo",
                               "clear", "help", "exit", "version"};
        size_t index = 0;
        for (const char *line : lines)
            QCOMPARE(Shell::parse(QString::fromUtf8(line))->value.index(), index++);
    }

    void noWords_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("empty") << "";
        QTest::newRow("spaces") << "   ";
        QTest::newRow("tabs and spaces") << "\t \t";
    }
    void noWords()
    {
        QFETCH(QString, line);
        QCOMPARE(Shell::parse(line), std::nullopt);
    }

    void parseFailure_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown") << "Frob" << "unknown command: Frob (type help)";
        QTest::newRow("unknown with args") << "frob x" << "unknown command: frob (type help)";
        QTest::newRow("unknown before usage") << u8"ÄDD" << u8"unknown command: ÄDD (type help)";
        QTest::newRow("quote before unknown") << "frob \"x" << "missing closing quote";
        QTest::newRow("start none") << "start" << "usage: start <timer|all>";
        QTest::newRow("start two") << "start 1 2" << "usage: start <timer|all>";
        QTest::newRow("toggle") << "toggle 1 2" << "usage: toggle <timer>";
        QTest::newRow("rm via alias") << "del" << "usage: rm <timer|all>";
        QTest::newRow("rename one") << "rename 2" << "usage: rename <timer> <name>";
        QTest::newRow("set one") << "set 1" << "usage: set <timer> 1:30:00 | +15m | -5m";
        QTest::newRow("set bad time") << "set 1 5:60" << "not a time: 5:60";
        QTest::newRow("set too long") << "set 1 1000:00:00" << "too long: the most is 999:59:59";
        QTest::newRow("mv zero") << "mv 1 0" << "usage: mv <timer> <position>";
        QTest::newRow("mv word") << "mv 1 x" << "usage: mv <timer> <position>";
        QTest::newRow("mv all") << "mv 1 all" << "usage: mv <timer> <position>";
        QTest::newRow("mv negative") << "move 1 -2" << "usage: mv <timer> <position>";
        QTest::newRow("mv one") << "mv 1" << "usage: mv <timer> <position>";
        QTest::newRow("mv overflow") << "mv 1 9223372036854775808" << "usage: mv <timer> <position>";
        QTest::newRow("style") << "style" << "usage: style <name>";
        QTest::newRow("undo") << "undo x" << "usage: undo";
        QTest::newRow("exit now") << "exit now" << "usage: exit";
        QTest::newRow("about") << "about me" << "usage: version";
        QTest::newRow("empty argument counts") << "undo \"\"" << "usage: undo";
    }
    void parseFailure()
    {
        QFETCH(QString, line);
        QFETCH(QString, message);
        QCOMPARE(shellErrorOf([&] { Shell::parse(line); }), message);
    }
};

QTEST_APPLESS_MAIN(ShellTest)
#include "shell_test.moc"

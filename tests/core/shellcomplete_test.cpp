#include "shell.h"
#include "shellprint.h"

#include <QTest>

using namespace tock;
using T = ShellTarget;

namespace {

const QStringList styles{"classic", "color", "gameboy", "braun", "amber", "flap", "shell"};
const QStringList threeTimers{"Deep work", "Design", "Email"};

QList<TimerItem> timersNamed(const QStringList &names)
{
    QList<TimerItem> timers;
    for (qsizetype i = 0; i < names.size(); ++i) {
        TimerItem timer;
        timer.id = QUuid(uint(i + 1), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        timer.name = names.at(i);
        timers.append(timer);
    }
    return timers;
}

} // namespace

class ShellCompleteTest : public QObject {
    Q_OBJECT
private slots:
    void resolve_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<ShellTarget>("target");
        QTest::addColumn<bool>("allowAll");
        QTest::addColumn<QList<int>>("expected"); // positions in names
        QTest::newRow("first") << threeTimers << T::number(1) << false << QList<int>{0};
        QTest::newRow("last") << threeTimers << T::number(3) << false << QList<int>{2};
        QTest::newRow("all") << threeTimers << T::all() << true << QList<int>{0, 1, 2};
        QTest::newRow("exact any case") << threeTimers << T::name("design") << false << QList<int>{1};
        QTest::newRow("unique prefix") << threeTimers << T::name("DEEP") << false << QList<int>{0};
        QTest::newRow("single letter") << threeTimers << T::name("e") << false << QList<int>{2};
        QTest::newRow("exact beats prefix") << QStringList{"Design review", "design"}
                                            << T::name("Design") << false << QList<int>{1};
        QTest::newRow("first exact wins") << QStringList{"x", "Work", "work"} << T::name("WORK")
                                          << false << QList<int>{1};
        QTest::newRow("empty name, one timer") << QStringList{"Solo"} << T::name("") << false
                                               << QList<int>{0};
        QTest::newRow("unicode lower-case") << QStringList{u8"ÉCOLE"} << T::name(u8"école")
                                            << false << QList<int>{0};
        QTest::newRow("decomposed typed") << QStringList{u8"Caf\u00E9"} << T::name(u8"cafe\u0301")
                                          << false << QList<int>{0};
        QTest::newRow("decomposed stored prefix") << QStringList{u8"Cafe\u0301 au lait"}
                                                  << T::name(u8"caf\u00E9") << false << QList<int>{0};
    }
    void resolve()
    {
        QFETCH(QStringList, names);
        QFETCH(ShellTarget, target);
        QFETCH(bool, allowAll);
        QFETCH(QList<int>, expected);
        const QList<TimerItem> timers = timersNamed(names);
        QList<QUuid> ids;
        for (const int i : expected)
            ids.append(timers.at(i).id);
        QCOMPARE(Shell::resolve(target, timers, allowAll ? Shell::AllowAll::yes : Shell::AllowAll::no),
                 ids);
    }

    void resolveRefuses_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<ShellTarget>("target");
        QTest::addColumn<bool>("allowAll");
        QTest::addColumn<QString>("message");
        QTest::newRow("past the end") << threeTimers << T::number(4) << true << "no timer 4";
        QTest::newRow("huge") << threeTimers << T::number(INT64_MAX) << true
                              << "no timer 9223372036854775807";
        QTest::newRow("all refused") << threeTimers << T::all() << false << "pick one timer, not all";
        QTest::newRow("all refused first") << QStringList{} << T::all() << false
                                           << "pick one timer, not all";
        QTest::newRow("all, no timers") << QStringList{} << T::all() << true << "no timers";
        QTest::newRow("no match, typed case") << threeTimers << T::name("X") << true
                                              << "no timer named X";
        QTest::newRow("name, no timers") << QStringList{} << T::name("") << true << "no timer named ";
        QTest::newRow("ambiguous") << threeTimers << T::name("de") << true
                                   << "ambiguous: Deep work, Design";
        QTest::newRow("empty is ambiguous") << threeTimers << T::name("") << true
                                            << "ambiguous: Deep work, Design, Email";
        // Only whole characters match: the accented e is not an e.
        QTest::newRow("no half character") << QStringList{u8"Cafe\u0301"} << T::name("cafe") << true
                                           << "no timer named cafe";
    }
    void resolveRefuses()
    {
        QFETCH(QStringList, names);
        QFETCH(ShellTarget, target);
        QFETCH(bool, allowAll);
        QFETCH(QString, message);
        const auto allow = allowAll ? Shell::AllowAll::yes : Shell::AllowAll::no;
        QCOMPARE(shellErrorOf([&] { Shell::resolve(target, timersNamed(names), allow); }), message);
    }

    void complete_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("expected"); // "-" for no completion
        const QString none = QStringLiteral("-");
        QTest::newRow("command") << "sta" << threeTimers << "start ";
        QTest::newRow("shared s only") << "s" << threeTimers << none;
        QTest::newRow("start and style share st") << "st" << threeTimers << none;
        QTest::newRow("nothing typed") << "" << threeTimers << none;
        QTest::newRow("aliases not offered") << "del" << threeTimers << none;
        QTest::newRow("leading blanks kept") << "  sta" << threeTimers << "  start ";
        QTest::newRow("tab is part of the word") << "sta\t" << threeTimers << "start ";
        QTest::newRow("only all") << "rm " << QStringList{} << "rm all ";
        QTest::newRow("nothing shared") << "rm " << threeTimers << none;
        QTest::newRow("common part") << "rm d" << threeTimers << "rm De";
        QTest::newRow("first match spelling") << "rm D" << QStringList{"deep work", "Design"}
                                              << "rm de";
        QTest::newRow("quoted and closed") << "rm dee" << threeTimers << "rm \"Deep work\" ";
        QTest::newRow("quote left open") << "rm dee" << QStringList{"Deep work", "Deep sleep"}
                                         << "rm \"Deep ";
        QTest::newRow("open quote no longer tokenizes") << "rm \"Deep "
                                                        << QStringList{"Deep work", "Deep sleep"}
                                                        << none;
        QTest::newRow("quoted partial replaced") << "rm \"deep w\"" << threeTimers
                                                 << "rm \"Deep work\" ";
        // The raw count knows only straight quotes, so a single-quoted run is cut at its space.
        QTest::newRow("single quotes cut") << "rm 'deep w'" << threeTimers
                                           << "rm 'deep \"Deep work\" ";
        QTest::newRow("all") << "rm AL" << threeTimers << "rm all ";
        QTest::newRow("alias command") << "del e" << threeTimers << "del Email ";
        QTest::newRow("command in capitals") << "RM e" << threeTimers << "RM Email ";
        QTest::newRow("second argument") << "rename 1 x" << threeTimers << none;
        QTest::newRow("add") << "add x" << threeTimers << none;
        QTest::newRow("help") << "help x" << threeTimers << none;
        QTest::newRow("unknown command") << "frob x" << threeTimers << none;
        QTest::newRow("style") << "style cl" << threeTimers << "style classic ";
        QTest::newRow("style shares c") << "style c" << threeTimers << none;
        QTest::newRow("style later word") << "style x co" << threeTimers << "style x color ";
        QTest::newRow("no match") << "rm zz" << threeTimers << none;
        QTest::newRow("canonical match") << u8"rm cafe\u0301" << QStringList{u8"Caf\u00E9 au lait"}
                                         << u8"rm \"Caf\u00E9 au lait\" ";
        QTest::newRow("no half character") << "rm cafe" << QStringList{u8"Caf\u00E9"} << none;
        QTest::newRow("no half cluster") << u8"rm 👩" << QStringList{u8"👩‍💻 code"} << none;
        // Counted in characters, the common part "é" adds nothing to the typed "é".
        QTest::newRow("characters not code units")
            << u8"rm \u00E9" << QStringList{u8"e\u0301a", u8"e\u0301b"} << none;
        QTest::newRow("cluster then space") << u8"rm 👩‍💻"
                                            << QStringList{u8"👩‍💻 code", u8"👩‍💻 review"}
                                            << u8"rm \"👩‍💻 ";
    }
    void complete()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, names);
        QFETCH(QString, expected);
        const std::optional<QString> result = Shell::complete(line, names, styles);
        QCOMPARE(result.value_or(QStringLiteral("-")), expected);
    }

    void rawLength_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("length");
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("last word") << "rm abc" << 3;
        QTest::newRow("trailing space") << "rm " << 0;
        QTest::newRow("quoted space") << "rm \"a b\"" << 5;
        QTest::newRow("single quotes are plain") << "rm 'a b'" << 2;
        QTest::newRow("tab is plain") << "rm a\tb" << 3;
        QTest::newRow("quote seen from the end") << "rm \"a b" << 1;
        QTest::newRow("open quote runs to the start") << "a b\"" << 4;
    }
    void rawLength()
    {
        QFETCH(QString, line);
        QFETCH(int, length);
        QCOMPARE(Shell::rawLength(line), qsizetype(length));
    }
};

QTEST_APPLESS_MAIN(ShellCompleteTest)
#include "shellcomplete_test.moc"

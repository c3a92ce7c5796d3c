// The model's shell session: each command's output line and effect, undo steps, the preamble's
// refusal, prompt editing by grapheme, history browsing and storage, completion.
#include "shellhistory.h"
#include "text.h"
#include "timevalues.h"
#include "modelfixture.h"
#include "table.h"

#include <QRegularExpression>
#include <QTest>

using namespace tock;

namespace {

// "Deep work" 100 s paused, "Design" running from now, "Email" one hour paused; style amber.
struct Session : ModelFixture {
    explicit Session(WithStore withStore = WithStore::no) : ModelFixture(withStore, {})
    {
        Board b = ModelFixture::board({"Deep work", "Design", "Email"}, {100, 0, 3600});
        b.timers[1].startedAt = v.clock->now();
        make(b, std::nullopt, StyleID::amber);
    }

    // The output lines, marked "! " when they report an error.
    QStringList run(const QString &line)
    {
        QStringList output = shell(line);
        for (QString &text : output)
            text.prepend(model->shell().shellOutputIsError() ? "! " : "");
        return output;
    }
    // The prompt line with "|" at the caret.
    QString prompt() const
    {
        QStringList characters = Text::graphemes(model->shell().promptText());
        characters.insert(model->shell().promptCaret(), QStringLiteral("|"));
        return characters.join(QString());
    }
    // "name time" per timer, a star marking the running ones.
    QString board() const
    {
        QStringList rows;
        for (const TimerItem &timer : model->board().timers)
            rows << timer.name + ' ' + TimeFormat::string(timer.elapsed(v.clock->now())) + (timer.isRunning() ? "*" : "");
        return rows.join(QStringLiteral(", "));
    }
};

const QString start = QStringLiteral("Deep work 00:01:40, Design 00:00:00*, Email 01:00:00");

} // namespace

class ShellSessionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void commands_data()
    {
        // board: null when unchanged; style: -1 when unchanged
        table<QString, QStringList, QString, int>({"line", "output", "board", "style"}, {
            {"add Lunch break", {"added “Lunch break” as 4"}, start + ", Lunch break 00:00:00", -1},
            {"start all", {"started 2 timers"}, "Deep work 00:01:40*, Design 00:00:00*, Email 01:00:00*", -1},
            {"start design", {"already running"}, {}, -1},
            {"pause all", {"paused “Design”"}, "Deep work 00:01:40, Design 00:00:00, Email 01:00:00", -1},
            {"toggle email", {"started “Email”"}, "Deep work 00:01:40, Design 00:00:00*, Email 01:00:00*", -1},
            {"reset all", {"reset 3 timers"}, "Deep work 00:00:00, Design 00:00:00, Email 00:00:00", -1},
            {"rm 1", {"deleted “Deep work” · undo brings it back"}, "Design 00:00:00*, Email 01:00:00", -1},
            {"del all", {"deleted 3 timers · undo brings them back"}, "", -1},
            {"rename deep Focus  time", {"renamed “Deep work” to “Focus time”"}, "Focus time 00:01:40, Design 00:00:00*, Email 01:00:00", -1},
            {"set 1 1:30:00", {"“Deep work” is now 01:30:00"}, "Deep work 01:30:00, Design 00:00:00*, Email 01:00:00", -1},
            {"set 1 +15m", {"“Deep work” is now 00:16:40"}, "Deep work 00:16:40, Design 00:00:00*, Email 01:00:00", -1},
            {"set design 90", {"“Design” is now 00:01:30"}, "Deep work 00:01:40, Design 00:01:30*, Email 01:00:00", -1},
            {"set email +999:00:00", {"! too long: the most is 999:59:59"}, {}, -1},
            {"mv 1 3", {"moved “Deep work” to 3"}, "Design 00:00:00*, Email 01:00:00, Deep work 00:01:40", -1},
            {"style Neo Classic", {"style neo-classic"}, {}, int(StyleID::classic)},
            {"undo", {"! nothing to undo"}, {}, -1},
            {"redo", {"! nothing to redo"}, {}, -1},
        });
    }

    void commands()
    {
        QFETCH(QString, line);
        QFETCH(QString, board);
        QFETCH(int, style);

        Session session;
        QTEST(session.run(line), "output");
        QCOMPARE(session.board(), board.isNull() ? start : board);
        QCOMPARE(session.model->style(), style < 0 ? StyleID::amber : StyleID(style));
        QCOMPARE(session.prompt(), "|");
        QCOMPARE(ModelProbe::history(*session.model).entries(), QStringList{line});
        QVERIFY(!session.v.settings->value(QStringLiteral("shellHistory"))); // stored only with a store
        // A change is one undo step even across several timers; adding, naming, starting and pausing are none.
        const bool undoable = !board.isNull() && !QRegularExpression("^(add|new|start|play|pause|toggle|rename)\\b").match(line).hasMatch();
        QCOMPARE(session.undo.canUndo(), undoable);
        if (undoable) {
            QCOMPARE(session.run(QStringLiteral("undo")), QStringList{QStringLiteral("undone")});
            QCOMPARE(session.board(), start);
            QVERIFY(!session.undo.canUndo());
            QCOMPARE(session.run(QStringLiteral("redo")), QStringList{QStringLiteral("redone")});
            QCOMPARE(session.board(), board);
        }
    }

    void sessionEffects()
    {
        Session session;
        // Timers started together share one instant.
        session.v.clock->advance(10);
        session.v.clock->setDrift(0.001);
        session.run(QStringLiteral("start all"));
        session.v.clock->setDrift(0);
        const QList<TimerItem> &timers = session.model->board().timers;
        QVERIFY(timers.at(0).startedAt.has_value());
        QCOMPARE(timers.at(2).startedAt, timers.at(0).startedAt);
        // A blank line keeps the last output and is not history; clear empties it; exit calls out.
        session.run(QStringLiteral("rm x"));
        QCOMPARE(session.run(QStringLiteral(" \t ")), QStringList{QStringLiteral("! no timer named x")});
        QCOMPARE(ModelProbe::history(*session.model).entries(), QStringList({"start all", "rm x"}));
        QCOMPARE(session.run(QStringLiteral("clear")), QStringList());
        QVERIFY(!session.model->shell().shellOutputIsError());
        session.run(QStringLiteral("quit"));
        QCOMPARE(session.exits, 1);
    }

    void preambleRefusesAnInvalidEditAndCommitsAValidOne()
    {
        Session session;
        AppModel &model = *session.model;
        const QUuid first = model.board().timers.at(0).id;
        model.beginEdit(first);
        TimeEditDraft draft = *model.draft();
        draft.set(TimeField::seconds, QStringLiteral("75"));
        model.setDraft(draft);
        for (const char *line : {"add x", "reset all", "help", "undo"})
            QCOMPARE(session.run(QString::fromUtf8(line)), QStringList{"! finish or cancel the time you are editing first"});
        QCOMPARE(session.board(), start);
        QCOMPARE(model.editingID(), first);
        draft.set(TimeField::seconds, QStringLiteral("5"));
        draft.set(TimeField::hours, QStringLiteral("2"));
        model.setDraft(draft);
        QCOMPARE(session.run(QStringLiteral("pause all")), QStringList{QStringLiteral("paused “Design”")});
        QVERIFY(!model.editingID());
        QCOMPARE(session.board(), "Deep work 02:01:05, Design 00:00:00, Email 01:00:00");
    }

    void promptEditingCountsGraphemesAndCompletes()
    {
        Session session;
        AppModel &model = *session.model;
        const QString flag = QStringLiteral("\U0001F1F3\U0001F1F4"); // one character, four UTF-16 units
        const QString accented = QStringLiteral("e\u0301");          // one character, two units
        model.shell().promptInsert("add " + flag);
        model.shell().promptMove(-1);
        model.shell().promptInsert(accented);
        QCOMPARE(session.prompt(), "add " + accented + "|" + flag);
        model.shell().promptForwardDelete();
        model.shell().promptForwardDelete(); // at the end: nothing
        model.shell().promptBackspace();
        QCOMPARE(session.prompt(), "add |");
        model.shell().promptMove(-100);
        model.shell().promptBackspace(); // at the start: nothing
        model.shell().promptInsert(QStringLiteral("a\r\nb\nc")); // a pasted block becomes one line
        QCOMPARE(session.prompt(), "a b c|add ");
        model.shell().promptMove(100);
        QCOMPARE(session.prompt(), "a b cadd |");
        model.shell().setPrompt(QStringLiteral("rm dee"), 99);
        QCOMPARE(session.prompt(), "rm dee|");
        model.shell().promptComplete();
        QCOMPARE(session.prompt(), "rm \"Deep work\" |");
        model.shell().setPrompt(QStringLiteral("s"), 1);
        model.shell().promptComplete(); // nothing fits: a beep
        QCOMPARE(session.prompt(), "s|");
        QCOMPARE(session.beeps, 1);
    }

    void historyBrowsingKeepsTheTypedLine()
    {
        Session session(WithStore::yes);
        AppModel &model = *session.model;
        session.run(QStringLiteral("  help "));
        session.run(QStringLiteral("frob")); // failed lines are history too
        model.shell().promptInsert(QStringLiteral("new"));
        const auto browse = [&](bool up) { model.shell().promptHistory(up); return session.prompt(); };
        QCOMPARE(browse(true), "frob|");
        QCOMPARE(browse(true), "help|");
        QCOMPARE(browse(false), "frob|");
        QCOMPARE(browse(false), "new|");
        // Clearing the line (Ctrl-U) ends browsing: up starts again from the newest.
        browse(true);
        browse(true);
        model.shell().setPrompt(QString(), 0);
        QCOMPARE(browse(true), "frob|");
        QCOMPARE(session.v.settings->value(QStringLiteral("shellHistory")).value_or(QVariant()).toStringList(),
                 QStringList({"help", "frob"}));
    }
};

QTEST_GUILESS_MAIN(ShellSessionTest)
#include "shellsession_test.moc"

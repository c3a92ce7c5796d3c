// The model's shell session: every command's effect and output line, the preamble's refusal,
// prompt editing with grapheme carets, history browsing and persistence, completion.
#include "appinfo.h"
#include "appmodel.h"
#include "shell.h"
#include "shellhistory.h"
#include "store.h"
#include "text.h"
#include "timevalues.h"
#include "undomanager.h"
#include "virtualservices.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tock;

namespace {

// One timer per line of the summary: name, time, and "running" or "paused".
QString summary(const Board &board, Instant now)
{
    QStringList rows;
    for (const TimerItem &timer : board.timers)
        rows << timer.name + QLatin1Char(' ') + TimeFormat::string(timer.elapsed(now))
                    + (timer.isRunning() ? QStringLiteral(" running") : QStringLiteral(" paused"));
    return rows.join(QStringLiteral(" | "));
}

struct Session {
    VirtualServices virt;
    UndoManager undo;
    std::unique_ptr<AppModel> model;

    // "Deep work" 100 s paused, "Design" running from now, "Email" one hour paused.
    explicit Session(std::shared_ptr<Store> store = {})
    {
        Board board;
        board.add(QStringLiteral("Deep work"));
        board.timers.last().accumulated = 100;
        board.add(QStringLiteral("Design"));
        board.timers.last().startedAt = virt.clock->now();
        board.add(QStringLiteral("Email"));
        board.timers.last().accumulated = 3600;
        model = std::make_unique<AppModel>(std::move(store), board, std::nullopt, std::nullopt, virt.services());
        model->setUndoManager(&undo);
    }

    QStringList run(const QString &line)
    {
        model->setPrompt(line, Text::graphemeCount(line));
        model->promptRun();
        return model->shellOutput();
    }
    QString board() const { return summary(model->board(), virt.clock->now()); }
};

const QString start = QStringLiteral("Deep work 00:01:40 paused | Design 00:00:00 running | Email 01:00:00 paused");

} // namespace

class ShellSessionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void commands_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("output");
        QTest::addColumn<bool>("isError");
        QTest::addColumn<QString>("board"); // empty: unchanged

        const auto row = [](const char *name, const char *line, QStringList output, bool isError, QString board) {
            QTest::newRow(name) << QString::fromUtf8(line) << output << isError << board;
        };
        row("add named", "add Lunch break", {"added “Lunch break” as 4"}, false, start + " | Lunch break 00:00:00 paused");
        row("add default", "new", {"added “Timer 4” as 4"}, false, start + " | Timer 4 00:00:00 paused");
        row("add empty", "add \"\"", {"added “” as 4"}, false, start + " |  00:00:00 paused");
        row("start all", "start all", {"started 2 timers"}, false,
            "Deep work 00:01:40 running | Design 00:00:00 running | Email 01:00:00 running");
        row("start one", "play 1", {"started “Deep work”"}, false,
            "Deep work 00:01:40 running | Design 00:00:00 running | Email 01:00:00 paused");
        row("start running", "start design", {"already running"}, false, {});
        row("pause all", "pause all", {"paused “Design”"}, false,
            "Deep work 00:01:40 paused | Design 00:00:00 paused | Email 01:00:00 paused");
        row("pause paused", "stop 3", {"already paused"}, false, {});
        row("toggle starts", "toggle email", {"started “Email”"}, false,
            "Deep work 00:01:40 paused | Design 00:00:00 running | Email 01:00:00 running");
        row("toggle pauses", "toggle 2", {"paused “Design”"}, false,
            "Deep work 00:01:40 paused | Design 00:00:00 paused | Email 01:00:00 paused");
        row("toggle all", "toggle all", {"pick one timer, not all"}, true, {});
        row("reset one", "reset 3", {"reset “Email”"}, false,
            "Deep work 00:01:40 paused | Design 00:00:00 running | Email 00:00:00 paused");
        row("reset all", "reset all", {"reset 3 timers"}, false,
            "Deep work 00:00:00 paused | Design 00:00:00 paused | Email 00:00:00 paused");
        row("rm one", "rm 1", {"deleted “Deep work” · undo brings it back"}, false,
            "Design 00:00:00 running | Email 01:00:00 paused");
        row("rm all", "del all", {"deleted 3 timers · undo brings them back"}, false, "");
        row("rename", "rename deep Focus  time", {"renamed “Deep work” to “Focus time”"}, false,
            "Focus time 00:01:40 paused | Design 00:00:00 running | Email 01:00:00 paused");
        row("set absolute", "set 1 1:30:00", {"“Deep work” is now 01:30:00"}, false,
            "Deep work 01:30:00 paused | Design 00:00:00 running | Email 01:00:00 paused");
        row("set relative", "set 1 +15m", {"“Deep work” is now 00:16:40"}, false,
            "Deep work 00:16:40 paused | Design 00:00:00 running | Email 01:00:00 paused");
        row("set below zero", "set 1 -5m", {"“Deep work” is now 00:00:00"}, false,
            "Deep work 00:00:00 paused | Design 00:00:00 running | Email 01:00:00 paused");
        row("set running", "set design 90", {"“Design” is now 00:01:30"}, false,
            "Deep work 00:01:40 paused | Design 00:01:30 running | Email 01:00:00 paused");
        row("set past the most", "set email +999:00:00", {"too long: the most is 999:59:59"}, true, {});
        row("set all", "set all 5", {"pick one timer, not all"}, true, {});
        row("move", "mv 1 3", {"moved “Deep work” to 3"}, false,
            "Design 00:00:00 running | Email 01:00:00 paused | Deep work 00:01:40 paused");
        row("move past the end", "move 1 +9", {"moved “Deep work” to 9"}, false,
            "Design 00:00:00 running | Email 01:00:00 paused | Deep work 00:01:40 paused");
        row("move in place", "mv 2 2", {"moved “Design” to 2"}, false, {});
        row("style ambiguous", "style neo", {"ambiguous: neo-classic, neo-color"}, true, {});
        row("style unknown", "style zzz",
            {"no style zzz — neo-classic, neo-color, play-kid, calculator, amber-terminal, split-flap, shell"}, true, {});
        row("style words", "style Neo Classic", {"style neo-classic"}, false, {});
        row("style prefix", "style split", {"style split-flap"}, false, {});
        row("nothing to undo", "undo", {"nothing to undo"}, true, {});
        row("nothing to redo", "redo", {"nothing to redo"}, true, {});
        row("help", "help me", Shell::helpText(), false, {});
        row("version", "about",
            {"tock " + AppInfo::versionLine() + " · " + AppInfo::tagline().toLower()}, false, {});
        row("unknown", "Frob", {"unknown command: Frob (type help)"}, true, {});
        row("ambiguous name", "rm de", {"ambiguous: Deep work, Design"}, true, {});
    }

    void commands()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, output);
        QFETCH(bool, isError);
        QFETCH(QString, board);

        Session session;
        QCOMPARE(session.run(line), output);
        QCOMPARE(session.model->shellOutputIsError(), isError);
        QCOMPARE(session.board(), board.isNull() ? start : board);
        QCOMPARE(session.model->promptText(), QString());
        QCOMPARE(session.model->promptCaret(), 0);
    }

    void styleCommandSetsTheStyle()
    {
        Session session;
        session.run(QStringLiteral("style split"));
        QCOMPARE(session.model->style(), StyleID::flap);
        session.run(QStringLiteral("style PLAY-kid"));
        QCOMPARE(session.model->style(), StyleID::gameboy);
        session.run(QStringLiteral("style neo"));
        QCOMPARE(session.model->style(), StyleID::gameboy);
        QCOMPARE(AppModel::styleCommandNames(),
                 QStringList({"neo-classic", "neo-color", "play-kid", "calculator", "amber-terminal", "split-flap",
                              "shell"}));
    }

    void multiTimerCommandsAreOneUndoStep_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("rm all") << QStringLiteral("rm all");
        QTest::newRow("reset all") << QStringLiteral("reset all");
    }

    void multiTimerCommandsAreOneUndoStep()
    {
        QFETCH(QString, line);
        Session session;
        const QString before = session.board();
        session.run(line);
        QVERIFY(session.board() != before);
        QCOMPARE(session.run(QStringLiteral("undo")), QStringList{QStringLiteral("undone")});
        QCOMPARE(session.board(), before);
        QVERIFY(!session.undo.canUndo());
        const QStringList redone = session.run(QStringLiteral("redo"));
        QCOMPARE(redone, QStringList{QStringLiteral("redone")});
        QVERIFY(session.board() != before);
        session.run(QStringLiteral("undo"));
        QCOMPARE(session.board(), before);
    }

    void setAndMoveAreUndoable()
    {
        Session session;
        session.run(QStringLiteral("set 1 2:00"));
        session.run(QStringLiteral("mv 1 3"));
        QCOMPARE(session.board(), "Design 00:00:00 running | Email 01:00:00 paused | Deep work 00:02:00 paused");
        session.run(QStringLiteral("undo"));
        session.run(QStringLiteral("undo"));
        QCOMPARE(session.board(), start);
        session.run(QStringLiteral("redo"));
        QCOMPARE(session.board(), "Deep work 00:02:00 paused | Design 00:00:00 running | Email 01:00:00 paused");
    }

    void startAllUsesOneInstant()
    {
        Session session;
        session.virt.clock->advance(10);
        session.run(QStringLiteral("start all"));
        const QList<TimerItem> &timers = session.model->board().timers;
        QCOMPARE(timers.at(0).startedAt, timers.at(2).startedAt);
        QCOMPARE(*timers.at(0).startedAt, session.virt.clock->now());
    }

    void clearEmptiesTheOutputAndExitCallsTheExitAction()
    {
        Session session;
        int exits = 0;
        session.model->setOnExit([&] { ++exits; });
        session.run(QStringLiteral("rm x"));
        QCOMPARE(session.run(QStringLiteral("clear")), QStringList());
        QVERIFY(!session.model->shellOutputIsError());
        session.run(QStringLiteral("quit"));
        QCOMPARE(exits, 1);
        QCOMPARE(session.board(), start);
    }

    void preambleRefusesWhileAnInvalidEditIsOpen()
    {
        Session session;
        const QUuid first = session.model->board().timers.at(0).id;
        session.model->beginEdit(first);
        TimeEditDraft draft = *session.model->draft();
        draft.set(TimeField::seconds, QStringLiteral("75"));
        session.model->setDraft(draft);
        for (const char *line : {"add x", "reset all", "help", "undo"}) {
            QCOMPARE(session.run(QString::fromUtf8(line)),
                     QStringList{QStringLiteral("finish or cancel the time you are editing first")});
            QVERIFY(session.model->shellOutputIsError());
        }
        QCOMPARE(session.board(), start);
        QCOMPARE(session.model->editingID(), first);
    }

    void preambleCommitsAValidEditFirst()
    {
        Session session;
        const QUuid first = session.model->board().timers.at(0).id;
        session.model->beginEdit(first);
        TimeEditDraft draft = *session.model->draft();
        draft.set(TimeField::hours, QStringLiteral("2"));
        session.model->setDraft(draft);
        QCOMPARE(session.run(QStringLiteral("pause all")), QStringList{QStringLiteral("paused “Design”")});
        QVERIFY(!session.model->editingID());
        QCOMPARE(session.board(), "Deep work 02:01:40 paused | Design 00:00:00 paused | Email 01:00:00 paused");
    }

    void promptEditingCountsGraphemes()
    {
        Session session;
        AppModel &model = *session.model;
        const QString flag = QStringLiteral("\U0001F1F3\U0001F1F4"); // one character, four UTF-16 units
        const QString accented = QStringLiteral("e\u0301");          // one character, two units
        model.promptInsert(QStringLiteral("add ") + flag);
        QCOMPARE(model.promptCaret(), 5);
        model.promptMove(-1);
        model.promptInsert(accented);
        QCOMPARE(model.promptText(), QStringLiteral("add ") + accented + flag);
        QCOMPARE(model.promptCaret(), 5);
        model.promptForwardDelete();
        QCOMPARE(model.promptText(), QStringLiteral("add ") + accented);
        QCOMPARE(model.promptCaret(), 5);
        model.promptForwardDelete(); // at the end: nothing
        model.promptBackspace();
        QCOMPARE(model.promptText(), QStringLiteral("add "));
        QCOMPARE(model.promptCaret(), 4);
        model.promptMove(-100);
        QCOMPARE(model.promptCaret(), 0);
        model.promptBackspace(); // at the start: nothing
        QCOMPARE(model.promptText(), QStringLiteral("add "));
        model.promptMove(100);
        QCOMPARE(model.promptCaret(), 4);
        model.setPrompt(QStringLiteral("abc"), 99);
        QCOMPARE(model.promptCaret(), 3);
    }

    void pastedLineBreaksBecomeOneLine()
    {
        Session session;
        session.model->promptInsert(QStringLiteral("add a\r\nb\nc"));
        QCOMPARE(session.model->promptText(), QStringLiteral("add a b c"));
        QCOMPARE(session.model->promptCaret(), 9);
    }

    void blankLineKeepsTheOutputAndRecordsNothing()
    {
        Session session;
        session.run(QStringLiteral("rm x"));
        QCOMPARE(session.run(QStringLiteral(" \t ")), QStringList{QStringLiteral("no timer named x")});
        QVERIFY(session.model->shellOutputIsError());
        QCOMPARE(session.model->history().entries(), QStringList{QStringLiteral("rm x")});
    }

    void historyBrowsingKeepsTheTypedLine()
    {
        Session session;
        AppModel &model = *session.model;
        session.run(QStringLiteral("help"));
        session.run(QStringLiteral("frob")); // failed lines are history too
        model.promptInsert(QStringLiteral("new"));
        model.promptHistory(true);
        QCOMPARE(model.promptText(), QStringLiteral("frob"));
        QCOMPARE(model.promptCaret(), 4);
        model.promptHistory(true);
        QCOMPARE(model.promptText(), QStringLiteral("help"));
        model.promptHistory(true);
        QCOMPARE(model.promptText(), QStringLiteral("help"));
        model.promptHistory(false);
        QCOMPARE(model.promptText(), QStringLiteral("frob"));
        model.promptHistory(false);
        QCOMPARE(model.promptText(), QStringLiteral("new"));
        QCOMPARE(model.promptCaret(), 3);
        // Clearing the line (Ctrl-U) ends browsing: up starts again from the newest.
        model.promptHistory(true);
        model.promptHistory(true);
        model.setPrompt(QString(), 0);
        model.promptHistory(true);
        QCOMPARE(model.promptText(), QStringLiteral("frob"));
    }

    void historyIsStoredOnlyWithAStore()
    {
        {
            Session session;
            session.run(QStringLiteral("help"));
            QVERIFY(!session.virt.settings->value(QStringLiteral("shellHistory")));
        }
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        Session session(std::make_shared<Store>(folder.path(), 5, 600.0));
        session.run(QStringLiteral("help"));
        session.run(QStringLiteral("  version "));
        QCOMPARE(session.virt.settings->value(QStringLiteral("shellHistory")).value_or(QVariant()).toStringList(),
                 QStringList({"help", "version"}));
    }

    void completionFillsTheLineOrBeeps()
    {
        Session session;
        AppModel &model = *session.model;
        model.promptInsert(QStringLiteral("rm dee"));
        model.promptComplete();
        QCOMPARE(model.promptText(), QStringLiteral("rm \"Deep work\" "));
        QCOMPARE(model.promptCaret(), 15);
        model.setPrompt(QStringLiteral("style am"), 8);
        model.promptComplete();
        QCOMPARE(model.promptText(), QStringLiteral("style amber-terminal "));
        QCOMPARE(*session.virt.beeps, 0);
        model.setPrompt(QStringLiteral("s"), 1);
        model.promptComplete();
        QCOMPARE(model.promptText(), QStringLiteral("s"));
        QCOMPARE(model.promptCaret(), 1);
        QCOMPARE(*session.virt.beeps, 1);
    }
};

QTEST_GUILESS_MAIN(ShellSessionTest)
#include "shellsession_test.moc"

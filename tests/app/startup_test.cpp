// Start-up over temporary data folders, then the real `tock` binary end to end: lines in,
// output, errors and exit statuses out, and what ends up on disk. Each run of the binary folds in
// several checks, as runs are slow.
#include "files.h"
#include "run.h"
#include "snapshot.h"
#include "startup.h"
#include "table.h"
#include "terminal.h"
#include "virtualservices.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/time.h>

using namespace tock;
using namespace tock::testing;

namespace {

QString describe(const StartupMode &mode)
{
    if (const auto *bench = std::get_if<StartupMode::Bench>(&mode.value))
        return QStringLiteral("bench %1 %2 %3").arg(StyleIDs::rawValue(bench->style)).arg(bench->count).arg(bench->value);
    if (const auto *shots = std::get_if<StartupMode::Screenshots>(&mode.value))
        return QStringLiteral("screenshots ") + shots->directory;
    if (const auto *shell = std::get_if<StartupMode::Shell>(&mode.value))
        return QStringLiteral("shell [") + shell->lines.join(QLatin1Char('|')) + QLatin1Char(']');
    if (const auto *report = std::get_if<StartupMode::Report>(&mode.value))
        return QStringLiteral("report [") + report->range + QLatin1Char(']');
    if (const auto *exported = std::get_if<StartupMode::Export>(&mode.value))
        return QStringLiteral("export [%1] [%2]").arg(exported->format, exported->range);
    return QStringList{"", "flipdemo", "selftest", "", "", "", "", "normal"}.at(qsizetype(mode.value.index()));
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

QByteArray encoded(const QStringList &names, std::optional<QString> style = std::nullopt)
{
    Board board;
    for (const QString &name : names)
        board.add(name);
    return Snapshot(board, std::move(style), 1'700'000'000).encoded();
}

// A data folder ("data", not there until a file is written) and a session over it.
struct Launch {
    QTemporaryDir root;
    QString folder = root.filePath(QStringLiteral("data"));
    VirtualServices virt;
    std::optional<AppSession> app;

    Launch() { app.emplace(folder, virt.services()); }
};

} // namespace

class StartupTest : public QObject {
    Q_OBJECT

    QTemporaryDir root_;
    QString data_; // a fresh folder per test, not there until the binary creates it

    QProcessEnvironment environment()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TOCK_DATA_DIR"), data_);
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root_.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), root_.filePath(QStringLiteral("share")));
        environment.insert(QStringLiteral("TOCK"), QStringLiteral(TOCK_BINARY));
        return environment;
    }

    // Standard output lines, then error lines marked "! ", then the exit status. With `shell`,
    // `arguments` is one shell script that runs "$TOCK".
    QStringList tock(const QStringList &arguments, const QByteArray &input = {}, bool shell = false)
    {
        if (shell)
            return run(QStringLiteral("/bin/bash"), {QStringLiteral("-c"), arguments.join(QLatin1Char(' '))}, environment(), input).lines();
        return run(QStringLiteral(TOCK_BINARY), arguments, environment(), input).lines();
    }

    // The terminal in this process, on the test's folder: its status, output and errors.
    std::tuple<int, QString, QString> terminal(const QStringList &lines, VirtualServices &virt)
    {
        QString outText, errText;
        QTextStream out(&outText), err(&errText);
        const int status = runTerminal(lines, data_, virt.services(), out, err);
        return {status, outText, errText};
    }

private Q_SLOTS:
    void init()
    {
        data_ = root_.filePath(QString::fromLatin1(QTest::currentTestFunction()) + QLatin1Char('-') + QString::fromLatin1(QTest::currentDataTag()));
    }

    void switches_data()
    {
        table<QString, QStringList, QString>({"case", "arguments", "mode"}, {
            {"unknown", {"-psn_0_42"}, "normal"},
            {"bench", {"--bench", "classic", "10", "2.5"}, "bench classic 10 2.5"},
            {"bench signed, exponent", {"--bench", "flap", "-3", "1e2"}, "bench flap -3 100"},
            {"bench word count", {"--bench", "classic", "ten", "2.5"}, "normal"},
            {"bench bad number", {"--bench", "classic", "10", "x"}, "normal"},
            {"bench infinite", {"--bench", "classic", "10", "inf"}, "normal"},
            {"bench short", {"--bench", "classic", "10"}, "normal"},
            {"bench before selftest", {"--selftest", "--bench", "amber", "1", "0"}, "bench amber 1 0"},
            {"invalid bench, selftest", {"--bench", "x", "1", "1", "--selftest"}, "selftest"},
            {"flipdemo before selftest", {"--selftest", "--flipdemo"}, "flipdemo"},
            {"screenshots", {"--screenshots", "/tmp/shots"}, "screenshots /tmp/shots"},
            {"screenshots last", {"--screenshots"}, "normal"},
            {"shell lines", {"--shell", "add A", "--selftest", "rm 1"}, "shell [add A|--selftest|rm 1]"},
            {"line not a folder", {"--screenshots", "--shell", "x"}, "shell [x]"},
            {"report", {"--report"}, "report []"},
            {"report range", {"--report", "last-week"}, "report [last-week]"},
            {"export", {"--export", "json", "2026-11-01..2026-11-02"}, "export [json] [2026-11-01..2026-11-02]"},
            {"export without format", {"--export", "--report"}, "report []"},
        });
    }

    void switches()
    {
        QFETCH(QStringList, arguments);
        QTEST(describe(StartupMode::parse(arguments)), "mode");
    }

    // What the launches below do not reach: a style this build lacks, a backup not yet archived.
    void startingValues()
    {
        const Snapshot foreign = Snapshot::decode(encoded({"A"}, QStringLiteral("holographic")));
        QVERIFY(!StartingValues::from({Store::LoadResult::Loaded{foreign}}, false).style);
        const Snapshot amber = Snapshot::decode(encoded({"A", "B"}, QStringLiteral("amber")));
        const StartingValues values = StartingValues::from({Store::LoadResult::Recovered{amber, "timers-2.json", {}}}, true);
        QCOMPARE(values.board, amber.board());
        QCOMPARE(values.style, std::optional(StyleID::amber));
        QCOMPARE(values.notice, std::optional(StorageNotice::saveFailed(archiveFailedMessage())));
    }

    // A fresh folder gets three paused timers; the ending commits an open edit, pauses, saves
    // and lets go of the folder.
    void freshLaunchAndEnding()
    {
        Launch launch;
        AppSession &app = *launch.app;
        QCOMPARE(app.start(), AppSession::Start::started);
        QVERIFY(app.lock().isHeld());
        QVERIFY(&app.model()->undoManager() == app.undoManager());
        QVERIFY(!app.model()->board().anyRunning() && !app.model()->notice() && !app.startingNotice());
        AppModel &model = *app.model();
        model.beginEdit(model.board().timers.at(0).id);
        TimeEditDraft draft = *model.draft();
        draft.set(TimeField::minutes, QStringLiteral("5"));
        model.setDraft(draft);
        model.toggle(model.board().timers.at(1).id);
        launch.virt.clock->advance(5);
        app.end();
        app.end(); // harmless twice
        QVERIFY(!app.lock().isHeld() && !model.editingID() && !model.board().anyRunning());
        QCOMPARE(savedTimers(launch.folder), QStringList({"Timer 1=300", "Timer 2=5", "Timer 3=0"}));
    }

    void launchRefusedWhileAnotherCopyHoldsTheFolder()
    {
        Launch launch;
        InstanceLock other(launch.folder);
        QVERIFY(other.acquire());
        QCOMPARE(launch.app->start(), AppSession::Start::alreadyRunning);
        QVERIFY(!launch.app->model() && !launch.app->store());
        launch.app.reset(); // ending a refused session must not free the other copy's lock
        QCOMPARE(entries(launch.folder), QStringList{".lock"});
        QVERIFY(launch.virt.settings->writes().isEmpty());
        QCOMPARE(AppSession(launch.folder, launch.virt.services()).start(), AppSession::Start::alreadyRunning);
    }

    void linesFromStandardInput()
    {
        QCOMPARE(tock({"--shell"}, "add Focus\nset Focus 1:30:00\nrm Focus\nundo\n"),
                 QStringList({"added “Focus” as 4", "“Focus” is now 01:30:00", "deleted “Focus” · undo brings it back", "undone", "exit 0"}));
        QCOMPARE(savedTimers(data_), QStringList({"Timer 1=0", "Timer 2=0", "Timer 3=0", "Focus=5400"}));
        // Undo history ends with the process; blank lines, a carriage return (alone too) and clear
        // print nothing; names keep control characters, NUL among them; a last line without a
        // line feed still runs; a failure makes the status 1.
        const QString nul(QChar(0));
        const QByteArray input = QByteArray("\n  \nundo\r\nclear\rrename focus A\nadd a\x01" "b\radd c")
                               + '\0' + "d\nversion";
        const QStringList run = tock({"--shell"}, input);
        QCOMPARE(run.mid(0, 3),
                 QStringList({"renamed “Focus” to “A”", "added “a\x01" "b” as 5", "added “c" + nul + "d” as 6"}));
        QVERIFY(run.value(3).startsWith(QStringLiteral("tock ")));
        QCOMPARE(run.mid(4), QStringList({"! nothing to undo", "exit 1"}));
        QCOMPARE(savedTimers(data_).mid(3), QStringList({"A=5400", "a\x01" "b=0", "c" + nul + "d=0"}));
    }

    // However many commands a run has, each setting that changed is written once, when the run
    // ends; one that did not change, or a removal of what is not there, is not written.
    void settingsWrittenOnceAtTheEnd()
    {
        VirtualServices virt;
        const auto [status, outText, errText] = terminal({"add A", "style amber", "rename a B", "style split-flap"}, virt);
        QVERIFY2(status == TerminalStatus::succeeded, qPrintable(outText + errText));
        QCOMPARE(virt.settings->writes(), QStringList({"shellHistory", "style", "zoomDefaultV3"}));
        QCOMPARE(virt.settings->value(QStringLiteral("shellHistory"))->toStringList(),
                 QStringList({"add A", "style amber", "rename a B", "style split-flap"}));
        terminal({"style split-flap"}, virt); // the history already ends with that line
        QCOMPARE(virt.settings->writes().size(), 3);
    }

    // A save that fails is news on standard error and fails the run, though every line worked.
    void aFailedSaveFailsTheRun()
    {
        // The save's temporary file cannot be written where a folder of that name stands.
        QVERIFY(QDir().mkpath(data_ + QStringLiteral("/.timers.json.%1.tmp").arg(QCoreApplication::applicationPid())));
        VirtualServices virt;
        const auto [status, outText, errText] = terminal({"add A"}, virt);
        QCOMPARE(status, TerminalStatus::failed);
        QCOMPARE(outText, QString::fromUtf8("added “A” as 4\n"));
        QVERIFY2(errText.startsWith(StorageNotice::saveFailed({}).title() + '\n'), qPrintable(errText));
    }

    void linesFromArguments()
    {
        QCOMPARE(tock({"--shell", "add A", "rm zzz", "start a", "frob", "exit", "add B"}),
                 QStringList({"added “A” as 4", "started “A”", "! no timer named zzz", "! unknown command: frob (type help)", "exit 1"}));
        QCOMPARE(savedTimers(data_), QStringList({"Timer 1=0", "Timer 2=0", "Timer 3=0", "A=0"})); // paused at the end
    }

    // While one copy runs a second is refused and touches nothing; a polite kill ends the first
    // the normal way, and then the folder is free again.
    void secondCopyRefusedWhileTheFirstRuns()
    {
        QProcess first;
        first.setProcessEnvironment(environment());
        first.start(QStringLiteral(TOCK_BINARY), {"--shell"});
        first.write("add Kept\nstart kept\n");
        QStringList answers;
        while (answers.size() < 2 && first.waitForReadyRead(30000)) {
            while (first.canReadLine())
                answers << QString::fromUtf8(first.readLine()).chopped(1);
        }
        QCOMPARE(answers, QStringList({"added “Kept” as 4", "started “Kept”"})); // it holds the lock now
        const QStringList before = entries(data_);
        const QByteArray data = readFile(data_ + QStringLiteral("/timers.json"));
        QCOMPARE(tock({"--shell", "rm all"}),
                 QStringList({"! Tock is already running", "! Another copy of Tock is using the timer data. Only one copy can run at a time so nothing gets overwritten.", "exit 3"}));
        QCOMPARE(entries(data_), before);
        QCOMPARE(readFile(data_ + QStringLiteral("/timers.json")), data);
        first.terminate();
        QVERIFY(first.waitForFinished(30000));
        QCOMPARE(first.exitStatus(), QProcess::NormalExit);
        QCOMPARE(first.exitCode(), 0);
        QVERIFY(savedTimers(data_).last().startsWith(QStringLiteral("Kept=")));
        QCOMPARE(tock({"--shell"}, "rm kept\nexit\nadd B\n"), QStringList({"deleted “Kept” · undo brings it back", "exit 0"}));
        QCOMPARE(savedTimers(data_), QStringList({"Timer 1=0", "Timer 2=0", "Timer 3=0"}));
    }

    // The terminal and the self-check map Qt Core alone, as the dynamic loader reports it; the
    // drawing modes load the window's libraries. The self-check and a tool switch touch no data.
    void onlyTheDrawingModesLoadTheWindow_data()
    {
        // says: what the output holds
        table<QStringList, bool, QString>({"arguments", "window", "says"}, {
            {{"--shell", "version"}, false, "^tock \\S"},
            {{"--selftest"}, false, "\napp checks passed\n$"},
            {{"--bench", "classic", "1", "0.1"}, true, "^bench classic 1 timers 0.1 s: "},
        });
    }

    void onlyTheDrawingModesLoadTheWindow()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, window);
        QProcessEnvironment loader = environment();
        loader.insert(QStringLiteral("LD_DEBUG"), QStringLiteral("libs"));
        const Run ran = run(QStringLiteral(TOCK_BINARY), arguments, loader);
        QCOMPARE(ran.status, 0);
        QFETCH(QString, says);
        QVERIFY2(ran.out.contains(QRegularExpression(says)), qPrintable(ran.out));
        QCOMPARE(QFile::exists(data_), arguments.first() == QLatin1String("--shell"));
        const QString report = ran.err;
        if (!report.contains("calling init:"))
            QSKIP("this system's dynamic loader does not report what it loads");
        QVERIFY(report.contains("libQt6Core"));
        for (const char *library : {"libQt6Gui", "libQt6Widgets", "libQt6Network"})
            QVERIFY2(report.contains(library) == window, library);
    }

    // A change that could not be saved fails the run and says so in a terminal's words: the
    // folder to check, and what the window offers; a run that changes nothing loses nothing.
    // Nothing in the folder is touched. "@" stands for the data folder.
    void unsavedChangesFailTheRun_data()
    {
        const QString unreadable = "! Saved timers could not be read", paused = "! Nothing has been overwritten and saving is paused.";
        const QString check = "! Check the files in @, or set them aside with Start Fresh in the Tock window.";
        const QString lost = "! Nothing was saved: saving is paused so that the unreadable files are not overwritten. Check the files in @, or set them aside with Start Fresh in the Tock window.";
        table<QString, QString, QStringList>({"case", "plant", "expected"}, {
            {"damaged", "damaged", {"added “Z” as 1", unreadable, paused, "! timers.json: unterminated object at byte 2", check, lost, "exit 1"}},
            {"not archived", "archive", {
                "added “Z” as 2", "! Changes are not being saved",
                "! Tock restored your timers from a backup but could not archive the damaged data file, so nothing is being saved yet (to keep that file).",
                "! Check disk space and permissions of @, then run Tock again (the window offers Retry).",
                "! Nothing was saved: Tock keeps the damaged data file until it can be archived. Check disk space and permissions of @, then run Tock again (the window offers Retry).",
                "exit 1"}},
        });
    }
    void unsavedChangesFailTheRun()
    {
        QFETCH(QString, plant);
        QFETCH(QStringList, expected);
        QVERIFY(QDir().mkpath(data_ + "/Backups"));
        writeFile(data_ + "/timers.json", "{bad\n");
        if (plant == "archive") {
            writeFile(data_ + "/Backups/timers-1.json", encoded({"Saved"}));
            writeFile(data_ + "/Damaged", {}); // a file where Damaged/ must go
        }
        const QMap<QString, QByteArray> before = folderContents(data_);
        QCOMPARE(tock({"--shell", "add Z"}), expected.replaceInStrings("@", data_));
        QCOMPARE(tock({"--shell", "clear"}).last(), QStringLiteral("exit 0"));
        QMap<QString, QByteArray> after = folderContents(data_);
        QVERIFY(after.remove(".lock"));
        QCOMPARE(after, before);
    }

    // A reader that goes away early costs output, never data, and the status stays the
    // commands' own.
    void closedPipeLosesNothing()
    {
        QCOMPARE(tock({R"((sleep .3; "$TOCK" --shell "add P1" "add P2") | true; echo "status ${PIPESTATUS[0]}")"}, {}, true),
                 QStringList({"status 0", "exit 0"}));
        QCOMPARE(savedTimers(data_).mid(3), QStringList({"P1=0", "P2=0"}));
        const QString script = R"("$TOCK" --shell "add A" "set A 1:00:00" help help help | head -1; echo "status ${PIPESTATUS[0]}")";
        QCOMPARE(tock({script}, {}, true), QStringList({"added “A” as 6", "status 0", "exit 0"}));
        QCOMPARE(savedTimers(data_).last(), "A=3600");
    }

    // A folder whose lock file cannot be opened is not "already running": its path and the
    // system's reason, status 1, and nothing written.
    void lockFileCannotBeOpened()
    {
        QVERIFY(QDir().mkpath(data_ + "/.lock"));
        QCOMPARE(tock({"--shell", "add A"}),
                 QStringList({"! Tock cannot use its data folder",
                              "! The lock file in " + data_ + " could not be opened: Is a directory. Check that the folder can be written to, then start Tock again.",
                              "exit 1"}));
        QCOMPARE(entries(data_), QStringList{".lock"});
    }

    // Runs in a row within ten minutes rotate the backups once, from the state before the first;
    // stale temporary files go, nothing else does.
    void backupsSurviveScripting()
    {
        for (const char *name : {".timers.json.99999.tmp", "Backups/.backup.tmp", ".timers.json.tmp", "Backups/notes.txt"})
            writeFile(data_ + "/" + name, "left");
        for (int i = 1; i <= 5; ++i)
            QCOMPARE(tock({"--shell", QString("rename 1 S%1").arg(i)}).last(), QStringLiteral("exit 0"));
        const auto backups = [this] {
            QStringList firstNames;
            for (const QString &name : QDir(data_ + "/Backups").entryList({"timers-*.json"}, QDir::Files, QDir::Name))
                firstNames << Snapshot::decode(readFile(data_ + "/Backups/" + name)).timers.value(0).name;
            return firstNames;
        };
        QCOMPARE(backups(), QStringList{"S1"});
        QCOMPARE(entries(data_), QStringList({".lock", ".timers.json.tmp", "Backups", "history.db", "timers.json"}));
        QCOMPARE(entries(data_ + "/Backups"), QStringList({"notes.txt", "timers-1.json"}));
        // Ten minutes later the next run keeps the state it began from, once.
        const QString newest = data_ + "/Backups/timers-1.json";
        const struct timeval old[2] = {{time(nullptr) - 700, 0}, {time(nullptr) - 700, 0}};
        QCOMPARE(::utimes(QFile::encodeName(newest).constData(), old), 0);
        QCOMPARE(tock({"--shell", "rm all"}).last(), QStringLiteral("exit 0"));
        QCOMPARE(tock({"--shell", "add After"}).last(), QStringLiteral("exit 0"));
        QCOMPARE(backups(), QStringList({"S5", "S1"}));
    }
};

QTEST_GUILESS_MAIN(StartupTest)
#include "startup_test.moc"

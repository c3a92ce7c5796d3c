// The real tock on a virtual display, driven by real keys and clicks and by terminals beside it;
// timers.json tells what happened, also when its folder or files are taken away. Skipped where
// Xvfb or xdotool is not installed.
#include "files.h"
#include "livetimebutton.h"
#include "modelfixture.h"
#include "rootview.h"
#include "rowlist.h"
#include "run.h"
#include "table.h"
#include "timerrow.h"
#include "tockwindow.h"

#include <QLocalSocket>
#include <QtTest>

#include <unistd.h>

using namespace tock;
using namespace tock::testing;

class WindowEndToEndTest : public QObject {
    Q_OBJECT

private:
    QString xdotool_;
    QProcess xvfb_;
    QProcess tock_;
    QProcessEnvironment env_;
    std::unique_ptr<QTemporaryDir> home_;
    QString data_;
    QString window_;
    QTemporaryFile suppressions_;

    QString xdo(const QStringList &arguments) { return run(xdotool_, arguments, env_, {}, 10000).out.trimmed(); }
    void keys(const QStringList &names) { xdo(QStringList{"key", "--delay", "40"} + names); }
    // `tock --shell` with these lines (and `environment`, else the window's) to its end.
    Run runShell(const QStringList &lines, std::optional<QProcessEnvironment> environment = std::nullopt)
    {
        return run(QStringLiteral(TOCK_BINARY), QStringList{"--shell"} + lines, environment.value_or(env_));
    }
    // The terminal alone, on folders of its own in `home`.
    QProcessEnvironment alone(const QTemporaryDir &home) const
    {
        QProcessEnvironment env = env_;
        useHome(env, home.path());
        return env;
    }
    // The visible windows called Tock: the main window and any alert.
    int tockWindows() { return int(xdo({"search", "--onlyvisible", "--name", "^Tock$"}).split('\n', Qt::SkipEmptyParts).size()); }

    enum class Folder { fresh, same };
    enum class Runtime { own, none }; // none: no XDG_RUNTIME_DIR, the temp folder is home/tmp
    // Starts tock and waits for its window to have the keyboard.
    void launch(Folder folder = Folder::fresh, Runtime runtime = Runtime::own)
    {
        if (folder == Folder::fresh || !home_)
            home_ = std::make_unique<QTemporaryDir>();
        data_ = home_->path() + "/data";
        useHome(env_, home_->path());
        env_.insert("TMPDIR", home_->path() + "/tmp");
        if (runtime == Runtime::none)
            env_.remove("XDG_RUNTIME_DIR");
        tock_.setProcessEnvironment(env_);
        tock_.start(QStringLiteral(TOCK_BINARY), {});
        QVERIFY(tock_.waitForStarted());
        window_ = xdo({"search", "--sync", "--onlyvisible", "--name", "^Tock$"}).section('\n', 0, 0);
        QVERIFY2(!window_.isEmpty(), "the window never appeared");
        xdo({"windowfocus", "--sync", window_});
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString xvfb = QStandardPaths::findExecutable("Xvfb");
        xdotool_ = QStandardPaths::findExecutable("xdotool");
        if (xvfb.isEmpty() || xdotool_.isEmpty())
            QSKIP("needs Xvfb and xdotool (scripts/deps installs them)");
        env_ = QProcessEnvironment::systemEnvironment();
        QVERIFY(startXvfb(xvfb_, xvfb, env_));
        suppressLeaks(suppressions_, env_, {"libdbus-1.so"}); // the bus library keeps a buffer to the end
    }

    void cleanup() { stop(tock_); }
    void cleanupTestCase() { stop(xvfb_); }

    void addTypeDeleteUndoClose()
    {
        // Where the new row's time sits in the real window: the same views laid out here,
        // offscreen, for four timers in the first style at the default size, without shadows
        // (a bare X server does not composite).
        QPoint timeAt, firstAt;
        {
            ModelFixture f(WithStore::no, {"Timer 1", "Timer 2", "Timer 3", "Timer 4"});
            f.m().setZoom(AppModel::defaultZoom);
            TockWindow window(&f.m(), [] {});
            window.setMargin(TockWindow::Margin::none);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            const TimerRow *row = window.rootView()->rowList()->row(f.id(3));
            timeAt = row->timeButton()->mapTo(&window, row->timeButton()->rect().center());
            const TimerRow *first = window.rootView()->rowList()->row(f.id(0));
            firstAt = first->timeButton()->mapTo(&window, first->timeButton()->rect().center());
        }
        launch();

        // A fresh folder starts with three timers; Ctrl+N adds a fourth and focuses its name.
        keys({"ctrl+n", "Return"});
        const QStringList four{"Timer 1=0", "Timer 2=0", "Timer 3=0", "Timer 4=0"};
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), four, 10000);

        // A click on its time opens the mask; typed fields and Return set it.
        xdo({"mousemove", "--window", window_, QString::number(timeAt.x()), QString::number(timeAt.y()), "click", "1"});
        keys({"0", "colon", "2", "colon", "5", "Return"});
        QStringList set = four;
        set.last() = "Timer 4=125";
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), set, 10000);

        // Backspace deletes the row under the pointer; Ctrl+Z brings it back with its time.
        keys({"BackSpace"});
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), set.mid(0, 3), 10000);
        keys({"ctrl+z"});
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), set, 10000);

        // With the pointer standing still, Backspace deletes each row that moves up under it.
        xdo({"mousemove", "--window", window_, QString::number(firstAt.x()), QString::number(firstAt.y())});
        keys({"BackSpace", "BackSpace"});
        set = set.mid(2);
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), set, 10000);

        // Ctrl+W closes the window and ends the application.
        keys({"ctrl+w"});
        QVERIFY(tock_.waitForFinished(10000));
        QVERIFY2(tock_.exitStatus() == QProcess::NormalExit && tock_.exitCode() == 0, tock_.readAllStandardError().constData());
        QCOMPARE(savedTimers(data_), set);
    }

    // Keys alone, the pointer away from the window: Tab and the arrows reach a row's controls,
    // Space presses them, F2 renames, Return opens the time, Alt+Up moves the row, Delete
    // deletes it, the toast's Undo is reached with Tab, and F10 opens the menus as a bar.
    void keysOnly()
    {
        launch();
        xdo({"mousemove", "1020", "760"});
        const auto at = [this](int i) { return savedTimers(data_).value(i); };
        keys({"Tab", "Tab", "Down", "Tab", "Tab", "space"}); // style button, name 1, name 2, time, start
        QTRY_VERIFY_WITH_TIMEOUT(at(1).startsWith("Timer 2>"), 10000);
        keys({"space"});
        QTRY_VERIFY_WITH_TIMEOUT(at(1).startsWith("Timer 2="), 10000);

        keys({"shift+Tab", "shift+Tab", "F2"});
        xdo({"type", "--delay", "30", "Focus"});
        keys({"Return"});
        QTRY_VERIFY_WITH_TIMEOUT(at(1).startsWith("Focus="), 10000);

        keys({"Tab", "Return", "0", "colon", "2", "colon", "5", "Return"});
        QTRY_COMPARE_WITH_TIMEOUT(at(1), QString("Focus=125"), 10000);
        keys({"alt+Up"});
        QTRY_COMPARE_WITH_TIMEOUT(at(0), QString("Focus=125"), 10000);

        keys({"Tab", "Tab", "space"}); // from the time: start, reset
        QTRY_COMPARE_WITH_TIMEOUT(at(0), QString("Focus=0"), 10000);
        keys({"Delete"});
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), (QStringList{"Timer 1=0", "Timer 3=0"}), 10000);
        // The focus went on to the reset key of the row below; six Tabs reach the toast's Undo.
        keys({"Tab", "Tab", "Tab", "Tab", "Tab", "Tab", "space"});
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_), (QStringList{"Focus=0", "Timer 1=0", "Timer 3=0"}), 10000);

        // F10 opens the menus as a bar: Right goes on to the next menu with its first item
        // chosen (the Timer menu's Add Timer), Left comes back (About Tock).
        keys({"F10", "Right", "Right", "Return", "Return"});
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_).size(), 4, 10000);
        keys({"F10", "Right", "Left", "Return"});
        QVERIFY2(!xdo({"search", "--sync", "--onlyvisible", "--name", "^About Tock$"}).isEmpty(), "no About panel");
    }

    // A terminal started beside the window runs its lines in the window: the same board,
    // output and undo; a second window asks the first to come forward and leaves at once.
    void terminalAndSecondCopyUseTheRunningWindow()
    {
        launch();
        QCOMPARE(runShell({"add Lunch", "start lunch"}).lines(), (QStringList{"added “Lunch” as 4", "started “Lunch”", "exit 0"}));
        QTRY_VERIFY_WITH_TIMEOUT(savedTimers(data_).value(3).startsWith("Lunch>"), 10000);
        QCOMPARE(runShell({"rm lunch"}).lines(), (QStringList{"deleted “Lunch” · undo brings it back", "exit 0"}));
        QTRY_COMPARE_WITH_TIMEOUT(savedTimers(data_).size(), 3, 10000);
        keys({"ctrl+z"});
        QTRY_VERIFY_WITH_TIMEOUT(savedTimers(data_).value(3).startsWith("Lunch"), 10000);

        const Run second = run(QStringLiteral(TOCK_BINARY), {}, env_);
        QVERIFY2(second.status == 0, qPrintable(second.err));
        QCOMPARE(tock_.state(), QProcess::Running);
    }

    // Logging out or being told to stop ends like closing: the running timer is paused and
    // saved, and the folder is free for the next copy.
    void signalPausesAndSaves()
    {
        launch();
        keys({"ctrl+7"});
        xdo({"type", "--delay", "30", "start 2"});
        keys({"Return"});
        QTRY_VERIFY_WITH_TIMEOUT(savedTimers(data_).value(1).startsWith("Timer 2>"), 10000);
        tock_.terminate();
        QVERIFY(tock_.waitForFinished(10000));
        QVERIFY2(tock_.exitCode() == 0, tock_.readAllStandardError().constData());
        QVERIFY2(savedTimers(data_).value(1).startsWith("Timer 2="), qPrintable(savedTimers(data_).join(", ")));
        launch(Folder::same); // the folder is free again at once
        QCOMPARE(tock_.state(), QProcess::Running);
    }

    // The data folder moved or deleted under a window with a running timer: the window writes
    // nothing anywhere (no new folder at the old path), a terminal then uses the path as its own
    // and its change stays; closing asks first (Cancel keeps the window), a signal ends without
    // asking, and still nothing is overwritten.
    void folderMovedOrDeleted_data()
    {
        table<QString, bool>({"case", "deleted"}, {{"moved", false}, {"deleted", true}});
    }
    void folderMovedOrDeleted()
    {
        QFETCH(bool, deleted);
        launch();
        QCOMPARE(runShell({"start 1"}).status, 0);
        QTRY_VERIFY_WITH_TIMEOUT(savedTimers(data_).value(0).startsWith("Timer 1>"), 10000);
        const QString away = home_->path() + "/away";
        QVERIFY(deleted ? QDir(data_).removeRecursively() : QDir().rename(data_, away));
        QTest::qWait(2500); // two ticks' saves
        QVERIFY2(!QFileInfo::exists(data_), "the window made a folder it holds no lock on");
        const auto moved = [&] { return readFile(away + "/timers.json"); };
        const QByteArray before = moved();
        const Run probe = runShell({"add probe"});
        QCOMPARE(probe.out, QString("added “probe” as 4\n"));
        QCOMPARE(probe.status, 0);
        QTest::qWait(2500);
        QCOMPARE(savedTimers(data_).value(3), QString("probe=0"));
        QCOMPARE(moved(), before);

        // Ctrl+W asks; Escape is Cancel and keeps the window.
        keys({"ctrl+w"});
        QTRY_COMPARE_WITH_TIMEOUT(tockWindows(), 2, 10000);
        keys({"Escape"});
        QTRY_COMPARE_WITH_TIMEOUT(tockWindows(), 1, 10000);
        QTest::qWait(500);
        QCOMPARE(tock_.state(), QProcess::Running);
        tock_.terminate();
        QVERIFY(tock_.waitForFinished(10000));
        QCOMPARE(tock_.exitCode(), 0);
        QCOMPARE(savedTimers(data_).value(3), QString("probe=0"));
        QCOMPARE(moved(), before);
    }

    // A save the window cannot make is reported to the script whose command it ran.
    void scriptLearnsTheWindowCouldNotSave()
    {
        launch();
        QCOMPARE(runShell({"add W"}).status, 0);
        QCOMPARE(savedTimers(data_).size(), 4); // saved before the answer
        QVERIFY(QFile::remove(data_ + "/timers.json") && QDir().mkdir(data_ + "/timers.json"));
        const Run run = runShell({"add X"});
        QCOMPARE(run.out, QString("added “X” as 5\n"));
        QVERIFY2(run.err.startsWith("Changes are not being saved\n"), qPrintable(run.err));
        QCOMPARE(run.status, 1);
    }

    // Links and modes, with the terminal alone: a link someone could steer is replaced by a
    // private file and its target left alone.
    void linksAndModes_data()
    {
        table<QString, QString>({"case", "link"}, {{"a device", "/dev/null"}, {"another user's file", "theirs"}}); // where timers.json leads
    }
    void linksAndModes()
    {
        QFETCH(QString, link);
        const QTemporaryDir home;
        const QProcessEnvironment env = alone(home);
        const QString data = home.filePath("data"), theirs = home.filePath("theirs.json");
        if (link == "theirs") {
            if (::geteuid() != 0)
                QSKIP("needs root to give a file to another user");
            writeFile(theirs, "theirs");
            QCOMPARE(::chown(QFile::encodeName(theirs).constData(), 65534, 65534), 0);
        }
        QCOMPARE(runShell({"add X"}, env).status, 0); // timers.json and its backup
        QVERIFY(QFile::remove(data + "/timers.json"));
        QVERIFY(QFile::link(link == "theirs" ? theirs : link, data + "/timers.json"));
        const Run run = runShell({"add Y"}, env);
        QCOMPARE(run.status, 0);
        QVERIFY(!QFileInfo(data + "/timers.json").isSymLink());
        QCOMPARE(savedTimers(data).mid(3), (QStringList{"X=0", "Y=0"}));
        QCOMPARE(modeOf(data + "/timers.json"), 0600);
        QCOMPARE(modeOf(data + "/.lock"), 0600);
        QVERIFY(QDir(data + "/Damaged").isEmpty()); // nothing of the target copied
        QVERIFY(link == "theirs" ? readFile(theirs) == "theirs" : (modeOf("/dev/null") & 0666) == 0666);
    }

    // Another user took the temp folder's tock-<uid>: the window says scripting is off, and a
    // terminal says why instead of "already running".
    void socketFolderTaken()
    {
        home_ = std::make_unique<QTemporaryDir>();
        const QString taken = home_->path() + "/tmp/tock-" + QString::number(::geteuid());
        QVERIFY(QDir().mkpath(taken));
        if (::geteuid() == 0)
            QCOMPARE(::chown(QFile::encodeName(taken).constData(), 65534, 65534), 0);
        else
            QVERIFY(QFile(taken).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner
                                                | QFileDevice::ReadOther | QFileDevice::ExeOther));
        launch(Folder::same, Runtime::none);
        QByteArray windowErr;
        QTRY_VERIFY_WITH_TIMEOUT((windowErr += tock_.readAllStandardError()).contains("tock: scripting is off: no private folder for the control socket (" + QFile::encodeName(taken)), 10000);
        const Run run = runShell({"add X"});
        QVERIFY2(!run.err.contains("already running") && run.err.contains("no private folder") && run.err.contains(taken), qPrintable(run.err));
        QCOMPARE(run.status, 3);
    }

    // Idle connections are dropped soon, so they cannot turn a real script away.
    void idleConnectionsDoNotCrowdOutAScript()
    {
        launch();
        const QString run = home_->path() + "/run";
        QTRY_COMPARE_WITH_TIMEOUT(QDir(run).entryList({"*.sock"}, QDir::System).size(), 1, 10000);
        const QString socket = run + "/" + QDir(run).entryList({"*.sock"}, QDir::System).first();
        QLocalSocket idle[8];
        for (QLocalSocket &s : idle) {
            s.connectToServer(socket);
            QVERIFY(s.waitForConnected(2000));
        }
        const Run script = runShell({"add Y"});
        QCOMPARE(script.out, QString("added “Y” as 4\n"));
        QCOMPARE(script.status, 0);
    }

    // Only the backups failing: the timers are saved, and the terminal says that the backups are
    // not being refreshed, without failing.
    void onlyTheBackupsFail()
    {
        const QTemporaryDir home;
        const QString data = home.filePath("data");
        QVERIFY(QDir().mkpath(data + "/Backups/.backup.tmp/in the way")); // the backup cannot be staged
        const Run run = runShell({"add X"}, alone(home));
        QVERIFY2(run.err.startsWith("Backups are not being refreshed\nYour timers are saved, but the backups are not being refreshed: "), qPrintable(run.err));
        QCOMPARE(run.status, 0);
        QCOMPARE(savedTimers(data).value(3), QString("X=0"));
    }

    // The undo history keeps the latest 1,000 steps.
    void undoKeepsTheLatestThousandSteps()
    {
        const QTemporaryDir home;
        QStringList lines;
        for (int i = 0; i < 1001; ++i)
            lines << "set 1 +1s";
        for (int i = 0; i < 1001; ++i)
            lines << "undo";
        const Run run = runShell(lines, alone(home));
        QCOMPARE(run.err, QString("nothing to undo\n"));
        QCOMPARE(run.status, 1);
        QCOMPARE(savedTimers(home.filePath("data")).value(0), QString("Timer 1=1"));
    }
};

QTEST_MAIN(WindowEndToEndTest)
#include "window_e2e_test.moc"

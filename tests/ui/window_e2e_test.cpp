// The real tock on a virtual display, driven by real key presses and clicks: add a timer with
// its shortcut, type its time into the mask, delete it with Backspace, undo, close; timers.json
// tells what happened. Skipped where Xvfb or xdotool is not installed.
#include "modelfixture.h"
#include "rootview.h"
#include "rowlist.h"
#include "timerrow.h"
#include "tockwindow.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace tock;

namespace {

// Runs a short helper to its end and returns what it printed.
QString run(const QString &program, const QStringList &arguments, const QProcessEnvironment &env, int ms = 10000)
{
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(program, arguments);
    if (!p.waitForFinished(ms)) {
        p.kill();
        p.waitForFinished();
        return QString();
    }
    return QString::fromUtf8(p.readAllStandardOutput()).trimmed();
}

// The saved timers as "name=seconds" in order; empty while there is no readable file.
QStringList saved(const QString &folder)
{
    QFile file(folder + "/timers.json");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList out;
    for (const QJsonValue &v : QJsonDocument::fromJson(file.readAll()).object().value("timers").toArray())
        out << v.toObject().value("name").toString() + '=' + QString::number(v.toObject().value("seconds").toDouble());
    return out;
}

} // namespace

class WindowEndToEndTest : public QObject {
    Q_OBJECT

private:
    QProcess xvfb_;
    QProcess tock_;

private Q_SLOTS:
    void cleanup()
    {
        for (QProcess *p : {&tock_, &xvfb_}) {
            if (p->state() != QProcess::NotRunning) {
                p->terminate();
                if (!p->waitForFinished(5000)) {
                    p->kill();
                    p->waitForFinished();
                }
            }
        }
    }

    void addTypeDeleteUndoClose()
    {
        const QString xvfb = QStandardPaths::findExecutable("Xvfb");
        const QString xdotool = QStandardPaths::findExecutable("xdotool");
        if (xvfb.isEmpty() || xdotool.isEmpty())
            QSKIP("needs Xvfb and xdotool (scripts/deps installs them)");

        // Where the row's time sits in the real window: the same views laid out here, offscreen,
        // for four timers in the first style at the default size, on a screen without shadows.
        QPoint timeAt;
        {
            ModelFixture f(WithStore::no, {"Timer 1", "Timer 2", "Timer 3", "Timer 4"});
            f.m().setZoom(AppModel::defaultZoom);
            TockWindow window(&f.m(), [] {});
            window.setMargin(TockWindow::Margin::none);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            const TimerRow *row = window.rootView()->rowList()->row(f.id(3));
            timeAt = row->timeButton()->mapTo(&window, row->timeButton()->rect().center());
        }

        QTemporaryDir home;
        const QString data = home.path() + "/data";
        QDir().mkpath(home.path() + "/run");
        QFile(home.path() + "/run").setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        int display = 60 + int(QCoreApplication::applicationPid() % 200);
        while (QFile::exists(QString("/tmp/.X11-unix/X%1").arg(display)) || QFile::exists(QString("/tmp/.X%1-lock").arg(display)))
            ++display;
        xvfb_.start(xvfb, {QString(":%1").arg(display), "-screen", "0", "1024x768x24", "-nolisten", "tcp"});
        QVERIFY(xvfb_.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(QString("/tmp/.X11-unix/X%1").arg(display)), 10000);

        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove("QT_QPA_PLATFORM");
        env.insert("DISPLAY", QString(":%1").arg(display));
        env.insert("TOCK_DATA_DIR", data);
        env.insert("XDG_CONFIG_HOME", home.path() + "/config");
        env.insert("XDG_RUNTIME_DIR", home.path() + "/run");
        tock_.setProcessEnvironment(env);
        tock_.start(QStringLiteral(TOCK_BINARY), {});
        QVERIFY(tock_.waitForStarted());

        const QString window = run(xdotool, {"search", "--sync", "--onlyvisible", "--name", "^Tock$"}, env).section('\n', 0, 0);
        QVERIFY2(!window.isEmpty(), "the window never appeared");
        run(xdotool, {"windowfocus", "--sync", window}, env);
        const auto keys = [&](const QStringList &names) { run(xdotool, QStringList{"key", "--delay", "40"} + names, env); };

        // A fresh folder starts with three timers; Ctrl+N adds a fourth and focuses its name.
        keys({"ctrl+n", "Return"});
        const QStringList four{"Timer 1=0", "Timer 2=0", "Timer 3=0", "Timer 4=0"};
        QTRY_COMPARE_WITH_TIMEOUT(saved(data), four, 10000);

        // A click on its time opens the mask; typed fields and Return set it.
        run(xdotool, {"mousemove", "--window", window, QString::number(timeAt.x()), QString::number(timeAt.y()), "click", "1"}, env);
        keys({"0", "colon", "2", "colon", "5", "Return"});
        QStringList set = four;
        set.last() = "Timer 4=125";
        QTRY_COMPARE_WITH_TIMEOUT(saved(data), set, 10000);

        // Backspace deletes the row under the pointer; Ctrl+Z brings it back with its time.
        keys({"BackSpace"});
        QTRY_COMPARE_WITH_TIMEOUT(saved(data), set.mid(0, 3), 10000);
        keys({"ctrl+z"});
        QTRY_COMPARE_WITH_TIMEOUT(saved(data), set, 10000);

        // Ctrl+W closes the window and ends the application.
        keys({"ctrl+w"});
        QVERIFY(tock_.waitForFinished(10000));
        QCOMPARE(tock_.exitStatus(), QProcess::NormalExit);
        QCOMPARE(tock_.exitCode(), 0);
        QCOMPARE(saved(data), set);
    }
};

QTEST_MAIN(WindowEndToEndTest)
#include "window_e2e_test.moc"

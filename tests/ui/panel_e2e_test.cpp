// The real tock on a virtual display and a private session bus, with panel_host.py standing in
// for the desktop's panel that comes after Tock: the item's status, icon, tooltip and menu.
// Skipped where Xvfb, xdotool, dbus-daemon or Python's D-Bus and GLib bindings are missing.
#include "run.h"

#include <QtTest>

using namespace tock::testing;

namespace {

// The next line `process` writes on standard output; empty when none comes in time.
QByteArray nextLine(QProcess &process, int ms = 20000)
{
    QDeadlineTimer deadline(ms);
    while (!process.canReadLine() && process.waitForReadyRead(int(deadline.remainingTime()))) {
    }
    return process.readLine().trimmed();
}

} // namespace

class PanelEndToEndTest : public QObject {
    Q_OBJECT

private:
    QString xdotool_;
    QProcess xvfb_;
    QProcess bus_;
    QProcess panel_;
    QProcess tock_;
    QProcessEnvironment env_;
    QTemporaryDir home_;
    QTemporaryFile suppressions_;

    // One command to the stand-in panel and its answer.
    QJsonValue ask(const QString &command)
    {
        panel_.write(command.toUtf8() + '\n');
        return QJsonDocument::fromJson("[" + nextLine(panel_, 15000) + "]").array().at(0);
    }
    QJsonObject item() { return ask("item").toObject(); }
    QString tooltip() { return ask("tooltip").toArray().at(0).toString(); }
    // The menu's visible labels, "[x] " before a checked entry.
    QStringList menu()
    {
        QStringList out;
        for (const QJsonValue &v : ask("menu").toArray()) {
            const QJsonObject e = v.toObject();
            if (e.value("visible").toBool())
                out << (e.value("toggle").toInt() == 1 ? "[x] " : "") + e.value("label").toString();
        }
        return out;
    }
    bool windowShown() { return !run(xdotool_, {"search", "--onlyvisible", "--name", "^Tock$"}, env_, {}, 10000).out.trimmed().isEmpty(); }
    QString shell(const QString &line) { return run(QStringLiteral(TOCK_BINARY), {"--shell", line}, env_, {}, 20000).out.trimmed(); }

private Q_SLOTS:
    void initTestCase()
    {
        const QString xvfb = QStandardPaths::findExecutable("Xvfb");
        const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
        xdotool_ = QStandardPaths::findExecutable("xdotool");
        // Debian's own Python has the bindings, whatever else comes first on the path.
        QString python = QFile::exists("/usr/bin/python3") ? "/usr/bin/python3" : QStandardPaths::findExecutable("python3");
        if (xvfb.isEmpty() || xdotool_.isEmpty() || daemon.isEmpty() || python.isEmpty()
            || QProcess::execute(python, {"-c", "import dbus, gi.repository.GLib"}) != 0)
            QSKIP("needs Xvfb, xdotool, dbus-daemon, python3-dbus and python3-gi (scripts/deps installs them)");

        env_ = QProcessEnvironment::systemEnvironment();
        QVERIFY(startXvfb(xvfb_, xvfb, env_));
        bus_.start(daemon, {"--session", "--nofork", "--print-address=1"});
        const QString address = nextLine(bus_);
        QVERIFY2(!address.isEmpty(), bus_.readAllStandardError().constData());

        env_.insert("DBUS_SESSION_BUS_ADDRESS", address);
        useHome(env_, home_.path());
        // The message-bus library keeps a buffer to the end, and Qt's D-Bus module keeps the
        // description it read of the panel's watcher (136 bytes) in its connection, which Qt
        // never frees; neither is Tock's to answer for. Whole call stacks let the second be
        // named by that one Qt function (the fast ones stop inside Qt's libraries).
        suppressLeaks(suppressions_, env_, {"libdbus-1.so", "QDBusMetaObject::createMetaObject"});
        env_.insert("LSAN_OPTIONS", env_.value("LSAN_OPTIONS") + ":fast_unwind_on_malloc=0");

        panel_.setProcessEnvironment(env_);
        panel_.start(python, {QStringLiteral(TOCK_PANEL_HOST)});
        QCOMPARE(nextLine(panel_), QByteArray("\"ready\""));
    }

    void cleanupTestCase()
    {
        for (QProcess *p : {&tock_, &panel_, &bus_, &xvfb_})
            stop(*p);
    }

    void panelShowsAndControlsTock()
    {
        const QString data = env_.value("TOCK_DATA_DIR");
        tock_.setProcessEnvironment(env_);
        tock_.start(QStringLiteral(TOCK_BINARY), {});
        QVERIFY(tock_.waitForStarted());
        // A loaded machine may take its time; when the window never comes, Tock's own words say why.
        QTRY_VERIFY2_WITH_TIMEOUT(windowShown(),
                                  qPrintable(QStringLiteral("no window; Tock %1, said: %2")
                                                 .arg(tock_.state() == QProcess::NotRunning ? "ended" : "runs",
                                                      QString::fromUtf8(tock_.readAllStandardError()))),
                                  40000);

        // No panel yet: no item, and not a word about it.
        shell("rename 3 Fish & Chips_2");
        QCOMPARE(ask("items").toArray().size(), 0);
        const QByteArray quiet = tock_.readAllStandardError();
        QVERIFY2(!quiet.toLower().contains("tray") && !quiet.contains("D-Bus") && !quiet.contains("dbus"), quiet.constData());

        // A panel starts later and the item comes to it.
        QCOMPARE(ask("watch").toString(), QString("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(ask("items").toArray().size(), 1, 20000);
        QJsonObject idle = item();
        QCOMPARE(idle.value("status").toString(), QString("Active"));
        QCOMPARE(idle.value("title").toString(), QString("Tock"));
        QVERIFY(!idle.value("iconSizes").toArray().isEmpty());
        QCOMPARE(tooltip(), QString("Tock · no timer running"));
        // Names show as they are: nothing in them is taken for an access key.
        QCOMPARE(menu(), QStringList({"Timer 1 · 00:00:00", "Timer 2 · 00:00:00", "Fish & Chips_2 · 00:00:00",
                                      "Pause All", "Hide Tock", "Report", "Quit Tock"}));

        // A timer started in the window shows in the tooltip, and its time moves on.
        QCOMPARE(shell("start 2"), QString("started “Timer 2”"));
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY_WITH_TIMEOUT(tooltip().startsWith("Timer 2 · 00:00:0"), 2000);
        const qint64 shownAfter = clock.elapsed();
        const QString first = tooltip();
        QTRY_VERIFY_WITH_TIMEOUT(tooltip() != first, 5000);
        qInfo("tooltip: the timer after %lld ms, its next second after %lld ms", shownAfter, clock.elapsed());
        QVERIFY(item().value("icon").toString() != idle.value("icon").toString()); // the play mark
        QVERIFY(menu().at(1).startsWith("[x] Timer 2 · 00:00:0"));

        // A left click hides the window; the time keeps moving; another brings it back.
        QCOMPARE(ask("activate").toString(), QString("ok"));
        QTRY_VERIFY_WITH_TIMEOUT(!windowShown(), 10000);
        QCOMPARE(menu().at(4), QString("Show Tock"));
        const QString hidden = tooltip();
        QTRY_VERIFY_WITH_TIMEOUT(tooltip() != hidden, 5000);
        QCOMPARE(ask("activate").toString(), QString("ok"));
        QTRY_VERIFY_WITH_TIMEOUT(windowShown(), 10000);
        QCOMPARE(menu().at(4), QString("Hide Tock"));

        // Pause All from the panel's menu pauses and saves at once.
        const auto saved = [](const QString &folder) { // without the seconds
            return savedTimers(folder).replaceInStrings(QRegularExpression("\\d+$"), QString());
        };
        QTRY_COMPARE_WITH_TIMEOUT(saved(data).value(1), QString("Timer 2>"), 10000);
        QCOMPARE(ask("click Pause All").toString(), QString("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(saved(data), QStringList({"Timer 1=", "Timer 2=", "Fish & Chips_2="}), 10000);
        QTRY_COMPARE_WITH_TIMEOUT(tooltip(), QString("Tock · no timer running"), 5000);

        // Quit ends Tock as closing the window does.
        QCOMPARE(shell("start 1"), QString("started “Timer 1”"));
        QCOMPARE(ask("click Quit Tock").toString(), QString("ok"));
        QVERIFY(tock_.waitForFinished(20000));
        QVERIFY2(tock_.exitStatus() == QProcess::NormalExit && tock_.exitCode() == 0, tock_.readAllStandardError().constData());
        QCOMPARE(saved(data), QStringList({"Timer 1=", "Timer 2=", "Fish & Chips_2="}));
    }
};

QTEST_MAIN(PanelEndToEndTest)
#include "panel_e2e_test.moc"

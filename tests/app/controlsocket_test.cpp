// The control socket: where it lives, running lines on the model as typed, raising through a
// blocking client, clients that misbehave (dropped while the event loop's clock keeps its
// beat), and the real `tock --shell` talking to a window held by this process.
#include "controlclient.h"
#include "files.h"
#include "controlserver.h"
#include "instancelock.h"
#include "modelfixture.h"
#include "run.h"
#include "table.h"

#include <QtTest>

#include <QLocalServer>
#include <QLocalSocket>

#include <sys/stat.h>
#include <unistd.h>

using namespace tock;
using tock::testing::Run;

namespace {

// Runs a blocking call on another thread while this thread's event loop serves it.
template <typename F>
auto offThread(F call)
{
    std::optional<decltype(call())> result;
    QThread *thread = QThread::create([&] { result = call(); });
    QEventLoop loop;
    QObject::connect(thread, &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec(); // the client's own deadlines end it
    thread->wait();
    delete thread;
    return *result;
}

// The window's once-a-second redraw, faster: the longest gap between its ticks.
struct Beat {
    QTimer timer;
    QElapsedTimer since;
    qint64 longest = 0;
    Beat()
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { longest = std::max(longest, since.restart()); });
        timer.start(20);
        since.start();
    }
};

} // namespace

namespace tock {
char *toString(const ControlReply &reply)
{
    return QTest::toString(QStringLiteral("[%1]%2%3%4")
                               .arg(reply.lines.join(QLatin1Char('|')), reply.isError ? " error" : "",
                                    reply.failed ? " failed" : "", reply.exit ? " exit" : ""));
}
} // namespace tock

class ControlSocketTest : public QObject {
    Q_OBJECT

    QTemporaryDir runtime_; // made 0700, like the system's per-user runtime folder
    QTemporaryDir scratch_;

private Q_SLOTS:
    void initTestCase() { qputenv("XDG_RUNTIME_DIR", runtime_.path().toUtf8()); }
    void cleanup()
    {
        qputenv("XDG_RUNTIME_DIR", runtime_.path().toUtf8());
        qunsetenv("TMPDIR");
    }

    void path_data()
    {
        // runtime: "" unset, "long" private but too long a path; temp: the temp folder's tock-<uid>
        // before; where: the folder chosen, runtime, temp or none.
        table<QString, QString, QString, QString>({"case", "runtime", "temp", "where"}, {
            {"runtime folder", "private", "absent", "runtime"},
            {"no runtime folder", "", "absent", "temp"},
            {"runtime path too long", "long", "absent", "temp"},
            {"temp folder kept", "", "private", "temp"},
            {"temp folder open to others", "", "open", "none"},
            {"temp folder is a link", "", "link", "none"},
        });
    }
    void path()
    {
        QFETCH(QString, runtime);
        QFETCH(QString, temp);
        QFETCH(QString, where);
        const QTemporaryDir root;
        const QString tmp = root.filePath(QStringLiteral("tmp"));
        const QString own = tmp + QStringLiteral("/tock-") + QString::number(::geteuid());
        QVERIFY(QDir().mkpath(tmp));
        if (temp == QLatin1String("private") || temp == QLatin1String("open"))
            QVERIFY(::mkdir(QFile::encodeName(own).constData(), temp == QLatin1String("open") ? 0755 : 0700) == 0);
        if (temp == QLatin1String("link"))
            QVERIFY(QFile::link(runtime_.path(), own));
        qputenv("TMPDIR", tmp.toUtf8());
        const QString longRuntime = root.filePath(QString(90, QLatin1Char('r')));
        QVERIFY(::mkdir(QFile::encodeName(longRuntime).constData(), 0700) == 0);
        if (runtime.isEmpty())
            qunsetenv("XDG_RUNTIME_DIR");
        else if (runtime == QLatin1String("long"))
            qputenv("XDG_RUNTIME_DIR", longRuntime.toUtf8());

        const QString path = ControlSocket::path(scratch_.path());
        if (where == QLatin1String("none")) {
            QCOMPARE(path, QString());
            return;
        }
        QCOMPARE(QFileInfo(path).path(), where == QLatin1String("runtime") ? runtime_.path() : own);
        QVERIFY(QFile::encodeName(path).size() <= ControlSocket::maxPathBytes);
        QCOMPARE(tock::testing::modeOf(QFileInfo(path).path()), 0700);
        // One socket per data folder, however the folder is written.
        QCOMPARE(ControlSocket::path(scratch_.path() + QStringLiteral("/./")), path);
        QVERIFY(ControlSocket::path(root.path()) != path);
    }

    // Reading the peer's user is checked by every connection below.
    void peers()
    {
        QVERIFY(ControlSocket::peerAllowed(1000, 1000));
        QVERIFY(!ControlSocket::peerAllowed(1001, 1000));
        QVERIFY(!ControlSocket::peerAllowed(0, 1000)); // not even the administrator's copy
    }

    // What the window does with a line: exactly what typing it does, minus closing itself.
    void runOnModel_data()
    {
        const QStringList abc{"A", "B", "C"};
        table<QString, ControlReply, QStringList>({"line", "reply", "names"}, {
            {"rm 2", ControlReply{{"deleted “B” · undo brings it back"}}, {"A", "C"}},
            {"bogus", ControlReply{{"unknown command: bogus (type help)"}, true, true}, abc},
            {"clear", ControlReply{}, abc},
            {" \t", ControlReply{}, abc},
            {"exit", ControlReply{{}, false, false, true}, abc},
            {"exit now", ControlReply{{"usage: exit"}, true, true}, abc},
        });
    }
    void runOnModel()
    {
        QFETCH(QString, line);
        QFETCH(ControlReply, reply);
        QFETCH(QStringList, names);
        ModelFixture f(WithStore::no);
        f.m().shell().setPrompt(QStringLiteral("sta"), 2); // someone typing at the window
        QCOMPARE(ControlServer::runOnModel(f.m(), line), reply);
        QCOMPARE(f.names(), names);
        QCOMPARE(f.m().shell().promptText(), QStringLiteral("sta"));
        QCOMPARE(f.m().shell().promptCaret(), 2);
        const bool typed = !reply.exit && !line.trimmed().isEmpty();
        QCOMPARE(ModelProbe::history(f.m()).entries(), typed ? QStringList{line} : QStringList{});
        QCOMPARE(f.m().shell().shellOutput(), reply.lines); // the window shows it too
        if (line == QLatin1String("rm 2")) {
            f.undo.undo();
            QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        }
    }

    // Running lines over the socket is checked end to end with the real binary below.
    void raise()
    {
        ControlServer server(ControlSocket::path(scratch_.path()));
        QVERIFY2(server.listen(), qPrintable(server.errorString()));
        const QString path = server.path();
        QCOMPARE(offThread([&] { return ControlClient::raise(path); }), std::optional<bool>(false));
        QList<ActivationTokens> raised;
        server.setOnRaise([&](const ActivationTokens &tokens) { raised << tokens; });
        QCOMPARE(offThread([&] { return ControlClient::raise(path); }), std::optional<bool>(true));
        // The asker's tokens travel with the request, so the window may take the focus.
        const ActivationTokens tokens{QStringLiteral("wl-token-1"), QStringLiteral("launcher-42_TIME1234")};
        QCOMPARE(offThread([&] { return ControlClient::raise(path, ControlClient::answerMs, tokens); }),
                 std::optional<bool>(true));
        QCOMPARE(raised, (QList<ActivationTokens>{{}, tokens}));
        QTRY_COMPARE(server.clientCount(), 0);
    }

    // Without a private folder there is no socket to reach. (Nothing at the path: startup_test
    // secondCopyRefusedWhileTheFirstRuns; a window that does not answer: the real terminal in
    // terminalDrivesTheRunningCopy "no answer".)
    void noPrivateFolderNoAnswer()
    {
        QVERIFY(!ControlClient::ping({}, 200));
        QVERIFY(!ControlClient::raise({}, 200));
        QVERIFY(!ControlClient::run({}, {"add X"}, 200));
    }

    void badClientsAreDropped_data()
    {
        const QByteArray tooLong = ControlSocket::refusal(QStringLiteral("line too long"));
        // A run request exactly as long as a line may be; the handler answers its line's length.
        const qsizetype fill = ControlSocket::maxLineBytes - (ControlSocket::runRequest({}).size() - 1);
        const QByteArray longest = ControlSocket::runRequest(QString(fill, QLatin1Char('x')));
        table<QString, QByteArray, QByteArray>({"case", "sent", "answer"}, {
            {"not JSON", "hello\n", {}},
            {"run without a line", "{\"op\":\"run\"}\n", {}},
            {"line too long, unended", QByteArray(70000, 'x'), tooLong},
            {"line too long by one", QByteArray(ControlSocket::maxLineBytes + 1, 'x') + '\n', tooLong},
            {"longest line, then stall", longest, ControlSocket::runReply({{QString::number(fill)}})},
            {"stalls mid-request", "{\"op\":", {}},
            {"says nothing", {}, {}},
        });
    }
    void badClientsAreDropped()
    {
        QFETCH(QByteArray, sent);
        ControlServer server(ControlSocket::path(scratch_.path()));
        server.setStallTimeout(2000);
        server.setOnRun([](const QString &line) { return ControlReply{{QString::number(line.size())}}; });
        QVERIFY(server.listen());
        Beat beat;
        QLocalSocket client;
        QByteArray received;
        connect(&client, &QLocalSocket::readyRead, &client, [&] { received += client.readAll(); });
        client.connectToServer(server.path());
        QVERIFY(client.waitForConnected(1000));
        client.write(sent);
        QTRY_COMPARE_WITH_TIMEOUT(client.state(), QLocalSocket::UnconnectedState, 10000);
        received += client.readAll();
        QTEST(received, "answer");
        QVERIFY2(beat.longest < 1000, qPrintable(QStringLiteral("the loop stood still for %1 ms").arg(beat.longest)));
        QTRY_COMPARE(server.clientCount(), 0);
        QCOMPARE(offThread([&] { return ControlClient::ping(server.path()); }), true); // still serving
    }

    // Connections beyond the limit wait unread until a place frees (and an idle one is dropped
    // after the stall timeout: badClientsAreDropped "says nothing"), so idle ones cannot crowd
    // out a real client.
    void clientsBeyondTheLimitWait()
    {
        ControlServer server(ControlSocket::path(scratch_.path()));
        server.setMaxClients(2);
        server.setStallTimeout(60000);
        QVERIFY(server.listen());
        QLocalSocket clients[3];
        for (QLocalSocket &client : clients) {
            client.connectToServer(server.path());
            QVERIFY(client.waitForConnected(1000));
        }
        clients[2].write(ControlSocket::pingRequest());
        QTRY_COMPARE(server.clientCount(), 2);
        QTest::qWait(200);
        QCOMPARE(clients[2].state(), QLocalSocket::ConnectedState);
        QCOMPARE(clients[2].bytesAvailable(), 0);
        clients[0].abort();
        QTRY_VERIFY(clients[2].bytesAvailable() > 0);
        QCOMPARE(server.clientCount(), 2);
        QCOMPARE(clients[2].readAll(), ControlSocket::okReply(true));
    }
    // The real `tock --shell` while this process holds the data folder and serves its socket.
    void terminalDrivesTheRunningCopy_data()
    {
        // printed: output lines, error lines marked "! ", the status.
        table<QString, bool, QStringList, QByteArray, QStringList, QStringList>({"case", "answers", "arguments", "input", "printed", "names"}, {
            {"arguments", true, {"add X", "start x", "bogus", "exit", "add Never"}, {},
             {"added “X” as 4", "started “X”", "! unknown command: bogus (type help)", "exit 1"}, {"A", "B", "C", "X"}},
            {"standard input", true, {}, "add Y\n \nrm y\nexit\nadd Never\n",
             {"added “Y” as 4", "deleted “Y” · undo brings it back", "exit 0"}, {"A", "B", "C"}},
            {"no answer", false, {"add X"}, {},
             {"! Tock is already running",
              "! Another copy of Tock is using the timer data. Only one copy can run at a time so nothing gets overwritten.", "exit 3"},
             {"A", "B", "C"}},
        });
    }
    void terminalDrivesTheRunningCopy()
    {
        QFETCH(bool, answers);
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, input);
        QFETCH(QStringList, names);
        const QTemporaryDir root;
        const QString data = root.filePath(QStringLiteral("data"));
        InstanceLock lock(data);
        QVERIFY(lock.acquire());
        ModelFixture f(WithStore::no);
        ControlServer server(ControlSocket::path(data));
        server.setOnRun([&f](const QString &line) { return ControlServer::runOnModel(f.m(), line); });
        QLocalServer silent;
        QVERIFY(answers ? server.listen() : silent.listen(server.path()));

        QProcess tock;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TOCK_DATA_DIR"), data);
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root.filePath(QStringLiteral("config")));
        tock.setProcessEnvironment(environment);
        QElapsedTimer took;
        took.start();
        tock.start(QStringLiteral(TOCK_BINARY), QStringList{"--shell"} + arguments);
        tock.write(input);
        tock.closeWriteChannel();
        QTRY_COMPARE_WITH_TIMEOUT(tock.state(), QProcess::NotRunning, 60000);
        QCOMPARE(tock.exitStatus(), QProcess::NormalExit);

        const Run ran{QString::fromUtf8(tock.readAllStandardOutput()), QString::fromUtf8(tock.readAllStandardError()), tock.exitCode()};
        QTEST(ran.lines(), "printed");
        QCOMPARE(f.names(), names);
        QCOMPARE(QDir(data).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{".lock"});
        if (!answers)
            QVERIFY(took.elapsed() >= ControlClient::answerMs);
    }
};

QTEST_GUILESS_MAIN(ControlSocketTest)
#include "controlsocket_test.moc"

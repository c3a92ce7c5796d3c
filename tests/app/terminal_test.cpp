// The real `tock` binary end to end over temporary data folders: standard input and argument
// lines, output and error streams, exit statuses, what ends up on disk, the single-instance
// refusal, the self-check and a tool switch. Each run folds in several checks, as runs are slow.
#include "appmodel.h"
#include "snapshot.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace tock;

namespace {

struct Run {
    int status = -1;
    QStringList out;
    QStringList err;
};

QStringList lines(const QByteArray &data)
{
    QStringList result = QString::fromUtf8(data).split(QLatin1Char('\n'));
    if (result.last().isEmpty())
        result.removeLast();
    return result;
}

} // namespace

class TerminalTest : public QObject {
    Q_OBJECT

    QTemporaryDir root_;
    QString data_; // a fresh folder per test, not there until the binary creates it

    void start(QProcess &process, const QStringList &arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TOCK_DATA_DIR"), data_);
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root_.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), root_.filePath(QStringLiteral("share")));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(TOCK_BINARY), arguments);
    }

    Run tock(const QStringList &arguments, const QByteArray &input = {})
    {
        QProcess process;
        start(process, arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(60000))
            return {};
        return {process.exitCode(), lines(process.readAllStandardOutput()), lines(process.readAllStandardError())};
    }

    QByteArray file() const
    {
        QFile file(data_ + QStringLiteral("/timers.json"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    // "name seconds" per saved timer; none may be saved running.
    QStringList saved() const
    {
        QStringList timers;
        for (const Snapshot::Entry &entry : Snapshot::decode(file()).timers)
            timers << entry.name + QLatin1Char(' ') + QString::number(entry.seconds) + (entry.wasRunning ? "*" : "");
        return timers;
    }

private Q_SLOTS:
    void init() { data_ = root_.filePath(QString::fromLatin1(QTest::currentTestFunction())); }

    void linesFromStandardInput()
    {
        Run run = tock({"--shell"}, "add Focus\nset Focus 1:30:00\nrm Focus\nundo\n");
        QCOMPARE(run.out, QStringList({"added “Focus” as 4", "“Focus” is now 01:30:00", "deleted “Focus” · undo brings it back", "undone"}));
        QCOMPARE(run.err, QStringList());
        QCOMPARE(run.status, 0);
        QCOMPARE(saved(), QStringList({"Timer 1 0", "Timer 2 0", "Timer 3 0", "Focus 5400"}));
        // Undo history ends with the process; blank lines, a carriage return and clear print
        // nothing; a last line without a line feed still runs; a failure makes the status 1.
        run = tock({"--shell"}, "\n  \nundo\r\nclear\nrename focus A\nversion");
        QCOMPARE(run.err, QStringList{"nothing to undo"});
        QCOMPARE(run.out.value(0), QStringLiteral("renamed “Focus” to “A”"));
        QVERIFY(run.out.value(1).startsWith(QStringLiteral("tock ")));
        QCOMPARE(run.out.size(), 2);
        QCOMPARE(run.status, 1);
        QCOMPARE(saved().last(), QStringLiteral("A 5400"));
    }

    void linesFromArguments()
    {
        const Run run = tock({"--shell", "add A", "rm zzz", "start a", "frob", "exit", "add B"});
        QCOMPARE(run.out, QStringList({"added “A” as 4", "started “A”"}));
        QCOMPARE(run.err, QStringList({"no timer named zzz", "unknown command: frob (type help)"}));
        QCOMPARE(run.status, 1);
        QCOMPARE(saved(), QStringList({"Timer 1 0", "Timer 2 0", "Timer 3 0", "A 0"})); // paused at the end
    }

    // While one copy runs a second is refused and touches nothing; a polite kill ends the first
    // the normal way, and then the folder is free again.
    void secondCopyRefusedWhileTheFirstRuns()
    {
        QProcess first;
        start(first, {"--shell"});
        first.write("add Kept\nstart kept\n");
        QStringList answers;
        while (answers.size() < 2 && first.waitForReadyRead(30000)) {
            while (first.canReadLine())
                answers << QString::fromUtf8(first.readLine()).chopped(1);
        }
        QCOMPARE(answers, QStringList({"added “Kept” as 4", "started “Kept”"})); // it holds the lock now
        const QStringList before = QDir(data_).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        const QByteArray data = file();

        const Run second = tock({"--shell", "rm all"});
        QCOMPARE(second.status, 3);
        QCOMPARE(second.out, QStringList());
        QCOMPARE(second.err, QStringList({"Tock is already running", "Another copy of Tock is using the timer data. Only one copy can run at a time so nothing gets overwritten."}));
        QCOMPARE(QDir(data_).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), before);
        QCOMPARE(file(), data);

        first.terminate();
        QVERIFY(first.waitForFinished(30000));
        QCOMPARE(first.exitStatus(), QProcess::NormalExit);
        QCOMPARE(first.exitCode(), 0);
        QCOMPARE(saved().size(), 4);
        QVERIFY(saved().last().startsWith(QStringLiteral("Kept "))); // and not running
        const Run third = tock({"--shell"}, "rm kept\nexit\nadd B\n");
        QCOMPARE(third.out, QStringList{"deleted “Kept” · undo brings it back"});
        QCOMPARE(third.status, 0);
        QCOMPARE(saved(), QStringList({"Timer 1 0", "Timer 2 0", "Timer 3 0"}));
    }

    void unreadableDataIsReportedAndLeftAlone()
    {
        QVERIFY(QDir().mkpath(data_));
        QFile broken(data_ + QStringLiteral("/timers.json"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("{ broken") == 8);
        broken.close();
        const Run run = tock({"--shell", "add A"});
        QCOMPARE(run.err.value(0), StorageNotice::unreadable({}).title());
        QCOMPARE(run.out, QStringList{"added “A” as 1"});
        QCOMPARE(run.status, 0);
        QCOMPARE(file(), QByteArray("{ broken"));
    }

    void toolSwitchesTouchNoData()
    {
        const Run selftest = tock({"--selftest"});
        QCOMPARE(selftest.out.value(selftest.out.size() - 1), QStringLiteral("app checks passed"));
        QVERIFY(selftest.out.size() > 10);
        QCOMPARE(selftest.status, 0);
        const Run bench = tock({"--bench", "classic", "10", "2.5"});
        QCOMPARE(bench.out.size(), 1);
        QCOMPARE(bench.status, 0);
        QVERIFY(!QFile::exists(data_));
    }
};

QTEST_GUILESS_MAIN(TerminalTest)
#include "terminal_test.moc"

// The real `tock` binary end to end: the terminal mode over temporary data folders (standard
// input and argument lines, output and error streams, exit statuses, what ends up on disk), the
// single-instance refusal, the self-check and the fall-through of invalid tool switches.
#include "appmodel.h"
#include "instancelock.h"
#include "snapshot.h"
#include "undomanager.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
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
    if (!result.isEmpty() && result.last().isEmpty())
        result.removeLast();
    return result;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList folderEntries(const QString &path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class TerminalTest : public QObject {
    Q_OBJECT

    QTemporaryDir root_;
    QString data_;

    void setUpProcess(QProcess &process, const QStringList &arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TOCK_DATA_DIR"), data_);
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root_.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), root_.filePath(QStringLiteral("share")));
        process.setProcessEnvironment(environment);
        process.setProgram(QStringLiteral(TOCK_BINARY));
        process.setArguments(arguments);
    }

    Run tock(const QStringList &arguments, const QByteArray &input = {})
    {
        QProcess process;
        setUpProcess(process, arguments);
        process.start();
        if (!process.waitForStarted())
            return {};
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(60000)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitCode(), lines(process.readAllStandardOutput()), lines(process.readAllStandardError())};
    }

    Snapshot saved() const { return Snapshot::decode(readFile(data_ + QStringLiteral("/timers.json"))); }

private Q_SLOTS:
    void init()
    {
        QVERIFY(root_.isValid());
        data_ = root_.filePath(QStringLiteral("data-") + QString::fromLatin1(QTest::currentTestFunction()));
    }

    void linesFromStandardInput()
    {
        const Run run = tock({"--shell"}, "add Focus\nset Focus 1:30:00\nrm Focus\nundo\n");
        QCOMPARE(run.err, QStringList());
        QCOMPARE(run.out, QStringList({"added “Focus” as 4", "“Focus” is now 01:30:00",
                                       "deleted “Focus” · undo brings it back", "undone"}));
        QCOMPARE(run.status, 0);
        const Snapshot snapshot = saved();
        QStringList names;
        for (const Snapshot::Entry &entry : snapshot.timers) {
            names << entry.name;
            QVERIFY(!entry.wasRunning);
        }
        QCOMPARE(names, QStringList({"Timer 1", "Timer 2", "Timer 3", "Focus"}));
        QCOMPARE(snapshot.timers.at(3).seconds, 5400.0);
    }

    void linesFromArgumentsAndFailures()
    {
        const Run run = tock({"--shell", "add A", "rm zzz", "start a", "frob"});
        QCOMPARE(run.out, QStringList({"added “A” as 4", "started “A”"}));
        QCOMPARE(run.err, QStringList({"no timer named zzz", "unknown command: frob (type help)"}));
        QCOMPARE(run.status, 1);
        // Ending the session pauses the running timer before saving.
        QCOMPARE(saved().timers.size(), 4);
        QVERIFY(!saved().timers.at(3).wasRunning);
        // Undo history ends with the process; the timers do not.
        const Run next = tock({"--shell", "undo", "rename a Alpha"});
        QCOMPARE(next.err, QStringList{"nothing to undo"});
        QCOMPARE(next.out, QStringList{"renamed “A” to “Alpha”"});
        QCOMPARE(next.status, 1);
        QCOMPARE(saved().timers.at(3).name, QStringLiteral("Alpha"));
    }

    void exitStopsReadingAndBlankLinesAreSkipped()
    {
        const Run run = tock({"--shell"}, "\n  \nadd A\r\nclear\nexit\nadd B\n");
        QCOMPARE(run.out, QStringList{"added “A” as 4"});
        QCOMPARE(run.err, QStringList());
        QCOMPARE(run.status, 0);
        QCOMPARE(saved().timers.size(), 4);
    }

    void aLastLineWithoutLineFeedRuns()
    {
        const Run run = tock({"--shell"}, "version\nadd Tail");
        QCOMPARE(run.out.size(), 2);
        QVERIFY(run.out.at(0).startsWith(QStringLiteral("tock ")));
        QCOMPARE(run.out.at(1), QStringLiteral("added “Tail” as 4"));
    }

    void refusedWhileAnotherProcessHoldsTheFolder()
    {
        InstanceLock other(data_);
        QVERIFY(other.acquire());
        const Run run = tock({"--shell", "add X"});
        QCOMPARE(run.status, 3);
        QCOMPARE(run.out, QStringList());
        QCOMPARE(run.err, QStringList({"Tock is already running",
                                       "Another copy of Tock is using the timer data. Only one copy can run at a "
                                       "time so nothing gets overwritten."}));
        QCOMPARE(folderEntries(data_), QStringList{".lock"});
    }

    void secondCopyRefusedWhileTheFirstRuns()
    {
        QProcess first;
        setUpProcess(first, {"--shell"});
        first.start();
        QVERIFY(first.waitForStarted());
        first.write("add Kept\n");
        // Once it has answered, it holds the lock.
        while (!first.canReadLine())
            QVERIFY(first.waitForReadyRead(30000));
        QCOMPARE(first.readLine(), QByteArray("added “Kept” as 4\n"));

        const Run second = tock({"--shell", "rm all"});
        QCOMPARE(second.status, 3);
        QCOMPARE(second.err.value(0), QStringLiteral("Tock is already running"));

        first.write("start kept\n");
        first.closeWriteChannel();
        QVERIFY(first.waitForFinished(30000));
        QCOMPARE(first.exitCode(), 0);
        QCOMPARE(lines(first.readAllStandardOutput()), QStringList{"started “Kept”"});
        QCOMPARE(saved().timers.size(), 4);
        QCOMPARE(saved().timers.at(3).name, QStringLiteral("Kept"));
        QVERIFY(!saved().timers.at(3).wasRunning);

        const Run third = tock({"--shell", "rm kept"});
        QCOMPARE(third.status, 0);
        QCOMPARE(saved().timers.size(), 3);
    }

    void terminationPausesAndSaves()
    {
        QProcess process;
        setUpProcess(process, {"--shell"});
        process.start();
        QVERIFY(process.waitForStarted());
        process.write("add Run\nstart run\n");
        QStringList answers;
        while (answers.size() < 2) {
            while (process.canReadLine())
                answers << QString::fromUtf8(process.readLine()).trimmed();
            if (answers.size() < 2)
                QVERIFY(process.waitForReadyRead(30000));
        }
        QCOMPARE(answers, QStringList({"added “Run” as 4", "started “Run”"}));
        process.terminate();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(saved().timers.size(), 4);
        QVERIFY(!saved().timers.at(3).wasRunning);
    }

    void unreadableDataIsReportedAndLeftAlone()
    {
        QVERIFY(QDir().mkpath(data_));
        QFile file(data_ + QStringLiteral("/timers.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{ broken");
        file.close();

        const Run run = tock({"--shell", "add A"});
        QVERIFY(run.err.size() >= 2);
        QCOMPARE(run.err.at(0), StorageNotice::unreadable({}).title());
        QCOMPARE(run.out, QStringList{"added “A” as 1"});
        QCOMPARE(readFile(data_ + QStringLiteral("/timers.json")), QByteArray("{ broken"));
    }

    void selfCheckPasses()
    {
        const Run run = tock({"--selftest"});
        QCOMPARE(run.out.value(run.out.size() - 1), QStringLiteral("app checks passed"));
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.size() > 10);
        QVERIFY(!QFile::exists(data_));
    }

    void toolSwitches()
    {
        const Run bench = tock({"--bench", "classic", "10", "2.5"});
        QCOMPARE(bench.status, 0);
        QCOMPARE(bench.out.size(), 1);
        QVERIFY(!QFile::exists(data_));
        // An invalid --bench is ignored and the normal start (for now the terminal) goes on.
        const Run normal = tock({"--bench", "classic", "ten", "2.5"});
        QCOMPARE(normal.status, 0);
        QCOMPARE(saved().timers.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TerminalTest)
#include "terminal_test.moc"

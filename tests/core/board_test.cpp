#include "board.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <cmath>

using namespace tock;

namespace tock {
// Readable failure output for the records compared below.
char *toString(const TimerItem &t)
{
    const QString s = QStringLiteral("TimerItem(%1, \"%2\", %3, %4)")
                          .arg(t.id.toString(QUuid::WithoutBraces).left(8), t.name)
                          .arg(t.accumulated)
                          .arg(t.startedAt ? QString::number(*t.startedAt) : QStringLiteral("stopped"));
    return qstrdup(s.toUtf8().constData());
}
} // namespace tock

namespace {

constexpr double kMax = HMS::maxSeconds;

TimerItem item(const QString &name, double accumulated = 0, std::optional<Instant> startedAt = {})
{
    return TimerItem{QUuid::createUuid(), name, accumulated, startedAt};
}

// A board whose timers are named by the letters of `names`, in order.
Board lettered(const QString &names)
{
    QList<TimerItem> timers;
    for (QChar c : names)
        timers.append(item(QString(c)));
    return Board(timers);
}

QString letters(const Board &board)
{
    QString s;
    for (const TimerItem &t : board.timers)
        s += t.name;
    return s;
}

QStringList namesOf(const Board &board)
{
    QStringList names;
    for (const TimerItem &t : board.timers)
        names << t.name;
    return names;
}

} // namespace

class BoardTest : public QObject {
    Q_OBJECT
private slots:
    void elapsed_data()
    {
        QTest::addColumn<double>("accumulated");
        QTest::addColumn<bool>("running");
        QTest::addColumn<double>("startedAt");
        QTest::addColumn<double>("now");
        QTest::addColumn<double>("expected");
        QTest::newRow("stopped ignores now") << 12.5 << false << 0.0 << 1000.0 << 12.5;
        QTest::newRow("running adds the run") << 10.0 << true << 100.0 << 130.5 << 40.5;
        QTest::newRow("start after now adds nothing") << 10.0 << true << 200.0 << 100.0 << 10.0;
        QTest::newRow("stored above the cap") << 5e6 << false << 0.0 << 0.0 << kMax;
        QTest::newRow("run crosses the cap") << kMax - 1 << true << 0.0 << 10.0 << kMax;
    }
    void elapsed()
    {
        QFETCH(double, accumulated);
        QFETCH(bool, running);
        QFETCH(double, startedAt);
        QFETCH(double, now);
        QFETCH(double, expected);
        const TimerItem t = item("t", accumulated, running ? std::optional<Instant>(startedAt) : std::nullopt);
        QCOMPARE(t.isRunning(), running);
        QCOMPARE(t.elapsed(now), expected);
    }

    void lookups()
    {
        Board board = lettered("AB");
        const TimerItem b = board.timers[1];
        QCOMPARE(board.index(b.id), std::optional<qsizetype>(1));
        QCOMPARE(board.timer(b.id), std::optional<TimerItem>(b));
        QVERIFY(!board.index(QUuid::createUuid()));
        QVERIFY(!board.timer(QUuid::createUuid()));
        QVERIFY(!board.anyRunning());
        QVERIFY(!Board().anyRunning());
        board.toggle(b.id, 5);
        QVERIFY(board.anyRunning());
    }

    void nextDefaultName_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty board") << QStringList{} << "Timer 1";
        QTest::newRow("one and two") << QStringList{"Timer 1", "Timer 2"} << "Timer 3";
        QTest::newRow("counts from the size") << QStringList{"A", "Timer 3"} << "Timer 4";
        QTest::newRow("gap below is not reused") << QStringList{"Timer 1", "Timer 3"} << "Timer 4";
        QTest::newRow("no default names") << QStringList{"X", "Y", "Z"} << "Timer 4";
        QTest::newRow("runs past a chain") << QStringList{"A", "Timer 5", "Timer 7", "Timer 6"} << "Timer 8";
        QTest::newRow("case matters") << QStringList{"timer 2"} << "Timer 2";
        QTest::newRow("padding is another name") << QStringList{"Timer 02"} << "Timer 2";
        QTest::newRow("no trimming") << QStringList{"Timer 2 "} << "Timer 2";
        QTest::newRow("non-ASCII digit") << QStringList{QStringLiteral("Timer \u0662")} << "Timer 2";
        QTest::newRow("huge number") << QStringList{"Timer 99999999999999999999999"} << "Timer 2";
        QTest::newRow("duplicates") << QStringList{"Timer 3", "Timer 3", "Timer 4"} << "Timer 5";
    }
    void nextDefaultName()
    {
        QFETCH(QStringList, names);
        QFETCH(QString, expected);
        Board board;
        for (const QString &name : names)
            board.add(name);
        QCOMPARE(board.nextDefaultName(), expected);
    }

    void addAppendsStoppedTimer()
    {
        Board board = lettered("A");
        const TimerItem added = board.add();
        QCOMPARE(added.name, "Timer 2");
        QCOMPARE(added.accumulated, 0.0);
        QVERIFY(!added.isRunning());
        QCOMPARE(added.id.version(), QUuid::Random);
        QCOMPARE(board.timers.last(), added);

        // A given name is used exactly as passed.
        const QString raw = QStringLiteral("  two\nlines ");
        QCOMPARE(board.add(raw).name, raw);
        QCOMPARE(board.add(QString()).name, QString());
        QCOMPARE(board.timers.size(), 4);
        QVERIFY(board.timers[1].id != board.timers[2].id);
    }

    void rename_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << "Focus" << "Focus";
        QTest::newRow("line feed") << "a\nb" << "a b";
        QTest::newRow("CR LF is two") << "a\r\nb" << "a  b";
        QTest::newRow("VT FF NEL") << QStringLiteral("a\u000Bb\u000Cc\u0085d") << "a b c d";
        QTest::newRow("line/paragraph separators") << QStringLiteral("a\u2028b\u2029") << "a b ";
        QTest::newRow("tab and spaces kept") << " a\tb  " << " a\tb  ";
        QTest::newRow("empty accepted") << "" << "";
    }
    void rename()
    {
        QFETCH(QString, name);
        QFETCH(QString, expected);
        Board board = lettered("AB");
        board.rename(board.timers[1].id, name);
        QCOMPARE(board.timers[1].name, expected);
        QCOMPARE(board.timers[0].name, "A");
    }

    void unknownIdChangesNothing()
    {
        Board board = lettered("AB");
        board.toggle(board.timers[0].id, 10);
        const Board before = board;
        const QUuid stranger = QUuid::createUuid();
        board.rename(stranger, "x");
        board.toggle(stranger, 20);
        board.setElapsed(stranger, 5, 20);
        QVERIFY(!board.reset(stranger, 20));
        QVERIFY(!board.remove(stranger));
        QCOMPARE(board, before);
    }

    void toggle()
    {
        Board board = lettered("A");
        const QUuid id = board.timers[0].id;
        board.setElapsed(id, 7, 0);
        board.toggle(id, 100);
        QCOMPARE(board.timers[0].startedAt, std::optional<Instant>(100));
        QCOMPARE(board.timers[0].accumulated, 7.0);
        board.toggle(id, 130);
        QCOMPARE(board.timers[0], (TimerItem{id, "A", 37, std::nullopt}));

        // Twice at the same instant: nothing gained, stopped again.
        board.toggle(id, 200);
        board.toggle(id, 200);
        QCOMPARE(board.timers[0].accumulated, 37.0);
        QVERIFY(!board.timers[0].isRunning());

        // A clock that went backwards adds nothing.
        board.toggle(id, 300);
        board.toggle(id, 250);
        QCOMPARE(board.timers[0].accumulated, 37.0);
    }

    void toggleDoesNotCapButPauseAllDoes()
    {
        Board board(QList<TimerItem>{item("a", kMax - 10, 0.0), item("b", kMax - 10, 0.0)});
        board.toggle(board.timers[0].id, 100);
        QCOMPARE(board.timers[0].accumulated, kMax + 90);
        QCOMPARE(board.timers[0].elapsed(100), kMax);
        board.pauseAll(100);
        QCOMPARE(board.timers[1].accumulated, kMax);
        QCOMPARE(board.timers[0].accumulated, kMax + 90); // already stopped: untouched
    }

    void pauseAll()
    {
        Board board(QList<TimerItem>{item("a", 5, 100.0), item("b", 3), item("c", 1, 500.0)});
        board.pauseAll(50);
        QCOMPARE(board.pauseHistory, QList<Instant>{50});
        board.pauseAll(160);
        QCOMPARE(board.pauseHistory, (QList<Instant>{50, 160}));
        QVERIFY(!board.anyRunning());
        QCOMPARE(board.timers[0].accumulated, 5.0); // stopped by the first pause, run clamped at 0
        QCOMPARE(board.timers[1].accumulated, 3.0);
        QCOMPARE(board.timers[2].accumulated, 1.0);

        // Even with nothing running the pause is recorded.
        board.pauseAll(170);
        QCOMPARE(board.epoch(), 3);
    }

    void pauseAllAddsTheRun()
    {
        Board board(QList<TimerItem>{item("a", 5, 100.0)});
        board.pauseAll(160);
        QCOMPARE(board.timers[0].accumulated, 65.0);
        QVERIFY(!board.timers[0].isRunning());
    }

    void setElapsed_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("stored");
        QTest::newRow("plain") << 125.5 << 125.5;
        QTest::newRow("negative") << -5.0 << 0.0;
        QTest::newRow("NaN") << std::nan("") << 0.0;
        QTest::newRow("above the cap") << 4e6 << kMax;
        QTest::newRow("infinity") << HUGE_VAL << kMax;
    }
    void setElapsed()
    {
        QFETCH(double, seconds);
        QFETCH(double, stored);
        Board board(QList<TimerItem>{item("stopped", 9), item("running", 9, 10.0)});
        board.setElapsed(board.timers[0].id, seconds, 50);
        board.setElapsed(board.timers[1].id, seconds, 50);
        QCOMPARE(board.timers[0].accumulated, stored);
        QVERIFY(!board.timers[0].isRunning());
        QCOMPARE(board.timers[1].accumulated, stored);
        QCOMPARE(board.timers[1].startedAt, std::optional<Instant>(50));
        QCOMPARE(board.timers[1].elapsed(50), stored);
    }

    void resetStopsAndReturnsEntry()
    {
        Board board(QList<TimerItem>{item("a"), item("b", 40, 100.0)});
        board.pauseAll(1);
        board.toggle(board.timers[1].id, 100);
        const TimerItem before = board.timers[1];
        const auto entry = board.reset(before.id, 150);
        QCOMPARE(entry, std::optional<UndoEntry>(UndoEntry::reset(before, 1)));
        QCOMPARE(board.timers[1], (TimerItem{before.id, "b", 0, std::nullopt}));
    }

    void undoResetWithoutPauseKeepsRunning()
    {
        Board board(QList<TimerItem>{item("a", 40, 100.0)});
        const QUuid id = board.timers[0].id;
        const UndoEntry entry = *board.reset(id, 150);
        QVERIFY(board.undo(entry));
        QCOMPARE(board.timers[0], (TimerItem{id, "a", 40, 100.0}));
        QCOMPARE(board.timers[0].elapsed(200), 140.0); // the time since the reset counts
    }

    void undoResetSettlesOnFirstPauseAfterIt()
    {
        // A pause before the reset must not be used; the first one after it is.
        Board board(QList<TimerItem>{item("a", 40)});
        const QUuid id = board.timers[0].id;
        board.pauseAll(50);
        board.toggle(id, 100);
        const UndoEntry entry = *board.reset(id, 150);
        board.pauseAll(170);
        board.pauseAll(400);
        QVERIFY(board.undo(entry));
        QCOMPARE(board.timers[0], (TimerItem{id, "a", 110, std::nullopt}));
    }

    void undoResetKeepsLaterNameAndPlace()
    {
        Board board = lettered("ABC");
        const QUuid id = board.timers[0].id;
        board.setElapsed(id, 30, 0);
        const UndoEntry entry = *board.reset(id, 10);
        board.rename(id, "Renamed");
        board.move({0}, 3);
        QVERIFY(board.undo(entry));
        QCOMPARE(namesOf(board), (QStringList{"B", "C", "Renamed"}));
        QCOMPARE(board.timers[2].accumulated, 30.0);
    }

    void undoResetOfDeletedTimerFails()
    {
        Board board = lettered("AB");
        const QUuid id = board.timers[0].id;
        const UndoEntry entry = *board.reset(id, 10);
        board.remove(id);
        const Board before = board;
        QVERIFY(!board.undo(entry));
        QCOMPARE(board, before);
    }

    void removeAndUndo()
    {
        Board board = lettered("ABC");
        const TimerItem b = board.timers[1];
        const auto entry = board.remove(b.id);
        QCOMPARE(entry, std::optional<UndoEntry>(UndoEntry::remove(b, 1, 0)));
        QCOMPARE(letters(board), "AC");
        QVERIFY(board.undo(*entry));
        QCOMPARE(letters(board), "ABC");
        QCOMPARE(board.timers[1], b);

        // Only once.
        QVERIFY(!board.undo(*entry));
        QCOMPARE(letters(board), "ABC");
    }

    void undoRemovePosition_data()
    {
        QTest::addColumn<qint64>("index");
        QTest::addColumn<QString>("expected");
        QTest::newRow("in place") << qint64(1) << "AxB";
        QTest::newRow("at the end") << qint64(2) << "ABx";
        QTest::newRow("beyond the end appends") << qint64(7) << "ABx";
        QTest::newRow("negative goes first") << qint64(-3) << "xAB";
    }
    void undoRemovePosition()
    {
        QFETCH(qint64, index);
        QFETCH(QString, expected);
        Board board = lettered("AB");
        QVERIFY(board.undo(UndoEntry::remove(item("x"), index, 0)));
        QCOMPARE(letters(board), expected);
    }

    void undoRemoveSettles()
    {
        Board board(QList<TimerItem>{item("a", 10, 100.0), item("b", 10, 100.0)});
        const UndoEntry first = *board.remove(board.timers[0].id);
        board.pauseAll(130);
        QVERIFY(board.undo(first));
        QCOMPARE(board.timers[0].accumulated, 40.0);
        QVERIFY(!board.timers[0].isRunning());

        // Without a pause in between the restored timer runs on from its old start.
        Board other(QList<TimerItem>{item("c", 10, 100.0)});
        const UndoEntry second = *other.remove(other.timers[0].id);
        QVERIFY(other.undo(second));
        QCOMPARE(other.timers[0].startedAt, std::optional<Instant>(100));
    }

    void move_data()
    {
        QTest::addColumn<QList<qsizetype>>("offsets");
        QTest::addColumn<qsizetype>("destination");
        QTest::addColumn<QString>("expected");
        using L = QList<qsizetype>;
        QTest::newRow("block down") << L{0, 1} << qsizetype(3) << "CABD";
        QTest::newRow("last to top") << L{3} << qsizetype(0) << "DABC";
        QTest::newRow("onto itself") << L{0} << qsizetype(1) << "ABCD";
        QTest::newRow("one down") << L{0} << qsizetype(2) << "BACD";
        QTest::newRow("to the end") << L{1} << qsizetype(4) << "ACDB";
        QTest::newRow("scattered to the end") << L{0, 2} << qsizetype(4) << "BDAC";
        QTest::newRow("scattered to the top") << L{3, 1} << qsizetype(0) << "BDAC";
        QTest::newRow("destination past the end") << L{0} << qsizetype(99) << "BCDA";
        QTest::newRow("negative destination") << L{2} << qsizetype(-5) << "CABD";
        QTest::newRow("nothing") << L{} << qsizetype(0) << "ABCD";
        QTest::newRow("all") << L{0, 1, 2, 3} << qsizetype(2) << "ABCD";
    }
    void move()
    {
        QFETCH(QList<qsizetype>, offsets);
        QFETCH(qsizetype, destination);
        QFETCH(QString, expected);
        Board board = lettered("ABCD");
        board.move(std::set<qsizetype>(offsets.cbegin(), offsets.cend()), destination);
        QCOMPARE(letters(board), expected);
    }

    void moveOutsideTheBoardStopsTheProgram_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::newRow("past the end") << "past-end";
        QTest::newRow("negative") << "negative";
    }
    void moveOutsideTheBoardStopsTheProgram()
    {
        QFETCH(QString, mode);
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--bad-move"), mode});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY(child.readAllStandardError().contains("tock: fatal: move offset outside the board"));
    }

    void commit_data()
    {
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<bool>("result");
        QTest::addColumn<double>("accumulated");
        QTest::addColumn<double>("startedAt");
        QTest::newRow("invalid minutes") << QStringList{"0", "60", "0"} << false << 3725.0 << 100.0;
        QTest::newRow("untouched keeps running") << QStringList{"01", "02", "05"} << true << 3725.0 << 100.0;
        QTest::newRow("retyped the same") << QStringList{"1", "2", "5"} << true << 3725.0 << 100.0;
        QTest::newRow("empty fields are zero") << QStringList{"", "", ""} << true << 0.0 << 500.0;
        QTest::newRow("changed restarts the run") << QStringList{"999", "59", "59"} << true << kMax << 500.0;
    }
    void commit()
    {
        QFETCH(QStringList, texts);
        QFETCH(bool, result);
        QFETCH(double, accumulated);
        QFETCH(double, startedAt);
        Board board(QList<TimerItem>{item("a", 3725, 100.0)});
        const QUuid id = board.timers[0].id;
        TimeEditDraft draft(3725);
        for (TimeField f : TimeFields::all)
            draft.texts[static_cast<int>(f)] = texts[static_cast<int>(f)];
        QCOMPARE(board.commit(draft, id, 500), result);
        QCOMPARE(board.timers[0], (TimerItem{id, "a", accumulated, startedAt}));
    }

    void commitOnStoppedOrUnknownTimer()
    {
        Board board(QList<TimerItem>{item("a", 10)});
        TimeEditDraft draft(10);
        draft.set(TimeField::minutes, "3");
        QVERIFY(board.commit(draft, board.timers[0].id, 500));
        QCOMPARE(board.timers[0].accumulated, 190.0);
        QVERIFY(!board.timers[0].isRunning());
        const Board before = board;
        QVERIFY(board.commit(draft, QUuid::createUuid(), 500));
        QCOMPARE(board, before);
    }

    void undoEntryTexts_data()
    {
        QTest::addColumn<bool>("isReset");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("actionName");
        QTest::addColumn<QString>("message");
        QTest::newRow("reset") << true << "Focus" << "Reset Timer" << QStringLiteral("Reset \u201CFocus\u201D");
        QTest::newRow("delete") << false << "Focus" << "Delete Timer" << QStringLiteral("Deleted \u201CFocus\u201D");
        QTest::newRow("reset untitled") << true << "" << "Reset Timer" << QStringLiteral("Reset \u201CUntitled\u201D");
        QTest::newRow("delete untitled") << false << "" << "Delete Timer" << QStringLiteral("Deleted \u201CUntitled\u201D");
        QTest::newRow("spaces shown as they are") << false << "  " << "Delete Timer" << QStringLiteral("Deleted \u201C  \u201D");
    }
    void undoEntryTexts()
    {
        QFETCH(bool, isReset);
        QFETCH(QString, name);
        QFETCH(QString, actionName);
        QFETCH(QString, message);
        const TimerItem t = item(name);
        const UndoEntry entry = isReset ? UndoEntry::reset(t, 2) : UndoEntry::remove(t, 4, 2);
        QCOMPARE(entry.isReset(), isReset);
        QCOMPARE(entry.timer(), t);
        QCOMPARE(entry.epoch(), 2);
        QCOMPARE(entry.actionName(), actionName);
        QCOMPARE(entry.message(), message);
    }

    void undoEntryEquality()
    {
        const TimerItem t = item("a");
        QVERIFY(UndoEntry::reset(t, 1) == UndoEntry::reset(t, 1));
        QVERIFY(UndoEntry::reset(t, 1) != UndoEntry::reset(t, 2));
        QVERIFY(UndoEntry::remove(t, 0, 1) != UndoEntry::remove(t, 0, 2));
        QVERIFY(UndoEntry::remove(t, 0, 1) != UndoEntry::remove(t, 1, 1));
        QVERIFY(UndoEntry::reset(t, 0) != UndoEntry::remove(t, 0, 0));
    }
};

int main(int argc, char **argv)
{
    // Re-entered by moveOutsideTheBoardStopsTheProgram: this process is expected to abort.
    if (argc == 3 && qstrcmp(argv[1], "--bad-move") == 0) {
        Board board = lettered("AB");
        board.move({qstrcmp(argv[2], "negative") == 0 ? qsizetype(-1) : qsizetype(2)}, 0);
        return 0;
    }
    QCoreApplication app(argc, argv);
    BoardTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "board_test.moc"

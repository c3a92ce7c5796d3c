#include "board.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <cmath>

using namespace tock;

namespace {

constexpr double kMax = HMS::maxSeconds;
using Start = std::optional<Instant>;

TimerItem item(const QString &name, double accumulated = 0, Start startedAt = {})
{
    return TimerItem{QUuid::createUuid(), name, accumulated, startedAt};
}

// A board whose timers are named by the letters of `names`, in order.
Board lettered(const QString &names)
{
    Board board;
    for (QChar c : names)
        board.timers.append(item(QString(c)));
    return board;
}

QString letters(const Board &board)
{
    QString s;
    for (const TimerItem &t : board.timers)
        s += t.name;
    return s;
}

} // namespace

class BoardTest : public QObject {
    Q_OBJECT
private slots:
    void elapsed()
    {
        QCOMPARE(item("t", 12.5).elapsed(1000), 12.5);
        QCOMPARE(item("t", 10, 970.0).elapsed(1000), 40.0);
        QCOMPARE(item("t", 10, 2000.0).elapsed(1000), 10.0); // started after now
        QCOMPARE(item("t", 5e6).elapsed(1000), kMax);
        QCOMPARE(item("t", kMax - 1, 990.0).elapsed(1000), kMax);
    }

    void nextDefaultName_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << QStringList{} << "Timer 1";
        QTest::newRow("one and two") << QStringList{"Timer 1", "Timer 2"} << "Timer 3";
        QTest::newRow("counts from size") << QStringList{"A", "Timer 3"} << "Timer 4";
        QTest::newRow("gap not reused") << QStringList{"Timer 1", "Timer 3"} << "Timer 4";
        QTest::newRow("chain") << QStringList{"A", "Timer 5", "Timer 7", "Timer 6"} << "Timer 8";
        QTest::newRow("exact text only") << QStringList{"timer 2", "Timer 03", "Timer 3 "} << "Timer 4";
        QTest::newRow("huge number") << QStringList{"Timer 99999999999999999999999"} << "Timer 2";
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

    void add()
    {
        Board board = lettered("A");
        const TimerItem added = board.add();
        QCOMPARE(added, (TimerItem{added.id, "Timer 2", 0, {}}));
        QCOMPARE(added.id.version(), QUuid::Random);
        QCOMPARE(board.timers.last(), added);
        QCOMPARE(board.add(QStringLiteral(" a\nb ")).name, " a\nb "); // used as passed
    }

    void rename_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::newRow("line feed") << "a\nb" << "a b";
        QTest::newRow("CR LF is two") << "a\r\nb" << "a  b";
        QTest::newRow("other separators") << QStringLiteral("\u000Ba\u000Cb\u0085c\u2028d\u2029") << " a b c d ";
        QTest::newRow("rest kept") << " a\tb " << " a\tb ";
    }
    void rename()
    {
        QFETCH(QString, name);
        QFETCH(QString, expected);
        Board board = lettered("AB");
        board.rename(board.timers[1].id, name);
        QCOMPARE(board.timers[1].name, expected);
    }

    void unknownIdChangesNothing()
    {
        Board board(QList<TimerItem>{item("a", 5, 10.0)});
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
        Board board(QList<TimerItem>{item("a", 7)});
        const QUuid id = board.timers[0].id;
        board.toggle(id, 100);
        QCOMPARE(board.timers[0].startedAt, Start(100));
        board.toggle(id, 130);
        board.toggle(id, 200); // same instant twice: nothing gained
        board.toggle(id, 200);
        board.toggle(id, 300); // clock went backwards: nothing gained
        board.toggle(id, 250);
        QCOMPARE(board.timers[0], (TimerItem{id, "a", 37, {}}));
    }

    void toggleUncappedPauseAllCapped()
    {
        Board board(QList<TimerItem>{item("a", kMax - 10, 0.0), item("b", kMax - 10, 0.0), item("c", 5, 100.0), item("d", 3)});
        board.toggle(board.timers[0].id, 100);
        board.pauseAll(100);
        QCOMPARE(board.timers[0].accumulated, kMax + 90);
        QCOMPARE(board.timers[0].elapsed(100), kMax);
        QCOMPARE(board.timers[1].accumulated, kMax);
        QCOMPARE(board.timers[2].accumulated, 5.0);
        QCOMPARE(board.timers[3].accumulated, 3.0);
        QVERIFY(!board.anyRunning());
        board.pauseAll(150); // recorded even with nothing running
        QCOMPARE(board.pauseHistory, (QList<Instant>{100, 150}));
    }

    void setElapsedClampsAndKeepsRunning()
    {
        for (const auto &[seconds, stored] : {std::pair{125.5, 125.5}, {-5.0, 0.0}, {std::nan(""), 0.0}, {4e6, kMax}}) {
            Board board(QList<TimerItem>{item("a", 9), item("b", 9, 10.0)});
            board.setElapsed(board.timers[0].id, seconds, 50);
            board.setElapsed(board.timers[1].id, seconds, 50);
            QCOMPARE(board.timers[0], (TimerItem{board.timers[0].id, "a", stored, {}}));
            QCOMPARE(board.timers[1], (TimerItem{board.timers[1].id, "b", stored, 50.0}));
        }
    }

    void resetAndUndoWithoutPause()
    {
        Board board(QList<TimerItem>{item("a", 40, 100.0)});
        const TimerItem before = board.timers[0];
        const auto entry = board.reset(before.id, 150);
        QCOMPARE(entry, std::optional(UndoEntry::reset(before, 0)));
        QCOMPARE(board.timers[0], (TimerItem{before.id, "a", 0, {}}));
        QVERIFY(board.undo(*entry));
        QCOMPARE(board.timers[0], before); // runs on: the time since the reset counts
    }

    void undoSettlesOnFirstPauseAfterEntry()
    {
        Board board(QList<TimerItem>{item("a", 40), item("b", 10)});
        const QUuid id = board.timers[0].id;
        board.pauseAll(50); // before the entry: must not be used
        board.toggle(id, 100);
        board.toggle(board.timers[1].id, 100);
        const UndoEntry reset = *board.reset(id, 150);
        const UndoEntry removed = *board.remove(board.timers[1].id);
        board.pauseAll(170);
        board.pauseAll(400);
        QVERIFY(board.undo(reset));
        QVERIFY(board.undo(removed));
        QCOMPARE(board.timers[0], (TimerItem{id, "a", 110, {}}));
        QCOMPARE(board.timers[1], (TimerItem{removed.timer().id, "b", 80, {}}));
    }

    void undoResetKeepsLaterNameAndPlace()
    {
        Board board = lettered("ABC");
        const QUuid id = board.timers[0].id;
        board.setElapsed(id, 30, 0);
        const UndoEntry entry = *board.reset(id, 10);
        board.rename(id, "D");
        board.move({0}, 3);
        QVERIFY(board.undo(entry));
        QCOMPARE(letters(board), "BCD");
        QCOMPARE(board.timers[2].accumulated, 30.0);
        board.remove(id);
        QVERIFY(!board.undo(entry)); // gone since
    }

    void undoRemove_data()
    {
        QTest::addColumn<qint64>("index");
        QTest::addColumn<QString>("expected");
        QTest::newRow("in place") << qint64(1) << "AxB";
        QTest::newRow("beyond end appends") << qint64(7) << "ABx";
        QTest::newRow("negative goes first") << qint64(-3) << "xAB";
    }
    void undoRemove()
    {
        QFETCH(qint64, index);
        QFETCH(QString, expected);
        Board board = lettered("AxB");
        const TimerItem x = board.timers[1];
        QCOMPARE(board.remove(x.id), std::optional(UndoEntry::remove(x, 1, 0)));
        const UndoEntry entry = UndoEntry::remove(x, index, 0);
        QVERIFY(board.undo(entry));
        QCOMPARE(letters(board), expected);
        QVERIFY(!board.undo(entry)); // only once
        QCOMPARE(letters(board), expected);
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
        QTest::newRow("scattered to end") << L{0, 2} << qsizetype(4) << "BDAC";
        QTest::newRow("scattered to top") << L{3, 1} << qsizetype(0) << "BDAC";
        QTest::newRow("past the end") << L{0} << qsizetype(99) << "BCDA";
        QTest::newRow("negative") << L{2} << qsizetype(-5) << "CABD";
        QTest::newRow("nothing") << L{} << qsizetype(0) << "ABCD";
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

    void moveOutsideTheBoardStops()
    {
        for (const QString offset : {"2", "-1"}) {
            QProcess child; // main() below performs the bad move
            child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--bad-move"), offset});
            QVERIFY(child.waitForFinished(30000));
            QCOMPARE(child.exitStatus(), QProcess::CrashExit);
            QVERIFY(child.readAllStandardError().contains("tock: fatal: move offset outside the board"));
        }
    }

    void commit_data()
    {
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<bool>("result");
        QTest::addColumn<double>("accumulated");
        QTest::addColumn<double>("startedAt");
        QTest::newRow("invalid minutes") << QStringList{"0", "60", "0"} << false << 3725.0 << 100.0;
        QTest::newRow("untouched: not restarted") << QStringList{"1", "2", "05"} << true << 3725.0 << 100.0;
        QTest::newRow("empty is zero") << QStringList{"", "", ""} << true << 0.0 << 500.0;
        QTest::newRow("changed") << QStringList{"999", "59", "59"} << true << kMax << 500.0;
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
        std::copy(texts.cbegin(), texts.cend(), draft.texts.begin());
        QCOMPARE(board.commit(draft, id, 500), result);
        QCOMPARE(board.timers[0], (TimerItem{id, "a", accumulated, startedAt}));
        QCOMPARE(Board().commit(draft, id, 500), result); // an unknown id does not matter
    }

    void undoEntryTexts()
    {
        const TimerItem focus = item("Focus");
        QCOMPARE(UndoEntry::reset(focus, 0).actionName(), "Reset Timer");
        QCOMPARE(UndoEntry::remove(focus, 0, 0).actionName(), "Delete Timer");
        QCOMPARE(UndoEntry::reset(focus, 0).message(), QStringLiteral("Reset \u201CFocus\u201D"));
        QCOMPARE(UndoEntry::remove(focus, 0, 0).message(), QStringLiteral("Deleted \u201CFocus\u201D"));
        QCOMPARE(UndoEntry::reset(item(""), 0).message(), QStringLiteral("Reset \u201CUntitled\u201D"));
        QCOMPARE(UndoEntry::remove(item("  "), 0, 0).message(), QStringLiteral("Deleted \u201C  \u201D"));
        QVERIFY(UndoEntry::reset(focus, 1) != UndoEntry::reset(focus, 2));
        QVERIFY(UndoEntry::remove(focus, 0, 1) != UndoEntry::remove(focus, 0, 2));
    }
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--bad-move") == 0) { // expected to stop the program
        Board board = lettered("AB");
        board.move({QByteArray(argv[2]).toLongLong()}, 0);
        return 0;
    }
    QCoreApplication app(argc, argv);
    BoardTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "board_test.moc"

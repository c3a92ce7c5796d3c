// The timer model: the board, its undo entries, the difference of two boards and the style
// identifiers.
#include "board.h"
#include "boardchange.h"
#include "boardchangetext.h"
#include "styleid.h"
#include "table.h"

#include <QHash>
#include <QTest>

#include <cmath>

using namespace tock;

namespace {

constexpr double kMax = HMS::maxSeconds;

TimerItem item(const QString &name, double accumulated = 0, std::optional<Instant> startedAt = {})
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
    void addAndName()
    {
        const QList<std::pair<QStringList, QString>> rows{
            {{}, "Timer 1"},
            {{"A", "Timer 3"}, "Timer 4"}, // counts from the number of timers
            {{"Timer 1", "Timer 3"}, "Timer 4"}, // a gap is not reused
            {{"timer 4", "Timer 04", "Timer 4 "}, "Timer 4"}, // only the exact text counts
            {{"Timer 99999999999999999999999"}, "Timer 2"},
        };
        for (const auto &[names, expected] : rows) {
            Board board;
            for (const QString &name : names)
                board.add(name);
            QCOMPARE(names.join(u',') + " -> " + board.nextDefaultName(), names.join(u',') + " -> " + expected);
        }
        Board board = lettered("A");
        const TimerItem added = board.add();
        QCOMPARE(added, (TimerItem{added.id, "Timer 2", 0, {}}));
        QCOMPARE(board.timers.last(), added);
        QCOMPARE(board.add(QStringLiteral(" a\nb ")).name, " a\nb "); // used as passed
        board.rename(added.id, QStringLiteral("\u000Ba\r\nb\u000C\u0085c\u2028d\u2029\t"));
        QCOMPARE(board.timers[1].name, " a  b  c d \t"); // each newline character is one space
    }

    void toggleUncappedPauseAllCapped()
    {
        Board board(QList<TimerItem>{item("a", kMax - 10), item("b", kMax - 10, 0.0), item("c", 5, 100.0),
                                     item("d", 3)});
        const QUuid id = board.timers[0].id;
        for (const Instant now : {0, 1, 5, 5, 9, 8, 2, 100}) // same instant twice, then backwards: nothing gained
            board.toggle(id, now);
        board.pauseAll(100);
        QCOMPARE(board.timers[0].accumulated, kMax + 89);
        QCOMPARE(board.timers[0].elapsed(100), kMax);
        QCOMPARE(board.timers[1].accumulated, kMax);
        QCOMPARE(board.timers[2].accumulated, 5.0);
        QCOMPARE(board.timers[3].accumulated, 3.0);
        QVERIFY(!board.anyRunning());
        board.pauseAll(150); // recorded even with nothing running
        QCOMPARE(board.pauseHistory, (QList<Instant>{100, 150}));
        QCOMPARE(item("t", 10, 970.0).elapsed(1000), 40.0);
        QCOMPARE(item("t", 10, 2000.0).elapsed(1000), 10.0); // started after now
        QCOMPARE(item("t", kMax - 1, 990.0).elapsed(1000), kMax);
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

    void undoSettlesOnFirstPauseAfterEntry()
    {
        Board board(QList<TimerItem>{item("a", 40), item("b", 10)});
        const QUuid id = board.timers[0].id;
        board.pauseAll(50); // before the entry: must not be used
        board.toggle(id, 100);
        board.toggle(board.timers[1].id, 100);
        const UndoEntry reset = *board.reset(id);
        const UndoEntry removed = *board.remove(board.timers[1].id);
        board.pauseAll(170);
        QVERIFY(board.undo(reset)); // one pause since
        board.pauseAll(400);
        QVERIFY(board.undo(removed)); // the first of two pauses since counts
        QCOMPARE(board.timers[0], (TimerItem{id, "a", 110, {}}));
        QCOMPARE(board.timers[1], (TimerItem{removed.timer().id, "b", 80, {}}));
    }

    void undoResetKeepsLaterNameAndPlace()
    {
        Board board = lettered("ABC");
        board.timers[0] = {board.timers[0].id, "A", 40, 100.0};
        const TimerItem before = board.timers[0];
        const auto entry = board.reset(before.id);
        QCOMPARE(entry, std::optional(UndoEntry::reset(before, 0)));
        QCOMPARE(board.timers[0], (TimerItem{before.id, "A", 0, {}}));
        board.rename(before.id, "D");
        board.move(0, 2);
        QVERIFY(board.undo(*entry));
        QCOMPARE(board.timers[2], (TimerItem{before.id, "D", 40, 100.0})); // runs on: no pause since
        QCOMPARE(letters(board), "BCD");
        board.remove(before.id);
        QVERIFY(!board.undo(*entry)); // gone since
    }

    void undoRemove()
    {
        for (const auto &[index, expected] : {std::pair<qint64, QString>{1, "AxB"}, {7, "ABx"}, {-3, "xAB"}}) {
            Board board = lettered("AxB");
            const TimerItem x = board.timers[1];
            QCOMPARE(board.remove(x.id), std::optional(UndoEntry::remove(x, 1, 0)));
            const UndoEntry entry = UndoEntry::remove(x, index, 0);
            QVERIFY(board.undo(entry));
            QVERIFY(!board.undo(entry)); // only once
            QCOMPARE(letters(board), expected);
        }
    }

    // An invalid draft is refused; an unchanged one leaves a running timer alone.
    void commit()
    {
        const QList<std::tuple<QStringList, bool, double, double>> rows{
            {{"0", "60", "0"}, false, 3725, 100},
            {{"1", "2", "05"}, true, 3725, 100},
            {{"", "", ""}, true, 0, 500},
            {{"999", "59", "59"}, true, kMax, 500},
        };
        for (const auto &[texts, result, accumulated, startedAt] : rows) {
            Board board(QList<TimerItem>{item("a", 3725, 100.0)});
            const QUuid id = board.timers[0].id;
            TimeEditDraft draft(3725);
            std::copy(texts.cbegin(), texts.cend(), draft.texts.begin());
            QCOMPARE(board.commit(draft, id, 500), result);
            QCOMPARE(board.timers[0], (TimerItem{id, "a", accumulated, startedAt}));
            QCOMPARE(Board().commit(draft, id, 500), result); // an unknown id does not matter
        }
    }

    void texts()
    {
        QCOMPARE(UndoEntry::reset(item(""), 0).message(), QStringLiteral("Reset \u201CUntitled\u201D"));
        QCOMPARE(UndoEntry::remove(item("  "), 0, 0).message(), QStringLiteral("Deleted \u201C  \u201D"));
        // The data file's identifiers read back, and nothing else reads as one.
        for (const StyleID style : StyleIDs::allCases())
            QCOMPARE(StyleIDs::fromRawValue(StyleIDs::rawValue(style)), style);
        for (const QString raw : {"", "Classic", "Neo Classic", "classic "})
            QCOMPARE(StyleIDs::fromRawValue(raw), std::nullopt);
    }

    // Fewest moves: a timer that only slid along is not reported.
    void boardChangeBetween_data()
    {
        table<QString, QString, QString>({"before", "after", "change"}, {
            {"ABCD", "ABCD", ""},
            {"ABCD", "BCDA", "A:0>3"},
            {"ABCD", "DABC", "D:3>0"},
            {"ABCD", "BADC", "B:1>0 D:3>2"},
            {"ABC", "CBA", "C:2>0 B:1>1"}, // B keeps its index but not its order
            {"ABC", "AXC", "+X@1 -B"},
            {"ABCD", "DBC", "-A D:3>0"},
            {"AB", "", "-A -B"},
            {"AB", "Ab", "~b"}, // a lower-case letter: the same timer renamed
        });
    }

    void boardChangeBetween()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QHash<QChar, QUuid> ids; // one timer per letter, whatever its case
        const auto board = [&](const QString &letters) {
            Board b;
            for (const QChar c : letters) {
                const QChar key = c.toUpper();
                if (!ids.contains(key))
                    ids.insert(key, QUuid::createUuid());
                b.timers << TimerItem{ids.value(key), QString(c), 0, {}};
            }
            return b;
        };
        const Board old = board(before);
        const Board now = board(after);
        const BoardChange change = BoardChange::between(old, now);
        QTEST(describe(change, old, now), "change");
        QCOMPARE(change.isEmpty(), before == after);
    }
};

QTEST_GUILESS_MAIN(BoardTest)
#include "board_test.moc"

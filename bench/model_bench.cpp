// The timer model's hot paths: formatting and the display rule run on every redraw of every
// visible timer; the board operations are linear in the number of timers.
#include "board.h"

#include <QTest>

using namespace tock;

namespace {

// Timers named "Timer 1" ... "Timer n", every one running (the worst case for pauseAll and for
// nextDefaultName, which must look at every name).
Board runningBoard(qsizetype n)
{
    Board board;
    board.timers.reserve(n);
    for (qsizetype i = 1; i <= n; ++i)
        board.timers.append(TimerItem{QUuid::createUuid(), QStringLiteral("Timer %1").arg(i), double(i), 1000.0});
    return board;
}

void addSizes()
{
    QTest::addColumn<qsizetype>("size");
    for (qsizetype n : {qsizetype(10), qsizetype(1000), qsizetype(100000)})
        QTest::addRow("%lld timers", static_cast<long long>(n)) << n;
}

} // namespace

class ModelBench : public QObject {
    Q_OBJECT
private slots:
    void timeFormat_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::newRow("short") << 59.9;
        QTest::newRow("three-digit hours") << 3599999.0;
    }
    void timeFormat()
    {
        QFETCH(double, seconds);
        qsizetype length = 0;
        QBENCHMARK {
            length += TimeFormat::string(seconds).size();
        }
        QVERIFY(length > 0);
    }

    void displayClockAdvance()
    {
        int64_t shown = 0;
        int64_t exact = 0;
        QBENCHMARK {
            exact += 1 + (exact & 3); // a mix of steps, catch-ups and jumps
            shown = DisplayClock::advance(shown, exact);
        }
        QVERIFY(shown > 0);
    }

    void toggle_data() { addSizes(); }
    void toggle()
    {
        QFETCH(qsizetype, size);
        Board board = runningBoard(size);
        const QUuid last = board.timers.last().id; // found by the longest scan
        Instant now = 2000;
        QBENCHMARK {
            board.toggle(last, now += 1);
        }
    }

    // Each round restores every timer to running from a shared copy, so the figure includes
    // copying the board (compare boardCopy).
    void pauseAll_data() { addSizes(); }
    void pauseAll()
    {
        QFETCH(qsizetype, size);
        const Board running = runningBoard(size);
        QBENCHMARK {
            Board board = running;
            board.pauseAll(2000);
        }
    }

    void boardCopy_data() { addSizes(); }
    void boardCopy()
    {
        QFETCH(qsizetype, size);
        const Board running = runningBoard(size);
        QBENCHMARK {
            Board board = running;
            board.timers.detach();
        }
    }

    void move_data() { addSizes(); }
    void move()
    {
        QFETCH(qsizetype, size);
        Board board = runningBoard(size);
        QBENCHMARK {
            board.move(0, size - 1); // top to bottom
        }
    }

    void nextDefaultName_data() { addSizes(); }
    void nextDefaultName()
    {
        QFETCH(qsizetype, size);
        const Board board = runningBoard(size);
        QString name;
        QBENCHMARK {
            name = board.nextDefaultName();
        }
        QCOMPARE(name, QStringLiteral("Timer %1").arg(size + 1));
    }

    void resetAndUndo_data() { addSizes(); }
    void resetAndUndo()
    {
        QFETCH(qsizetype, size);
        Board board = runningBoard(size);
        const QUuid last = board.timers.last().id;
        QBENCHMARK {
            const std::optional<UndoEntry> entry = board.reset(last);
            board.undo(*entry);
        }
        QVERIFY(board.timers.last().isRunning());
    }
};

QTEST_APPLESS_MAIN(ModelBench)
#include "model_bench.moc"

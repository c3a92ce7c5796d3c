// Scroll sequences, with and without phases, turned into swipes: reveal, snap back, delete,
// momentum swallowed after a swipe, vertical scrolls left alone; and real wheel events on a
// window, where a swallowed scroll never reaches the views.
#include "gesturerouter.h"
#include "modelfixture.h"
#include "table.h"

#include <QtTest>

using namespace tock;

namespace {

// Counts the scrolls that got through to the views.
class Sink : public QWidget {
public:
    int wheels = 0;

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        ++wheels;
        event->accept();
    }
};

using Phase = GestureRouter::Phase;

} // namespace

class GestureRouterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sequences_data()
    {
        // Setup: "hover N" or "reveal N" (then nothing hovered). Events: b began, u:x,y changed,
        // n:x,y changed with natural scrolling, e ended, m:x,y momentum, w:x,y phaseless, gap =
        // the phaseless burst timed out. Then the scrolls swallowed, the timers left and the
        // revealed row (-1: none).
        table<QString, QString, QString, int, int, int>({"case", "setup", "events", "swallowed", "timers", "revealed"}, {
            // A 300-point row at zoom 1: past -36 reveals, past -150 deletes (the thresholds
            // themselves are appmodel_test's).
            {"reveal", "hover 0", "b u:20,0 u:30,0 e", 3, 3, 0},
            {"past half deletes", "hover 1", "b u:100,0 u:60,0 e", 3, 2, -1},
            {"rightwards never moves", "hover 0", "b u:-80,0 e", 2, 3, -1},
            {"natural scrolling", "hover 0", "b n:-50,0 e", 2, 3, 0},
            {"vertical passes", "hover 0", "b u:0,20 u:60,0 e", 0, 3, -1},
            {"diagonal at the ratio is vertical", "hover 0", "b u:6,5 u:60,0 e", 0, 3, -1},
            {"just wider is horizontal", "hover 0", "b u:6.1,5 u:60,0 e", 3, 3, 0},
            {"small moves wait for an axis", "hover 0", "b u:2,0 u:2,0 u:40,0 e", 2, 3, 0},
            {"nothing hovered, nothing swiped", "", "b u:80,0 e", 0, 3, -1},
            {"revealed row is the target", "reveal 2", "b u:100,0 e", 2, 2, -1},
            {"momentum after a swipe is swallowed", "hover 0", "b u:50,0 e m:300,0 m:300,0 e", 5, 3, 0},
            {"momentum after a scroll passes", "hover 0", "b u:0,50 e m:0,30 e", 0, 3, -1},
            {"coasting ends the swipe", "hover 0", "b u:50,0 u:0,0 m:300,0 e", 4, 3, 0},
            {"burst reveals", "hover 0", "w:60,0 gap", 1, 3, 0},
            {"vertical burst passes", "hover 0", "w:0,30 w:0,30 gap", 0, 3, -1},
            {"second burst goes on from the reveal", "hover 0", "w:40,0 gap w:70,0 gap", 2, 2, -1},
            {"each burst decides its axis", "hover 0", "w:0,30 gap w:50,0 gap", 1, 3, 0},
        });
    }

    void sequences()
    {
        QFETCH(QString, setup);
        QFETCH(QString, events);
        QFETCH(int, revealed);

        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        const QStringList words = setup.split(' ');
        if (words.first() == "reveal") {
            f.swipeRow(words.at(1).toInt(), -50);
            QCOMPARE(m.revealedID(), f.id(words.at(1).toInt()));
        }
        if (words.first() == "hover")
            m.setHoveredID(f.id(words.at(1).toInt()));
        const QList<QUuid> ids = {f.id(0), f.id(1), f.id(2)};

        GestureRouter router(&m);
        router.setRowWidth([] { return 300.0; });
        int took = 0;
        for (const QString &word : events.split(' ')) {
            if (word == "gap") {
                router.endBurst();
                continue;
            }
            GestureRouter::Scroll s;
            const QStringList xy = word.mid(2).split(',');
            if (xy.size() == 2)
                s.delta = QPointF(xy.at(0).toDouble(), xy.at(1).toDouble());
            const QChar kind = word.at(0);
            s.phase = kind == 'b' ? Phase::began
                    : kind == 'e' ? Phase::ended
                    : kind == 'm' ? Phase::momentum
                    : kind == 'w' ? Phase::none
                                  : Phase::changed;
            s.inverted = kind == 'n';
            took += router.handleScroll(s) ? 1 : 0;
        }
        f.advance(1); // the slide-out before a deletion
        QTEST(took, "swallowed");
        QTEST(int(f.count()), "timers");
        QCOMPARE(m.revealedID(), revealed < 0 ? std::optional<QUuid>() : std::optional<QUuid>(ids.at(revealed)));
        QVERIFY(!m.swipeID());
    }

    // Real wheel events sent to the window: a swiping scroll is swallowed, a vertical one reaches
    // the views; a phaseless burst ends on its own timer; undo brings a swiped-away row back.
    void wheelEventsOnWindow()
    {
        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        Sink window;
        window.resize(300, 200);
        GestureRouter router(&m);
        router.setRowWidth([] { return 300.0; });
        router.attach(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QWindow *handle = window.windowHandle();
        const QPointF at(50, 50);
        const auto send = [&](Qt::ScrollPhase phase, QPoint pixels, QPoint angle = {}) {
            QWheelEvent event(at, window.mapToGlobal(at), pixels, angle, Qt::NoButton, Qt::NoModifier, phase, false);
            QCoreApplication::sendEvent(handle, &event);
        };

        m.setHoveredID(f.id(0));
        const QString name = f.timer(0).name;
        send(Qt::ScrollBegin, {});
        send(Qt::ScrollUpdate, {200, 0});
        send(Qt::ScrollEnd, {});
        QCOMPARE(window.wheels, 1); // only the beginning got through
        f.advance(1);
        QCOMPARE(f.count(), qsizetype(2));
        m.undoManager().undo();
        QCOMPARE(f.count(), qsizetype(3));
        QCOMPARE(f.timer(0).name, name);

        window.wheels = 0;
        send(Qt::ScrollBegin, {});
        send(Qt::ScrollUpdate, {0, 40});
        send(Qt::ScrollEnd, {});
        QCOMPARE(window.wheels, 3);

        // A tilted wheel: two notches to the left, then the burst times out by itself.
        window.wheels = 0;
        m.setHoveredID(f.id(1));
        send(Qt::NoScrollPhase, {}, {120, 0});
        send(Qt::NoScrollPhase, {}, {120, 0});
        QCOMPARE(window.wheels, 0);
        QVERIFY(router.inBurst());
        QTRY_VERIFY_WITH_TIMEOUT(!router.inBurst(), 2000);
        QCOMPARE(m.revealedID(), f.id(1));
    }
};

QTEST_MAIN(GestureRouterTest)
#include "gesturerouter_test.moc"

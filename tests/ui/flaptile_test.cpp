// Split-flap tiles in virtual time: how long a flip lasts, when it settles and on what, that
// nothing animates without a change, that a vanished tile is left alone, and that a flip repaints
// only its own tile.
#include "flapclock.h"
#include "flaptext.h"
#include "flaptile.h"
#include "table.h"

#include <QPaintEvent>
#include <QTest>

#include <memory>

using namespace tock;

namespace {

// A clock whose time moves only when the test says so.
struct VirtualFlap {
    double t = 100;
    FlapClock clock{[this] { return t; }, 0.12};

    // Moves to `at` and runs the frame the timer would run there.
    void frameAt(double at)
    {
        t = at;
        clock.advance();
    }
};

// Collects the rectangles a widget is asked to repaint.
class PaintLog : public QObject {
public:
    QRegion painted;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            painted += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

} // namespace

class FlapTileTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void flipTimeFollowsTheSlowdown_data()
    {
        table<QString, double>({"env", "expected"},
                               {{"abc", 0.12}, {"", 0.12}, {"2.5", 0.3}, {" 10 ", 1.2}, {"-1", 0.12}, {"inf", 0.12}});
    }
    void flipTimeFollowsTheSlowdown()
    {
        QFETCH(QString, env);
        QTEST(flipTimeFor(env), "expected");
        QCOMPARE(flipTimeFor(std::nullopt), 0.12);
    }

    // The tile rests on the new character exactly 2 × flip time + 0.03 s after the last change:
    // a second change during a flip wins, even when it goes back to where the tile started
    // ("": none, 0.1 s after the first).
    void settlesAtTwoFlipTimesAndAMoment_data()
    {
        table<QString, double, QChar, QString>({"case", "halfFlip", "first", "second"}, {
            {"one change", 0.12, u'6', ""},
            {"slowed down", 0.3, u'6', ""},
            {"a second change wins", 0.12, u'6', "7"},
            {"going back wins", 0.12, u'6', "5"},
        });
    }
    void settlesAtTwoFlipTimesAndAMoment()
    {
        QFETCH(double, halfFlip);
        QFETCH(QChar, first);
        QFETCH(QString, second);
        double t = 50;
        FlapClock clock([&t] { return t; }, halfFlip);
        QWidget host;
        host.show();
        FlapTile tile(&clock, &host);
        tile.setGeometry(QRectF(0, 0, 20, 30));
        tile.setResting(QLatin1Char('5'));
        const int token = tile.flipToken();
        tile.show(QLatin1Char('5')); // the shown character again starts nothing
        QVERIFY(!tile.isFlipping() && !clock.isRunning());
        QCOMPARE(tile.flipToken(), token);

        tile.show(first);
        QVERIFY(clock.isRunning());
        const QChar last = second.isEmpty() ? first : second.at(0);
        if (!second.isEmpty()) {
            t += 0.1;
            clock.advance();
            tile.show(last);
        }
        t += 2 * halfFlip + 0.03 - 0.001;
        clock.advance();
        QVERIFY(tile.isFlipping());
        QCOMPARE(tile.shown(), QLatin1Char('5')); // where it last rested
        QCOMPARE(tile.target(), last);
        t += 0.001 + 1e-9;
        clock.advance();
        QVERIFY(!tile.isFlipping());
        QCOMPARE(tile.shown(), last);
        QVERIFY(!clock.isRunning());
    }

    // Only characters that change flip; the same text starts nothing at all, and a text of
    // another shape is shown at once.
    void onlyChangedCharactersFlip_data()
    {
        table<QString, QString, int>({"before", "after", "flipping"}, {
            {"01:23:45", "01:23:45", 0},
            {"01:23:45", "01:23:46", 1},
            {"01:23:59", "01:24:00", 3},
            {"99:59:59", "100:00:00", 0}, // hours grow a digit
        });
    }
    void onlyChangedCharactersFlip()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(int, flipping);
        VirtualFlap v;
        FlapText text(&v.clock);
        text.show();
        text.setText(before);
        QVERIFY(!v.clock.isRunning());

        text.setText(after);
        QCOMPARE(v.clock.flippingCount(), flipping);
        QCOMPARE(v.clock.isRunning(), flipping > 0);
        QString targets;
        for (int i = 0; i < text.tileCount(); ++i)
            targets += text.tile(i)->target();
        QCOMPARE(targets, QString(after).remove(QLatin1Char(':')));
    }

    // Whatever goes first, the rest must not touch it; under the address sanitizer any touch
    // is a failure.
    void aTileGoneMidFlipIsLeftAlone_data()
    {
        table<QString>({"gone"}, {{"tile"}, {"text"}, {"clock"}});
    }
    void aTileGoneMidFlipIsLeftAlone()
    {
        QFETCH(QString, gone);
        double t = 0;
        auto clock = std::make_unique<FlapClock>([&t] { return t; }, 0.12);
        auto text = std::make_unique<FlapText>(clock.get());
        text->show();
        text->setText(QStringLiteral("12"));
        QWidget host;
        host.show();
        auto tile = std::make_unique<FlapTile>(clock.get(), &host);
        tile->setGeometry(QRectF(0, 0, 20, 30));
        text->setText(QStringLiteral("34"));
        tile->show(QLatin1Char('9'));
        t = 0.1;
        clock->advance();
        QCOMPARE(clock->flippingCount(), 3);

        if (gone == "clock") {
            clock.reset();
            tile->show(QLatin1Char('8'));
            text->setText(QStringLiteral("56"));
            QCOMPARE(tile->target(), QLatin1Char('8'));
            return; // the tile and the row are destroyed after their clock
        }
        if (gone == "tile")
            tile.reset();
        else
            text.reset();
        QCOMPARE(clock->flippingCount(), gone == "tile" ? 2 : 1);
        t = 1;
        clock->advance();
        QCOMPARE(clock->flippingCount(), 0);
        QVERIFY(!clock->isRunning());
    }

    // A flip frame asks for the flipping tile's rectangle (leaves' overhang included), not
    // the whole row.
    void aFlipRepaintsOnlyItsTile()
    {
        VirtualFlap v;
        QWidget window;
        auto *text = new FlapText(&v.clock, &window);
        text->setText(QStringLiteral("00:00"));
        window.resize(text->sizeHint());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        PaintLog log;
        text->installEventFilter(&log);

        text->setText(QStringLiteral("00:01"));
        v.frameAt(100.05);
        QTRY_VERIFY(!log.painted.isEmpty());
        const QRect flipping = text->tile(3)->paintRect();
        QCOMPARE(log.painted.boundingRect().united(flipping), flipping);
    }

    // The real clock's timer drives a flip to its end and then stops: an idle row costs nothing.
    void theRealClockStopsWhenTheFlipsAreOver()
    {
        FlapClock clock;
        FlapText text(&clock);
        text.show();
        text.setText(QStringLiteral("1"));
        text.setText(QStringLiteral("2"));
        QVERIFY(clock.isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(!text.tile(0)->isFlipping(), 5000);
        QVERIFY(!clock.isRunning());
        QCOMPARE(text.tile(0)->shown(), QLatin1Char('2'));
    }
};

QTEST_MAIN(FlapTileTest)
#include "flaptile_test.moc"

// The one animation clock behind every split-flap flip of a window: a single frame timer that
// runs only while some tile is flipping, repaints just the flipping tiles and settles each flip
// when it is over. Its time source is injectable so tests move time by hand.
#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>
#include <vector>

namespace tock {

class FlapTile;

// What the clock drives through a flip: a tile, which repaints its rectangle and rests on its
// new character when the flip holding `token` is over.
class Flipping {
public:
    virtual void repaint() const = 0;
    virtual void settle(int token, bool endShown) = 0;

protected:
    ~Flipping() = default;
};

// How long each half of a flip lasts: 0.12 s, times the number in TOCK_FLIP_SLOWDOWN when it is
// set to a finite, non-negative number (`env` is that variable, absent when unset).
double flipTimeFor(const std::optional<QString> &env);
// flipTimeFor() of this process's environment, read once.
double flipTime();

// Seconds on any monotonic scale; only differences matter.
using FlapTimeSource = std::function<double()>;

class FlapClock final : public QObject {
    Q_OBJECT
public:
    // Real time and the process's flip time.
    explicit FlapClock(QObject *parent = nullptr);
    FlapClock(FlapTimeSource now, double halfFlip, QObject *parent = nullptr);

    double now() const { return now_(); }
    double halfFlip() const { return halfFlip_; }
    // From a flip's start until the tile rests on its new character.
    double settleDelay() const { return 2 * halfFlip_ + 0.03; }

    // True while the frame timer is armed, i.e. while some flip has not settled yet.
    bool isRunning() const { return timer_.isActive(); }
    int flippingCount() const { return int(flips_.size()); }

    // One frame at now(): settles the flips that are over, repaints the others and re-arms the
    // timer, or leaves it stopped when nothing flips. The timer calls it; tests call it after
    // moving their time source.
    void advance();

private:
    friend class FlapTile;
    // A tile started flip `token` at `start`; replaces the tile's earlier flip, if any.
    void track(Flipping *tile, int token, double start);
    // The tile is going away or resting: never touch it again.
    void forget(const Flipping *tile);
    void arm(double wait);

    struct Flip {
        Flipping *tile;
        int token;
        double start;
        bool endPainted; // the last frame of the motion has been asked for; only the settle is left
    };

    FlapTimeSource now_;
    double halfFlip_;
    std::vector<Flip> flips_;
    QTimer timer_;
};

} // namespace tock

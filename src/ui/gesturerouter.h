// Turns the window's scroll events into row swipes: a sideways two-finger scroll (or a tilted
// wheel) over a row drags it left, reveals its delete button or deletes it; vertical scrolls
// pass on to the list. Devices that report no scroll phases send bursts of wheel events; a burst
// counts as one gesture that ends when no event has come for a short while.
#pragma once

#include <QObject>
#include <QPointF>
#include <QUuid>

#include <functional>
#include <optional>

class QTimer;
class QWheelEvent;
class QWidget;

namespace tock {

class AppModel;

class GestureRouter : public QObject {
    Q_OBJECT
public:
    // A burst of phaseless wheel events ends this long after its last event.
    static constexpr int burstGapMs = 150;
    // How far one wheel notch (120 units of angle) drags a row, in points.
    static constexpr double pointsPerNotch = 30;
    // Travel before a gesture commits to an axis, and how much wider than tall it must be.
    static constexpr double axisThreshold = 4.0;
    static constexpr double horizontalRatio = 1.2;

    enum class Phase { none, began, changed, ended, momentum };
    // One scroll event as the router sees it; `delta` in points, the way the device reports it.
    struct Scroll {
        Phase phase = Phase::none;
        QPointF delta;
        bool inverted = false; // natural scrolling
    };
    enum class Axis { undecided, horizontal, vertical };

    // `rowWidth` gives the width a swiped row is measured against (default: the content width
    // less the current theme's row inset on both sides). Not attached to any window yet.
    explicit GestureRouter(AppModel *model, QObject *parent = nullptr);
    void setRowWidth(std::function<double()> rowWidth);
    // Watches the scroll events `window` receives; they reach the views only if not swallowed.
    void attach(QWidget *window);

    // Handles one event; true when it is swallowed.
    bool handleScroll(const Scroll &scroll);
    bool handleWheel(const QWheelEvent &event);
    // A phaseless burst is over (the burst timer calls this).
    void endBurst();

    Axis axis() const { return axis_; }
    bool inBurst() const { return inBurst_; }
    static Scroll scrollOf(const QWheelEvent &event);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void begin();
    bool change(double dx, double dy);
    bool end();
    double dxOf(const Scroll &scroll) const;

    AppModel *model_;
    std::function<double()> rowWidth_;
    QTimer *burst_;
    QObject *watched_ = nullptr;

    Axis axis_ = Axis::undecided;
    QPointF accum_;
    std::optional<QUuid> target_;
    bool swallowMomentum_ = false;
    bool inMomentum_ = false; // momentum events have started since the fingers lifted
    bool inBurst_ = false;
};

} // namespace tock

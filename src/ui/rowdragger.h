// Rows under the mouse: dragging one left swipes it (as a sideways scroll does), dragging it up
// or down carries it to another place while the other rows make room, and a press anywhere but
// on the revealed row closes its delete button. Works on the platform window's mouse events
// before any view sees them, so a drag never turns into a click on a button it started on.
#pragma once

#include <QMouseEvent>
#include <QObject>
#include <QPointF>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

class QWidget;
class QWindow;

namespace tock {

class AppModel;
class RowList;

class RowDragger : public QObject {
    Q_OBJECT
public:
    enum class State { idle, pressed, swiping, reordering, ignoring };

    // `rowWidth` is what a swipe is measured against, as for scrolls.
    RowDragger(AppModel *model, RowList *list, std::function<double()> rowWidth, QObject *parent = nullptr);
    // Watches `window`'s platform window (the list's top-level widget).
    void attach(QWidget *window);

    State state() const { return state_; }
    // Where a reordering row would land now, as a board position.
    qsizetype target() const { return target_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // True when the press should wait for the release (it landed on a name).
    bool press(const QPointF &at);
    bool move(const QPointF &at);
    bool release();
    void placeRows(double dy);
    // Lets the view that took the press see it end off its area, so it neither clicks nor
    // stays pressed.
    void cancelPress(const QMouseEvent &release);
    QPointF inList(const QPointF &windowPos) const;
    std::optional<QUuid> rowAt(const QPointF &listPos) const;

    AppModel *model_;
    RowList *list_;
    std::function<double()> rowWidth_;
    QWidget *window_ = nullptr;
    QWindow *handle_ = nullptr;
    bool replaying_ = false;
    std::unique_ptr<QMouseEvent> deferred_; // a press held back until it proves to be a click

    State state_ = State::idle;
    QUuid id_;
    QPointF start_;   // in the list, zoomed pixels
    double swiped_ = 0; // pixels already passed to the model
    qsizetype from_ = 0;
    qsizetype target_ = 0;
};

} // namespace tock

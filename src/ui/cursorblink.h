// The blink phase of a drawn text cursor. It runs a timer only while blinking is wanted, so a
// window whose cursor is steady, unfocused or inactive never wakes up for it.
#pragma once

#include <QBasicTimer>
#include <QObject>

namespace tock {

class CursorBlink : public QObject {
    Q_OBJECT
public:
    static constexpr int halfPeriodMs = 530;

    explicit CursorBlink(QObject *parent = nullptr);

    // The owner decides from its theme, focus and window state; off also shows the cursor.
    void setBlinking(bool on);
    bool isBlinking() const { return timer_.isActive(); }
    // Whether the cursor is drawn in the current phase.
    bool isShown() const { return shown_; }
    // Shows the cursor and starts a fresh period, so typing never lands in a dark phase.
    void restart();

Q_SIGNALS:
    void shownChanged();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void setShown(bool shown);

    QBasicTimer timer_;
    bool shown_ = true;
};

} // namespace tock

#pragma once
// Ctrl-C, a closed terminal, logging out or a polite kill (SIGINT, SIGHUP, SIGTERM) end a run the
// normal way, timers paused and the board saved, instead of losing the last seconds. The handler
// only writes a byte to a socket that the event loop watches; `onSignal` runs there.

#include <QObject>

#include <csignal>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace tock {

class EndingSignals {
public:
    // Installs the handlers for this object's lifetime; `onSignal` runs in `context`'s thread.
    EndingSignals(QObject *context, std::function<void()> onSignal);
    ~EndingSignals();
    EndingSignals(const EndingSignals &) = delete;
    EndingSignals &operator=(const EndingSignals &) = delete;

private:
    static void handle(int);
    static inline volatile std::sig_atomic_t writeEnd_ = -1;
    int fds_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace tock

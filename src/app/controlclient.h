// The asking end of the control socket, for a second copy of Tock: synchronous calls with a
// deadline, usable without an event loop, on plain sockets so a terminal loads nothing beyond Qt
// Core. Every call first checks that a window answers at all, so when none does within the time
// given nothing has been sent that could change anything.
#pragma once

#include "controlsocket.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace tock {

class ControlClient {
public:
    using Reply = ControlReply;

    static constexpr int answerMs = 2000;
    // Once a window has answered, how long one line may take before the window is given up.
    static constexpr int lineMs = 10000;

    // True when a window at `path` answers.
    static bool ping(const QString &path, int timeoutMs = answerMs);
    // The window's answer to "come to the front" (false: it cannot raise itself); absent when
    // no window answers within `timeoutMs`. `tokens` let the window take the focus.
    static std::optional<bool> raise(const QString &path, int timeoutMs = answerMs, const ActivationTokens &tokens = {});
    // Has the window run each line in turn, stopping after the line that was `exit`. Absent
    // when no window answers within `timeoutMs`; nothing has run then. If the window stops
    // answering or refuses a line later on, the last reply is a failed error saying so.
    static std::optional<QList<Reply>> run(const QString &path, const QStringList &lines, int timeoutMs = answerMs);
};

} // namespace tock

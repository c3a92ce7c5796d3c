// The desktop start: checks that a display exists, runs the launch sequence and shows the
// window until it closes, then ends the session (timers paused and saved, lock released).
#pragma once

#include "controlsocket.h"

#include <QString>

namespace tock {

// True when no display server can be reached and no platform was asked for explicitly.
bool displayMissing();
// The one line printed instead of opening a window without a display.
QString noDisplayMessage();

// Runs the window over `directory`; a QApplication must exist. Returns the exit status:
// 0 after a normal close, 3 when another copy holds the data folder. When a copy already runs,
// it is raised with `tokens`, this copy's launch tokens.
int runWindow(const QString &directory, const ActivationTokens &tokens);

} // namespace tock

// `tock --shell` while another copy holds the data folder: its window runs the lines at its own
// prompt (sharing history, undo and output with whoever sits at it) and this process only
// prints what comes back, the way the terminal prints a line it ran itself.
#pragma once

#include "controlclient.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <optional>

namespace tock {

// Sends `lines` (none: standard input, line by line) to the window listening at `socketPath`,
// printing output lines to `out` and error lines to `err`, and stops after `exit`. The exit
// status is 0 when no line failed, else 1. Absent when no window answers within `answerMs`:
// then nothing was read or run and the caller reports that another copy is running.
std::optional<int> runOnRunningCopy(const QStringList &lines, const QString &socketPath, QTextStream &out,
                                    QTextStream &err, int answerMs = ControlClient::answerMs);

} // namespace tock

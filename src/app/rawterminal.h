// `tock --shell` at a terminal: standard input in raw mode, keys decoded and applied with the
// model's own prompt operations, the prompt line redrawn in place and running timers ticking in
// the listing above it. The terminal's settings come back on every way out, a crash included.
#pragma once

#include "timer.h"

#include <QTextStream>

#include <functional>

#include <termios.h>

class QEventLoop;

namespace tock {

class AppModel;
class TerminalSession;

// Puts the terminal `fd` in raw mode with pastes marked (told through `output`) for its
// lifetime and restores it afterwards; while it lives, a fatal signal restores the terminal
// before the process dies.
class RawMode {
public:
    RawMode(int fd, int output);
    ~RawMode();
    RawMode(const RawMode &) = delete;
    RawMode &operator=(const RawMode &) = delete;

    // False when `fd` is not a terminal whose settings could be changed.
    bool active() const { return active_; }

private:
    void restore();

    int fd_;
    int output_;
    bool active_ = false;
    struct termios saved_ = {};
};

// Runs the interactive session on standard input inside `loop` (which others may also quit,
// e.g. on SIGTERM) until Ctrl-D on an empty line, `exit` or the end of input. False when
// standard output is not a terminal or standard input cannot be put in raw mode; then nothing
// was read or printed.
bool runInteractiveTerminal(TerminalSession &session, AppModel &model, QTextStream &out, QEventLoop &loop,
                            const std::function<Instant()> &now);

} // namespace tock

// The rendering benchmark behind --bench: the window drawn offscreen with running timers,
// ticking once a second, and the figures it costs. The helpers are shared with window_bench.
#pragma once

#include "board.h"
#include "styleid.h"

#include <QTextStream>

namespace tock {

namespace RenderBench {

// `count` timers named "Timer N", running since `now` when `running`.
Board board(int count, bool running, Instant now);

// CPU time of this process so far, user plus system, in seconds.
double cpuSeconds();

// Peak resident memory of this process in kB.
long peakResidentKb();

// Shows the window in `style` with `timers` running timers for `seconds` seconds and prints
// one line of figures on `out`. A QApplication must exist. Returns the exit status (0).
int run(StyleID style, int timers, double seconds, QTextStream &out);

} // namespace RenderBench

} // namespace tock

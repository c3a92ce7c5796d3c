// The split-flap demonstration (`tock --flipdemo`): a window whose tiles flip continuously, a
// clock and a board cycling through the style names, until it is closed.
#pragma once

namespace tock {

// Needs a QApplication. Returns the exit status, 0 once the window is closed.
int runFlipDemo();

} // namespace tock

// What the window's views share besides the model and its theme. The root view makes it once
// and hands it down as the views are made, so no view has to search its parents for it.
#pragma once

namespace tock {

class FlapClock;

struct ViewContext {
    FlapClock *flapClock = nullptr; // drives every split-flap tile of the window
    bool animated = true;           // false: every change shows at once (still renders, benchmarks)
};

} // namespace tock

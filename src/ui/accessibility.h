// What a screen reader sees of the drawn window. Qt describes plain widgets as nameless fillers,
// so each kind of drawn view gets its own interface: a role, a name, a state and, for controls,
// a press action that does what a click does. Rows are list items named by their timer, and the
// list's order is the board's.
#pragma once

namespace tock::Accessibility {

// Installs the interfaces; once per process, before the first window is made.
void install();

} // namespace tock::Accessibility

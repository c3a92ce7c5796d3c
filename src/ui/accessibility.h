// What a screen reader sees of the drawn window. Qt describes plain widgets as nameless fillers,
// so each kind of drawn view gets its own interface: a role, a name, a state and, for controls,
// a press action that does what a click does. Rows are list items named by their timer, and the
// list's order is the board's.
#pragma once

#include <QString>

class QWidget;

namespace tock::Accessibility {

// Installs the interfaces; once per process, before the first window is made.
void install();

// Says `text` through `announcer` (a widget the root view keeps for this), for news that
// appears without taking the focus: a toast, the prompt's output, a banner, the empty hint.
void announce(QWidget *announcer, const QString &text);

// Tells a screen reader that `widget`'s name or checked state changed (a row started, paused,
// was reset or set), without making a new object.
void nameChanged(QWidget *widget);
void checkedChanged(QWidget *widget, bool checked);

// Tells a screen reader that the editable text of `widget` changed, or only its caret moved.
void textChanged(QWidget *widget);
void caretMoved(QWidget *widget);

} // namespace tock::Accessibility

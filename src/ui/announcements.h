// What the window tells a screen reader as it happens: news that appears without taking the
// focus, and changes of a control's name, checked state, text or caret. Only Qt's accessibility
// events: nothing here knows a view, so every view may tell.
#pragma once

#include <QString>

class QWidget;

namespace tock::Accessibility {

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

// Tells a screen reader that child `part` of `widget`'s interface (a drawn part, such as one of
// the time mask's fields) took the focus, or shows a new value.
void partFocused(QWidget *widget, int part);
void partValueChanged(QWidget *widget, int part);

} // namespace tock::Accessibility

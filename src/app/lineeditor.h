// Draws the terminal's prompt line: the bytes that repaint the prompt and the text being typed
// in place and put the cursor at the caret, counting columns per user-perceived character
// (wide ones take two). Pure: the caller writes the bytes.
#pragma once

#include <QByteArray>
#include <QString>

namespace tock {

namespace LineEditor {

// Columns one user-perceived character takes in a terminal: 2 for East Asian wide and emoji,
// 0 for combining-only clusters and controls, else 1.
int graphemeWidth(const QString &grapheme);
// Columns of a whole text.
int width(const QString &text);

// Repaints the line: carriage return, `prompt`, the part of `text` that fits, erase to the end
// of the line, then the cursor to `caret` (in user-perceived characters). When the line is
// wider than `columns` (0: unknown, never scrolls) the text scrolls sideways to keep the caret
// in view.
QByteArray render(const QString &prompt, const QString &text, qsizetype caret, int columns);

} // namespace LineEditor

} // namespace tock

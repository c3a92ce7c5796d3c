// The command prompt's key table: which key edits the prompt, runs or completes the line, and
// which is left to the window and the menus.
#pragma once

#include <QString>

#include <functional>

class QKeyEvent;

namespace tock {

class AppModel;

// Where a paste at the prompt takes its text from.
using ClipboardText = std::function<QString()>;
// The desktop clipboard's text.
QString systemClipboardText();

// What a key does at the prompt; `none` leaves it to the window and the menus.
enum class PromptKey {
    none,
    clearLine,   // Control-C, Control-U, Escape on a typed line
    clearOutput, // Control-L, Escape on an empty line under output
    caretHome,   // Control-A, Home
    caretEnd,    // Control-E, End
    paste,
    run,
    complete,
    backspace,
    forwardDelete,
    left,
    right,
    historyUp,
    historyDown,
    insert, // the key's own characters
};

// Decides without acting, so a shortcut can be held back for a key the prompt will take.
// One Ctrl key plays the prompt's Control and the menus' command role except on macOS, where
// Control (Qt's Meta) edits and Command (Qt's Control) pastes.
PromptKey promptKeyFor(const AppModel &model, const QKeyEvent &event);

// Applies the prompt's key table; true when the key was consumed.
bool handleShellKey(AppModel &model, const QKeyEvent &event, const ClipboardText &clipboard);

} // namespace tock

// The command prompt's keys and the window's key routing: which key edits the prompt, which goes
// to the mask or a name field, which deletes the hovered row and which is left to the menus.
#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QKeyEvent;
class QWidget;

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

// Watches one window's keys after its children had their say: while nothing else is typing,
// prompt styles send keys to the prompt, and ⌫ deletes the hovered or revealed row.
class KeyRouter : public QObject {
    Q_OBJECT
public:
    KeyRouter(AppModel *model, QWidget *window, ClipboardText clipboard = systemClipboardText);

    // A time edit is open, or a name field has the keys.
    bool isTyping() const;
    // The style's footer is the prompt, so typing goes there.
    bool promptHasKeys() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool wantsKey(const QKeyEvent &event) const;
    bool takeKey(const QKeyEvent &event);

    AppModel *model_;
    QWidget *window_;
    ClipboardText clipboard_;
};

} // namespace tock

#include "shellkeys.h"

#include "appmodel.h"
#include "text.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

namespace tock {

namespace {

// The three modifiers the prompt distinguishes; Shift, Caps Lock and the keypad flag never
// change what a key does here.
struct Chord {
    bool control = false; // the prompt's editing key
    bool command = false; // the menus' key
    bool option = false;
    bool other = false;   // a modifier Tock leaves to the desktop (Super on Linux)
};

Chord chordOf(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers m = event.modifiers();
    Chord c;
    c.option = m.testFlag(Qt::AltModifier);
#ifdef Q_OS_MACOS
    c.control = m.testFlag(Qt::MetaModifier);
    c.command = m.testFlag(Qt::ControlModifier);
#else
    c.control = m.testFlag(Qt::ControlModifier);
    c.command = c.control;
    c.other = m.testFlag(Qt::MetaModifier);
#endif
    return c;
}

#ifdef Q_OS_MACOS
constexpr bool oneCtrlKey = false;
#else
constexpr bool oneCtrlKey = true;
#endif

bool isPrintable(const QString &text)
{
    if (text.isEmpty())
        return false;
    for (const QChar ch : text) {
        const char16_t u = ch.unicode();
        if (u < 0x20 || u == 0x7F || (u >= 0xF700 && u <= 0xF8FF))
            return false;
    }
    return true;
}

PromptKey controlChord(int key)
{
    switch (key) {
    case Qt::Key_C:
    case Qt::Key_U:
        return PromptKey::clearLine;
    case Qt::Key_L:
        return PromptKey::clearOutput;
    case Qt::Key_A:
        return PromptKey::caretHome;
    case Qt::Key_E:
        return PromptKey::caretEnd;
#ifndef Q_OS_MACOS
    case Qt::Key_V: // the same Ctrl is the paste key here
        return PromptKey::paste;
#endif
    default:
        return PromptKey::none;
    }
}

} // namespace

QString systemClipboardText()
{
    const QClipboard *clipboard = QGuiApplication::clipboard();
    return clipboard ? clipboard->text() : QString();
}

PromptKey promptKeyFor(const AppModel &model, const QKeyEvent &event)
{
    const Chord c = chordOf(event);
    if (c.other)
        return PromptKey::none;
    if (c.control)
        return c.option || (c.command && !oneCtrlKey) ? PromptKey::none : controlChord(event.key());
    if (c.command)
        return !c.option && event.key() == Qt::Key_V ? PromptKey::paste : PromptKey::none;

    const bool typed = !model.shell().promptText().isEmpty();
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return typed ? PromptKey::run : PromptKey::none;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return PromptKey::complete;
    case Qt::Key_Backspace:
        return typed ? PromptKey::backspace : PromptKey::none;
    case Qt::Key_Delete:
        return typed ? PromptKey::forwardDelete : PromptKey::none;
    case Qt::Key_Escape:
        if (typed)
            return PromptKey::clearLine;
        return model.shell().shellOutput().isEmpty() ? PromptKey::none : PromptKey::clearOutput;
    case Qt::Key_Home:
        return PromptKey::caretHome;
    case Qt::Key_End:
        return PromptKey::caretEnd;
    case Qt::Key_Left:
        return PromptKey::left;
    case Qt::Key_Right:
        return PromptKey::right;
    case Qt::Key_Up:
        return PromptKey::historyUp;
    case Qt::Key_Down:
        return PromptKey::historyDown;
    default:
        return !c.option && isPrintable(event.text()) ? PromptKey::insert : PromptKey::none;
    }
}

bool handleShellKey(AppModel &model, const QKeyEvent &event, const ClipboardText &clipboard)
{
    switch (promptKeyFor(model, event)) {
    case PromptKey::none:
        return false;
    case PromptKey::clearLine:
        model.shell().setPrompt(QString(), 0);
        break;
    case PromptKey::clearOutput:
        model.shell().clearShellOutput();
        break;
    case PromptKey::caretHome:
        model.shell().setPrompt(model.shell().promptText(), 0);
        break;
    case PromptKey::caretEnd:
        model.shell().setPrompt(model.shell().promptText(), Text::graphemeCount(model.shell().promptText()));
        break;
    case PromptKey::paste:
        if (const QString text = clipboard ? clipboard() : QString(); !text.isEmpty())
            model.shell().promptInsert(text);
        break;
    case PromptKey::run:
        model.shell().promptRun();
        break;
    case PromptKey::complete:
        model.shell().promptComplete();
        break;
    case PromptKey::backspace:
        model.shell().promptBackspace();
        break;
    case PromptKey::forwardDelete:
        model.shell().promptForwardDelete();
        break;
    case PromptKey::left:
        model.shell().promptMove(-1);
        break;
    case PromptKey::right:
        model.shell().promptMove(1);
        break;
    case PromptKey::historyUp:
        model.shell().promptHistory(true);
        break;
    case PromptKey::historyDown:
        model.shell().promptHistory(false);
        break;
    case PromptKey::insert:
        model.shell().promptInsert(event.text());
        break;
    }
    return true;
}

} // namespace tock

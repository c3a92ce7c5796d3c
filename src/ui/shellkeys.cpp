#include "shellkeys.h"

#include "appmodel.h"
#include "text.h"
#include "theme.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>

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

KeyRouter::KeyRouter(AppModel *model, QWidget *window, ClipboardText clipboard)
    : QObject(window), model_(model), window_(window), clipboard_(std::move(clipboard))
{
    window->installEventFilter(this);
}

bool KeyRouter::isTyping() const
{
    if (model_->editingID() || model_->isEditingName())
        return true;
    const auto *field = qobject_cast<const QLineEdit *>(window_->focusWidget());
    return field && field->isVisible();
}

bool KeyRouter::promptHasKeys() const
{
    return Theme::of(model_->style()).addStyle == AddStyle::prompt;
}

namespace {

// The row keys: ⌫ (and the forward delete key, which Linux keyboards label "Delete") without
// any modifier.
bool isRowDeleteKey(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers held = event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    return held == Qt::NoModifier && (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete);
}

} // namespace

bool KeyRouter::wantsKey(const QKeyEvent &event) const
{
    if (isTyping())
        return false;
    if (model_->styleMenuOpen() && event.key() == Qt::Key_Escape)
        return true;
    if (promptHasKeys() && promptKeyFor(*model_, event) != PromptKey::none)
        return true;
    return isRowDeleteKey(event) && (model_->hoveredID() || model_->revealedID()) && !model_->isEditOpen();
}

bool KeyRouter::takeKey(const QKeyEvent &event)
{
    if (isTyping())
        return false;
    if (model_->styleMenuOpen() && event.key() == Qt::Key_Escape) {
        model_->setStyleMenuOpen(false);
        return true;
    }
    if (promptHasKeys() && handleShellKey(*model_, event, clipboard_))
        return true;
    return isRowDeleteKey(event) && model_->deleteHovered();
}

bool KeyRouter::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != window_)
        return false;
    if (event->type() == QEvent::ShortcutOverride) {
        // Holding the shortcut back lets the key press arrive, so the prompt's Ctrl-A is not
        // the menu's Select All.
        if (wantsKey(*static_cast<QKeyEvent *>(event))) {
            event->accept();
            return true;
        }
        return false;
    }
    if (event->type() == QEvent::KeyPress)
        return takeKey(*static_cast<QKeyEvent *>(event));
    return false;
}

} // namespace tock

#include "keyrouter.h"

#include "appmodel.h"
#include "theme.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>

namespace tock {

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

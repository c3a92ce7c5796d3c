// The window's key routing: which key goes to the prompt, which to the mask or a name field,
// which deletes the hovered row and which is left to the menus.
#pragma once

#include "shellkeys.h"

#include <QObject>

class QWidget;

namespace tock {

class AppModel;

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

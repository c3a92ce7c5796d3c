#include "maskkeycatcher.h"

#include <QKeyEvent>
#include <QPointer>

namespace tock {

MaskKeyCatcher::MaskKeyCatcher(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_InputMethodEnabled, false);
}

void MaskKeyCatcher::setToken(quint64 token)
{
    if (token == token_)
        return;
    token_ = token;
    if (isVisible())
        setFocus(Qt::OtherFocusReason);
}

bool MaskKeyCatcher::event(QEvent *event)
{
    // Accepting the override keeps window shortcuts (a bare Backspace, say) from stealing keys
    // the mask handles; chords it does not take stay free for the menus.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (wantsKey_ && wantsKey_(key)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void MaskKeyCatcher::keyPressEvent(QKeyEvent *event)
{
    if (onKey_ && onKey_(event))
        event->accept();
    else
        event->ignore();
}

void MaskKeyCatcher::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    Q_EMIT focusChanged(true);
}

void MaskKeyCatcher::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    Q_EMIT focusChanged(false);
}

void MaskKeyCatcher::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Queued, so the window is mapped and active enough to accept the focus by then.
    QMetaObject::invokeMethod(
        this,
        [self = QPointer<MaskKeyCatcher>(this)] {
            if (self && self->isVisible())
                self->setFocus(Qt::OtherFocusReason);
        },
        Qt::QueuedConnection);
}

} // namespace tock

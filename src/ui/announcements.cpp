#include "announcements.h"

#include <QAccessible>
#include <QVariant>
#include <QWidget>

namespace tock::Accessibility {

void announce(QWidget *announcer, const QString &text)
{
    if (!announcer || text.isEmpty())
        return;
    announcer->setProperty("tockMessage", text);
    if (!QAccessible::isActive())
        return;
    // An alert that appears is read out; showing it again reads the new message.
    QAccessibleEvent hidden(announcer, QAccessible::ObjectHide);
    QAccessible::updateAccessibility(&hidden);
    QAccessibleEvent renamed(announcer, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&renamed);
    QAccessibleEvent shown(announcer, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}

void nameChanged(QWidget *widget)
{
    if (!widget || !QAccessible::isActive())
        return;
    QAccessibleEvent event(widget, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void checkedChanged(QWidget *widget, bool)
{
    if (!widget || !QAccessible::isActive())
        return;
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(widget, changed);
    QAccessible::updateAccessibility(&event);
}

void textChanged(QWidget *widget)
{
    if (!widget || !QAccessible::isActive())
        return;
    QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(widget);
    QAccessibleTextInterface *text = iface ? iface->textInterface() : nullptr;
    if (!text)
        return;
    // Readers are told the span that changed, found between what was last told and now.
    const QString now = text->text(0, text->characterCount());
    const QString was = widget->property("tockToldText").toString();
    widget->setProperty("tockToldText", now);
    qsizetype head = 0;
    while (head < now.size() && head < was.size() && now.at(head) == was.at(head))
        ++head;
    qsizetype tail = 0;
    while (tail < now.size() - head && tail < was.size() - head && now.at(now.size() - 1 - tail) == was.at(was.size() - 1 - tail))
        ++tail;
    if (head == now.size() && head == was.size())
        return;
    QAccessibleTextUpdateEvent event(widget, int(head), was.mid(head, was.size() - head - tail),
                                     now.mid(head, now.size() - head - tail));
    QAccessible::updateAccessibility(&event);
}

void caretMoved(QWidget *widget)
{
    if (!widget || !QAccessible::isActive())
        return;
    QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(widget);
    if (QAccessibleTextInterface *text = iface ? iface->textInterface() : nullptr) {
        QAccessibleTextCursorEvent event(widget, text->cursorPosition());
        QAccessible::updateAccessibility(&event);
    }
}

namespace {

QAccessibleInterface *partOf(QWidget *widget, int part)
{
    QAccessibleInterface *whole = widget ? QAccessible::queryAccessibleInterface(widget) : nullptr;
    return whole ? whole->child(part) : nullptr;
}

} // namespace

void partFocused(QWidget *widget, int part)
{
    if (!QAccessible::isActive())
        return;
    if (QAccessibleInterface *iface = partOf(widget, part)) {
        QAccessibleEvent event(iface, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

void partValueChanged(QWidget *widget, int part)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleInterface *iface = partOf(widget, part);
    if (QAccessibleValueInterface *value = iface ? iface->valueInterface() : nullptr) {
        QAccessibleValueChangeEvent event(iface, value->currentValue());
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace tock::Accessibility

#include "accessibility.h"

#include "buttonview.h"
#include "editmask.h"
#include "footer.h"
#include "promptview.h"
#include "toastview.h"
#include "maskaccessible.h"
#include "maskkeycatcher.h"
#include "namefield.h"
#include "emptyhint.h"
#include "noticebanner.h"
#include "reportaccessible.h"
#include "reportview.h"
#include "rowlist.h"
#include "text.h"
#include "timerrow.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFontMetricsF>

namespace tock::Accessibility {

namespace {

// A view's interface whose parent skips the containers that only draw (a row's sliding face),
// so a row's controls are the row's own children.
class DrawnAccessible : public QAccessibleWidget {
public:
    DrawnAccessible(QWidget *widget, QAccessible::Role role, QString name = {})
        : QAccessibleWidget(widget, role, std::move(name))
    {
    }

    QAccessibleInterface *parent() const override
    {
        QWidget *p = widget()->parentWidget();
        if (p && p->property("tockAccessibleFlat").toBool())
            p = p->parentWidget();
        return p ? QAccessible::queryAccessibleInterface(p) : QAccessibleWidget::parent();
    }
};

class ButtonAccessible : public DrawnAccessible {
public:
    explicit ButtonAccessible(ButtonView *button) : DrawnAccessible(button, button->accessibleRole()) {}
    ButtonView *button() const { return static_cast<ButtonView *>(widget()); }

    QString text(QAccessible::Text t) const override
    {
        switch (t) {
        case QAccessible::Name: return button()->accessibleLabel();
        case QAccessible::Value: return button()->accessibleValue();
        case QAccessible::Help: return button()->toolTip();
        default: return DrawnAccessible::text(t);
        }
    }
    QAccessible::State state() const override
    {
        QAccessible::State s = DrawnAccessible::state();
        s.pressed = button()->isPressed();
        if (const std::optional<bool> checked = button()->accessibleChecked()) {
            s.checkable = true;
            s.checked = *checked;
        }
        return s;
    }
    QStringList actionNames() const override
    {
        QStringList names{pressAction()};
        if (widget()->focusPolicy() != Qt::NoFocus)
            names << setFocusAction();
        return names;
    }
    void doAction(const QString &name) override
    {
        if (name == pressAction())
            button()->click();
        else
            DrawnAccessible::doAction(name);
    }
};

class RowAccessible : public DrawnAccessible {
public:
    explicit RowAccessible(TimerRow *row) : DrawnAccessible(row, QAccessible::ListItem) {}
    TimerRow *row() const { return static_cast<TimerRow *>(widget()); }

    QString text(QAccessible::Text t) const override
    {
        return t == QAccessible::Name ? row()->accessibleLabel() : DrawnAccessible::text(t);
    }
    int childCount() const override { return int(row()->accessibleChildren().size()); }
    QAccessibleInterface *child(int index) const override
    {
        const QList<QWidget *> children = row()->accessibleChildren();
        return index >= 0 && index < children.size() ? QAccessible::queryAccessibleInterface(children.at(index)) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        return child ? int(row()->accessibleChildren().indexOf(qobject_cast<QWidget *>(child->object()))) : -1;
    }
};

class ListAccessible : public DrawnAccessible {
public:
    explicit ListAccessible(RowList *list) : DrawnAccessible(list, QAccessible::List, QStringLiteral("Timers")) {}
    QList<QWidget *> rows() const
    {
        QList<QWidget *> rows;
        for (TimerRow *row : static_cast<RowList *>(widget())->rows())
            rows << row;
        return rows;
    }
    int childCount() const override { return int(rows().size()); }
    QAccessibleInterface *child(int index) const override
    {
        const QList<QWidget *> all = rows();
        return index >= 0 && index < all.size() ? QAccessible::queryAccessibleInterface(all.at(index)) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        return child ? int(rows().indexOf(qobject_cast<QWidget *>(child->object()))) : -1;
    }
};

class NameAccessible : public DrawnAccessible {
public:
    explicit NameAccessible(NameField *field) : DrawnAccessible(field, QAccessible::StaticText) {}
    NameField *field() const { return static_cast<NameField *>(widget()); }

    QString text(QAccessible::Text t) const override
    {
        if (t == QAccessible::Value)
            return field()->name().isEmpty() ? QStringLiteral("Untitled") : field()->name();
        return DrawnAccessible::text(t);
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString &name) override
    {
        if (name == pressAction())
            field()->rename();
        else
            DrawnAccessible::doAction(name);
    }
};

// The prompt: editable text with its caret, counted in characters as the model counts them.
class PromptAccessible : public DrawnAccessible, public QAccessibleTextInterface {
public:
    explicit PromptAccessible(PromptView *prompt) : DrawnAccessible(prompt, QAccessible::EditableText) {}
    const AppModel &model() const { return *static_cast<PromptView *>(widget())->model(); }
    const QString &line() const { return model().shell().promptText(); }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface *>(this);
        return DrawnAccessible::interface_cast(type);
    }
    QString text(QAccessible::Text t) const override
    {
        return t == QAccessible::Value ? line() : DrawnAccessible::text(t);
    }
    QAccessible::State state() const override
    {
        QAccessible::State s = DrawnAccessible::state();
        s.editable = true;
        return s;
    }

    void selection(int, int *start, int *end) const override { *start = *end = 0; }
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override
    {
        // The model's caret counts user-perceived characters; readers count UTF-16 units.
        return int(Text::graphemes(line()).mid(0, model().shell().promptCaret()).join(QString()).size());
    }
    // A reader moving the caret (by offset in UTF-16 units) moves the prompt's own.
    void setCursorPosition(int position) override
    {
        ShellSession &shell = static_cast<PromptView *>(widget())->model()->shell();
        shell.setPrompt(line(), Text::graphemeCount(line().left(position)));
    }
    QString text(int start, int end) const override { return line().mid(start, end - start); }
    int characterCount() const override { return int(line().size()); }
    QRect characterRect(int offset) const override
    {
        const auto *prompt = static_cast<const PromptView *>(widget());
        const QRect r = prompt->characterRect(offset);
        return r.isNull() ? QRect() : QRect(prompt->mapToGlobal(r.topLeft()), r.size());
    }
    int offsetAtPoint(const QPoint &point) const override
    {
        const auto *prompt = static_cast<const PromptView *>(widget());
        return int(prompt->characterAt(prompt->mapFromGlobal(point)));
    }
    void scrollToSubstring(int, int) override {}
    QString attributes(int offset, int *start, int *end) const override
    {
        *start = *end = offset;
        return {};
    }
};

// The invisible widget that speaks for news (see Accessibility::announce()).
class AnnouncerAccessible : public DrawnAccessible {
public:
    explicit AnnouncerAccessible(QWidget *w) : DrawnAccessible(w, QAccessible::AlertMessage) {}
    QString text(QAccessible::Text t) const override
    {
        return t == QAccessible::Name ? widget()->property("tockMessage").toString() : DrawnAccessible::text(t);
    }
};

QAccessibleInterface *factory(const QString &, QObject *object)
{
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget)
        return nullptr;
    if (auto *button = qobject_cast<ButtonView *>(widget))
        return new ButtonAccessible(button);
    if (auto *row = qobject_cast<TimerRow *>(widget))
        return new RowAccessible(row);
    if (auto *report = qobject_cast<ReportView *>(widget))
        return reportAccessible(report);
    if (auto *list = qobject_cast<RowList *>(widget))
        return new ListAccessible(list);
    if (auto *name = qobject_cast<NameField *>(widget))
        return new NameAccessible(name);
    if (auto *prompt = qobject_cast<PromptView *>(widget))
        return new PromptAccessible(prompt);
    if (auto *mask = qobject_cast<EditMask *>(widget))
        return MaskAccessible::create(mask);
    // The mask's keys arrive here first; a reader told of its focus hears the mask's name, then
    // the field the keys go to.
    if (qobject_cast<MaskKeyCatcher *>(widget) && widget->parentWidget())
        return new DrawnAccessible(widget, QAccessible::Grouping, widget->parentWidget()->accessibleName());
    if (qobject_cast<ToastView *>(widget) || qobject_cast<NoticeBanner *>(widget))
        return new DrawnAccessible(widget, QAccessible::AlertMessage);
    if (qobject_cast<EmptyHint *>(widget))
        return new DrawnAccessible(widget, QAccessible::StaticText, EmptyHint::text());
    if (widget->objectName() == QLatin1String("tockAnnouncer"))
        return new AnnouncerAccessible(widget);
    return nullptr;
}

} // namespace

void install()
{
    static const bool installed = [] {
        QAccessible::installFactory(factory);
        return true;
    }();
    (void)installed;
}

} // namespace tock::Accessibility

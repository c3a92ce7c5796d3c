#include "maskaccessible.h"

#include "appmodel.h"
#include "editmask.h"
#include "maskkeycatcher.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <algorithm>
#include <array>

namespace tock::MaskAccessible {

namespace {

class FieldAccessible : public QAccessibleInterface, public QAccessibleValueInterface {
public:
    FieldAccessible(EditMask *mask, TimeField field) : mask_(mask), field_(field) {}

    bool isValid() const override { return !mask_.isNull(); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return mask_ ? mask_->window()->windowHandle() : nullptr; }
    QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(mask_.data()); }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::SpinBox; }

    QString text(QAccessible::Text t) const override
    {
        switch (t) {
        case QAccessible::Name: return TimeFields::label(field_);
        case QAccessible::Value: return digits();
        default: return {};
        }
    }
    void setText(QAccessible::Text, const QString &) override {}

    QAccessible::State state() const override
    {
        QAccessible::State s;
        if (!mask_ || !mask_->isVisible()) {
            s.invisible = true;
            return s;
        }
        s.focusable = true;
        s.editable = true;
        s.focused = isActive();
        s.invalid = draft() && !draft()->isValid(field_);
        return s;
    }
    QRect rect() const override
    {
        if (!mask_)
            return {};
        const QRect r = mask_->fieldRect(field_);
        return QRect(mask_->mapToGlobal(r.topLeft()), r.size());
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this) : nullptr;
    }

    // A field out of range (75 minutes) has no value; its state says it is invalid.
    QVariant currentValue() const override
    {
        const std::optional<int64_t> v = TimeFields::value(field_, digits());
        return v ? QVariant(qlonglong(*v)) : QVariant();
    }
    void setCurrentValue(const QVariant &value) override
    {
        if (!mask_ || !draft())
            return;
        TimeEditDraft d = *draft();
        d.set(field_, QString::number(std::clamp<qlonglong>(value.toLongLong(), 0, TimeFields::maxValue(field_))));
        mask_->model()->setDraft(d);
    }
    QVariant maximumValue() const override { return qlonglong(TimeFields::maxValue(field_)); }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

    bool isActive() const
    {
        return mask_ && mask_->keyCatcher()->hasFocus() && mask_->maskCursor().field == field_;
    }

private:
    const std::optional<TimeEditDraft> &draft() const { return mask_->model()->draft(); }
    QString digits() const { return mask_ && draft() ? (*draft())[field_] : QString(); }

    QPointer<EditMask> mask_;
    TimeField field_;
};

class GroupAccessible : public QAccessibleWidget {
public:
    explicit GroupAccessible(EditMask *mask) : QAccessibleWidget(mask, QAccessible::Grouping) {}
    ~GroupAccessible() override
    {
        for (const QAccessible::Id id : ids_) {
            if (id)
                QAccessible::deleteAccessibleInterface(id);
        }
    }

    // The row is the parent, past the face that only draws it.
    QAccessibleInterface *parent() const override
    {
        QWidget *p = widget()->parentWidget();
        if (p && p->property("tockAccessibleFlat").toBool())
            p = p->parentWidget();
        return p ? QAccessible::queryAccessibleInterface(p) : QAccessibleWidget::parent();
    }
    int childCount() const override { return int(ids_.size()); }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= int(ids_.size()))
            return nullptr;
        QAccessible::Id &id = ids_[index];
        if (!id)
            id = QAccessible::registerAccessibleInterface(
                new FieldAccessible(static_cast<EditMask *>(widget()), TimeFields::all[index]));
        return QAccessible::accessibleInterface(id);
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        for (int i = 0; i < int(ids_.size()); ++i) {
            if (ids_[i] && QAccessible::accessibleInterface(ids_[i]) == child)
                return i;
        }
        return -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        for (int i = 0; i < childCount(); ++i) {
            if (child(i)->rect().contains(x, y))
                return child(i);
        }
        return nullptr;
    }
    QAccessibleInterface *focusChild() const override
    {
        const auto *mask = static_cast<const EditMask *>(widget());
        return mask->keyCatcher()->hasFocus() ? child(int(mask->maskCursor().field)) : nullptr;
    }

private:
    mutable std::array<QAccessible::Id, 3> ids_{};
};

} // namespace

QAccessibleInterface *create(EditMask *mask)
{
    return new GroupAccessible(mask);
}

} // namespace tock::MaskAccessible

#include "editmask.h"

#include "announcements.h"
#include "appmodel.h"
#include "cursorblink.h"
#include "maskkeycatcher.h"
#include "theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace tock {

namespace {

int idx(TimeField f) { return static_cast<int>(f); }

qreal colonWidth(const Theme &theme) { return std::max<qreal>(8, theme.digitAdvance * 0.75); }

} // namespace

EditMask::EditMask(AppModel *model, QWidget *parent)
    : QWidget(parent), model_(model), catcher_(new MaskKeyCatcher(this)), blink_(new CursorBlink(this))
{
    setAccessibleName(QStringLiteral("Edit time: hours, minutes, seconds"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    restyle();
    catcher_->setOnKey([this](QKeyEvent *event) { return handleKey(event); });
    catcher_->setWantsKey([this](const QKeyEvent *event) {
        return model_->isEditOpen() && classify(*event) != KeyAction::notHandled;
    });
    connect(catcher_, &MaskKeyCatcher::focusChanged, this, [this](bool focused) {
        updateBlinking();
        repaintChanged();
        // After Qt has told readers of the catcher's focus, the field the keys go to takes it.
        if (focused)
            QMetaObject::invokeMethod(this, [this] { tellFieldFocused(); }, Qt::QueuedConnection);
    });
    connect(blink_, &CursorBlink::shownChanged, this, [this] { repaintChanged(); });
    connect(model_, &AppModel::draftChanged, this, [this] { repaintChanged(); });
    connect(model_, &AppModel::editingIDChanged, this, [this] {
        if (model_->isEditOpen())
            onEditOpened();
        repaintChanged();
    });
}

EditMask::~EditMask() = default;

void EditMask::restyle()
{
    const Theme *theme = &Theme::of(model_->style());
    const qreal zoom = std::max(model_->zoom(), 0.1);
    if (theme == theme_ && zoom == zoom_)
        return;
    theme_ = theme;
    zoom_ = zoom;
    updateGeometry();
    updateBlinking();
    update();
}

void EditMask::setMaskCursor(const MaskCursor &cursor)
{
    changeCursor(cursor);
}

void EditMask::setPaintsActive(std::optional<bool> active)
{
    if (active == paintsActive_)
        return;
    paintsActive_ = active;
    repaintChanged();
}

void EditMask::refocus()
{
    catcher_->setToken(++token_);
}

void EditMask::onEditOpened()
{
    // A new edit starts on the hours, fresh, like a newly opened mask.
    changeCursor(MaskCursor());
    refocus();
}

EditMask::KeyAction EditMask::classify(const QKeyEvent &event)
{
    // Ctrl is the command key (Qt maps it to ⌘ on macOS): those chords belong to the menus.
    if (event.modifiers() & Qt::ControlModifier)
        return KeyAction::notHandled;
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return KeyAction::commit;
    case Qt::Key_Escape:
        return KeyAction::cancel;
    case Qt::Key_Tab:
        return (event.modifiers() & Qt::ShiftModifier) ? KeyAction::previous : KeyAction::next;
    case Qt::Key_Backtab:
    case Qt::Key_Left:
        return KeyAction::previous;
    case Qt::Key_Right:
        return KeyAction::next;
    case Qt::Key_Up:
        return KeyAction::stepUp;
    case Qt::Key_Down:
        return KeyAction::stepDown;
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return KeyAction::backspace;
    default:
        break;
    }
    const QString text = event.text();
    if (text.isEmpty())
        return KeyAction::notHandled;
    // Control characters of keys with no entry above (Alt chords, say) carry nothing to type.
    for (const QChar c : text) {
        if (c.isPrint())
            return KeyAction::type;
    }
    return KeyAction::notHandled;
}

bool EditMask::handleKey(QKeyEvent *event)
{
    // A mask left on screen after its edit closed holds no keys.
    const KeyAction action = model_->isEditOpen() ? classify(*event) : KeyAction::notHandled;
    if (action == KeyAction::notHandled)
        return false;
    MaskCursor cursor = cursor_;
    switch (action) {
    case KeyAction::notHandled:
        return false;
    case KeyAction::commit:
        model_->commitEdit();
        return true;
    case KeyAction::cancel:
        model_->cancelEdit();
        return true;
    case KeyAction::next:
        cursor.next();
        break;
    case KeyAction::previous:
        cursor.previous();
        break;
    case KeyAction::stepUp:
        editDraft([&](TimeEditDraft &d) { d.step(+1, cursor); });
        break;
    case KeyAction::stepDown:
        editDraft([&](TimeEditDraft &d) { d.step(-1, cursor); });
        break;
    case KeyAction::backspace:
        editDraft([&](TimeEditDraft &d) { d.backspace(cursor); });
        break;
    case KeyAction::type: {
        bool accepted = false;
        editDraft([&](TimeEditDraft &d) {
            for (const QChar c : event->text())
                accepted = d.type(c, cursor) || accepted;
        });
        if (!accepted) {
            QApplication::beep();
            Q_EMIT beeped();
        }
        break;
    }
    }
    blink_->restart();
    changeCursor(cursor);
    return true;
}

void EditMask::editDraft(const std::function<void(TimeEditDraft &)> &edit)
{
    if (!model_->draft())
        return;
    const TimeEditDraft before = *model_->draft();
    TimeEditDraft draft = before;
    edit(draft);
    model_->setDraft(draft);
    for (TimeField f : TimeFields::all) {
        if (draft[f] != before[f])
            Accessibility::partValueChanged(this, int(f));
    }
}

void EditMask::changeCursor(const MaskCursor &cursor)
{
    if (cursor == cursor_)
        return;
    const bool moved = cursor.field != cursor_.field;
    cursor_ = cursor;
    repaintChanged();
    if (moved)
        tellFieldFocused();
}

void EditMask::tellFieldFocused()
{
    // Readers follow the field the keys go to, while the keys come here at all.
    if (catcher_->hasFocus())
        Accessibility::partFocused(this, int(cursor_.field));
}

// ---------------------------------------------------------------------------------------------
// Layout and painting

QSizeF EditMask::contentSize() const
{
    if (!theme_)
        return {};
    qreal w = 2 * colonWidth(*theme_);
    qreal h = 0;
    for (TimeField f : TimeFields::all) {
        const QSizeF s = DigitField::size(*theme_, f);
        w += s.width();
        h = std::max(h, s.height());
    }
    // Room for the hard shadow, which falls right and down.
    const qreal shadow = theme_->fieldHardShadow ? theme_->shadowOffset : 0;
    return {w + shadow, h + shadow};
}

QRectF EditMask::fieldBox(TimeField field) const
{
    if (!theme_)
        return {};
    const qreal colon = colonWidth(*theme_);
    qreal x = 0;
    for (TimeField f : TimeFields::all) {
        const QSizeF s = DigitField::size(*theme_, f);
        if (f == field) {
            const qreal shadow = theme_->fieldHardShadow ? theme_->shadowOffset : 0;
            // Centred vertically in the widget, which the row may make taller than the fields.
            const qreal y = (height() / zoom_ - s.height() - shadow) / 2;
            return {x, y, s.width(), s.height()};
        }
        x += s.width() + colon;
    }
    return {};
}

QRectF EditMask::colonBox(int index) const
{
    const QRectF before = fieldBox(index == 0 ? TimeField::hours : TimeField::minutes);
    return {before.right(), before.top(), colonWidth(*theme_), before.height()};
}

QRect EditMask::toWidget(const QRectF &points) const
{
    const QRectF r(points.x() * zoom_, points.y() * zoom_, points.width() * zoom_, points.height() * zoom_);
    return r.toAlignedRect().adjusted(-1, -1, 1, 1);
}

QSize EditMask::sizeHint() const
{
    const QSizeF s = contentSize();
    return {int(std::ceil(s.width() * zoom_)), int(std::ceil(s.height() * zoom_))};
}

int EditMask::caretCell(TimeField field, const QString &text) const
{
    if (!theme_ || field != cursor_.field)
        return -1;
    const bool full = text.size() >= TimeFields::maxDigits(field);
    if (theme_->caret == CaretKind::block)
        return (cursor_.fresh || full) ? 0 : int(text.size());
    // A fresh field is shown selected instead; the bar marks where appending goes.
    return cursor_.fresh ? -1 : int(text.size());
}

DigitField EditMask::fieldState(TimeField field) const
{
    DigitField d;
    d.field = field;
    const std::optional<TimeEditDraft> &draft = model_->draft();
    if (draft) {
        d.text = (*draft)[field];
        d.invalid = !draft->isValid(field);
    }
    // The window keeps its focus widget while inactive: the caret stays, drawn hollow. A mask
    // rendered without being shown (screenshots) draws its caret too.
    const bool keys = !isVisible() || window()->focusWidget() == catcher_;
    d.focused = field == cursor_.field;
    d.caretCell = keys ? caretCell(field, d.text) : -1;
    d.selected = keys && d.focused && cursor_.fresh && theme_->caret == CaretKind::bar;
    d.caretShown = blink_->isShown();
    d.windowActive = paintsActive_.value_or(!isVisible() || isActiveWindow());
    return d;
}

void EditMask::repaintChanged()
{
    if (!theme_)
        return;
    for (TimeField f : TimeFields::all) {
        const DigitField now = fieldState(f);
        DigitField &was = painted_[idx(f)];
        if (now == was)
            continue;
        // A blink only touches the caret; anything else may move the digits.
        DigitField blinked = was;
        blinked.caretShown = now.caretShown;
        const bool onlyBlink = now == blinked;
        const QRectF box = fieldBox(f);
        update(onlyBlink ? toWidget(now.caretRect(*theme_, box)) : toWidget(box));
        was = now;
    }
}

void EditMask::updateBlinking()
{
    blink_->setBlinking(theme_ && !theme_->steadyCursor && catcher_->hasFocus() && isActiveWindow()
                        && isVisible());
}

void EditMask::paintEvent(QPaintEvent *)
{
    if (!theme_)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.scale(zoom_, zoom_);
    for (TimeField f : TimeFields::all) {
        const DigitField d = fieldState(f);
        d.paint(painter, fieldBox(f), *theme_);
        painted_[idx(f)] = d;
    }
    painter.setFont(theme_->digitFont);
    painter.setPen(theme_->timeInk);
    for (int i = 0; i < 2; ++i)
        painter.drawText(colonBox(i), Qt::AlignCenter | Qt::TextSingleLine, QStringLiteral(":"));
}

void EditMask::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const QPointF at = event->position() / zoom_;
    for (TimeField f : TimeFields::all) {
        if (fieldBox(f).contains(at)) {
            MaskCursor cursor = cursor_;
            cursor.focus(f);
            blink_->restart();
            changeCursor(cursor);
            break;
        }
    }
    refocus();
    event->accept();
}

void EditMask::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange) {
        updateBlinking();
        repaintChanged();
    }
}

void EditMask::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    catcher_->setGeometry(rect());
}

void EditMask::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    updateBlinking();
}

void EditMask::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    updateBlinking();
}

} // namespace tock

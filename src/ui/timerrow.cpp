#include "timerrow.h"

#include "deletereveal.h"
#include "leaderdots.h"
#include "livetimebutton.h"
#include "draw.h"
#include "editmask.h"
#include "namefield.h"
#include "glyph.h"
#include "viewcontext.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QEasingCurve>
#include <QMenu>
#include <QMouseEvent>
#include <QVariantAnimation>

namespace tock {

namespace {

std::optional<TimerItem> timerOf(const AppModel *model, const QUuid &id)
{
    return model->board().timer(id);
}

qreal shadowRoom(const Theme &t)
{
    if (t.rowShadow)
        return t.shadowOffset;
    return t.rowEmbossed ? 2 : 0;
}

} // namespace

// The sliding face of a row: the card and its contents.

class RowFace : public View {
public:
    RowFace(AppModel *model, TimerRow *row) : View(model, row), row_(row)
    {
        setProperty("tockAccessibleFlat", true); // only draws: its controls belong to the row
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        const Theme &t = theme();
        const QRectF card = row_->cardRect();
        const AppModel *m = model();
        const QColor fill = row_->cardFill();
        const bool separated = !row_->isLast_ && t.rowSeparator != SeparatorKind::none;
        const QString key = QStringLiteral("%1|%2|%3|%4,%5,%6,%7|%8")
                                .arg(StyleIDs::rawValue(m->style()))
                                .arg(fill.name(QColor::HexArgb))
                                .arg(zoom())
                                .arg(card.x())
                                .arg(card.y())
                                .arg(card.width())
                                .arg(card.height())
                                .arg(separated);
        layer_.paint(this, pixelShift(), event->region(), key, [&](QPainter &painter) {
            begin(painter);
            Draw::Panel panel;
            panel.fill = panel.fill2 = fill;
            panel.border = t.rowBorder;
            panel.borderWidth = t.rowBorderWidth;
            panel.shape = t.rowShape;
            panel.hardShadow = t.rowShadow;
            panel.shadowColor = t.hardShadowColor;
            panel.shadowOffset = t.shadowOffset;
            panel.embossed = t.rowEmbossed;
            panel.lip = t.rowEmbossed;
            Draw::panel(painter, card, panel);
            if (separated) {
                const qreal y = card.bottom() + t.rowSpacing / 2 - 0.5;
                Draw::separator(painter, QPointF(card.left(), y), QPointF(card.right(), y), t.rowSeparator, t.ruleInk, 1);
            }
        });
    }

private:
    TimerRow *row_;
    Draw::Layer layer_;
};

TimerRow::TimerRow(AppModel *model, const ViewContext &context, QWidget *parent, QUuid id)
    : View(model, parent), id_(id), reveal_(new DeleteReveal(model, this, id)), face_(new RowFace(model, this)),
      name_(new NameField(model, id, face_)), dots_(new LeaderDots(model, face_)),
      time_(new LiveTimeButton(model, context, face_, id)), play_(new ThemedButton(model, face_)),
      reset_(new ThemedButton(model, face_))
{
    play_->setAccessibleName(QStringLiteral("Start"));
    reset_->setGlyph(Glyph::reset);
    reset_->setAccessibleName(QStringLiteral("Reset"));
    reset_->setToolTip(QStringLiteral("Reset"));
    connect(play_, &ThemedButton::clicked, this, [this] { this->model()->toggle(id_); });
    connect(reset_, &ThemedButton::clicked, this, [this] { this->model()->reset(id_); });
    connect(time_, &LiveTimeButton::widthChanged, this, &TimerRow::relayout);
    setAttribute(Qt::WA_Hover);
    offset_ = model->rowOffset(id);
    refresh();
}

TimerRow::~TimerRow() = default;

QString TimerRow::shownName() const
{
    const std::optional<TimerItem> timer = timerOf(model(), id_);
    const QString name = timer && !timer->name.isEmpty() ? timer->name : QStringLiteral("Untitled");
    return Theme::applyCase(theme().nameCase, name.left(NameField::measureCap));
}

void TimerRow::followEdit()
{
    const bool editing = model()->editingID() == id_ && model()->draft().has_value();
    if (editing && !mask_) {
        maskFromKeys_ = time_->hasFocus();
        mask_ = new EditMask(model(), face_);
        mask_->show();
        mask_->refocus();
    } else if (!editing && mask_) {
        // A mask closed from the keyboard leaves the focus on the time it edited.
        const QWidget *focus = QApplication::focusWidget();
        const bool hadKeys = focus && mask_->isAncestorOf(focus);
        mask_->hide();
        mask_->deleteLater();
        mask_ = nullptr;
        time_->setVisible(true);
        if (hadKeys && maskFromKeys_)
            time_->setFocus(Qt::OtherFocusReason);
    }
    time_->setVisible(!mask_);
}

qreal TimerRow::widgetHeight(const Theme &theme)
{
    return theme.rowHeight + shadowRoom(theme);
}

QRectF TimerRow::cardRect() const
{
    const Theme &t = theme();
    const qreal room = shadowRoom(t);
    return QRectF(0, 0, unzoomedSize().width() - room, t.rowHeight);
}

void TimerRow::setPlace(int index, bool isLast)
{
    if (index_ == index && isLast_ == isLast)
        return;
    index_ = index;
    isLast_ = isLast;
    play_->setRowIndex(index);
    face_->update();
}

void TimerRow::setOffset(qreal offset)
{
    if (offset_ == offset)
        return;
    offset_ = offset;
    relayout();
}

void TimerRow::followOffset(bool animated)
{
    const qreal target = model()->rowOffset(id_);
    if (slide_) {
        slide_->stop();
        slide_->deleteLater();
        slide_ = nullptr;
    }
    const bool dragging = model()->swipeID() == id_;
    const qreal jump = std::abs(target - offset_);
    if (!animated || jump < 0.5 || (dragging && jump < 20)) {
        setOffset(target);
        return;
    }
    // Sliding out before a deletion eases in quickly; settling (reveal, close) eases out.
    const bool slidingOut = dragging && target < offset_;
    slide_ = new QVariantAnimation(this);
    slide_->setStartValue(offset_);
    slide_->setEndValue(target);
    slide_->setDuration(slidingOut ? 140 : 160);
    slide_->setEasingCurve(slidingOut ? QEasingCurve::InQuad : QEasingCurve::OutQuad);
    connect(slide_, &QVariantAnimation::valueChanged, this, [this](const QVariant &v) { setOffset(v.toReal()); });
    slide_->start();
}

QColor TimerRow::cardFill() const
{
    const Theme &t = theme();
    QColor fill = t.rowFillAt(index_);
    if (model()->editingID() == id_)
        fill = t.rowTints.isEmpty() ? t.rowEditFill : fill.lighter(106);
    else if (model()->hoveredID() == id_ && t.rowTints.isEmpty())
        fill = t.rowHoverFill;
    return fill;
}

void TimerRow::refresh()
{
    const std::optional<TimerItem> timer = model()->board().timer(id_);
    const bool running = timer && timer->isRunning();
    play_->setGlyph(running ? Glyph::pause : Glyph::play);
    play_->setRole(running ? ThemedButton::Role::running : ThemedButton::Role::key);
    play_->setAccessibleName(running ? QStringLiteral("Pause") : QStringLiteral("Start"));
    play_->setAccessibleChecked(running);
    play_->setToolTip(play_->accessibleName());
    // A flat card under the tiles lets them paint it themselves; an embossed one has edges.
    time_->restyle(theme().rowEmbossed ? std::nullopt : std::optional<QColor>(cardFill()));
    const std::optional<bool> active =
        window()->property("tockInactive").toBool() ? std::optional<bool>(false) : std::nullopt;
    name_->restyle();
    name_->setPaintsActive(active);
    if (timer)
        name_->setName(timer->name);
    followEdit();
    if (mask_) {
        mask_->restyle();
        mask_->setPaintsActive(active);
    }
    relayout();
    face_->update();
    name_->update();
    time_->update();
    dots_->update();
    reveal_->update();
}

void TimerRow::relayout()
{
    const Theme &t = theme();
    const QSizeF size = unzoomedSize();
    const QRectF card = cardRect();
    const qreal revealWidth = AppModel::revealWidth;
    reveal_->setUnzoomedGeometry(QRectF(card.right() - revealWidth, 0, revealWidth, card.height()));
    reveal_->setVisible(offset_ < -0.5);
    reveal_->setUncovered(std::max<qreal>(0, revealWidth + offset_));
    face_->setUnzoomedGeometry(QRectF(offset_, 0, size.width(), size.height()));

    const qreal mid = card.center().y();
    const qreal room = ThemedButton::shadowRoom(t);
    qreal right = card.right() - t.rowInset + room;
    const auto place = [&](ThemedButton *b) {
        const QSizeF s = b->preferredSize() + QSizeF(room, room);
        right -= s.width();
        b->setUnzoomedGeometry(QRectF(right, mid - (s.height() - room) / 2, s.width(), s.height()));
        // Word buttons space themselves with their brackets.
        right -= (t.icons == IconKind::word ? 2 : 6) - room;
    };
    place(reset_);
    place(play_);
    right -= 6;
    const QString shown = time_->text();
    const qreal timeWidth = LiveTimeButton::widthFor(t, shown);
    const qreal timeHeight = LiveTimeButton::heightFor(t);
    right -= timeWidth;
    time_->setUnzoomedGeometry(QRectF(right, mid - timeHeight / 2, timeWidth, timeHeight));
    if (mask_) {
        // The mask takes the time's place, growing to the left where it needs more room.
        const QSizeF maskSize = QSizeF(mask_->sizeHint()) / zoom();
        const qreal maskLeft = right + timeWidth - maskSize.width();
        const QRectF maskRect(maskLeft, mid - maskSize.height() / 2, maskSize.width(), maskSize.height());
        View::place(mask_, face_->zoomedRect(maskRect));
        right = std::min(right, maskLeft);
    }
    right -= 8;
    // The name field pads its text; it reaches out by that much so the text sits at the inset.
    const qreal namePad = std::max<qreal>(4, t.fieldBorderWidth + 3);
    const qreal left = card.left() + t.rowInset - namePad;
    right += std::min<qreal>(namePad, 6);
    const QFont nameFont = Draw::tracked(t.nameFont, t.nameTracking);
    const qreal nameHeight = std::min(card.height(), name_->sizeHint().height() / zoom());
    if (t.leaderDots) {
        // The name takes what it needs; the dots fill the rest up to the time.
        const qreal nameWidth = std::min(Draw::textWidth(nameFont, shownName()) + 2 * namePad + 2, right - left);
        View::place(name_, face_->zoomedRect(QRectF(left, mid - nameHeight / 2, nameWidth, nameHeight)));
        dots_->setUnzoomedGeometry(QRectF(left + nameWidth + 4, mid - nameHeight / 2,
                                          std::max<qreal>(0, right - left - nameWidth - 4), nameHeight));
        dots_->show();
    } else {
        View::place(name_, face_->zoomedRect(QRectF(left, mid - nameHeight / 2, std::max<qreal>(0, right - left), nameHeight)));
        dots_->hide();
    }
}

void TimerRow::resizeEvent(QResizeEvent *)
{
    relayout();
}

void TimerRow::enterEvent(QEnterEvent *)
{
    model()->setHoveredID(id_);
}

void TimerRow::leaveEvent(QEvent *)
{
    if (model()->hoveredID() == id_)
        model()->setHoveredID(std::nullopt);
}

QList<QWidget *> TimerRow::focusControls() const
{
    QList<QWidget *> controls{name_};
    if (!mask_)
        controls << time_;
    return controls << play_ << reset_;
}

int TimerRow::controlKind(const QWidget *widget) const
{
    const QWidget *kinds[] = {name_, time_, play_, reset_};
    for (int i = 0; i < 4; ++i) {
        if (widget && (widget == kinds[i] || kinds[i]->isAncestorOf(widget)))
            return i;
    }
    return -1;
}

QWidget *TimerRow::control(int kind) const
{
    QWidget *kinds[] = {name_, mask_ ? static_cast<QWidget *>(play_) : time_, play_, reset_};
    return kinds[std::clamp(kind, 0, 3)];
}

QString TimerRow::accessibleLabel() const
{
    const std::optional<TimerItem> timer = timerOf(model(), id_);
    const QString name = timer && !timer->name.isEmpty() ? timer->name : QStringLiteral("Untitled");
    return name + QStringLiteral(", ") + time_->text();
}

QList<QWidget *> TimerRow::accessibleChildren() const
{
    QList<QWidget *> children{name_};
    children << (mask_ ? static_cast<QWidget *>(mask_) : time_) << play_ << reset_;
    if (reveal_->isVisible())
        children << reveal_;
    return children;
}

void TimerRow::contextMenuEvent(QContextMenuEvent *event)
{
    showMenu(event->globalPos());
}

void TimerRow::showMenu(const QPoint &globalPos)
{
    QMenu menu(this);
    QAction *reset = menu.addAction(QStringLiteral("Reset"));
    QAction *remove = menu.addAction(QStringLiteral("Delete Timer"));
    QAction *chosen = menu.exec(globalPos);
    // The row may be gone once the model acts, so nothing of `this` is used afterwards.
    AppModel *m = model();
    const QUuid id = id_;
    if (chosen == reset)
        m->reset(id);
    else if (chosen == remove)
        m->deleteTimer(id);
}

} // namespace tock

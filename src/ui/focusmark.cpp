#include "focusmark.h"

#include "buttonview.h"
#include "draw.h"
#include "namefield.h"
#include "reportview.h"

#include <QApplication>

namespace tock {

namespace {
constexpr qreal gap = 2; // between the control and the mark, in points
} // namespace

FocusMark::FocusMark(AppModel *model, QWidget *root, QWidget *clip) : View(model, root), root_(root), clip_(clip)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    // Presses and moves anywhere in the window decide whether the mark shows and where.
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { retarget(now); });
}

bool FocusMark::marks(const QWidget *widget)
{
    if (qobject_cast<const ButtonView *>(widget) || qobject_cast<const ReportView *>(widget))
        return true;
    const auto *name = qobject_cast<const NameField *>(widget);
    return name && !name->isEditing();
}

void FocusMark::retarget(QWidget *now)
{
    target_ = now && root_->isAncestorOf(now) ? now : nullptr;
    follow();
}

bool FocusMark::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::MouseButtonPress && type != QEvent::Move
        && type != QEvent::Resize && type != QEvent::Hide && type != QEvent::Show)
        return false;
    auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget || widget->window() != window())
        return false;
    if (type == QEvent::KeyPress) {
        if (!byKeys_) {
            byKeys_ = true;
            follow();
        }
    } else if (type == QEvent::MouseButtonPress) {
        byKeys_ = false;
        // A click leaves no focus behind on a control, so the next key does not press it.
        if (target_ && marks(target_))
            target_->clearFocus();
        follow();
    } else if (target_ && (widget == target_ || widget->isAncestorOf(target_)) && widget != this) {
        follow();
    }
    return false;
}

void FocusMark::showOn(QWidget *control)
{
    byKeys_ = true;
    target_ = control;
    follow();
}

void FocusMark::follow()
{
    QWidget *target = target_;
    const bool wanted = byKeys_ && target && marks(target) && target->isVisibleTo(window());
    if (!wanted) {
        if (shown_) {
            shown_ = false;
            hide();
        }
        return;
    }
    const qreal z = zoom();
    const qreal reach = (gap + theme().focusWidth + 1) * z;
    const QRectF control(QPointF(target->mapTo(root_, QPoint(0, 0))), QSizeF(target->size()));
    QRect area = control.adjusted(-reach, -reach, reach, reach).toAlignedRect();
    if (clip_->isAncestorOf(target))
        area &= clip_->geometry();
    area &= root_->rect();
    mark_ = QRectF((control.topLeft() - QPointF(area.topLeft())) / z, control.size() / z);
    mark_.adjust(-gap, -gap, gap, gap);
    shown_ = true;
    setGeometry(area);
    raise();
    show();
    update();
}

void FocusMark::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const qreal w = t.focusWidth;
    const QRectF r = mark_.adjusted(-w / 2, -w / 2, w / 2, w / 2);
    QPen pen(t.focusInk, w, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    switch (t.focusKind) {
    case FocusKind::ring:
        painter.drawPath(Draw::shape(t.focusShape, r));
        break;
    case FocusKind::brackets: {
        // A bracket at each side, as a terminal marks a selection.
        const qreal arm = std::min<qreal>(5, r.width() / 4);
        painter.drawPolyline(QPolygonF({r.topLeft() + QPointF(arm, 0), r.topLeft(), r.bottomLeft(), r.bottomLeft() + QPointF(arm, 0)}));
        painter.drawPolyline(QPolygonF({r.topRight() - QPointF(arm, 0), r.topRight(), r.bottomRight(), r.bottomRight() - QPointF(arm, 0)}));
        break;
    }
    }
}

} // namespace tock

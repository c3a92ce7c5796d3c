#include "toastview.h"

#include "draw.h"

#include <QEasingCurve>
#include <QVariantAnimation>

namespace tock {

ToastView::ToastView(AppModel *model, QWidget *parent) : View(model, parent), undo_(new ThemedButton(model, this))
{
    undo_->setText(QStringLiteral("Undo"));
    undo_->setGlyph(Glyph::undo);
    connect(undo_, &ThemedButton::clicked, this, [this] { this->model()->undoToast(); });
    hide();
}

QSizeF ToastView::preferredSize() const
{
    const Theme &t = theme();
    const qreal text = message_.isEmpty() ? 0 : Draw::textWidth(t.captionFont, message_);
    return {text + 16 + undo_->preferredSize().width() + ThemedButton::shadowRoom(t), t.buttonSize + ThemedButton::shadowRoom(t)};
}

void ToastView::setOpacity(qreal opacity)
{
    opacity_ = opacity;
    undo_->setOpacity(opacity);
    update();
}

void ToastView::follow(bool animated)
{
    const std::optional<Toast> &toast = model()->toast();
    if (fade_) {
        fade_->stop();
        fade_->deleteLater();
        fade_ = nullptr;
    }
    const qreal target = toast ? 1 : 0;
    if (toast) {
        message_ = toast->entry.message();
        relayout();
        show();
    }
    if (!animated || !isVisible()) {
        setOpacity(target);
        if (!toast) {
            hide();
            Q_EMIT faded();
        }
        return;
    }
    fade_ = new QVariantAnimation(this);
    fade_->setStartValue(opacity_);
    fade_->setEndValue(target);
    fade_->setDuration(toast ? 180 : 240);
    fade_->setEasingCurve(QEasingCurve::InOutQuad);
    connect(fade_, &QVariantAnimation::valueChanged, this, [this](const QVariant &v) { setOpacity(v.toReal()); });
    connect(fade_, &QVariantAnimation::finished, this, [this, hideAfter = !toast] {
        fade_->deleteLater();
        fade_ = nullptr;
        if (hideAfter) {
            hide();
            Q_EMIT faded();
        }
    });
    fade_->start();
}

void ToastView::relayout()
{
    const Theme &t = theme();
    const QSizeF s = undo_->preferredSize() + QSizeF(ThemedButton::shadowRoom(t), ThemedButton::shadowRoom(t));
    const QSizeF size = unzoomedSize();
    undo_->setUnzoomedGeometry(QRectF(QPointF(size.width() - s.width(), (size.height() - s.height()) / 2 + ThemedButton::shadowRoom(t) / 2), s));
    update();
}

void ToastView::resizeEvent(QResizeEvent *)
{
    relayout();
}

void ToastView::paintEvent(QPaintEvent *)
{
    if (opacity_ <= 0)
        return;
    QPainter painter(this);
    begin(painter);
    painter.setOpacity(opacity_);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    const qreal undoLeft = undo_->x() / zoom();
    Draw::text(painter, QRectF(area.left() + 4, area.top(), undoLeft - 10, area.height()),
               Qt::AlignVCenter | Qt::AlignRight, message_, t.captionFont, t.nameInk);
}

} // namespace tock

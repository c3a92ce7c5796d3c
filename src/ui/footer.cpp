#include "footer.h"

#include "draw.h"
#include "promptview.h"
#include "toastview.h"

#include <QKeySequence>

namespace tock {

Footer::Footer(AppModel *model, QWidget *parent)
    : View(model, parent), add_(new ThemedButton(model, this, ThemedButton::Role::primary)),
      toast_(new ToastView(model, this)), prompt_(new PromptView(model, this))
{
    add_->setGlyph(Glyph::plus);
    add_->setText(QStringLiteral("Add timer"));
    add_->setAccessibleName(QStringLiteral("Add timer"));
    add_->setToolTip(addHelp(false));
    prompt_->setToolTip(addHelp(true));
    connect(add_, &ThemedButton::clicked, this, [this] { this->model()->addTimer(); });
    connect(toast_, &ToastView::faded, this, [this] {
        // The add button had made room for the toast; it gets its label back once the toast is gone.
        showAddLabel();
        relayout();
        Q_EMIT heightChanged();
    });
    refresh();
    followToast(false);
}

QString Footer::addHelp(bool prompt)
{
    const QString shortcut = QKeySequence(QKeySequence::New).toString(QKeySequence::NativeText);
    QString help = QStringLiteral("Add timer (") + shortcut + QLatin1Char(')');
    if (prompt)
        help += QStringLiteral(", or type: add <name>");
    return help;
}

bool Footer::toastShown() const
{
    return model()->toast().has_value() || toast_->isVisible();
}

void Footer::showAddLabel()
{
    const Theme &t = theme();
    add_->setText(t.addStyle == AddStyle::panel || !toastShown() ? QStringLiteral("Add timer") : QString());
    add_->setAccessibleName(QStringLiteral("Add timer"));
}

qreal Footer::toastLine() const
{
    const Theme &t = theme();
    return t.buttonSize + ThemedButton::shadowRoom(t) + 4;
}

qreal Footer::preferredHeight() const
{
    const Theme &t = theme();
    if (t.addStyle == AddStyle::prompt)
        // The toast's line stays reserved, so the window keeps its height when a toast comes and goes.
        return t.contentPadding * 2 + prompt_->preferredHeight() + toastLine();
    return t.contentPadding * 2 + t.buttonSize + ThemedButton::shadowRoom(t);
}

void Footer::refresh()
{
    const Theme &t = theme();
    const bool prompt = t.addStyle == AddStyle::prompt;
    add_->setVisible(!prompt);
    prompt_->setVisible(prompt);
    showAddLabel();
    relayout();
    update();
    prompt_->update();
    add_->update();
}

void Footer::followToast(bool animated)
{
    toast_->follow(animated);
    showAddLabel();
    relayout();
    Q_EMIT heightChanged();
}

void Footer::relayout()
{
    const Theme &t = theme();
    const QSizeF size = unzoomedSize();
    const qreal pad = t.contentPadding;
    const qreal room = ThemedButton::shadowRoom(t);
    const QRectF inner(pad, pad, size.width() - 2 * pad, size.height() - 2 * pad);
    if (t.addStyle == AddStyle::prompt) {
        qreal top = inner.top();
        toast_->setUnzoomedGeometry(QRectF(inner.left(), top, inner.width(), toastLine() - 4));
        top += toastLine();
        prompt_->setUnzoomedGeometry(QRectF(inner.left(), top, inner.width(), inner.bottom() - top));
        return;
    }
    const bool toast = toastShown();
    qreal addWidth = add_->preferredSize().width() + room;
    if (t.addStyle == AddStyle::panel)
        addWidth = toast ? addWidth : inner.width();
    add_->setUnzoomedGeometry(QRectF(inner.left(), inner.top(), addWidth, t.buttonSize + room));
    const qreal toastLeft = inner.left() + addWidth + 8;
    toast_->setUnzoomedGeometry(QRectF(toastLeft, inner.top(), inner.right() - toastLeft, t.buttonSize + room));
}

void Footer::resizeEvent(QResizeEvent *)
{
    relayout();
}

void Footer::paintEvent(QPaintEvent *)
{
    const Theme &t = theme();
    if (t.rowSeparator == SeparatorKind::none && t.titleRule == SeparatorKind::none)
        return;
    // Styles that rule their lines also rule off the footer.
    QPainter painter(this);
    begin(painter);
    const SeparatorKind kind = t.rowSeparator != SeparatorKind::none ? t.rowSeparator : t.titleRule;
    Draw::separator(painter, QPointF(0, 0.5), QPointF(unzoomedSize().width(), 0.5), kind, t.ruleInk, 1);
}

} // namespace tock

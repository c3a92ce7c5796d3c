#include "noticebanner.h"

#include "draw.h"

#include <QFontMetricsF>
#include <QTextOption>

namespace tock {

namespace {
constexpr qreal bannerPad = 10;
constexpr qreal bannerGap = 4;
} // namespace

NoticeBanner::NoticeBanner(AppModel *model, QWidget *parent, std::function<void()> showFiles)
    : View(model, parent), showFiles_(std::move(showFiles)), first_(new ThemedButton(model, this)),
      second_(new ThemedButton(model, this))
{
    connect(first_, &ThemedButton::clicked, this, [this] { run(firstAction_); });
    connect(second_, &ThemedButton::clicked, this, [this] { run(secondAction_); });
    refresh();
}

void NoticeBanner::run(Action action)
{
    switch (action) {
    case Action::dismiss: model()->dismissNotice(); break;
    case Action::showFiles:
        if (showFiles_)
            showFiles_();
        break;
    case Action::startFresh: model()->startFreshAfterUnreadable(); break;
    case Action::retry: model()->retrySave(); break;
    }
}

void NoticeBanner::refresh()
{
    const std::optional<StorageNotice> &notice = model()->notice();
    if (!notice)
        return;
    const QString showFiles = QStringLiteral("Show Files");
    std::visit(
        [&](const auto &n) {
            using N = std::decay_t<decltype(n)>;
            if constexpr (std::is_same_v<N, StorageNotice::Recovered> || std::is_same_v<N, StorageNotice::History>) {
                first_->setText(QStringLiteral("OK"));
                firstAction_ = Action::dismiss;
                second_->setText(showFiles);
                secondAction_ = Action::showFiles;
            } else if constexpr (std::is_same_v<N, StorageNotice::Unreadable>) {
                first_->setText(showFiles);
                firstAction_ = Action::showFiles;
                second_->setText(QStringLiteral("Start Fresh…"));
                secondAction_ = Action::startFresh;
            } else {
                first_->setText(QStringLiteral("Retry"));
                firstAction_ = Action::retry;
                second_->setText(showFiles);
                secondAction_ = Action::showFiles;
            }
        },
        notice->value);
    resizeEvent(nullptr);
    update();
}

QRectF NoticeBanner::bodyRect() const
{
    const Theme &t = theme();
    return unzoomedRect().adjusted(t.contentPadding, t.contentPadding, -t.contentPadding, 0);
}

qreal NoticeBanner::detailHeight(qreal width) const
{
    const std::optional<StorageNotice> &notice = model()->notice();
    if (!notice)
        return 0;
    const QFontMetricsF metrics(theme().captionFont);
    return metrics.boundingRect(QRectF(0, 0, width, 1000), Qt::TextWordWrap, notice->detail()).height();
}

qreal NoticeBanner::heightFor(qreal width) const
{
    if (!model()->notice())
        return 0;
    const Theme &t = theme();
    const qreal inner = width - 2 * t.contentPadding - 2 * bannerPad;
    const qreal title = QFontMetricsF(t.labelFont).height();
    return t.contentPadding + bannerPad + title + bannerGap + detailHeight(inner) + 8 + t.buttonSize + bannerPad;
}

void NoticeBanner::resizeEvent(QResizeEvent *)
{
    const QRectF body = bodyRect();
    const Theme &t = theme();
    const qreal shadow = t.buttonShadow ? t.shadowOffset : (t.lipShadow ? 2 : 0);
    const QSizeF s1 = first_->preferredSize() + QSizeF(shadow, shadow);
    const QSizeF s2 = second_->preferredSize() + QSizeF(shadow, shadow);
    const qreal top = body.bottom() - bannerPad - t.buttonSize;
    qreal x = body.left() + bannerPad;
    first_->setUnzoomedGeometry(QRectF(QPointF(x, top), s1));
    x += s1.width() + 6;
    second_->setUnzoomedGeometry(QRectF(QPointF(x, top), s2));
}

void NoticeBanner::paintEvent(QPaintEvent *)
{
    const std::optional<StorageNotice> &notice = model()->notice();
    if (!notice)
        return;
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF body = bodyRect();
    Draw::Panel panel;
    // A tinted card in the warning colour, light enough for the theme's ink.
    QColor fill = t.danger;
    fill.setAlpha(t.dark ? 50 : 34);
    panel.fill = panel.fill2 = fill;
    panel.border = t.danger;
    panel.borderWidth = std::max<qreal>(1, std::min<qreal>(t.rowBorderWidth, 2));
    panel.shape = t.rowShape;
    Draw::panel(painter, body, panel);
    const QRectF inner = body.adjusted(bannerPad, bannerPad, -bannerPad, -bannerPad);
    const qreal titleHeight = QFontMetricsF(t.labelFont).height();
    Draw::text(painter, QRectF(inner.left(), inner.top(), inner.width(), titleHeight), Qt::AlignLeft | Qt::AlignVCenter,
               Theme::applyCase(t.labelCase, notice->title()), t.labelFont, t.nameInk);
    painter.setFont(t.captionFont);
    painter.setPen(t.nameInk);
    painter.drawText(QRectF(inner.left(), inner.top() + titleHeight + bannerGap, inner.width(), 1000),
                     Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop, notice->detail());
}

} // namespace tock

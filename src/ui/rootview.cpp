#include "rootview.h"

#include "draw.h"
#include "flapclock.h"
#include "footer.h"
#include "noticebanner.h"
#include "rowlist.h"
#include "stylemenu.h"
#include "timerrow.h"
#include "titlebar.h"

#include <QMouseEvent>
#include <QPaintEvent>

namespace tock {

namespace {

// Catches a click outside the open style menu and closes it.
class MenuScrim : public View {
public:
    using View::View;

protected:
    void mousePressEvent(QMouseEvent *) override { model()->setStyleMenuOpen(false); }
};

// The theme's pixel grid or scan lines over the whole content; never takes the mouse.
class OverlayView : public View {
public:
    OverlayView(AppModel *model, QWidget *parent) : View(model, parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        const Theme &t = theme();
        // One pass per dirty rectangle: a pass over their bounding box would fill lines as tall
        // as the whole list for a few small time displays, and the raster engine hands fills
        // that tall to other threads, waking them every second.
        for (const QRect &dirty : event->region()) {
            QPainter painter(this);
            painter.setClipRect(dirty);
            begin(painter);
            // The texture darkens in the deepest ink of the screen.
            Draw::overlay(painter, unzoomedRect(), t.overlay, t.dark ? QColor(Qt::black) : t.windowBorder);
        }
    }
};

} // namespace

RootView::RootView(AppModel *model, QWidget *parent, WindowActions actions)
    : View(model, parent), actions_(std::move(actions)), context_{new FlapClock(this), true}, title_(new TitleBar(model, this)),
      banner_(new NoticeBanner(model, this, actions_.showFiles)), rows_(new RowList(model, context_, this)),
      hint_(new EmptyHint(model, this)), footer_(new Footer(model, this)), scrim_(new MenuScrim(model, this)),
      menu_(new StyleMenu(model, this)), overlay_(new OverlayView(model, this))
{
    setObjectName(QStringLiteral("RootView"));
    WindowButtons *buttons = title_->windowButtons();
    connect(buttons->button(WindowButton::Action::close), &WindowButton::clicked, this, [this] {
        if (actions_.close)
            actions_.close();
    });
    connect(buttons->button(WindowButton::Action::minimize), &WindowButton::clicked, this, [this] {
        if (actions_.minimize)
            actions_.minimize();
    });
    connect(buttons->button(WindowButton::Action::zoom), &WindowButton::clicked, this,
            [this] { this->model()->toggleLarge(); });

    connect(model, &AppModel::boardChanged, this, &RootView::boardChanged);
    connect(model, &AppModel::styleChanged, this, &RootView::restyle);
    connect(model, &AppModel::zoomChanged, this, &RootView::restyle);
    connect(model, &AppModel::screenHeightChanged, this, [this] { relayout(); });
    connect(model, &AppModel::hoveredIDChanged, this, &RootView::hoverOrEditChanged);
    connect(model, &AppModel::editingIDChanged, this, &RootView::hoverOrEditChanged);
    connect(model, &AppModel::draftChanged, this, &RootView::hoverOrEditChanged);
    connect(model, &AppModel::swipeIDChanged, this, [this] { offsetsChanged(context_.animated); });
    connect(model, &AppModel::swipeOffsetChanged, this, [this] { offsetsChanged(context_.animated); });
    connect(model, &AppModel::revealedIDChanged, this, [this] { offsetsChanged(context_.animated); });
    connect(model, &AppModel::noticeChanged, this, &RootView::noticeChanged);
    connect(model, &AppModel::styleMenuOpenChanged, this, &RootView::menuChanged);
    connect(model, &AppModel::toastChanged, this, [this] { footer_->followToast(context_.animated && isVisible()); });
    connect(footer_, &Footer::heightChanged, this, [this] { relayout(); });
    const auto promptChanged = [this] {
        if (theme().addStyle == AddStyle::prompt) {
            footer_->promptView()->update();
            relayout();
        }
    };
    connect(model, &AppModel::promptTextChanged, this, promptChanged);
    connect(model, &AppModel::promptCaretChanged, this, promptChanged);
    connect(model, &AppModel::shellOutputChanged, this, promptChanged);
    connect(model, &AppModel::shellOutputIsErrorChanged, this, promptChanged);

    menuChanged();
    noticeChanged();
    restyle();
}

qreal RootView::inset() const
{
    return theme().windowBorderWidth;
}

QSizeF RootView::contentSize() const
{
    const Theme &t = theme();
    const qreal chrome = 2 * inset() + t.titleHeight + banner_->heightFor(contentWidth - 2 * inset())
                       + footer_->preferredHeight();
    const qreal list = model()->board().timers.isEmpty() ? EmptyHint::height : rows_->contentHeight();
    qreal height = chrome + std::min(list, std::max<qreal>(heightCap_ - chrome, t.rowHeight + 2 * t.contentPadding));
    if (model()->styleMenuOpen()) {
        // The window grows to show the whole menu when the list is short.
        const qreal menuBottom = inset() + t.titleHeight + menu_->preferredSize().height() + 4;
        height = std::max(height, menuBottom + t.contentPadding);
    }
    return {contentWidth, std::ceil(height)};
}

qreal RootView::heightCap() const
{
    return heightCap_;
}

void RootView::setHeightCap(qreal cap)
{
    if (heightCap_ == cap)
        return;
    heightCap_ = cap;
    relayout();
}

void RootView::relayout()
{
    const Theme &t = theme();
    const qreal b = inset();
    const QSizeF size = unzoomedSize();
    const qreal width = size.width() - 2 * b;
    qreal y = b;
    title_->setUnzoomedGeometry(QRectF(b, y, width, t.titleHeight));
    y += t.titleHeight;
    const qreal bannerHeight = banner_->heightFor(width);
    banner_->setVisible(bannerHeight > 0);
    banner_->setUnzoomedGeometry(QRectF(b, y, width, bannerHeight));
    y += bannerHeight;
    const qreal footerHeight = footer_->preferredHeight();
    const qreal listBottom = size.height() - b - footerHeight;
    const bool empty = model()->board().timers.isEmpty();
    hint_->setVisible(empty);
    rows_->setVisible(!empty);
    hint_->setUnzoomedGeometry(QRectF(b, y, width, std::max<qreal>(0, listBottom - y)));
    rows_->setUnzoomedGeometry(QRectF(b, y, width, std::max<qreal>(0, listBottom - y)));
    footer_->setUnzoomedGeometry(QRectF(b, listBottom, width, footerHeight));

    const QSizeF menuSize = menu_->preferredSize();
    const QRectF sb(title_->styleButton()->geometry().topLeft() / zoom(), title_->styleButton()->preferredSize());
    // Right-aligned under the style button, inside the window.
    qreal menuLeft = std::min(sb.right() + b - menuSize.width(), size.width() - b - menuSize.width() - 4);
    menuLeft = std::max(menuLeft, b + 4);
    menu_->setUnzoomedGeometry(QRectF(QPointF(menuLeft, b + sb.bottom() + 4), menuSize));
    scrim_->setUnzoomedGeometry(unzoomedRect());
    overlay_->setUnzoomedGeometry(QRectF(b, b, width, size.height() - 2 * b));
    overlay_->setVisible(t.overlay != Theme::Overlay::none);

    const QSizeF wanted = contentSize();
    if (wanted != lastSize_) {
        lastSize_ = wanted;
        Q_EMIT contentSizeChanged();
    }
}

void RootView::restyle()
{
    title_->relayout();
    rows_->refreshAll();
    footer_->refresh();
    banner_->refresh();
    menu_->relayout();
    relayout();
    // A new style or zoom changes every pixel.
    const QList<QWidget *> all = findChildren<QWidget *>();
    for (QWidget *w : all)
        w->update();
    update();
}

void RootView::boardChanged(const BoardChange &change)
{
    if (change.inserted.isEmpty() && change.removed.isEmpty() && change.moved.isEmpty()) {
        // Only some timers changed: just their rows redraw.
        for (const QUuid &id : change.changed) {
            if (TimerRow *row = rows_->row(id))
                row->refresh();
        }
        return;
    }
    rows_->sync();
    relayout();
}

void RootView::hoverOrEditChanged()
{
    for (TimerRow *row : rows_->rows())
        row->face()->update();
    rows_->refreshAll();
}

void RootView::offsetsChanged(bool animated)
{
    for (TimerRow *row : rows_->rows())
        row->followOffset(animated);
}

void RootView::noticeChanged()
{
    banner_->refresh();
    relayout();
}

void RootView::menuChanged()
{
    const bool open = model()->styleMenuOpen();
    relayout();
    scrim_->setVisible(open);
    menu_->setVisible(open);
    scrim_->raise();
    menu_->raise();
    overlay_->raise();
    for (const StyleID style : StyleIDs::allCases())
        menu_->item(style)->update();
    title_->styleButton()->update();
}

void RootView::setAnimated(bool animated)
{
    context_.animated = animated;
    rows_->refreshAll();
}

void RootView::resizeEvent(QResizeEvent *)
{
    relayout();
}

void RootView::paintEvent(QPaintEvent *)
{
}

} // namespace tock

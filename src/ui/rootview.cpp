#include "rootview.h"

#include "announcements.h"
#include "draw.h"
#include "editmask.h"
#include "flapclock.h"
#include "focusmark.h"
#include "footer.h"
#include "promptview.h"
#include "toastview.h"
#include "emptyhint.h"
#include "noticebanner.h"
#include "reportview.h"
#include "rowlist.h"
#include "stylemenu.h"
#include "livetimebutton.h"
#include "timerrow.h"
#include "stylebutton.h"
#include "titlebar.h"
#include "windowbuttons.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>

namespace tock {

namespace {

// Room around the report for the focus mark.
constexpr qreal reportMargin = 6;

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
      report_(new ReportView(model, this)),
      hint_(new EmptyHint(model, this)), footer_(new Footer(model, this)), scrim_(new MenuScrim(model, this)),
      menu_(new StyleMenu(model, this)), overlay_(new OverlayView(model, this)),
      focusMark_(new FocusMark(model, this, rows_)), announcer_(new QWidget(this))
{
    setObjectName(QStringLiteral("RootView"));
    announcer_->setObjectName(QStringLiteral("tockAnnouncer"));
    announcer_->setGeometry(0, 0, 0, 0);
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
    connect(model, &AppModel::toastChanged, this, [this] {
        footer_->followToast(context_.animated && isVisible());
        if (const std::optional<Toast> &toast = this->model()->toast())
            Accessibility::announce(announcer_, toast->entry.message());
    });
    connect(&model->shell(), &ShellSession::shellOutputChanged, this, [this] {
        if (theme().addStyle == AddStyle::prompt)
            Accessibility::announce(announcer_, this->model()->shell().shellOutput().join(QLatin1Char('\n')));
    });
    connect(footer_, &Footer::heightChanged, this, [this] { relayout(); });
    connect(report_, &ReportView::openChanged, this, &RootView::reportOpenChanged);
    connect(report_, &ReportView::heightChanged, this, [this] { relayout(); });
    const auto promptChanged = [this] {
        if (theme().addStyle == AddStyle::prompt) {
            footer_->promptView()->update();
            relayout();
        }
    };
    const ShellSession *shell = &model->shell();
    connect(shell, &ShellSession::promptTextChanged, this, promptChanged);
    connect(shell, &ShellSession::promptCaretChanged, this, promptChanged);
    connect(shell, &ShellSession::shellOutputChanged, this, promptChanged);
    connect(shell, &ShellSession::shellOutputIsErrorChanged, this, promptChanged);
    connect(shell, &ShellSession::promptTextChanged, this, [this] { Accessibility::textChanged(footer_->promptView()); });
    connect(shell, &ShellSession::promptCaretChanged, this, [this] { Accessibility::caretMoved(footer_->promptView()); });

    menuChanged();
    noticeChanged();
    restyle();
    // The window itself holds the focus at first, so showing it does not focus a control.
    window()->setFocus(Qt::OtherFocusReason);
    qApp->installEventFilter(this);
}

bool RootView::focusNextPrevChild(bool)
{
    window()->setFocus(Qt::OtherFocusReason);
    return true;
}

bool RootView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    QWidget *focus = QApplication::focusWidget();
    // Once per key: at the widget it is sent to, before it travels up to the parents.
    if (watched != (focus ? static_cast<QObject *>(focus) : window()) || (focus && focus->window() != window()))
        return false;
    const auto &key = static_cast<const QKeyEvent &>(*event);
    if (focusKey(key))
        return true;
    const bool tab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
    if (!tab || (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    for (QWidget *w = focus; w; w = w->parentWidget()) {
        if (qobject_cast<EditMask *>(w))
            return false; // Tab moves between the mask's fields
    }
    const QList<QWidget *> chain = focusChain();
    const bool onControl = std::any_of(chain.begin(), chain.end(), [focus](QWidget *c) {
        return c && focus && (c == focus || c->isAncestorOf(focus));
    });
    if (chain.contains(nullptr) && !onControl)
        return false; // the prompt has the keys: Tab completes
    return moveFocus(key.key() == Qt::Key_Tab && !key.modifiers().testFlag(Qt::ShiftModifier));
}

qreal RootView::inset() const
{
    return theme().windowBorderWidth;
}

QSizeF RootView::contentSize() const
{
    const Theme &t = theme();
    const qreal chrome = 2 * inset() + t.titleHeight + banner_->heightFor(Theme::contentWidth - 2 * inset())
                       + footer_->preferredHeight();
    const qreal list = report_->isOpen()                  ? report_->preferredHeight() + 2 * reportMargin
                     : model()->board().timers.isEmpty() ? EmptyHint::height
                                                         : rows_->contentHeight();
    qreal height = chrome + std::min(list, std::max<qreal>(heightCap_ - chrome, t.rowHeight + 2 * t.contentPadding));
    if (model()->styleMenuOpen()) {
        // The window grows to show the whole menu when the list is short.
        const qreal menuBottom = inset() + t.titleHeight + menu_->preferredSize().height() - menu_->shadowRoom().top() + 4;
        height = std::max(height, menuBottom + t.contentPadding);
    }
    return {Theme::contentWidth, std::ceil(height)};
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
    const bool report = report_->isOpen();
    hint_->setVisible(empty && !report);
    rows_->setVisible(!empty && !report);
    report_->setVisible(report);
    report_->setUnzoomedGeometry(QRectF(b + reportMargin, y + reportMargin, width - 2 * reportMargin,
                                        std::max<qreal>(0, listBottom - y - 2 * reportMargin)));
    hint_->setUnzoomedGeometry(QRectF(b, y, width, std::max<qreal>(0, listBottom - y)));
    rows_->setUnzoomedGeometry(QRectF(b, y, width, std::max<qreal>(0, listBottom - y)));
    footer_->setUnzoomedGeometry(QRectF(b, listBottom, width, footerHeight));

    const QMarginsF menuRoom = menu_->shadowRoom();
    const QSizeF menuSize = menu_->preferredSize();
    const qreal bodyWidth = menuSize.width() - menuRoom.left() - menuRoom.right();
    const QRectF sb(title_->styleButton()->geometry().topLeft() / zoom(), title_->styleButton()->preferredSize());
    // The body right-aligned under the style button, inside the window; its shadow may reach out.
    qreal menuLeft = std::min(sb.right() + b - bodyWidth, size.width() - b - bodyWidth - 4);
    menuLeft = std::max(menuLeft, b + 4);
    menu_->setUnzoomedGeometry(
        QRectF(QPointF(menuLeft - menuRoom.left(), b + sb.bottom() + 4 - menuRoom.top()), menuSize));
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
        // Only some timers changed: just their rows redraw, and a reader hears what changed
        // (a start, pause, reset or set; the running seconds are never announced).
        for (const QUuid &id : change.changed) {
            if (TimerRow *row = rows_->row(id)) {
                row->refresh();
                Accessibility::nameChanged(row);
                Accessibility::nameChanged(row->timeButton());
            }
        }
        return;
    }
    rows_->sync();
    relayout();
    if (model()->board().timers.isEmpty() && !change.removed.isEmpty())
        Accessibility::announce(announcer_, EmptyHint::text());
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
    if (const std::optional<StorageNotice> &notice = model()->notice())
        Accessibility::announce(announcer_, notice->title() + QStringLiteral(". ") + notice->detail());
}

void RootView::menuChanged()
{
    const bool open = model()->styleMenuOpen();
    relayout();
    scrim_->setVisible(open);
    menu_->setVisible(open);
    scrim_->raise();
    menu_->raise();
    focusMark_->raise();
    overlay_->raise();
    for (const StyleID style : StyleIDs::allCases())
        menu_->item(style)->update();
    StyleButton *button = title_->styleButton();
    button->update();
    // Opened from the keyboard, the menu takes the focus at the current style; closing it
    // gives the focus back to the button.
    QWidget *focus = QApplication::focusWidget();
    if (open && focus == button)
        menu_->item(model()->style())->setFocus(Qt::OtherFocusReason);
    else if (!open && focus && menu_->isAncestorOf(focus))
        button->setFocus(Qt::OtherFocusReason);
}

void RootView::reportOpenChanged()
{
    relayout();
    // Open, the report has the keys (its arrows and Esc); closed, they go back to the window.
    QWidget *focus = QApplication::focusWidget();
    if (report_->isOpen() && focus != report_)
        report_->setFocus(Qt::OtherFocusReason);
    else if (!report_->isOpen() && (!focus || focus == report_))
        window()->setFocus(Qt::OtherFocusReason);
    focusMark_->follow();
}

QList<QWidget *> RootView::focusChain() const
{
    if (model()->styleMenuOpen()) {
        QList<QWidget *> items;
        for (const StyleID style : StyleIDs::allCases())
            items << menu_->item(style);
        return items;
    }
    QList<QWidget *> chain{title_->styleButton()};
    if (report_->isOpen())
        return chain << report_;
    for (TimerRow *row : rows_->rows())
        chain << row->focusControls();
    if (theme().addStyle == AddStyle::prompt)
        chain << nullptr;
    else
        chain << footer_->addButton();
    if (footer_->toastView()->isVisible() && model()->toast())
        chain << footer_->toastView()->undoButton();
    if (model()->notice())
        chain << banner_->firstButton() << banner_->secondButton();
    return chain;
}

bool RootView::moveFocus(bool next)
{
    const QList<QWidget *> chain = focusChain();
    if (chain.isEmpty())
        return false;
    QWidget *focus = QApplication::focusWidget();
    qsizetype at = -1;
    for (qsizetype i = 0; i < chain.size(); ++i) {
        if (chain.at(i) && (chain.at(i) == focus || chain.at(i)->isAncestorOf(focus)))
            at = i;
    }
    if (focus == window())
        focus = nullptr;
    if (at < 0 && !chain.contains(nullptr))
        at = next ? -1 : chain.size();
    else if (at < 0)
        at = chain.indexOf(nullptr); // the prompt had the keys
    const qsizetype n = chain.size();
    const qsizetype to = ((at + (next ? 1 : -1)) % n + n) % n;
    if (QWidget *w = chain.at(to))
        w->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    else
        window()->setFocus(Qt::OtherFocusReason); // back to the prompt
    return true;
}

bool RootView::focusKey(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers held = event.modifiers() & ~Qt::KeypadModifier;
    const bool ctrlTab = (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) && held.testFlag(Qt::ControlModifier);
    if (!ctrlTab && !(event.key() == Qt::Key_F6 && (held & ~Qt::ShiftModifier) == Qt::NoModifier))
        return false;
    return moveFocus(!held.testFlag(Qt::ShiftModifier) && event.key() != Qt::Key_Backtab);
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

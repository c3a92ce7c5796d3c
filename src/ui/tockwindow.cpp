#include "tockwindow.h"

#include "accessibility.h"
#include "dialogs.h"
#include "draw.h"
#include "platformwindow.h"
#include "rootview.h"
#include "theme.h"

#include <QCloseEvent>
#include <QPointer>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#ifdef TOCK_HAVE_XCB
#include <xcb/xcb.h>
#endif

namespace tock {

namespace {
constexpr qreal shadowMargin = 14; // unzoomed; room for the hard and the soft shadow
} // namespace

TockWindow::TockWindow(AppModel *model, std::function<void()> showFiles, QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint), model_(model)
{
    // Before any view is described to a reader: an interface, once made, is kept.
    Accessibility::install();
    setObjectName(QStringLiteral("TockWindow"));
    setWindowTitle(QStringLiteral("Tock"));
    setAttribute(Qt::WA_TranslucentBackground);
#ifdef Q_OS_MACOS
    setWindowFlag(Qt::NoDropShadowWindowHint);
#endif
    WindowActions actions;
    actions.close = [this] { close(); };
    actions.minimize = [this] { showMinimized(); };
    actions.showFiles = std::move(showFiles);
    root_ = new RootView(model, this, std::move(actions));
    connect(root_, &RootView::contentSizeChanged, this, &TockWindow::fitToContent);
    connect(model, &AppModel::zoomChanged, this, &TockWindow::fitToContent);
    connect(model, &AppModel::styleChanged, this, [this] {
        fitToContent();
        update();
    });
    connect(model, &AppModel::screenHeightChanged, this, &TockWindow::fitToContent);
    fitToContent();
}

void TockWindow::setMargin(Margin margin)
{
    margin_ = margin;
    fitToContent();
}

int TockWindow::marginPixels() const
{
    return margin_ == Margin::none ? 0 : int(std::ceil(shadowMargin * std::max(model_->zoom(), 0.1)));
}

void TockWindow::setAnimated(bool animated)
{
    root_->setAnimated(animated);
}

void TockWindow::trackScreen()
{
    if (QScreen *s = screen())
        model_->setScreenHeight(s->availableGeometry().height());
}

void TockWindow::fitToContent()
{
    const qreal z = std::max(model_->zoom(), 0.1);
    const int margin = marginPixels();
    // The rows scroll once the window would be taller than the screen.
    root_->setHeightCap((model_->screenHeight() - 2 * margin - 40) / z);
    const QSizeF content = root_->contentSize();
    const QSize card(int(std::lround(content.width() * z)), int(std::lround(content.height() * z)));
    View::place(root_, QRect(QPoint(margin, margin), card));
    const QSize total = card + QSize(2 * margin, 2 * margin);
    if (size() != total)
        setFixedSize(total);
    if (margin_ == Margin::none) {
        const Theme &t = Theme::of(model_->style());
        // No compositor: the card's own outline is the window's shape.
        ShapeKind kind = t.windowShape;
        kind.radius *= z;
        const QPainterPath shape = Draw::shape(kind, QRectF(QPointF(0, 0), QSizeF(card)));
        setMask(QRegion(shape.toFillPolygon().toPolygon()));
    } else {
        clearMask();
    }
    applyInputRegion();
    update();
}

void TockWindow::applyInputRegion()
{
    // Clicks on the shadow margin belong to the windows behind.
    if (margin_ == Margin::shadow && windowHandle())
        setInputRegion(this, inputRegion());
}

QRegion TockWindow::inputRegion() const
{
    return margin_ == Margin::shadow ? QRegion(root_->geometry()) : QRegion(rect());
}

void TockWindow::paintEvent(QPaintEvent *event)
{
    const qreal z = std::max(model_->zoom(), 0.1);
    const QRect root = root_->geometry();
    const QString key = QStringLiteral("%1|%2|%3|%4,%5,%6,%7")
                            .arg(StyleIDs::rawValue(model_->style()))
                            .arg(z)
                            .arg(int(margin_))
                            .arg(root.x())
                            .arg(root.y())
                            .arg(root.width())
                            .arg(root.height());
    card_.paint(this, QPointF(), event->region(), key, [&](QPainter &painter) {
        const Theme &t = Theme::of(model_->style());
        Draw::Panel panel;
        panel.fill = t.windowFill;
        panel.fill2 = t.windowFill2;
        panel.border = t.windowBorder;
        panel.borderWidth = t.windowBorderWidth;
        panel.shape = t.windowShape;
        const bool roomForShadow = margin_ == Margin::shadow;
        panel.hardShadow = roomForShadow && t.hardShadow;
        panel.shadowColor = t.hardShadowColor;
        panel.shadowOffset = t.shadowOffset + 1;
        panel.softShadow = roomForShadow && t.systemShadow;
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(z, z);
        Draw::panel(painter, QRectF(QPointF(root.topLeft()) / z, QSizeF(root.size()) / z), panel);
    });
}

void TockWindow::closeEvent(QCloseEvent *event)
{
    // Closing stops the clocks: every running timer pauses and the board is saved now.
    model_->commitEdit();
    model_->pauseAll();
    // Changes that did not reach the disk are lost only on the user's word; Cancel keeps the
    // window, so Retry can still save them.
    if (const std::optional<QString> reason = model_->unsavedReason(); reason && !leaving_) {
        event->ignore();
        const QPointer<TockWindow> self(this);
        Dialogs::askQuitWithoutSaving(this, *reason, [self] {
            if (self)
                self->closeWithoutAsking();
        });
        return;
    }
    event->accept();
    Q_EMIT closed();
}

void TockWindow::closeWithoutAsking()
{
    leaving_ = true;
    close();
}

void TockWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::WindowStateChange) {
        model_->setWindowVisible(isVisible() && !isMinimized());
    } else if (event->type() == QEvent::ActivationChange) {
        // The lights, the title and the prompt's caret show whether the window is active.
        const QList<QWidget *> all = findChildren<QWidget *>();
        for (QWidget *w : all)
            w->update();
    }
    QWidget::changeEvent(event);
}

void TockWindow::showEvent(QShowEvent *event)
{
    model_->setWindowVisible(!isMinimized());
    trackScreen();
    if (QWindow *handle = windowHandle()) {
        connect(handle, &QWindow::screenChanged, this, &TockWindow::trackScreen, Qt::UniqueConnection);
    }
    // The platform window takes a region only once its surface exists, just after this event.
    QTimer::singleShot(0, this, &TockWindow::applyInputRegion);
    QWidget::showEvent(event);
}

void TockWindow::hideEvent(QHideEvent *event)
{
    model_->setWindowVisible(false);
    QWidget::hideEvent(event);
}

bool desktopComposites()
{
#ifdef TOCK_HAVE_XCB
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return true;
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return true;
    // A compositing manager owns the selection _NET_WM_CM_S<screen>.
    const QByteArray name = "_NET_WM_CM_S0";
    xcb_intern_atom_reply_t *atom =
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, uint16_t(name.size()), name.constData()), nullptr);
    if (!atom)
        return true;
    xcb_get_selection_owner_reply_t *owner =
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr);
    const bool composites = owner && owner->owner != XCB_NONE;
    free(owner);
    free(atom);
    return composites;
#else
    return true;
#endif
}

} // namespace tock

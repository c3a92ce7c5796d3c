#include "panelindicator.h"

#include "appmodel.h"
#include "panelhost.h"
#include "text.h"
#include "timevalues.h"

#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QWidget>

#include <algorithm>

namespace tock {

namespace {

// The sizes panels ask for: 16 and 22 to 24 on most Linux panels, twice that on dense screens.
constexpr int iconSizes[] = {16, 22, 24, 32, 44, 48, 64};
constexpr qsizetype nameLimit = 40;

// "Lunch · 00:12:34", the name cut to nameLimit characters.
QString entryLine(const TimerItem &timer, int64_t seconds)
{
    QString name = timer.displayName();
    const QStringList clusters = Text::graphemes(name);
    if (clusters.size() > nameLimit)
        name = clusters.mid(0, nameLimit - 1).join(QString()) + QStringLiteral("…");
    return name + QStringLiteral(" · ") + TimeFormat::string(double(seconds));
}

QString windowItemText(const QWidget *window)
{
    return window->isVisible() && !window->isMinimized() ? QStringLiteral("Hide Tock") : QStringLiteral("Show Tock");
}

} // namespace

PanelIndicator::PanelIndicator(AppModel *model, QWidget *window, PanelActions actions)
    : model_(model), window_(window), actions_(std::move(actions))
{
    menu_ = new QMenu;
    menu_->setTitle(QStringLiteral("Tock"));
    empty_ = menu_->addAction(QStringLiteral("No timers yet"));
    empty_->setEnabled(false);
    timersEnd_ = menu_->addSeparator();
    pauseAll_ = menu_->addAction(QStringLiteral("Pause All"), model_, &AppModel::pauseAll);
    menu_->addSeparator();
    windowItem_ = menu_->addAction(windowItemText(window_), this, &PanelIndicator::toggleWindow);
    // The one place for the report's item; it shows once the window application passes it.
    if (actions_.report)
        menu_->addAction(QStringLiteral("Report"), this, [this] {
            // The report is in the window, so the window comes forward first.
            showWindow();
            actions_.report();
        });
    menu_->addSeparator();
    // The same as closing the window: the timers pause and Tock ends.
    menu_->addAction(QStringLiteral("Quit Tock"), window_, [this] { window_->close(); });

    rebuildTimers();
    refreshTooltip();
    connect(model_, &AppModel::boardChanged, this, &PanelIndicator::onBoardChanged);
    // Panels ask just before they open the menu; the running entries' times are brought up to
    // date then rather than every second.
    connect(menu_, &QMenu::aboutToShow, this, &PanelIndicator::refreshEntries);
    window_->installEventFilter(this);
}

PanelIndicator::~PanelIndicator()
{
    // The icon goes first: it still refers to the menu.
    delete tray_;
    tray_ = nullptr;
    // The menu exported on the bus keeps one item per action, and only removing an action frees
    // its item: a menu deleted with its actions in place would leave them all behind.
    menu_->clear();
    delete menu_;
}

void PanelIndicator::showInPanel()
{
    if (host_)
        return;
    host_ = new PanelHost(this);
    connect(host_, &PanelHost::appeared, this, &PanelIndicator::install);
}

void PanelIndicator::install()
{
    if (tray_)
        return;
    tray_ = new QSystemTrayIcon(this);
    if (host_->drawsExportedMenu()) {
        labels_ = Labels::exported;
        refreshEntries();
    }
    running_ = model_->board().anyRunning();
    tray_->setIcon(icon(*running_));
    tray_->setToolTip(tooltip_);
    tray_->setContextMenu(menu_);
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            toggleWindow();
    });
    // The model announces a second only while a timer runs; nothing here wakes otherwise.
    connect(model_->displayTick(), &DisplayTick::secondsChanged, this, [this] {
        refreshTooltip();
        if (menu_->isVisible()) // a menu Tock draws itself, open right now
            refreshEntries();
    });
    tray_->show();
}

void PanelIndicator::onBoardChanged(const BoardChange &change)
{
    if (!change.inserted.isEmpty() || !change.removed.isEmpty() || !change.moved.isEmpty()) {
        rebuildTimers();
    } else {
        for (const QUuid &id : change.changed) {
            if (const std::optional<qsizetype> index = model_->board().index(id))
                refreshEntry(*index);
        }
    }
    pauseAll_->setEnabled(model_->board().anyRunning());
    refreshIcon();
    refreshTooltip();
}

void PanelIndicator::rebuildTimers()
{
    qDeleteAll(entries_);
    entries_.clear();
    const QList<TimerItem> &timers = model_->board().timers;
    for (const TimerItem &timer : timers) {
        auto *entry = new QAction(menu_);
        entry->setCheckable(true);
        const QUuid id = timer.id;
        // Qt checks the entry itself on a click; the model's answer sets it right again.
        connect(entry, &QAction::triggered, model_, [model = model_, id] { model->toggle(id); });
        menu_->insertAction(timersEnd_, entry);
        entries_.append(entry);
    }
    empty_->setVisible(timers.isEmpty());
    pauseAll_->setEnabled(model_->board().anyRunning());
    refreshEntries();
}

void PanelIndicator::refreshEntry(qsizetype index)
{
    if (index >= entries_.size())
        return;
    const TimerItem &timer = model_->board().timers.at(index);
    QAction *entry = entries_.at(index);
    // Both setters do nothing when nothing changed, so an unchanged entry is not re-sent.
    entry->setText(entryText(timer, model_->displayedSeconds(timer.id), labels_));
    entry->setChecked(timer.isRunning());
}

void PanelIndicator::refreshEntries()
{
    for (qsizetype i = 0; i < entries_.size(); ++i)
        refreshEntry(i);
    refreshWindowItem();
}

void PanelIndicator::refreshTooltip()
{
    const QString text = toolTip(*model_);
    if (text == tooltip_)
        return;
    tooltip_ = text;
    if (tray_)
        tray_->setToolTip(text);
}

void PanelIndicator::refreshIcon()
{
    const bool running = model_->board().anyRunning();
    if (!tray_ || running_ == running)
        return;
    running_ = running;
    tray_->setIcon(icon(running));
}

void PanelIndicator::refreshWindowItem()
{
    windowItem_->setText(windowItemText(window_));
}

void PanelIndicator::toggleWindow()
{
    if (window_->isVisible() && !window_->isMinimized())
        hideWindow();
    else
        showWindow();
}

void PanelIndicator::hideWindow()
{
    hiddenAt_ = window_->pos();
    // Only the panel shows Tock now, so a dialog closing must not end it; closing the window
    // (or Quit) still does, through the window's own signal.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    window_->hide();
}

void PanelIndicator::showWindow()
{
    // A window mapped again is placed anew by the window manager unless it asks for a place.
    if (hiddenAt_ && !window_->isVisible())
        window_->move(*hiddenAt_);
    hiddenAt_.reset();
    if (window_->isMinimized())
        window_->showNormal();
    else
        window_->show();
    window_->raise();
    window_->activateWindow();
}

bool PanelIndicator::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == window_) {
        const QEvent::Type type = event->type();
        if (type == QEvent::Show || type == QEvent::Hide || type == QEvent::WindowStateChange)
            refreshWindowItem();
    }
    return QObject::eventFilter(watched, event);
}

QIcon PanelIndicator::icon(bool running)
{
    QIcon icon;
    for (const int size : iconSizes) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        paintIcon(painter, QRectF(0, 0, size, size), running);
        painter.end();
        icon.addPixmap(QPixmap::fromImage(image));
    }
    return icon;
}

void PanelIndicator::paintIcon(QPainter &painter, const QRectF &rect, bool running)
{
    // Tock's small application icon (resources/icons/tock-small.svg), in its 64-unit square.
    const QColor ink(0x1C, 0x1B, 0x19);
    const QColor paper(0xFF, 0xFD, 0xF7);
    const QColor dial(0xFF, 0x7A, 0x66);
    // The play mark: 4.8:1 against a dark panel, 3.5:1 under the light triangle, and ringed in
    // ink against a light panel.
    const QColor go(0x1F, 0x9D, 0x55);
    const QPen line(ink, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / 64, rect.height() / 64);

    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    painter.drawRoundedRect(QRectF(8, 8, 52, 52), 12, 12);
    painter.setPen(line);
    painter.setBrush(paper);
    painter.drawRoundedRect(QRectF(6, 6, 48, 48), 10, 10);
    painter.setBrush(dial);
    painter.drawEllipse(QPointF(30, 30), 14, 14);
    painter.setBrush(Qt::NoBrush);
    const QPointF hands[] = {{30, 20}, {30, 30}, {36, 34}};
    painter.drawPolyline(hands, 3);

    if (running) {
        painter.setBrush(go);
        painter.drawEllipse(QPointF(46, 46), 16, 16);
        painter.setPen(Qt::NoPen);
        painter.setBrush(paper);
        // As large as the disc allows, so that it still reads as a triangle at 16 pixels.
        const QPointF play[] = {{40, 36}, {40, 56}, {57, 46}};
        painter.drawPolygon(play, 3);
    }
    painter.restore();
}

QString PanelIndicator::toolTip(const AppModel &model)
{
    QStringList lines;
    int more = 0;
    for (const TimerItem &timer : model.board().timers) {
        if (!timer.isRunning())
            continue;
        if (lines.size() < maxTooltipLines)
            lines << entryLine(timer, model.displayedSeconds(timer.id));
        else
            ++more;
    }
    if (lines.isEmpty())
        return QStringLiteral("Tock · no timer running");
    if (more > 0)
        lines << QStringLiteral("and %1 more").arg(more);
    return lines.join(QLatin1Char('\n'));
}

QString PanelIndicator::entryText(const TimerItem &timer, int64_t seconds, Labels labels)
{
    QString text = entryLine(timer, seconds).replace(QLatin1Char('&'), QLatin1String("&&"));
    // Qt turns the first '&' into the exported access-key underscore itself ("&&" becomes "_&",
    // shown as "&"), but passes an underscore of the name on as it is.
    if (labels == Labels::exported)
        text.replace(QLatin1Char('_'), QLatin1String("__"));
    return text;
}

QImage PanelIndicator::still(AppModel &model, Panel panel, qreal pixelRatio)
{
    struct Colours {
        QColor bar, menu, text, disabled, highlight, line;
    };
    // Disabled entries keep 4.5:1 against their menu.
    const Colours c = panel == Panel::light
                          ? Colours{QColor(0xED, 0xED, 0xED), QColor(0xFA, 0xFA, 0xFA), QColor(0x1E, 0x1E, 0x1E),
                                    QColor(0x6E, 0x6E, 0x6E), QColor(0x2A, 0x6F, 0xD6), QColor(0xD0, 0xD0, 0xD0)}
                          : Colours{QColor(0x1E, 0x1F, 0x22), QColor(0x2B, 0x2C, 0x30), QColor(0xED, 0xED, 0xED),
                                    QColor(0x9A, 0x9A, 0x9A), QColor(0x3D, 0x7B, 0xE0), QColor(0x45, 0x46, 0x4B)};
    QPalette palette;
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::AlternateBase})
        palette.setColor(role, c.menu);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, c.text);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, c.disabled);
    palette.setColor(QPalette::Highlight, c.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole role : {QPalette::Light, QPalette::Midlight, QPalette::Mid, QPalette::Dark, QPalette::Shadow})
        palette.setColor(role, c.line);

    QWidget window;
    PanelIndicator indicator(&model, &window);
    QMenu *menu = indicator.menu();
    menu->setPalette(palette);
    menu->ensurePolished();
    menu->adjustSize();
    Q_EMIT menu->aboutToShow();

    constexpr int bar = 28;
    constexpr int iconSize = 22;
    constexpr int gap = 8;
    const QSize size(std::max(menu->width() + 2 * gap, 4 * iconSize), bar + gap + menu->height() + gap);
    QImage image(size * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(c.bar);
    QPainter painter(&image);
    // The idle icon, then the running one the menu opens from, at the panel's right end.
    const int top = (bar - iconSize) / 2;
    const int running = size.width() - gap - iconSize;
    paintIcon(painter, QRectF(running - iconSize - gap, top, iconSize, iconSize), false);
    paintIcon(painter, QRectF(running, top, iconSize, iconSize), true);
    painter.fillRect(QRect(0, bar, size.width(), size.height() - bar), c.bar.darker(panel == Panel::light ? 103 : 80));
    const QPoint at(size.width() - gap - menu->width(), bar + gap);
    menu->render(&painter, at, QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
    painter.end();
    return image;
}

} // namespace tock

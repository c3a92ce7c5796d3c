#include "livetimebutton.h"

#include "flapclock.h"
#include "flaptext.h"
#include "glyph.h"
#include "timevalues.h"
#include "viewcontext.h"

namespace tock {

namespace {

// Flap tile geometry, from the time size.
qreal tileWidth(const Theme &t) { return std::round(t.timeSize * 0.68); }
qreal tileHeight(const Theme &t) { return std::round(t.timeSize * 1.36); }
qreal tileGap() { return 2; }
qreal colonWidth(const Theme &t) { return std::round(t.timeSize * 0.3); }

} // namespace

LiveTimeButton::LiveTimeButton(AppModel *model, const ViewContext &context, QWidget *parent, QUuid id)
    : ButtonView(model, parent), context_(context), id_(id)
{
    connect(this, &ButtonView::clicked, this, [this] { this->model()->beginEdit(id_); });
    connect(model->displayTick(), &DisplayTick::tickChanged, this, &LiveTimeButton::onTick);
    shownLength_ = text().size();
}

QString LiveTimeButton::text() const
{
    return TimeFormat::string(double(model()->displayedSeconds(id_)));
}

QString LiveTimeButton::accessibleText(const QString &time)
{
    return QStringLiteral("Elapsed time ") + time + QStringLiteral(". Click to edit.");
}

qreal LiveTimeButton::widthFor(const Theme &t, const QString &text)
{
    if (t.timeKind == TimeKind::flap) {
        qreal width = 0;
        for (const QChar c : text)
            width += c == QLatin1Char(':') ? colonWidth(t) : tileWidth(t) + tileGap();
        return width + 2;
    }
    // Measured on zeros so the width does not jitter as digits change.
    QString zeros = text;
    for (QChar &c : zeros) {
        if (c.isDigit())
            c = QLatin1Char('0');
    }
    const qreal textWidth = Draw::textWidth(Draw::tracked(t.timeFont, t.timeTracking), zeros) + 2;
    return t.timeKind == TimeKind::well ? textWidth + 2 * t.wellPadH : textWidth;
}

qreal LiveTimeButton::heightFor(const Theme &t)
{
    if (t.timeKind == TimeKind::flap)
        return tileHeight(t);
    const qreal text = std::ceil(t.timeSize * 1.25);
    return t.timeKind == TimeKind::well ? text + 2 * t.wellPadV : text;
}

void LiveTimeButton::onTick()
{
    const std::optional<TimerItem> timer = model()->board().timer(id_);
    if (!timer || !timer->isRunning() || model()->editingID() == id_)
        return;
    const QString shown = text();
    if (shown.size() != shownLength_) {
        shownLength_ = shown.size();
        Q_EMIT widthChanged();
    }
    if (flap_)
        flap_->setText(shown); // flips only the tiles whose digit changed
    else
        update();
}

void LiveTimeButton::restyle(std::optional<QColor> ground)
{
    const Theme &t = theme();
    if (t.timeKind != TimeKind::flap || !context_.flapClock) {
        delete flap_;
        flap_ = nullptr;
        update();
        return;
    }
    if (!flap_) {
        flap_ = new FlapText(context_.flapClock, this);
        flap_->setAttribute(Qt::WA_TransparentForMouseEvents);
        flap_->show();
    }
    const qreal z = zoom();
    const std::optional<TimerItem> timer = model()->board().timer(id_);
    FlapStyle style = FlapStyle::board();
    style.font = t.timeFont;
    style.tile = t.wellFill;
    style.ink = timer && timer->isRunning() ? t.runningTimeInk : t.timeInk;
    style.split = t.windowFill;
    style.separatorInk = t.muted;
    style.tileSize = QSizeF(tileWidth(t), tileHeight(t)) * z;
    style.radius = t.wellShape.radius * z;
    style.gap = tileGap() * z;
    style.separatorWidth = (colonWidth(t) - tileGap()) * z;
    // A flat card under the tiles lets them paint it themselves.
    if (ground)
        style.ground = *ground;
    flap_->setStyle(style);
    flap_->setAnimated(context_.animated);
    flap_->setText(text());
    View::place(flap_, rect());
}

void LiveTimeButton::resizeEvent(QResizeEvent *)
{
    if (flap_)
        flap_->setGeometry(rect());
}

void LiveTimeButton::paintEvent(QPaintEvent *event)
{
    if (flap_)
        return; // the tiles draw themselves
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const std::optional<TimerItem> timer = model()->board().timer(id_);
    const bool running = timer && timer->isRunning();
    const QString shown = text();
    QRectF area = unzoomedRect();
    const QColor ink = running ? t.runningTimeInk : t.timeInk;
    const QFont font = Draw::tracked(t.timeFont, t.timeTracking);
    switch (t.timeKind) {
    case TimeKind::flap:
        paintTiles(painter, area, shown, running);
        return;
    case TimeKind::well: {
        // The well is the same every second: drawn once, then copied under the digits.
        painter.end();
        const QString key = QStringLiteral("%1|%2|%3x%4")
                                .arg(StyleIDs::rawValue(model()->style()))
                                .arg(zoom())
                                .arg(area.width())
                                .arg(area.height());
        well_.paint(this, pixelShift(), event->region(), key, [&](QPainter &wellPainter) {
            begin(wellPainter);
            Draw::Panel well;
            well.fill = t.wellFill;
            well.fill2 = t.wellFill2;
            well.border = t.wellBorder;
            well.borderWidth = t.wellBorderWidth;
            well.shape = t.wellShape;
            well.hardShadow = t.wellHardShadow;
            well.shadowColor = t.hardShadowColor;
            well.shadowOffset = t.shadowOffset;
            well.recessed = t.wellRecessed;
            Draw::panel(wellPainter, area, well);
        });
        painter.begin(this);
        begin(painter);
        area = area.adjusted(t.wellPadH, t.wellPadV, -t.wellPadH, -t.wellPadV);
        break;
    }
    case TimeKind::plain:
        break;
    }
    if (running && t.timeGlow)
        Draw::glowText(painter, area, Qt::AlignCenter, shown, font, ink);
    else
        Draw::text(painter, area, Qt::AlignCenter, shown, font, ink);
}

void LiveTimeButton::paintTiles(QPainter &painter, const QRectF &rect, const QString &shown, bool running)
{
    // Static tiles, one per character, until the flipping tiles take this place.
    const Theme &t = theme();
    qreal x = rect.left() + 1;
    const qreal h = tileHeight(t);
    const qreal top = rect.center().y() - h / 2;
    QFont font = t.timeFont;
    const QColor ink = running ? t.runningTimeInk : t.timeInk;
    for (const QChar c : shown) {
        if (c == QLatin1Char(':')) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(t.muted);
            const qreal cx = x + colonWidth(t) / 2 - tileGap() / 2;
            painter.drawEllipse(QPointF(cx, top + h * 0.36), 1.4, 1.4);
            painter.drawEllipse(QPointF(cx, top + h * 0.64), 1.4, 1.4);
            x += colonWidth(t);
            continue;
        }
        const QRectF tile(x, top, tileWidth(t), h);
        Draw::Panel panel;
        panel.fill = t.wellFill;
        panel.fill2 = t.wellFill2;
        panel.border = t.wellBorder;
        panel.borderWidth = t.wellBorderWidth;
        panel.shape = t.wellShape;
        Draw::panel(painter, tile, panel);
        Draw::text(painter, tile, Qt::AlignCenter, QString(c), font, ink);
        // The split between the two leaves.
        painter.setPen(QPen(QColor(0, 0, 0, 170), 1));
        painter.drawLine(QPointF(tile.left() + 0.5, tile.center().y()), QPointF(tile.right() - 0.5, tile.center().y()));
        x += tileWidth(t) + tileGap();
    }
}

} // namespace tock

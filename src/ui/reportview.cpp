#include "reportview.h"

#include "announcements.h"
#include "draw.h"

#include <QDateTime>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainterPath>

#include <array>
#include <cmath>

namespace tock {

namespace {

// The layout, in unzoomed points.
constexpr qreal titleHeight = 20;
constexpr qreal chartHeight = 96;
constexpr qreal scaleWidth = 34;   // the scale labels left of the bars ("45m", "12h")
constexpr qreal dayLabels = 30;    // weekday and date under each bar
constexpr qreal lineHeight = 20;   // a timer in the legend
constexpr qreal hintHeight = 18;
constexpr qreal gap = 8;

// A step between scale lines that leaves at most four of them, in seconds.
double scaleStep(double longest)
{
    static constexpr std::array<double, 10> steps{900, 1800, 3600, 7200, 10800, 14400, 21600, 28800, 43200, 86400};
    for (const double step : steps) {
        if (longest <= 4 * step)
            return step;
    }
    return std::ceil(longest / 4 / 86400) * 86400;
}

QString scaleLabel(double seconds)
{
    if (seconds < 3600)
        return QString::number(qRound(seconds / 60)) + QLatin1Char('m');
    return QString::number(qRound(seconds / 3600)) + QLatin1Char('h');
}

} // namespace

ReportView::ReportView(AppModel *model, QWidget *parent) : View(model, parent)
{
    setObjectName(QStringLiteral("ReportView"));
    setFocusPolicy(Qt::StrongFocus);
    hide();
    showWeek(currentWeek());
    connect(model, &AppModel::boardChanged, this, [this] {
        if (open_)
            reload();
    });
    connect(model, &AppModel::historyChanged, this, [this] {
        if (open_)
            reload();
    });
    // Only a run in the shown week changes the figures as time goes.
    connect(model->displayTick(), &DisplayTick::tickChanged, this, [this] {
        if (open_ && report_.live)
            rebuild();
    });
}

QDate ReportView::currentWeek() const
{
    const QDate today = QDateTime::fromMSecsSinceEpoch(qint64(std::floor(model()->now() * 1000))).date();
    return WeekReport::weekStart(today, QLocale().firstDayOfWeek());
}

void ReportView::open()
{
    showWeek(currentWeek());
    if (open_)
        return;
    open_ = true;
    reload();
    Q_EMIT openChanged();
}

void ReportView::close()
{
    if (!open_)
        return;
    open_ = false;
    Q_EMIT openChanged();
}

void ReportView::toggle()
{
    if (open_)
        close();
    else
        open();
}

void ReportView::showWeek(QDate start)
{
    if (start == history_.start)
        return;
    history_ = WeekHistory{start, {}, {}, {}};
    if (open_)
        reload();
    else
        rebuild();
    Accessibility::nameChanged(this);
}

void ReportView::step(int weeks)
{
    showWeek(history_.start.addDays(7 * qint64(weeks)));
}

void ReportView::reload()
{
    const QDate start = history_.start;
    history_ = WeekHistory{start, {}, {}, {}};
    if (HistoryRecorder *recorder = model()->historyRecorder()) {
        try {
            history_ = WeekHistory::read(recorder->history(), start);
        } catch (const HistoryError &) {
            // The recorder says so in the banner when writing fails; a report it cannot read
            // shows the week empty rather than stopping anything.
        }
    }
    rebuild();
}

void ReportView::rebuild()
{
    WeekReport next = WeekReport::build(history_, model()->now());
    if (next == report_)
        return;
    const bool resized = next.rows.size() != report_.rows.size();
    report_ = std::move(next);
    if (resized)
        Q_EMIT heightChanged();
    Q_EMIT reportChanged();
    update();
}

QString ReportView::accessibleTitle() const
{
    return QStringLiteral("Report: week of ") + report_.title();
}

QString ReportView::duration(double seconds)
{
    const qint64 s = qint64(std::floor(seconds + 1e-6));
    const qint64 a = std::abs(s);
    return QStringLiteral("%1%2:%3:%4")
        .arg(s < 0 ? QStringLiteral("-") : QString())
        .arg(a / 3600)
        .arg(a / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(a % 60, 2, 10, QLatin1Char('0'));
}

qreal ReportView::preferredHeight() const
{
    const qreal p = theme().contentPadding;
    const qsizetype lines = std::max<qsizetype>(1, report_.rows.size()) + 1;
    return p + titleHeight + gap + chartHeight + dayLabels + gap + lines * lineHeight + hintHeight + p;
}

QRectF ReportView::arrowRect(bool next) const
{
    const qreal p = theme().contentPadding;
    const qreal w = unzoomedSize().width();
    return QRectF(next ? w - p - titleHeight : p, p, titleHeight, titleHeight);
}

void ReportView::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers held = event->modifiers() & ~Qt::KeypadModifier;
    if (held != Qt::NoModifier) {
        View::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left: step(-1); break;
    case Qt::Key_Right: step(1); break;
    case Qt::Key_Home: showWeek(currentWeek()); break;
    case Qt::Key_Escape: close(); break;
    default: View::keyPressEvent(event); return;
    }
    event->accept();
}

void ReportView::mousePressEvent(QMouseEvent *event)
{
    const QPointF at = unzoomed(event->position());
    if (arrowRect(false).contains(at))
        step(-1);
    else if (arrowRect(true).contains(at))
        step(1);
}

void ReportView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF all = unzoomedRect();
    const qreal p = t.contentPadding;
    const qreal left = p;
    const qreal right = all.width() - p;

    painter.setPen(Qt::NoPen);
    painter.setBrush(t.reportFill);
    painter.drawPath(Draw::shape(t.rowShape, all));

    // The week's dates between the two arrows.
    qreal y = p;
    Draw::text(painter, QRectF(left + titleHeight, y, right - left - 2 * titleHeight, titleHeight), Qt::AlignCenter,
               Theme::applyCase(t.labelCase, report_.title()), t.labelFont, t.reportInk);
    for (const bool next : {false, true}) {
        const QRectF r = arrowRect(next).adjusted(6, 5, -6, -5);
        QPainterPath arrow;
        arrow.moveTo(next ? r.topLeft() : r.topRight());
        arrow.lineTo(next ? QPointF(r.right(), r.center().y()) : QPointF(r.left(), r.center().y()));
        arrow.lineTo(next ? r.bottomLeft() : r.bottomRight());
        arrow.closeSubpath();
        painter.setBrush(t.reportInk);
        painter.drawPath(arrow);
    }
    y += titleHeight + gap;

    // The scale: lines at whole steps, labelled at the left.
    const double longest = report_.longestDay();
    const double unit = scaleStep(std::max(longest, 1.0));
    const double top = std::max(1.0, std::ceil(longest / unit)) * unit;
    const QRectF chart(left + scaleWidth, y + 6, right - left - scaleWidth, chartHeight - 6);
    const QFont caption = t.captionFont;
    for (double v = unit; v <= top + 1e-6; v += unit) {
        const qreal ly = chart.bottom() - v / top * chart.height();
        painter.fillRect(QRectF(chart.left(), ly, chart.width(), 1), t.reportGrid);
        Draw::text(painter, QRectF(left, ly - 7, scaleWidth - 4, 14), Qt::AlignRight | Qt::AlignVCenter,
                   scaleLabel(v), caption, t.reportMuted);
    }

    // One bar per day, the timers stacked bottom up in legend order.
    const qreal slot = chart.width() / 7;
    const qreal barWidth = std::min<qreal>(22, slot * 0.62);
    const bool edged = t.reportBarEdge.isValid();
    const QDate today = QDateTime::fromMSecsSinceEpoch(qint64(std::floor(model()->now() * 1000))).date();
    const QLocale c = QLocale::c();
    for (qsizetype d = 0; d < report_.days.size(); ++d) {
        const qreal x = chart.left() + slot * d + (slot - barWidth) / 2;
        qreal base = chart.bottom();
        for (qsizetype r = 0; r < report_.rows.size(); ++r) {
            const double seconds = report_.rows.at(r).perDay.value(d);
            if (seconds <= 0)
                continue;
            const qreal h = std::max<qreal>(edged ? 2 : 1, seconds / top * chart.height());
            const QRectF piece(x, base - h, barWidth, h);
            painter.setBrush(t.reportSeries.isEmpty() ? t.reportInk : t.reportSeries.at(r % t.reportSeries.size()));
            if (edged)
                painter.setPen(QPen(t.reportBarEdge, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
            painter.drawRect(edged ? piece.adjusted(0.5, 0.5, -0.5, -0.5) : piece);
            painter.setPen(Qt::NoPen);
            base -= h;
        }
        const QDate day = report_.days.at(d);
        // Today reads in the full ink, the other days in the fainter one.
        const QColor ink = day == today ? t.reportInk : t.reportMuted;
        const QRectF label(chart.left() + slot * d, chart.bottom() + 3, slot, dayLabels / 2);
        Draw::text(painter, label, Qt::AlignCenter, Theme::applyCase(t.labelCase, c.toString(day, QStringLiteral("ddd"))),
                   caption, ink);
        Draw::text(painter, label.translated(0, dayLabels / 2 - 2), Qt::AlignCenter, QString::number(day.day()),
                   caption, ink);
    }
    painter.fillRect(QRectF(chart.left(), chart.bottom(), chart.width(), 1), t.reportMuted);
    y += chartHeight + dayLabels + gap;

    // The legend: each timer's colour, name and week total, then the total.
    const QFont font = t.labelFont;
    const qreal totalWidth = Draw::textWidth(font, QStringLiteral("000:00:00")) + 4;
    if (report_.rows.isEmpty()) {
        Draw::text(painter, QRectF(left, y, right - left, lineHeight), Qt::AlignLeft | Qt::AlignVCenter,
                   Theme::applyCase(t.labelCase, QStringLiteral("Nothing recorded this week")), font, t.reportMuted);
        y += lineHeight;
    }
    // On a screen too short for every timer the last line that fits stands for the rest, with
    // their sum, so the total below still adds up to what is listed.
    const qsizetype rows = report_.rows.size();
    const qsizetype room = std::max<qsizetype>(1, qsizetype(std::floor((all.height() - y) / lineHeight)) - 1);
    const qsizetype shown = rows <= room ? rows : room - 1;
    for (qsizetype r = 0; r < shown; ++r) {
        const Report::Row &row = report_.rows.at(r);
        const QRectF swatch(left + 0.5, y + lineHeight / 2 - 5, 10, 10);
        painter.setBrush(t.reportSeries.isEmpty() ? t.reportInk : t.reportSeries.at(r % t.reportSeries.size()));
        painter.setPen(edged ? QPen(t.reportBarEdge, 1) : Qt::NoPen);
        painter.drawRect(swatch);
        painter.setPen(Qt::NoPen);
        Draw::text(painter, QRectF(left + 18, y, right - left - 18 - totalWidth, lineHeight),
                   Qt::AlignLeft | Qt::AlignVCenter, Theme::applyCase(t.nameCase, row.name), font, t.reportInk);
        Draw::text(painter, QRectF(right - totalWidth, y, totalWidth, lineHeight), Qt::AlignRight | Qt::AlignVCenter,
                   duration(row.total), font, t.reportInk);
        y += lineHeight;
    }
    if (shown < rows) {
        double rest = 0;
        for (qsizetype r = shown; r < rows; ++r)
            rest += report_.rows.at(r).total;
        Draw::text(painter, QRectF(left + 18, y, right - left - 18 - totalWidth, lineHeight),
                   Qt::AlignLeft | Qt::AlignVCenter,
                   Theme::applyCase(t.nameCase, QStringLiteral("%1 more timers").arg(rows - shown)), font, t.reportMuted);
        Draw::text(painter, QRectF(right - totalWidth, y, totalWidth, lineHeight), Qt::AlignRight | Qt::AlignVCenter,
                   duration(rest), font, t.reportMuted);
        y += lineHeight;
    }
    painter.fillRect(QRectF(left, y + 1, right - left, 1), t.reportGrid);
    Draw::text(painter, QRectF(left + 18, y, right - left - 18 - totalWidth, lineHeight), Qt::AlignLeft | Qt::AlignVCenter,
               Theme::applyCase(t.labelCase, QStringLiteral("Total")), font, t.reportInk);
    Draw::text(painter, QRectF(right - totalWidth, y, totalWidth, lineHeight), Qt::AlignRight | Qt::AlignVCenter,
               duration(report_.total), font, t.reportInk);
    y += lineHeight;
    // The keys' reminder goes first when a short screen leaves no room for it.
    if (y + hintHeight <= all.height())
        Draw::text(painter, QRectF(left, y, right - left, hintHeight), Qt::AlignCenter,
                   Theme::applyCase(t.labelCase, QStringLiteral("\u2190 \u2192 weeks \u00B7 Esc back")), caption,
                   t.reportMuted);
}

} // namespace tock

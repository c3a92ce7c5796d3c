#include "screenshots.h"

#include "editmask.h"
#include "focusmark.h"
#include "historyrecorder.h"
#include "panelindicator.h"
#include "reportview.h"
#include "rootview.h"
#include "rowlist.h"
#include "timerrow.h"
#include "timeedit.h"
#include "tockwindow.h"

#include <QDateTime>
#include <QDir>
#include <QHash>
#include <QFile>
#include <QLocale>
#include <QPainter>

namespace tock::Screenshots {

namespace {

constexpr Instant sceneTime = 1'700'000'000;
// A Saturday evening, so the report's week has days behind it whichever day it starts on.
constexpr Instant reportTime = sceneTime + 4 * 86400;

// A still scene's world: the clock stands at one instant, nothing scheduled ever runs and
// settings live only as long as the scene.
class StillClock final : public Clock {
public:
    explicit StillClock(Instant at) : at_(at) {}
    Instant now() const override { return at_; }

private:
    Instant at_;
};

class StillScheduler final : public Scheduler {
public:
    TaskId after(double, std::function<void()>) override { return ++last_; }
    TaskId every(double, double, std::function<void()>) override { return ++last_; }
    void cancel(TaskId) override {}

private:
    TaskId last_ = 0;
};

class SceneSettings final : public Settings {
public:
    std::optional<QVariant> value(const QString &key) const override
    {
        return values_.contains(key) ? std::optional<QVariant>(values_.value(key)) : std::nullopt;
    }
    void setValue(const QString &key, const QVariant &value) override { values_.insert(key, value); }
    void remove(const QString &key) override { values_.remove(key); }

private:
    QHash<QString, QVariant> values_;
};

TimerItem timer(const QString &name, double seconds, bool running = false)
{
    TimerItem item;
    item.id = QUuid::createUuid();
    item.name = name;
    item.accumulated = seconds;
    if (running)
        item.startedAt = sceneTime;
    return item;
}

Board mainBoard()
{
    return Board({timer(QStringLiteral("Deep work"), 5025, true), timer(QStringLiteral("Design"), 2530),
                  timer(QStringLiteral("Email"), 300)});
}

Board longBoard()
{
    const QStringList names = {
        QStringLiteral("Quarterly planning and review with the whole product team"),
        QStringLiteral("Deep work"),
        QStringLiteral("日本語の資料を翻訳する"),
        QStringLiteral("Ελληνικά: σημειώσεις συνάντησης"),
        QStringLiteral("Отчёт для клиента"),
        QStringLiteral("مراجعة التصميم"),
        QStringLiteral("한국어 회의록 정리"),
        QStringLiteral("Café ☕ and inbox"),
        QStringLiteral("Überstunden-Abrechnung für November"),
        QStringLiteral("שיחת לקוח"),
        QStringLiteral("हिंदी पाठ पढ़ना"),
        QStringLiteral("Email"),
    };
    QList<TimerItem> timers;
    for (qsizetype i = 0; i < names.size(); ++i)
        timers.append(timer(names.at(i), double(i * 1537 + 59), i == 1));
    timers[0].accumulated = 360000 + 3599; // 100:59:59, the widest time
    return Board(timers);
}

// The report's timers, Deep work running for the last 25 minutes.
Board reportBoard()
{
    Board board({timer(QStringLiteral("Deep work"), 0), timer(QStringLiteral("Design"), 0),
                 timer(QStringLiteral("Email"), 0), timer(QStringLiteral("Reading"), 0)});
    board.timers[0].startedAt = reportTime - 1500;
    return board;
}

// A week of work for the report scene, laid on the local days of the week that holds
// reportTime, so every zone and first day of the week shows the same pattern: each run is
// (day of the week, start hour, hours). Design runs across Wednesday's midnight.
std::shared_ptr<HistoryRecorder> reportHistory(const Board &board)
{
    struct Run {
        int timer;
        int day;
        double from;
        double hours;
    };
    static constexpr Run runs[] = {
        {0, 0, 9, 2.5},   {1, 0, 13, 1.5},  {2, 0, 16, 0.75}, {0, 1, 8.5, 3},  {3, 1, 14, 1},
        {2, 1, 17, 0.5},  {0, 2, 9, 1.5},   {1, 2, 22.5, 3},  {2, 3, 10, 1},   {3, 3, 15, 2},
        {0, 4, 9, 4},     {1, 4, 14, 2},    {2, 4, 17, 0.5},  {3, 5, 10, 1.25}, {0, 5, 13, 1},
        {1, 6, 9, 0.5},   {0, 6, 11, 1.5},
    };
    auto history = std::make_unique<History>(QStringLiteral(":memory:"), History::Access::write);
    const QDate today = QDateTime::fromSecsSinceEpoch(qint64(reportTime)).date();
    const QDate start = WeekReport::weekStart(today, QLocale().firstDayOfWeek());
    history->transaction([&] {
        for (const TimerItem &t : board.timers)
            history->setTimer(t.id, t.name, false);
        for (const Run &run : runs) {
            const Instant from = double(start.addDays(run.day).startOfDay().toSecsSinceEpoch()) + run.from * 3600;
            const Instant to = std::min(from + run.hours * 3600, reportTime - 1500);
            if (to <= from)
                continue; // later than the scene's now in a week that starts on Sunday
            const QUuid id = board.timers.at(run.timer).id;
            history->openInterval(id, from);
            history->closeInterval(id, to);
        }
        history->openInterval(board.timers.at(0).id, *board.timers.at(0).startedAt);
    });
    return std::make_shared<HistoryRecorder>(std::move(history));
}

QUuid idAt(const AppModel &model, qsizetype index)
{
    return model.board().timers.at(index).id;
}

} // namespace

const QStringList &scenes()
{
    static const QStringList names = {
        QStringLiteral("main"),  QStringLiteral("edit"),     QStringLiteral("menu"),       QStringLiteral("toast"),
        QStringLiteral("invalid"), QStringLiteral("notice"), QStringLiteral("zoom"),       QStringLiteral("swipe"),
        QStringLiteral("swipe-long"), QStringLiteral("inactive"), QStringLiteral("long"), QStringLiteral("edit-long"),
        QStringLiteral("default"),
        QStringLiteral("focus"), QStringLiteral("report"),
    };
    return names;
}

qreal pixelRatio(const QString &scene)
{
    // The default size on an ordinary screen, where every point is 0.8 of a pixel, shows most
    // plainly whether edges and pixel fonts land on whole pixels.
    return scene == QLatin1String("default") ? 1 : 2;
}

Services stillServices(Instant at)
{
    Services services;
    services.clock = std::make_shared<StillClock>(at);
    services.scheduler = std::make_shared<StillScheduler>();
    services.settings = std::make_shared<SceneSettings>();
    return services;
}

std::unique_ptr<AppModel> sceneModel(const QString &scene, StyleID style, UndoManager &undo)
{
    const bool isLong = scene == QLatin1String("long") || scene == QLatin1String("edit-long");
    std::optional<StorageNotice> notice;
    if (scene == QLatin1String("notice"))
        notice = StorageNotice::recovered(QStringLiteral("timers-2.json"));
    const bool report = scene == QLatin1String("report");
    if (report) {
        Board board = reportBoard();
        std::shared_ptr<HistoryRecorder> history = reportHistory(board);
        auto model = std::make_unique<AppModel>(nullptr, std::move(board), style, notice, stillServices(reportTime), undo);
        model->setHistory(std::move(history));
        return model;
    }
    auto model = std::make_unique<AppModel>(nullptr, isLong ? longBoard() : mainBoard(), style, notice, stillServices(), undo);
    const QUuid design = idAt(*model, 1);
    if (scene == QLatin1String("edit")) {
        model->beginEdit(design);
    } else if (scene == QLatin1String("invalid")) {
        model->beginEdit(design);
        TimeEditDraft draft = *model->draft();
        draft.set(TimeField::minutes, QStringLiteral("75"));
        model->setDraft(draft);
    } else if (scene == QLatin1String("menu")) {
        model->setStyleMenuOpen(true);
    } else if (scene == QLatin1String("toast")) {
        model->reset(design);
    } else if (scene == QLatin1String("zoom")) {
        model->setZoom(1.8);
    } else if (scene == QLatin1String("default")) {
        model->setZoom(AppModel::defaultZoom);
    } else if (scene == QLatin1String("swipe")) {
        model->beginSwipe(design);
        model->swipe(-40);
    } else if (scene == QLatin1String("swipe-long")) {
        model->beginSwipe(design);
        model->swipe(-AppModel::revealWidth - 6);
        model->endSwipe(Theme::contentWidth);
    } else if (scene == QLatin1String("long")) {
        model->setScreenHeight(600);
    } else if (scene == QLatin1String("edit-long")) {
        model->setScreenHeight(600);
        model->beginEdit(idAt(*model, 0));
    }
    return model;
}

QImage render(AppModel &model, qreal pixelRatio, bool inactive, std::optional<TimeField> maskField, bool markFocus)
{
    TockWindow window(&model, {});
    window.setProperty("tockInactive", inactive);
    window.setAnimated(false);
    window.fitToContent();
    if (maskField) {
        for (EditMask *mask : window.findChildren<EditMask *>())
            mask->setMaskCursor(MaskCursor(*maskField, true));
    }
    if (model.historyRecorder())
        window.rootView()->reportView()->open();
    window.fitToContent();
    if (markFocus && model.board().timers.size() > 1) {
        const TimerRow *row = window.rootView()->rowList()->row(model.board().timers.at(1).id);
        window.rootView()->focusMark()->showOn(row->playButton());
    }
    QImage image(window.size() * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::transparent);
    window.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

int writeAll(const QString &directory, QTextStream &err)
{
    const QDir root(directory);
    if (!root.mkpath(QStringLiteral("."))) {
        err << "tock: could not create " << directory << '\n';
        return 1;
    }
    QString html = QStringLiteral(
        "<!doctype html><meta charset=\"utf-8\"><title>Tock screenshots</title>\n"
        "<style>body{font:13px sans-serif;background:#888}td{vertical-align:top;padding:6px}"
        "img{width:50%;height:auto}th{text-align:left}</style>\n<table>\n<tr><th></th>");
    for (const QString &scene : scenes())
        html += QStringLiteral("<th>") + scene + QStringLiteral("</th>");
    html += QStringLiteral("</tr>\n");
    for (const StyleID style : StyleIDs::allCases()) {
        const QString raw = StyleIDs::rawValue(style);
        if (!root.mkpath(raw)) {
            err << "tock: could not create " << root.filePath(raw) << '\n';
            return 1;
        }
        html += QStringLiteral("<tr><th>") + StyleIDs::displayName(style) + QStringLiteral("</th>");
        for (const QString &scene : scenes()) {
            UndoManager undo;
            std::unique_ptr<AppModel> model = sceneModel(scene, style, undo);
            const std::optional<TimeField> cursor =
                scene == QLatin1String("edit") ? std::optional<TimeField>(TimeField::minutes) : std::nullopt;
            const qreal ratio = pixelRatio(scene);
            const QImage image = render(*model, ratio, scene == QLatin1String("inactive"), cursor,
                                        scene == QLatin1String("focus"));
            const QString file = raw + QLatin1Char('/') + scene + QStringLiteral(".png");
            if (!image.save(root.filePath(file))) {
                err << "tock: could not write " << root.filePath(file) << '\n';
                return 1;
            }
            html += QStringLiteral("<td><img src=\"") + file + QStringLiteral("\" alt=\"") + raw + QLatin1Char(' ') + scene
                  + (ratio == 1 ? QStringLiteral("\" style=\"width:auto\"></td>") : QStringLiteral("\"></td>"));
        }
        html += QStringLiteral("</tr>\n");
    }
    // The panel indicator's icon and menu, in a light and in a dark panel.
    html += QStringLiteral("<tr><th>Panel</th>");
    for (const auto panel : {PanelIndicator::Panel::light, PanelIndicator::Panel::dark}) {
        UndoManager undo;
        std::unique_ptr<AppModel> model = sceneModel(QStringLiteral("main"), StyleID::classic, undo);
        const QString file = panel == PanelIndicator::Panel::light ? QStringLiteral("panel/light.png")
                                                                     : QStringLiteral("panel/dark.png");
        if (!root.mkpath(QStringLiteral("panel")) || !PanelIndicator::still(*model, panel, 2).save(root.filePath(file))) {
            err << "tock: could not write " << root.filePath(file) << '\n';
            return 1;
        }
        html += QStringLiteral("<td><img src=\"") + file + QStringLiteral("\" alt=\"") + file + QStringLiteral("\"></td>");
    }
    html += QStringLiteral("</tr>\n</table>\n");
    QFile index(root.filePath(QStringLiteral("index.html")));
    if (!index.open(QIODevice::WriteOnly | QIODevice::Truncate) || index.write(html.toUtf8()) < 0) {
        err << "tock: could not write " << index.fileName() << '\n';
        return 1;
    }
    return 0;
}

} // namespace tock::Screenshots

// The window's views under the offscreen platform: clicks reach the model, repaints stay with
// what changed, the window follows zoom, drags and screens. Its layout in every style and at the
// zoom extremes: parts of a row, the title and the menu never collide or leave the window; every
// still scene renders; the start refuses to open a window without a display.
#include "draw.h"
#include "footer.h"
#include "promptview.h"
#include "toastview.h"
#include "namefield.h"
#include "modelfixture.h"
#include "emptyhint.h"
#include "noticebanner.h"
#include "rootview.h"
#include "rowlist.h"
#include "screenshots.h"
#include "stylemenu.h"
#include "styles.h"
#include "table.h"
#include "theme.h"
#include "deletereveal.h"
#include "livetimebutton.h"
#include "timerrow.h"
#include "stylebutton.h"
#include "titlebar.h"
#include "windowbuttons.h"
#include "tockwindow.h"
#include "windowapp.h"

#include <QAccessible>
#include <QApplication>
#include <QPaintEvent>
#include <QScreen>
#include <QtTest>

#include <memory>

using namespace tock;
using namespace tock::testing;

namespace {

// Collects the area every widget of a window paints, in window coordinates.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget *window) : window_(window)
    {
        for (QWidget *w : window->findChildren<QWidget *>())
            w->installEventFilter(this);
        window->installEventFilter(this);
    }
    QRegion painted;

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            auto *widget = static_cast<QWidget *>(object);
            const QRegion region = static_cast<QPaintEvent *>(event)->region();
            painted += region.translated(widget->mapTo(window_, QPoint(0, 0)));
        }
        return false;
    }

private:
    QWidget *window_;
};

void click(QWidget *widget)
{
    QVERIFY(widget);
    QVERIFY2(widget->isVisible(), qPrintable(widget->accessibleName()));
    QTest::mouseClick(widget, Qt::LeftButton, {}, widget->rect().center());
}

// Everything queued so far is painted.
void settle(QWidget *window)
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    window->repaint();
    QCoreApplication::processEvents();
}

struct Window {
    ModelFixture f;
    int showFiles = 0;
    std::unique_ptr<TockWindow> window;

    explicit Window(WithStore store = WithStore::no, const QStringList &names = {"A", "B", "C"},
                    std::optional<StorageNotice> notice = std::nullopt)
        : f(store, names, std::move(notice))
    {
        window = std::make_unique<TockWindow>(f.model.get(), [this] { ++showFiles; });
        window->setAnimated(false);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }
    Window(StyleID style, double zoom, const QStringList &names) : Window(WithStore::no, names)
    {
        f.m().setStyle(style);
        f.m().setZoom(zoom);
    }
    RootView *root() const { return window->rootView(); }
    TimerRow *row(qsizetype i) const { return root()->rowList()->row(f.id(i)); }
};

void addStyles()
{
    QTest::addColumn<StyleID>("style");
    QTest::addColumn<double>("zoom");
    for (const StyleID style : StyleIDs::allCases()) {
        for (const double zoom : {0.7, 0.8, 1.8}) {
            const QByteArray name = StyleIDs::rawValue(style).toUtf8() + ' ' + QByteArray::number(zoom);
            QTest::newRow(name.constData()) << style << zoom;
        }
    }
}

} // namespace

class WindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Clicks, in order, on "play N", "reset N", "undo" (the toast's), "add", "style" (the title
    // bar's button) or a style's menu item; then the board and what is open. (A click on a time
    // opens its mask in window_e2e_test.)
    void clicksReachTheModel_data()
    {
        table<QString, QString>({"clicks", "state"}, {
            {"play 0", "A 0 running, B 90, C 0 · Style: Neo Classic"},
            {"play 0, play 0", "A 0, B 90, C 0 · Style: Neo Classic"},
            {"reset 1", "A 0, B 0, C 0 · Style: Neo Classic · toast"},
            {"reset 1, undo", "A 0, B 90, C 0 · Style: Neo Classic"},
            {"add", "A 0, B 90, C 0, Timer 4 0 · Style: Neo Classic"},
            {"style", "A 0, B 90, C 0 · Style: Neo Classic · menu"},
            {"style, amber", "A 0, B 90, C 0 · Style: Amber Terminal"},
        });
    }
    void clicksReachTheModel()
    {
        QFETCH(QString, clicks);
        Window w;
        w.f.set(1, 90);
        StyleButton *styleButton = w.root()->titleBar()->styleButton();
        const auto target = [&](const QString &what, int i) -> QWidget * {
            if (what == "play")
                return w.row(i)->playButton();
            if (what == "reset")
                return w.row(i)->resetButton();
            if (what == "undo")
                return w.root()->footer()->toastView()->undoButton();
            if (what == "add")
                return w.root()->footer()->addButton();
            if (what == "style")
                return styleButton;
            return w.root()->styleMenu()->item(*StyleIDs::fromRawValue(what));
        };
        for (const QString &step : clicks.split(QStringLiteral(", ")))
            click(target(step.section(u' ', 0, 0), step.section(u' ', 1).toInt()));
        const AppModel &m = w.f.m();
        QStringList timers;
        for (qsizetype i = 0; i < w.f.count(); ++i) {
            timers << w.f.timer(i).name + u' ' + QString::number(w.f.elapsed(i))
                          + (w.f.timer(i).isRunning() ? QStringLiteral(" running") : QString());
            QVERIFY(w.row(i) && w.row(i)->isVisible());
        }
        QStringList state{timers.join(QStringLiteral(", ")), styleButton->accessibleDescription()};
        if (m.toast())
            state << QStringLiteral("toast");
        if (m.editingID())
            state << QStringLiteral("editing ") + m.board().timer(*m.editingID())->name;
        if (m.styleMenuOpen())
            state << QStringLiteral("menu");
        QCOMPARE(w.root()->styleMenu()->isVisible(), m.styleMenuOpen());
        QTEST(state.join(QStringLiteral(" · ")), "state");
    }

    void bannerButtons_data()
    {
        const auto recovered = StorageNotice::recovered(QStringLiteral("timers-2.json"));
        const auto unreadable = StorageNotice::unreadable({QStringLiteral("timers.json: not JSON")});
        const auto failed = StorageNotice::saveFailed(QStringLiteral("Disk full"));
        const QStringList okShow{QStringLiteral("OK"), QStringLiteral("Show Files")};
        const QStringList showFresh{QStringLiteral("Show Files"), QStringLiteral("Start Fresh…")};
        const QStringList retryShow{QStringLiteral("Retry"), QStringLiteral("Show Files")};
        // The button pressed, whether that cleared the notice, "Show Files" calls, questions asked.
        table<StorageNotice, QStringList, int, bool, int, int>(
            {"notice", "buttons", "pressed", "cleared", "showFiles", "questions"}, {
                {recovered, okShow, 0, true, 0, 0},
                {recovered, okShow, 1, false, 1, 0},
                {unreadable, showFresh, 0, false, 1, 0},
                {unreadable, showFresh, 1, false, 0, 1},
                {failed, retryShow, 0, true, 0, 0},
                {failed, retryShow, 1, false, 1, 0},
            });
    }

    void bannerButtons()
    {
        QFETCH(StorageNotice, notice);
        QFETCH(QStringList, buttons);
        QFETCH(int, pressed);
        QFETCH(bool, cleared);
        QFETCH(int, showFiles);
        QFETCH(int, questions);
        Window w(WithStore::yes, {"A"}, notice);
        w.f.confirmStartFresh = false;
        NoticeBanner *banner = w.root()->banner();
        QVERIFY(banner->isVisible());
        QCOMPARE((QStringList{banner->firstButton()->accessibleName(), banner->secondButton()->accessibleName()}), buttons);
        click(pressed == 0 ? banner->firstButton() : banner->secondButton());
        QCOMPARE(!w.f.m().notice().has_value(), cleared);
        QCOMPARE(w.showFiles, showFiles);
        QCOMPARE(w.f.startFreshQuestions, questions);
        settle(w.window.get());
        QCOMPARE(banner->isVisible(), !cleared);
    }

    void aTickRepaintsOnlyTheRunningTimes_data() { styleRows(); }

    void aTickRepaintsOnlyTheRunningTimes()
    {
        QFETCH(StyleID, style);
        Window w(WithStore::yes, {"A", "B", "C", "D"});
        w.f.m().setStyle(style);
        w.f.m().toggle(w.f.id(0));
        w.f.m().toggle(w.f.id(2));
        settle(w.window.get());
        PaintCounter counter(w.window.get());
        settle(w.window.get());
        counter.painted = QRegion();

        const auto rectOf = [&w](int i) {
            QWidget *time = w.row(i)->timeButton();
            return QRect(time->mapTo(w.window.get(), QPoint(0, 0)), time->size());
        };
        w.f.advance(1.0); // one tick
        QTRY_VERIFY_WITH_TIMEOUT(counter.painted.intersects(rectOf(0)), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(counter.painted.intersects(rectOf(2)), 5000);
        QCoreApplication::processEvents();
        // Nothing outside the two running displays was painted: a paint of any other row, key,
        // name, the title bar or the footer would show here.
        QCOMPARE(counter.painted.subtracted(QRegion(rectOf(0)) + rectOf(2)), QRegion());
    }

    void aHiddenWindowSkipsTicksAndCatchesUpWhenShown()
    {
        Window w(WithStore::yes, {"A"});
        w.f.m().toggle(w.f.id(0));
        settle(w.window.get());
        QSignalSpy redraws(w.f.m().displayTick(), &DisplayTick::tickChanged);
        w.window->hide();
        w.f.advance(3.0);
        QCOMPARE(redraws.count(), 0);
        w.window->show();
        QCOMPARE(redraws.count(), 1);
        w.f.advance(1.0);
        QCOMPARE(redraws.count(), 2);
    }

    void zoomSizesTheWindow()
    {
        Window w;
        QCOMPARE(w.f.m().zoom(), 1.0);
        const QSize before = w.window->size();
        const int margin = w.window->marginPixels();
        QCOMPARE(before.width() - 2 * margin, int(Theme::contentWidth));
        w.f.m().setZoom(1.8);
        const int bigMargin = w.window->marginPixels();
        QCOMPARE(w.window->width() - 2 * bigMargin, qRound(Theme::contentWidth * 1.8));
        QVERIFY(std::abs((w.window->height() - 2 * bigMargin) - 1.8 * (before.height() - 2 * margin)) <= 2);
        // The zoom light toggles between the compact and the large size.
        click(w.root()->titleBar()->windowButtons()->button(WindowButton::Action::zoom));
        QCOMPARE(w.f.m().zoom(), 0.8);
        QCOMPARE(w.window->width() - 2 * w.window->marginPixels(), qRound(Theme::contentWidth * 0.8));
    }

    // The frameless window moves with a drag on its title bar, once past the drag distance
    // (here by hand: the offscreen platform has no window manager to ask).
    void titleBarDragMovesTheWindow()
    {
        Window w;
        QWidget *bar = w.root()->titleBar();
        QPoint grab(bar->width() / 2, bar->height() / 2);
        while (bar->childAt(grab) && grab.x() > 0)
            grab.rx() -= 4;
        QVERIFY(!bar->childAt(grab));
        QWindow *handle = w.window->windowHandle();
        const QPoint local = bar->mapTo(w.window.get(), grab);
        const QPoint global = w.window->mapToGlobal(local);
        const auto send = [&](QEvent::Type type, QPoint delta, Qt::MouseButtons held) {
            QMouseEvent e(type, QPointF(local + delta), QPointF(local + delta), QPointF(global + delta), Qt::LeftButton,
                          held, Qt::NoModifier);
            QCoreApplication::sendEvent(handle, &e);
        };
        const QPoint before = w.window->pos();
        send(QEvent::MouseButtonPress, {}, Qt::LeftButton);
        send(QEvent::MouseMove, {1, 1}, Qt::LeftButton);
        QCoreApplication::processEvents();
        QCOMPARE(w.window->pos(), before);
        send(QEvent::MouseMove, {60, 40}, Qt::LeftButton);
        QTRY_COMPARE(w.window->pos(), before + QPoint(60, 40));
        send(QEvent::MouseButtonRelease, {60, 40}, Qt::NoButton);
        send(QEvent::MouseMove, {90, 90}, Qt::NoButton);
        QCoreApplication::processEvents();
        QCOMPARE(w.window->pos(), before + QPoint(60, 40));
    }

    // Moved to a shorter screen the window caps its height and its rows scroll; back on the
    // tall one it grows again.
    void followsAScreenChange()
    {
        const QList<QScreen *> screens = QGuiApplication::screens();
        if (screens.size() < 2)
            QSKIP("needs the two offscreen screens that main() sets up");
        QStringList names;
        for (int i = 0; i < 30; ++i)
            names << QStringLiteral("T%1").arg(i);
        Window w(WithStore::no, names);
        const auto byHeight = [&](int height) {
            return *std::find_if(screens.begin(), screens.end(), [&](QScreen *s) { return s->size().height() == height; });
        };
        w.window->windowHandle()->setScreen(byHeight(1000));
        QTRY_COMPARE(w.f.m().screenHeight(), 1000.0);
        const int tall = w.window->height();
        QVERIFY(tall > 500);
        w.window->windowHandle()->setScreen(byHeight(500));
        QTRY_COMPARE(w.f.m().screenHeight(), 500.0);
        QVERIFY(w.window->height() <= 500);
        RowList *list = w.root()->rowList();
        QVERIFY(list->contentHeight() > list->height() / w.f.m().zoom());
        list->scrollBy(100);
        QCOMPARE(list->scrollOffset(), 100.0);
        w.window->windowHandle()->setScreen(byHeight(1000));
        QTRY_COMPARE(w.window->height(), tall);
    }

    void theAddButtonGetsItsLabelBackWhenTheToastGoes()
    {
        Window w(WithStore::yes);
        w.window->setAnimated(true); // the label came back only when the toast went at once
        ThemedButton *add = w.root()->footer()->addButton();
        const qreal full = add->preferredSize().width();
        w.f.set(1, 90);
        w.f.m().reset(w.f.id(1));
        QVERIFY(add->preferredSize().width() < full); // room for the toast
        w.f.advance(13); // the toast times out
        QVERIFY(!w.f.m().toast());
        QTRY_COMPARE_WITH_TIMEOUT(add->preferredSize().width(), full, 5000);
        QCOMPARE(add->accessibleName(), QStringLiteral("Add timer"));
    }

    void hoverEndsWhenThePointerLeavesTheList()
    {
        Window w;
        // As after a deletion moved this row under a pointer standing still: hovered without
        // the row ever being entered.
        w.f.m().setHoveredID(w.f.id(1));
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(w.root()->rowList(), &leave);
        QCOMPARE(w.f.m().hoveredID(), std::nullopt);
    }

    // A screen reader's character boxes of the prompt are where the characters are drawn: one
    // after another along the line, found again from their middles, and the caret's block at the
    // end of the line filling the box after the last one, also zoomed and below output lines
    // (screenreader_e2e.py reads them, the line's text and the caret's place at the plain size).
    void promptCharactersAreWhereTheyAreDrawn()
    {
        const QString line = QStringLiteral("rename 2 Été");
        const double zoom = 1.6;
        Window w;
        w.f.m().setStyle(StyleID::shell);
        w.f.m().setZoom(zoom);
        w.f.m().shell().promptInsert(QStringLiteral("help"));
        w.f.m().shell().promptRun();
        w.f.m().shell().promptInsert(line);
        settle(w.window.get());
        PromptView *prompt = w.root()->footer()->promptView();
        QAccessibleTextInterface *text = QAccessible::queryAccessibleInterface(prompt)->textInterface();
        QVERIFY(text);
        QRect before;
        for (int i = 0; i <= line.size(); ++i) {
            const QRect r = text->characterRect(i);
            QVERIFY2(!r.isEmpty() && r.height() >= 12 * zoom, qPrintable(QString::number(i)));
            if (i > 0) {
                QCOMPARE(r.top(), before.top());
                QVERIFY(qAbs(r.left() - before.right()) <= 2);
            }
            if (i < line.size())
                QCOMPARE(text->offsetAtPoint(r.center()), i);
            before = r;
        }
        QCOMPARE(text->characterRect(int(line.size()) + 1), QRect());
        QCOMPARE(text->offsetAtPoint(text->characterRect(0).topLeft() - QPoint(20, 0)), -1);
        const QPoint caret = prompt->mapFromGlobal(before.center());
        QCOMPARE(prompt->grab().toImage().pixelColor(caret * prompt->devicePixelRatio()), Theme::shell().nameInk);
    }

    // The Shell style's prompt stands for the add key; its output makes room for itself and
    // wraps at the window's width.
    void shellOutputWrapsLongLines()
    {
        Window w;
        w.f.m().setStyle(StyleID::shell);
        settle(w.window.get());
        QVERIFY(!w.root()->footer()->addButton()->isVisible());
        const int before = w.window->height();
        w.f.m().shell().promptInsert(QStringLiteral("help"));
        w.f.m().shell().promptRun();
        settle(w.window.get());
        PromptView *prompt = w.root()->footer()->promptView();
        const QStringList shown = prompt->shownOutput();
        QVERIFY(shown.size() > w.f.m().shell().shellOutput().size());
        const qreal width = prompt->width() / w.f.m().zoom();
        for (const QString &line : shown)
            QVERIFY2(Draw::textWidth(Theme::shell().nameFont, line) <= width, qPrintable(line));
        // Nothing is lost: the words are those of the output, in order.
        const auto words = [](const QStringList &lines) { return lines.join(' ').split(' ', Qt::SkipEmptyParts); };
        QCOMPARE(words(shown), words(w.f.m().shell().shellOutput()));
        QVERIFY(prompt->height() / w.f.m().zoom() >= prompt->preferredHeight() - 1);
        QVERIFY(w.window->height() > before);
    }

    // In every style: a toast comes and goes without changing the window's height, the swipe
    // reveal has its own opaque ground, and a click on the title opens the menu under it.
    void toastRevealAndTitle_data() { styleRows(); }
    void toastRevealAndTitle()
    {
        QFETCH(StyleID, style);
        Window w(WithStore::yes);
        w.f.m().setStyle(style);
        w.f.set(1, 90);
        settle(w.window.get());
        const int height = w.window->height();
        w.f.m().reset(w.f.id(1));
        settle(w.window.get());
        QVERIFY(w.f.m().toast());
        QCOMPARE(w.window->height(), height);
        w.f.advance(13);
        settle(w.window.get());
        QVERIFY(!w.f.m().toast());
        QCOMPARE(w.window->height(), height);

        w.f.m().beginSwipe(w.f.id(1));
        w.f.m().swipe(-40);
        settle(w.window.get());
        DeleteReveal *reveal = w.row(1)->deleteReveal();
        QVERIFY(reveal->isVisible());
        QImage image(reveal->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        reveal->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        const int edge = int(reveal->uncovered() * w.f.m().zoom());
        QVERIFY(edge > 0 && edge < image.width());
        const int y = image.height() / 2;
        // Under the face nothing is drawn; the uncovered strip is opaque, whatever the row's fill.
        for (int x = 0; x < edge - 1; ++x)
            QCOMPARE(qAlpha(image.pixel(x, y)), 0);
        QCOMPARE(qAlpha(image.pixel(image.width() - 12, y)), 255);
        w.f.m().endSwipe(300);

        TitleBar *bar = w.root()->titleBar();
        QSignalSpy menu(bar, &TitleBar::menuRequested);
        const QRect title = bar->zoomedRect(bar->menuArea());
        QTest::mouseClick(bar, Qt::LeftButton, {}, title.center());
        QCOMPARE(menu.count(), 1);
        QVERIFY(menu.at(0).at(0).toPoint().y() >= bar->mapToGlobal(title.bottomLeft()).y());
    }

    // Parts of a row, the title and its controls, the window buttons and the menu: apart and
    // inside their parent, whatever the style and zoom.
    void partsStayApartAndInside_data() { addStyles(); }
    void partsStayApartAndInside()
    {
        QFETCH(StyleID, style);
        QFETCH(double, zoom);
        Window b(style, zoom, {"Deep work", "A name far too long to fit in any row of any style"});
        b.f.set(0, 360000); // 100:00:00, the widest time
        for (TimerRow *row : b.root()->rowList()->rows()) {
            const QList<QWidget *> parts{row->nameField(), row->timeButton(), row->playButton(), row->resetButton()};
            const QRect face(QPoint(0, 0), row->face()->size());
            for (qsizetype i = 0; i < parts.size(); ++i) {
                const QRect a = parts.at(i)->geometry();
                QVERIFY2(face.contains(a), qPrintable(parts.at(i)->metaObject()->className()));
                QVERIFY(a.width() > 0 && a.height() > 0);
                for (qsizetype j = i + 1; j < parts.size(); ++j)
                    QVERIFY2(!a.intersects(parts.at(j)->geometry()),
                             qPrintable(QStringLiteral("%1 meets %2").arg(i).arg(j)));
            }
            // The time is never cut: its box holds the widest time the row shows.
            const QString shown = row->timeButton()->text();
            QVERIFY(row->timeButton()->width() + 1 >= LiveTimeButton::widthFor(b.root()->theme(), shown) * zoom);
        }

        TitleBar *bar = b.root()->titleBar();
        const QRectF title = bar->titleRect();
        const Theme &theme = b.root()->theme();
        const qreal needed = Draw::textWidth(Draw::tracked(theme.titleFont, theme.titleTracking), theme.titleText);
        QVERIFY2(title.width() >= needed, qPrintable(QStringLiteral("%1 < %2").arg(title.width()).arg(needed)));
        for (const QWidget *control : {static_cast<QWidget *>(bar->styleButton()), static_cast<QWidget *>(bar->windowButtons())}) {
            const QRectF points(QPointF(control->geometry().topLeft()) / zoom, QSizeF(control->size()) / zoom);
            QVERIFY(!title.intersects(points));
            QVERIFY(QRectF(QPointF(0, 0), bar->unzoomedSize()).contains(points.adjusted(1, 1, -1, -1)));
        }
        // Pixels are rounded once for the whole window: a view never ends past its parent's edge
        // (the third title-bar light was cut by a pixel at the default zoom).
        WindowButtons *group = bar->windowButtons();
        for (const auto action : {WindowButton::Action::close, WindowButton::Action::minimize, WindowButton::Action::zoom})
            QVERIFY2(group->rect().contains(group->button(action)->geometry()), qPrintable(QString::number(int(action))));

        Window empty(style, zoom, {}); // the smallest window: the hint and the footer alone
        QVERIFY(empty.root()->emptyHint()->isVisible());
        QVERIFY(empty.root()->footer()->isVisible());
        QVERIFY(!empty.root()->rowList()->isVisible());
        QVERIFY(!empty.root()->styleMenu()->isVisible());
        empty.f.m().setStyleMenuOpen(true);
        StyleMenu *menu = empty.root()->styleMenu();
        // The menu's body; its soft shadow may be cut by the window's edge.
        const QRectF body = QRectF(menu->geometry()).marginsRemoved(menu->shadowRoom() * zoom);
        QVERIFY(QRectF(QPoint(0, 0), empty.root()->size()).contains(body.adjusted(1, 1, -1, -1)));
        // Items in menu order, one under the other.
        int y = -1;
        for (const StyleID s : StyleIDs::allCases()) {
            QVERIFY(menu->item(s)->y() > y);
            y = menu->item(s)->y();
        }
    }

    void aClickOnTheRevealDeletes()
    {
        Window b(StyleID::classic, 1.0, {"A", "B"});
        TimerRow *row = b.root()->rowList()->row(b.f.id(1));
        b.f.swipeRow(1, -60); // revealed
        QCOMPARE(row->face()->x(), -qRound(AppModel::revealWidth));
        QVERIFY(row->deleteReveal()->isVisibleTo(row));
        QTest::mouseClick(row->deleteReveal(), Qt::LeftButton, {}, row->deleteReveal()->rect().center());
        QCOMPARE(b.f.names(), QStringList{"A"});
    }

    void flapTilesComeAndGoWithTheStyle()
    {
        Window b(StyleID::flap, 1.0, {"A", "B"});
        for (TimerRow *row : b.root()->rowList()->rows())
            QVERIFY(row->timeButton()->flapText());
        b.f.m().setStyle(StyleID::classic);
        for (TimerRow *row : b.root()->rowList()->rows())
            QVERIFY(!row->timeButton()->flapText());
    }

    void everySceneRenders_data()
    {
        QTest::addColumn<StyleID>("style");
        QTest::addColumn<QString>("scene");
        for (const StyleID style : StyleIDs::allCases()) {
            for (const QString &scene : Screenshots::scenes())
                QTest::newRow(qPrintable(StyleIDs::rawValue(style) + ' ' + scene)) << style << scene;
        }
    }
    void everySceneRenders()
    {
        QFETCH(StyleID, style);
        QFETCH(QString, scene);
        UndoManager undo;
        std::unique_ptr<AppModel> model = Screenshots::sceneModel(scene, style, undo);
        const QImage image = Screenshots::render(*model, 2, false);
        const qreal zoom = scene == QLatin1String("zoom") ? 1.8 : scene == QLatin1String("default") ? 0.8 : 1.0;
        QVERIFY(image.width() >= qRound(Theme::contentWidth * zoom * 2));
        // The card is opaque in its middle and the corners outside the shadow are clear.
        QCOMPARE(qAlpha(image.pixel(image.width() / 2, image.height() / 2)), 255);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    }

    void noDisplayIsNoticedBeforeQt_data()
    {
        table<QString, QByteArray, QByteArray, QByteArray, bool>({"case", "display", "wayland", "platform", "missing"}, {
            {"nothing", {}, {}, {}, true},
            {"x11", QByteArray(":0"), {}, {}, false},
            {"wayland", {}, QByteArray("wayland-0"), {}, false},
            {"platform asked", {}, {}, QByteArray("offscreen"), false},
        });
    }
    void noDisplayIsNoticedBeforeQt()
    {
        QFETCH(QByteArray, display);
        QFETCH(QByteArray, wayland);
        QFETCH(QByteArray, platform);
        QFETCH(bool, missing);
        const QByteArray saved[3] = {qgetenv("DISPLAY"), qgetenv("WAYLAND_DISPLAY"), qgetenv("QT_QPA_PLATFORM")};
        qputenv("DISPLAY", display);
        qputenv("WAYLAND_DISPLAY", wayland);
        qputenv("QT_QPA_PLATFORM", platform);
        const bool result = displayMissing();
        qputenv("DISPLAY", saved[0]);
        qputenv("WAYLAND_DISPLAY", saved[1]);
        qputenv("QT_QPA_PLATFORM", saved[2]);
        QCOMPARE(result, missing);
        QVERIFY(noDisplayMessage().contains(QStringLiteral("tock --shell")));
    }
};

// Under the offscreen platform, two screens side by side: a tall one and a short one.
int main(int argc, char **argv)
{
    QTemporaryDir dir;
    const QString config = dir.filePath(QStringLiteral("screens.json"));
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen") {
        QFile file(config);
        if (file.open(QIODevice::WriteOnly))
            file.write(R"({"screens": [
                {"name": "tall", "x": 0, "y": 0, "width": 1200, "height": 1000, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
                {"name": "short", "x": 1200, "y": 0, "width": 800, "height": 500, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}
            ]})");
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + config.toLocal8Bit());
    }
    QApplication app(argc, argv);
    WindowTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "window_test.moc"

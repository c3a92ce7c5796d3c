// The window's views under the offscreen platform: clicks reach the right model actions, the
// empty board shows only the hint and the footer, a tick repaints only running time displays,
// a hidden window skips ticks and catches up when shown, and the zoom sizes the window.
#include "footer.h"
#include "namefield.h"
#include "modelfixture.h"
#include "noticebanner.h"
#include "rootview.h"
#include "rowlist.h"
#include "stylemenu.h"
#include "timerrow.h"
#include "titlebar.h"
#include "tockwindow.h"

#include <QApplication>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace tock;
Q_DECLARE_METATYPE(tock::StyleID)

namespace {

// Counts paint events per widget and collects the painted area in window coordinates.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget *window) : window_(window)
    {
        for (QWidget *w : window->findChildren<QWidget *>())
            w->installEventFilter(this);
        window->installEventFilter(this);
    }
    void clear()
    {
        counts.clear();
        painted = QRegion();
    }
    QHash<QWidget *, int> counts;
    QRegion painted;

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            auto *widget = static_cast<QWidget *>(object);
            ++counts[widget];
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
    RootView *root() const { return window->rootView(); }
    TimerRow *row(qsizetype i) const { return root()->rowList()->row(f.id(i)); }
};

} // namespace

class WindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void playAndResetReachTheModel()
    {
        Window w;
        click(w.row(0)->playButton());
        QVERIFY(w.f.timer(0).isRunning());
        click(w.row(0)->playButton());
        QVERIFY(!w.f.timer(0).isRunning());

        w.f.set(1, 90);
        click(w.row(1)->resetButton());
        QCOMPARE(w.f.elapsed(1), 0.0);
        QVERIFY(w.f.m().toast());
        // The toast's undo button brings the time back.
        click(w.root()->footer()->toastView()->undoButton());
        QCOMPARE(w.f.elapsed(1), 90.0);
    }

    void addAppendsATimerAndItsRow()
    {
        Window w;
        click(w.root()->footer()->addButton());
        QCOMPARE(w.f.count(), 4);
        QVERIFY(w.row(3));
        QVERIFY(w.row(3)->isVisible());
    }

    void timeClickOpensTheEdit()
    {
        Window w;
        click(w.row(2)->timeButton());
        QCOMPARE(w.f.m().editingID(), std::optional<QUuid>(w.f.id(2)));
    }

    void styleMenuChoosesAStyle()
    {
        Window w;
        StyleButton *button = w.root()->titleBar()->styleButton();
        QCOMPARE(button->accessibleName(), QStringLiteral("Change style"));
        QCOMPARE(button->accessibleDescription(), QStringLiteral("Style: Neo Classic"));
        click(button);
        QVERIFY(w.f.m().styleMenuOpen());
        click(w.root()->styleMenu()->item(StyleID::amber));
        QCOMPARE(w.f.m().style(), StyleID::amber);
        QVERIFY(!w.f.m().styleMenuOpen());
        QVERIFY(!w.root()->styleMenu()->isVisible());
        QCOMPARE(button->accessibleDescription(), QStringLiteral("Style: Amber Terminal"));
    }

    void bannerButtons_data()
    {
        QTest::addColumn<StorageNotice>("notice");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<int>("pressed");
        QTest::addColumn<bool>("cleared");
        QTest::addColumn<int>("showFiles");
        QTest::addColumn<int>("questions");
        const auto recovered = StorageNotice::recovered(QStringLiteral("timers-2.json"));
        const auto unreadable = StorageNotice::unreadable({QStringLiteral("timers.json: not JSON")});
        const auto failed = StorageNotice::saveFailed(QStringLiteral("Disk full"));
        const QStringList okShow{QStringLiteral("OK"), QStringLiteral("Show Files")};
        const QStringList showFresh{QStringLiteral("Show Files"), QStringLiteral("Start Fresh…")};
        const QStringList retryShow{QStringLiteral("Retry"), QStringLiteral("Show Files")};
        // notice, title, buttons, which pressed, notice cleared, "Show Files" calls, questions
        QTest::newRow("recovered OK") << recovered << "Restored from backup" << okShow << 0 << true << 0 << 0;
        QTest::newRow("recovered files") << recovered << "Restored from backup" << okShow << 1 << false << 1 << 0;
        QTest::newRow("unreadable files") << unreadable << "Saved timers could not be read" << showFresh << 0 << false << 1 << 0;
        QTest::newRow("unreadable fresh") << unreadable << "Saved timers could not be read" << showFresh << 1 << false << 0 << 1;
        QTest::newRow("failed retry") << failed << "Changes are not being saved" << retryShow << 0 << true << 0 << 0;
        QTest::newRow("failed files") << failed << "Changes are not being saved" << retryShow << 1 << false << 1 << 0;
    }

    void bannerButtons()
    {
        QFETCH(StorageNotice, notice);
        QFETCH(QString, title);
        QFETCH(QStringList, buttons);
        QFETCH(int, pressed);
        QFETCH(bool, cleared);
        QFETCH(int, showFiles);
        QFETCH(int, questions);
        Window w(WithStore::yes, {"A"}, notice);
        w.f.confirmStartFresh = false;
        NoticeBanner *banner = w.root()->banner();
        QVERIFY(banner->isVisible());
        QCOMPARE(notice.title(), title);
        QCOMPARE((QStringList{banner->firstButton()->accessibleName(), banner->secondButton()->accessibleName()}), buttons);
        click(pressed == 0 ? banner->firstButton() : banner->secondButton());
        QCOMPARE(!w.f.m().notice().has_value(), cleared);
        QCOMPARE(w.showFiles, showFiles);
        QCOMPARE(w.f.startFreshQuestions, questions);
        settle(w.window.get());
        QCOMPARE(banner->isVisible(), !cleared);
    }

    void emptyBoardShowsOnlyTheHintAndTheFooter()
    {
        Window w(WithStore::no, {});
        settle(w.window.get());
        QVERIFY(w.root()->emptyHint()->isVisible());
        QVERIFY(w.root()->footer()->isVisible());
        QVERIFY(!w.root()->rowList()->isVisible());
        QVERIFY(!w.root()->banner()->isVisible());
        QVERIFY(!w.root()->styleMenu()->isVisible());
        QVERIFY(w.root()->rowList()->rows().isEmpty());
    }

    void aTickRepaintsOnlyTheRunningTimes_data()
    {
        QTest::addColumn<StyleID>("style");
        for (const StyleID style : StyleIDs::allCases())
            QTest::newRow(qPrintable(StyleIDs::rawValue(style))) << style;
    }

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
        counter.clear();

        // A display's own paint, or its tiles' where they cover it.
        const auto paintsIn = [&counter](QWidget *widget) {
            int n = counter.counts.value(widget);
            for (QWidget *child : widget->findChildren<QWidget *>())
                n += counter.counts.value(child);
            return n;
        };
        w.f.advance(1.0); // one tick
        QTRY_VERIFY_WITH_TIMEOUT(paintsIn(w.row(0)->timeButton()) > 0, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(paintsIn(w.row(2)->timeButton()) > 0, 5000);
        QCoreApplication::processEvents();

        QRegion running;
        for (const int i : {0, 2}) {
            QWidget *time = w.row(i)->timeButton();
            running += QRect(time->mapTo(w.window.get(), QPoint(0, 0)), time->size());
        }
        // Nothing outside the two running displays was painted, and no other view's own paint ran.
        QCOMPARE(counter.painted.subtracted(running), QRegion());
        for (const int i : {1, 3}) {
            QCOMPARE(paintsIn(w.row(i)->timeButton()), 0);
            QCOMPARE(counter.counts.value(w.row(i)->face()), 0);
        }
        for (const int i : {0, 2}) {
            QCOMPARE(counter.counts.value(w.row(i)->playButton()), 0);
            QCOMPARE(counter.counts.value(w.row(i)->nameField()), 0);
        }
        QCOMPARE(counter.counts.value(w.root()->footer()), 0);
        QCOMPARE(counter.counts.value(w.root()->titleBar()), 0);
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
        QCOMPARE(before.width() - 2 * margin, int(RootView::contentWidth));
        w.f.m().setZoom(1.8);
        const int bigMargin = w.window->marginPixels();
        QCOMPARE(w.window->width() - 2 * bigMargin, qRound(RootView::contentWidth * 1.8));
        QVERIFY(std::abs((w.window->height() - 2 * bigMargin) - 1.8 * (before.height() - 2 * margin)) <= 2);
        // The zoom light toggles between the compact and the large size.
        click(w.root()->titleBar()->windowButtons()->button(WindowButton::Action::zoom));
        QCOMPARE(w.f.m().zoom(), 0.8);
        QCOMPARE(w.window->width() - 2 * w.window->marginPixels(), qRound(RootView::contentWidth * 0.8));
    }

    void theWindowCapsItsHeightAndScrolls()
    {
        QStringList names;
        for (int i = 0; i < 30; ++i)
            names << QStringLiteral("T%1").arg(i);
        Window w(WithStore::no, names);
        w.f.m().setScreenHeight(500);
        QVERIFY(w.window->height() <= 500);
        RowList *list = w.root()->rowList();
        QVERIFY(list->contentHeight() > list->height() / w.f.m().zoom());
        list->scrollBy(100);
        QCOMPARE(list->scrollOffset(), 100.0);
    }

    void closingPausesEveryTimer()
    {
        Window w(WithStore::yes);
        w.f.m().toggle(w.f.id(1));
        click(w.root()->titleBar()->windowButtons()->button(WindowButton::Action::close));
        QVERIFY(!w.window->isVisible());
        QVERIFY(!w.f.timer(1).isRunning());
        const std::optional<Snapshot> saved = w.f.saved();
        QVERIFY(saved);
        QVERIFY(!saved->board().anyRunning());
    }

    void helpTextsAndAccessibleNames()
    {
        Window w;
        WindowButtons *buttons = w.root()->titleBar()->windowButtons();
        QCOMPARE(buttons->button(WindowButton::Action::close)->toolTip(), QStringLiteral("Close (timers pause)"));
        QCOMPARE(buttons->button(WindowButton::Action::minimize)->toolTip(), QStringLiteral("Minimize"));
        QCOMPARE(buttons->button(WindowButton::Action::zoom)->toolTip(), QStringLiteral("Larger / smaller"));
        w.f.set(0, 5025);
        settle(w.window.get());
        QCOMPARE(w.row(0)->timeButton()->accessibleLabel(), QStringLiteral("Elapsed time 01:23:45. Click to edit."));
        QCOMPARE(w.root()->footer()->addButton()->accessibleName(), QStringLiteral("Add timer"));
        QVERIFY(w.root()->footer()->addButton()->toolTip().startsWith(QStringLiteral("Add timer (")));
        QCOMPARE(w.window->objectName(), QStringLiteral("TockWindow"));
        QCOMPARE(w.window->windowTitle(), QStringLiteral("Tock"));
    }
};

QTEST_MAIN(WindowTest)
#include "window_test.moc"

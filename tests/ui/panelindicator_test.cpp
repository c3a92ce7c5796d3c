// The panel indicator's menu and tooltip against a model in virtual time, and what its window
// items do to a real window. (Offscreen there is no panel; panel_e2e_test has one, and checks
// what a panel makes of the labels.)
#include "modelfixture.h"
#include "panelindicator.h"
#include "tockwindow.h"

#include <QAction>
#include <QMenu>
#include <QtTest>

using namespace tock;

namespace {

// The menu as a panel lists it: visible items, "[x] " before a checked one, "(off) " before a
// disabled one.
QStringList entries(const QMenu *menu)
{
    QStringList out;
    for (const QAction *a : menu->actions()) {
        if (a->isSeparator() || !a->isVisible())
            continue;
        out << (a->isChecked() ? "[x] " : "") + QString(a->isEnabled() ? "" : "(off) ") + a->text();
    }
    return out;
}

QAction *entry(const QMenu *menu, const QString &prefix)
{
    for (QAction *a : menu->actions()) {
        if (a->isVisible() && a->text().startsWith(prefix))
            return a;
    }
    return nullptr;
}

} // namespace

class PanelIndicatorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void menuAndTooltipFollowTheBoard()
    {
        ModelFixture f;
        QWidget window;
        PanelIndicator panel(&f.m(), &window);
        QMenu *menu = panel.menu();
        QCOMPARE(entries(menu), QStringList({"A · 00:00:00", "B · 00:00:00", "C · 00:00:00", "(off) Pause All",
                                             "Show Tock", "Quit Tock"}));
        QCOMPARE(PanelIndicator::toolTip(f.m()), QString("Tock · no timer running"));

        // Choosing an entry starts its timer.
        entry(menu, "B")->trigger();
        QVERIFY(f.timer(1).isRunning());
        QCOMPARE(entries(menu).mid(0, 4), QStringList({"A · 00:00:00", "[x] B · 00:00:00", "C · 00:00:00", "Pause All"}));

        // Seconds later the tooltip tells the time; the menu catches up as it opens.
        f.advance(2.0);
        QCOMPARE(PanelIndicator::toolTip(f.m()), QString("B · 00:00:02"));
        QCOMPARE(entries(menu).at(1), QString("[x] B · 00:00:00"));
        Q_EMIT menu->aboutToShow();
        QCOMPARE(entries(menu).at(1), QString("[x] B · 00:00:02"));

        // Timers that come, go or move rebuild the entries; choosing a running one pauses it.
        f.m().addTimer(QStringLiteral("D"));
        f.m().deleteTimer(f.id(0));
        f.m().moveTimer(f.id(2), 0);
        QCOMPARE(entries(menu).mid(0, 3), QStringList({"D · 00:00:00", "[x] B · 00:00:02", "C · 00:00:00"}));
        entry(menu, "C")->trigger();
        QCOMPARE(PanelIndicator::toolTip(f.m()), QString("B · 00:00:02\nC · 00:00:00"));
        entry(menu, "B")->trigger();
        QCOMPARE(entries(menu).mid(0, 3), QStringList({"D · 00:00:00", "B · 00:00:02", "[x] C · 00:00:00"}));

        entry(menu, "Pause All")->trigger();
        QVERIFY(!f.m().board().anyRunning());
        QCOMPARE(f.saved()->timers.at(2).wasRunning, false); // saved at once, as the window's Pause All
        QCOMPARE(entries(menu).at(3), QString("(off) Pause All"));

        while (f.count() > 0)
            f.m().deleteTimer(f.id(0));
        QCOMPARE(entries(menu), QStringList({"(off) No timers yet", "(off) Pause All", "Show Tock", "Quit Tock"}));
    }

    void namesInEntriesAndTooltip()
    {
        const QString longName = QString(45, QChar('x'));
        ModelFixture f(WithStore::yes, {"Fish & Chips", "", longName, "4", "5", "6", "7", "8", "9", "10"});
        QWidget window;
        PanelIndicator panel(&f.m(), &window);
        QCOMPARE(entry(panel.menu(), "Fish")->text(), QString("Fish && Chips · 00:00:00"));
        QCOMPARE(entries(panel.menu()).at(1), QString("Untitled · 00:00:00"));
        QCOMPARE(entries(panel.menu()).at(2), QString(39, QChar('x')) + "… · 00:00:00");

        f.m().setRunning({f.id(0), f.id(1)}, true);
        QCOMPARE(PanelIndicator::toolTip(f.m()), QString("Fish & Chips · 00:00:00\nUntitled · 00:00:00"));
        QList<QUuid> all;
        for (qsizetype i = 0; i < f.count(); ++i)
            all << f.id(i);
        f.m().setRunning(all, true);
        const QStringList lines = PanelIndicator::toolTip(f.m()).split('\n');
        QCOMPARE(lines.size(), PanelIndicator::maxTooltipLines + 1);
        QCOMPARE(lines.at(PanelIndicator::maxTooltipLines - 1), QString("8 · 00:00:00"));
        QCOMPARE(lines.last(), QString("and 2 more"));
    }

    // Hiding keeps the timers running; showing brings the window back where it was. (Quit, and
    // the time moving on while hidden, are panel_e2e_test's.)
    void hideAndShowTheWindow()
    {
        ModelFixture f;
        TockWindow window(&f.m(), [] {});
        PanelIndicator panel(&f.m(), &window);
        window.move(40, 30);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QPoint at = window.pos();
        f.m().toggle(f.id(0));
        QVERIFY(entry(panel.menu(), "Hide Tock"));
        panel.toggleWindow();
        QVERIFY(!window.isVisible());
        QVERIFY(entry(panel.menu(), "Show Tock"));
        QVERIFY(f.timer(0).isRunning());
        panel.toggleWindow();
        QVERIFY(window.isVisible());
        QCOMPARE(window.pos(), at);
        QVERIFY(entry(panel.menu(), "Hide Tock"));
    }
};

QTEST_MAIN(PanelIndicatorTest)
#include "panelindicator_test.moc"

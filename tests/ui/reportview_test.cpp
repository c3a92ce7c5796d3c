// The week's report in a real window, offscreen and in virtual time: Ctrl+R opens and closes it,
// the arrows and Home move through the weeks, Esc returns to the timers, a running timer's
// figures grow on the tick, and a screen reader finds a table of timers by days.
#include "accessibility.h"
#include "focusmark.h"
#include "historyrecorder.h"
#include "modelfixture.h"
#include "reportview.h"
#include "rootview.h"
#include "rowlist.h"
#include "table.h"
#include "zone.h"
#include "tockwindow.h"
#include "windowinteraction.h"

#include <QAccessible>
#include <QtTest>


using namespace tock;

namespace {

Instant at(const char *local)
{
    return double(QDateTime::fromString(QString::fromLatin1(local), Qt::ISODate).toSecsSinceEpoch());
}

// A window over timers A and B with a history in memory, on a Wednesday morning; A ran from
// 9:00 to 10:00 and B starts at 10:00.
struct Fixture {
    ModelFixture f{WithStore::yes, {QStringLiteral("A"), QStringLiteral("B")}};
    std::unique_ptr<TockWindow> window;
    ReportView *report = nullptr;

    Fixture()
    {
        f.v.clock->set(at("2026-11-25T09:00:00"));
        f.m().setHistory(std::make_shared<HistoryRecorder>(
            std::make_unique<History>(QStringLiteral(":memory:"), History::Access::write)));
        f.m().historyRecorder()->start(f.m().board(), std::nullopt, f.v.clock->now());
        f.m().toggle(f.id(0));
        // The clock alone jumps: an hour of ticks would only slow the test.
        f.v.clock->advance(3600);
        f.m().toggle(f.id(0));
        f.m().toggle(f.id(1));
        window = std::make_unique<TockWindow>(&f.m(), [] {});
        new WindowInteraction(&f.m(), window.get(), QString());
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        report = window->rootView()->reportView();
    }
    // A key as it reaches the window: to the focused control, else the window.
    void key(Qt::Key k, Qt::KeyboardModifiers modifiers)
    {
        QWidget *focus = QApplication::focusWidget();
        QTest::keyClick(focus ? focus : window.get(), k, modifiers);
    }
};

} // namespace

class ReportViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Weeks start on Monday here.
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        Accessibility::install();
    }

    void keysOpenStepAndClose_data()
    {
        // Keys pressed in turn from the timers; then whether the report shows and its week.
        table<QString, bool, QDate>({"sequence", "open", "week"}, {
            {"Ctrl+R", true, QDate(2026, 11, 23)},
            {"Ctrl+R, Ctrl+R", false, QDate(2026, 11, 23)},
            {"Ctrl+R, Left", true, QDate(2026, 11, 16)},
            {"Ctrl+R, Right, Right", true, QDate(2026, 12, 7)},
            {"Ctrl+R, Left, Left, Home", true, QDate(2026, 11, 23)},
            {"Ctrl+R, Left, Esc", false, QDate(2026, 11, 16)},
        });
    }
    void keysOpenStepAndClose()
    {
        QFETCH(QString, sequence);
        QFETCH(bool, open);
        QFETCH(QDate, week);
        Fixture x;
        const QKeySequence keys = QKeySequence::fromString(sequence, QKeySequence::PortableText);
        for (int i = 0; i < keys.count(); ++i)
            x.key(keys[i].key(), keys[i].keyboardModifiers());
        QCOMPARE(x.report->isOpen(), open);
        QCOMPARE(x.report->isVisible(), open);
        QCOMPARE(x.window->rootView()->rowList()->isVisible(), !open);
        QCOMPARE(x.report->report().start, week);
        // Open, the report has the keys and wears the focus mark; closed, no control does.
        QCOMPARE(QApplication::focusWidget() == x.report, open);
        QCOMPARE(x.window->rootView()->focusMark()->target() == x.report, open);
    }

    void runningTimerGrowsOnTheTick()
    {
        Fixture x;
        x.report->open();
        // B has only just started: nothing of it to show yet.
        QCOMPARE(x.report->report().rows.size(), 1);
        QCOMPARE(x.report->report().rows.at(0).perDay.at(2), 3600.0);
        QVERIFY(x.report->report().live);
        QSignalSpy changed(x.report, &ReportView::reportChanged);
        const qreal before = x.report->preferredHeight();
        x.f.advance(5);
        QVERIFY(!changed.isEmpty());
        QCOMPARE(x.report->report().rows.size(), 2);
        QCOMPARE(x.report->report().rows.at(1).total, 5.0);
        QVERIFY(x.report->preferredHeight() > before);
        // Pausing stops the growth: no tick, no change.
        x.f.m().toggle(x.f.id(1));
        QVERIFY(!x.report->report().live);
        changed.clear();
        x.f.advance(5);
        QVERIFY(changed.isEmpty());
    }

    void screenReadersReadATable()
    {
        Fixture x;
        x.f.v.clock->advance(1800);
        x.report->open();
        QAccessibleInterface *table = QAccessible::queryAccessibleInterface(x.report);
        QVERIFY(table);
        QCOMPARE(table->role(), QAccessible::Table);
        QCOMPARE(table->text(QAccessible::Name), QStringLiteral("Report: week of Nov 23 \u2013 29, 2026"));
        QAccessibleTableInterface *cells = table->tableInterface();
        QVERIFY(cells);
        QCOMPARE(cells->rowCount(), 3);    // A, B, total
        QCOMPARE(cells->columnCount(), 8); // seven days, the week
        QCOMPARE(cells->rowDescription(1), QStringLiteral("B"));
        QCOMPARE(cells->rowDescription(2), QStringLiteral("Total"));
        QCOMPARE(cells->columnDescription(2), QStringLiteral("Wednesday Nov 25"));
        QCOMPARE(cells->columnDescription(7), QStringLiteral("Week"));
        const auto text = [&](int row, int column) { return cells->cellAt(row, column)->text(QAccessible::Name); };
        QCOMPARE(text(0, 2), QStringLiteral("1:00:00"));
        QCOMPARE(text(1, 2), QStringLiteral("0:30:00"));
        QCOMPARE(text(0, 3), QStringLiteral("0:00:00"));
        QCOMPARE(text(2, 7), QStringLiteral("1:30:00"));
        QCOMPARE(cells->cellAt(2, 7)->tableCellInterface()->rowIndex(), 2);
        QCOMPARE(table->childCount(), 24);
        QCOMPARE(table->indexOfChild(cells->cellAt(1, 3)), 11);
    }
};

TOCK_TEST_MAIN_IN_ZONE(ReportViewTest, QApplication, "Europe/Berlin")

#include "reportview_test.moc"

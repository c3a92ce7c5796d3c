// The menus: F10's bar, items and their shortcuts, undo titles that follow the undo history, the
// style items, and the About panel's text. The panel indicator's menu and tooltip against a model
// in virtual time, and what its window items do to a real window (offscreen there is no panel;
// panel_e2e_test has one, and checks what a panel makes of the labels).
#include "dialogs.h"
#include "keymenubar.h"
#include "modelfixture.h"
#include "panelindicator.h"
#include "table.h"
#include "tockmenus.h"
#include "tockwindow.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
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

class MenusTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
#ifndef Q_OS_MACOS
    // F10's bar: the first menu opens with it, Right goes on to the next menu (Left from the
    // first wraps to the last), and the bar goes once the keys close the menu or choose an item.
    void f10BarWalksTheMenusAndGoes_data()
    {
        table<QString, QString, bool>({"keys", "open", "chosen"}, {
            {"Left", "Window", false},
            {"Escape", "", false},
            {"Right Right Return", "", true},
        });
    }
    void f10BarWalksTheMenusAndGoes()
    {
        QFETCH(QString, keys);
        ModelFixture f(WithStore::no, {"A"});
        QWidget window;
        window.resize(300, 200);
        TockMenus menus(&f.m(), &window, MenuActions{});
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_F10);
        QTRY_VERIFY(menus.keyMenuBar()->isVisible());
        for (const QString &key : keys.split(' ', Qt::SkipEmptyParts)) {
            QTRY_VERIFY(QApplication::activePopupWidget());
            QTest::keyClick(QApplication::activePopupWidget(),
                            key == "Right" ? Qt::Key_Right : key == "Left" ? Qt::Key_Left
                            : key == "Escape" ? Qt::Key_Escape : Qt::Key_Return);
        }
        QFETCH(QString, open);
        const auto *popup = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QTRY_COMPARE(popup ? popup->title() : QString(), open);
        QTRY_COMPARE(menus.keyMenuBar()->isVisible(), !open.isEmpty());
        QTEST(f.m().board().timers.size() == 2, "chosen"); // the Timer menu's first item adds one
    }
#endif

    // Every item is named and no two share a shortcut; every shortcut lives on the window, so it
    // works with the menus closed; the right-click menu holds the same menus.
    void itemsAndShortcuts()
    {
        ModelFixture f(WithStore::no);
        QWidget window;
        TockMenus menus(&f.m(), &window, MenuActions{});
        QStringList shortcuts;
        for (const QMenu *menu : menus.menus()) {
            QVERIFY(!menu->title().isEmpty());
            for (QAction *a : menu->actions()) {
                QVERIFY2(a->isSeparator() || (!a->text().isEmpty() && window.actions().contains(a)),
                         qPrintable(menu->title() + ": " + a->text()));
                for (const QKeySequence &k : a->shortcuts()) {
                    QVERIFY2(!shortcuts.contains(k.toString()), qPrintable(k.toString()));
                    shortcuts << k.toString();
                }
            }
        }
        QCOMPARE(menus.styleActions().size(), StyleIDs::allCases().size());
        QCOMPARE(menus.contextMenu()->actions().size(), menus.menus().size());
    }

    // The undo titles follow the undo history; a style chosen anywhere (here the model, as the
    // command line does) moves the check.
    void actionsFollowTheModel()
    {
        ModelFixture f(WithStore::no);
        QWidget window;
        TockMenus menus(&f.m(), &window, MenuActions{});
        QAction *undo = menus.undoAction();
        QAction *redo = menus.redoAction();
        const auto state = [&] {
            return QStringList{undo->text(), undo->isEnabled() ? "on" : "off", redo->text(), redo->isEnabled() ? "on" : "off"};
        };
        QCOMPARE(state(), (QStringList{"Undo", "off", "Redo", "off"}));
        f.set(0, 60);
        f.m().reset(f.id(0));
        QCOMPARE(state(), (QStringList{"Undo Reset Timer", "on", "Redo", "off"}));
        undo->trigger();
        QCOMPARE(f.timer(0).accumulated, 60.0);
        QCOMPARE(state(), (QStringList{"Undo Set Time", "on", "Redo Reset Timer", "on"}));
        redo->trigger();
        QCOMPARE(f.timer(0).accumulated, 0.0);
        QCOMPARE(state(), (QStringList{"Undo Reset Timer", "on", "Redo", "off"}));

        menus.styleActions().at(6)->trigger();
        QCOMPARE(f.m().style(), StyleID::shell);
        f.m().setStyle(StyleID::amber);
        QList<bool> checked;
        for (const QAction *a : menus.styleActions())
            checked << a->isChecked();
        QCOMPARE(checked, (QList<bool>{false, false, false, false, true, false, false}));
    }

    void aboutText()
    {
        // The data folder as the user knows it: under the home folder as "~", always with a slash.
        QCOMPARE(Dialogs::aboutParagraphs(QDir::homePath() + "/.local/share/Tock").at(1).at(1), "~/.local/share/Tock/");
        QCOMPARE(Dialogs::aboutParagraphs("/srv/tock").at(1).at(1), QString("/srv/tock/"));
    }

    // The question is asked without a nested loop; only "Start Fresh" goes on, Cancel leaves
    // the unreadable banner up.
    void startFreshQuestion()
    {
        const StorageNotice unreadable = StorageNotice::unreadable({"timers.json: not JSON"});
        ModelFixture f(WithStore::yes, {"A"}, unreadable);
        QWidget window;
        for (const bool confirm : {false, true}) {
            QPointer<QMessageBox> box = Dialogs::askStartFresh(&f.m(), &window);
            QCOMPARE(Dialogs::askStartFresh(&f.m(), &window), box.data()); // never two at once
            QCOMPARE(box->text(), QString("Start with an empty list?"));
            QCOMPARE(box->defaultButton()->text(), QString("Start Fresh"));
            QCOMPARE(box->escapeButton()->text(), QString("Cancel"));
            (confirm ? static_cast<QAbstractButton *>(box->defaultButton()) : box->escapeButton())->click();
            QCOMPARE(f.m().notice() == unreadable, !confirm);
            QTRY_VERIFY(!box); // gone once answered
        }
    }

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

        // Timers that come, go or move rebuild the entries; choosing a running one pauses it.
        f.m().addTimer(QStringLiteral("D"));
        f.m().deleteTimer(f.id(0));
        f.m().moveTimer(f.id(2), 0);
        QCOMPARE(entries(menu).mid(0, 3), QStringList({"D · 00:00:00", "[x] B · 00:00:00", "C · 00:00:00"}));
        entry(menu, "C")->trigger();
        QCOMPARE(PanelIndicator::toolTip(f.m()), QString("B · 00:00:00\nC · 00:00:00"));
        entry(menu, "B")->trigger();
        QCOMPARE(entries(menu).mid(0, 3), QStringList({"D · 00:00:00", "B · 00:00:00", "[x] C · 00:00:00"}));

        entry(menu, "Pause All")->trigger();
        QVERIFY(!f.m().board().anyRunning());
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

    // Showing brings the window back where it was. (Hiding and showing from the panel, the item
    // that says which, Quit, and the time moving on while hidden are panel_e2e_test's.)
    void hideAndShowTheWindow()
    {
        ModelFixture f;
        TockWindow window(&f.m(), [] {});
        PanelIndicator panel(&f.m(), &window);
        window.move(40, 30);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QPoint at = window.pos();
        panel.toggleWindow();
        QVERIFY(!window.isVisible());
        panel.toggleWindow();
        QVERIFY(window.isVisible());
        QCOMPARE(window.pos(), at);
    }
};

QTEST_MAIN(MenusTest)
#include "menus_test.moc"

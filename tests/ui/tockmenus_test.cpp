// The menus: F10's bar, items and their shortcuts, undo titles that follow the undo
// history, the style items, and the About panel's text.
#include "dialogs.h"
#include "keymenubar.h"
#include "modelfixture.h"
#include "table.h"
#include "tockmenus.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QtTest>

using namespace tock;

class TockMenusTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
#ifndef Q_OS_MACOS
    // F10's bar: the first menu opens with it, Right goes on to the next menu (Left from the
    // first wraps to the last), and the bar goes once the keys close the menu or choose an item.
    void f10BarWalksTheMenusAndGoes_data()
    {
        table<QString, QString, bool>({"keys", "open", "chosen"}, {
            {"", "Tock", false},
            {"Right Right", "Timer", false},
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

    void undoTitlesFollowHistory()
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
    }

    // A style chosen anywhere (here the command line) moves the check.
    void styleCheckFollowsModel()
    {
        ModelFixture f(WithStore::no);
        QWidget window;
        TockMenus menus(&f.m(), &window, MenuActions{});
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
};

QTEST_MAIN(TockMenusTest)
#include "tockmenus_test.moc"

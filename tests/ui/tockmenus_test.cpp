// The menus: items in order with their shortcuts, undo titles that follow the undo history, the
// style items, and the About panel's text.
#include "dialogs.h"
#include "modelfixture.h"
#include "tockmenus.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QtTest>

using namespace tock;

namespace {

// "Title: Item (shortcut), Item, -" for one menu; separators as "-".
QString describe(const QMenu *menu)
{
    QStringList items;
    for (const QAction *a : menu->actions()) {
        if (a->isSeparator()) {
            items << "-";
            continue;
        }
        QString item = a->text();
        QStringList keys;
        for (const QKeySequence &k : a->shortcuts())
            keys << k.toString(QKeySequence::PortableText);
        if (!keys.isEmpty())
            item += " (" + keys.join(' ') + ")";
        items << item;
    }
    return menu->title() + ": " + items.join(", ");
}

} // namespace

class TockMenusTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itemsInOrder()
    {
        ModelFixture f(WithStore::no);
        QWidget window;
        TockMenus menus(&f.m(), &window, MenuActions{});
        QStringList described;
        for (const QMenu *menu : menus.menus())
            described << describe(menu);
        const QStringList expected{
#ifdef Q_OS_MACOS
            "Tock: About Tock, Show Data Folder, -, Hide Tock (Ctrl+H), Hide Others (Ctrl+Alt+H), -, Quit Tock (Ctrl+Q)",
#else
            "Tock: About Tock, Show Data Folder, -, Quit Tock (Ctrl+Q)",
#endif
            "Edit: Undo (Ctrl+Z), Redo (Ctrl+Shift+Z Ctrl+Y), -, Paste (Ctrl+V), Select All (Ctrl+A)",
            "Timer: Add Timer (Ctrl+N), Pause All",
            "Size: Make Larger (Ctrl++ Ctrl+=), Make Smaller (Ctrl+-), Actual Size (Ctrl+0)",
            "Style: Neo Classic (Ctrl+1), Neo Color (Ctrl+2), Play Kid (Ctrl+3), Calculator (Ctrl+4), "
            "Amber Terminal (Ctrl+5), Split-Flap (Ctrl+6), Shell (Ctrl+7)",
            "Window: Minimize (Ctrl+M), Close (Ctrl+W)",
        };
        QCOMPARE(described, expected);
        // The right-click menu holds the same menus, and every shortcut lives on the window.
        QCOMPARE(menus.contextMenu()->actions().size(), menus.menus().size());
        for (const QMenu *menu : menus.menus()) {
            for (QAction *a : menu->actions())
                QVERIFY2(a->isSeparator() || window.actions().contains(a), qPrintable(a->text()));
        }
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
        f.m().deleteTimer(f.id(1));
        QCOMPARE(undo->text(), QString("Undo Delete Timer"));
        QCOMPARE(state().mid(2), (QStringList{"Redo", "off"}));
    }

    void menuItemsAct()
    {
        ModelFixture f(WithStore::no);
        QWidget window;
        int minimized = 0;
        MenuActions actions;
        actions.minimize = [&] { ++minimized; };
        TockMenus menus(&f.m(), &window, actions);
        const auto find = [&](const QString &text) -> QAction * {
            for (const QMenu *menu : menus.menus())
                for (QAction *a : menu->actions())
                    if (a->text() == text)
                        return a;
            return nullptr;
        };

        QCOMPARE(menus.styleActions().at(0)->isChecked(), true);
        menus.styleActions().at(6)->trigger();
        QCOMPARE(f.m().style(), StyleID::shell);
        f.m().setStyle(StyleID::amber); // from the command line: the check follows
        QCOMPARE(menus.styleActions().at(4)->isChecked(), true);
        QCOMPARE(menus.styleActions().at(6)->isChecked(), false);

        find("Add Timer")->trigger();
        QCOMPARE(f.count(), qsizetype(4));
        const double zoom = f.m().zoom();
        find("Make Larger")->trigger();
        QVERIFY(f.m().zoom() > zoom);
        find("Actual Size")->trigger();
        QCOMPARE(f.m().zoom(), AppModel::defaultZoom);
        find("Minimize")->trigger();
        QCOMPARE(minimized, 1);
        QVERIFY(!find("Close")->isEnabled()); // no action given
    }

    void aboutText()
    {
        const QString folder = QDir::homePath() + "/.local/share/Tock";
        const QList<QStringList> p = Dialogs::aboutParagraphs(folder);
        QCOMPARE(p.size(), 3);
        QCOMPARE(p.at(1), (QStringList{"Timers are saved in", "~/.local/share/Tock/"}));
        QCOMPARE(Dialogs::aboutParagraphs("/srv/tock").at(1).at(1), QString("/srv/tock/"));
#ifdef Q_OS_MACOS
        QCOMPARE(p.at(2).at(0), QString("⌘N add · ⌘Z undo · ⌘1–⌘7 style · ⌘+ ⌘− ⌘0 size"));
#else
        QCOMPARE(p.at(2).at(0), QString("Ctrl+N add · Ctrl+Z undo · Ctrl+1–Ctrl+7 style · Ctrl++ Ctrl+− Ctrl+0 size"));
#endif
        QCOMPARE(p.at(2).mid(1), (QStringList{"Swipe left or ⌫ to delete · drag to reorder", "In Shell: type help"}));

        QMessageBox *box = Dialogs::showAbout(nullptr, folder);
        QVERIFY(box->informativeText().contains("~/.local/share/Tock/"));
        QVERIFY(!box->isModal());
        box->close();
    }

    // The question is asked without a nested loop; only "Start Fresh" goes on.
    void startFreshQuestion()
    {
        ModelFixture f(WithStore::no);
        QWidget window;
        for (const bool confirm : {false, true}) {
            int confirmed = 0;
            QPointer<QMessageBox> box = Dialogs::askStartFresh(&f.m(), &window);
            QCOMPARE(Dialogs::askStartFresh(&f.m(), &window), box.data()); // never two at once
            QCOMPARE(box->text(), QString("Start with an empty list?"));
            QCOMPARE(box->defaultButton()->text(), QString("Start Fresh"));
            QVERIFY(box->isVisible());
            QAbstractButton *answer = confirm ? static_cast<QAbstractButton *>(box->defaultButton()) : box->escapeButton();
            QCOMPARE(answer->text(), confirm ? QString("Start Fresh") : QString("Cancel"));
            // Without a store confirmStartFresh does nothing visible, so count the click instead.
            connect(box, &QMessageBox::buttonClicked, [&] { ++confirmed; });
            answer->click();
            QCOMPARE(confirmed, 1);
            QTRY_VERIFY(!box); // deleted once closed
        }
    }
};

QTEST_MAIN(TockMenusTest)
#include "tockmenus_test.moc"

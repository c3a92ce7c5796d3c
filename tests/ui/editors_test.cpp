// The editors against real widgets in an active offscreen window, on a model without a store.
// The name field: how a rename starts and ends, the model's say on starting one, focus for a new
// timer, and the label text. The time mask: its key table, what a screen reader finds, clicks,
// refocusing and the blink rule.
#include "accessibility.h"
#include "cursorblink.h"
#include "editmask.h"
#include "keys.h"
#include "maskkeycatcher.h"
#include "modelfixture.h"
#include "namefield.h"
#include "table.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

using namespace tock;
using namespace tock::testing;

namespace {

// The window around the mask: it counts the keys the mask let through and carries the two
// shortcuts a real window has, an undo chord and a bare Backspace.
class Host : public QWidget {
public:
    Host()
    {
        auto *undo = new QAction(this);
        undo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
        connect(undo, &QAction::triggered, this, [this] { ++undos; });
        addAction(undo);
        auto *erase = new QAction(this);
        erase->setShortcut(QKeySequence(Qt::Key_Backspace));
        connect(erase, &QAction::triggered, this, [this] { ++erases; });
        addAction(erase);
        resize(300, 80);
    }
    int passed = 0;
    int undos = 0;
    int erases = 0;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        // QTest presses a chord's modifiers first; only the chord's own key is of interest.
        const int key = event->key();
        if (key != Qt::Key_Shift && key != Qt::Key_Control && key != Qt::Key_Alt && key != Qt::Key_Meta)
            ++passed;
    }
};

QString texts(const AppModel &m)
{
    if (!m.draft())
        return QStringLiteral("closed");
    const TimeEditDraft &d = *m.draft();
    return d.texts[0] + '|' + d.texts[1] + '|' + d.texts[2];
}

} // namespace

class EditorsTest : public QObject {
    Q_OBJECT

private:
    struct NameScene {
        ModelFixture f{WithStore::no, {"Deep work", "Design"}};
        QWidget host;
        NameField *field = nullptr;
        QLineEdit *other = nullptr;

        NameScene()
        {
            auto *layout = new QVBoxLayout(&host);
            field = add(f.id(0));
            other = new QLineEdit(&host);
            layout->addWidget(other);
            host.resize(260, 120);
            host.show();
            host.activateWindow();
        }
        NameField *add(const QUuid &id)
        {
            auto *name = new NameField(f.model.get(), id, &host);
            host.layout()->addWidget(name);
            return name;
        }
        bool ready() { return QTest::qWaitForWindowActive(&host); }
        void click(NameField *name) { QTest::mouseClick(name, Qt::LeftButton, {}, name->rect().center()); }
    };

private Q_SLOTS:
    void renameEnds_data()
    {
        table<QString, QString, QString>({"case", "end", "name"}, {
            {"focus loss commits", "focus", "Reading"},
            {"escape restores", "escape", "Deep work"},
        });
    }

    void renameEnds()
    {
        QFETCH(QString, end);
        QFETCH(QString, name);
        NameScene s;
        QVERIFY(s.ready());
        s.click(s.field);
        QVERIFY(s.field->isEditing());
        QVERIFY(s.f.m().isEditingName());
        QTRY_VERIFY(s.field->editor()->hasFocus());
        QTest::keyClicks(s.field->editor(), QStringLiteral("Reading")); // replaces the selected name
        if (end == "escape")
            QTest::keyClick(s.field->editor(), Qt::Key_Escape);
        else
            s.other->setFocus();
        QVERIFY(!s.field->isEditing());
        QVERIFY(!s.f.m().isEditingName());
        QCOMPARE(s.f.names().at(0), name);
        QCOMPARE(s.field->shownText(), name);
    }

    void clickAsksTheOpenTimeEdit_data()
    {
        table<QString, QString, bool>({"case", "minutes", "renames"}, {
            {"invalid edit refuses", "75", false},
            {"valid edit commits first", "30", true},
        });
    }

    void clickAsksTheOpenTimeEdit()
    {
        QFETCH(QString, minutes);
        QFETCH(bool, renames);
        NameScene s;
        QVERIFY(s.ready());
        s.f.m().beginEdit(s.f.id(1));
        TimeEditDraft draft = *s.f.m().draft();
        draft.set(TimeField::minutes, minutes);
        s.f.m().setDraft(draft);
        s.click(s.field);
        QCOMPARE(s.field->isEditing(), renames);
        QCOMPARE(s.f.m().isEditOpen(), !renames);
        QCOMPARE(s.f.elapsed(1), renames ? 30 * 60.0 : 0.0);
    }

    void newTimerTakesNameFocus()
    {
        NameScene s;
        QVERIFY(s.ready());
        NameField *added = nullptr;
        // The row appears with the board change, before the model asks for its name's focus.
        connect(s.f.model.get(), &AppModel::boardChanged, &s.host, [&] {
            if (!added && s.f.m().board().timers.size() == 3)
                added = s.add(s.f.id(2));
        });
        s.f.m().addTimer();
        QVERIFY(added);
        QTRY_VERIFY(added->isEditing() && added->editor()->hasFocus());
        QVERIFY(!s.f.m().nameFocusID());
        QVERIFY(!s.field->isEditing());
        QTest::keyClicks(added->editor(), QStringLiteral("Lunch"));
        QTest::keyClick(added->editor(), Qt::Key_Return);
        QCOMPARE(s.f.names(), QStringList({"Deep work", "Design", "Lunch"}));
    }

    void shownText_data()
    {
        table<QString, QString, QString>({"case", "name", "shown"}, {
            {"empty is untitled", "", "Untitled"},
            {"huge is elided", QString(200000, QChar(0x05D0)), "…"},
            {"emoji is elided", QString::fromUtf8("🙂").repeated(5000), "…"},
        });
    }

    void shownText()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        NameScene s;
        s.f.m().rename(s.f.id(0), name);
        if (shown != "…") {
            QCOMPARE(s.field->shownText(), shown);
            return;
        }
        const QString text = s.field->shownText();
        QVERIFY(text.endsWith(QChar(0x2026)));
        QVERIFY(text.size() < 100);
        QVERIFY(!text.at(text.size() - 2).isHighSurrogate()); // no half emoji before the ellipsis
    }

private:
    struct MaskScene {
        ModelFixture f{WithStore::no, {"A", "B"}};
        Host host;
        EditMask *mask = nullptr;
        QLineEdit *other = nullptr;
        QSignalSpy *beeps = nullptr;

        explicit MaskScene(StyleID style = StyleID::classic)
        {
            f.set(0, 3725); // 01:02:05
            f.m().setStyle(style);
            mask = new EditMask(f.model.get(), &host);
            mask->resize(mask->sizeHint());
            other = new QLineEdit(&host);
            other->move(0, 50);
            beeps = new QSignalSpy(mask, &EditMask::beeped);
            f.m().beginEdit(f.id(0));
            host.show();
            host.activateWindow();
        }
        ~MaskScene() { delete beeps; }
        bool ready() { return QTest::qWaitForWindowActive(&host) && QTest::qWaitFor([this] { return keys(); }); }
        bool keys() const { return mask->keyCatcher()->hasFocus(); }
    };

private Q_SLOTS:
    void keyTable_data()
    {
        // The draft afterwards ("closed" once it ended), the cursor's field, the timer, the beeps,
        // the keys that travelled on to the window and how often its Ctrl+Z shortcut fired. One
        // row per key and branch of the mask's own; what typing and stepping do to the fields
        // is timeedit_test's.
        table<QString, QString, int, double, int, int, int>(
            {"keys", "texts", "field", "seconds", "beeps", "passed", "undos"}, {
                {"1 2 3 4 5", "123|45|05", 2, 3725.0, 0, 0, 0}, // digits fill and advance
                // Commit and cancel.
                {"7 : 3 Ret", "closed", 1, 25385.0, 0, 0, 0}, // separator on, return commits
                {"5 Enter", "closed", 0, 18125.0, 0, 0, 0}, // keypad enter commits
                {"5 Ret 7", "closed", 0, 18125.0, 0, 1, 0}, // closed mask lets keys pass
                {"9 9 Esc", "closed", 0, 3725.0, 0, 0, 0}, // escape cancels
                {"Tab 7 5 Ret", "01|75|05", 2, 3725.0, 0, 0, 0}, // invalid entry stays open
                // Moving, without wrapping either way.
                {"Right Right Right", "01|02|05", 2, 3725.0, 0, 0, 0}, // right stops at seconds
                {"S-BTab Left 4", "4|02|05", 0, 3725.0, 0, 0, 0}, // backtab stops at hours
                {"Tab Tab S-Tab 8", "01|8|05", 1, 3725.0, 0, 0, 0}, // shift tab goes back
                // Stepping stays within a field.
                {"Up Up Right Down", "03|01|05", 1, 3725.0, 0, 0, 0}, // up steps
                // Both delete keys delete backwards, ahead of a window's Backspace shortcut.
                {"BS", "|02|05", 0, 3725.0, 0, 0, 0}, // backspace clears fresh
                {"Tab 4 Del", "01||05", 1, 3725.0, 0, 0, 0}, // delete deletes backwards
                // Refused characters beep and are still consumed; keys without text travel on.
                {"x", "01|02|05", 0, 3725.0, 1, 0, 0}, // letter beeps
                {"Home", "01|02|05", 0, 3725.0, 0, 1, 0}, // home passes
                // Command chords belong to the menus.
                {"M-z", "01|02|05", 0, 3725.0, 0, 0, 1}, // ctrl z is the window's
                {"1 M-k", "1|02|05", 0, 3725.0, 0, 1, 0}, // other chord passes
            });
    }

    void keyTable()
    {
        QFETCH(QString, keys);
        MaskScene s;
        QVERIFY(s.ready());
        typeKeys(keys);
        QTEST(::texts(s.f.m()), "texts");
        QTEST(int(s.mask->maskCursor().field), "field");
        QTEST(s.f.elapsed(0), "seconds");
        QTEST(int(s.beeps->count()), "beeps");
        QTEST(s.host.passed, "passed");
        QTEST(s.host.undos, "undos");
        QCOMPARE(s.host.erases, 0);
    }

    // What a screen reader finds as keys edit the mask: the three fields as spin boxes under
    // the mask, each with its value (none while invalid) and range, the one the keys go to
    // focused. (The events a reader hears are checked against the real window.)
    void readerFollowsKeys_data()
    {
        table<QString, QString>({"keys", "fields"}, {
            {"1 2 3 4", "Hours 123 Minutes 4* Seconds 5"},
            {"BS", "Hours 0* Minutes 2 Seconds 5"},
            {"Tab 7 5", "Hours 1 Minutes - Seconds 5*"},
        });
    }
    void readerFollowsKeys()
    {
        QFETCH(QString, keys);
        Accessibility::install(); // as the window does
        MaskScene s;
        QVERIFY(s.ready());
        typeKeys(keys);
        QAccessibleInterface *mask = QAccessible::queryAccessibleInterface(s.mask);
        QCOMPARE(mask->text(QAccessible::Name), QStringLiteral("Edit time: hours, minutes, seconds"));
        QCOMPARE(mask->childCount(), 3);
        QStringList fields;
        for (int i = 0; i < 3; ++i) {
            QAccessibleInterface *field = mask->child(i);
            QCOMPARE(field->role(), QAccessible::SpinBox);
            QCOMPARE(field->parent(), mask);
            QCOMPARE(mask->indexOfChild(field), i);
            QAccessibleValueInterface *value = field->valueInterface();
            QCOMPARE(value->maximumValue().toInt(), i == 0 ? 999 : 59);
            const QVariant v = value->currentValue();
            fields << field->text(QAccessible::Name) + ' ' + (v.isValid() ? v.toString() : "-")
                          + (field->state().focused ? "*" : "");
            QVERIFY(s.mask->rect().contains(s.mask->mapFromGlobal(field->rect().center())));
        }
        QTEST(fields.join(' '), "fields");
        QCOMPARE(mask->focusChild(), mask->child(int(s.mask->maskCursor().field)));
    }

    void clickMovesCursorAndANewEditTakesKeysBack()
    {
        MaskScene s;
        QVERIFY(s.ready());
        s.other->setFocus();
        const QSize size = s.mask->size();
        QTest::mouseClick(s.mask, Qt::LeftButton, {}, QPoint(size.width() - 8, size.height() / 2));
        QCOMPARE(s.mask->maskCursor(), MaskCursor(TimeField::seconds, true));
        QVERIFY(s.keys()); // the click also brings the keys back
        typeKeys("7");
        QCOMPARE(texts(s.f.m()), QStringLiteral("01|02|7"));

        // So does a new edit, which starts on the hours.
        s.other->setFocus();
        QVERIFY(!s.keys());
        s.f.m().beginEdit(s.f.id(1));
        QVERIFY(s.keys());
        QCOMPARE(s.mask->maskCursor(), MaskCursor());
    }

    void blinksOnlyWhenItShould()
    {
        MaskScene shell(StyleID::shell);
        QVERIFY(shell.ready());
        auto *blink = shell.mask->findChild<CursorBlink *>();
        QVERIFY(blink->isBlinking());
        shell.other->setFocus();
        QVERIFY(!blink->isBlinking());
        QVERIFY(blink->isShown());
        shell.mask->refocus();
        QVERIFY(blink->isBlinking());
        shell.host.hide();
        QVERIFY(!blink->isBlinking());

        MaskScene steady(StyleID::gameboy);
        QVERIFY(steady.ready());
        QVERIFY(!steady.mask->findChild<CursorBlink *>()->isBlinking());
    }
};

QTEST_MAIN(EditorsTest)
#include "editors_test.moc"

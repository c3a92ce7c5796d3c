// The time mask against a real widget in an active window: its key table, clicks, refocusing,
// the blink rule and the invalid colours.
#include "cursorblink.h"
#include "editmask.h"
#include "maskkeycatcher.h"
#include "modelfixture.h"
#include "terminalcursor.h"
#include "theme.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QtTest>

using namespace tock;

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

struct Key {
    Qt::Key key;
    Qt::KeyboardModifiers mods = Qt::NoModifier;
};

Key parseKey(const QString &word)
{
    static const QHash<QString, Key> named{
        {"Ret", {Qt::Key_Return}},       {"Enter", {Qt::Key_Enter, Qt::KeypadModifier}},
        {"Esc", {Qt::Key_Escape}},       {"Tab", {Qt::Key_Tab}},
        {"S-Tab", {Qt::Key_Backtab, Qt::ShiftModifier}},
        {"ShiftTab", {Qt::Key_Tab, Qt::ShiftModifier}},
        {"Left", {Qt::Key_Left}},        {"Right", {Qt::Key_Right}},
        {"Up", {Qt::Key_Up}},            {"Down", {Qt::Key_Down}},
        {"BS", {Qt::Key_Backspace}},     {"Del", {Qt::Key_Delete}},
        {"Home", {Qt::Key_Home}},        {"C-z", {Qt::Key_Z, Qt::ControlModifier}},
        {"C-k", {Qt::Key_K, Qt::ControlModifier}},
    };
    return named.value(word, {Qt::Key_unknown});
}

void press(const QString &word)
{
    const Key k = parseKey(word);
    if (k.key != Qt::Key_unknown)
        QTest::keyClick(static_cast<QWidget *>(nullptr), k.key, k.mods);
    else
        QTest::keyClick(static_cast<QWidget *>(nullptr), word.at(0).toLatin1());
}

QString texts(const AppModel &m)
{
    if (!m.draft())
        return QStringLiteral("closed");
    const TimeEditDraft &d = *m.draft();
    return d.texts[0] + '|' + d.texts[1] + '|' + d.texts[2];
}

} // namespace

class EditMaskTest : public QObject {
    Q_OBJECT

private:
    struct Scene {
        ModelFixture f{WithStore::no, {"A", "B"}};
        Host host;
        EditMask *mask = nullptr;
        QLineEdit *other = nullptr;
        QSignalSpy *beeps = nullptr;

        explicit Scene(StyleID style = StyleID::classic)
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
        ~Scene() { delete beeps; }
        bool ready() { return QTest::qWaitForWindowActive(&host) && QTest::qWaitFor([this] { return keys(); }); }
        bool keys() const { return mask->keyCatcher()->hasFocus(); }
    };

private Q_SLOTS:
    void keyTable_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("texts");   // the draft afterwards, or "closed"
        QTest::addColumn<int>("field");       // the cursor's field afterwards
        QTest::addColumn<double>("seconds");  // the timer afterwards
        QTest::addColumn<int>("beeps");
        QTest::addColumn<int>("passed");      // keys that travelled on to the window
        QTest::addColumn<int>("undos");       // the window's Ctrl+Z shortcut fired

        // Typing, auto-advance and separators.
        QTest::newRow("digits fill and advance") << "1 2 3 4 5" << "123|45|05" << 2 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("separator moves on") << "7 : 3" << "7|3|05" << 1 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("separator after advance") << "1 2 3 : 9" << "123|9|05" << 1 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("dot and space separate") << ". . 4" << "01|02|4" << 2 << 3725.0 << 0 << 0 << 0;
        // Commit and cancel.
        QTest::newRow("return commits") << "7 : 3 Ret" << "closed" << 1 << 25385.0 << 0 << 0 << 0;
        QTest::newRow("keypad enter commits") << "5 Enter" << "closed" << 0 << 18125.0 << 0 << 0 << 0;
        QTest::newRow("closed mask lets keys pass") << "5 Ret 7" << "closed" << 0 << 18125.0 << 0 << 1 << 0;
        QTest::newRow("escape cancels") << "9 9 Esc" << "closed" << 0 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("invalid entry stays open") << "Tab 7 5 Ret" << "01|75|05" << 2 << 3725.0 << 0 << 0 << 0;
        // Moving, without wrapping either way.
        QTest::newRow("tab stops at seconds") << "Tab Tab Tab 9" << "01|02|9" << 2 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("right stops at seconds") << "Right Right Right" << "01|02|05" << 2 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("backtab stops at hours") << "S-Tab Left 4" << "4|02|05" << 0 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("shift tab goes back") << "Tab Tab ShiftTab 8" << "01|8|05" << 1 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("right then left") << "Right Left 4" << "4|02|05" << 0 << 3725.0 << 0 << 0 << 0;
        // Stepping wraps within a field only.
        QTest::newRow("up steps") << "Up Up Right Down" << "03|01|05" << 1 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("down wraps hours") << "Down Down" << "999|02|05" << 0 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("stepped field is fresh") << "Up 7" << "7|02|05" << 0 << 3725.0 << 0 << 0 << 0;
        // Both delete keys delete backwards, ahead of a window's Backspace shortcut.
        QTest::newRow("backspace clears fresh") << "BS" << "|02|05" << 0 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("delete deletes backwards") << "Tab 4 Del" << "01||05" << 1 << 3725.0 << 0 << 0 << 0;
        QTest::newRow("backspace after typing") << "1 2 BS" << "1|02|05" << 0 << 3725.0 << 0 << 0 << 0;
        // Refused characters beep and are still consumed; keys without text travel on.
        QTest::newRow("letter beeps") << "x" << "01|02|05" << 0 << 3725.0 << 1 << 0 << 0;
        QTest::newRow("home passes") << "Home" << "01|02|05" << 0 << 3725.0 << 0 << 1 << 0;
        // Command chords belong to the menus.
        QTest::newRow("ctrl z is the window's") << "C-z" << "01|02|05" << 0 << 3725.0 << 0 << 0 << 1;
        QTest::newRow("other chord passes") << "1 C-k" << "1|02|05" << 0 << 3725.0 << 0 << 1 << 0;
    }

    void keyTable()
    {
        QFETCH(QString, keys);
        QFETCH(QString, texts);
        QFETCH(int, field);
        QFETCH(double, seconds);
        QFETCH(int, beeps);
        QFETCH(int, passed);
        QFETCH(int, undos);

        Scene s;
        QVERIFY(s.ready());
        for (const QString &word : keys.split(' '))
            press(word);
        QCOMPARE(::texts(s.f.m()), texts);
        QCOMPARE(int(s.mask->maskCursor().field), field);
        QCOMPARE(s.f.elapsed(0), seconds);
        QCOMPARE(s.beeps->count(), beeps);
        QCOMPARE(s.host.passed, passed);
        QCOMPARE(s.host.undos, undos);
        QCOMPARE(s.host.erases, 0);
    }

    void clickMovesCursor()
    {
        Scene s;
        QVERIFY(s.ready());
        s.other->setFocus();
        const QSize size = s.mask->size();
        QTest::mouseClick(s.mask, Qt::LeftButton, {}, QPoint(size.width() - 8, size.height() / 2));
        QCOMPARE(s.mask->maskCursor(), MaskCursor(TimeField::seconds, true));
        QVERIFY(s.keys()); // the click also brings the keys back
        press("7");
        QCOMPARE(texts(s.f.m()), QStringLiteral("01|02|7"));
    }

    void newEditTakesKeysBack()
    {
        Scene s;
        QVERIFY(s.ready());
        press("Tab");
        s.other->setFocus();
        QVERIFY(!s.keys());
        s.f.m().beginEdit(s.f.id(1));
        QVERIFY(s.keys());
        QCOMPARE(s.mask->maskCursor(), MaskCursor()); // a new edit starts on the hours
    }

    void blinksOnlyWhenItShould()
    {
        Scene shell(StyleID::shell);
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

        Scene steady(StyleID::gameboy);
        QVERIFY(steady.ready());
        QVERIFY(!steady.mask->findChild<CursorBlink *>()->isBlinking());
    }

    void invalidFieldUsesInvalidColours()
    {
        const Theme &theme = Theme::classic();
        Scene s;
        TimeEditDraft draft = *s.f.m().draft();
        draft.set(TimeField::minutes, QStringLiteral("75"));
        s.f.m().setDraft(draft);
        QImage image(s.mask->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        s.mask->render(&image);
        // Just inside each box's left edge, below the border, beside the digits.
        const qreal colon = s.mask->sizeHint().width()
                            - DigitField::size(theme, TimeField::hours).width()
                            - 2 * DigitField::size(theme, TimeField::minutes).width() - theme.shadowOffset;
        const int y = int(DigitField::size(theme, TimeField::hours).height() / 2);
        const int inset = int(theme.fieldBorderWidth) + 2;
        const int hoursX = inset;
        const int minutesX = int(DigitField::size(theme, TimeField::hours).width() + colon / 2) + inset;
        QCOMPARE(image.pixelColor(hoursX, y), theme.fieldFill);
        QCOMPARE(image.pixelColor(minutesX, y), theme.invalidFill);
    }

    void blockCaretHollowWhenInactive_data()
    {
        QTest::addColumn<bool>("active");
        QTest::newRow("active window: solid") << true;
        QTest::newRow("inactive window: outline") << false;
    }

    void blockCaretHollowWhenInactive()
    {
        QFETCH(bool, active);
        // Drawn at twice the size, as on a high-density screen.
        QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(2);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        const QRectF cell(QPointF(2, 2), CursorCharacter::cellSize);
        TerminalCursor::paint(painter, cell, Qt::red, active);
        painter.end();
        // The outline lies inside the cell: nothing outside it, its edge pixels coloured.
        QCOMPARE(image.pixelColor(2, 2), QColor(Qt::transparent));
        QCOMPARE(image.pixelColor(5, 5), QColor(Qt::red));
        QCOMPARE(image.pixelColor(5, 35), QColor(Qt::red));
        QCOMPARE(image.pixelColor(12, 18), active ? QColor(Qt::red) : QColor(Qt::transparent));
    }
};

QTEST_MAIN(EditMaskTest)
#include "editmask_test.moc"

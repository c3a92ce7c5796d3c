// The prompt's key table, and the window's routing of keys between the prompt, the editors, the
// rows and the shortcuts, against a real active window.
#include "modelfixture.h"
#include "shellkeys.h"
#include "text.h"

#include <QAction>
#include <QLineEdit>
#include <QtTest>

using namespace tock;

namespace {

#ifdef Q_OS_MACOS
constexpr Qt::KeyboardModifier promptControl = Qt::MetaModifier;
#else
constexpr Qt::KeyboardModifier promptControl = Qt::ControlModifier;
#endif

struct Press {
    int key = 0;
    Qt::KeyboardModifiers mods;
    QString text;
};

// "C-" is the prompt's Control, "M-" the menus' key, "A-" Option/Alt, "S-" Shift; then a named
// key or the characters typed.
Press parsePress(QString word)
{
    Press p;
    for (;;) {
        if (word.startsWith("C-"))
            p.mods |= promptControl;
        else if (word.startsWith("M-"))
            p.mods |= Qt::ControlModifier;
        else if (word.startsWith("A-"))
            p.mods |= Qt::AltModifier;
        else if (word.startsWith("S-"))
            p.mods |= Qt::ShiftModifier;
        else
            break;
        word = word.mid(2);
    }
    static const QHash<QString, std::pair<int, QString>> named{
        {"Ret", {Qt::Key_Return, "\r"}}, {"Enter", {Qt::Key_Enter, "\r"}}, {"Tab", {Qt::Key_Tab, "\t"}},
        {"BS", {Qt::Key_Backspace, "\b"}}, {"Del", {Qt::Key_Delete, "\x7f"}}, {"Esc", {Qt::Key_Escape, "\x1b"}},
        {"Home", {Qt::Key_Home, ""}},     {"End", {Qt::Key_End, ""}},     {"Left", {Qt::Key_Left, ""}},
        {"Right", {Qt::Key_Right, ""}},   {"Up", {Qt::Key_Up, ""}},       {"Down", {Qt::Key_Down, ""}},
        {"F1", {Qt::Key_F1, QString(QChar(0xF704))}}, {"Ctl", {Qt::Key_unknown, "\x01"}},
    };
    if (named.contains(word)) {
        p.key = named.value(word).first;
        p.text = named.value(word).second;
        if (word == "Enter")
            p.mods |= Qt::KeypadModifier;
    } else {
        p.key = word.size() == 1 && word.at(0).isLetter() ? Qt::Key_A + (word.at(0).toUpper().unicode() - 'A')
                                                            : Qt::Key_unknown;
        // A chord's characters are control characters or none; plain keys type themselves.
        p.text = p.mods & (Qt::ControlModifier | Qt::MetaModifier) ? QString() : word;
    }
    return p;
}

} // namespace

class ShellKeysTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void table_data()
    {
        QTest::addColumn<QString>("line");   // the prompt before, '|' marks the caret
        QTest::addColumn<bool>("output");    // a command ran before (so output and history exist)
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("after");  // the prompt after, '|' marks the caret
        QTest::addColumn<bool>("outputAfter");
        QTest::addColumn<bool>("consumed");

        QTest::newRow("C-c clears the line") << "a|b" << true << "C-c" << "|" << true << true;
        QTest::newRow("C-u clears the line") << "ab|" << false << "C-u" << "|" << false << true;
        QTest::newRow("C-l clears the output") << "a|b" << true << "C-l" << "a|b" << false << true;
        QTest::newRow("C-a to the start") << "ab|" << false << "C-a" << "|ab" << false << true;
        QTest::newRow("C-e to the end") << "|ab" << false << "C-e" << "ab|" << false << true;
        QTest::newRow("shift keeps a chord") << "ab|" << false << "S-C-a" << "|ab" << false << true;
        QTest::newRow("other chord passes") << "ab|" << false << "C-z" << "ab|" << false << false;
        QTest::newRow("chord with alt passes") << "ab|" << false << "A-C-a" << "ab|" << false << false;
        QTest::newRow("paste inserts one line") << "a|b" << false << "M-v" << "ax y|b" << false << true;
        QTest::newRow("alt key passes") << "ab|" << false << "A-x" << "ab|" << false << false;
        QTest::newRow("return runs") << "help|" << false << "Ret" << "|" << true << true;
        QTest::newRow("keypad enter runs") << "help|" << false << "Enter" << "|" << true << true;
        QTest::newRow("return on empty passes") << "|" << true << "Ret" << "|" << true << false;
        QTest::newRow("tab without completion") << "zzz|" << false << "Tab" << "zzz|" << false << true;
        QTest::newRow("tab completes") << "hel|" << false << "Tab" << "help |" << false << true;
        QTest::newRow("backspace") << "ab|" << false << "BS" << "a|" << false << true;
        QTest::newRow("backspace at start") << "|ab" << false << "BS" << "|ab" << false << true;
        QTest::newRow("backspace on empty passes") << "|" << false << "BS" << "|" << false << false;
        QTest::newRow("delete forward") << "|ab" << false << "Del" << "|b" << false << true;
        QTest::newRow("delete on empty passes") << "|" << false << "Del" << "|" << false << false;
        QTest::newRow("escape clears the line first") << "a|b" << true << "Esc" << "|" << true << true;
        QTest::newRow("escape then the output") << "|" << true << "Esc" << "|" << false << true;
        QTest::newRow("escape with nothing passes") << "|" << false << "Esc" << "|" << false << false;
        QTest::newRow("home") << "ab|" << false << "Home" << "|ab" << false << true;
        QTest::newRow("end") << "|ab" << false << "End" << "ab|" << false << true;
        QTest::newRow("left") << "ab|" << false << "Left" << "a|b" << false << true;
        QTest::newRow("left stops at 0") << "|ab" << false << "Left" << "|ab" << false << true;
        QTest::newRow("right") << "|ab" << false << "Right" << "a|b" << false << true;
        QTest::newRow("up recalls") << "|" << true << "Up" << "help|" << true << true;
        QTest::newRow("up then down") << "x|" << true << "Up Down" << "x|" << true << true;
        QTest::newRow("typing inserts at the caret") << "a|b" << false << "x" << "ax|b" << false << true;
        QTest::newRow("shifted letter") << "|" << false << "S-Q" << "Q|" << false << true;
        QTest::newRow("accented letter") << "|" << false << "é" << "é|" << false << true;
        QTest::newRow("function key passes") << "|" << false << "F1" << "|" << false << false;
        QTest::newRow("control character passes") << "|" << false << "Ctl" << "|" << false << false;
    }

    void table()
    {
        QFETCH(QString, line);
        QFETCH(bool, output);
        QFETCH(QString, key);
        QFETCH(QString, after);
        QFETCH(bool, outputAfter);
        QFETCH(bool, consumed);

        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        if (output)
            f.shell("help");
        const qsizetype bar = line.indexOf('|');
        m.shell().setPrompt(line.left(bar) + line.mid(bar + 1), Text::graphemeCount(line.left(bar)));
        const ClipboardText clipboard = [] { return QStringLiteral("x\ny\r"); };

        bool took = false;
        for (const QString &word : key.split(' ')) {
            const Press p = parsePress(word);
            const QKeyEvent event(QEvent::KeyPress, p.key, p.mods, p.text);
            took = handleShellKey(m, event, clipboard);
        }
        const QStringList graphemes = Text::graphemes(m.shell().promptText());
        const QString shown = graphemes.mid(0, m.shell().promptCaret()).join("") + '|' + graphemes.mid(m.shell().promptCaret()).join("");
        QCOMPARE(shown, after);
        QCOMPARE(!m.shell().shellOutput().isEmpty(), outputAfter);
        QCOMPARE(took, consumed);
    }

    // Who gets a key in a real window: the prompt, an editor, the rows or a shortcut.
    void routing_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<QString>("setup"); // hover, mask, field or nothing
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<int>("timers");
        QTest::addColumn<QString>("shortcuts"); // the window's shortcuts that fired

        QTest::newRow("prompt style types") << "shell" << "" << "a b" << "ab" << 3 << "";
        QTest::newRow("other styles do not") << "classic" << "" << "a b" << "" << 3 << "";
        QTest::newRow("prompt's C-a beats Select All") << "shell" << "" << "a C-a" << "a" << 3 << "";
        QTest::newRow("Select All elsewhere") << "classic" << "" << "C-a" << "" << 3 << "select";
        QTest::newRow("menu chord passes the prompt") << "shell" << "" << "a C-n" << "a" << 3 << "add";
        QTest::newRow("backspace edits a typed line") << "shell" << "hover" << "a BS" << "" << 3 << "";
        QTest::newRow("backspace on empty prompt deletes") << "shell" << "hover" << "BS" << "" << 2 << "";
        QTest::newRow("backspace deletes in any style") << "classic" << "hover" << "BS" << "" << 2 << "";
        QTest::newRow("backspace without a row does nothing") << "classic" << "" << "BS" << "" << 3 << "";
        QTest::newRow("open mask keeps the keys") << "shell" << "mask" << "a BS" << "" << 3 << "";
        QTest::newRow("name field keeps the keys") << "shell" << "field" << "a C-a BS" << "" << 3 << "";
    }

    void routing()
    {
        QFETCH(QString, style);
        QFETCH(QString, setup);
        QFETCH(QString, keys);
        QFETCH(QString, prompt);
        QFETCH(int, timers);
        QFETCH(QString, shortcuts);

        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        m.setStyle(style == "shell" ? StyleID::shell : StyleID::classic);
        QWidget window;
        window.resize(200, 100);
        auto *field = new QLineEdit(&window);
        field->setVisible(setup == "field");
        QStringList fired;
        const auto shortcut = [&](QKeySequence sequence, QString name) {
            auto *a = new QAction(&window);
            a->setShortcut(sequence);
            connect(a, &QAction::triggered, &window, [&fired, name] { fired << name; });
            window.addAction(a);
        };
        shortcut(QKeySequence(Qt::CTRL | Qt::Key_A), "select");
        shortcut(QKeySequence(Qt::CTRL | Qt::Key_N), "add");
        new KeyRouter(&m, &window, [] { return QString(); });
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        if (setup == "hover")
            m.setHoveredID(f.id(1));
        if (setup == "mask")
            m.beginEdit(f.id(1));
        if (setup == "field")
            field->setFocus();

        for (const QString &word : keys.split(' ')) {
            const Press p = parsePress(word);
            QWidget *target = QApplication::focusWidget() ? QApplication::focusWidget() : &window;
            QTest::keyClick(target, Qt::Key(p.key), p.mods);
        }
        QCOMPARE(m.shell().promptText(), prompt);
        f.advance(1); // a deletion finishes after its short animation
        QCOMPARE(f.count(), qsizetype(timers));
        QCOMPARE(fired.join(' '), shortcuts);
        if (setup == "field")
            QCOMPARE(field->text(), QString());
    }
};

QTEST_MAIN(ShellKeysTest)
#include "shellkeys_test.moc"

// The prompt's key table, and the window's routing of keys between the prompt, the editors, the
// rows and the shortcuts, against a real active window.
#include "modelfixture.h"
#include "keys.h"
#include "keyrouter.h"
#include "table.h"
#include "text.h"

#include <QAction>
#include <QLineEdit>
#include <QtTest>

using namespace tock;
using namespace tock::testing;

class ShellKeysTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The prompt before ('|' marks the caret), whether a command ran before (so output and
    // history exist), the keys, the prompt after, whether output is left, and whether the last
    // key was taken. One row per key and outcome; what the editing does to the line is
    // shellsession_test's.
    void promptKeys_data()
    {
        table<QString, QString, bool, QString, QString, bool, bool>(
            {"case", "line", "output", "key", "after", "outputAfter", "consumed"}, {
            {"C-c clears the line", "a|b", true, "C-c", "|", true, true},
            {"C-u clears the line", "ab|", false, "C-u", "|", false, true},
            {"C-l clears the output", "a|b", true, "C-l", "a|b", false, true},
            {"C-a to the start", "ab|", false, "C-a", "|ab", false, true},
            {"C-e to the end", "|ab", false, "C-e", "ab|", false, true},
            {"shift keeps a chord", "ab|", false, "S-C-a", "|ab", false, true},
            {"other chord passes", "ab|", false, "C-z", "ab|", false, false},
            {"chord with alt passes", "ab|", false, "A-C-a", "ab|", false, false},
            {"paste inserts one line", "a|b", false, "M-v", "ax y|b", false, true},
            {"alt key passes", "ab|", false, "A-x", "ab|", false, false},
            {"return runs", "help|", false, "Ret", "|", true, true},
            {"keypad enter runs", "help|", false, "Enter", "|", true, true},
            {"return on empty passes", "|", true, "Ret", "|", true, false},
            {"tab without completion", "zzz|", false, "Tab", "zzz|", false, true},
            {"tab completes", "hel|", false, "Tab", "help |", false, true},
            {"backspace", "ab|", false, "BS", "a|", false, true},
            {"backspace at start keeps the key", "|ab", false, "BS", "|ab", false, true},
            {"backspace on empty passes", "|", false, "BS", "|", false, false},
            {"delete forward", "|ab", false, "Del", "|b", false, true},
            {"delete on empty passes", "|", false, "Del", "|", false, false},
            {"escape clears the line first", "a|b", true, "Esc", "|", true, true},
            {"escape then the output", "|", true, "Esc", "|", false, true},
            {"escape with nothing passes", "|", false, "Esc", "|", false, false},
            {"home", "ab|", false, "Home", "|ab", false, true},
            {"end", "|ab", false, "End", "ab|", false, true},
            {"left", "ab|", false, "Left", "a|b", false, true},
            {"right", "|ab", false, "Right", "a|b", false, true},
            {"up recalls", "|", true, "Up", "help|", true, true},
            {"typing inserts at the caret", "a|b", false, "x", "ax|b", false, true},
            {"function key passes", "|", false, "F1", "|", false, false},
            {"control character passes", "|", false, "Ctl", "|", false, false},
        });
    }

    void promptKeys()
    {
        QFETCH(QString, line);
        QFETCH(bool, output);
        QFETCH(QString, key);

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
        QTEST(shown, "after");
        QTEST(!m.shell().shellOutput().isEmpty(), "outputAfter");
        QTEST(took, "consumed");
    }

    // Who gets a key in a real window: the prompt, an editor, the rows or a shortcut. The setup
    // is hover, mask, field or nothing; then the prompt, the timers and the shortcuts that fired.
    void routing_data()
    {
        table<QString, QString, QString, QString, QString, int, QString>(
            {"case", "style", "setup", "keys", "prompt", "timers", "shortcuts"}, {
            {"prompt style types", "shell", "", "a b", "ab", 3, ""},
            {"other styles do not", "classic", "", "a b", "", 3, ""},
            {"prompt's C-a beats Select All", "shell", "", "a C-a", "a", 3, ""},
            {"Select All elsewhere", "classic", "", "C-a", "", 3, "select"},
            {"menu chord passes the prompt", "shell", "", "a C-n", "a", 3, "add"},
            {"backspace edits a typed line", "shell", "hover", "a BS", "", 3, ""},
            {"backspace on empty prompt deletes", "shell", "hover", "BS", "", 2, ""},
            {"backspace deletes in any style", "classic", "hover", "BS", "", 2, ""},
            {"backspace without a row does nothing", "classic", "", "BS", "", 3, ""},
            {"open mask keeps the keys", "shell", "mask", "a BS", "", 3, ""},
            {"name field keeps the keys", "shell", "field", "a C-a BS", "", 3, ""},
        });
    }

    void routing()
    {
        QFETCH(QString, style);
        QFETCH(QString, setup);
        QFETCH(QString, keys);

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

        typeKeys(keys, &window);
        QTEST(m.shell().promptText(), "prompt");
        f.advance(1); // a deletion finishes after its short animation
        QTEST(int(f.count()), "timers");
        QTEST(fired.join(' '), "shortcuts");
        if (setup == "field")
            QCOMPARE(field->text(), QString());
    }
};

QTEST_MAIN(ShellKeysTest)
#include "shellkeys_test.moc"

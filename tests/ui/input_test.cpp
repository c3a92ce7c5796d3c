// Input against real widgets on a model in virtual time: the prompt's key table and the routing
// of keys between the prompt, the editors, the rows and the shortcuts; scroll sequences, with and
// without phases, turned into swipes; and mouse drags on the rows of a real window: up and down
// reorder (the others making room while dragging), left swipes, a press elsewhere closes the
// reveal, and a plain click on a name still renames.
#include "gesturerouter.h"
#include "keyrouter.h"
#include "keys.h"
#include "modelfixture.h"
#include "namefield.h"
#include "rootview.h"
#include "rowdragger.h"
#include "rowlist.h"
#include "table.h"
#include "text.h"
#include "timerrow.h"
#include "tockwindow.h"

#include <QAction>
#include <QLineEdit>
#include <QtTest>

using namespace tock;
using namespace tock::testing;

namespace {

using Phase = GestureRouter::Phase;

} // namespace

class InputTest : public QObject {
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
            {"C-l clears the output", "a|b", true, "C-l", "a|b", false, true},
            {"C-a to the start", "ab|", false, "C-a", "|ab", false, true},
            {"C-e to the end", "|ab", false, "C-e", "ab|", false, true},
            {"shift keeps a chord", "ab|", false, "S-C-a", "|ab", false, true},
            {"other chord passes", "ab|", false, "C-z", "ab|", false, false},
            {"chord with alt passes", "ab|", false, "A-C-a", "ab|", false, false},
            {"paste inserts one line", "a|b", false, "M-v", "ax y|b", false, true},
            {"alt key passes", "ab|", false, "A-x", "ab|", false, false},
            {"return runs", "help|", false, "Ret", "|", true, true},
            {"return on empty passes", "|", true, "Ret", "|", true, false},
            {"tab completes", "hel|", false, "Tab", "help |", false, true},
            {"backspace", "ab|", false, "BS", "a|", false, true},
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
            {"other styles do not", "classic", "", "a b", "", 3, ""},
            {"prompt's C-a beats Select All", "shell", "", "a C-a", "a", 3, ""},
            {"Select All elsewhere", "classic", "", "C-a", "", 3, "select"},
            {"menu chord passes the prompt", "shell", "", "a C-n", "a", 3, "add"},
            {"backspace edits a typed line", "shell", "hover", "a BS", "", 3, ""},
            {"backspace on empty prompt deletes", "shell", "hover", "BS", "", 2, ""},
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

    void sequences_data()
    {
        // Setup: "hover N" or "reveal N" (then nothing hovered). Events: b began, u:x,y changed,
        // n:x,y changed with natural scrolling, e ended, m:x,y momentum, w:x,y phaseless, gap =
        // the phaseless burst timed out. Then the scrolls swallowed, the timers left and the
        // revealed row (-1: none).
        table<QString, QString, QString, int, int, int>({"case", "setup", "events", "swallowed", "timers", "revealed"}, {
            // A 300-point row at zoom 1: past -36 reveals, past -150 deletes (the thresholds
            // themselves are appmodel_test's).
            {"reveal", "hover 0", "b u:20,0 u:30,0 e", 3, 3, 0},
            {"past half deletes", "hover 1", "b u:100,0 u:60,0 e", 3, 2, -1},
            {"rightwards never moves", "hover 0", "b u:-80,0 e", 2, 3, -1},
            {"natural scrolling", "hover 0", "b n:-50,0 e", 2, 3, 0},
            {"diagonal at the ratio is vertical", "hover 0", "b u:6,5 u:60,0 e", 0, 3, -1},
            {"just wider is horizontal", "hover 0", "b u:6.1,5 u:60,0 e", 3, 3, 0},
            {"small moves wait for an axis", "hover 0", "b u:2,0 u:2,0 u:40,0 e", 2, 3, 0},
            {"nothing hovered, nothing swiped", "", "b u:80,0 e", 0, 3, -1},
            {"revealed row is the target", "reveal 2", "b u:100,0 e", 2, 2, -1},
            {"momentum after a swipe is swallowed", "hover 0", "b u:50,0 e m:300,0 m:300,0 e", 5, 3, 0},
            {"momentum after a scroll passes", "hover 0", "b u:0,50 e m:0,30 e", 0, 3, -1},
            {"coasting ends the swipe", "hover 0", "b u:50,0 u:0,0 m:300,0 e", 4, 3, 0},
            {"burst reveals", "hover 0", "w:60,0 gap", 1, 3, 0},
            {"second burst goes on from the reveal", "hover 0", "w:40,0 gap w:70,0 gap", 2, 2, -1},
            {"each burst decides its axis", "hover 0", "w:0,30 gap w:50,0 gap", 1, 3, 0},
        });
    }

    void sequences()
    {
        QFETCH(QString, setup);
        QFETCH(QString, events);
        QFETCH(int, revealed);

        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        const QStringList words = setup.split(' ');
        if (words.first() == "reveal") {
            f.swipeRow(words.at(1).toInt(), -50);
            QCOMPARE(m.revealedID(), f.id(words.at(1).toInt()));
        }
        if (words.first() == "hover")
            m.setHoveredID(f.id(words.at(1).toInt()));
        const QList<QUuid> ids = {f.id(0), f.id(1), f.id(2)};

        GestureRouter router(&m);
        router.setRowWidth([] { return 300.0; });
        int took = 0;
        for (const QString &word : events.split(' ')) {
            if (word == "gap") {
                router.endBurst();
                continue;
            }
            GestureRouter::Scroll s;
            const QStringList xy = word.mid(2).split(',');
            if (xy.size() == 2)
                s.delta = QPointF(xy.at(0).toDouble(), xy.at(1).toDouble());
            const QChar kind = word.at(0);
            s.phase = kind == 'b' ? Phase::began
                    : kind == 'e' ? Phase::ended
                    : kind == 'm' ? Phase::momentum
                    : kind == 'w' ? Phase::none
                                  : Phase::changed;
            s.inverted = kind == 'n';
            took += router.handleScroll(s) ? 1 : 0;
        }
        f.advance(1); // the slide-out before a deletion
        QTEST(took, "swallowed");
        QTEST(int(f.count()), "timers");
        QCOMPARE(m.revealedID(), revealed < 0 ? std::optional<QUuid>() : std::optional<QUuid>(ids.at(revealed)));
        QVERIFY(!m.swipeID());
    }

    void drags_data()
    {
        // The row pressed; the moves after the press ("dx,dy", x in points, y in rows); "reveal N"
        // or "name" (press on the name) first; the board afterwards; the revealed row; whether a
        // rename is open; where rows stood while dragging ("B:0": B where row 0 stood).
        table<QString, int, QString, QString, QString, int, bool, QString>(
            {"case", "row", "path", "setup", "names", "revealed", "renaming", "room"}, {
            {"down two places", 0, "0,0.5 0,1.2 0,2", "", "B C A", -1, false, "B:0 C:1"},
            {"up two places", 2, "0,-1 0,-2", "", "C A B", -1, false, "A:1 B:2"},
            {"past the end stops last", 0, "0,6", "", "B C A", -1, false, ""},
            {"a short drag stays", 1, "0,0.3", "", "A B C", -1, false, ""},
            {"left reveals", 1, "-20,0 -60,0", "", "A B C", 1, false, ""},
            {"far left deletes", 1, "-60,0 -250,0", "", "A C", -1, false, ""},
            {"right does nothing", 1, "60,0", "", "A B C", -1, false, ""},
            {"press elsewhere closes the reveal", 2, "", "reveal 0", "A B C", -1, false, ""},
            {"press on the revealed row keeps it", 0, "", "reveal 0", "A B C", 0, true, ""},
            {"drag from a name does not rename", 0, "0,1", "name", "B A C", -1, false, "B:0 C:2"},
            {"click on a name renames", 0, "", "name", "A B C", -1, true, ""},
        });
    }

    void drags()
    {
        QFETCH(int, row);
        QFETCH(QString, path);
        QFETCH(QString, setup);
        QFETCH(QString, names);
        QFETCH(int, revealed);
        QFETCH(QString, room);

        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        TockWindow window(&m, [] {});
        RowList *list = window.rootView()->rowList();
        RowDragger dragger(&m, list, [] { return 300.0; });
        dragger.attach(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        if (setup.startsWith("reveal")) {
            f.swipeRow(setup.section(' ', 1).toInt(), -50);
            QVERIFY(m.revealedID());
        }

        TimerRow *target = list->row(f.id(row));
        QWidget *grip = setup == "name" ? static_cast<QWidget *>(target->nameField()) : target;
        const QPoint start = grip->mapTo(&window, QPoint(8, grip->height() / 2));
        const Theme &t = Theme::of(m.style());
        const double pitch = (t.rowHeight + t.rowSpacing) * m.zoom();
        QWindow *handle = window.windowHandle();
        const auto send = [&](QEvent::Type type, QPointF at, Qt::MouseButtons held) {
            QMouseEvent e(type, at, at, window.mapToGlobal(at), Qt::LeftButton, held, Qt::NoModifier);
            QCoreApplication::sendEvent(handle, &e);
        };
        QList<int> ys;
        for (TimerRow *r : list->rows())
            ys << r->y();
        send(QEvent::MouseButtonPress, start, Qt::LeftButton);
        QPointF at = start;
        for (const QString &step : path.split(' ', Qt::SkipEmptyParts)) {
            at = QPointF(start) + QPointF(step.section(',', 0, 0).toDouble(), step.section(',', 1).toDouble() * pitch);
            send(QEvent::MouseMove, at, Qt::LeftButton);
        }
        // While a row is carried, the rows it passed already sit one place nearer its old one.
        for (const QString &pair : room.split(' ', Qt::SkipEmptyParts)) {
            const int index = QStringList{"A", "B", "C"}.indexOf(pair.section(':', 0, 0));
            QCOMPARE(list->row(f.id(index))->y(), ys.at(pair.section(':', 1).toInt()));
        }
        send(QEvent::MouseButtonRelease, at, Qt::NoButton);
        f.advance(1);

        QCOMPARE(f.names().join(' '), names);
        QCOMPARE(m.revealedID(), revealed < 0 ? std::optional<QUuid>() : std::optional<QUuid>(f.id(revealed)));
        NameField *name = list->row(f.id(0)) ? list->row(f.id(0))->nameField() : nullptr;
        QTEST(name && name->isEditing(), "renaming");
        if (names == "A C") {
            m.undoManager().undo();
            QCOMPARE(f.names().join(' '), QString("A B C"));
        }
    }
};

QTEST_MAIN(InputTest)
#include "input_test.moc"

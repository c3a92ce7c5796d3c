// The model's actions and interface state: the edit mask around commits, swipes, zoom,
// settings, names and the undo toast. Everything runs in virtual time.
#include "boardchangetext.h"
#include "modelfixture.h"
#include "table.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <vector>

using namespace tock;

namespace {

// "h:m:s" as typed into the three fields of the mask.
TimeEditDraft draftOf(const QString &hms)
{
    const QStringList parts = hms.split(':');
    TimeEditDraft d(0);
    d.set(TimeField::hours, parts.at(0));
    d.set(TimeField::minutes, parts.at(1));
    d.set(TimeField::seconds, parts.at(2));
    return d;
}

} // namespace

class AppModelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void settingsAtStartAndStylePersisted()
    {
        ModelFixture f; // its construction has already dropped any older zoom
        Settings &s = *f.v.settings;
        s.setValue("zoom", 1.4);
        s.setValue("style", "amber");
        s.setValue("shellHistory", QStringList{"add", "ls"});
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().zoom(), 1.4);
        QCOMPARE(f.m().style(), StyleID::amber);
        QCOMPARE(ModelProbe::history(f.m()).entries(), (QStringList{"add", "ls"}));
        f.make(ModelFixture::board({"A"}), std::nullopt, StyleID::flap); // explicit wins
        QCOMPARE(f.m().style(), StyleID::flap);
        s.setValue("style", "no-such-style");
        s.setValue("zoom", -1);
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().style(), StyleID::classic);
        QCOMPARE(f.m().zoom(), AppModel::defaultZoom);
        s.remove("zoomDefaultV3"); // an older version's zoom is dropped, once
        s.setValue("zoom", 1.4);
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().zoom(), AppModel::defaultZoom);
        QCOMPARE(s.value("zoomDefaultV3"), std::optional<QVariant>(true));
        QVERIFY(!s.value("zoom"));

        f.m().setStyle(StyleID::braun); // the data file carries the style as well
        QCOMPARE(s.value("style"), std::optional<QVariant>("braun"));
        f.advance(0.3);
        QCOMPARE(f.saved()->style, std::optional<QString>("braun"));
    }

    // Each shell line on A, B, C (B at 60 s): what boardChanged said, one entry per signal.
    void boardChangeNamesTheRows_data()
    {
        table<QString, QStringList>({"line", "expected"}, {
            {"add D", {"+D@3"}},
            {"rename 2 X", {"~X"}},
            {"start all", {"~A ~B ~C"}},
            {"pause all", {}},
            {"reset 2", {"~B"}},
            {"rm 2", {"-B"}},
            {"rm all", {"-A", "-B", "-C"}},
            {"mv 1 3", {"A:0>2"}},
            {"set 1 5m", {"~A"}},
        });
    }

    void boardChangeNamesTheRows()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, expected);
        ModelFixture f(WithStore::yes, {"A", "B", "C"}, std::nullopt, {0, 60});
        QStringList seen;
        Board before = f.m().board();
        QObject::connect(&f.m(), &AppModel::boardChanged, [&](const BoardChange &change) {
            seen << describe(change, before, f.m().board());
            QCOMPARE(BoardChange::between(before, f.m().board()), change);
            before = f.m().board();
        });
        f.shell(line);
        QVERIFY2(!f.m().shell().shellOutputIsError(), qPrintable(f.m().shell().shellOutput().join(' ')));
        QCOMPARE(seen, expected);
        if (line.startsWith("rm") || line.startsWith("reset 2") || line.startsWith("set")) {
            seen.clear();
            f.shell("undo"); // what comes back is named too
            QCOMPARE(seen.size(), expected.size());
        }
    }

    void zoomSteps_data()
    {
        table<QString, double, double, double, double>({"case", "from", "in", "out", "large"}, {
            {"smallest", 0.7, 0.8, 0.7, 1.1},
            {"nearly on a step", 0.8005, 0.9, 0.7, 1.1},
            {"largest", 1.8, 1.8, 1.6, 0.8},
        });
    }
    void zoomSteps()
    {
        QFETCH(double, from);
        ModelFixture f;
        const std::pair<void (AppModel::*)(), const char *> commands[] = {
            {&AppModel::zoomIn, "in"}, {&AppModel::zoomOut, "out"}, {&AppModel::toggleLarge, "large"}};
        for (const auto &[command, column] : commands) {
            f.m().setZoom(from);
            (f.m().*command)();
            QTEST(f.m().zoom(), column);
        }
        f.m().zoomReset();
        QCOMPARE(f.m().zoom(), 0.8);
        QCOMPARE(f.v.settings->value("zoom"), std::optional<QVariant>(0.8));
    }

    void moveTimer_data()
    {
        table<QString, int, int, QStringList>({"case", "from", "to", "expected"}, {
            {"down", 0, 2, {"B", "C", "A"}},
            {"up", 2, 0, {"C", "A", "B"}},
            {"beyond the end", 0, 99, {"B", "C", "A"}},
            {"negative", 2, -4, {"C", "A", "B"}},
            {"clamped to the same place", 2, 7, {"A", "B", "C"}},
        });
    }
    void moveTimer()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(QStringList, expected);
        ModelFixture f;
        f.m().moveTimer(f.id(from), to);
        QCOMPARE(f.names(), expected);
        const bool moved = expected != QStringList{"A", "B", "C"};
        QCOMPARE(f.undo.undoMenuItemTitle(), moved ? "Undo Move Timer" : "Undo");
        f.undo.undo();
        QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        f.undo.redo();
        QCOMPARE(f.names(), expected);
    }

    void unknownIdsDoNothing()
    {
        ModelFixture f;
        const Board before = f.m().board();
        const QUuid stranger = QUuid::createUuid();
        // Every signal of the model, to prove that none fired.
        std::vector<std::unique_ptr<QSignalSpy>> spies;
        const QMetaObject *meta = f.model->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            if (meta->method(i).methodType() == QMetaMethod::Signal)
                spies.push_back(std::make_unique<QSignalSpy>(f.model.get(), meta->method(i)));
        }
        f.m().toggle(stranger);
        f.m().reset(stranger);
        f.m().deleteTimer(stranger);
        f.m().rename(stranger, "X");
        f.m().moveTimer(stranger, 0);
        f.m().beginEdit(stranger);
        f.m().beginSwipe(stranger);
        QCOMPARE(f.m().board(), before);
        for (const auto &spy : spies)
            QVERIFY2(spy->isEmpty(), spy->signal().constData());
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    // What each way of leaving an open time edit on A does with a valid (1 min) or invalid entry.
    void editMaskAroundCommits_data()
    {
        // editing: the row whose edit is open, -1 for none
        // elapsed: of A
        table<QString, QString, QString, int, int, double, int>({"case", "draft", "action", "editing", "beeps", "elapsed", "count"}, {
            {"add timer, valid", "0:1:0", "add", -1, 0, 60.0, 4},
            {"other row, valid", "0:1:0", "other row", 1, 0, 60.0, 3},
            {"toggle, valid", "0:1:0", "toggle", -1, 0, 60.0, 3},
            {"toggle, invalid: still toggles", "0:88:0", "toggle", 0, 1, 0.0, 3},
            {"same row again keeps the entry", "0:88:0", "same row", 0, 0, 0.0, 3},
            {"reset discards", "0:99:0", "reset", -1, 0, 0.0, 3},
            {"delete discards", "0:99:0", "delete", -1, 0, 0.0, 2},
            {"delete key refused", "0:1:0", "delete hovered", 0, 0, 0.0, 3},
        });
    }
    void editMaskAroundCommits()
    {
        QFETCH(QString, draft);
        QFETCH(QString, action);
        QFETCH(int, editing);
        ModelFixture f;
        const QUuid a = f.id(0);
        f.m().setHoveredID(a);
        f.m().beginEdit(a);
        f.m().setDraft(draftOf(draft));
        if (action == "add")
            f.m().addTimer();
        else if (action == "other row")
            f.m().beginEdit(f.id(1));
        else if (action == "toggle")
            f.m().toggle(a);
        else if (action == "same row")
            f.m().beginEdit(a);
        else if (action == "reset")
            f.m().reset(a);
        else if (action == "delete")
            f.m().deleteTimer(a);
        else
            QVERIFY(!f.m().deleteHovered()); // the mask has the keys
        QCOMPARE(f.m().editingID(), editing < 0 ? std::nullopt : std::optional(f.id(editing)));
        if (editing == 0) {
            QCOMPARE(f.m().draft(), draftOf(draft));
            QVERIFY(!f.m().nameFocusID());
        }
        QTEST(f.beeps, "beeps");
        QTEST(int(f.m().board().timers.size()), "count");
        if (action != "delete")
            QTEST(f.m().board().timer(a)->elapsed(f.v.clock->now()), "elapsed");
        if (action == "toggle")
            QVERIFY(f.timer(0).isRunning());
    }

    void editStartsFromTheElapsedTimeAndKeepsItRunning()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(65.5);
        f.m().beginEdit(f.id(0));
        QCOMPARE(f.m().draft(), TimeEditDraft(65.5));
        f.m().setDraft(draftOf("0:0:7"));
        QVERIFY(f.m().commitEdit());
        QCOMPARE(f.elapsed(0), 7.0);
        QVERIFY(f.timer(0).isRunning());
        f.advance(0.3); // and saved after the debounce (the file keeps single precision)
        QVERIFY(qAbs(f.saved()->timers.at(0).seconds - 7.3) < 1e-4);
    }

    // The mask takes the keys from a name, and no name takes them while it is open (a new
    // timer's name taking them: editors_test newTimerTakesNameFocus).
    void theMaskKeepsTheKeysFromNames()
    {
        ModelFixture f;
        f.m().setNameFocusID(f.id(1));
        f.m().beginEdit(f.id(0));
        QVERIFY(!f.m().nameFocusID());
        f.m().setNameFocusID(f.id(1));
        QVERIFY(!f.m().nameFocusID());
        f.m().cancelEdit();
        f.m().setNameFocusID(f.id(1));
        QCOMPARE(f.m().nameFocusID(), f.id(1));
    }

    void swipeThresholds_data()
    {
        table<QString, QList<double>, double, QString>({"case", "deltas", "zoom", "outcome"}, {
            {"-36 reveals", {-20, -16}, 1.0, "revealed"},
            {"-35 snaps back", {-35}, 1.0, "closed"},
            {"right is clamped", {50, -35}, 1.0, "closed"},
            {"half the row reveals", {-150}, 1.0, "revealed"},
            {"past half deletes", {-100, -51}, 1.0, "deleted"},
            {"zoomed deltas are unzoomed", {-28.8}, 0.8, "revealed"},
            {"zoomed short", {-28}, 0.8, "closed"},
        });
    }
    void swipeThresholds()
    {
        QFETCH(QList<double>, deltas);
        QFETCH(double, zoom);
        QFETCH(QString, outcome);
        ModelFixture f;
        f.m().setZoom(zoom);
        const QUuid b = f.id(1);
        f.m().beginSwipe(b);
        for (double d : deltas)
            f.m().swipe(d);
        QVERIFY(f.m().swipeOffset() <= 0);
        QCOMPARE(f.m().rowOffset(b), f.m().swipeOffset());
        QCOMPARE(f.m().rowOffset(f.id(0)), 0.0);
        f.m().endSwipe(300);
        if (outcome == "deleted") {
            QCOMPARE(f.m().swipeOffset(), -330.0);
            f.advance(0.125);
            QCOMPARE(f.m().board().timers.size(), 3);
            f.advance(0.015625);
            QCOMPARE(f.names(), (QStringList{"A", "C"}));
            QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Deleted “B”"));
            f.undo.undo(); // undoable like any other deletion
            QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
        }
        QVERIFY(!f.m().swipeID());
        QCOMPARE(f.m().swipeOffset(), 0.0);
        QCOMPARE(f.m().revealedID(), outcome == "revealed" ? std::optional(b) : std::nullopt);
        QCOMPARE(f.m().rowOffset(b), outcome == "revealed" ? -AppModel::revealWidth : 0.0);
    }

    void swipeStartsFromTheRevealAndActionsCloseIt()
    {
        ModelFixture f;
        f.m().setZoom(1.0);
        f.swipeRow(0, -50);
        f.m().beginSwipe(f.id(0)); // the revealed row continues from its open position
        QCOMPARE(f.m().swipeOffset(), -AppModel::revealWidth);
        f.m().swipe(40);
        f.m().endSwipe(300);
        QCOMPARE(f.m().revealedID(), f.id(0)); // -44 stays open
        f.m().beginSwipe(f.id(2)); // another row closes it
        QVERIFY(!f.m().revealedID());
        f.m().endSwipe(300);

        f.swipeRow(0, -60);
        f.m().toggle(f.id(1));
        QVERIFY(!f.m().revealedID());
        f.swipeRow(0, -60);
        QVERIFY(f.m().deleteHovered()); // nothing hovered: the revealed row goes
        QCOMPARE(f.names(), (QStringList{"B", "C"}));
        QVERIFY(!f.m().revealedID());
        f.m().setHoveredID(f.id(1));
        QVERIFY(f.m().deleteHovered());
        QVERIFY(!f.m().hoveredID());
        QVERIFY(!f.m().deleteHovered());

        f.m().beginEdit(f.id(0));
        f.swipeRow(0, -200); // the row being edited does not swipe
        QCOMPARE(f.names(), QStringList{"B"});

        f.m().cancelEdit();
        f.m().beginSwipe(f.id(0));
        f.m().swipe(-60);
        f.m().deleteTimer(f.id(0)); // deleted mid-drag: the gesture ends with it
        f.m().endSwipe(300);
        QVERIFY(!f.m().swipeID());
        QVERIFY(!f.m().revealedID());
    }

    // The menu's undo takes the toast with it; a toast undoes exactly its own action (the
    // self-check runs the toast-order scenarios).
    void aStaleToastAfterTheMenuUndoIsANoOp()
    {
        ModelFixture f;
        f.set(0, 100);
        f.m().reset(f.id(0));
        f.undo.undo();
        QVERIFY(!f.m().toast());
        f.set(0, 7);
        f.m().undoToast();
        QCOMPARE(f.elapsed(0), 7.0);
    }

    void toastLivesTwelveSecondsAndANewerOneKeepsItsFullTime()
    {
        ModelFixture f(WithStore::no);
        f.m().reset(f.id(0));
        f.advance(6);
        f.m().reset(f.id(1));
        f.advance(11.5); // 17.5 s after the first
        QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Reset “B”"));
        f.advance(0.5);
        QVERIFY(!f.m().toast());
    }

    void deferredWorkDiesWithTheModel()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.m().reset(f.id(1));
        f.swipeRow(2, -200);
        QVERIFY(f.v.scheduler->pendingCount() >= 3);
        f.model.reset();
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
        f.undo.undo(); // its handler finds no model
        f.advance(20);
    }
};

QTEST_GUILESS_MAIN(AppModelTest)
#include "appmodel_test.moc"

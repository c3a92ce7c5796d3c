#include "selftest.h"

#include "appmodel.h"
#include "modelfixture.h"
#include "store.h"
#include "text.h"
#include "timevalues.h"
#include "undomanager.h"
#include "virtualservices.h"

#include <QMetaMethod>

#include <cmath>
#include <functional>
#include <memory>

namespace tock::SelfTest {

namespace {

// A failed expectation: the scenario stops and reports `what`.
struct Failed {
    QString what;
};

void expect(bool condition, const QString &what)
{
    if (!condition)
        throw Failed{what};
}

template <typename T>
QString shown(const T &value)
{
    if constexpr (std::is_same_v<T, QString>)
        return QStringLiteral("\"") + value + QStringLiteral("\"");
    else if constexpr (std::is_same_v<T, QStringList>)
        return QStringLiteral("[") + value.join(QStringLiteral(" | ")) + QStringLiteral("]");
    else
        return QString::number(value);
}

template <typename T, typename U>
void expectEqual(const T &actual, const U &expected, const QString &what)
{
    if (!(actual == expected))
        throw Failed{what + QStringLiteral(": got ") + shown(actual) + QStringLiteral(", expected ")
                     + shown(T(expected))};
}

// Names the model's signals as they are emitted, to prove what did not notify.
class SignalLog : public QObject {
    Q_OBJECT
public:
    explicit SignalLog(QObject *model)
    {
        const QMetaObject *meta = model->metaObject();
        const QMetaMethod log = metaObject()->method(metaObject()->indexOfSlot("log()"));
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            if (meta->method(i).methodType() == QMetaMethod::Signal)
                connect(model, meta->method(i), this, log);
        }
    }
    QStringList names;

private Q_SLOTS:
    void log() { names << QString::fromLatin1(sender()->metaObject()->method(senderSignalIndex()).name()); }
};

// The newest toast: its step is on top, so it goes through the manager and redo works.
void toastUndoInOrder(bool remove)
{
    ModelFixture rig;
    rig.set(0, 100);
    rig.set(1, 200);
    rig.model->reset(rig.id(0));
    remove ? rig.model->deleteTimer(rig.id(1)) : rig.model->reset(rig.id(1));
    const QString message = remove ? QStringLiteral("Deleted “B”") : QStringLiteral("Reset “B”");
    expectEqual(rig.model->toast()->entry.message(), message, QStringLiteral("toast"));
    rig.model->undoToast();
    expect(!rig.model->toast(), QStringLiteral("the toast stayed"));
    expectEqual(rig.names(), QStringList{"A", "B", "C"}, QStringLiteral("timers"));
    expectEqual(rig.elapsed(0), 0.0, QStringLiteral("A"));
    expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B"));
    expectEqual(rig.undo.undoMenuItemTitle(), QStringLiteral("Undo Reset Timer"), QStringLiteral("undo title"));
    expectEqual(rig.undo.redoMenuItemTitle(), remove ? QStringLiteral("Redo Delete Timer") : QStringLiteral("Redo Reset Timer"),
                QStringLiteral("redo title"));
    rig.undo.redo(); // again, with a fresh toast and a fresh undo step
    expectEqual(rig.model->toast()->entry.message(), message, QStringLiteral("toast after redo"));
    expect(!rig.undo.canRedo(), QStringLiteral("redo left after redo"));
    rig.undo.undo();
    expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B after the second undo"));
}

// An older toast pressed under a newer step ("move", "set" or "reset") undoes only its own
// action, and the manager's copy of that step later does nothing.
void toastUndoOutOfOrder(const QString &newer)
{
    ModelFixture rig;
    const QUuid a = rig.id(0);
    rig.set(0, 100);
    rig.set(1, 200);
    rig.model->reset(a);
    const Toast old = *rig.model->toast();
    if (newer == u"move")
        rig.model->moveTimer(rig.id(2), 0);
    else if (newer == u"set")
        rig.set(2, 30);
    else
        rig.model->reset(rig.id(1));
    const Board afterNewer = rig.model->board();
    ModelProbe::showToast(*rig.model, old); // the older toast is the one on screen
    rig.model->undoToast();
    expect(!rig.model->toast(), QStringLiteral("the toast stayed"));
    expectEqual(rig.model->board().timer(a)->elapsed(0), 100.0, QStringLiteral("A after the toast"));
    Board expected = afterNewer; // nothing but A changed
    expected.timers[*expected.index(a)] = *rig.model->board().timer(a);
    expect(rig.model->board().timers == expected.timers, QStringLiteral("the toast changed more than A"));

    rig.undo.undo(); // the newer step first
    expectEqual(rig.names(), QStringList{"A", "B", "C"}, QStringLiteral("timers after the first undo"));
    expectEqual(rig.elapsed(0), 100.0, QStringLiteral("A after the first undo"));
    expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B after the first undo"));
    expectEqual(rig.elapsed(2), 0.0, QStringLiteral("C after the first undo"));
    rig.undo.undo(); // the reset's own step: already done, so nothing
    expectEqual(rig.elapsed(0), 100.0, QStringLiteral("A after the reset's own step"));
    expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B after the reset's own step"));
    rig.undo.undo();
    rig.undo.undo();
    expectEqual(rig.elapsed(0) + rig.elapsed(1), 0.0, QStringLiteral("A and B after every undo"));
    expect(!rig.undo.canUndo(), QStringLiteral("undo steps left"));
}

using Scenario = std::pair<const char *, std::function<void()>>;

QList<Scenario> scenarios()
{
    return {
        {"shared clock: one tick per second, only while running, steps of one",
         [] {
             ModelFixture rig;
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("ticking with nothing running"));
             rig.model->toggle(rig.id(0));
             expectEqual(rig.v.scheduler->repeatingCount(), 1, QStringLiteral("repeating tasks"));
             for (const VirtualScheduler::Task &task : rig.v.scheduler->tasks()) {
                 if (task.interval > 0) {
                     expectEqual(task.interval, 1.0, QStringLiteral("tick interval"));
                     expectEqual(task.tolerance, 0.1, QStringLiteral("tick tolerance"));
                 }
             }
             rig.advance(3);
             expectEqual(rig.model->displayTick()->tick(), 3, QStringLiteral("redraws"));
             rig.model->toggle(rig.id(1)); // a second running timer shares the one tick
             expectEqual(rig.v.scheduler->repeatingCount(), 1, QStringLiteral("repeating tasks with two running"));
             SignalLog log(rig.model.get());
             rig.advance(1);
             expectEqual(rig.model->displayTick()->tick(), 4, QStringLiteral("redraws"));
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 4, QStringLiteral("A's shown second"));
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(1)).value_or(-1), 1, QStringLiteral("B's shown second"));
             expectEqual(log.names, QStringList(), QStringLiteral("signals of a tick")); // it changes nothing else
             rig.v.clock->advance(2); // one late wake-up: a small lag is made up a second at a time
             ModelProbe::tick(*rig.model);
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 5, QStringLiteral("after a small lag"));
             rig.v.clock->advance(3); // a large one jumps
             ModelProbe::tick(*rig.model);
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 9, QStringLiteral("after a large lag"));
             expectEqual(rig.model->displayTick()->tick(), 6, QStringLiteral("redraws after the lags"));
             rig.model->pauseAll();
             expectEqual(rig.v.scheduler->repeatingCount(), 0, QStringLiteral("repeating tasks after pausing"));
             expect(!ModelProbe::shownValue(*rig.model, rig.id(0)), QStringLiteral("a paused timer keeps a shown value"));
             rig.advance(5);
             expectEqual(rig.model->displayTick()->tick(), 6, QStringLiteral("redraws while paused"));
         }},
        {"the display follows edits, stops at the cap, and paused shows the exact time",
         [] {
             ModelFixture rig;
             rig.model->toggle(rig.id(0));
             rig.advance(2);
             rig.set(0, 100); // the shown value goes stale on any edit
             expect(!ModelProbe::shownValue(*rig.model, rig.id(0)), QStringLiteral("a shown value survived an edit"));
             expectEqual(rig.model->displayedSeconds(rig.id(0)), 100, QStringLiteral("displayed after the edit"));
             rig.advance(1);
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 101, QStringLiteral("shown second"));
             rig.v.clock->advance(3.5); // no tick yet: the display keeps its second
             expectEqual(rig.model->displayedSeconds(rig.id(0)), 101, QStringLiteral("displayed between ticks"));
             rig.model->toggle(rig.id(0));
             expectEqual(rig.model->displayedSeconds(rig.id(0)), 104, QStringLiteral("displayed once paused"));
             rig.set(1, HMS::maxSeconds - 1);
             rig.model->toggle(rig.id(1));
             const qint64 ticks = rig.model->displayTick()->tick();
             rig.advance(1);
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(1)).value_or(-1), HMS::maxSeconds, QStringLiteral("at the cap"));
             rig.advance(5); // capped: no redraw while no shown value changes
             expectEqual(rig.model->displayTick()->tick(), ticks + 1, QStringLiteral("redraws at the cap"));
         }},
        {"about one redraw per second",
         [] {
             ModelFixture rig(WithStore::yes, {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
             rig.model->toggle(rig.id(0));
             rig.v.clock->advance(0.4);
             rig.model->toggle(rig.id(1));
             rig.model->toggle(rig.id(2));
             rig.v.advance(10.0);
             const qint64 redraws = rig.model->displayTick()->tick();
             expect(redraws >= 9 && redraws <= 11,
                    QStringLiteral("%1 redraws in 10 s with three running timers").arg(redraws));
         }},
        {"kept counting and saving while hidden",
         [] {
             ModelFixture rig;
             rig.model->toggle(rig.id(0));
             rig.model->setWindowVisible(false);
             rig.advance(3.5);
             expectEqual(rig.model->displayTick()->tick(), 0, QStringLiteral("redraws while hidden"));
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 3, QStringLiteral("shown second"));
             expectEqual(rig.saved()->timers.at(0).seconds, 3.0, QStringLiteral("saved while hidden"));
             rig.model->setWindowVisible(true);
             expectEqual(rig.model->displayTick()->tick(), 1, QStringLiteral("redraws on return")); // caught up at once
             rig.advance(0.5);
             expectEqual(rig.model->displayTick()->tick(), 2, QStringLiteral("redraws after return"));
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 4, QStringLiteral("shown second on return"));
         }},
        {"invalid time edit survives switching rows and name clicks",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B")});
             expect(rig.openInvalidEdit(0), QStringLiteral("the invalid time edit did not open"));
             rig.model->beginEdit(rig.id(1));
             expect(rig.model->editingID() == rig.id(0), QStringLiteral("switching rows closed the invalid edit"));
             expect(!rig.model->commitEditForNameClick(), QStringLiteral("a name click was accepted"));
             expect(rig.model->editingID() == rig.id(0) && rig.model->draft(),
                    QStringLiteral("a name click closed the invalid edit"));
         }},
        {"add timer with an invalid time edit open keeps one edit state",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")});
             expect(rig.openInvalidEdit(0), QStringLiteral("the invalid time edit did not open"));
             rig.model->addTimer();
             expectEqual(rig.count(), 1, QStringLiteral("timers"));
             expect(rig.model->editingID() == rig.id(0) && rig.model->draft() && !rig.model->draft()->isValid(),
                    QStringLiteral("the invalid edit did not stay open"));
         }},
        {"valid time is saved by a name click",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B")});
             rig.model->beginEdit(rig.id(0));
             TimeEditDraft draft = *rig.model->draft();
             draft.set(TimeField::hours, QStringLiteral("1"));
             draft.set(TimeField::minutes, QStringLiteral("30"));
             rig.model->setDraft(draft);
             expect(rig.model->commitEditForNameClick(), QStringLiteral("the name click was refused"));
             expect(!rig.model->editingID() && !rig.model->draft(), QStringLiteral("the edit stayed open"));
             expectEqual(TimeFormat::string(rig.elapsed(0)), QStringLiteral("01:30:00"), QStringLiteral("time"));
         }},
        {"name click is refused while invalid",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")});
             expect(rig.openInvalidEdit(0), QStringLiteral("the invalid time edit did not open"));
             const int beeps = rig.beeps;
             expect(!rig.model->commitEditForNameClick(), QStringLiteral("the name click was accepted"));
             expectEqual(rig.beeps, beeps + 1, QStringLiteral("beeps"));
             expectEqual(TimeFormat::string(rig.elapsed(0)), QStringLiteral("00:00:00"), QStringLiteral("time"));
         }},
        {"no name focus while the mask is open",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B")});
             expect(rig.openInvalidEdit(0), QStringLiteral("the invalid time edit did not open"));
             rig.model->addTimer();
             expect(!rig.model->nameFocusID(), QStringLiteral("a name took focus while the mask is open"));
             expect(!rig.model->commitEditForNameClick(), QStringLiteral("a name click was accepted"));
         }},
        {"two resets: the toast undoes its own reset only", [] { toastUndoInOrder(false); }},
        {"toast undo in order goes through the undo manager", [] { toastUndoInOrder(true); }},
        {"toast undo out of order does not scramble the history", [] { toastUndoOutOfOrder(QStringLiteral("move")); }},
        {"an old toast with a newer set above it", [] { toastUndoOutOfOrder(QStringLiteral("set")); }},
        {"an old toast with a same-named newer action above it", [] { toastUndoOutOfOrder(QStringLiteral("reset")); }},
        {"redo must exist after undoing set: undo puts a running timer back as if the set never happened",
         [] {
             ModelFixture rig;
             rig.model->toggle(rig.id(0));
             rig.advance(10);
             rig.set(0, 3600);
             rig.advance(5);
             QList<double> trace;
             for (const auto command : {&UndoManager::undo, &UndoManager::redo, &UndoManager::undo, &UndoManager::redo}) {
                 (rig.undo.*command)();
                 trace << rig.elapsed(0);
                 rig.advance(1);
             }
             expect(trace == QList<double>{15, 3600, 17, 3600}, QStringLiteral("undo and redo of a set on a running timer"));
             expect(rig.timer(0).isRunning(), QStringLiteral("stopped by undo or redo"));
             expectEqual(rig.undo.undoMenuItemTitle(), QStringLiteral("Undo Set Time"), QStringLiteral("undo title"));
             expect(!rig.undo.canRedo(), QStringLiteral("redo left"));
         }},
        {"shell set: undo and redo both work",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")}, std::nullopt, {100});
             expectEqual(rig.shell(QStringLiteral("set A 5:00")), QStringList{QStringLiteral("“A” is now 00:05:00")},
                         QStringLiteral("set output"));
             expectEqual(rig.shell(QStringLiteral("undo")), QStringList{QStringLiteral("undone")}, QStringLiteral("undo"));
             expectEqual(rig.elapsed(0), 100.0, QStringLiteral("after undo"));
             expectEqual(rig.shell(QStringLiteral("redo")), QStringList{QStringLiteral("redone")}, QStringLiteral("redo"));
             expectEqual(rig.elapsed(0), 300.0, QStringLiteral("after redo"));
             rig.shell(QStringLiteral("undo"));
             expectEqual(rig.elapsed(0), 100.0, QStringLiteral("after the second undo"));
         }},
        {"undo after pause-all through the real model",
         [] {
             ModelFixture rig;
             rig.model->toggle(rig.id(0));
             rig.advance(10);
             rig.model->reset(rig.id(0));
             rig.advance(3);
             rig.model->pauseAll();
             rig.advance(100);
             rig.undo.undo();
             // Restored as it was, but stopped at the pause-all: no time while everything was paused.
             expect(!rig.timer(0).isRunning(), QStringLiteral("the restored timer runs after a pause-all"));
             expectEqual(rig.elapsed(0), 13.0, QStringLiteral("restored time"));
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("ticking with nothing running"));
         }},
        {"rm all is one undo step, and a deleted running timer never stops counting",
         [] {
             ModelFixture rig;
             rig.model->toggle(rig.id(1));
             rig.advance(5);
             expectEqual(rig.shell(QStringLiteral("rm all")),
                         QStringList{QStringLiteral("deleted 3 timers · undo brings them back")}, QStringLiteral("rm output"));
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("ticking with no timers"));
             rig.undo.undo();
             expectEqual(rig.names(), QStringList{"A", "B", "C"}, QStringLiteral("timers after one undo"));
             expect(rig.timer(1).isRunning() && ModelProbe::isTicking(*rig.model), QStringLiteral("B stopped"));
             expect(!rig.model->toast(), QStringLiteral("a toast for an undo"));
             expect(!rig.undo.canUndo(), QStringLiteral("more undo steps left"));
             rig.undo.redo();
             expectEqual(rig.count(), 0, QStringLiteral("timers after redo"));
             rig.advance(5);
             rig.undo.undo();
             expectEqual(rig.elapsed(1), 10.0, QStringLiteral("B after undo, redo and undo"));
         }},
        {"saved about once a second while running; Close (timers pause) saves at once",
         [] {
             ModelFixture rig;
             const Instant start = rig.v.clock->now();
             rig.model->toggle(rig.id(0));
             rig.advance(1); // the debounced save at 0.3; the tick at 1.0 is too soon after it
             expect(std::abs(ModelProbe::lastSave(*rig.model) - (start + 0.3)) < 1e-9, QStringLiteral("first save not at 0.3 s"));
             rig.advance(1);
             expectEqual(ModelProbe::lastSave(*rig.model), start + 2, QStringLiteral("second save"));
             expectEqual(rig.saved()->timers.at(0).seconds, 2.0, QStringLiteral("saved time"));
             expect(rig.saved()->timers.at(0).wasRunning, QStringLiteral("saved as paused"));
             rig.advance(1);
             expectEqual(ModelProbe::lastSave(*rig.model), start + 3, QStringLiteral("third save"));
             rig.v.clock->advance(0.75);
             rig.model->pauseAll();
             expectEqual(rig.saved()->timers.at(0).seconds, 3.75, QStringLiteral("saved time after pausing all"));
             expect(!rig.saved()->timers.at(0).wasRunning, QStringLiteral("saved as running"));
             expectEqual(rig.v.scheduler->pendingCount(), 0, QStringLiteral("pending tasks"));
         }},
        {"shell refuses commands while an invalid time edit is open",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")});
             expect(rig.openInvalidEdit(0), QStringLiteral("the invalid time edit did not open"));
             expectEqual(rig.shell(QStringLiteral("add B")),
                         QStringList{QStringLiteral("finish or cancel the time you are editing first")},
                         QStringLiteral("output"));
             expect(rig.model->shell().shellOutputIsError(), QStringLiteral("not shown as an error"));
             expectEqual(rig.count(), 1, QStringLiteral("timers"));
         }},
        {"without a store nothing ticks, saves or writes settings",
         [] {
             ModelFixture rig(WithStore::no);
             rig.v.settings->setValue(QStringLiteral("zoomDefaultV3"), true);
             rig.v.settings->setValue(QStringLiteral("zoom"), 1.4);
             rig.make(ModelFixture::board({QStringLiteral("A"), QStringLiteral("B")}));
             const qsizetype writes = rig.v.settings->writes().size();
             expectEqual(rig.model->zoom(), 1.0, QStringLiteral("zoom"));
             rig.model->toggle(rig.id(0));
             expect(rig.timer(0).isRunning(), QStringLiteral("the timer did not start"));
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("ticking without a store"));
             rig.shell(QStringLiteral("style amber"));
             rig.model->zoomIn();
             rig.model->rename(rig.id(1), QStringLiteral("X"));
             rig.model->pauseAll();
             rig.advance(5);
             expectEqual(rig.model->displayTick()->tick(), 0, QStringLiteral("redraws"));
             expect(rig.v.settings->writes().size() == writes,
                    QStringLiteral("settings written: ") + rig.v.settings->writes().join(QStringLiteral(", ")));
             expectEqual(rig.v.scheduler->pendingCount(), 0, QStringLiteral("pending tasks"));
         }},
    };
}

} // namespace

QList<Outcome> runAll()
{
    QList<Outcome> outcomes;
    for (const auto &[name, scenario] : scenarios()) {
        Outcome outcome{QString::fromUtf8(name), {}};
        try {
            scenario();
        } catch (const Failed &failed) {
            outcome.failure = failed.what;
        } catch (const StoreError &error) {
            outcome.failure = error.description();
        } catch (const std::exception &error) {
            outcome.failure = QString::fromLocal8Bit(error.what());
        } catch (...) {
            outcome.failure = QStringLiteral("unexpected error");
        }
        outcomes << outcome;
    }
    return outcomes;
}

int run(QTextStream &out)
{
    bool passed = true;
    for (const Outcome &outcome : runAll()) {
        if (outcome.passed()) {
            out << "ok    " << outcome.name << '\n';
        } else {
            out << "FAIL  " << outcome.name << ": " << outcome.failure << '\n';
            passed = false;
        }
    }
    out << (passed ? "app checks passed" : "app checks failed") << '\n';
    out.flush();
    return passed ? 0 : 1;
}

} // namespace tock::SelfTest

#include "selftest.moc"

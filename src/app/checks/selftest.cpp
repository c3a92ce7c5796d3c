#include "selftest.h"

#include "appmodel.h"
#include "modelfixture.h"
#include "snapshot.h"
#include "store.h"
#include "text.h"
#include "timevalues.h"
#include "undomanager.h"
#include "virtualservices.h"

#include <QFile>
#include <QTemporaryDir>

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

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failed{QStringLiteral("cannot read ") + path};
    return file.readAll();
}

using Scenario = std::pair<const char *, std::function<void()>>;

QList<Scenario> scenarios()
{
    return {
        {"shared clock: one tick per second, only while running, steps of one",
         [] {
             ModelFixture rig(WithStore::yes, {QStringLiteral("A")});
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("ticking with nothing running"));
             rig.model->toggle(rig.id(0));
             expect(ModelProbe::isTicking(*rig.model), QStringLiteral("not ticking while a timer runs"));
             expectEqual(rig.v.scheduler->repeatingCount(), 1, QStringLiteral("repeating tasks"));
             for (int second = 1; second <= 5; ++second) {
                 rig.v.advance(1.0);
                 expectEqual(rig.model->displayTick()->tick(), second, QStringLiteral("redraw signals"));
                 expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), second, QStringLiteral("shown second"));
             }
             rig.model->toggle(rig.id(0));
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("still ticking after the last pause"));
             expectEqual(rig.v.scheduler->repeatingCount(), 0, QStringLiteral("repeating tasks after pause"));
         }},
        {"paused shows the exact time",
         [] {
             ModelFixture rig(WithStore::yes, {QStringLiteral("A")});
             rig.model->toggle(rig.id(0));
             rig.v.advance(3.0);
             rig.v.clock->advance(0.7);
             rig.model->toggle(rig.id(0));
             expect(!ModelProbe::shownValue(*rig.model, rig.id(0)), QStringLiteral("a paused timer keeps a shown value"));
             expect(std::abs(rig.elapsed(0) - 3.7) < 1e-3, QStringLiteral("paused elapsed is not 3.7 s"));
             expectEqual(rig.model->displayedSeconds(rig.id(0)), 3, QStringLiteral("displayed seconds"));
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
        {"kept counting while hidden",
         [] {
             ModelFixture rig(WithStore::yes, {QStringLiteral("A")});
             rig.model->toggle(rig.id(0));
             rig.v.advance(1.0);
             const qint64 before = rig.model->displayTick()->tick();
             rig.model->setWindowVisible(false);
             rig.v.advance(3.5);
             expectEqual(rig.model->displayTick()->tick(), before, QStringLiteral("redraws while hidden"));
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 4, QStringLiteral("shown second after 4.5 s"));
             rig.model->setWindowVisible(true);
             rig.v.advance(1.0);
             expectEqual(ModelProbe::shownValue(*rig.model, rig.id(0)).value_or(-1), 5, QStringLiteral("shown second on return"));
             expect(rig.model->displayTick()->tick() > before, QStringLiteral("no redraw after returning"));
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
        {"two resets: the toast undoes its own reset only",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B")}, std::nullopt, {100, 200});
             rig.model->reset(rig.id(0));
             rig.model->reset(rig.id(1));
             rig.model->undoToast();
             expectEqual(rig.elapsed(0), 0.0, QStringLiteral("A"));
             expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B"));
         }},
        {"toast undo in order goes through the undo manager",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")}, std::nullopt, {100});
             rig.model->reset(rig.id(0));
             rig.model->undoToast();
             expectEqual(rig.elapsed(0), 100.0, QStringLiteral("A"));
             expect(rig.undo.canRedo(), QStringLiteral("the undo did not go through the undo manager"));
             expect(!rig.model->toast(), QStringLiteral("the toast stayed"));
         }},
        {"toast undo out of order does not scramble the history",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B")}, std::nullopt, {100});
             rig.model->reset(rig.id(0));
             const QUuid b = rig.id(1);
             rig.model->moveTimer(b, 0);
             rig.model->undoToast();
             expectEqual(rig.elapsed(1), 100.0, QStringLiteral("A after the toast"));
             expect(rig.id(0) == b, QStringLiteral("the move was undone by the toast"));
             rig.undo.undo();
             expect(rig.id(1) == b, QStringLiteral("the first undo did not undo the move"));
             const Board board = rig.model->board();
             rig.undo.undo();
             expect(rig.model->board() == board, QStringLiteral("the reset's old step changed the board again"));
         }},
        {"an old toast with a same-named newer action above it",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B")}, std::nullopt, {100, 200});
             rig.model->reset(rig.id(0));
             const Toast old = *rig.model->toast();
             rig.model->reset(rig.id(1));
             ModelProbe::showToast(*rig.model, old);
             rig.model->undoToast();
             expectEqual(rig.elapsed(0), 100.0, QStringLiteral("A"));
             expectEqual(rig.elapsed(1), 0.0, QStringLiteral("B"));
             rig.undo.undo();
             expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B after undo"));
             rig.undo.undo();
             expectEqual(rig.elapsed(0), 100.0, QStringLiteral("A after the second undo"));
         }},
        {"redo available after toast undo",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")}, std::nullopt, {100});
             rig.model->reset(rig.id(0));
             rig.model->undoToast();
             expect(rig.undo.canRedo(), QStringLiteral("no redo"));
             rig.undo.redo();
             expectEqual(rig.elapsed(0), 0.0, QStringLiteral("A after redo"));
         }},
        {"redo must exist after undoing set",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A")});
             rig.shell(QStringLiteral("set 1 5:00"));
             rig.shell(QStringLiteral("undo"));
             expect(rig.undo.canRedo(), QStringLiteral("no redo"));
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
             ModelFixture rig(WithStore::yes, {QStringLiteral("A"), QStringLiteral("B")});
             rig.model->toggle(rig.id(0));
             rig.v.advance(5.0);
             rig.model->deleteTimer(rig.id(0));
             rig.v.advance(2.0);
             rig.model->pauseAll();
             rig.undo.undo();
             expectEqual(rig.count(), 2, QStringLiteral("timers after undo"));
             expect(!rig.timer(0).isRunning(), QStringLiteral("the restored timer runs after a pause-all"));
             expect(rig.elapsed(0) >= 5.0, QStringLiteral("the restored timer lost its time"));
         }},
        {"rm all is one undo step",
         [] {
             ModelFixture rig(WithStore::no, {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
             const Board before = rig.model->board();
             expectEqual(rig.shell(QStringLiteral("rm all")),
                         QStringList{QStringLiteral("deleted 3 timers · undo brings them back")},
                         QStringLiteral("rm output"));
             expectEqual(rig.count(), 0, QStringLiteral("timers after rm all"));
             rig.shell(QStringLiteral("undo"));
             expect(rig.model->board().timers == before.timers, QStringLiteral("one undo did not bring all three back"));
             expect(!rig.undo.canUndo(), QStringLiteral("more undo steps left"));
         }},
        {"Close (timers pause): pausing all saves at once",
         [] {
             ModelFixture rig(WithStore::yes, {QStringLiteral("A")});
             rig.model->toggle(rig.id(0));
             rig.v.clock->advance(2.5);
             rig.model->pauseAll();
             const Snapshot saved = Snapshot::decode(readAll(rig.store->mainPath()));
             expectEqual(saved.timers.size(), 1, QStringLiteral("saved timers"));
             expect(!saved.timers.at(0).wasRunning, QStringLiteral("saved as running"));
             expect(std::abs(saved.timers.at(0).seconds - 2.5) < 1e-3, QStringLiteral("saved time is not 2.5 s"));
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
             ModelFixture rig(WithStore::no, {QStringLiteral("A")});
             rig.model->toggle(rig.id(0));
             rig.shell(QStringLiteral("style amber"));
             rig.model->zoomIn();
             rig.v.advance(3.0);
             expect(!ModelProbe::isTicking(*rig.model), QStringLiteral("ticking without a store"));
             expectEqual(rig.v.scheduler->pendingCount(), 0, QStringLiteral("pending tasks"));
             expect(rig.v.settings->writes().isEmpty(),
                    QStringLiteral("settings written: ") + rig.v.settings->writes().join(QStringLiteral(", ")));
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

#include "selftest.h"

#include "appmodel.h"
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

// One application model in virtual time with an undo manager, optionally over a store in a
// temporary folder (needed for ticking and saving).
struct Rig {
    enum class Storage { none, temporary };

    VirtualServices virt;
    QTemporaryDir folder;
    std::shared_ptr<Store> store;
    UndoManager undo;
    std::unique_ptr<AppModel> model;

    // Paused timers with these names and elapsed seconds (0 where none is given).
    Rig(const QStringList &names, Storage storage, const QList<double> &seconds = {})
    {
        Board board;
        for (qsizetype i = 0; i < names.size(); ++i) {
            board.add(names.at(i));
            board.timers.last().accumulated = seconds.value(i, 0);
        }
        if (storage == Storage::temporary) {
            if (!folder.isValid())
                throw Failed{QStringLiteral("no temporary folder")};
            store = std::make_shared<Store>(folder.path(), 5, 600.0);
        }
        model = std::make_unique<AppModel>(store, board, std::nullopt, std::nullopt, virt.services());
        model->setUndoManager(&undo);
    }

    QUuid id(qsizetype index) const { return model->board().timers.at(index).id; }
    TimerItem timer(qsizetype index) const { return model->board().timers.at(index); }
    double elapsed(qsizetype index) const { return timer(index).elapsed(virt.clock->now()); }
    qsizetype count() const { return model->board().timers.size(); }

    // A line typed at the prompt and run; returns its output.
    QStringList shell(const QString &line)
    {
        model->setPrompt(line, Text::graphemeCount(line));
        model->promptRun();
        return model->shellOutput();
    }

    // Opens the time edit on a row with an out-of-range minutes field.
    void openInvalidEdit(qsizetype index)
    {
        model->beginEdit(id(index));
        expect(model->draft().has_value(), QStringLiteral("the time edit did not open"));
        TimeEditDraft draft = *model->draft();
        draft.set(TimeField::minutes, QStringLiteral("75"));
        model->setDraft(draft);
        expect(!model->draft()->isValid(), QStringLiteral("the draft should be invalid"));
    }
};

using Scenario = std::pair<const char *, std::function<void()>>;

QList<Scenario> scenarios()
{
    using Storage = Rig::Storage;
    return {
        {"shared clock: one tick per second, only while running, steps of one",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::temporary);
             expect(!rig.model->isTicking(), QStringLiteral("ticking with nothing running"));
             rig.model->toggle(rig.id(0));
             expect(rig.model->isTicking(), QStringLiteral("not ticking while a timer runs"));
             expectEqual(rig.virt.scheduler->repeatingCount(), 1, QStringLiteral("repeating tasks"));
             for (int second = 1; second <= 5; ++second) {
                 rig.virt.advance(1.0);
                 expectEqual(rig.model->displayTick()->tick(), second, QStringLiteral("redraw signals"));
                 expectEqual(rig.model->shownValue(rig.id(0)).value_or(-1), second, QStringLiteral("shown second"));
             }
             rig.model->toggle(rig.id(0));
             expect(!rig.model->isTicking(), QStringLiteral("still ticking after the last pause"));
             expectEqual(rig.virt.scheduler->repeatingCount(), 0, QStringLiteral("repeating tasks after pause"));
         }},
        {"paused shows the exact time",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::temporary);
             rig.model->toggle(rig.id(0));
             rig.virt.advance(3.0);
             rig.virt.clock->advance(0.7);
             rig.model->toggle(rig.id(0));
             expect(!rig.model->shownValue(rig.id(0)), QStringLiteral("a paused timer keeps a shown value"));
             expect(std::abs(rig.elapsed(0) - 3.7) < 1e-3, QStringLiteral("paused elapsed is not 3.7 s"));
             expectEqual(rig.model->displayedSeconds(rig.id(0)), 3, QStringLiteral("displayed seconds"));
         }},
        {"about one redraw per second",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}, Storage::temporary);
             rig.model->toggle(rig.id(0));
             rig.virt.clock->advance(0.4);
             rig.model->toggle(rig.id(1));
             rig.model->toggle(rig.id(2));
             rig.virt.advance(10.0);
             const qint64 redraws = rig.model->displayTick()->tick();
             expect(redraws >= 9 && redraws <= 11,
                    QStringLiteral("%1 redraws in 10 s with three running timers").arg(redraws));
         }},
        {"kept counting while hidden",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::temporary);
             rig.model->toggle(rig.id(0));
             rig.virt.advance(1.0);
             const qint64 before = rig.model->displayTick()->tick();
             rig.model->setWindowVisible(false);
             rig.virt.advance(3.5);
             expectEqual(rig.model->displayTick()->tick(), before, QStringLiteral("redraws while hidden"));
             expectEqual(rig.model->shownValue(rig.id(0)).value_or(-1), 4, QStringLiteral("shown second after 4.5 s"));
             rig.model->setWindowVisible(true);
             rig.virt.advance(1.0);
             expectEqual(rig.model->shownValue(rig.id(0)).value_or(-1), 5, QStringLiteral("shown second on return"));
             expect(rig.model->displayTick()->tick() > before, QStringLiteral("no redraw after returning"));
         }},
        {"invalid time edit survives switching rows and name clicks",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::none);
             rig.openInvalidEdit(0);
             rig.model->beginEdit(rig.id(1));
             expect(rig.model->editingID() == rig.id(0), QStringLiteral("switching rows closed the invalid edit"));
             expect(!rig.model->canBeginEditingName(), QStringLiteral("a name click was accepted"));
             expect(rig.model->editingID() == rig.id(0) && rig.model->draft(),
                    QStringLiteral("a name click closed the invalid edit"));
         }},
        {"add timer with an invalid time edit open keeps one edit state",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none);
             rig.openInvalidEdit(0);
             rig.model->addTimer();
             expectEqual(rig.count(), 1, QStringLiteral("timers"));
             expect(rig.model->editingID() == rig.id(0) && rig.model->draft() && !rig.model->draft()->isValid(),
                    QStringLiteral("the invalid edit did not stay open"));
         }},
        {"valid time is saved by a name click",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::none);
             rig.model->beginEdit(rig.id(0));
             TimeEditDraft draft = *rig.model->draft();
             draft.set(TimeField::hours, QStringLiteral("1"));
             draft.set(TimeField::minutes, QStringLiteral("30"));
             rig.model->setDraft(draft);
             expect(rig.model->canBeginEditingName(), QStringLiteral("the name click was refused"));
             expect(!rig.model->editingID() && !rig.model->draft(), QStringLiteral("the edit stayed open"));
             expectEqual(TimeFormat::string(rig.elapsed(0)), QStringLiteral("01:30:00"), QStringLiteral("time"));
         }},
        {"name click is refused while invalid",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none);
             rig.openInvalidEdit(0);
             const int beeps = *rig.virt.beeps;
             expect(!rig.model->canBeginEditingName(), QStringLiteral("the name click was accepted"));
             expectEqual(*rig.virt.beeps, beeps + 1, QStringLiteral("beeps"));
             expectEqual(TimeFormat::string(rig.elapsed(0)), QStringLiteral("00:00:00"), QStringLiteral("time"));
         }},
        {"no name focus while the mask is open",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::none);
             rig.openInvalidEdit(0);
             rig.model->addTimer();
             expect(!rig.model->nameFocusID(), QStringLiteral("a name took focus while the mask is open"));
             expect(!rig.model->canBeginEditingName(), QStringLiteral("a name click was accepted"));
         }},
        {"two resets: the toast undoes its own reset only",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::none, {100, 200});
             rig.model->reset(rig.id(0));
             rig.model->reset(rig.id(1));
             rig.model->undoToast();
             expectEqual(rig.elapsed(0), 0.0, QStringLiteral("A"));
             expectEqual(rig.elapsed(1), 200.0, QStringLiteral("B"));
         }},
        {"toast undo in order goes through the undo manager",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none, {100});
             rig.model->reset(rig.id(0));
             rig.model->undoToast();
             expectEqual(rig.elapsed(0), 100.0, QStringLiteral("A"));
             expect(rig.undo.canRedo(), QStringLiteral("the undo did not go through the undo manager"));
             expect(!rig.model->toast(), QStringLiteral("the toast stayed"));
         }},
        {"toast undo out of order does not scramble the history",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::none, {100});
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
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::none, {100, 200});
             rig.model->reset(rig.id(0));
             const Toast old = *rig.model->toast();
             rig.model->reset(rig.id(1));
             rig.model->showToast(old);
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
             Rig rig({QStringLiteral("A")}, Storage::none, {100});
             rig.model->reset(rig.id(0));
             rig.model->undoToast();
             expect(rig.undo.canRedo(), QStringLiteral("no redo"));
             rig.undo.redo();
             expectEqual(rig.elapsed(0), 0.0, QStringLiteral("A after redo"));
         }},
        {"redo must exist after undoing set",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none);
             rig.shell(QStringLiteral("set 1 5:00"));
             rig.shell(QStringLiteral("undo"));
             expect(rig.undo.canRedo(), QStringLiteral("no redo"));
         }},
        {"shell set: undo and redo both work",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none, {100});
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
             Rig rig({QStringLiteral("A"), QStringLiteral("B")}, Storage::temporary);
             rig.model->toggle(rig.id(0));
             rig.virt.advance(5.0);
             rig.model->deleteTimer(rig.id(0));
             rig.virt.advance(2.0);
             rig.model->pauseAll();
             rig.undo.undo();
             expectEqual(rig.count(), 2, QStringLiteral("timers after undo"));
             expect(!rig.timer(0).isRunning(), QStringLiteral("the restored timer runs after a pause-all"));
             expect(rig.elapsed(0) >= 5.0, QStringLiteral("the restored timer lost its time"));
         }},
        {"rm all is one undo step",
         [] {
             Rig rig({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}, Storage::none);
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
             Rig rig({QStringLiteral("A")}, Storage::temporary);
             rig.model->toggle(rig.id(0));
             rig.virt.clock->advance(2.5);
             rig.model->pauseAll();
             const Snapshot saved = Snapshot::decode(readAll(rig.store->mainPath()));
             expectEqual(saved.timers.size(), 1, QStringLiteral("saved timers"));
             expect(!saved.timers.at(0).wasRunning, QStringLiteral("saved as running"));
             expect(std::abs(saved.timers.at(0).seconds - 2.5) < 1e-3, QStringLiteral("saved time is not 2.5 s"));
         }},
        {"shell refuses commands while an invalid time edit is open",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none);
             rig.openInvalidEdit(0);
             expectEqual(rig.shell(QStringLiteral("add B")),
                         QStringList{QStringLiteral("finish or cancel the time you are editing first")},
                         QStringLiteral("output"));
             expect(rig.model->shellOutputIsError(), QStringLiteral("not shown as an error"));
             expectEqual(rig.count(), 1, QStringLiteral("timers"));
         }},
        {"without a store nothing ticks, saves or writes settings",
         [] {
             Rig rig({QStringLiteral("A")}, Storage::none);
             rig.model->toggle(rig.id(0));
             rig.shell(QStringLiteral("style amber"));
             rig.model->zoomIn();
             rig.virt.advance(3.0);
             expect(!rig.model->isTicking(), QStringLiteral("ticking without a store"));
             expectEqual(rig.virt.scheduler->pendingCount(), 0, QStringLiteral("pending tasks"));
             expect(rig.virt.settings->writes().isEmpty(),
                    QStringLiteral("settings written: ") + rig.virt.settings->writes().join(QStringLiteral(", ")));
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
        } catch (const JsonError &error) {
            outcome.failure = error.description;
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

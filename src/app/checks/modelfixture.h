// A model in virtual time, with or without a real store in a temporary folder, and an undo
// manager attached the way the window attaches its own. Shared by the tests and the self-check.
#pragma once

#include "appmodel.h"
#include "shellhistory.h"
#include "snapshot.h"
#include "store.h"
#include "text.h"
#include "undomanager.h"
#include "virtualservices.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace tock {

// The checks' window onto what the model keeps to itself: the tick, saving and the toast.
struct ModelProbe {
    static void tick(AppModel &m) { m.onTick(); }
    static void save(AppModel &m) { m.save(); }
    static void showToast(AppModel &m, const Toast &toast) { m.showToast(toast); }
    static bool isTicking(const AppModel &m) { return m.tickTask_ != 0; }
    static Instant lastSave(const AppModel &m) { return m.lastSave_; }
    static Instant now(const AppModel &m) { return m.now_; }
    static const ShellHistory &history(const AppModel &m) { return m.shell().history(); }
    static std::optional<int64_t> shownValue(const AppModel &m, const QUuid &id)
    {
        const std::optional<TimerItem> timer = m.board_.timer(id);
        return timer ? m.validShown(*timer) : std::nullopt;
    }
};

enum class WithStore { no, yes };

struct ModelFixture {
    VirtualServices v;
    QTemporaryDir dir;
    std::shared_ptr<Store> store;
    UndoManager undo;
    std::unique_ptr<AppModel> model;
    int beeps = 0;
    int startFreshQuestions = 0;
    bool confirmStartFresh = true; // the answer to startFreshRequested
    int exits = 0;

    // Paused timers with these names and elapsed seconds (0 where none is given).
    static Board board(const QStringList &names, const QList<double> &seconds = {})
    {
        Board b;
        for (qsizetype i = 0; i < names.size(); ++i) {
            b.add(names.at(i));
            b.timers.last().accumulated = seconds.value(i, 0);
        }
        return b;
    }

    explicit ModelFixture(WithStore withStore = WithStore::yes, const QStringList &names = {"A", "B", "C"},
                          std::optional<StorageNotice> notice = std::nullopt, const QList<double> &seconds = {})
    {
        if (withStore == WithStore::yes)
            store = std::make_shared<Store>(dir.path(), 5, 600);
        make(board(names, seconds), std::move(notice));
    }

    void make(Board b, std::optional<StorageNotice> notice = std::nullopt,
              std::optional<StyleID> style = std::nullopt)
    {
        model.reset();
        model = std::make_unique<AppModel>(store, std::move(b), style, std::move(notice), v.services(), undo);
        QObject::connect(model.get(), &AppModel::beepRequested, [this] { ++beeps; });
        QObject::connect(&model->shell(), &ShellSession::exitRequested, [this] { ++exits; });
        QObject::connect(model.get(), &AppModel::startFreshRequested, [this] {
            ++startFreshQuestions;
            if (confirmStartFresh)
                model->confirmStartFresh();
        });
    }

    AppModel &m() { return *model; }
    qsizetype count() const { return model->board().timers.size(); }
    QUuid id(qsizetype i) const { return model->board().timers.at(i).id; }
    TimerItem timer(qsizetype i) const { return model->board().timers.at(i); }
    double elapsed(qsizetype i) const { return timer(i).elapsed(v.clock->now()); }
    QStringList names() const
    {
        QStringList out;
        for (const TimerItem &t : model->board().timers)
            out << t.name;
        return out;
    }
    void advance(double seconds) { v.advance(seconds); }
    // The command line's `set`: row i to `seconds`.
    void set(qsizetype i, double seconds) { model->setTime(id(i), seconds); }
    // One whole swipe of row i on a 300-wide row.
    void swipeRow(qsizetype i, double delta)
    {
        model->beginSwipe(id(i));
        model->swipe(delta);
        model->endSwipe(300);
    }
    // A line typed at the prompt and run; returns its output.
    QStringList shell(const QString &line)
    {
        model->shell().setPrompt(line, Text::graphemeCount(line));
        model->shell().promptRun();
        return model->shell().shellOutput();
    }
    // Opens the time edit on a row with an out-of-range minutes field; false if that failed.
    bool openInvalidEdit(qsizetype i)
    {
        model->beginEdit(id(i));
        if (!model->draft())
            return false;
        TimeEditDraft draft = *model->draft();
        draft.set(TimeField::minutes, QStringLiteral("75"));
        model->setDraft(draft);
        return !model->draft()->isValid();
    }

    // What timers.json holds now; absent when it does not exist.
    std::optional<Snapshot> saved() const
    {
        QFile file(store->mainPath());
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        return Snapshot::decode(file.readAll());
    }
};

} // namespace tock

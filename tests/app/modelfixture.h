// A model in virtual time, with or without a real store in a temporary folder, and an undo
// manager attached the way the window attaches its own.
#pragma once

#include "appmodel.h"
#include "shellhistory.h"
#include "snapshot.h"
#include "store.h"
#include "undomanager.h"
#include "virtualservices.h"

#include <QFile>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace tock {

enum class WithStore { no, yes };

struct ModelFixture {
    VirtualServices v;
    QTemporaryDir dir;
    std::shared_ptr<Store> store;
    UndoManager undo;
    std::unique_ptr<AppModel> model;

    static Board board(const QStringList &names)
    {
        Board b;
        for (const QString &name : names)
            b.add(name);
        return b;
    }

    explicit ModelFixture(WithStore withStore = WithStore::yes, const QStringList &names = {"A", "B", "C"},
                          std::optional<StorageNotice> notice = std::nullopt)
    {
        if (withStore == WithStore::yes)
            store = std::make_shared<Store>(dir.path(), 5, 600);
        make(board(names), std::move(notice));
    }

    void make(Board b, std::optional<StorageNotice> notice = std::nullopt,
              std::optional<StyleID> style = std::nullopt)
    {
        model.reset();
        model = std::make_unique<AppModel>(store, std::move(b), style, std::move(notice), v.services());
        model->setUndoManager(&undo);
    }

    AppModel &m() { return *model; }
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
    // The command line's `set`: row i to `seconds` now.
    void set(qsizetype i, double seconds) { model->setTime(id(i), seconds, timer(i), v.clock->now()); }
    // One whole swipe of row i on a 300-wide row.
    void swipeRow(qsizetype i, double delta)
    {
        model->beginSwipe(id(i));
        model->swipe(delta);
        model->endSwipe(300);
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

// Counts every change signal of the model, to prove what did not notify.
class SignalCounter {
public:
    explicit SignalCounter(QObject *object)
    {
        const QMetaObject *meta = object->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            if (method.methodType() == QMetaMethod::Signal && method.parameterCount() == 0)
                spies_.push_back(std::make_unique<QSignalSpy>(object, method));
        }
    }
    // Names of the signals emitted since construction, with repeats.
    QStringList emitted() const
    {
        QStringList out;
        for (const auto &spy : spies_) {
            for (int n = 0; n < spy->count(); ++n)
                out << QString::fromLatin1(spy->signal());
        }
        return out;
    }
    void clear()
    {
        for (const auto &spy : spies_)
            spy->clear();
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> spies_;
};

} // namespace tock

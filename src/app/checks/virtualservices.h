// Services that run in virtual time, for tests, benchmarks and the self-check: a clock that
// moves only when told, a scheduler driven by that clock, and settings kept in memory.
#pragma once

#include "services.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <map>
#include <memory>

namespace tock {

class VirtualClock final : public Clock {
public:
    explicit VirtualClock(Instant start = 1'700'000'000) : now_(start) {}
    // Each read moves the clock on by the drift (0 unless set), so a check can
    // tell one shared instant from several reads.
    Instant now() const override { return now_ += drift_; }
    void set(Instant t) { now_ = t; }
    void advance(double seconds) { now_ += seconds; }
    void setDrift(double seconds) { drift_ = seconds; }

private:
    mutable Instant now_;
    double drift_ = 0;
};

class VirtualScheduler final : public Scheduler {
public:
    struct Task {
        Instant due = 0;
        double interval = 0;  // 0 for a one-off task
        double tolerance = 0;
        std::function<void()> action;
    };

    explicit VirtualScheduler(std::shared_ptr<VirtualClock> clock);

    TaskId after(double seconds, std::function<void()> task) override;
    TaskId every(double interval, double tolerance, std::function<void()> task) override;
    void cancel(TaskId id) override;

    // Moves the clock forward by `seconds`, running every task that falls due on the way in
    // time order (ties in the order scheduled), each with the clock set to its due time.
    // Repeating tasks run as often as they fall due. Tasks scheduled meanwhile take part.
    void advance(double seconds);

    // Pending tasks, for assertions.
    qsizetype pendingCount() const { return qsizetype(tasks_.size()); }
    qsizetype repeatingCount() const;
    QList<Task> tasks() const;
    const Task *task(TaskId id) const;
    const std::shared_ptr<VirtualClock> &clock() const { return clock_; }

private:
    std::shared_ptr<VirtualClock> clock_;
    std::map<TaskId, Task> tasks_;
    TaskId lastId_ = 0;
};

class MemorySettings final : public Settings {
public:
    std::optional<QVariant> value(const QString &key) const override;
    void setValue(const QString &key, const QVariant &value) override;
    void remove(const QString &key) override;

    // Every key written or removed, in order, for checking that nothing was touched.
    const QStringList &writes() const { return writes_; }
    QStringList keys() const { return values_.keys(); }

private:
    QHash<QString, QVariant> values_;
    QStringList writes_;
};

// Everything in virtual time: the clock and scheduler share one VirtualClock.
struct VirtualServices {
    std::shared_ptr<VirtualClock> clock = std::make_shared<VirtualClock>();
    std::shared_ptr<VirtualScheduler> scheduler = std::make_shared<VirtualScheduler>(clock);
    std::shared_ptr<MemorySettings> settings = std::make_shared<MemorySettings>();

    Services services() const;
    void advance(double seconds) { scheduler->advance(seconds); }
};

} // namespace tock

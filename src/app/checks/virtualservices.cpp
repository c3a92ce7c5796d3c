#include "virtualservices.h"

#include "require.h"

#include <algorithm>

namespace tock {

VirtualScheduler::VirtualScheduler(std::shared_ptr<VirtualClock> clock) : clock_(std::move(clock))
{
    TOCK_REQUIRE(clock_ != nullptr, "a virtual scheduler needs a clock");
}

Scheduler::TaskId VirtualScheduler::after(double seconds, std::function<void()> task)
{
    const TaskId id = ++lastId_;
    tasks_.emplace(id, Task{clock_->now() + std::max(0.0, seconds), 0, 0, std::move(task)});
    return id;
}

Scheduler::TaskId VirtualScheduler::every(double interval, double tolerance, std::function<void()> task)
{
    TOCK_REQUIRE(interval > 0, "a repeating task needs a positive interval");
    const TaskId id = ++lastId_;
    tasks_.emplace(id, Task{clock_->now() + interval, interval, tolerance, std::move(task)});
    return id;
}

void VirtualScheduler::cancel(TaskId id)
{
    tasks_.erase(id);
}

void VirtualScheduler::advance(double seconds)
{
    const Instant end = clock_->now() + std::max(0.0, seconds);
    for (;;) {
        // Earliest due first; std::map iterates ids in scheduling order, which breaks ties.
        auto next = tasks_.end();
        for (auto it = tasks_.begin(); it != tasks_.end(); ++it) {
            if (it->second.due <= end && (next == tasks_.end() || it->second.due < next->second.due))
                next = it;
        }
        if (next == tasks_.end())
            break;
        clock_->set(std::max(clock_->now(), next->second.due));
        // Copied: the task may cancel itself or schedule others while it runs.
        const std::function<void()> action = next->second.action;
        if (next->second.interval > 0)
            next->second.due += next->second.interval;
        else
            tasks_.erase(next);
        action();
    }
    clock_->set(std::max(clock_->now(), end));
}

qsizetype VirtualScheduler::repeatingCount() const
{
    return std::count_if(tasks_.begin(), tasks_.end(), [](const auto &t) { return t.second.interval > 0; });
}

QList<VirtualScheduler::Task> VirtualScheduler::tasks() const
{
    QList<Task> out;
    for (const auto &entry : tasks_)
        out.append(entry.second);
    return out;
}

const VirtualScheduler::Task *VirtualScheduler::task(TaskId id) const
{
    const auto it = tasks_.find(id);
    return it == tasks_.end() ? nullptr : &it->second;
}

std::optional<QVariant> MemorySettings::value(const QString &key) const
{
    const auto it = values_.constFind(key);
    if (it == values_.constEnd())
        return std::nullopt;
    return *it;
}

void MemorySettings::setValue(const QString &key, const QVariant &value)
{
    values_.insert(key, value);
    writes_.append(key);
}

void MemorySettings::remove(const QString &key)
{
    values_.remove(key);
    writes_.append(key);
}

Services VirtualServices::services() const
{
    Services s;
    s.clock = clock;
    s.scheduler = scheduler;
    s.settings = settings;
    return s;
}

} // namespace tock

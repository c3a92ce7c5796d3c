// The outside world the application model depends on, behind small interfaces so that the whole
// model runs in virtual time in tests: the clock, the scheduler (the one-second tick and
// cancellable delayed tasks) and the settings store. Real Qt implementations live in
// services.cpp; the checks bring virtual ones.
#pragma once

#include "timer.h"

#include <QMap>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

namespace tock {

class Clock {
public:
    virtual ~Clock() = default;
    virtual Instant now() const = 0;
};

class Scheduler {
public:
    using TaskId = quint64; // 0 is never a valid id
    virtual ~Scheduler() = default;
    // Runs `task` once, `seconds` from now, on the main thread, unless cancelled first.
    virtual TaskId after(double seconds, std::function<void()> task) = 0;
    // Runs `task` every `interval` seconds until cancelled; `tolerance` lets the system coalesce
    // wake-ups.
    virtual TaskId every(double interval, double tolerance, std::function<void()> task) = 0;
    // Safe to call with an id that already ran or was cancelled.
    virtual void cancel(TaskId id) = 0;
};

class Settings {
public:
    virtual ~Settings() = default;
    virtual std::optional<QVariant> value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const QVariant &value) = 0;
    virtual void remove(const QString &key) = 0;
};

// Settings that keep every change in memory until commit(): a terminal run writes the settings
// file once, at its end, however many commands change the history or the style.
class HeldSettings final : public Settings {
public:
    explicit HeldSettings(std::shared_ptr<Settings> inner);
    std::optional<QVariant> value(const QString &key) const override;
    void setValue(const QString &key, const QVariant &value) override;
    void remove(const QString &key) override;
    // Hands the held changes to the inner settings, in one go; values that did not change are
    // not handed on.
    void commit();

private:
    std::shared_ptr<Settings> inner_;
    QMap<QString, std::optional<QVariant>> changes_; // nothing: removed
};

struct Services {
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Scheduler> scheduler;
    std::shared_ptr<Settings> settings;

    // System clock, QTimer-based scheduler and QSettings.
    static Services real();
};

} // namespace tock

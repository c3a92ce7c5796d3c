#include "services.h"

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QSettings>
#include <QTimer>

#include <cmath>

namespace tock {

namespace {

class SystemClock final : public Clock {
public:
    Instant now() const override { return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0; }
};

// Each task is a QTimer owned by the scheduler; a cancelled or finished one is deleted later,
// since a task may cancel itself from inside its own timeout.
class QtScheduler final : public Scheduler {
public:
    ~QtScheduler() override { qDeleteAll(timers_); }

    TaskId after(double seconds, std::function<void()> task) override
    {
        const TaskId id = ++lastId_;
        QTimer *timer = make(id, seconds, Qt::PreciseTimer);
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, timer, [this, id, task = std::move(task)] {
            finish(id);
            task();
        });
        timer->start();
        return id;
    }

    TaskId every(double interval, double tolerance, std::function<void()> task) override
    {
        // Qt cannot take a tolerance; a coarse timer may drift by up to 5% of its interval,
        // which is the same kind of latitude.
        const TaskId id = ++lastId_;
        QTimer *timer = make(id, interval, tolerance > 0 ? Qt::CoarseTimer : Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, timer, [task = std::move(task)] { task(); });
        timer->start();
        return id;
    }

    void cancel(TaskId id) override
    {
        if (QTimer *timer = timers_.take(id)) {
            timer->stop();
            timer->deleteLater();
        }
    }

private:
    QTimer *make(TaskId id, double seconds, Qt::TimerType type)
    {
        auto *timer = new QTimer;
        timer->setTimerType(type);
        timer->setInterval(int(std::lround(std::max(0.0, seconds) * 1000)));
        timers_.insert(id, timer);
        return timer;
    }

    void finish(TaskId id)
    {
        if (QTimer *timer = timers_.take(id))
            timer->deleteLater();
    }

    TaskId lastId_ = 0;
    QHash<TaskId, QTimer *> timers_;
};

class QtSettings final : public Settings {
public:
    std::optional<QVariant> value(const QString &key) const override
    {
        if (!settings_.contains(key))
            return std::nullopt;
        return settings_.value(key);
    }
    void setValue(const QString &key, const QVariant &value) override { settings_.setValue(key, value); }
    void remove(const QString &key) override { settings_.remove(key); }

private:
    QSettings settings_{QStringLiteral("Tock"), QStringLiteral("Tock")};
};

} // namespace

HeldSettings::HeldSettings(std::shared_ptr<Settings> inner) : inner_(std::move(inner)) {}

std::optional<QVariant> HeldSettings::value(const QString &key) const
{
    const auto held = changes_.constFind(key);
    return held != changes_.cend() ? *held : inner_->value(key);
}

void HeldSettings::setValue(const QString &key, const QVariant &value) { changes_.insert(key, value); }

void HeldSettings::remove(const QString &key) { changes_.insert(key, std::nullopt); }

void HeldSettings::commit()
{
    for (auto it = changes_.cbegin(); it != changes_.cend(); ++it) {
        // A value set to what it was already does not rewrite the settings file.
        if (inner_->value(it.key()) == *it)
            continue;
        if (*it)
            inner_->setValue(it.key(), **it);
        else
            inner_->remove(it.key());
    }
    changes_.clear();
}

Services Services::real()
{
    Services services;
    services.clock = std::make_shared<SystemClock>();
    services.scheduler = std::make_shared<QtScheduler>();
    services.settings = std::make_shared<QtSettings>();
    return services;
}

} // namespace tock

// The schedulers every model test and the real window rely on: virtual time must run tasks in
// time order exactly as often as they fall due, and the Qt scheduler must survive a task that
// cancels itself.
#include "services.h"
#include "virtualservices.h"

#include <QCoreApplication>
#include <QTest>

using namespace tock;

class ServicesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void virtualTasksRunInTimeOrderAndMayScheduleAndCancel()
    {
        VirtualServices v;
        const Instant start = v.clock->now();
        QStringList log;
        auto note = [&](const QString &what) {
            return [&, what] { log << QStringLiteral("%1@%2").arg(what).arg(v.clock->now() - start); };
        };
        int ticks = 0;
        Scheduler::TaskId tick = 0;
        tick = v.scheduler->every(1.0, 0.1, [&] {
            note("tick")();
            if (++ticks == 3)
                v.scheduler->cancel(tick); // from inside its own run
        });
        v.scheduler->after(0.5, [&] { v.scheduler->after(0.25, note("chained")); });
        v.scheduler->after(2.0, note("two")); // ties run in scheduling order: after the tick
        const Scheduler::TaskId cancelled = v.scheduler->after(1.5, note("never"));
        v.scheduler->cancel(cancelled);
        v.scheduler->cancel(cancelled); // harmless twice
        v.advance(10);
        QCOMPARE(log, (QStringList{"chained@0.75", "tick@1", "tick@2", "two@2", "tick@3"}));
        QCOMPARE(v.clock->now(), start + 10);
        QCOMPARE(v.scheduler->pendingCount(), 0);
    }

    void qtSchedulerRunsOnceAndSurvivesSelfCancel()
    {
        const Services real = Services::real();
        int once = 0;
        int repeated = 0;
        int cancelledRuns = 0;
        real.scheduler->after(0, [&] { ++once; });
        const Scheduler::TaskId cancelled = real.scheduler->after(0, [&] { ++cancelledRuns; });
        real.scheduler->cancel(cancelled);
        Scheduler::TaskId repeating = 0;
        repeating = real.scheduler->every(0, 0, [&] {
            if (++repeated == 2)
                real.scheduler->cancel(repeating);
        });
        // Zero-interval timers fire on every pass of the event loop: no waiting needed.
        for (int pass = 0; pass < 50; ++pass)
            QCoreApplication::processEvents();
        QCOMPARE(once, 1);
        QCOMPARE(repeated, 2);
        QCOMPARE(cancelledRuns, 0);
        real.scheduler->cancel(repeating); // already gone: harmless
    }
};

QTEST_GUILESS_MAIN(ServicesTest)
#include "services_test.moc"

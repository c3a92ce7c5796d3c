// What the application tests add to the shared fixture: QtTest and a counter of change signals.
#pragma once

#include "boardchangetext.h"
#include "modelfixture.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <vector>

namespace tock {

// Counts every signal of the model, to prove what did not notify.
class SignalCounter {
public:
    explicit SignalCounter(QObject *object)
    {
        const QMetaObject *meta = object->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            if (method.methodType() == QMetaMethod::Signal)
                spies_.push_back(std::make_unique<QSignalSpy>(object, method));
        }
    }
    // Names of the signals emitted since construction, with repeats.
    QStringList emitted() const
    {
        QStringList out;
        for (const auto &spy : spies_) {
            for (int n = 0; n < spy->count(); ++n)
                out << QString::fromLatin1(spy->signal()).section(QLatin1Char('('), 0, 0);
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

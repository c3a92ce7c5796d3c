// The built-in application checks (`tock --selftest`): real application models driven through
// named scenarios in virtual time. They never touch the data folder or the user's settings:
// models run without a store, or with one in a temporary folder, and with in-memory settings.
#pragma once

#include <QList>
#include <QString>
#include <QTextStream>

namespace tock::SelfTest {

struct Outcome {
    QString name;
    QString failure; // empty when the scenario passed
    bool passed() const { return failure.isEmpty(); }
    bool operator==(const Outcome &) const = default;
};

// Every scenario, in a fixed order.
QList<Outcome> runAll();

// Prints one line per scenario, then "app checks passed" or "app checks failed". Returns the
// process exit status: 0 when every scenario passed, 1 otherwise.
int run(QTextStream &out);

} // namespace tock::SelfTest

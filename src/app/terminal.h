// Tock in a terminal (`tock --shell [LINE...]`): the same model, store, lock and command
// language as the window, driven line by line. Every line runs through the shell session exactly
// as if typed and Return pressed, so history, undo and output are the window's. Output lines go to
// standard output, error lines to standard error.
#pragma once

#include "services.h"
#include "terminalsession.h"

#include <QStringList>
#include <QTextStream>

namespace tock {

// The whole terminal mode over the data folder Store::defaultDirectory() with the real
// services: each of `lines` is one command line; with none, standard input is read inside the
// event loop (so the tick and debounced saves keep working) until its end or `exit`. When
// standard input is a terminal it shows a prompt and the timers after each command. At the
// end all timers pause and the board is saved. Needs a QCoreApplication.
int runTerminal(const QStringList &lines);
// The same over any folder and services, printing to the given streams (tests use this with
// virtual services and a temporary folder).
int runTerminal(const QStringList &lines, const QString &directory, const Services &services, QTextStream &out,
                QTextStream &err);

} // namespace tock

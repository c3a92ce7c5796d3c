// One terminal's run of command lines against a model: what it prints after each line, the
// notices in a terminal's words, and the exit statuses of the terminal mode.
#pragma once

#include "appmodel.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

namespace tock {

class Store;

// Runs lines against one model and reports them. Holds no state of its own beyond what it
// printed and whether everything succeeded.
class TerminalSession {
public:
    enum class Echo { outputOnly, withTimers }; // withTimers: list the timers after each line

    TerminalSession(AppModel &model, QTextStream &out, QTextStream &err, Echo echo = Echo::outputOnly);

    // Runs `line` as typed at the prompt; prints its output. False when it failed.
    bool run(const QString &line);
    // The timers as the window lists them: position, name, time, running or paused.
    void printTimers(Instant now);
    // A storage notice in the terminal's words, on standard error.
    void printNotice(const StorageNotice &notice);
    // Those words, for the data folder of `store` (none: "the Tock data folder").
    static QStringList noticeLines(const StorageNotice &notice, const Store *store);
    // Why nothing was saved while saving is paused (unreadable data, an unarchived damaged file).
    static QString pausedMessage(const Store &store);
    void printPrompt();
    // The data folder the session saves to, for the notices' words; none without a store.
    void setStore(const Store *store) { store_ = store; }
    // At the end: when a command changed the timers but saving is paused, says so on standard
    // error and fails the run.
    void reportUnsavedChanges();
    // Printing stops for good on a stream whose write failed (a closed pipe); the commands keep
    // running and saving.
    void print(QTextStream &stream, const QString &text);

    // `exit` was run.
    bool exitRequested() const { return exitRequested_; }
    // No line failed and no save failed so far.
    bool succeeded() const { return succeeded_; }
    void markFailed() { succeeded_ = false; }

private:
    const Store *store_ = nullptr;
    AppModel &model_;
    QTextStream &out_;
    QTextStream &err_;
    Echo echo_;
    bool exitRequested_ = false;
    bool succeeded_ = true;
    bool changed_ = false;
};

// What the terminal prints when a change it made is not on disk (the notice of the failed save,
// or why saving is paused); empty when every change of `model` is saved. The window sends the
// same lines back to a `tock --shell` whose command it could not save.
QStringList unsavedChangeLines(const AppModel &model);

// Exit statuses of the terminal mode.
namespace TerminalStatus {
inline constexpr int succeeded = 0;
inline constexpr int failed = 1;        // some command failed, a change was not saved, or the folder cannot be used
inline constexpr int alreadyRunning = 3; // another copy holds the data folder; nothing touched
}

} // namespace tock

// Start-up without windows: which mode the command line asks for, and the launch sequence that
// ties the single-instance lock, the store and the application model together from the first
// file read to the last save. The window and the terminal both run their session through
// AppSession, so they lock, load, start and end in exactly the same way.
#pragma once

#include "appmodel.h"
#include "instancelock.h"
#include "services.h"
#include "store.h"
#include "styleid.h"
#include "undomanager.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <variant>

namespace tock {

// What the command line asks for. The switches are examined in case order and the first that
// applies wins; one whose arguments are missing or invalid is ignored and start-up goes on.
struct StartupMode {
    // --bench STYLE N X: a style's raw value, a decimal integer, a decimal number.
    struct Bench {
        StyleID style = StyleID::classic;
        int64_t count = 0;
        double value = 0;
        bool operator==(const Bench &) const = default;
    };
    struct FlipDemo {
        bool operator==(const FlipDemo &) const = default;
    };
    struct SelfTest {
        bool operator==(const SelfTest &) const = default;
    };
    // --screenshots DIR.
    struct Screenshots {
        QString directory;
        bool operator==(const Screenshots &) const = default;
    };
    // --shell [LINE...]: each later argument is one command line; none means standard input.
    struct Shell {
        QStringList lines;
        bool operator==(const Shell &) const = default;
    };
    // --report [RANGE]: the history by day; RANGE as typed (checked by the report).
    struct Report {
        QString range;
        bool operator==(const Report &) const = default;
    };
    // --export FORMAT [RANGE]: every interval and adjustment; both as typed.
    struct Export {
        QString format;
        QString range;
        bool operator==(const Export &) const = default;
    };
    // No switch applies: the normal start.
    struct Normal {
        bool operator==(const Normal &) const = default;
    };
    std::variant<Bench, FlipDemo, SelfTest, Screenshots, Shell, Report, Export, Normal> value;
    bool operator==(const StartupMode &) const = default;

    // `arguments` without the program name. Everything after --shell belongs to it, so a
    // command line that looks like a switch is still a command line.
    static StartupMode parse(const QStringList &arguments);
};

// The model's starting values for a load result (what the launch builds the model from).
struct StartingValues {
    Board board;
    std::optional<StyleID> style;
    std::optional<StorageNotice> notice;
    bool operator==(const StartingValues &) const = default;

    // `awaitingArchive` is the store's state after the load: a recovery whose damaged files
    // could not be archived shows why nothing is being saved instead of the plain recovery.
    static StartingValues from(const Store::LoadResult &result, bool awaitingArchive);
};

// One launch of the application over a data folder: the lock, the store, the model and the
// undo manager, from start() to end(). Holding the lock is what allows every file access.
class AppSession {
public:
    enum class Start {
        started,
        alreadyRunning,  // another copy holds the lock; nothing touched
        cannotUseFolder, // the lock file cannot be opened (see lock().reason()); nothing read
    };

    // Touches no file. `directory` is the data folder (normally Store::defaultDirectory());
    // `pacing` when the store rotates its backups (the window: perRun).
    AppSession(QString directory, Services services, Store::BackupPacing pacing = Store::BackupPacing::perRun);
    // Ends the session if it was started and not ended yet.
    ~AppSession();
    AppSession(const AppSession &) = delete;
    AppSession &operator=(const AppSession &) = delete;

    // Takes the lock (alreadyRunning or cannotUseFolder, touching nothing else, when it cannot),
    // removes temporary files a killed copy left, then creates the store, loads, builds the
    // model with the undo manager and makes the start's backup rotation (an error there is
    // ignored).
    Start start();
    // Opens history.db and records every later edit of the board in it, after bringing it in
    // line with the board. A damaged history is set aside and a new one started; any problem
    // goes to the storage banner, never stops the timers. The window calls this after its first
    // frame, so launching does not wait for it; the terminal right after start(). Nothing while
    // saving is paused (unreadable data, a damaged file not yet archived).
    void openHistory(HistoryRecorder::Check check);
    // The end of the application: finishes an open time edit, pauses every timer (which saves)
    // and releases the lock. Safe to call more than once.
    void end();

    // Present between a successful start() and the session's destruction.
    AppModel *model() const { return model_.get(); }
    Store *store() const { return store_.get(); }
    UndoManager *undoManager() const { return undo_.get(); }
    const InstanceLock &lock() const { return lock_; }
    const QString &directory() const { return directory_; }
    const Services &services() const { return services_; }
    // The notice the model started with, if any (the terminal prints it).
    const std::optional<StorageNotice> &startingNotice() const { return startingNotice_; }

private:
    QString directory_;
    Services services_;
    Store::BackupPacing pacing_;
    InstanceLock lock_;
    std::shared_ptr<Store> store_;
    std::unique_ptr<UndoManager> undo_;
    std::unique_ptr<AppModel> model_;
    std::optional<StorageNotice> startingNotice_;
    std::optional<Instant> lastSaved_; // when the loaded timers.json was written
    bool ended_ = false;
};

// The two lines shown when another copy holds the data folder.
QString alreadyRunningTitle();
QString alreadyRunningText();
// The two lines shown when another copy holds the data folder but no private folder for the
// control socket can be had (`problem` says why), so commands cannot be passed to it.
QString cannotReachTitle();
QString cannotReachText(const QString &problem);
// The two lines shown when the lock file in `directory` cannot be opened, for the system's
// `reason`.
QString cannotUseFolderTitle();
QString cannotUseFolderText(const QString &directory, const QString &reason);

} // namespace tock

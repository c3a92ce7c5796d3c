// The one object every user action goes through. It owns the board, the style, the zoom and all
// transient interface state, runs the once-a-second tick and the debounced save, and keeps undo
// and toasts consistent. Views and the terminal read its state and call its operations; nothing
// else changes the board. Every published field has a change signal; the board's says which
// timers were inserted, removed, moved or changed. The tick changes only DisplayTick, so only
// the time displays repaint once a second. Questions, beeps and the shell's exit are signals the
// window or the terminal answers, so no model call waits on the user.
#pragma once

#include "board.h"
#include "boardchange.h"
#include "historyrecorder.h"
#include "services.h"
#include "shellsession.h"
#include "styleid.h"
#include "timeedit.h"
#include "undoentry.h"
#include "undomanager.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace tock {

class Store;
class ShellSession;

// The storage banner.
struct StorageNotice {
    struct Recovered {
        QString from; // the backup's file name, e.g. "timers-2.json"
        bool operator==(const Recovered &) const = default;
    };
    struct Unreadable {
        QStringList reasons;
        bool operator==(const Unreadable &) const = default;
    };
    struct SaveFailed {
        QString message;
        bool timersSaved = false; // only the backups failed: timers.json was written
        bool operator==(const SaveFailed &) const = default;
    };
    // The history could not be used: set aside as damaged (`setAsideTo`) or not recording.
    struct History {
        std::optional<QString> setAsideTo;
        QString message;
        bool operator==(const History &) const = default;
    };
    std::variant<Recovered, Unreadable, SaveFailed, History> value;

    static StorageNotice recovered(QString from) { return {Recovered{std::move(from)}}; }
    static StorageNotice unreadable(QStringList reasons) { return {Unreadable{std::move(reasons)}}; }
    static StorageNotice saveFailed(QString message, bool timersSaved = false)
    {
        return {SaveFailed{std::move(message), timersSaved}};
    }
    static StorageNotice history(std::optional<QString> setAsideTo, QString message)
    {
        return {History{std::move(setAsideTo), std::move(message)}};
    }
    bool isSaveFailed() const { return std::holds_alternative<SaveFailed>(value); }
    // A save failed and the timers on disk are not the ones shown (not only the backups).
    bool changesUnsaved() const
    {
        const auto *failed = std::get_if<SaveFailed>(&value);
        return failed && !failed->timersSaved;
    }

    QString title() const;  // "Restored from backup", ...
    QString detail() const; // the banner's detail line

    bool operator==(const StorageNotice &) const = default;
};

// The transient undo message shown after a reset or deletion.
struct Toast {
    QUuid id;        // fresh per toast
    UndoEntry entry; // what the undo button reverts
    QUuid token;     // the undo step registered for the same action
    bool operator==(const Toast &) const = default;
};

// The shared redraw signal of the running time displays.
class DisplayTick : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    qint64 tick() const { return tick_; }
    void advance()
    {
        ++tick_;
        Q_EMIT tickChanged(tick_);
    }
    // A running timer's shown second changed, whether or not the window can be seen.
    void announceSeconds() { Q_EMIT secondsChanged(); }
Q_SIGNALS:
    // The window's time displays redraw on this; it pauses while the window is hidden.
    void tickChanged(qint64 tick);
    // At most once a tick, also while the window is hidden: for what shows the times outside
    // the window (the panel indicator).
    void secondsChanged();

private:
    qint64 tick_ = 0;
};

// The text shown when recovery could not archive the damaged file.
QString archiveFailedMessage();

// A question with two buttons for the window to ask.
struct Confirmation {
    QString title;
    QString text;
    QString confirmButton;
    QString cancelButton;
    bool operator==(const Confirmation &) const = default;
};

class AppModel : public QObject {
    Q_OBJECT
public:
    static constexpr double revealWidth = 84;
    static constexpr std::array<double, 9> zoomSteps{0.7, 0.8, 0.9, 1.0, 1.1, 1.25, 1.4, 1.6, 1.8};
    static constexpr double defaultZoom = 0.8;

    // `store` may be null (screenshots, checks, tests): then nothing ticks, saves or writes
    // settings, and the zoom is 1.0. `style` is an explicit override. `services` must be
    // complete; `undo` must outlive the model.
    AppModel(std::shared_ptr<Store> store, Board board, std::optional<StyleID> style,
             std::optional<StorageNotice> notice, Services services, UndoManager &undo,
             QObject *parent = nullptr);
    ~AppModel() override;

    // Published state.
    const Board &board() const { return board_; }
    StyleID style() const { return style_; }
    double zoom() const { return zoom_; }
    double screenHeight() const { return screenHeight_; }
    std::optional<QUuid> editingID() const { return editingID_; }
    std::optional<QUuid> hoveredID() const { return hoveredID_; }
    std::optional<QUuid> swipeID() const { return swipeID_; }
    double swipeOffset() const { return swipeOffset_; }
    std::optional<QUuid> revealedID() const { return revealedID_; }
    std::optional<QUuid> nameFocusID() const { return nameFocusID_; }
    const std::optional<TimeEditDraft> &draft() const { return draft_; }
    bool styleMenuOpen() const { return styleMenuOpen_; }
    const std::optional<Toast> &toast() const { return toast_; }
    const std::optional<StorageNotice> &notice() const { return notice_; }
    bool isEditingName() const { return isEditingName_; }

    // Plain state.
    DisplayTick *displayTick() const { return displayTick_; }
    // The prompt, its history and output; lines typed there run through the model's actions.
    ShellSession &shell() const { return *shell_; }
    UndoManager &undoManager() const { return undo_; }
    // A time edit is open (editingID and draft both set).
    bool isEditOpen() const { return editingID_.has_value() && draft_.has_value(); }
    // What a time display shows: a running timer's shown second, else its exact whole seconds
    // at the last action or tick; 0 for an unknown id.
    int64_t displayedSeconds(const QUuid &id) const;
    double rowOffset(const QUuid &id) const;
    // What the window asks after startFreshRequested().
    static Confirmation startFreshQuestion();

    // Setters for state the views and the delegate own. Each notifies only on change.
    void setStyle(StyleID style);      // writes "style" when there is a store
    void setZoom(double zoom);         // writes "zoom" when there is a store
    void setScreenHeight(double height);
    void setHoveredID(std::optional<QUuid> id);
    void setNameFocusID(std::optional<QUuid> id);
    void setStyleMenuOpen(bool open);
    void setIsEditingName(bool editing);
    void setWindowVisible(bool visible);
    // One tick now. A model without a store never ticks by itself; the rendering benchmark
    // drives one with this from a one-second timer.
    void tick() { onTick(); }
    // The mask view edits the open draft through this; ignored when no edit is open.
    void setDraft(const TimeEditDraft &draft);
    // The user cancelled the time edit: closes it without applying.
    void cancelEdit();
    // A click on a name: commits an open time edit first; false (the click is refused, the
    // edit stays open) when that edit is invalid.
    bool commitEditForNameClick();

    // Actions (ids are timer ids; unknown ids do nothing).
    // Without a name the new timer gets the next default name and its name field the focus.
    void addTimer(std::optional<QString> name = std::nullopt);
    void toggle(const QUuid &id);
    // Starts (or pauses) those of `ids` not yet in that state, at one shared instant; returns
    // the ids it changed, in the order given.
    QList<QUuid> setRunning(const QList<QUuid> &ids, bool running);
    void pauseAll();
    void reset(const QUuid &id);
    void deleteTimer(const QUuid &id); // `delete` in the design; reserved in C++
    bool deleteHovered();
    void rename(const QUuid &id, const QString &name);
    void moveTimer(const QUuid &id, qsizetype position);
    void beginEdit(const QUuid &id);
    bool commitEdit();
    // Sets the elapsed time (clamped to what can be shown); undoable as "Set Time".
    void setTime(const QUuid &id, double seconds);
    void zoomIn();
    void zoomOut();
    void zoomReset();
    void toggleLarge();
    void beginSwipe(const QUuid &id);
    void swipe(double delta);
    void endSwipe(double rowWidth);
    void closeReveal();
    void dismissNotice();
    // The unreadable banner's button: asks through startFreshRequested().
    void startFreshAfterUnreadable();
    // The user confirmed: sets the unreadable data aside and saves.
    void confirmStartFresh();
    // Every later edit of the board is recorded in `history` (null: nothing is). A failed write
    // stops the recording for the rest of the run and says so in the storage banner.
    void setHistory(std::shared_ptr<HistoryRecorder> history);
    HistoryRecorder *historyRecorder() const { return recorder_.get(); }
    // The instant by the model's clock (virtual in tests and still renders), for views that
    // compute from the history.
    Instant now() const { return currentTime(); }
    // A history problem for the storage banner; an unreadable or unsaved timers notice, which
    // asks the user to act, is not covered by it.
    void showHistoryNotice(const StorageNotice &notice);
    // The save-failed banner's Retry: saves now; after the data folder was lost, first takes
    // its lock again (Store::retakeFolder).
    void retrySave();
    // Saves now what is not saved yet, and checks that the data folder is still the one locked
    // (a script's command is answered only after this). True when every change is on disk.
    bool saveNow();
    // Some change to the board or the style is not on disk: the last save failed, saving is
    // paused, or the folder was lost (or a debounced save is still pending).
    bool hasUnsavedChanges() const { return unsaved_; }
    // Why changes are not saved, for "Quit without saving?"; nothing when all are saved.
    std::optional<QString> unsavedReason() const;
    const Store *store() const { return store_.get(); }
    void undoToast();

Q_SIGNALS:
    // Once per edit, only when some timer was inserted, removed, moved or changed.
    void boardChanged(const tock::BoardChange &change);
    // The history started or stopped recording (setHistory, a failed write).
    void historyChanged();
    void beepRequested();
    void startFreshRequested(); // ask startFreshQuestion(); "Start Fresh" calls confirmStartFresh()
    void styleChanged();
    void zoomChanged();
    void screenHeightChanged();
    void editingIDChanged();
    void hoveredIDChanged();
    void swipeIDChanged();
    void swipeOffsetChanged();
    void revealedIDChanged();
    void nameFocusIDChanged();
    void draftChanged();
    void styleMenuOpenChanged();
    void toastChanged();
    void noticeChanged();
    void isEditingNameChanged();

private:
    friend struct ModelProbe; // the checks' window onto the tick, the toast and saving
    friend class ShellSession; // reads the clock and saves the history like the model

    // Which whole second a running timer's display last showed, and for which run.
    struct Shown {
        int64_t value = 0;
        std::optional<Instant> startedAt;
        double accumulated = 0;
    };
    enum class Persist { debounced, now };

    // The one edit path: `edit` changes a copy of the board; then the model records it in the
    // history (at `at`, the instant the edit used, else now), publishes it, says what changed,
    // starts or stops the tick and saves if the board differs. Returns what `edit` returned.
    template <typename Edit>
    auto editBoard(Edit &&edit, Persist persist = Persist::debounced, std::optional<Instant> at = std::nullopt,
                   HistoryCause cause = HistoryCause::edit)
    {
        Board next = board_;
        if constexpr (std::is_void_v<decltype(edit(next))>) {
            edit(next);
            replaceBoard(std::move(next), persist, at, cause);
        } else {
            auto result = edit(next);
            replaceBoard(std::move(next), persist, at, cause);
            return result;
        }
    }
    void replaceBoard(Board next, Persist persist, std::optional<Instant> at, HistoryCause cause);

    std::optional<int64_t> validShown(const TimerItem &timer) const;
    Instant currentTime() const;
    void markDirty();
    void save();
    void updateTicking();
    void onTick();
    void setEditing(std::optional<QUuid> id, std::optional<TimeEditDraft> draft);
    void setSwipe(std::optional<QUuid> id, double offset);
    void setRevealedID(std::optional<QUuid> id);
    void setToast(std::optional<Toast> toast);
    void setNotice(std::optional<StorageNotice> notice);
    // `task` run later on the main thread, unless this model is gone by then.
    Scheduler::TaskId schedule(double seconds, std::function<void(AppModel &)> task);
    void cancelTask(Scheduler::TaskId &task);

    // Undo and toasts.
    void registerStep(const QString &name, const QUuid &token, std::function<void(AppModel &)> action);
    void registerUndo(const UndoEntry &entry);
    void performUndo(const UndoEntry &entry, const QUuid &token);
    void showToast(const Toast &toast);

    Services services_;
    std::shared_ptr<Store> store_;
    UndoManager &undo_;
    std::shared_ptr<HistoryRecorder> recorder_;

    // Published.
    Board board_;
    StyleID style_ = StyleID::classic;
    double zoom_ = 1.0;
    double screenHeight_ = 800;
    std::optional<QUuid> editingID_;
    std::optional<QUuid> hoveredID_;
    std::optional<QUuid> swipeID_;
    double swipeOffset_ = 0;
    std::optional<QUuid> revealedID_;
    std::optional<QUuid> nameFocusID_;
    std::optional<TimeEditDraft> draft_;
    bool styleMenuOpen_ = false;
    std::optional<Toast> toast_;
    std::optional<StorageNotice> notice_;
    bool isEditingName_ = false;

    // Plain.
    Instant now_ = 0;
    DisplayTick *displayTick_ = nullptr; // owned as a QObject child
    Scheduler::TaskId tickTask_ = 0;
    QHash<QUuid, Shown> shown_;
    bool windowVisible_ = true;
    Scheduler::TaskId saveWork_ = 0;
    bool unsaved_ = false;
    Instant lastSave_ = -1e18; // the distant past
    Scheduler::TaskId toastWork_ = 0;
    Scheduler::TaskId swipeWork_ = 0;
    ShellSession *shell_ = nullptr; // owned as a QObject child
    // Deferred tasks check this so they do nothing once the model is gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace tock

Q_DECLARE_METATYPE(tock::BoardChange)

#include "appmodel.h"

#include "shellhistory.h"
#include "snapshot.h"
#include "store.h"
#include "text.h"
#include "timevalues.h"

#include <QPointer>
#include <QSet>
#include "require.h"
#include "undomanager.h"

#include <algorithm>
#include <cmath>
#include <exception>

namespace tock {

namespace {

const QString zoomKey = QStringLiteral("zoom");
const QString zoomDefaultKey = QStringLiteral("zoomDefaultV3");
const QString styleKey = QStringLiteral("style");

constexpr double tickInterval = 1.0;
constexpr double tickTolerance = 0.1;
constexpr double saveDebounce = 0.3;
constexpr double saveFromTickAfter = 0.9;
constexpr double toastLifetime = 12;
constexpr double slideOutDelay = 0.14;
constexpr double revealThreshold = 36;

const QString moveActionName = QStringLiteral("Move Timer");
const QString setTimeActionName = QStringLiteral("Set Time");

// Assigns and emits `signal` only when the value really changes.
template <typename T, typename Signal>
bool publish(AppModel *model, T &field, T value, Signal signal)
{
    if (field == value)
        return false;
    field = std::move(value);
    Q_EMIT(model->*signal)();
    return true;
}

} // namespace

QString archiveFailedMessage()
{
    return QStringLiteral(
        "Tock restored your timers from a backup but could not archive the damaged data file, so "
        "nothing is being saved yet (to keep that file). Check disk space and permissions of the "
        "Tock data folder, then press Retry.");
}

QString StorageNotice::title() const
{
    if (std::holds_alternative<Recovered>(value))
        return QStringLiteral("Restored from backup");
    if (std::holds_alternative<Unreadable>(value))
        return QStringLiteral("Saved timers could not be read");
    if (const auto *failed = std::get_if<SaveFailed>(&value); failed && failed->timersSaved)
        return QStringLiteral("Backups are not being refreshed");
    if (const auto *h = std::get_if<History>(&value))
        return h->setAsideTo ? QStringLiteral("History started anew") : QStringLiteral("History is not being recorded");
    return QStringLiteral("Changes are not being saved");
}

QString StorageNotice::detail() const
{
    if (const auto *r = std::get_if<Recovered>(&value))
        return QStringLiteral("The main data file was damaged. Tock loaded ") + r->from
             + QStringLiteral(" instead and kept the damaged file in the Damaged folder.");
    if (const auto *u = std::get_if<Unreadable>(&value)) {
        QString text = QStringLiteral("Nothing has been overwritten and saving is paused. ");
        if (!u->reasons.isEmpty())
            text += u->reasons.first();
        return text;
    }
    if (const auto *h = std::get_if<History>(&value)) {
        if (h->setAsideTo)
            return QStringLiteral("history.db could not be read, so Tock moved it to %1 and started a new one. "
                                  "Your timers are not affected.").arg(*h->setAsideTo);
        return QStringLiteral("Your timers are saved, but their history is not: %1").arg(h->message);
    }
    return std::get<SaveFailed>(value).message;
}

// ---------------------------------------------------------------------------------------------
// Construction

AppModel::AppModel(std::shared_ptr<Store> store, Board board, std::optional<StyleID> style,
                   std::optional<StorageNotice> notice, Services services, UndoManager &undo, QObject *parent)
    : QObject(parent), services_(std::move(services)), store_(std::move(store)), undo_(undo)
{
    TOCK_REQUIRE(services_.clock && services_.scheduler && services_.settings, "the model needs every service");

    // 1. The time of construction and a fresh redraw signal.
    now_ = currentTime();
    displayTick_ = new DisplayTick(this);

    // 2. The zoom; the first run of this version drops any older zoom for the new default.
    Settings &settings = *services_.settings;
    if (store_ && !settings.value(zoomDefaultKey)) {
        settings.remove(zoomKey);
        settings.setValue(zoomDefaultKey, true);
    }
    zoom_ = defaultZoom;
    if (const std::optional<QVariant> stored = settings.value(zoomKey)) {
        bool ok = false;
        const double z = stored->toDouble(&ok);
        if (ok && z > 0 && std::isfinite(z))
            zoom_ = z;
    }

    // 3. Transient state keeps its declared initial values.

    // 4. The command history.
    QStringList entries;
    if (const std::optional<QVariant> stored = settings.value(ShellHistory::settingsKey()))
        entries = stored->toStringList();
    shell_ = new ShellSession(*this, entries);

    // 5. What was loaded.
    board_ = std::move(board);
    notice_ = std::move(notice);

    // 6. The style: explicit, else the setting, else the default.
    if (style) {
        style_ = *style;
    } else if (const std::optional<QVariant> stored = settings.value(styleKey)) {
        style_ = StyleIDs::fromRawValue(stored->toString()).value_or(StyleID::classic);
    }

    // 7. Only a model with a store ticks; without one the zoom is the plain size.
    if (!store_)
        zoom_ = 1.0;
    else
        updateTicking();
}

AppModel::~AppModel()
{
    cancelTask(tickTask_);
    cancelTask(saveWork_);
    cancelTask(toastWork_);
    cancelTask(swipeWork_);
}

Instant AppModel::currentTime() const
{
    return services_.clock->now();
}

Scheduler::TaskId AppModel::schedule(double seconds, std::function<void(AppModel &)> task)
{
    // The scheduler may outlive the model; the weak flag makes a late task a no-op.
    return services_.scheduler->after(seconds, [this, alive = std::weak_ptr<bool>(alive_),
                                                task = std::move(task)] {
        if (alive.lock())
            task(*this);
    });
}

void AppModel::cancelTask(Scheduler::TaskId &task)
{
    if (task != 0) {
        services_.scheduler->cancel(task);
        task = 0;
    }
}

// ---------------------------------------------------------------------------------------------
// Publishing

void AppModel::replaceBoard(Board next, Persist persist, std::optional<Instant> at, HistoryCause cause)
{
    if (recorder_) {
        try {
            recorder_->record(board_, next, at ? *at : currentTime(), cause);
        } catch (const HistoryError &error) {
            // The timers come first: the edit goes ahead unrecorded, and so does the rest of the run.
            recorder_.reset();
            showHistoryNotice(StorageNotice::history(std::nullopt, error.message));
        }
    }
    const BoardChange change = BoardChange::between(board_, next);
    // A pause-all with nothing running changes only the pause history: saved, but no row moves.
    const bool differs = next != board_;
    board_ = std::move(next);
    // The tick first, so a view that repaints on the signal reads settled display values.
    updateTicking();
    if (!change.isEmpty())
        Q_EMIT boardChanged(change);
    if (persist == Persist::now) {
        unsaved_ = unsaved_ || (differs && store_);
        save();
    } else if (differs) {
        markDirty();
    }
}

void AppModel::setEditing(std::optional<QUuid> id, std::optional<TimeEditDraft> draft)
{
    // Both change before either signal, so an observer never sees half an edit.
    const bool idChanged = editingID_ != id;
    const bool draftChanged = draft_ != draft;
    editingID_ = id;
    draft_ = std::move(draft);
    if (draftChanged)
        Q_EMIT this->draftChanged();
    if (idChanged)
        Q_EMIT editingIDChanged();
}

void AppModel::setSwipe(std::optional<QUuid> id, double offset)
{
    publish(this, swipeID_, id, &AppModel::swipeIDChanged);
    publish(this, swipeOffset_, offset, &AppModel::swipeOffsetChanged);
}

void AppModel::setRevealedID(std::optional<QUuid> id)
{
    publish(this, revealedID_, id, &AppModel::revealedIDChanged);
}

void AppModel::setToast(std::optional<Toast> toast)
{
    publish(this, toast_, std::move(toast), &AppModel::toastChanged);
}

void AppModel::setNotice(std::optional<StorageNotice> notice)
{
    publish(this, notice_, std::move(notice), &AppModel::noticeChanged);
}

void AppModel::setStyle(StyleID style)
{
    if (!publish(this, style_, style, &AppModel::styleChanged))
        return;
    if (store_)
        services_.settings->setValue(styleKey, StyleIDs::rawValue(style));
    // The data file carries the style too, and start-up prefers it to the setting.
    markDirty();
}

void AppModel::setZoom(double zoom)
{
    if (!publish(this, zoom_, zoom, &AppModel::zoomChanged))
        return;
    if (store_)
        services_.settings->setValue(zoomKey, zoom);
}

void AppModel::setScreenHeight(double height)
{
    publish(this, screenHeight_, height, &AppModel::screenHeightChanged);
}

void AppModel::setHoveredID(std::optional<QUuid> id)
{
    publish(this, hoveredID_, id, &AppModel::hoveredIDChanged);
}

void AppModel::setNameFocusID(std::optional<QUuid> id)
{
    // The mask holds the keyboard while it is open; a name field must not take it.
    if (id && isEditOpen())
        return;
    publish(this, nameFocusID_, id, &AppModel::nameFocusIDChanged);
}

void AppModel::setStyleMenuOpen(bool open)
{
    publish(this, styleMenuOpen_, open, &AppModel::styleMenuOpenChanged);
}

void AppModel::setIsEditingName(bool editing)
{
    publish(this, isEditingName_, editing, &AppModel::isEditingNameChanged);
}

void AppModel::setWindowVisible(bool visible)
{
    const bool shown = visible && !windowVisible_;
    windowVisible_ = visible;
    // Ticks skipped while hidden left the displays behind; catch up once rather than wait a second.
    if (shown && tickTask_ != 0)
        displayTick_->advance();
}

void AppModel::setDraft(const TimeEditDraft &draft)
{
    if (!isEditOpen())
        return;
    publish(this, draft_, std::optional<TimeEditDraft>(draft), &AppModel::draftChanged);
}

void AppModel::cancelEdit()
{
    setEditing(std::nullopt, std::nullopt);
}

bool AppModel::commitEditForNameClick()
{
    return commitEdit();
}

// ---------------------------------------------------------------------------------------------
// Displayed values

std::optional<int64_t> AppModel::validShown(const TimerItem &timer) const
{
    const auto it = shown_.constFind(timer.id);
    if (it == shown_.constEnd() || it->startedAt != timer.startedAt || it->accumulated != timer.accumulated)
        return std::nullopt;
    return it->value;
}

int64_t AppModel::displayedSeconds(const QUuid &id) const
{
    const std::optional<qsizetype> index = board_.index(id);
    if (!index)
        return 0;
    const TimerItem &timer = board_.timers.at(*index);
    if (timer.isRunning()) {
        if (const std::optional<int64_t> shown = validShown(timer))
            return *shown;
    }
    return DisplayClock::wholeSeconds(timer.elapsed(now_));
}

// ---------------------------------------------------------------------------------------------
// Tick and saving

void AppModel::updateTicking()
{
    if (!store_)
        return;
    const bool running = board_.anyRunning();
    if (running && tickTask_ == 0) {
        tickTask_ = services_.scheduler->every(
            tickInterval, tickTolerance, [this, alive = std::weak_ptr<bool>(alive_)] {
                if (alive.lock())
                    onTick();
            });
    } else if (!running && tickTask_ != 0) {
        cancelTask(tickTask_);
        shown_.clear();
    }
}

void AppModel::onTick()
{
    if (!board_.anyRunning()) {
        updateTicking();
        return;
    }
    const Instant at = currentTime();
    now_ = at;

    bool changed = false;
    qsizetype running = 0;
    for (const TimerItem &timer : std::as_const(board_.timers)) {
        if (!timer.isRunning())
            continue;
        ++running;
        const int64_t exact = DisplayClock::wholeSeconds(timer.elapsed(at));
        const std::optional<int64_t> before = validShown(timer);
        const int64_t value = DisplayClock::advance(before, exact);
        if (before != value)
            changed = true;
        shown_.insert(timer.id, Shown{value, timer.startedAt, timer.accumulated});
    }
    // Every running timer has an entry now, so any extra one belongs to a timer that stopped.
    if (shown_.size() != running) {
        for (auto it = shown_.begin(); it != shown_.end();) {
            const std::optional<TimerItem> timer = board_.timer(it.key());
            if (timer && timer->isRunning())
                ++it;
            else
                it = shown_.erase(it);
        }
    }

    if (changed) {
        displayTick_->announceSeconds();
        if (windowVisible_)
            displayTick_->advance();
    }
    if (at - lastSave_ >= saveFromTickAfter)
        save();
}

void AppModel::markDirty()
{
    if (!store_)
        return;
    unsaved_ = true;
    cancelTask(saveWork_);
    saveWork_ = schedule(saveDebounce, [](AppModel &model) {
        model.saveWork_ = 0;
        model.save();
    });
}

void AppModel::save()
{
    if (!store_)
        return;
    cancelTask(saveWork_);

    if (store_->awaitingArchive()) {
        if (!store_->retryPreservation(currentTime())) {
            setNotice(StorageNotice::saveFailed(archiveFailedMessage()));
            return;
        }
        setNotice(std::nullopt);
    }
    if (store_->isBlocked())
        return;

    const Instant at = currentTime();
    std::optional<StoreError> failure;
    try {
        store_->save(Snapshot(board_, StyleIDs::rawValue(style_), at), at);
    } catch (const StoreError &error) {
        failure = error;
    }
    // Also after a failure, so a failing disk is retried about once a second, not every tick.
    lastSave_ = at;
    const bool timersSaved = !failure || failure->kind == StoreError::Kind::backupsFailed;
    if (timersSaved)
        unsaved_ = false;
    if (failure)
        setNotice(StorageNotice::saveFailed(failure->description(), timersSaved));
    else if (notice_ && notice_->isSaveFailed())
        setNotice(std::nullopt);
}

// ---------------------------------------------------------------------------------------------
// Actions

void AppModel::addTimer(std::optional<QString> name)
{
    closeReveal();
    if (isEditOpen() && !commitEdit())
        return;
    const bool named = name.has_value();
    const TimerItem added = editBoard([&](Board &board) { return board.add(std::move(name)); });
    // An unnamed timer is added to be named next.
    if (!named)
        setNameFocusID(added.id);
}

void AppModel::toggle(const QUuid &id)
{
    if (const std::optional<TimerItem> timer = board_.timer(id))
        setRunning({id}, !timer->isRunning());
}

QList<QUuid> AppModel::setRunning(const QList<QUuid> &ids, bool running)
{
    QList<QUuid> changing;
    for (const QUuid &id : ids) {
        const std::optional<TimerItem> timer = board_.timer(id);
        if (timer && timer->isRunning() != running && !changing.contains(id))
            changing << id;
    }
    if (changing.isEmpty())
        return {};
    closeReveal();
    if (editingID_ && changing.contains(*editingID_))
        commitEdit(); // a refused commit does not stop the toggle
    // One instant for all, so timers started together stay in step.
    const Instant at = currentTime();
    now_ = at;
    editBoard([&](Board &board) {
        for (const QUuid &id : changing)
            board.toggle(id, at);
    }, Persist::debounced, at);
    return changing;
}

void AppModel::pauseAll()
{
    const Instant at = currentTime();
    now_ = at;
    editBoard([at](Board &board) { board.pauseAll(at); }, Persist::now, at);
}

void AppModel::reset(const QUuid &id)
{
    if (!board_.index(id))
        return;
    if (editingID_ == id)
        cancelEdit();
    now_ = currentTime();
    if (const std::optional<UndoEntry> entry =
            editBoard([&](Board &board) { return board.reset(id); }, Persist::debounced, now_, HistoryCause::reset))
        registerUndo(*entry);
}

void AppModel::deleteTimer(const QUuid &id)
{
    if (!board_.index(id))
        return;
    if (revealedID_ == id)
        setRevealedID(std::nullopt);
    if (hoveredID_ == id)
        setHoveredID(std::nullopt);
    if (nameFocusID_ == id)
        setNameFocusID(std::nullopt);
    if (swipeID_ == id)
        setSwipe(std::nullopt, 0); // deleted mid-drag (say, from the prompt): nothing left to reveal
    if (editingID_ == id)
        cancelEdit();
    if (const std::optional<UndoEntry> entry = editBoard([&](Board &board) { return board.remove(id); }))
        registerUndo(*entry);
}

bool AppModel::deleteHovered()
{
    if (isEditOpen())
        return false;
    const std::optional<QUuid> target = hoveredID_ ? hoveredID_ : revealedID_;
    if (!target || !board_.index(*target))
        return false;
    deleteTimer(*target);
    return true;
}

void AppModel::rename(const QUuid &id, const QString &name)
{
    editBoard([&](Board &board) { board.rename(id, name); });
}

void AppModel::moveTimer(const QUuid &id, qsizetype position)
{
    const std::optional<qsizetype> from = board_.index(id);
    if (!from)
        return;
    const qsizetype to = std::clamp<qsizetype>(position, 0, board_.timers.size() - 1);
    if (to == *from)
        return;
    editBoard([&](Board &board) { board.move(*from, to); });
    // Moving back registers its own step while undoing, which becomes the redo.
    registerStep(moveActionName, QUuid::createUuid(),
                 [id, back = *from](AppModel &model) { model.moveTimer(id, back); });
}

void AppModel::beginEdit(const QUuid &id)
{
    closeReveal();
    if (isEditOpen() && editingID_ != id && !commitEdit())
        return; // an invalid entry keeps its row open
    if (isEditOpen() && editingID_ == id)
        return; // already open here: keep what was typed
    const std::optional<TimerItem> timer = board_.timer(id);
    if (!timer)
        return;
    setNameFocusID(std::nullopt);
    setEditing(id, TimeEditDraft(timer->elapsed(currentTime())));
}

bool AppModel::commitEdit()
{
    if (!editingID_ || !draft_)
        return true;
    const Instant at = currentTime();
    const bool ok = editBoard([&](Board &board) { return board.commit(*draft_, *editingID_, at); },
                              Persist::debounced, at);
    if (!ok) {
        Q_EMIT beepRequested();
        return false;
    }
    setEditing(std::nullopt, std::nullopt);
    now_ = at;
    return true;
}

void AppModel::setTime(const QUuid &id, double seconds)
{
    const std::optional<TimerItem> before = board_.timer(id);
    if (!before)
        return;
    const Instant at = currentTime();
    now_ = at;
    editBoard([&](Board &board) { board.setElapsed(id, seconds, at); }, Persist::debounced, at);

    // Restoring `before` is the board's undo of a reset taken at this epoch.
    const UndoEntry restore = UndoEntry::reset(*before, board_.epoch());
    registerStep(setTimeActionName, QUuid::createUuid(), [id, seconds, restore](AppModel &model) {
        if (model.editBoard([&](Board &board) { return board.undo(restore); }))
            model.now_ = model.currentTime();
        if (model.undo_.isUndoing()) {
            model.registerStep(setTimeActionName, QUuid::createUuid(),
                               [id, seconds](AppModel &m) { m.setTime(id, seconds); });
        }
    });
}

// ---------------------------------------------------------------------------------------------
// Zoom

void AppModel::zoomIn()
{
    for (const double step : zoomSteps) {
        if (step > zoom_ + 0.001) {
            setZoom(step);
            return;
        }
    }
}

void AppModel::zoomOut()
{
    for (auto it = zoomSteps.rbegin(); it != zoomSteps.rend(); ++it) {
        if (*it < zoom_ - 0.001) {
            setZoom(*it);
            return;
        }
    }
}

void AppModel::zoomReset()
{
    setZoom(defaultZoom);
}

void AppModel::toggleLarge()
{
    setZoom(zoom_ > 0.801 ? defaultZoom : 1.1);
}

// ---------------------------------------------------------------------------------------------
// Swipe to delete

void AppModel::beginSwipe(const QUuid &id)
{
    if (swipeWork_ != 0)
        return; // a row is sliding out
    if (editingID_ == id || !board_.index(id))
        return;
    const double start = revealedID_ == id ? -revealWidth : 0;
    if (revealedID_ && revealedID_ != id)
        closeReveal();
    setSwipe(id, start);
}

void AppModel::swipe(double delta)
{
    if (!swipeID_ || swipeWork_ != 0)
        return;
    // Rows only ever move left.
    setSwipe(swipeID_, std::min(swipeOffset_ + delta / std::max(zoom_, 0.1), 0.0));
}

void AppModel::endSwipe(double rowWidth)
{
    if (!swipeID_ || swipeWork_ != 0)
        return;
    const QUuid id = *swipeID_;
    if (swipeOffset_ < -0.5 * rowWidth) {
        // Slid out of view; the deletion follows once the row is gone.
        setSwipe(id, -1.1 * rowWidth);
        swipeWork_ = schedule(slideOutDelay, [id](AppModel &model) {
            model.swipeWork_ = 0;
            model.deleteTimer(id);
            model.setSwipe(std::nullopt, 0);
            model.setRevealedID(std::nullopt);
        });
        return;
    }
    setRevealedID(swipeOffset_ <= -revealThreshold ? std::optional<QUuid>(id) : std::nullopt);
    setSwipe(std::nullopt, 0);
}

double AppModel::rowOffset(const QUuid &id) const
{
    if (swipeID_ == id)
        return swipeOffset_;
    if (revealedID_ == id)
        return -revealWidth;
    return 0;
}

void AppModel::closeReveal()
{
    setRevealedID(std::nullopt);
}

// ---------------------------------------------------------------------------------------------
// Storage notices

void AppModel::dismissNotice()
{
    setNotice(std::nullopt);
}

Confirmation AppModel::startFreshQuestion()
{
    return {
        QStringLiteral("Start with an empty list?"),
        QStringLiteral("The unreadable files will be moved to a folder named \u201CUnreadable-\u2026\u201D "
                       "inside the Tock data folder. Nothing is deleted."),
        QStringLiteral("Start Fresh"),
        QStringLiteral("Cancel"),
    };
}

void AppModel::startFreshAfterUnreadable()
{
    if (store_)
        Q_EMIT startFreshRequested();
}

void AppModel::confirmStartFresh()
{
    if (!store_)
        return;
    try {
        store_->setAsideUnreadableAndStartFresh(currentTime());
    } catch (const StoreError &error) {
        setNotice(StorageNotice::saveFailed(error.description()));
        return;
    }
    setNotice(std::nullopt);
    save();
}

void AppModel::setHistory(std::shared_ptr<HistoryRecorder> history)
{
    recorder_ = std::move(history);
    Q_EMIT historyChanged();
}

void AppModel::showHistoryNotice(const StorageNotice &notice)
{
    if (notice_ && (std::holds_alternative<StorageNotice::Unreadable>(notice_->value) || notice_->isSaveFailed()))
        return;
    setNotice(notice);
}

void AppModel::retrySave()
{
    if (store_ && store_->folderLost()) {
        try {
            store_->retakeFolder(currentTime());
        } catch (const StoreError &error) {
            setNotice(StorageNotice::saveFailed(error.description()));
            return;
        }
    }
    save();
}

bool AppModel::saveNow()
{
    if (!store_)
        return true;
    save();
    return !unsaved_;
}

std::optional<QString> AppModel::unsavedReason() const
{
    if (!unsaved_)
        return std::nullopt;
    if (notice_ && notice_->changesUnsaved())
        return notice_->detail();
    if (store_ && store_->isBlocked())
        return StoreError::blocked().description();
    return QStringLiteral("The latest changes could not be saved.");
}

// ---------------------------------------------------------------------------------------------
// Undo and toasts

void AppModel::registerStep(const QString &name, const QUuid &token, std::function<void(AppModel &)> action)
{
    undo_.registerUndo([model = QPointer<AppModel>(this), action = std::move(action)] {
        if (model)
            action(*model);
    }, token);
    undo_.setActionName(name);
}

void AppModel::registerUndo(const UndoEntry &entry)
{
    const QUuid token = QUuid::createUuid();
    registerStep(entry.actionName(), token,
                 [entry, token](AppModel &model) { model.performUndo(entry, token); });
    showToast(Toast{QUuid::createUuid(), entry, token});
}

void AppModel::performUndo(const UndoEntry &entry, const QUuid &token)
{
    if (editBoard([&](Board &board) { return board.undo(entry); }, Persist::debounced, std::nullopt,
                  entry.isReset() ? HistoryCause::resetUndone : HistoryCause::edit))
        now_ = currentTime();
    if (toast_ && toast_->token == token)
        setToast(std::nullopt);

    if (undo_.isUndoing()) {
        const QUuid id = entry.timer().id;
        const bool wasReset = entry.isReset();
        registerStep(entry.actionName(), QUuid::createUuid(), [id, wasReset](AppModel &model) {
            if (wasReset)
                model.reset(id);
            else
                model.deleteTimer(id);
        });
    }
}

void AppModel::showToast(const Toast &toast)
{
    setToast(toast);
    cancelTask(toastWork_);
    toastWork_ = schedule(toastLifetime, [id = toast.id](AppModel &model) {
        model.toastWork_ = 0;
        // A newer toast has its own dismissal and keeps its full time.
        if (model.toast_ && model.toast_->id == id)
            model.setToast(std::nullopt);
    });
}

void AppModel::undoToast()
{
    if (!toast_)
        return;
    const Toast toast = *toast_;
    if (undo_.isNextUndo(toast.token)) {
        // Its own step is on top: going through the manager keeps redo correct.
        undo_.undo();
    } else if (undo_.takeOutOfOrder(toast.token)) {
        // Something newer lies above it; the manager now skips this step's handler.
        performUndo(toast.entry, toast.token);
    }
    setToast(std::nullopt);
}

} // namespace tock

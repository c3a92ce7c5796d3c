#include "startup.h"

#include "require.h"
#include "text.h"

#include <cmath>

namespace tock {

namespace {

// A decimal integer as the command line gives it: an optional sign, then ASCII digits only.
std::optional<int64_t> integerArgument(const QString &text)
{
    const bool negative = text.startsWith(QLatin1Char('-'));
    const bool signed_ = negative || text.startsWith(QLatin1Char('+'));
    const std::optional<int64_t> value = Text::decimal(QStringView(text).mid(signed_ ? 1 : 0));
    if (!value)
        return std::nullopt;
    return negative ? -*value : *value;
}

std::optional<double> numberArgument(const QString &text)
{
    bool ok = false;
    const double value = text.trimmed() == text ? text.toDouble(&ok) : 0;
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<StartupMode::Bench> benchArguments(const QStringList &arguments, qsizetype at)
{
    if (at + 3 >= arguments.size())
        return std::nullopt;
    const std::optional<StyleID> style = StyleIDs::fromRawValue(arguments.at(at + 1));
    const std::optional<int64_t> count = integerArgument(arguments.at(at + 2));
    const std::optional<double> value = numberArgument(arguments.at(at + 3));
    if (!style || !count || !value)
        return std::nullopt;
    return StartupMode::Bench{*style, *count, *value};
}

} // namespace

StartupMode StartupMode::parse(const QStringList &arguments)
{
    const qsizetype shellAt = arguments.indexOf(QStringLiteral("--shell"));
    const QStringList switches = shellAt < 0 ? arguments : arguments.mid(0, shellAt);

    for (qsizetype i = 0; i < switches.size(); ++i) {
        if (switches.at(i) == QLatin1String("--bench")) {
            if (const std::optional<Bench> bench = benchArguments(switches, i))
                return {*bench};
        }
    }
    if (switches.contains(QStringLiteral("--flipdemo")))
        return {FlipDemo{}};
    if (switches.contains(QStringLiteral("--selftest")))
        return {SelfTest{}};
    for (qsizetype i = 0; i + 1 < switches.size(); ++i) {
        if (switches.at(i) == QLatin1String("--screenshots"))
            return {Screenshots{switches.at(i + 1)}};
    }
    if (shellAt >= 0)
        return {Shell{arguments.mid(shellAt + 1)}};
    // The word after the switch, unless it is another switch.
    const auto word = [&](qsizetype at) {
        return at < switches.size() && !switches.at(at).startsWith(QLatin1String("--")) ? switches.at(at) : QString();
    };
    if (const qsizetype at = switches.indexOf(QStringLiteral("--report")); at >= 0)
        return {Report{word(at + 1)}};
    if (const qsizetype at = switches.indexOf(QStringLiteral("--export")); at >= 0)
        return {Export{word(at + 1), word(at + 1).isEmpty() ? QString() : word(at + 2)}};
    return {Normal{}};
}

StartingValues StartingValues::from(const Store::LoadResult &result, bool awaitingArchive)
{
    const auto styleOf = [](const Snapshot &snapshot) -> std::optional<StyleID> {
        return snapshot.style ? StyleIDs::fromRawValue(*snapshot.style) : std::nullopt;
    };
    return std::visit(
        [&](const auto &r) -> StartingValues {
            using R = std::decay_t<decltype(r)>;
            if constexpr (std::is_same_v<R, Store::LoadResult::Loaded>) {
                return {r.snapshot.board(), styleOf(r.snapshot), std::nullopt};
            } else if constexpr (std::is_same_v<R, Store::LoadResult::Recovered>) {
                return {r.snapshot.board(), styleOf(r.snapshot),
                        awaitingArchive ? StorageNotice::saveFailed(archiveFailedMessage())
                                        : StorageNotice::recovered(r.from)};
            } else if constexpr (std::is_same_v<R, Store::LoadResult::Unreadable>) {
                return {Board(), std::nullopt, StorageNotice::unreadable(r.reasons)};
            } else {
                Board fresh;
                for (int i = 0; i < 3; ++i)
                    fresh.add();
                return {fresh, std::nullopt, std::nullopt};
            }
        },
        result.value);
}

AppSession::AppSession(QString directory, Services services, Store::BackupPacing pacing)
    : directory_(std::move(directory)), services_(std::move(services)), pacing_(pacing), lock_(directory_)
{
}

AppSession::~AppSession()
{
    end();
}

AppSession::Start AppSession::start()
{
    TOCK_REQUIRE(!model_ && !ended_, "an application session starts once");
    if (!lock_.acquire()) {
        return lock_.failure() == InstanceLock::Failure::heldElsewhere ? Start::alreadyRunning
                                                                       : Start::cannotUseFolder;
    }
    store_ = std::make_shared<Store>(directory_, 5, 600.0);
    store_->setBackupPacing(pacing_);
    // Nothing is written unless the folder at the path is still the one locked here.
    store_->setLock(&lock_);
    // Holding the lock, no other copy can be writing these any more.
    store_->removeStaleTemporaryFiles();
    const Store::LoadResult result = store_->load(services_.clock->now());
    if (const auto *loaded = std::get_if<Store::LoadResult::Loaded>(&result.value))
        lastSaved_ = double(loaded->snapshot.savedAt.toMSecsSinceEpoch()) / 1000.0;
    else if (const auto *recovered = std::get_if<Store::LoadResult::Recovered>(&result.value))
        lastSaved_ = double(recovered->snapshot.savedAt.toMSecsSinceEpoch()) / 1000.0;
    StartingValues values = StartingValues::from(result, store_->awaitingArchive());
    startingNotice_ = values.notice;
    undo_ = std::make_unique<UndoManager>();
    model_ = std::make_unique<AppModel>(store_, std::move(values.board), values.style, values.notice, services_,
                                        *undo_);
    // The valid main file becomes the newest backup (at every start of the window); a failure
    // here must not keep the timers from opening.
    try {
        store_->rotateBackupsAtStart((services_.clock ? services_.clock : Services::real().clock)->now());
    } catch (const StoreError &) {
    }
    return Start::started;
}

void AppSession::openHistory(HistoryRecorder::Check check)
{
    // While saving is paused nothing in the folder is written, the history included: timers
    // that are never saved have no history worth keeping.
    if (!model_ || ended_ || model_->historyRecorder() || store_->isBlocked())
        return;
    const Instant now = (services_.clock ? services_.clock : Services::real().clock)->now();
    HistoryRecorder::Opening opening = HistoryRecorder::open(directory_, Store::stamp(now), check);
    std::optional<QString> failure = opening.failure;
    if (opening.recorder) {
        try {
            opening.recorder->start(model_->board(), lastSaved_, now);
            model_->setHistory(opening.recorder);
        } catch (const HistoryError &error) {
            failure = error.message;
        }
    }
    if (failure)
        model_->showHistoryNotice(StorageNotice::history(std::nullopt, *failure));
    else if (opening.setAsideTo)
        model_->showHistoryNotice(StorageNotice::history(opening.setAsideTo, QString()));
}

void AppSession::end()
{
    if (ended_)
        return;
    ended_ = true;
    if (model_) {
        model_->commitEdit();
        model_->pauseAll();
    }
    lock_.release();
}

QString alreadyRunningTitle()
{
    return QStringLiteral("Tock is already running");
}

QString alreadyRunningText()
{
    return QStringLiteral(
        "Another copy of Tock is using the timer data. Only one copy can run at a time so nothing gets overwritten.");
}

QString cannotReachTitle()
{
    return QStringLiteral("Tock cannot pass commands to the copy that is running");
}

QString cannotReachText(const QString &problem)
{
    return QStringLiteral("Another copy of Tock is using the timer data, but there is no private folder for the socket "
                          "it listens on (%1), so scripting is off. Nothing was changed.")
        .arg(problem.isEmpty() ? QStringLiteral("none was found") : problem);
}

QString cannotUseFolderTitle()
{
    return QStringLiteral("Tock cannot use its data folder");
}

QString cannotUseFolderText(const QString &directory, const QString &reason)
{
    return QStringLiteral("The lock file in %1 could not be opened: %2. Check that the folder can be written to, "
                          "then start Tock again.")
        .arg(directory, reason);
}

} // namespace tock

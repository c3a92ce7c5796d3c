#include "shellsession.h"

#include "appinfo.h"
#include "appmodel.h"
#include "shell.h"
#include "shellhistory.h"
#include "shelltime.h"
#include "text.h"
#include "timevalues.h"
#include "undomanager.h"

#include <algorithm>

namespace tock {

namespace {

// The part of a grapheme list from `from` up to (not including) `to`, as text.
QString joined(const QStringList &graphemes, qsizetype from, qsizetype to)
{
    QString result;
    for (qsizetype i = from; i < to; ++i)
        result += graphemes.at(i);
    return result;
}

bool isBlank(const QString &line)
{
    for (const QChar c : line) {
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t'))
            return false;
    }
    return true;
}

// Scoped undo grouping, so a multi-timer command is one step even if an action throws.
class UndoGroup {
public:
    explicit UndoGroup(UndoManager &manager) : manager_(manager) { manager_.beginGrouping(); }
    ~UndoGroup() { manager_.endGrouping(); }
    UndoGroup(const UndoGroup &) = delete;
    UndoGroup &operator=(const UndoGroup &) = delete;

private:
    UndoManager &manager_;
};

} // namespace

ShellSession::ShellSession(AppModel &model, const QStringList &history)
    : QObject(&model), model_(model), history_(std::make_unique<ShellHistory>(history, ShellHistory::defaultLimit))
{
}

ShellSession::~ShellSession() = default;

QStringList ShellSession::styleCommandNames()
{
    QStringList names;
    for (const StyleID style : StyleIDs::allCases())
        names << StyleIDs::displayName(style).toLower().replace(QLatin1Char(' '), QLatin1Char('-'));
    return names;
}

void ShellSession::setPrompt(const QString &text, qsizetype caret)
{
    const bool textChanged = text != promptText_;
    const qsizetype clamped = std::clamp<qsizetype>(caret, 0, Text::graphemeCount(text));
    // A different line (Ctrl-U) starts history browsing afresh; moving the caret does not.
    if (textChanged)
        history_->resetBrowsing();
    promptText_ = text;
    if (textChanged)
        Q_EMIT promptTextChanged();
    if (clamped != promptCaret_) {
        promptCaret_ = clamped;
        Q_EMIT promptCaretChanged();
    }
}

void ShellSession::setShellOutput(QStringList lines, bool isError)
{
    produced_ = true;
    if (lines != shellOutput_) {
        shellOutput_ = std::move(lines);
        Q_EMIT shellOutputChanged();
    }
    if (isError != shellOutputIsError_) {
        shellOutputIsError_ = isError;
        Q_EMIT shellOutputIsErrorChanged();
    }
}

void ShellSession::clearShellOutput()
{
    setShellOutput({}, false);
}

void ShellSession::promptInsert(const QString &text)
{
    QString clean = text;
    clean.replace(QLatin1Char('\n'), QLatin1Char(' '));
    clean.remove(QLatin1Char('\r'));
    const QStringList characters = Text::graphemes(promptText_);
    const qsizetype caret = std::clamp<qsizetype>(promptCaret_, 0, characters.size());
    const QString line = joined(characters, 0, caret) + clean + joined(characters, caret, characters.size());
    setPrompt(line, caret + Text::graphemeCount(clean));
    history_->resetBrowsing();
}

void ShellSession::promptBackspace()
{
    const QStringList characters = Text::graphemes(promptText_);
    const qsizetype caret = std::clamp<qsizetype>(promptCaret_, 0, characters.size());
    if (caret == 0)
        return;
    setPrompt(joined(characters, 0, caret - 1) + joined(characters, caret, characters.size()), caret - 1);
}

void ShellSession::promptForwardDelete()
{
    const QStringList characters = Text::graphemes(promptText_);
    const qsizetype caret = std::clamp<qsizetype>(promptCaret_, 0, characters.size());
    if (caret >= characters.size())
        return;
    setPrompt(joined(characters, 0, caret) + joined(characters, caret + 1, characters.size()), caret);
}

void ShellSession::promptMove(qsizetype delta)
{
    setPrompt(promptText_, promptCaret_ + delta);
}

void ShellSession::promptHistory(bool up)
{
    const QString text = up ? history_->up(promptText_) : history_->down(promptText_);
    // Not through setPrompt: a changed line there ends browsing, which is what we are doing.
    if (text != promptText_) {
        promptText_ = text;
        Q_EMIT promptTextChanged();
    }
    const qsizetype end = Text::graphemeCount(text);
    if (end != promptCaret_) {
        promptCaret_ = end;
        Q_EMIT promptCaretChanged();
    }
}

void ShellSession::promptComplete()
{
    QStringList timerNames;
    for (const TimerItem &timer : model_.board().timers)
        timerNames << timer.name;
    const std::optional<QString> completed = Shell::complete(promptText_, timerNames, styleCommandNames());
    if (!completed) {
        Q_EMIT model_.beepRequested();
        return;
    }
    setPrompt(*completed, Text::graphemeCount(*completed));
}

void ShellSession::promptRun()
{
    const QString line = promptText_;
    setPrompt(QString(), 0);
    if (run(line).exit)
        Q_EMIT exitRequested();
}

ShellSession::Result ShellSession::run(const QString &line)
{
    history_->resetBrowsing();
    if (isBlank(line))
        return {};
    std::optional<ShellCommand> command;
    std::optional<ShellError> error;
    try {
        command = Shell::parse(line);
    } catch (const ShellError &refused) {
        error = refused;
    }
    // `exit` only ends a session: nothing to recall, and the caller decides what ends.
    if (command && std::holds_alternative<ShellCommand::Exit>(command->value))
        return {{}, false, true};
    history_->record(line);
    if (model_.store_)
        model_.services_.settings->setValue(ShellHistory::settingsKey(), history_->entries());
    produced_ = false;
    if (command) {
        try {
            execute(*command);
        } catch (const ShellError &refused) {
            error = refused;
        }
    }
    // The output always belongs to the last line, even one that printed nothing.
    if (error)
        setShellOutput({error->message}, true);
    else if (!produced_)
        setShellOutput({}, false);
    return {shellOutput_, shellOutputIsError_, false};
}

QString ShellSession::names(const QList<QUuid> &ids) const
{
    if (ids.size() != 1)
        return QString::number(ids.size()) + QStringLiteral(" timers");
    const std::optional<TimerItem> timer = model_.board().timer(ids.first());
    return timer ? Text::quoted(timer->displayName()) : TimerItem::untitled();
}

void ShellSession::execute(const ShellCommand &command)
{
    AppModel &m = model_;
    m.closeReveal();
    if (m.editingID() && !m.commitEdit())
        throw ShellError{QStringLiteral("finish or cancel the time you are editing first")};

    const auto resolve = [&m](const ShellTarget &target, Shell::AllowAll allowAll) {
        return Shell::resolve(target, m.board().timers, allowAll);
    };
    const auto one = [&](const ShellTarget &target) { return resolve(target, Shell::AllowAll::no).constFirst(); };
    const auto succeed = [this](QStringList lines) { setShellOutput(std::move(lines), false); };

    std::visit(
        [&](const auto &c) {
            using C = std::decay_t<decltype(c)>;
            if constexpr (std::is_same_v<C, ShellCommand::Add>) {
                const std::optional<QUuid> focus = m.nameFocusID();
                m.addTimer(c.name);
                m.setNameFocusID(focus); // the prompt keeps the keyboard
                succeed({QStringLiteral("added ") + Text::quoted(m.board().timers.constLast().name)
                         + QStringLiteral(" as ") + QString::number(m.board().timers.size())});
            } else if constexpr (std::is_same_v<C, ShellCommand::Start> || std::is_same_v<C, ShellCommand::Pause>) {
                constexpr bool starting = std::is_same_v<C, ShellCommand::Start>;
                const QList<QUuid> changed = m.setRunning(resolve(c.target, Shell::AllowAll::yes), starting);
                if (changed.isEmpty())
                    succeed({starting ? QStringLiteral("already running") : QStringLiteral("already paused")});
                else
                    succeed({(starting ? QStringLiteral("started ") : QStringLiteral("paused ")) + names(changed)});
            } else if constexpr (std::is_same_v<C, ShellCommand::Toggle>) {
                const QUuid id = one(c.target);
                m.toggle(id);
                const std::optional<TimerItem> timer = m.board().timer(id);
                const bool running = timer && timer->isRunning();
                succeed({(running ? QStringLiteral("started ") : QStringLiteral("paused ")) + names({id})});
            } else if constexpr (std::is_same_v<C, ShellCommand::Reset>) {
                const QList<QUuid> ids = resolve(c.target, Shell::AllowAll::yes);
                const QString text = names(ids);
                {
                    UndoGroup group(m.undoManager());
                    for (const QUuid &id : ids)
                        m.reset(id);
                }
                succeed({QStringLiteral("reset ") + text});
            } else if constexpr (std::is_same_v<C, ShellCommand::Remove>) {
                const QList<QUuid> ids = resolve(c.target, Shell::AllowAll::yes);
                const QString text = names(ids); // before the timers are gone
                {
                    UndoGroup group(m.undoManager());
                    for (const QUuid &id : ids)
                        m.deleteTimer(id);
                }
                succeed({QStringLiteral("deleted ") + text + QStringLiteral(" · undo brings ")
                         + (ids.size() == 1 ? QStringLiteral("it") : QStringLiteral("them")) + QStringLiteral(" back")});
            } else if constexpr (std::is_same_v<C, ShellCommand::Rename>) {
                const QUuid id = one(c.target);
                const QString old = names({id});
                m.rename(id, c.name);
                succeed({QStringLiteral("renamed ") + old + QStringLiteral(" to ") + Text::quoted(c.name)});
            } else if constexpr (std::is_same_v<C, ShellCommand::Set>) {
                const QUuid id = one(c.target);
                const std::optional<TimerItem> before = m.board().timer(id);
                if (!before)
                    return;
                double seconds = 0;
                if (const auto *absolute = std::get_if<ShellTime::Absolute>(&c.time.value)) {
                    seconds = double(absolute->seconds);
                } else {
                    // Going below zero stops at zero, as the edit mask cannot show less either.
                    const auto &relative = std::get<ShellTime::Relative>(c.time.value);
                    seconds = std::max(0.0, before->elapsed(m.currentTime()) + double(relative.seconds));
                }
                if (seconds > double(HMS::maxSeconds))
                    throw ShellError{QStringLiteral("too long: the most is ") + TimeFormat::string(double(HMS::maxSeconds))};
                m.setTime(id, seconds);
                succeed({names({id}) + QStringLiteral(" is now ") + TimeFormat::string(seconds)});
            } else if constexpr (std::is_same_v<C, ShellCommand::Move>) {
                const QUuid id = one(c.target);
                // Positions count from 1 here; anything past either end lands at that end.
                const qsizetype index = c.position > 0 ? qsizetype(c.position - 1) : 0;
                m.moveTimer(id, index);
                succeed({QStringLiteral("moved ") + names({id}) + QStringLiteral(" to ") + QString::number(c.position)});
            } else if constexpr (std::is_same_v<C, ShellCommand::Style>) {
                const QStringList all = styleCommandNames();
                const qsizetype index = Shell::resolveStyle(c.name, all);
                m.setStyle(StyleIDs::allCases().at(index));
                succeed({QStringLiteral("style ") + all.at(index)});
            } else if constexpr (std::is_same_v<C, ShellCommand::Undo>) {
                if (!m.undoManager().canUndo())
                    throw ShellError{QStringLiteral("nothing to undo")};
                m.undoManager().undo();
                succeed({QStringLiteral("undone")});
            } else if constexpr (std::is_same_v<C, ShellCommand::Redo>) {
                if (!m.undoManager().canRedo())
                    throw ShellError{QStringLiteral("nothing to redo")};
                m.undoManager().redo();
                succeed({QStringLiteral("redone")});
            } else if constexpr (std::is_same_v<C, ShellCommand::Clear>) {
                succeed({});
            } else if constexpr (std::is_same_v<C, ShellCommand::Help>) {
                succeed(Shell::helpText());
            } else if constexpr (std::is_same_v<C, ShellCommand::Exit>) {
                // run() hands `exit` to its caller.
            } else if constexpr (std::is_same_v<C, ShellCommand::Version>) {
                succeed({AppInfo::name().toLower() + QLatin1Char(' ') + AppInfo::versionLine() + QStringLiteral(" · ")
                         + AppInfo::tagline().toLower()});
            }
        },
        command.value);
}

} // namespace tock

#include "terminalsession.h"

#include "store.h"
#include "text.h"
#include "timevalues.h"

namespace tock {

TerminalSession::TerminalSession(AppModel &model, QTextStream &out, QTextStream &err, Echo echo)
    : model_(model), out_(out), err_(err), echo_(echo)
{
}

void TerminalSession::print(QTextStream &stream, const QString &text)
{
    if (stream.status() != QTextStream::Ok)
        return;
    stream << text;
    stream.flush();
}

bool TerminalSession::run(const QString &line)
{
    const Board board = model_.board();
    const StyleID style = model_.style();
    const ShellSession::Result result = model_.shell().run(line);
    if (!(model_.board() == board) || model_.style() != style)
        changed_ = true;
    if (result.exit)
        exitRequested_ = true;
    QString text;
    for (const QString &output : result.lines)
        text += output + QLatin1Char('\n');
    print(result.failed ? err_ : out_, text);
    if (result.failed)
        succeeded_ = false;
    return !result.failed;
}

void TerminalSession::printTimers(Instant now)
{
    const QList<TimerItem> &timers = model_.board().timers;
    qsizetype width = 0;
    for (const TimerItem &timer : timers)
        width = std::max(width, Text::graphemeCount(timer.displayName()));
    const int positions = int(QString::number(timers.size()).size());
    QString text;
    for (qsizetype i = 0; i < timers.size(); ++i) {
        const TimerItem &timer = timers.at(i);
        const QString name = timer.displayName();
        const QString padding(width - Text::graphemeCount(name), QLatin1Char(' '));
        text += QStringLiteral("%1  ").arg(i + 1, positions) + name + padding + QStringLiteral("  ")
              + TimeFormat::string(timer.elapsed(now)) + QStringLiteral("  ")
              + (timer.isRunning() ? QStringLiteral("running") : QStringLiteral("paused")) + QLatin1Char('\n');
    }
    if (timers.isEmpty())
        text = QStringLiteral("no timers\n");
    print(out_, text);
}

void TerminalSession::printPrompt()
{
    print(out_, QStringLiteral("tock> "));
}

namespace {

QString folderOf(const Store *store)
{
    return store ? store->directory() : QStringLiteral("the Tock data folder");
}

} // namespace

// The banner's words point at its buttons; here they say what can be done from a terminal.
QStringList TerminalSession::noticeLines(const StorageNotice &notice, const Store *store)
{
    const QString folder = folderOf(store);
    QStringList lines{notice.title()};
    if (const auto *unreadable = std::get_if<StorageNotice::Unreadable>(&notice.value)) {
        lines << QStringLiteral("Nothing has been overwritten and saving is paused.") << unreadable->reasons
              << QStringLiteral("Check the files in %1, or set them aside with Start Fresh in the Tock window.").arg(folder);
    } else if (const auto *failed = std::get_if<StorageNotice::SaveFailed>(&notice.value)) {
        if (failed->message == archiveFailedMessage())
            lines << QStringLiteral("Tock restored your timers from a backup but could not archive the damaged data file, "
                                    "so nothing is being saved yet (to keep that file).")
                  << QStringLiteral("Check disk space and permissions of %1, then run Tock again (the window offers "
                                    "Retry).").arg(folder);
        else if (store && store->folderLost())
            lines << failed->message;
        else
            lines << failed->message << QStringLiteral("Check disk space and permissions of %1.").arg(folder);
    } else {
        lines << notice.detail();
    }
    return lines;
}

void TerminalSession::printNotice(const StorageNotice &notice)
{
    print(err_, noticeLines(notice, store_).join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

QString TerminalSession::pausedMessage(const Store &store)
{
    const QString folder = store.directory();
    return store.awaitingArchive()
               ? QStringLiteral("Nothing was saved: Tock keeps the damaged data file until it can be archived. Check "
                                "disk space and permissions of %1, then run Tock again (the window offers Retry).")
                     .arg(folder)
               : QStringLiteral("Nothing was saved: saving is paused so that the unreadable files are not "
                                "overwritten. Check the files in %1, or set them aside with Start Fresh in the "
                                "Tock window.")
                     .arg(folder);
}

void TerminalSession::reportUnsavedChanges()
{
    const Store *store = store_;
    if (!changed_ || !store || !store->isBlocked())
        return;
    print(err_, pausedMessage(*store) + QLatin1Char('\n'));
    succeeded_ = false;
}

QStringList unsavedChangeLines(const AppModel &model)
{
    if (!model.hasUnsavedChanges())
        return {};
    if (model.notice() && model.notice()->changesUnsaved())
        return TerminalSession::noticeLines(*model.notice(), model.store());
    if (model.store() && model.store()->isBlocked())
        return {TerminalSession::pausedMessage(*model.store())};
    return {QStringLiteral("Nothing was saved: the change could not be written to %1.").arg(folderOf(model.store()))};
}

} // namespace tock

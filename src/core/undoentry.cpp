#include "undoentry.h"

namespace tock {

const TimerItem &UndoEntry::timer() const
{
    if (const auto *r = std::get_if<Reset>(&value))
        return r->before;
    return std::get<Delete>(value).item;
}

int64_t UndoEntry::epoch() const
{
    return std::visit([](const auto &v) { return v.epoch; }, value);
}

QString UndoEntry::actionName() const
{
    return isReset() ? QStringLiteral("Reset Timer") : QStringLiteral("Delete Timer");
}

QString UndoEntry::message() const
{
    const QString &name = timer().name;
    const QString shown = name.isEmpty() ? QStringLiteral("Untitled") : name;
    // The two wordings differ on purpose: "Reset" reads as the action, "Deleted" as its result.
    const QString verb = isReset() ? QStringLiteral("Reset") : QStringLiteral("Deleted");
    return verb + QStringLiteral(" \u201C") + shown + QStringLiteral("\u201D");
}

} // namespace tock

#include "undoentry.h"

#include "text.h"

namespace tock {

const TimerItem &UndoEntry::timer() const
{
    if (const auto *r = std::get_if<Reset>(&value))
        return r->before;
    return std::get<Delete>(value).item;
}

QString UndoEntry::actionName() const
{
    return isReset() ? QStringLiteral("Reset Timer") : QStringLiteral("Delete Timer");
}

QString UndoEntry::message() const
{
    // The two wordings differ on purpose: "Reset" reads as the action, "Deleted" as its result.
    const QString verb = isReset() ? QStringLiteral("Reset") : QStringLiteral("Deleted");
    return verb + QLatin1Char(' ') + Text::quoted(timer().displayName());
}

} // namespace tock

// Readable QtTest failure output and table columns for the command language's values.
#pragma once

#include "shell.h"

#include <QMetaType>
#include <QTest>

namespace tock {

inline QString describe(const ShellTarget &t)
{
    if (const auto *n = std::get_if<ShellTarget::Number>(&t.value))
        return QStringLiteral("#%1").arg(n->n);
    if (const auto *n = std::get_if<ShellTarget::Name>(&t.value))
        return QStringLiteral("name(%1)").arg(n->text);
    return QStringLiteral("all");
}

inline QString describe(const ShellTime &t)
{
    if (const auto *a = std::get_if<ShellTime::Absolute>(&t.value))
        return QStringLiteral("absolute(%1)").arg(a->seconds);
    return QStringLiteral("relative(%1)").arg(std::get<ShellTime::Relative>(t.value).seconds);
}

inline QString describe(const ShellCommand &c)
{
    return std::visit(
        [](const auto &v) -> QString {
            using V = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<V, ShellCommand::Add>)
                return v.name ? QStringLiteral("add(%1)").arg(*v.name) : QStringLiteral("add()");
            else if constexpr (std::is_same_v<V, ShellCommand::Rename>)
                return QStringLiteral("rename(%1, %2)").arg(describe(v.target), v.name);
            else if constexpr (std::is_same_v<V, ShellCommand::Set>)
                return QStringLiteral("set(%1, %2)").arg(describe(v.target), describe(v.time));
            else if constexpr (std::is_same_v<V, ShellCommand::Move>)
                return QStringLiteral("move(%1, %2)").arg(describe(v.target)).arg(v.position);
            else if constexpr (std::is_same_v<V, ShellCommand::Style>)
                return QStringLiteral("style(%1)").arg(v.name);
            else if constexpr (requires { v.target; })
                return QStringLiteral("case %1(%2)")
                    .arg(ShellCommand{v}.value.index())
                    .arg(describe(v.target));
            else
                return QStringLiteral("case %1").arg(ShellCommand{v}.value.index());
        },
        c.value);
}

inline char *toString(const ShellTarget &t) { return QTest::toString(describe(t)); }
inline char *toString(const ShellTime &t) { return QTest::toString(describe(t)); }
inline char *toString(const ShellCommand &c) { return QTest::toString(describe(c)); }

// Runs f and returns the message of the ShellError it throws, or a marker when it throws none.
template <typename F>
QString shellErrorOf(F &&f)
{
    try {
        f();
    } catch (const ShellError &e) {
        return e.message;
    }
    return QStringLiteral("<no error>");
}

} // namespace tock

Q_DECLARE_METATYPE(tock::ShellTarget)
Q_DECLARE_METATYPE(tock::ShellTime)
Q_DECLARE_METATYPE(tock::ShellCommand)

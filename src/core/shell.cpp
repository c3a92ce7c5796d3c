// The command table, target words and the help text.
#include "shell.h"

#include "text.h"

namespace tock::Shell {

const QList<Command> &commands()
{
    static const QList<Command> table{
        {QStringLiteral("add"), {QStringLiteral("new")}, QStringLiteral("add [name]")},
        {QStringLiteral("start"), {QStringLiteral("play")}, QStringLiteral("start <timer|all>")},
        {QStringLiteral("pause"), {QStringLiteral("stop")}, QStringLiteral("pause <timer|all>")},
        {QStringLiteral("toggle"), {}, QStringLiteral("toggle <timer>")},
        {QStringLiteral("reset"), {}, QStringLiteral("reset <timer|all>")},
        {QStringLiteral("rm"), {QStringLiteral("del"), QStringLiteral("delete")},
         QStringLiteral("rm <timer|all>")},
        {QStringLiteral("rename"), {}, QStringLiteral("rename <timer> <name>")},
        {QStringLiteral("set"), {}, QStringLiteral("set <timer> 1:30:00 | +15m | -5m")},
        {QStringLiteral("mv"), {QStringLiteral("move")}, QStringLiteral("mv <timer> <position>")},
        {QStringLiteral("undo"), {}, QStringLiteral("undo")},
        {QStringLiteral("redo"), {}, QStringLiteral("redo")},
        {QStringLiteral("style"), {}, QStringLiteral("style <name>")},
        {QStringLiteral("clear"), {}, QStringLiteral("clear")},
        {QStringLiteral("help"), {QStringLiteral("?")}, QStringLiteral("help")},
        {QStringLiteral("version"), {QStringLiteral("about")}, QStringLiteral("version")},
        {QStringLiteral("exit"), {QStringLiteral("quit")}, QStringLiteral("exit")},
    };
    return table;
}

std::optional<QString> canonical(const QString &word)
{
    // The table is ASCII and so already in NFC: normalising the word alone is enough.
    const QString w = word.normalized(QString::NormalizationForm_C);
    for (const Command &command : commands()) {
        if (command.name == w || command.aliases.contains(w))
            return command.name;
    }
    return std::nullopt;
}

QString usage(const QString &name)
{
    const QString n = name.normalized(QString::NormalizationForm_C);
    for (const Command &command : commands()) {
        if (command.name == n)
            return command.usage;
    }
    return name;
}

ShellTarget parseTarget(const QString &word)
{
    if (Text::folded(word) == u"all")
        return ShellTarget::all();
    if (word.isEmpty())
        return ShellTarget::name(QString());
    const bool signed_ = word[0] == u'+' || word[0] == u'-';
    const std::optional<int64_t> value = Text::decimal(QStringView(word).mid(signed_ ? 1 : 0));
    if (!value || word[0] == u'-' || *value < 1)
        return ShellTarget::name(word); // "007x", "1e3", too large for 64 bits; "0", "-2" may be names
    return ShellTarget::number(*value);
}

const QStringList &helpText()
{
    static const QStringList lines{
        QStringLiteral("add [name] \u00B7 start \u00B7 pause \u00B7 toggle <t>"),
        QStringLiteral("reset <t> \u00B7 rm <t> \u00B7 rename <t> <name>"),
        QStringLiteral("set <t> 1:30:00 | +15m | -5m \u00B7 mv <t> <pos>"),
        QStringLiteral("undo \u00B7 redo \u00B7 style <name> \u00B7 clear \u00B7 exit"),
        QStringLiteral("version \u00B7 help"),
        QStringLiteral("<t> = number, name or all \u00B7 \u2191\u2193 history \u00B7 tab"),
    };
    return lines;
}

} // namespace tock::Shell

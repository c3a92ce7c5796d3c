// Parsing arbitrary lines (and the whole input as a time word and a target word): never crashes,
// fails only with the known messages, and every value produced stays in its documented range.
#include "fuzztext.h"
#include "shell.h"

using namespace tock;

namespace {

constexpr int64_t most = 3599999;
const QString tooLong = QStringLiteral("too long: the most is 999:59:59");

void checkTarget(const ShellTarget &target, const QString &line)
{
    if (const auto *number = std::get_if<ShellTarget::Number>(&target.value))
        fuzz::check(number->n >= 1, "target number below 1", line);
}

void checkTime(const ShellTime &time, const QString &line)
{
    if (const auto *a = std::get_if<ShellTime::Absolute>(&time.value))
        fuzz::check(a->seconds >= 0 && a->seconds <= most, "absolute time out of range", line);
    else
        fuzz::check(std::abs(std::get<ShellTime::Relative>(time.value).seconds) <= most,
                    "relative time out of range", line);
}

bool knownParseMessage(const QString &m)
{
    if (m == u"missing closing quote" || m == tooLong || m.startsWith(u"not a time: "))
        return true;
    if (m.startsWith(u"unknown command: ") && m.endsWith(u" (type help)"))
        return true;
    for (const Shell::Command &command : Shell::commands()) {
        if (m == QStringLiteral("usage: ") + command.usage)
            return true;
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString line = fuzz::text(data, size);

    try {
        if (const std::optional<ShellCommand> command = Shell::parse(line)) {
            std::visit(
                [&](const auto &c) {
                    if constexpr (requires { c.target; })
                        checkTarget(c.target, line);
                    if constexpr (requires { c.time; })
                        checkTime(c.time, line);
                    if constexpr (requires { c.position; })
                        fuzz::check(c.position >= 1, "move position below 1", line);
                },
                command->value);
        } else {
            fuzz::check(Shell::tokenize(line).isEmpty(), "absent command for a line with words", line);
        }
    } catch (const ShellError &e) {
        fuzz::check(knownParseMessage(e.message), "unknown parse message", e.message);
    }

    try {
        checkTime(parseTime(line), line);
    } catch (const ShellError &e) {
        fuzz::check(e.message == tooLong || e.message == QStringLiteral("not a time: ") + line, "time message",
                    e.message);
    }

    checkTarget(Shell::parseTarget(line), line);
    return 0;
}

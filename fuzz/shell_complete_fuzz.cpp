// Completing arbitrary lines against arbitrary timer names: never crashes, and a completion
// always keeps the part of the line before the word it completes.
// Input: the line, then timer names, separated by U+0000.
#include "fuzztext.h"
#include "shell.h"
#include "text.h"

using namespace tock;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QStringList parts = fuzz::text(data, size).split(QChar(0));
    const QString line = parts.takeFirst();
    const QStringList names = parts.mid(0, 64);
    static const QStringList styles{"classic", "color", "gameboy", "braun", "amber", "flap", "shell"};

    const std::optional<QString> result = Shell::complete(line, names, styles);
    if (!result)
        return 0;

    QStringList words;
    try {
        words = Shell::tokenize(line);
    } catch (const ShellError &) {
        fuzz::fail("completed a line that does not tokenize", line);
    }
    const bool endsWithSpace = Text::graphemes(line).value(Text::graphemeCount(line) - 1) == u" ";
    const QString base = !endsWithSpace && !words.isEmpty()
        ? Text::dropLastGraphemes(line, Shell::rawLength(line))
        : line;
    fuzz::check(line.startsWith(base), "base is not a start of the line", line);
    fuzz::check(result->startsWith(base), "completion starts differently from its base", line);
    fuzz::check(result->size() > base.size(), "completion adds nothing", line);
    return 0;
}

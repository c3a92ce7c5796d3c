// Tokenizing arbitrary text: never crashes, fails only with the one message, and without quotes
// every word is a non-empty piece of the line.
#include "fuzztext.h"
#include "shell.h"

using namespace tock;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString line = fuzz::text(data, size);
    QStringList words;
    try {
        words = Shell::tokenize(line);
    } catch (const ShellError &e) {
        fuzz::check(e.message == u"missing closing quote", "tokenize message", e.message);
        return 0;
    }
    qsizetype total = 0;
    for (const QString &word : std::as_const(words))
        total += word.size();
    fuzz::check(total <= line.size(), "words longer than the line", line);

    const bool quoteFree = !line.contains(u'"') && !line.contains(u'\'')
        && !line.contains(QChar(0x201C)) && !line.contains(QChar(0x201D));
    if (quoteFree) {
        for (const QString &word : std::as_const(words)) {
            fuzz::check(!word.isEmpty(), "empty word without quotes", line);
            fuzz::check(line.contains(word), "word not taken from the line", line);
        }
    }
    return 0;
}

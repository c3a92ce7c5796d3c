// Random sequences of history operations, checked against the invariants after every step and
// against a small model of browsing (position and draft).
#include "fuzztext.h"
#include "shellhistory.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <optional>

using namespace tock;

namespace {

// A small alphabet so that repeats, blanks and trimming actually happen.
QString line(FuzzedDataProvider &in)
{
    static const char16_t *const pieces[] = {u"a", u"b", u" ", u"\t", u"\n", u"\u00E9", u"ls"};
    QString s;
    const auto n = in.ConsumeIntegralInRange<int>(0, 6);
    for (int i = 0; i < n; ++i)
        s += QString::fromUtf16(pieces[in.ConsumeIntegralInRange<size_t>(0, std::size(pieces) - 1)]);
    return s;
}

void checkInvariants(const ShellHistory &h)
{
    const QStringList &e = h.entries();
    fuzz::check(e.size() <= h.limit(), "more entries than the limit");
    for (qsizetype i = 0; i < e.size(); ++i) {
        const QString &x = e.at(i);
        fuzz::check(!x.isEmpty(), "empty entry");
        for (const QChar end : {x.front(), x.back()})
            fuzz::check(end != u' ' && end != u'\t', "entry not trimmed", x);
        if (i > 0)
            fuzz::check(e.at(i - 1) != x, "neighbouring duplicates", x);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider in(data, size);
    ShellHistory h({}, in.ConsumeIntegralInRange<qsizetype>(0, 6));
    std::optional<qsizetype> position; // the model's browsing state
    QString draft;

    while (in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange<int>(0, 4)) {
        case 0: {
            const QString l = line(in);
            const qsizetype before = h.entries().size();
            h.record(l);
            position.reset();
            fuzz::check(h.entries().size() <= before + 1, "record added more than one entry", l);
            break;
        }
        case 1: {
            const QString current = line(in);
            const QString got = h.up(current);
            QString expected = current;
            if (!h.entries().isEmpty()) {
                if (!position) {
                    draft = current;
                    position = h.entries().size() - 1;
                } else if (*position > 0) {
                    --*position;
                }
                expected = h.entries().at(*position);
            }
            fuzz::check(got == expected, "up returned the wrong line", got);
            break;
        }
        case 2: {
            const QString current = line(in);
            const QString got = h.down(current);
            QString expected = current;
            if (position) {
                if (*position + 1 >= h.entries().size()) {
                    position.reset();
                    expected = draft;
                } else {
                    expected = h.entries().at(++*position);
                }
            }
            fuzz::check(got == expected, "down returned the wrong line", got);
            break;
        }
        case 3:
            h.resetBrowsing();
            position.reset();
            break;
        default: {
            // Reloading from the saved list keeps the invariants under any new limit.
            const QStringList saved = h.entries();
            h = ShellHistory(saved, in.ConsumeIntegralInRange<qsizetype>(0, 6));
            position.reset();
            fuzz::check(h.entries() == saved.mid(saved.size() - qMin(saved.size(), h.limit())),
                        "reload kept the wrong entries");
            break;
        }
        }
        checkInvariants(h);
    }
    return 0;
}

// Turning fuzzer bytes into text. A leading 0x01 byte means "the rest is raw UTF-16", which
// reaches lone surrogates and any code point; otherwise the whole input is UTF-8, so seed files
// stay readable.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tock::fuzz {

inline QString text(const uint8_t *data, size_t size)
{
    if (size > 0 && data[0] == 0x01) {
        QString s(qsizetype((size - 1) / 2), Qt::Uninitialized);
        std::memcpy(s.data(), data + 1, size_t(s.size()) * 2); // the input need not be aligned
        return s;
    }
    return QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
}

// Reports a broken invariant the way a sanitizer would: loudly, then abort so libFuzzer keeps
// the input.
[[noreturn]] inline void fail(const char *what, const QString &detail = {})
{
    std::fprintf(stderr, "invariant broken: %s [%s]\n", what, qUtf8Printable(detail));
    std::abort();
}

inline void check(bool ok, const char *what, const QString &detail = {})
{
    if (!ok)
        fail(what, detail);
}

} // namespace tock::fuzz

// Feeds arbitrary bytes to Snapshot::decode: it must either return a snapshot or throw one of
// its two error types, and whatever it accepts must come back unchanged through encoded(),
// because the store saves what it loaded.
#include "snapshot.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    try {
        const tock::Snapshot snapshot = tock::Snapshot::decode(bytes);
        if (!(tock::Snapshot::decode(snapshot.encoded()) == snapshot))
            std::abort();
    } catch (const tock::StoreError &) {
    }
    return 0;
}

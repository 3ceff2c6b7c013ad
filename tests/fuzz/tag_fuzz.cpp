// Typed tags.
#include "host/error.h"
#include "tests/fuzz/linked_tags.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const kmr::TagReader reader(linkedDriver(), 1);
    try {
        const kmr::Tag tag = reader.read(
            QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size)));
        if (tag.count < 1 || tag.firstBit < 0 || tag.firstBit > 15)
            abort();
    } catch (const kmr::Error &error) {
        if (error.text().isEmpty())
            abort();
    }
    return 0;
}

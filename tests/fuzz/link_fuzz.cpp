// Typed links.
#include "host/error.h"
#include "host/line/link.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    try {
        const kmr::LinkAddress link = kmr::parseLink(
            QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size)));
        const bool tcp = link.kind == kmr::LinkAddress::Kind::Tcp;
        if (tcp ? link.host.isEmpty() || link.port == 0 : link.device.isEmpty() || link.baud <= 0)
            abort();
    } catch (const kmr::Error &error) {
        if (error.text().isEmpty())
            abort();
    }
    return 0;
}

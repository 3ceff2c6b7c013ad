// Typed tags.
#include "host/error.h"
#include "host/tags/tag.h"

#include <cstdlib>

namespace {

kmr::DriverFunctions linkedDriver()
{
    kmr::DriverFunctions functions;
    functions.checkAddrValidity = intf_checkAddrValidity;
    functions.checkAddr = intf_checkAddr;
    functions.getRegDiscription = intf_getRegDiscription;
    functions.getRegListByType = intf_getRegListByType;
    return functions;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const kmr::DriverFunctions functions = linkedDriver();
    static const kmr::TagReader reader(functions, 1);
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

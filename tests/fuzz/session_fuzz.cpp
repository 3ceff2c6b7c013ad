// The exported functions in any order with any arguments.
#include "tests/session/session.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    driver = Ostrel_kmr();
    ByteSource bytes(data, size);
    Session session(bytes);
    session.run(1000);
    return 0;
}

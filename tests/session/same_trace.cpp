// Makes random exported calls through the library and prints a hash of all that they gave back. Two
// builds that print the same hash behaved the same, byte for byte.
//   same_trace [CALLS [SEED]]    default: 1000000 1
#include "session.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

constexpr int CALLS_IN_SESSION = 200;
constexpr std::size_t BYTES_IN_SESSION = 4096;

// The standard fixes every number of this generator, so it is the same with every compiler.
std::vector<std::uint8_t> randomBytes(std::mt19937 &random)
{
    std::vector<std::uint8_t> bytes(BYTES_IN_SESSION);
    for (std::uint8_t &byte : bytes)
        byte = static_cast<std::uint8_t>(random() >> 24);
    return bytes;
}

} // namespace

int main(int argc, char **argv)
{
    const long wanted = argc > 1 ? atol(argv[1]) : 1000000;
    const unsigned long seed = argc > 2 ? strtoul(argv[2], nullptr, 10) : 1;
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    Digest all;
    for (long done = 0; done < wanted;) {
        const std::vector<std::uint8_t> input = randomBytes(random);
        ByteSource bytes(input.data(), input.size());
        Session session(bytes);
        const long left = wanted - done;
        done += session.run(left < CALLS_IN_SESSION ? static_cast<int>(left) : CALLS_IN_SESSION);
        all.number(static_cast<std::int64_t>(session.hash()));
    }
    printf("%016" PRIx64 "  %ld calls, seed %lu\n", all.value(), wanted, seed);
}

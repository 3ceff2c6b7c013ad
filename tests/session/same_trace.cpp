// Makes random exported calls to the library and prints a hash of all their results. Two
// builds that print the same hash behaved the same, byte for byte.
//   same_trace [CALLS [SEED]]    default: 1000000 1
#include "tests/properties/generator.h"
#include "tests/properties/session.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    const long wanted = argc > 1 ? atol(argv[1]) : 1000000;
    const unsigned long seed = argc > 2 ? strtoul(argv[2], nullptr, 10) : 1;
    const Choice choice = chosenBySeed(seed);
    std::uint64_t all = 0;
    for (long done = 0; done < wanted;) {
        const std::vector<Call> calls = Generator(choice, Scope::Anything).session();
        done += exportedCalls(calls);
        all = (all ^ traceOf(calls)) * 0x100000001B3U;
    }
    printf("%016" PRIx64 "  %ld calls, seed %lu\n", all, wanted, seed);
}

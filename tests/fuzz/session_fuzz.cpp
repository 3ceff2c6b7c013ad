// The exported functions in any order: what is defined is compared with the model, anything else
// must not crash.
#include "tests/properties/generator.h"
#include "tests/properties/session.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Scope scope = *data % 2 == 0 ? Scope::Defined : Scope::Anything;
    const std::vector<Call> calls = Generator(chosenByBytes(data + 1, size - 1), scope).session();
    if (scope == Scope::Anything) {
        traceOf(calls);
        return 0;
    }
    const std::string difference = firstDifference(calls);
    if (!difference.empty()) {
        fprintf(stderr, "session: %s\n", difference.c_str());
        abort();
    }
    return 0;
}

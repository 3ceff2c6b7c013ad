// Reading words: a request is built, its reply checked and decoded into the store. For several
// sizes of the store, which must not matter much.
#include "benchmarks/exchanges.h"

#include <benchmark/benchmark.h>

using namespace bench;

namespace {

struct Store {
    int areas;
    const char *lastRequest; // for the last eight words of the store
};

const char *const FIRST_REQUEST = ":010310000008E4";
const Store STORES[] = {
    {8, FIRST_REQUEST},         {100, ":0103105C000888"},    {1000, ":010313E0000801"},
    {10000, ":0103A708000845"}, {100000, ":1003A708000836"},
};

void readWords(benchmark::State &state, const Store &store, Blocks blocks, bool changes)
{
    const std::vector<Run> plan = pollPlan(blocks, store.areas);
    openStore(store.areas, plan);
    const std::string request = nextFrame();
    require(request == (blocks == LAST ? store.lastRequest : FIRST_REQUEST), "request " + request);
    checkReads(plan);
    ReadLoop loop(plan.size(), changes);
    for (auto _ : state)
        loop.exchange();
}

const char *nameOf(Blocks blocks)
{
    return blocks == FIRST ? "first" : blocks == LAST ? "last" : "in_turn";
}

// By size first, see openStore.
const bool registered = [] {
    for (const Store &store : STORES) {
        for (Blocks blocks : {FIRST, LAST, IN_TURN}) {
            for (bool changes : {false, true}) {
                const std::string name = std::string("exchange/") + nameOf(blocks) +
                                         (changes ? "/changed/" : "/unchanged/") +
                                         std::to_string(store.areas);
                benchmark::RegisterBenchmark(name.c_str(), readWords, store, blocks, changes);
            }
        }
    }
    return true;
}();

} // namespace

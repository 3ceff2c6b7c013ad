// Planning: address runs are merged into read blocks and entries of the store.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

using namespace bench;

namespace {

// `count` runs of `length` words, `step` words apart, 10,000 words of each station.
std::vector<Run> runsOf(int count, int length, int step)
{
    std::vector<Run> runs;
    for (int i = 0; i < count; ++i)
        runs.push_back({1 + i * step / 10000, "D", i * step % 10000, length});
    return runs;
}

std::vector<Run> shuffled(std::vector<Run> runs)
{
    std::mt19937 random(1); // the same order in every run
    std::shuffle(runs.begin(), runs.end(), random);
    return runs;
}

// The store is empty at first, as when a link opens.
void merge(benchmark::State &state, const std::vector<Run> &runs, int blocks)
{
    const QList<KEY_ADDRESS> keys = keysOf(runs);
    for (auto _ : state) {
        openLink();
        require(intf().addrMerge(keys) == blocks, "the runs make their blocks");
    }
}
BENCHMARK_CAPTURE(merge, ordered_1000, runsOf(1000, 1, 1), 125);
BENCHMARK_CAPTURE(merge, shuffled_1000, shuffled(runsOf(1000, 1, 1)), 125);
BENCHMARK_CAPTURE(merge, sparse_1000, runsOf(1000, 1, 10), 1000);
BENCHMARK_CAPTURE(merge, overlapping_1000, runsOf(1000, 4, 2), 334);
BENCHMARK_CAPTURE(merge, ordered_10000, runsOf(10000, 1, 1), 1250)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(merge, ordered_100000, runsOf(100000, 1, 1), 12500)
    ->Unit(benchmark::kMillisecond);

// The store already has every address.
void mergeAgain(benchmark::State &state)
{
    const QList<KEY_ADDRESS> keys = keysOf(runsOf(1000, 1, 1));
    openLink();
    for (auto _ : state)
        require(intf().addrMerge(keys) == 125, "the runs make their blocks");
}
BENCHMARK(mergeAgain)->Name("merge/again_1000");

} // namespace

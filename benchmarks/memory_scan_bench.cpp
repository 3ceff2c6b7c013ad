// A plain scan of as much memory as a store takes: the measure for searching it.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>

namespace {

void scanMemory(benchmark::State &state)
{
    const size_t bytes = static_cast<size_t>(state.range(0)) * sizeof(_DATA_);
    std::vector<std::uint64_t> memory(bytes / sizeof(std::uint64_t));
    std::iota(memory.begin(), memory.end(), 1);
    const std::uint64_t count = memory.size();
    bench::require(std::accumulate(memory.begin(), memory.end(), std::uint64_t(0)) ==
                       count * (count + 1) / 2,
                   "all memory is scanned");
    for (auto _ : state) {
        benchmark::DoNotOptimize(memory.data());
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(std::accumulate(memory.begin(), memory.end(), std::uint64_t(0)));
    }
}
BENCHMARK(scanMemory)->Name("scan")->RangeMultiplier(10)->Range(100, 100000)->Arg(8);

} // namespace

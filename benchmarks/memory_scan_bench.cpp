// A plain scan of as much memory as a store takes: the measure for searching the store.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

// For a byte that is not there until the end. The C library's own scan is as fast as memory, and
// not at the mercy of how a loop of ours happens to be aligned.
void scanMemory(benchmark::State &state)
{
    std::vector<quint8> memory(static_cast<size_t>(state.range(0)) * sizeof(_DATA_), 0xEE);
    memory.back() = 1;
    const auto scan = [&] { return memchr(memory.data(), 1, memory.size()); };
    bench::require(scan() == &memory.back(), "all memory is scanned");
    for (auto _ : state) {
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(scan());
    }
}
BENCHMARK(scanMemory)->Name("scan")->Arg(8)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);

} // namespace

// A plain scan of as much memory as a store takes, to compare with searching the store.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

// Scans for a byte that is only at the end. The C library's scan is as fast as memory and does not
// depend on the alignment of a loop.
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

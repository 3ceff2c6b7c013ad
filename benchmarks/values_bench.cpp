// The host's reading and writing of values.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <numeric>

using namespace bench;

namespace {

const int QUEUE_MOST = 513;

std::vector<quint8> countingBytes(int size)
{
    std::vector<quint8> bytes(static_cast<size_t>(size));
    std::iota(bytes.begin(), bytes.end(), quint8(1));
    return bytes;
}

void openStore(int words = 96)
{
    openLink();
    intf().addrMerge(keysOf({{1, "D", 0, words}, {1, "M", 0, 64}}));
}

// Writes `bytes`, so that there is something to read, and requires that they are read back.
void getValues(benchmark::State &state, int storedWords, const char *area, int address, int count,
               std::vector<quint8> bytes)
{
    const kmr::DriverFunctions &functions = intf();
    const QString name = QString::fromLatin1(area);
    openStore(storedWords);
    functions.setData(1, name, address, count, bytes.data(), 0);
    std::vector<quint8> out(bytes.size(), 0xEE);
    functions.getData(1, name, address, count, out.data());
    require(out == bytes, "the values are read back");
    for (auto _ : state)
        functions.getData(1, name, address, count, out.data());
}
BENCHMARK_CAPTURE(getValues, first_8_words, 8, "D", 0, 8, countingBytes(16))
    ->Name("get/first_8_words_of_8");
BENCHMARK_CAPTURE(getValues, last_8_words, 10000, "D", 9992, 8, countingBytes(16))
    ->Name("get/last_8_words_of_10000");
BENCHMARK_CAPTURE(getValues, 16_bits, 96, "M", 48, 16, std::vector<quint8>(16, 1))
    ->Name("get/16_bits");

// The queue is full of other writes, so each call compares its target with all of them before it
// replaces the last.
void setIntoFullQueue(benchmark::State &state)
{
    const kmr::DriverFunctions &functions = intf();
    const QString name = QStringLiteral("D");
    std::vector<quint8> bytes = countingBytes(16);
    openStore();
    for (int i = 0; i < QUEUE_MOST; ++i)
        functions.setData(1, name, i / 8, 1 + i % 8, bytes.data(), 0);
    require(nextFrame() == ":011010000001020201D9", "the write queued first goes out first");
    qint32 address = 80;
    for (auto _ : state) {
        functions.setData(1, name, address, 8, bytes.data(), 0);
        address = 168 - address;
    }
    require(words(1, "D", 80, 2) == std::vector<int>{0x0201, 0x0403},
            "the values are in the store");
}
BENCHMARK(setIntoFullQueue)->Name("set/8_words_into_full_queue");

// The previous write is still queued and is replaced.
void setAgain(benchmark::State &state)
{
    const kmr::DriverFunctions &functions = intf();
    const QString name = QStringLiteral("D");
    std::vector<quint8> bytes = countingBytes(16);
    openStore();
    functions.setData(1, name, 0, 8, bytes.data(), 0);
    for (auto _ : state)
        functions.setData(1, name, 8, 8, bytes.data(), 0);
    require(words(1, "D", 8, 2) == std::vector<int>{0x0201, 0x0403}, "the values are in the store");
}
BENCHMARK(setAgain)->Name("set/8_words_again");

} // namespace

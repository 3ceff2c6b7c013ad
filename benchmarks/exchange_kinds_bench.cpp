// Exchanges of the other kinds: bits, counters, writes and bad replies, in a store of 100 areas.
#include "benchmarks/exchanges.h"

#include <benchmark/benchmark.h>

using namespace bench;

namespace {

// A store of 100 areas, of which only the `entries` of `run` are polled.
void openStore(const Run &run, int entries)
{
    openLink();
    intf().addrMerge(keysOf({{2, "D", 0, 100 - entries}, run}));
    poll({run}, 1);
}

void timeExchanges(benchmark::State &state, const char *line)
{
    const kmr::DriverFunctions &functions = intf();
    QByteArray reply = received(line);
    FRAME_PRO frame;
    QString errorInfo;
    for (auto _ : state) {
        functions.getSendFrame(&frame);
        functions.dealRcvFrame(reply, errorInfo);
    }
}

void readBits(benchmark::State &state)
{
    openStore({1, "M", 0, 32}, 2);
    const char *const reply = ":010204A5810F00C4";
    exchange(":010208000020D5", reply);
    quint8 bits[32] = {};
    intf().getData(1, QStringLiteral("M"), 0, 32, bits);
    const quint8 expected[32] = {1, 0, 1, 0, 0, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0, 1,
                                 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    require(memcmp(bits, expected, sizeof bits) == 0, "the bits are read");
    timeExchanges(state, reply);
}
BENCHMARK(readBits)->Name("exchange/kinds/read_32_bits");

void readCounters(benchmark::State &state)
{
    openStore({1, "CV2", 200, 8}, 8);
    const char *const reply = ":01031000000001000000020000000300000004E2";
    exchange(":01030EC8000422", reply);
    require(words(1, "CV2", 200, 8) == std::vector<int>{1, 0, 2, 0, 3, 0, 4, 0},
            "counters are read");
    timeExchanges(state, reply);
}
BENCHMARK(readCounters)->Name("exchange/kinds/read_4_counters");

// A request that the controller refuses is sent three times and given up.
void readRefused(benchmark::State &state)
{
    openStore({1, "D", 0, 8}, 8);
    QByteArray refusal = received(":0183027A");
    QString errorInfo;
    for (int result : {8, 8, 2}) {
        require(nextFrame() == ":010310000008E4", "the request is sent again");
        require(intf().dealRcvFrame(refusal, errorInfo) == result, "the reply is bad");
    }
    require(errorInfo == QStringLiteral("1#D0(8)(11)"), "the request is named");
    timeExchanges(state, ":0183027A");
}
BENCHMARK(readRefused)->Name("exchange/kinds/refused");

// The time of four exchanges, and of setting the values of three of them.
void writeAndRead(benchmark::State &state, const Write &write)
{
    checkWrites(write);
    WriteLoop loop(write);
    for (auto _ : state)
        loop.exchangeFour();
}
BENCHMARK_CAPTURE(writeAndRead, 8_words, WRITE_8_WORDS)
    ->Name("exchange/kinds/3_x_write_8_words_and_read");
BENCHMARK_CAPTURE(writeAndRead, bit, WRITE_BIT)->Name("exchange/kinds/3_x_write_bit_and_read");

} // namespace

// Exchanges of the other kinds: bits, counters, writes and bad replies, in a store of 100 areas.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

using namespace bench;

namespace
{

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

// Three writes, then the read that is due: the time of all four exchanges and of the three calls of
// intf_setData.
void timeWrites(benchmark::State &state, const char *area, int count, std::vector<quint8> values,
                const char *acknowledgement)
{
    const kmr::DriverFunctions &functions = intf();
    const QString name = QString::fromLatin1(area);
    QByteArray written = received(acknowledgement);
    QByteArray read = received(READ_8_REPLY);
    FRAME_PRO frame;
    QString errorInfo;
    for (auto _ : state) {
        for (int i = 0; i < 3; ++i) {
            functions.setData(1, name, 0, count, values.data(), 0);
            functions.getSendFrame(&frame);
            functions.dealRcvFrame(written, errorInfo);
        }
        functions.getSendFrame(&frame);
        functions.dealRcvFrame(read, errorInfo);
    }
    require(nextFrame() == ":010310000008E4" || state.iterations() == 0, "every write was sent");
}

void writeWords(benchmark::State &state)
{
    openStore({1, "D", 0, 8}, 8);
    std::vector<quint8> values = {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8, 0};
    const char *const acknowledgement = ":011010000008D7";
    for (int i = 0; i < 3; ++i) {
        intf().setData(1, QStringLiteral("D"), 0, 8, values.data(), 0);
        exchange(":0110100000081000010002000300040005000600070008A3", acknowledgement);
    }
    exchange(":010310000008E4", READ_8_REPLY);
    require(words(1, "D", 0, 8) == READ_8_VALUES, "the values are written");
    timeWrites(state, "D", 8, values, acknowledgement);
}
BENCHMARK(writeWords)->Name("exchange/kinds/write_8_words_x3_and_read");

void writeBit(benchmark::State &state)
{
    openStore({1, "D", 0, 8}, 8);
    std::vector<quint8> on = {1};
    const char *const acknowledgement = ":01050800FF00F3";
    for (int i = 0; i < 3; ++i) {
        intf().setData(1, QStringLiteral("M"), 0, 1, on.data(), 0);
        exchange(":01050800FF00F3", acknowledgement);
    }
    exchange(":010310000008E4", READ_8_REPLY);
    quint8 bit = 0;
    intf().getData(1, QStringLiteral("M"), 0, 1, &bit);
    require(bit == 1, "the bit is written");
    timeWrites(state, "M", 1, on, acknowledgement);
}
BENCHMARK(writeBit)->Name("exchange/kinds/write_bit_x3_and_read");

} // namespace

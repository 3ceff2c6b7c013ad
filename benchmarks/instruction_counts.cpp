// The operations that count-instructions counts. Each runs several times under callgrind, which
// writes one dump for each, named after it and the number of times. Prints the versions that the
// counts depend on, one in each line.
#include "benchmarks/exchanges.h"

#include <gnu/libc-version.h>
#include <valgrind/callgrind.h>

#include <iostream>

using namespace bench;

namespace {

const int TIMES = 1000;

template <typename Operation> void count(const std::string &name, int times, Operation operation)
{
    operation();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < times; ++i)
        operation();
    CALLGRIND_TOGGLE_COLLECT;
    const std::string label = name + ' ' + std::to_string(times);
    CALLGRIND_DUMP_STATS_AT(label.c_str());
}

void countReads(const std::string &name, int areas, bool changes)
{
    const std::vector<Run> plan = pollPlan(IN_TURN, areas);
    openStore(areas, plan);
    checkReads(plan);
    ReadLoop loop(plan.size(), changes);
    count(name, TIMES, [&] { loop.exchange(); });
}

void countWrites(const std::string &name, const Write &write)
{
    checkWrites(write);
    WriteLoop loop(write);
    count(name, TIMES, [&] { loop.exchangeFour(); });
}

void countMerge()
{
    std::vector<Run> runs;
    for (int address = 0; address < 1000; ++address)
        runs.push_back({1, "D", address, 1});
    const QList<KEY_ADDRESS> keys = keysOf(runs);
    count("merge_1000", 2, [&] {
        openLink();
        require(intf().addrMerge(keys) == 125, "1000 addresses make 125 blocks");
    });
}

void countValues()
{
    const QString area = QStringLiteral("D");
    std::vector<quint8> bytes(2 * READ_WORDS, 1);
    openStore(100, pollPlan(LAST, 100));
    count("get_8_words", TIMES, [&] { intf().getData(1, area, 92, READ_WORDS, bytes.data()); });
    for (int i = 0; i < 513; ++i)
        intf().setData(1, area, i / 8, 1 + i % 8, bytes.data(), 0);
    qint32 address = 84;
    count("set_8_words_into_full_queue", TIMES, [&] {
        intf().setData(1, area, address, READ_WORDS, bytes.data(), 0);
        address = 176 - address;
    });
}

} // namespace

int main()
{
    std::cout << "compiler " << __VERSION__ << "\nQt " << qVersion() << "\nlibc "
              << gnu_get_libc_version() << '\n'
              << (__builtin_cpu_supports("avx2") ? "AVX2" : "no AVX2") << '\n';
    countReads("exchange_8_areas", 8, false);
    countReads("exchange_100_areas", 100, false);
    countReads("exchange_100_areas_changed", 100, true);
    countReads("exchange_1000_areas", 1000, false);
    countWrites("3_writes_of_8_words_and_read", WRITE_8_WORDS);
    countWrites("3_writes_of_a_bit_and_read", WRITE_BIT);
    countMerge();
    countValues();
    return 0;
}

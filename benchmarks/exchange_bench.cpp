// Reading words: a request is built, its reply checked and decoded into the store. By the size of
// the store, because the driver searches it from its front for every word.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <algorithm>

using namespace bench;

namespace
{

const int WORDS = 8;             // that an exchange reads
const int STATION_WORDS = 10000; // that a station has in the store, at most
const int BLOCKS_IN_TURN = 125;  // that are polled, at most, spread evenly over the store

struct Store {
    int areas; // words of area D; 10,000 each of station 1, 2 and so on
    const char *lastRequest;
};

const char *const FIRST_REQUEST = ":010310000008E4";
const Store STORES[] = {
    {8, FIRST_REQUEST},         {100, ":0103105C000888"},    {1000, ":010313E0000801"},
    {10000, ":0103A708000845"}, {100000, ":1003A708000836"},
};

enum Blocks { FIRST, LAST, IN_TURN };
const char *const BLOCKS_NAMES[] = {"first", "last", "in_turn"};
const char *const CHANGE_NAMES[] = {"unchanged", "changed"};

// The eight words from the `element`-th of the store on, or the last eight of its station.
Run blockAt(int element)
{
    const int address = std::min(element % STATION_WORDS, STATION_WORDS - WORDS);
    return {1 + element / STATION_WORDS, "D", address, WORDS};
}

std::vector<Run> pollPlan(Blocks blocks, int areas)
{
    if (blocks == FIRST || areas == WORDS)
        return {blockAt(0)};
    if (blocks == LAST)
        return {blockAt(areas - WORDS)};
    const int count = std::min((areas + WORDS - 1) / WORDS, BLOCKS_IN_TURN);
    std::vector<Run> runs;
    for (int i = 0; i < count; ++i)
        runs.push_back(blockAt(i * (areas - WORDS) / (count - 1)));
    return runs;
}

// A large store takes seconds to build, so it is kept as long as benchmarks ask for the same size.
void openStore(int areas)
{
    static int open = 0;
    if (open == areas)
        return;
    openLink();
    std::vector<Run> runs;
    for (int first = 0; first < areas; first += STATION_WORDS)
        runs.push_back({1 + first / STATION_WORDS, "D", 0, std::min(areas - first, STATION_WORDS)});
    intf().addrMerge(keysOf(runs));
    open = areas;
}

// Polls every block of `plan` once. All values of `reply` have to arrive, and changes to be
// reported.
void pollOnce(const std::vector<Run> &plan, const char *reply, const std::vector<int> &values)
{
    for (const Run &run : plan) {
        const bool changes = words(run.station, "D", run.address, WORDS) != values;
        takeReports();
        exchange(nextFrame(), reply);
        require(words(run.station, "D", run.address, WORDS) == values, "the values are read");
        require((takeReports() > 0) == changes, "changes are reported");
    }
}

void readWords(benchmark::State &state, const Store &store, Blocks blocks, bool changes)
{
    const std::vector<Run> plan = pollPlan(blocks, store.areas);
    openStore(store.areas);
    poll(plan, static_cast<int>(plan.size()));
    const std::string request = nextFrame();
    require(request == (blocks == LAST ? store.lastRequest : FIRST_REQUEST), "request " + request);
    pollOnce(plan, OTHER_READ_8_REPLY, OTHER_READ_8_VALUES);
    pollOnce(plan, READ_8_REPLY, READ_8_VALUES);

    const kmr::DriverFunctions &functions = intf();
    QByteArray replies[2] = {received(READ_8_REPLY), received(OTHER_READ_8_REPLY)};
    FRAME_PRO frame;
    QString errorInfo;
    size_t done = 0;
    size_t reply = changes ? 1 : 0;
    for (auto _ : state) {
        functions.getSendFrame(&frame);
        functions.dealRcvFrame(replies[reply], errorInfo);
        if (changes && ++done == plan.size()) {
            done = 0;
            reply = 1 - reply;
        }
    }
}

// By size first, see openStore.
const bool registered = [] {
    for (const Store &store : STORES) {
        for (Blocks blocks : {FIRST, LAST, IN_TURN}) {
            for (bool changes : {false, true}) {
                const std::string name = std::string("exchange/") + BLOCKS_NAMES[blocks] + '/' +
                                         CHANGE_NAMES[changes] + '/' + std::to_string(store.areas);
                benchmark::RegisterBenchmark(name.c_str(), readWords, store, blocks, changes);
            }
        }
    }
    return true;
}();

} // namespace

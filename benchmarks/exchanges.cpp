#include "benchmarks/exchanges.h"

#include <algorithm>

namespace bench {

const Write WRITE_8_WORDS = {"D",
                             0,
                             8,
                             {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8, 0},
                             ":0110100000081000010002000300040005000600070008A3",
                             ":011010000008D7"};
const Write WRITE_BIT = {"M", 0, 1, {1}, ":01050800FF00F3", ":01050800FF00F3"};

namespace {

const int STATION_WORDS = 10000;
const int RUNS_IN_TURN = 125;

// The eight words from the `element`-th of the store on, or the last eight of its station.
Run runAt(int element)
{
    const int address = std::min(element % STATION_WORDS, STATION_WORDS - READ_WORDS);
    return {1 + element / STATION_WORDS, "D", address, READ_WORDS};
}

void pollOnce(const std::vector<Run> &plan, const char *reply, const std::vector<int> &values)
{
    for (const Run &run : plan) {
        const bool changes = words(run.station, "D", run.address, READ_WORDS) != values;
        takeReports();
        exchange(nextFrame(), reply);
        require(words(run.station, "D", run.address, READ_WORDS) == values, "the values are read");
        require((takeReports() > 0) == changes, "changes are reported");
    }
}

} // namespace

std::vector<Run> pollPlan(Blocks blocks, int areas)
{
    if (blocks == FIRST || areas == READ_WORDS)
        return {runAt(0)};
    if (blocks == LAST)
        return {runAt(areas - READ_WORDS)};
    const int count = std::min((areas + READ_WORDS - 1) / READ_WORDS, RUNS_IN_TURN);
    std::vector<Run> runs;
    for (int i = 0; i < count; ++i)
        runs.push_back(runAt(i * (areas - READ_WORDS) / (count - 1)));
    return runs;
}

void openStore(int areas, const std::vector<Run> &plan)
{
    static int openAreas = 0;
    static int openOnLink = 0;
    if (openAreas != areas || openOnLink != linksOpened()) {
        openLink();
        std::vector<Run> all;
        for (int first = 0; first < areas; first += STATION_WORDS) {
            const int count = std::min(areas - first, STATION_WORDS);
            all.push_back({1 + first / STATION_WORDS, "D", 0, count});
        }
        intf().addrMerge(keysOf(all));
        openAreas = areas;
        openOnLink = linksOpened();
    }
    poll(plan, static_cast<int>(plan.size()));
}

void checkReads(const std::vector<Run> &plan)
{
    pollOnce(plan, OTHER_READ_8_REPLY, OTHER_READ_8_VALUES);
    pollOnce(plan, READ_8_REPLY, READ_8_VALUES);
}

void checkWrites(const Write &write)
{
    openLink();
    intf().addrMerge(keysOf({{1, "D", 0, 92}, {1, "M", 0, 128}}));
    poll({{1, "D", 0, READ_WORDS}}, 1);
    const QString area = QString::fromLatin1(write.area);
    std::vector<quint8> data = write.data;
    for (int i = 0; i < 3; ++i) {
        intf().setData(1, area, write.address, write.count, data.data(), 0);
        exchange(write.request, write.acknowledgement);
    }
    std::fill(data.begin(), data.end(), quint8(0xEE));
    intf().getData(1, area, write.address, write.count, data.data());
    require(data == write.data, "the values are written");
    exchange(":010310000008E4", READ_8_REPLY);
    require(nextFrame() == ":010310000008E4", "no write is left");
    exchange(":010310000008E4", READ_8_REPLY);
}

} // namespace bench

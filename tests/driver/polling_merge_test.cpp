// The merge of the host's address runs into read blocks.
#include "driver/polling.h"

#include "driver_fixture.h"

#include <limits>
#include <utility>

namespace {

const int INT_LEAST = std::numeric_limits<int>::min();
const int INT_MOST = std::numeric_limits<int>::max();

// A run of addresses, and a read block: station, area, address, count.
using Run = std::tuple<int, std::string, int, int>;
using Runs = std::vector<Run>;

QList<KEY_ADDRESS> keysOf(const Runs &runs)
{
    QList<KEY_ADDRESS> keys;
    for (const auto &[station, area, address, count] : runs) {
        KEY_ADDRESS key;
        key.station = station;
        key.area = QString::fromStdString(area);
        key.address = address;
        key.count = count;
        keys.append(key);
    }
    return keys;
}

Runs plan()
{
    Runs blocks;
    for (const VARIABLE &block : std::as_const(driver.cyclicReads))
        blocks.emplace_back(block.station, block.area.toStdString(), block.address, block.count);
    return blocks;
}

class AddrMerge : public DriverTest {};

// --- What becomes of runs with a group limit of 8 ------------------------------------------------

struct MergeRow {
    const char *name;
    Runs runs;
    Runs blocks;
};

std::ostream &operator<<(std::ostream &out, const MergeRow &row)
{
    return out << row.name;
}

class MergedRuns : public DriverTest, public testing::WithParamInterface<MergeRow> {};

TEST_P(MergedRuns, MakeTheseBlocks)
{
    const qint32 blocks = intf_addrMerge(keysOf(GetParam().runs));
    EXPECT_EQ(plan(), GetParam().blocks);
    EXPECT_EQ(blocks, static_cast<qint32>(GetParam().blocks.size()));
}

std::string rowName(const testing::TestParamInfo<MergeRow> &row)
{
    return row.param.name;
}

const MergeRow WORDS[] = {
    {"OneRun", {{1, "D", 100, 2}}, {{1, "D", 100, 2}}},
    {"GapIsRead", {{1, "D", 100, 2}, {1, "D", 103, 1}}, {{1, "D", 100, 4}}},
    {"Touching", {{1, "D", 100, 2}, {1, "D", 102, 2}}, {{1, "D", 100, 4}}},
    {"Overlapping", {{1, "D", 0, 5}, {1, "D", 3, 4}}, {{1, "D", 0, 7}}},
    {"Inside", {{1, "D", 0, 5}, {1, "D", 1, 2}}, {{1, "D", 0, 5}}},
    {"InsideUpToTheEnd", {{1, "D", 0, 5}, {1, "D", 3, 2}}, {{1, "D", 0, 5}}},
    {"InsideDoesNotShorten", {{1, "D", 0, 5}, {1, "D", 1, 1}, {1, "D", 6, 1}}, {{1, "D", 0, 7}}},
    {"TwiceTheSame", {{1, "D", 7, 3}, {1, "D", 7, 3}}, {{1, "D", 7, 3}}},
    {"Unsorted", {{1, "D", 104, 1}, {1, "D", 102, 1}, {1, "D", 100, 1}}, {{1, "D", 100, 5}}},
    {"UpToTheLimit", {{1, "D", 0, 4}, {1, "D", 5, 3}}, {{1, "D", 0, 8}}},
    {"OneOverTheLimit", {{1, "D", 0, 4}, {1, "D", 5, 4}}, {{1, "D", 0, 4}, {1, "D", 5, 4}}},
    {"FarOverTheLimit", {{1, "D", 0, 5}, {1, "D", 6, 5}}, {{1, "D", 0, 5}, {1, "D", 6, 5}}},
    {"OverlappingOverTheLimit", {{1, "D", 0, 8}, {1, "D", 4, 8}}, {{1, "D", 0, 8}, {1, "D", 4, 8}}},
    {"GapMeasuredFromTheNewBlock",
     {{1, "D", 0, 1}, {1, "D", 20, 1}, {1, "D", 27, 1}},
     {{1, "D", 0, 1}, {1, "D", 20, 8}}},
    {"OneChunk", {{1, "D", 0, 8}}, {{1, "D", 0, 8}}},
    {"FullChunks", {{1, "D", 0, 16}}, {{1, "D", 0, 8}, {1, "D", 8, 8}}},
    {"LastChunkTakesTheRest", {{1, "D", 0, 20}}, {{1, "D", 0, 8}, {1, "D", 8, 8}, {1, "D", 16, 4}}},
    {"LastChunkIsExtended",
     {{1, "D", 0, 20}, {1, "D", 22, 1}},
     {{1, "D", 0, 8}, {1, "D", 8, 8}, {1, "D", 16, 7}}},
    {"ZeroCount", {{1, "D", 5, 0}}, {}},
    {"NegativeCount", {{1, "D", 5, -20}}, {}},
    {"NegativeAddress", {{1, "D", 0, 1}, {1, "D", -3, 2}}, {{1, "D", -3, 4}}},
    {"LeastAndMost",
     {{1, "D", INT_MOST, 1}, {1, "D", INT_LEAST, 1}},
     {{1, "D", INT_LEAST, 1}, {1, "D", INT_MOST, 1}}},
    {"EndBeyond32Bits",
     {{1, "D", INT_MOST - 1, 1}, {1, "D", INT_MOST, 1}},
     {{1, "D", INT_MOST - 1, 2}}},
    {"RunBeyond32Bits", {{1, "D", INT_MOST, 2}}, {{1, "D", INT_MOST, 2}}},
    {"Tv", {{1, "TV", 0, 9}}, {{1, "TV", 0, 8}, {1, "TV", 8, 1}}},
    {"Cv", {{1, "CV", 0, 9}}, {{1, "CV", 0, 8}, {1, "CV", 8, 1}}},
    {"TvJoins", {{1, "TV", 0, 1}, {1, "TV", 7, 1}}, {{1, "TV", 0, 8}}},
    {"CvJoins", {{1, "CV", 0, 1}, {1, "CV", 7, 1}}, {{1, "CV", 0, 8}}},
};

INSTANTIATE_TEST_SUITE_P(Words, MergedRuns, testing::ValuesIn(WORDS), rowName);

const MergeRow BITS[] = {
    {"JoinUpToEightBits", {{1, "M", 0, 4}, {1, "M", 4, 4}}, {{1, "M", 0, 8}}},
    {"JoinedLengthOverEightBits",
     {{1, "M", 0, 4}, {1, "M", 10, 4}},
     {{1, "M", 0, 4}, {1, "M", 10, 4}}},
    {"TouchingOverEightBits", {{1, "M", 0, 8}, {1, "M", 8, 1}}, {{1, "M", 0, 8}, {1, "M", 8, 1}}},
    {"InsideALongChunk", {{1, "M", 0, 20}, {1, "M", 12, 8}}, {{1, "M", 0, 20}}},
    {"OverTheEndOfALongChunk",
     {{1, "M", 0, 20}, {1, "M", 15, 10}},
     {{1, "M", 0, 20}, {1, "M", 15, 10}}},
    {"ChunkOf64Bits", {{1, "M", 0, 64}}, {{1, "M", 0, 64}}},
    {"ChunksOf64Bits", {{1, "M", 3, 100}}, {{1, "M", 3, 64}, {1, "M", 67, 36}}},
    {"XIsMeasuredOnItsDigits", {{1, "X", 7, 1}, {1, "X", 10, 1}}, {{1, "X", 7, 4}}},
    {"XKeepsItsDigits", {{1, "X", 17, 1}}, {{1, "X", 17, 1}}},
    {"XChunks", {{1, "X", 0, 65}}, {{1, "X", 0, 64}, {1, "X", 64, 1}}},
    {"YChunks", {{1, "Y", 0, 65}}, {{1, "Y", 0, 64}, {1, "Y", 64, 1}}},
    {"SChunks", {{1, "S", 0, 65}}, {{1, "S", 0, 64}, {1, "S", 64, 1}}},
    {"TChunks", {{1, "T", 0, 65}}, {{1, "T", 0, 64}, {1, "T", 64, 1}}},
    {"CChunks", {{1, "C", 0, 65}}, {{1, "C", 0, 64}, {1, "C", 64, 1}}},
    // Runs with the same start are taken newest first.
    {"NewestIsLonger", {{1, "M", 0, 4}, {1, "M", 0, 20}}, {{1, "M", 0, 20}}},
    {"NewestIsShorter", {{1, "M", 0, 20}, {1, "M", 0, 4}}, {{1, "M", 0, 4}, {1, "M", 0, 20}}},
    {"NewestFirstOfThree",
     {{1, "M", 0, 20}, {1, "M", 0, 30}, {1, "M", 0, 25}, {1, "M", 50, 1}},
     {{1, "M", 0, 25}, {1, "M", 0, 30}, {1, "M", 50, 1}}},
};

INSTANTIATE_TEST_SUITE_P(Bits, MergedRuns, testing::ValuesIn(BITS), rowName);

const MergeRow TIMERS_AND_COUNTERS[] = {
    {"TSplitsAt255", {{1, "T", 250, 4}, {1, "T", 255, 1}}, {{1, "T", 250, 4}, {1, "T", 255, 1}}},
    {"CSplitsAt255", {{1, "C", 254, 1}, {1, "C", 255, 1}}, {{1, "C", 254, 1}, {1, "C", 255, 1}}},
    {"TSplitsAbove255", {{1, "T", 254, 1}, {1, "T", 256, 1}}, {{1, "T", 254, 1}, {1, "T", 256, 1}}},
    {"TOverlappingSplitsToo",
     {{1, "T", 253, 3}, {1, "T", 255, 3}},
     {{1, "T", 253, 3}, {1, "T", 255, 3}}},
    {"TJoinsBelow255", {{1, "T", 250, 1}, {1, "T", 253, 1}}, {{1, "T", 250, 4}}},
    {"TJoinsFrom255On", {{1, "T", 255, 1}, {1, "T", 256, 1}}, {{1, "T", 255, 2}}},
    {"TJoinsWhatStartsAt254", {{1, "T", 250, 2}, {1, "T", 254, 4}}, {{1, "T", 250, 8}}},
    {"TInsideIsDropped", {{1, "T", 250, 6}, {1, "T", 255, 1}}, {{1, "T", 250, 6}}},
    {"TGoesOnFromTheNewBlock",
     {{1, "T", 254, 1}, {1, "T", 255, 1}, {1, "T", 260, 1}},
     {{1, "T", 254, 1}, {1, "T", 255, 6}}},
    {"SJoinsAcross255", {{1, "S", 250, 4}, {1, "S", 255, 1}}, {{1, "S", 250, 6}}},
    {"MJoinsAcross255", {{1, "M", 254, 1}, {1, "M", 255, 1}}, {{1, "M", 254, 2}}},
    {"DJoinsAcross255", {{1, "D", 254, 1}, {1, "D", 255, 1}}, {{1, "D", 254, 2}}},
    {"Cv2IsNeverJoined",
     {{1, "CV2", 200, 1}, {1, "CV2", 201, 1}},
     {{1, "CV2", 200, 1}, {1, "CV2", 201, 1}}},
    {"Cv2IsNeverDropped",
     {{1, "CV2", 200, 2}, {1, "CV2", 200, 2}},
     {{1, "CV2", 200, 2}, {1, "CV2", 200, 2}}},
    {"Cv2IsSorted",
     {{1, "CV2", 203, 1}, {1, "CV2", 201, 2}},
     {{1, "CV2", 201, 2}, {1, "CV2", 203, 1}}},
    {"Cv2IsCut",
     {{1, "CV2", 200, 20}},
     {{1, "CV2", 200, 8}, {1, "CV2", 208, 8}, {1, "CV2", 216, 4}}},
};

INSTANTIATE_TEST_SUITE_P(TimersAndCounters, MergedRuns, testing::ValuesIn(TIMERS_AND_COUNTERS),
                         rowName);

// Bits of TV words are polled as the words that they touch.
const MergeRow TV_BITS[] = {
    {"TwoWords", {{1, "TV_bit", 17, 20}}, {{1, "TV_bit", 1, 2}}},
    {"WholeWord", {{1, "TV_bit", 32, 16}}, {{1, "TV_bit", 2, 1}}},
    {"OneBitMore", {{1, "TV_bit", 32, 17}}, {{1, "TV_bit", 2, 2}}},
    {"LastBitOfAWord", {{1, "TV_bit", 15, 1}}, {{1, "TV_bit", 0, 1}}},
    {"AcrossTwoWords", {{1, "TV_bit", 15, 2}}, {{1, "TV_bit", 0, 2}}},
    {"CutInWords", {{1, "TV_bit", 0, 160}}, {{1, "TV_bit", 0, 8}, {1, "TV_bit", 8, 2}}},
    {"JoinedInWords", {{1, "TV_bit", 0, 1}, {1, "TV_bit", 32, 1}}, {{1, "TV_bit", 0, 3}}},
    {"NotWithTvWords",
     {{1, "TV_bit", 16, 1}, {1, "TV", 1, 1}},
     {{1, "TV", 1, 1}, {1, "TV_bit", 1, 1}}},
    {"ZeroCountOnAWordsFirstBit", {{1, "TV_bit", 16, 0}}, {}},
    {"ZeroCountWithinAWord", {{1, "TV_bit", 17, 0}}, {{1, "TV_bit", 1, 1}}},
    {"NegativeCountWithinAWord", {{1, "TV_bit", 31, -14}}, {{1, "TV_bit", 1, 1}}},
    {"NegativeCountDownToTheWord", {{1, "TV_bit", 31, -15}}, {}},
    {"NegativeCountBelowTheWord", {{1, "TV_bit", 17, -20}}, {}},
    {"LeastCount", {{1, "TV_bit", -15, INT_LEAST}}, {}},
    {"NegativeAddressTruncates", {{1, "TV_bit", -1, 20}}, {{1, "TV_bit", 0, 2}}},
    {"NegativeAddressOneBit", {{1, "TV_bit", -1, 1}}, {}},
    {"NegativeWord", {{1, "TV_bit", -17, 18}}, {{1, "TV_bit", -1, 2}}},
    {"EndBeyond32Bits", {{1, "TV_bit", INT_MOST, 2}}, {{1, "TV_bit", 134217727, 2}}},
};

INSTANTIATE_TEST_SUITE_P(TvBits, MergedRuns, testing::ValuesIn(TV_BITS), rowName);

const MergeRow ORDER[] = {
    {"ByArea",
     {{1, "TV_bit", 16, 1},
      {1, "C", 1, 1},
      {1, "T", 1, 1},
      {1, "S", 1, 1},
      {1, "M", 1, 1},
      {1, "Y", 1, 1},
      {1, "X", 1, 1},
      {1, "D", 1, 1},
      {1, "CV2", 200, 1},
      {1, "CV", 1, 1},
      {1, "TV", 1, 1}},
     {{1, "TV", 1, 1},
      {1, "CV", 1, 1},
      {1, "CV2", 200, 1},
      {1, "D", 1, 1},
      {1, "X", 1, 1},
      {1, "Y", 1, 1},
      {1, "M", 1, 1},
      {1, "S", 1, 1},
      {1, "T", 1, 1},
      {1, "C", 1, 1},
      {1, "TV_bit", 1, 1}}},
    {"ByStationWithinAnArea",
     {{2, "D", 0, 1}, {255, "D", 0, 1}, {1, "D", 50, 1}, {0, "D", 90, 1}},
     {{0, "D", 90, 1}, {1, "D", 50, 1}, {2, "D", 0, 1}, {255, "D", 0, 1}}},
    {"AreaBeforeStation",
     {{1, "D", 0, 1}, {200, "CV2", 250, 1}, {0, "X", 0, 1}},
     {{200, "CV2", 250, 1}, {1, "D", 0, 1}, {0, "X", 0, 1}}},
    {"StationsAreNotJoined", {{1, "D", 0, 1}, {2, "D", 1, 1}}, {{1, "D", 0, 1}, {2, "D", 1, 1}}},
    {"UnknownAreasAreSkipped",
     {{1, "Q", 0, 1}, {1, "SM", 0, 1}, {1, "d", 0, 1}, {1, "", 0, 1}, {1, "D", 0, 1}},
     {{1, "D", 0, 1}}},
};

INSTANTIATE_TEST_SUITE_P(Order, MergedRuns, testing::ValuesIn(ORDER), rowName);

// Station numbers of 256 and more run into the keys of the next area; each chunk is judged by its
// own area.
const MergeRow SHARED_KEYS[] = {
    {"JoinedWithTheNextArea", {{256, "D", 10, 2}, {0, "X", 13, 1}}, {{256, "D", 10, 4}}},
    {"DroppedInTheNextArea", {{256, "D", 10, 4}, {0, "X", 12, 1}}, {{256, "D", 10, 4}}},
    {"CounterThenWord", {{256, "CV2", 200, 1}, {0, "D", 202, 1}}, {{256, "CV2", 200, 3}}},
    {"CounterStaysOutOfAWordBlock",
     {{0, "D", 200, 4}, {256, "CV2", 201, 1}},
     {{0, "D", 200, 4}, {256, "CV2", 201, 1}}},
    // The counter leaves the block's start and length alone, but takes the count as the last block.
    {"ExtendingWritesTheLastBlock",
     {{0, "D", 200, 2}, {256, "CV2", 201, 1}, {0, "D", 203, 1}},
     {{0, "D", 200, 2}, {256, "CV2", 201, 4}}},
    {"NewestCounterHidesTheWord", {{0, "D", 200, 1}, {256, "CV2", 200, 1}}, {{256, "CV2", 200, 1}}},
    {"NewestWordKeepsTheCounter",
     {{256, "CV2", 200, 1}, {0, "D", 200, 1}},
     {{0, "D", 200, 1}, {256, "CV2", 200, 1}}},
    {"StateJoinsATimerAcross255", {{0, "T", 250, 1}, {256, "S", 255, 1}}, {{0, "T", 250, 6}}},
    {"TimerSplitsFromAStateAt255",
     {{256, "S", 250, 1}, {0, "T", 255, 1}},
     {{256, "S", 250, 1}, {0, "T", 255, 1}}},
    {"ByKeyNotByArea",
     {{700, "TV", 0, 1}, {5, "CV", 0, 1}, {1, "D", 0, 1}},
     {{5, "CV", 0, 1}, {700, "TV", 0, 1}, {1, "D", 0, 1}}},
    {"NegativeStationFallsBack",
     {{0, "CV2", 200, 1}, {-1, "D", 0, 1}, {255, "CV2", 200, 1}},
     {{0, "CV2", 200, 1}, {-1, "D", 0, 1}, {255, "CV2", 200, 1}}},
    // A key is a 32-bit number and wraps round.
    {"KeyBeyond32Bits",
     {{INT_MOST, "TV_bit", 0, 1}, {1, "D", 0, 1}, {INT_LEAST, "C", 0, 1}},
     {{INT_LEAST, "C", 0, 1}, {INT_MOST, "TV_bit", 0, 1}, {1, "D", 0, 1}}},
};

INSTANTIATE_TEST_SUITE_P(SharedKeys, MergedRuns, testing::ValuesIn(SHARED_KEYS), rowName);

// --- Other group limits --------------------------------------------------------------------------

TEST_F(AddrMerge, LimitOfThreeCutsAndJoinsByThree)
{
    configure("1#0#0#3#3");
    intf_addrMerge(keysOf({{1, "D", 0, 7}, {1, "D", 50, 1}, {1, "D", 52, 1}, {1, "D", 53, 1}}));
    EXPECT_EQ(
        plan(),
        (Runs{{1, "D", 0, 3}, {1, "D", 3, 3}, {1, "D", 6, 1}, {1, "D", 50, 3}, {1, "D", 53, 1}}));
}

TEST_F(AddrMerge, LimitOfThreeCutsBitsBy24AndJoinsThemByThree)
{
    configure("1#0#0#3#3");
    intf_addrMerge(keysOf({{1, "M", 0, 25}, {1, "M", 50, 1}, {1, "M", 52, 1}, {1, "M", 53, 1}}));
    EXPECT_EQ(plan(), (Runs{{1, "M", 0, 24}, {1, "M", 24, 1}, {1, "M", 50, 3}, {1, "M", 53, 1}}));
}

TEST_F(AddrMerge, LimitOfOneJoinsNothing)
{
    configure("1#0#0#3#1");
    intf_addrMerge(keysOf({{1, "D", 0, 2}, {1, "D", 1, 1}, {1, "M", 0, 9}}));
    EXPECT_EQ(plan(), (Runs{{1, "D", 0, 1}, {1, "D", 1, 1}, {1, "M", 0, 8}, {1, "M", 8, 1}}));
}

TEST_F(AddrMerge, LimitBelowOneCutsIntoSingleElements)
{
    for (const char *property : {"1#0#0#3#0", "1#0#0#3#-5", "1#0#0#3#-2147483648"}) {
        configure(property);
        EXPECT_EQ(intf_addrMerge(keysOf({{1, "D", 0, 2}, {1, "M", 0, 2}, {1, "TV_bit", 15, 2}})),
                  6);
        EXPECT_EQ(plan(), (Runs{{1, "D", 0, 1},
                                {1, "D", 1, 1},
                                {1, "M", 0, 1},
                                {1, "M", 1, 1},
                                {1, "TV_bit", 0, 1},
                                {1, "TV_bit", 1, 1}}))
            << property;
    }
}

// --- The plan and the marks ----------------------------------------------------------------------

TEST_F(AddrMerge, BlocksCarryTagFour)
{
    intf_addrMerge(keysOf({{1, "D", 0, 9}, {1, "CV2", 200, 1}, {1, "CV2", 200, 1}}));
    ASSERT_EQ(driver.cyclicReads.size(), 4);
    for (const VARIABLE &block : std::as_const(driver.cyclicReads))
        EXPECT_EQ(block.reqTag, 4);
}

TEST_F(AddrMerge, EachCallReplacesThePlan)
{
    intf_addrMerge(keysOf({{1, "D", 0, 20}}));
    EXPECT_EQ(intf_addrMerge(keysOf({{1, "M", 5, 1}})), 1);
    EXPECT_EQ(plan(), (Runs{{1, "M", 5, 1}}));
}

TEST_F(AddrMerge, EmptyListClearsThePlanAndEveryMark)
{
    intf_addrMerge(keysOf({{1, "D", 7, 1}, {1, "M", 3, 1}}));
    EXPECT_EQ(intf_addrMerge(QList<KEY_ADDRESS>()), 0);
    EXPECT_TRUE(driver.cyclicReads.isEmpty());
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(entryOf("D", 7).wordMonitor, 0);
    EXPECT_EQ(entryOf("M", 0).bitMonitor, 0);
}

TEST_F(AddrMerge, MarksAreRebuilt)
{
    intf_addrMerge(keysOf({{1, "D", 7, 1}, {1, "M", 3, 1}}));
    intf_addrMerge(keysOf({{1, "D", 8, 1}, {1, "M", 4, 1}}));
    EXPECT_EQ(entryOf("D", 7).wordMonitor, 0);
    EXPECT_EQ(entryOf("D", 8).wordMonitor, 1);
    EXPECT_EQ(entryOf("M", 0).bitMonitor, 1 << 4);
}

TEST_F(AddrMerge, ClearsEveryBitOfBothMarks)
{
    _DATA_ entry;
    entry.wordMonitor = -1;
    entry.bitMonitor = -1;
    driver.dataAreas << entry << entry;
    intf_addrMerge(QList<KEY_ADDRESS>());
    EXPECT_EQ(driver.dataAreas.at(0).wordMonitor, 0);
    EXPECT_EQ(driver.dataAreas.at(1).wordMonitor, 0);
    EXPECT_EQ(driver.dataAreas.at(1).bitMonitor, 0);
}

TEST_F(AddrMerge, KnownValuesSurvive)
{
    intf_addrMerge(keysOf({{1, "D", 7, 1}}));
    driver.dataAreas[0].readValue[0] = 0x5A;
    driver.dataAreas[0].commFailed = 1;
    intf_addrMerge(keysOf({{1, "D", 7, 1}}));
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(entryOf("D", 7).readValue[0], 0x5A);
    EXPECT_EQ(entryOf("D", 7).commFailed, 1);
}

TEST_F(AddrMerge, UnknownAreasAreWatchedButNotPolled)
{
    EXPECT_EQ(intf_addrMerge(keysOf({{1, "Q", 7, 1}, {1, "SM", 17, 1}})), 0);
    EXPECT_EQ(entryOf("Q", 7).wordMonitor, 1);
    EXPECT_EQ(entryOf("SM", 1).bitMonitor, 1 << 1);
}

TEST_F(AddrMerge, MarksTheTvBitsByTheirOwnNumbers)
{
    intf_addrMerge(keysOf({{1, "TV_bit", 17, 2}}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(entryOf("TV_bit", 17).wordMonitor, 1);
    EXPECT_EQ(entryOf("TV_bit", 18).wordMonitor, 1);
}

} // namespace

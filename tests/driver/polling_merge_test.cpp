// The merge of the host's address runs into read blocks.
#include "driver/polling.h"

#include "driver_fixture.h"

#include <regex>

namespace {

// Runs and blocks are written as "2#D:100x3", 3 words of station 2 from D100 on; without a number
// the station is 1.
QList<KEY_ADDRESS> runsOf(const std::string &text)
{
    static const std::regex pattern("(?:(-?[0-9]+)#)?([^: ]*):(-?[0-9]+)x(-?[0-9]+)");
    QList<KEY_ADDRESS> runs;
    for (std::sregex_iterator run(text.begin(), text.end(), pattern), end; run != end; ++run) {
        KEY_ADDRESS key;
        key.station = (*run)[1].matched ? std::stoi((*run)[1]) : 1;
        key.area = QString::fromStdString((*run)[2]);
        key.address = std::stoi((*run)[3]);
        key.count = std::stoi((*run)[4]);
        runs.append(key);
    }
    return runs;
}

class AddrMerge : public DriverTest {
protected:
    struct Row {
        const char *name;
        const char *runs;
        const char *blocks;
    };

    template <size_t SIZE> static void expectPlans(const Row (&rows)[SIZE])
    {
        for (const Row &row : rows) {
            const qint32 blocks = intf_addrMerge(runsOf(row.runs));
            EXPECT_EQ(targetsOf(driver.cyclicReads), row.blocks) << row.name;
            EXPECT_EQ(blocks, driver.cyclicReads.size()) << row.name;
        }
    }
};

} // namespace

// --- Runs with a group limit of 8 ----------------------------------------------------------------

TEST_F(AddrMerge, WordsAreJoinedUpToTheLimitAndCutAtIt)
{
    expectPlans(
        {{"OneRun", "D:100x2", "D:100x2"},
         {"GapIsRead", "D:100x2 D:103x1", "D:100x4"},
         {"Touching", "D:100x2 D:102x2", "D:100x4"},
         {"Overlapping", "D:0x5 D:3x4", "D:0x7"},
         {"Inside", "D:0x5 D:1x2", "D:0x5"},
         {"InsideUpToTheEnd", "D:0x5 D:3x2", "D:0x5"},
         {"InsideDoesNotShorten", "D:0x5 D:1x1 D:6x1", "D:0x7"},
         {"TwiceTheSame", "D:7x3 D:7x3", "D:7x3"},
         {"Unsorted", "D:104x1 D:102x1 D:100x1", "D:100x5"},
         {"UpToTheLimit", "D:0x4 D:5x3", "D:0x8"},
         {"OneOverTheLimit", "D:0x4 D:5x4", "D:0x4 D:5x4"},
         {"FarOverTheLimit", "D:0x5 D:6x5", "D:0x5 D:6x5"},
         {"OverlappingOverTheLimit", "D:0x8 D:4x8", "D:0x8 D:4x8"},
         {"GapMeasuredFromTheNewBlock", "D:0x1 D:20x1 D:27x1", "D:0x1 D:20x8"},
         {"OneChunk", "D:0x8", "D:0x8"},
         {"FullChunks", "D:0x16", "D:0x8 D:8x8"},
         {"LastChunkTakesTheRest", "D:0x20", "D:0x8 D:8x8 D:16x4"},
         {"LastChunkIsExtended", "D:0x20 D:22x1", "D:0x8 D:8x8 D:16x7"},
         {"ZeroCount", "D:5x0", ""},
         {"NegativeCount", "D:5x-20", ""},
         {"NegativeAddress", "D:0x1 D:-3x2", "D:-3x4"},
         {"LeastAndMost", "D:2147483647x1 D:-2147483648x1", "D:-2147483648x1 D:2147483647x1"},
         {"EndBeyond32Bits", "D:2147483646x1 D:2147483647x1", "D:2147483646x2"},
         {"RunBeyond32Bits", "D:2147483647x2", "D:2147483647x2"},
         {"Tv", "TV:0x9", "TV:0x8 TV:8x1"},
         {"Cv", "CV:0x9", "CV:0x8 CV:8x1"},
         {"TvJoins", "TV:0x1 TV:7x1", "TV:0x8"},
         {"CvJoins", "CV:0x1 CV:7x1", "CV:0x8"}});
}

TEST_F(AddrMerge, BitsAreJoinedUpToTheLimitAndCutAtEightTimesIt)
{
    expectPlans({{"JoinUpToEightBits", "M:0x4 M:4x4", "M:0x8"},
                 {"JoinedLengthOverEightBits", "M:0x4 M:10x4", "M:0x4 M:10x4"},
                 {"TouchingOverEightBits", "M:0x8 M:8x1", "M:0x8 M:8x1"},
                 {"InsideALongChunk", "M:0x20 M:12x8", "M:0x20"},
                 {"OverTheEndOfALongChunk", "M:0x20 M:15x10", "M:0x20 M:15x10"},
                 {"ChunkOf64Bits", "M:0x64", "M:0x64"},
                 {"ChunksOf64Bits", "M:3x100", "M:3x64 M:67x36"},
                 {"XIsMeasuredOnItsDigits", "X:7x1 X:10x1", "X:7x4"},
                 {"XKeepsItsDigits", "X:17x1", "X:17x1"},
                 {"XChunks", "X:0x65", "X:0x64 X:64x1"},
                 {"YChunks", "Y:0x65", "Y:0x64 Y:64x1"},
                 {"SChunks", "S:0x65", "S:0x64 S:64x1"},
                 {"TChunks", "T:0x65", "T:0x64 T:64x1"},
                 {"CChunks", "C:0x65", "C:0x64 C:64x1"},
                 // Runs with the same start are taken newest first.
                 {"NewestIsLonger", "M:0x4 M:0x20", "M:0x20"},
                 {"NewestIsShorter", "M:0x20 M:0x4", "M:0x4 M:0x20"},
                 {"NewestFirstOfThree", "M:0x20 M:0x30 M:0x25 M:50x1", "M:0x25 M:0x30 M:50x1"}});
}

TEST_F(AddrMerge, TimersAndCountersAreDividedAt255AndLongCountersNeverJoined)
{
    expectPlans({{"TSplitsAt255", "T:250x4 T:255x1", "T:250x4 T:255x1"},
                 {"CSplitsAt255", "C:254x1 C:255x1", "C:254x1 C:255x1"},
                 {"TSplitsAbove255", "T:254x1 T:256x1", "T:254x1 T:256x1"},
                 {"TOverlappingSplitsToo", "T:253x3 T:255x3", "T:253x3 T:255x3"},
                 {"TJoinsBelow255", "T:250x1 T:253x1", "T:250x4"},
                 {"TJoinsFrom255On", "T:255x1 T:256x1", "T:255x2"},
                 {"TJoinsWhatStartsAt254", "T:250x2 T:254x4", "T:250x8"},
                 {"TInsideIsDropped", "T:250x6 T:255x1", "T:250x6"},
                 {"TGoesOnFromTheNewBlock", "T:254x1 T:255x1 T:260x1", "T:254x1 T:255x6"},
                 {"SJoinsAcross255", "S:250x4 S:255x1", "S:250x6"},
                 {"MJoinsAcross255", "M:254x1 M:255x1", "M:254x2"},
                 {"DJoinsAcross255", "D:254x1 D:255x1", "D:254x2"},
                 {"Cv2IsNeverJoined", "CV2:200x1 CV2:201x1", "CV2:200x1 CV2:201x1"},
                 {"Cv2IsNeverDropped", "CV2:200x2 CV2:200x2", "CV2:200x2 CV2:200x2"},
                 {"Cv2IsSorted", "CV2:203x1 CV2:201x2", "CV2:201x2 CV2:203x1"},
                 {"Cv2IsCut", "CV2:200x20", "CV2:200x8 CV2:208x8 CV2:216x4"}});
}

TEST_F(AddrMerge, BitsOfTvWordsArePolledAsTheWordsThatTheyTouch)
{
    expectPlans({{"TwoWords", "TV_bit:17x20", "TV_bit:1x2"},
                 {"WholeWord", "TV_bit:32x16", "TV_bit:2x1"},
                 {"OneBitMore", "TV_bit:32x17", "TV_bit:2x2"},
                 {"LastBitOfAWord", "TV_bit:15x1", "TV_bit:0x1"},
                 {"AcrossTwoWords", "TV_bit:15x2", "TV_bit:0x2"},
                 {"CutInWords", "TV_bit:0x160", "TV_bit:0x8 TV_bit:8x2"},
                 {"JoinedInWords", "TV_bit:0x1 TV_bit:32x1", "TV_bit:0x3"},
                 {"NotWithTvWords", "TV_bit:16x1 TV:1x1", "TV:1x1 TV_bit:1x1"},
                 {"ZeroCountOnAWordsFirstBit", "TV_bit:16x0", ""},
                 {"ZeroCountWithinAWord", "TV_bit:17x0", "TV_bit:1x1"},
                 {"NegativeCountWithinAWord", "TV_bit:31x-14", "TV_bit:1x1"},
                 {"NegativeCountDownToTheWord", "TV_bit:31x-15", ""},
                 {"NegativeCountBelowTheWord", "TV_bit:17x-20", ""},
                 {"LeastCount", "TV_bit:-15x-2147483648", ""},
                 {"NegativeAddressTruncates", "TV_bit:-1x20", "TV_bit:0x2"},
                 {"NegativeAddressOneBit", "TV_bit:-1x1", ""},
                 {"NegativeWord", "TV_bit:-17x18", "TV_bit:-1x2"},
                 {"EndBeyond32Bits", "TV_bit:2147483647x2", "TV_bit:134217727x2"}});
}

TEST_F(AddrMerge, BlocksStandByAreaAndThenByStation)
{
    expectPlans(
        {{"ByArea", "TV_bit:16x1 C:1x1 T:1x1 S:1x1 M:1x1 Y:1x1 X:1x1 D:1x1 CV2:200x1 CV:1x1 TV:1x1",
          "TV:1x1 CV:1x1 CV2:200x1 D:1x1 X:1x1 Y:1x1 M:1x1 S:1x1 T:1x1 C:1x1 TV_bit:1x1"},
         {"ByStationWithinAnArea", "2#D:0x1 255#D:0x1 D:50x1 0#D:90x1",
          "0#D:90x1 D:50x1 2#D:0x1 255#D:0x1"},
         {"AreaBeforeStation", "D:0x1 200#CV2:250x1 0#X:0x1", "200#CV2:250x1 D:0x1 0#X:0x1"},
         {"StationsAreNotJoined", "D:0x1 2#D:1x1", "D:0x1 2#D:1x1"},
         {"UnknownAreasAreSkipped", "Q:0x1 SM:0x1 d:0x1 :0x1 D:0x1", "D:0x1"}});
}

// Each chunk is treated according to its own area.
TEST_F(AddrMerge, StationsFrom256OnRunIntoTheGroupsOfTheNextArea)
{
    expectPlans(
        {{"JoinedWithTheNextArea", "256#D:10x2 0#X:13x1", "256#D:10x4"},
         {"DroppedInTheNextArea", "256#D:10x4 0#X:12x1", "256#D:10x4"},
         {"CounterThenWord", "256#CV2:200x1 0#D:202x1", "256#CV2:200x3"},
         {"CounterStaysOutOfAWordBlock", "0#D:200x4 256#CV2:201x1", "0#D:200x4 256#CV2:201x1"},
         // The counter does not change the block's start and length, but takes the count as the
         // last block.
         {"ExtendingWritesTheLastBlock", "0#D:200x2 256#CV2:201x1 0#D:203x1",
          "0#D:200x2 256#CV2:201x4"},
         {"NewestCounterHidesTheWord", "0#D:200x1 256#CV2:200x1", "256#CV2:200x1"},
         {"NewestWordKeepsTheCounter", "256#CV2:200x1 0#D:200x1", "0#D:200x1 256#CV2:200x1"},
         {"StateJoinsATimerAcross255", "0#T:250x1 256#S:255x1", "0#T:250x6"},
         {"TimerSplitsFromAStateAt255", "256#S:250x1 0#T:255x1", "256#S:250x1 0#T:255x1"},
         {"ByKeyNotByArea", "700#TV:0x1 5#CV:0x1 D:0x1", "5#CV:0x1 700#TV:0x1 D:0x1"},
         {"NegativeStationFallsBack", "0#CV2:200x1 -1#D:0x1 255#CV2:200x1",
          "0#CV2:200x1 -1#D:0x1 255#CV2:200x1"},
         // A key is a 32-bit number and wraps round.
         {"KeyBeyond32Bits", "2147483647#TV_bit:0x1 D:0x1 -2147483648#C:0x1",
          "-2147483648#C:0x1 2147483647#TV_bit:0x1 D:0x1"}});
}

// --- Other group limits --------------------------------------------------------------------------

TEST_F(AddrMerge, LimitCutsAndJoinsByItselfAndCutsBitsByEightTimesItself)
{
    configure("1#0#0#3#3");
    expectPlans({{"Words", "D:0x7 D:50x1 D:52x1 D:53x1", "D:0x3 D:3x3 D:6x1 D:50x3 D:53x1"},
                 {"Bits", "M:0x25 M:50x1 M:52x1 M:53x1", "M:0x24 M:24x1 M:50x3 M:53x1"}});
    configure("1#0#0#3#1");
    expectPlans({{"One", "D:0x2 D:1x1 M:0x9", "D:0x1 D:1x1 M:0x8 M:8x1"}});
}

TEST_F(AddrMerge, LimitBelowOneCutsIntoSingleElements)
{
    for (const char *property : {"1#0#0#3#0", "1#0#0#3#-5", "1#0#0#3#-2147483648"}) {
        configure(property);
        expectPlans({{property, "D:0x2 M:0x2 TV_bit:15x2",
                      "D:0x1 D:1x1 M:0x1 M:1x1 TV_bit:0x1 TV_bit:1x1"}});
    }
}

// --- The plan and the marks ----------------------------------------------------------------------

TEST_F(AddrMerge, BlocksCarryTagFour)
{
    intf_addrMerge(runsOf("D:0x9 CV2:200x1 CV2:200x1"));
    ASSERT_EQ(driver.cyclicReads.size(), 4);
    for (const VARIABLE &block : std::as_const(driver.cyclicReads))
        EXPECT_EQ(block.reqTag, 4);
}

TEST_F(AddrMerge, EachCallReplacesThePlanAndTheMarksAndKeepsTheValues)
{
    intf_addrMerge(runsOf("D:7x1 M:3x1"));
    driver.dataAreas[0].readValue[0] = 0x5A;
    driver.dataAreas[0].commFailed = 1;
    EXPECT_EQ(intf_addrMerge(runsOf("D:8x1 M:4x1")), 2);
    EXPECT_EQ(entryOf("D", 7).wordMonitor, 0);
    EXPECT_EQ(entryOf("D", 7).readValue[0], 0x5A);
    EXPECT_EQ(entryOf("D", 7).commFailed, 1);
    EXPECT_EQ(entryOf("D", 8).wordMonitor, 1);
    EXPECT_EQ(entryOf("M", 0).bitMonitor, 1 << 4);
    EXPECT_EQ(driver.dataAreas.size(), 3);
}

TEST_F(AddrMerge, EmptyListClearsThePlanAndEveryBitOfBothMarks)
{
    intf_addrMerge(runsOf("D:7x1"));
    _DATA_ entry;
    entry.wordMonitor = -1;
    entry.bitMonitor = -1;
    driver.dataAreas = QList<_DATA_>() << entry << entry;
    EXPECT_EQ(intf_addrMerge(QList<KEY_ADDRESS>()), 0);
    EXPECT_TRUE(driver.cyclicReads.isEmpty());
    for (const _DATA_ &left : std::as_const(driver.dataAreas))
        EXPECT_EQ(left.wordMonitor | left.bitMonitor, 0);
}

TEST_F(AddrMerge, UnknownAreasAreWatchedButNotPolled)
{
    EXPECT_EQ(intf_addrMerge(runsOf("Q:7x1 SM:17x1")), 0);
    EXPECT_EQ(entryOf("Q", 7).wordMonitor, 1);
    EXPECT_EQ(entryOf("SM", 1).bitMonitor, 1 << 1);
}

TEST_F(AddrMerge, MarksTheTvBitsByTheirOwnNumbers)
{
    intf_addrMerge(runsOf("TV_bit:17x2"));
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(entryOf("TV_bit", 17).wordMonitor, 1);
    EXPECT_EQ(entryOf("TV_bit", 18).wordMonitor, 1);
}

// Written values: how they show in the store before the controller has acknowledged them.
#include "driver/datastore.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class Mirror : public DriverTest {
protected:
    static void write(const char *area, qint32 address, qint32 count, std::vector<quint8> data)
    {
        write_saveDataToArea(1, area, address, count, data.data());
    }
};

// The value of a word during the report of its change.
int valueDuringReport = 0;

qint32 noteValue(qint32, qint32 station, QString area, qint32 address)
{
    quint8 bytes[4] = {0, 0, 0, 0};
    intf_getData(station, area, address, area == "CV2" ? 2 : 1, bytes);
    valueDuringReport = bytes[0];
    return 0;
}

} // namespace

TEST_F(Mirror, WordsAreWrittenAndPendingWhileTheReadValueStays)
{
    for (const char *area : WORD_AREAS) {
        driver.dataAreas << holding(watchedWord(area, 100), {1, 2});
        write(area, 100, 2, {0x34, 0x12, 0x78, 0x56});
        EXPECT_EQ(writtenValueOf(area, 100), Bytes({0x34, 0x12, 0, 0})) << area;
        EXPECT_EQ(writtenValueOf(area, 101), Bytes({0x78, 0x56, 0, 0})) << area;
        EXPECT_EQ(readValueOf(area, 100), Bytes({1, 2, 0, 0})) << area;
        EXPECT_EQ(entryOf(area, 100).writePending, 1);
        EXPECT_EQ(entryOf(area, 101).writePending, 1);
    }
    EXPECT_EQ(driver.dataAreas.size(), 6);
}

TEST_F(Mirror, CountersTakeTwoWordsEachAndAnOddWordIsLeftOut)
{
    write("CV2", 200, 5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 9});
    write("CV2", 250, 1, {1, 2});
    EXPECT_EQ(writtenValueOf("CV2", 200), Bytes({1, 2, 3, 4}));
    EXPECT_EQ(writtenValueOf("CV2", 201), Bytes({5, 6, 7, 8}));
    EXPECT_EQ(entryOf("CV2", 201).writePending, 1);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(Mirror, BitsAreSetInTheirBlocksOctalOnesAtTheirLinearAddress)
{
    for (const char *area : BIT_AREAS) {
        write(area, 7, 1, {1});
        EXPECT_EQ(writtenValueOf(area, 0), Bytes({0x80, 0, 0, 0})) << area;
        EXPECT_EQ(entryOf(area, 0).writePending, 1) << area;
    }
    write("M", 15, 2, {1, 1});
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0x80, 0x80, 0, 0}));
    EXPECT_EQ(writtenValueOf("M", 1), Bytes({0x01, 0, 0, 0}));
    write("X", 17, 2, {1, 1});
    EXPECT_EQ(writtenValueOf("X", 0), Bytes({0x80, 0x80, 0, 0}));
    EXPECT_EQ(writtenValueOf("X", 1), Bytes({0x01, 0, 0, 0}));
}

TEST_F(Mirror, OnlyOneSetsABitAndTheOtherByteKeepsWhatWasWrittenThere)
{
    driver.dataAreas << holding(watchedBits("M", 0, 0), {0xFF, 0xFF});
    write("M", 0, 3, {2, 0, 255});
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0xF8, 0, 0, 0}));
    quint8 bits[9];
    intf_getData(1, "M", 7, 9, bits);
    EXPECT_EQ(Bytes(bits, bits + 9), Bytes({1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Mirror, SecondWriteStartsFromThePendingValue)
{
    driver.dataAreas << holding(watchedBits("M", 0, 0), {0xF0});
    write("M", 4, 1, {0});
    write("M", 5, 1, {0});
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0xC0, 0, 0, 0}));
}

TEST_F(Mirror, OnlyChangedElementsOfARunAreReported)
{
    driver.dataAreas << holding(watchedWord("D", 100), {1, 2})
                     << holding(watchedWord("D", 101), {3, 4})
                     << holding(watchedWord("D", 102), {5, 6})
                     << holding(watchedBits("M", 0, 0xFFFF), {0x05}) << watchedBits("Y", 0, 0x8000);
    write("D", 100, 3, {1, 2, 3, 9, 9, 6});
    write("M", 0, 3, {1, 1, 0});
    write("Y", 17, 1, {1});
    EXPECT_EQ(told(), "D:101 D:102 M:1 M:2 Y:17");
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({1, 2, 0, 0})); // unchanged, and pending too
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
}

TEST_F(Mirror, EachByteOfACounterIsAChange)
{
    for (int i = 0; i < 5; ++i)
        driver.dataAreas << watchedWord("CV2", 200 + i);
    write("CV2", 200, 10, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0});
    EXPECT_EQ(told(), "CV2:200 CV2:201 CV2:202 CV2:203");
}

TEST_F(Mirror, PendingValueIsWhatAWriteIsComparedWith)
{
    driver.dataAreas << holding(watchedWord("D", 100), {1, 2});
    driver.dataAreas[0].commFailed = 1;
    write("D", 100, 1, {3, 4});
    write("D", 100, 1, {3, 4});
    write("D", 100, 1, {1, 2});
    EXPECT_EQ(reports().size(), 2u);
    EXPECT_EQ(entryOf("D", 100).commFailed, 1); // only a reply clears the failure mark
}

TEST_F(Mirror, ReportComesBeforeTheValueIsStored)
{
    intf_setAddrValueChangeCallBack(noteValue);
    driver.dataAreas << holding(watchedWord("D", 100), {0x77})
                     << holding(watchedWord("CV2", 200), {0x78})
                     << holding(watchedBits("M", 0, 1), {0x01});
    valueDuringReport = -1;
    write("D", 100, 1, {1, 0});
    EXPECT_EQ(valueDuringReport, 0x77);
    write("CV2", 200, 2, {1, 0, 0, 0});
    EXPECT_EQ(valueDuringReport, 0x78);
    write("M", 0, 1, {0});
    EXPECT_EQ(valueDuringReport, 1);
}

TEST_F(Mirror, OtherAreasAndCountsBelowOneLeaveNothing)
{
    for (const char *area : {"SM", "Q", "d"})
        write(area, 0, 1, {1, 1});
    for (const char *area : {"M", "D", "CV2"}) {
        write(area, 0, 0, {1, 1, 1, 1});
        write(area, 0, -2, {1, 1, 1, 1});
    }
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(Mirror, TvBitIsReportedByItsAddressAndStoredInItsBlock)
{
    driver.dataAreas << watchedWord("TV_bit", 17);
    write("TV_bit", 17, 1, {1});
    EXPECT_EQ(told(), "TV_bit:17");
    EXPECT_EQ(entryOf("TV_bit", 17).writePending, 0);
    EXPECT_EQ(entryOf("TV_bit", 1).writePending, 1);
    EXPECT_EQ(writtenValueOf("TV_bit", 1), Bytes({0x02, 0, 0, 0}));
}

TEST_F(Mirror, AddressesWrapRoundAt32Bits)
{
    write("D", INT_MAX, 2, {1, 2, 3, 4});
    EXPECT_EQ(writtenValueOf("D", INT_MIN), Bytes({3, 4, 0, 0}));
    write("M", INT_MAX, 2, {1, 1});
    EXPECT_EQ(writtenValueOf("M", INT_MAX / 16), Bytes({0, 0x80, 0, 0}));
}

TEST_F(Mirror, NegativeBitLeavesItsBlockPendingOnly)
{
    write("M", -1, 1, {1});
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(entryOf("M", 0).writePending, 1);
}

// Settled writes: the store after an acknowledgement or a give-up.
#include "driver/response.h"

#include "driver_fixture.h"

#include <climits>

namespace {

using SettledWrite = DriverTest;

} // namespace

TEST_F(SettledWrite, AcknowledgedWordsBecomeTheReadValuesAndAreReported)
{
    driver.dataAreas << written(watchedWord("D", 10), {1, 2}) << written(watchedWord("D", 11), {3})
                     << written(watchedWord("D", 12), {0, 4});
    driver.dataAreas[0].commFailed = 1;
    write_FailOrSuc(1, "D", 10, 3, 1);
    EXPECT_EQ(readValueOf("D", 10), Bytes({1, 2, 0, 0}));
    EXPECT_EQ(readValueOf("D", 11), Bytes({3, 0, 0, 0}));
    EXPECT_EQ(readValueOf("D", 12), Bytes({0, 4, 0, 0}));
    for (const _DATA_ &entry : driver.dataAreas)
        EXPECT_EQ(entry.writePending, 0);
    EXPECT_EQ(told(), "D:10 D:11 D:12");
    EXPECT_EQ(entryOf("D", 10).commFailed, 1); // the failure mark stays
}

TEST_F(SettledWrite, TwoBytesOfAWordAndFourOfACounterAreTaken)
{
    for (const char *area : {"TV", "CV", "D", "Q", "TV_bit"}) {
        driver.dataAreas << written(watchedWord(area, 10), {1, 2, 3, 4});
        write_FailOrSuc(1, area, 10, 1, 1);
        EXPECT_EQ(readValueOf(area, 10), Bytes({1, 2, 0, 0})) << area;
    }
    EXPECT_EQ(reports().size(), 5u);
    driver.dataAreas << written(watchedWord("CV2", 200), {1, 2, 3, 4})
                     << written(watchedWord("CV2", 201), {5, 6, 7, 8});
    write_FailOrSuc(1, "CV2", 200, 2, 1);
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({1, 2, 3, 4}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({5, 6, 7, 8}));
    EXPECT_EQ(writtenValueOf("CV2", 201), Bytes({5, 6, 7, 8}));
}

TEST_F(SettledWrite, GivenUpElementKeepsItsReadValueAndIsReported)
{
    driver.dataAreas << written(watchedWord("D", 10), {1, 2})
                     << written(watchedBits("S", 0, 0x0020), {0x20});
    write_FailOrSuc(1, "D", 10, 1, 0);
    write_FailOrSuc(1, "S", 5, 1, 0);
    EXPECT_EQ(readValueOf("D", 10), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 10), Bytes({1, 2, 0, 0}));
    EXPECT_EQ(entryOf("D", 10).writePending, 0);
    EXPECT_EQ(readValueOf("S", 0), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(entryOf("S", 0).writePending, 0);
    EXPECT_EQ(told(), "D:10 S:5");
}

TEST_F(SettledWrite, CountBelowOneSettlesNothing)
{
    write_FailOrSuc(1, "D", 10, 0, 1);
    write_FailOrSuc(1, "CV2", 200, 0, 1);
    write_FailOrSuc(1, "M", 10, -1, 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(SettledWrite, AcknowledgedBitTakesTheByteThatHoldsItOctalOnesTheirLinearByte)
{
    const struct {
        const char *area;
        qint32 bit;
        Bytes readValue; // of block 0
    } rows[] = {
        {"M", 0, {0x55, 0, 0, 0}},  {"M", 7, {0x55, 0, 0, 0}},  {"M", 8, {0, 0xAA, 0, 0}},
        {"M", 15, {0, 0xAA, 0, 0}}, {"Y", 7, {0x55, 0, 0, 0}},  {"X", 10, {0, 0xAA, 0, 0}},
        {"Y", 28, {0x55, 0, 0, 0}}, {"M", -9, {0x55, 0, 0, 0}}, // both count as bits of byte 0
    };
    for (const auto &row : rows) {
        driver.dataAreas = QList<_DATA_>()
                           << written(watchedBits(row.area, 0, 0), {0x55, 0xAA, 3, 4});
        write_FailOrSuc(1, row.area, row.bit, 1, 1);
        EXPECT_EQ(readValueOf(row.area, 0), row.readValue) << row.area << row.bit;
        EXPECT_EQ(entryOf(row.area, 0).writePending, 0);
    }
}

TEST_F(SettledWrite, GivenUpRunOfBitsCrossesBlocksAndIsReportedInTheAreasDigits)
{
    driver.dataAreas << written(watchedBits("M", 0, 0x8000), {0, 0x80})
                     << written(watchedBits("M", 1, 0x0001), {0x01, 0})
                     << watchedBits("Y", 0, 0xFFFF);
    write_FailOrSuc(1, "M", 15, 2, 0);
    write_FailOrSuc(1, "Y", 7, 2, 0);
    EXPECT_EQ(entryOf("M", 0).writePending, 0);
    EXPECT_EQ(entryOf("M", 1).writePending, 0);
    EXPECT_EQ(told(), "M:15 M:16 Y:7 Y:10");
}

TEST_F(SettledWrite, AcknowledgedBitIsNotReportedNorTheBlockThatSharesItsNumber)
{
    driver.dataAreas << written(watchedBits("M", 2, 0xFFFF), {0x01})
                     << watchedBits("M", 40, 0xFFFF);
    write_FailOrSuc(1, "M", 40, 1, 1);
    EXPECT_TRUE(reports().empty());
}

TEST_F(SettledWrite, AcknowledgedBitLeavesAnEntryOfItsOwnNumber)
{
    write_FailOrSuc(1, "M", 40, 1, 1);
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(driver.dataAreas.at(0).index, 2);
    EXPECT_EQ(driver.dataAreas.at(1).index, 40);
}

TEST_F(SettledWrite, EveryBitAreaIsSettledInBlocksButTvBitByItsAddress)
{
    for (const char *area : {"X", "Y", "M", "S", "SM", "T", "C"}) {
        driver.dataAreas << written(watchedBits(area, 0, 0x0020), {0x20});
        write_FailOrSuc(1, area, 5, 1, 0);
        EXPECT_EQ(entryOf(area, 0).writePending, 0) << area;
    }
    EXPECT_EQ(driver.dataAreas.size(), 7);
    EXPECT_EQ(reports().size(), 7u);
    driver.dataAreas << written(watchedBits("TV_bit", 1, 0), {0x02});
    write_FailOrSuc(1, "TV_bit", 17, 1, 1);
    EXPECT_EQ(entryOf("TV_bit", 1).writePending, 1);
    EXPECT_EQ(entryOf("TV_bit", 17).writePending, 0);
}

TEST_F(SettledWrite, AddressesWrapRoundAt32Bits)
{
    write_FailOrSuc(1, "D", INT_MAX, 2, 0);
    EXPECT_EQ(entryOf("D", INT_MAX).index, INT_MAX);
    EXPECT_EQ(entryOf("D", INT_MIN).index, INT_MIN);
}

TEST_F(SettledWrite, AcknowledgementSettlesTheWriteInFlight)
{
    driver.pendingWrites << variable("D", 10, 2) << variable("D", 20, 1);
    driver.dataAreas << written(watchedWord("D", 10), {1}) << written(watchedWord("D", 11), {2});
    writeInFlight("D", 10, 2);
    EXPECT_EQ(answer(":0110100A0002D3\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 10), Bytes({1, 0, 0, 0}));
    EXPECT_EQ(readValueOf("D", 11), Bytes({2, 0, 0, 0}));
    EXPECT_EQ(reports().size(), 2u);
    ASSERT_EQ(driver.pendingWrites.size(), 1);
    EXPECT_EQ(driver.pendingWrites.at(0).address, 20);
}

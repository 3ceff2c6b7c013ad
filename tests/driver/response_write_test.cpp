// Settled writes: what an acknowledgement or a give-up leaves in the store.
#include "driver/response.h"

#include "driver_fixture.h"

#include <array>
#include <climits>
#include <cstring>

namespace {

class SettledWrite : public DriverTest {
protected:
    // An entry that the host wrote and that the controller has not acknowledged.
    static _DATA_ written(_DATA_ entry, const std::array<quint8, 4> &value)
    {
        entry.writePending = 1;
        memcpy(entry.writtenValue, value.data(), value.size());
        return entry;
    }
};

} // namespace

TEST_F(SettledWrite, AcknowledgedWordsBecomeTheReadValues)
{
    driver.dataAreas << written(watchedWord("D", 10), {1, 2}) << written(watchedWord("D", 11), {3})
                     << written(watchedWord("D", 12), {0, 4});
    write_FailOrSuc(1, "D", 10, 3, 1);
    EXPECT_EQ(readValueOf("D", 10), Bytes({1, 2, 0, 0}));
    EXPECT_EQ(readValueOf("D", 11), Bytes({3, 0, 0, 0}));
    EXPECT_EQ(readValueOf("D", 12), Bytes({0, 4, 0, 0}));
    for (const _DATA_ &entry : driver.dataAreas)
        EXPECT_EQ(entry.writePending, 0);
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 10), Report(1, 1, "D", 11),
                                              Report(1, 1, "D", 12)}));
}

TEST_F(SettledWrite, OnlyTwoBytesOfAWordAreTaken)
{
    for (const char *area : {"TV", "CV", "D", "Q", "TV_bit"}) {
        driver.dataAreas << written(watchedWord(area, 10), {1, 2, 3, 4});
        write_FailOrSuc(1, area, 10, 1, 1);
        EXPECT_EQ(readValueOf(area, 10), Bytes({1, 2, 0, 0})) << area;
    }
    EXPECT_EQ(reports().size(), 5u);
}

TEST_F(SettledWrite, FourBytesOfACounterAreTaken)
{
    driver.dataAreas << written(watchedWord("CV2", 200), {1, 2, 3, 4})
                     << written(watchedWord("CV2", 201), {5, 6, 7, 8});
    write_FailOrSuc(1, "CV2", 200, 2, 1);
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({1, 2, 3, 4}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({5, 6, 7, 8}));
    EXPECT_EQ(writtenValueOf("CV2", 201), Bytes({5, 6, 7, 8}));
}

TEST_F(SettledWrite, GivenUpWordKeepsItsReadValueAndIsReported)
{
    driver.dataAreas << written(watchedWord("D", 10), {1, 2});
    write_FailOrSuc(1, "D", 10, 1, 0);
    EXPECT_EQ(readValueOf("D", 10), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 10), Bytes({1, 2, 0, 0}));
    EXPECT_EQ(entryOf("D", 10).writePending, 0);
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 10)}));
}

TEST_F(SettledWrite, UnwatchedWordIsNotReported)
{
    write_FailOrSuc(1, "D", 10, 1, 1);
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(SettledWrite, CountBelowOneSettlesNothing)
{
    write_FailOrSuc(1, "D", 10, 0, 1);
    write_FailOrSuc(1, "M", 10, -1, 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(SettledWrite, OtherStationsStayPending)
{
    driver.dataAreas << written(watchedWord("D", 10), {1, 2});
    write_FailOrSuc(2, "D", 10, 1, 1);
    EXPECT_EQ(entryOf("D", 10).writePending, 1);
}

TEST_F(SettledWrite, FailureMarkStays)
{
    driver.dataAreas << written(watchedWord("D", 10), {1, 2});
    driver.dataAreas[0].commFailed = 1;
    write_FailOrSuc(1, "D", 10, 1, 1);
    EXPECT_EQ(entryOf("D", 10).commFailed, 1);
}

TEST_F(SettledWrite, AcknowledgedBitTakesTheByteThatHoldsIt)
{
    driver.dataAreas << written(watchedBits("M", 1, 0), {0x55, 0xAA, 3, 4});
    write_FailOrSuc(1, "M", 17, 1, 1);
    EXPECT_EQ(readValueOf("M", 1), Bytes({0x55, 0, 0, 0}));
    EXPECT_EQ(entryOf("M", 1).writePending, 0);
    write_FailOrSuc(1, "M", 24, 1, 1);
    EXPECT_EQ(readValueOf("M", 1), Bytes({0x55, 0xAA, 0, 0}));
}

TEST_F(SettledWrite, BitsUpTo7LieInByte0)
{
    driver.dataAreas << written(watchedBits("M", 1, 0), {0x55, 0xAA});
    write_FailOrSuc(1, "M", 23, 1, 1);
    EXPECT_EQ(readValueOf("M", 1), Bytes({0x55, 0, 0, 0}));
}

TEST_F(SettledWrite, BitsFrom8OnLieInByte1)
{
    driver.dataAreas << written(watchedBits("M", 0, 0), {0x55, 0xAA});
    write_FailOrSuc(1, "M", 15, 1, 1);
    EXPECT_EQ(readValueOf("M", 0), Bytes({0, 0xAA, 0, 0}));
}

TEST_F(SettledWrite, OctalBitIsKeyedByItsLinearAddress)
{
    driver.dataAreas << written(watchedBits("Y", 0, 0), {0x55, 0xAA})
                     << written(watchedBits("X", 0, 0), {0x55, 0xAA});
    write_FailOrSuc(1, "Y", 7, 1, 1);
    EXPECT_EQ(readValueOf("Y", 0), Bytes({0x55, 0, 0, 0}));
    write_FailOrSuc(1, "X", 10, 1, 1);
    EXPECT_EQ(readValueOf("X", 0), Bytes({0, 0xAA, 0, 0}));
}

TEST_F(SettledWrite, InvalidOctalBitIsBit0)
{
    driver.dataAreas << written(watchedBits("Y", 0, 0), {0x55, 0xAA});
    write_FailOrSuc(1, "Y", 28, 1, 1);
    EXPECT_EQ(readValueOf("Y", 0), Bytes({0x55, 0, 0, 0}));
}

TEST_F(SettledWrite, RunOfBitsCrossesBlocks)
{
    driver.dataAreas << written(watchedBits("M", 0, 0x8000), {0, 0x80})
                     << written(watchedBits("M", 1, 0x0001), {0x01, 0});
    write_FailOrSuc(1, "M", 15, 2, 0);
    EXPECT_EQ(entryOf("M", 0).writePending, 0);
    EXPECT_EQ(entryOf("M", 1).writePending, 0);
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "M", 15), Report(1, 1, "M", 16)}));
}

TEST_F(SettledWrite, GivenUpBitKeepsItsReadValueAndIsReported)
{
    driver.dataAreas << written(watchedBits("S", 0, 0x0020), {0x20});
    write_FailOrSuc(1, "S", 5, 1, 0);
    EXPECT_EQ(readValueOf("S", 0), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(entryOf("S", 0).writePending, 0);
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "S", 5)}));
}

TEST_F(SettledWrite, GivenUpOctalRunIsReportedInOctalDigits)
{
    driver.dataAreas << watchedBits("Y", 0, 0xFFFF);
    write_FailOrSuc(1, "Y", 7, 2, 0);
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "Y", 7), Report(1, 1, "Y", 10)}));
}

TEST_F(SettledWrite, AcknowledgedBitIsNotReported)
{
    driver.dataAreas << written(watchedBits("M", 0, 0xFFFF), {0x20});
    write_FailOrSuc(1, "M", 5, 1, 1);
    EXPECT_TRUE(reports().empty());
}

TEST_F(SettledWrite, BlockThatSharesTheNumberOfAnAcknowledgedBitIsNotReported)
{
    driver.dataAreas << watchedBits("M", 40, 0xFFFF);
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

TEST_F(SettledWrite, EveryBitAreaIsSettledInBlocks)
{
    for (const char *area : {"X", "Y", "M", "S", "SM", "T", "C"}) {
        driver.dataAreas << written(watchedBits(area, 0, 0x0020), {0x20});
        write_FailOrSuc(1, area, 5, 1, 0);
        EXPECT_EQ(entryOf(area, 0).writePending, 0) << area;
    }
    EXPECT_EQ(driver.dataAreas.size(), 7);
    EXPECT_EQ(reports().size(), 7u);
}

TEST_F(SettledWrite, TvBitIsSettledByItsAddressNotItsBlock)
{
    driver.dataAreas << written(watchedBits("TV_bit", 1, 0), {0x02});
    write_FailOrSuc(1, "TV_bit", 17, 1, 1);
    EXPECT_EQ(entryOf("TV_bit", 1).writePending, 1);
    EXPECT_EQ(entryOf("TV_bit", 17).writePending, 0);
}

TEST_F(SettledWrite, NegativeBitCountsAsByte0)
{
    driver.dataAreas << written(watchedBits("M", 0, 0), {0x55, 0xAA});
    write_FailOrSuc(1, "M", -9, 1, 0);
    write_FailOrSuc(1, "M", -9, 1, 1);
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x55, 0, 0, 0}));
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

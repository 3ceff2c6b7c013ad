// Reading values out of the store.
#include "driver/datastore.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class GetData : public DriverTest {
protected:
    // What a read of `count` elements writes into a buffer of `size` bytes that hold 0xEE.
    static Bytes read(const char *area, qint32 address, qint32 count, size_t size)
    {
        std::vector<quint8> out(size, 0xEE);
        EXPECT_EQ(intf_getData(1, area, address, count, out.data()), 1);
        return Bytes(out.begin(), out.end());
    }

    static void store(const char *area, qint32 index, const Bytes &readValue)
    {
        driver.dataAreas << holding(watchedWord(area, index), readValue);
    }
};

} // namespace

TEST_F(GetData, BitsComeOneByteEach)
{
    for (const char *area : BIT_AREAS) {
        store(area, 0, {0x02});
        EXPECT_EQ(read(area, 1, 1, 2), Bytes({1, 0xEE})) << area;
    }
}

TEST_F(GetData, EveryBitOfABlockHasItsPlaceAndARunCrossesBlocks)
{
    store("M", 1, {0x35, 0xC6});
    store("M", 2, {0x01, 0});
    EXPECT_EQ(read("M", 16, 18, 18), Bytes({1, 0, 1, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 1, 0}));
}

TEST_F(GetData, OctalBitIsReadAtItsLinearAddressAndAnInvalidOneAtBit0)
{
    store("X", 0, {0x01, 0x80});
    store("Y", 1, {0x01});
    EXPECT_EQ(read("X", 17, 1, 1), Bytes({1}));
    EXPECT_EQ(read("Y", 17, 2, 2), Bytes({0, 1}));
    EXPECT_EQ(read("X", 18, 1, 1), Bytes({1}));
    EXPECT_EQ(read("X", -5, 1, 1), Bytes({1}));
}

TEST_F(GetData, NegativeBitReadsAs0)
{
    store("M", 0, {0xFF, 0xFF});
    EXPECT_EQ(read("M", -1, 2, 2), Bytes({0, 1}));
}

TEST_F(GetData, WordsComeLowByteFirst)
{
    for (const char *area : WORD_AREAS) {
        store(area, 100, {0x34, 0x12, 0x99, 0x99});
        store(area, 101, {0x78, 0x56, 0x99, 0x99});
        EXPECT_EQ(read(area, 100, 2, 5), Bytes({0x34, 0x12, 0x78, 0x56, 0xEE})) << area;
    }
}

TEST_F(GetData, CountersComeLowByteFirstAndAnOddWordIsLeftOut)
{
    store("CV2", 200, {1, 2, 3, 4});
    store("CV2", 201, {5, 6, 7, 8});
    EXPECT_EQ(read("CV2", 200, 4, 9), Bytes({1, 2, 3, 4, 5, 6, 7, 8, 0xEE}));
    EXPECT_EQ(read("CV2", 200, 3, 5), Bytes({1, 2, 3, 4, 0xEE}));
    EXPECT_EQ(read("CV2", 200, 1, 1), Bytes({0xEE}));
}

TEST_F(GetData, OtherAreasAndCountsBelowOneWriteNothing)
{
    for (const char *area : {"SM", "Q", "d"})
        EXPECT_EQ(read(area, 0, 1, 1), Bytes({0xEE})) << area;
    for (const char *area : {"M", "D", "CV2"}) {
        EXPECT_EQ(read(area, 0, 0, 1), Bytes({0xEE})) << area;
        EXPECT_EQ(read(area, 0, -4, 1), Bytes({0xEE})) << area;
    }
    EXPECT_EQ(intf_getData(1, "D", 100, 1, nullptr), 1);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(GetData, UnknownElementReadsAs0AndLeavesAnEntry)
{
    EXPECT_EQ(read("D", 100, 1, 2), Bytes({0, 0}));
    EXPECT_EQ(entryOf("D", 100).wordMonitor, 0);
    EXPECT_EQ(read("M", 40, 1, 1), Bytes({0}));
    EXPECT_EQ(entryOf("M", 2).bitMonitor, 0);
}

TEST_F(GetData, PendingWriteIsReadInsteadOfTheReadValue)
{
    driver.dataAreas << written(holding(watchedWord("D", 100), {1, 2}), {0x10})
                     << written(holding(watchedWord("M", 0), {1, 1}), {0x10})
                     << written(holding(watchedWord("CV2", 200), {1, 2, 3, 4}), {0x10});
    EXPECT_EQ(read("D", 100, 1, 2), Bytes({0x10, 0}));
    EXPECT_EQ(read("M", 0, 9, 9), Bytes({0, 0, 0, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(read("CV2", 200, 2, 4), Bytes({0x10, 0, 0, 0}));
}

TEST_F(GetData, NeitherAWrittenValueThatIsNotPendingNorAFailureCounts)
{
    store("D", 100, {1, 2});
    driver.dataAreas[0].writtenValue[0] = 0x10;
    driver.dataAreas[0].commFailed = 1;
    EXPECT_EQ(read("D", 100, 1, 2), Bytes({1, 2}));
}

TEST_F(GetData, TvBitNeverReflectsItsWord)
{
    store("TV", 1, {0xFF, 0xFF});
    EXPECT_EQ(read("TV_bit", 17, 1, 1), Bytes({0}));
    quint8 one = 1;
    intf_setData(1, "TV_bit", 17, 1, &one, 0);
    EXPECT_EQ(read("TV_bit", 16, 3, 3), Bytes({0, 1, 0}));
}

TEST_F(GetData, AddressesWrapRoundAt32Bits)
{
    store("D", INT_MIN, {1, 2});
    EXPECT_EQ(read("D", INT_MAX, 2, 4), Bytes({0, 0, 1, 2}));
    EXPECT_EQ(read("M", INT_MAX, 2, 2), Bytes({0, 0}));
}

// Written values: how they are cut into requests and queued.
#include "driver/datastore.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class SetData : public DriverTest {
protected:
    static qint32 write(const char *area, qint32 address, qint32 count, std::vector<quint8> data,
                        qint32 reqTag = 0)
    {
        return intf_setData(1, area, address, count, data.data(), reqTag);
    }

    static std::string queue()
    {
        return targetsOf(driver.pendingWrites);
    }

    static Bytes dataOf(int position, size_t size)
    {
        const VARIABLE &var = driver.pendingWrites.at(position);
        return Bytes(var.data, var.data + size);
    }
};

} // namespace

TEST_F(SetData, WordsAreQueuedInRequestsOfTheGroupLimit)
{
    EXPECT_EQ(write("D", 100, 20, std::vector<quint8>(40)), 1);
    EXPECT_EQ(write("CV", 100, 8, std::vector<quint8>(16)), 1);
    EXPECT_EQ(write("TV", 100, 9, std::vector<quint8>(18)), 1);
    EXPECT_EQ(queue(), "D:100x8 D:108x8 D:116x4 CV:100x8 TV:100x8 TV:108x1");
}

TEST_F(SetData, GroupLimitBelow1QueuesSingleWords)
{
    for (const char *property : {"1#0#0#3#0", "1#0#0#3#-5", "1#0#0#3#1"}) {
        configure(property);
        write("D", 100, 2, {1, 2, 3, 4});
        EXPECT_EQ(queue(), "D:100x1 D:101x1") << property;
    }
}

TEST_F(SetData, EachRequestHoldsItsOwnWordsHighByteFirst)
{
    configure("1#0#0#3#2");
    write("D", 100, 3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(queue(), "D:100x2 D:102x1");
    EXPECT_EQ(dataOf(0, 6), Bytes({2, 1, 4, 3, 0, 0}));
    EXPECT_EQ(dataOf(1, 2), Bytes({6, 5}));
    quint8 out[2];
    intf_getData(1, "D", 102, 1, out);
    EXPECT_EQ(Bytes(out, out + 2), Bytes({5, 6}));
}

TEST_F(SetData, CounterIsCutByWords)
{
    configure("1#0#0#3#3");
    write("CV2", 200, 4, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(queue(), "CV2:200x3 CV2:203x1");
    EXPECT_EQ(dataOf(0, 6), Bytes({2, 1, 4, 3, 6, 5}));
    EXPECT_EQ(dataOf(1, 2), Bytes({8, 7}));
}

TEST_F(SetData, HalfACounterIsQueuedButNotMirrored)
{
    write("CV2", 200, 1, {1, 2});
    EXPECT_EQ(queue(), "CV2:200x1");
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(SetData, BitsAreQueuedOneByOneAsTheHostCountsThem)
{
    for (const char *area : BIT_AREAS) {
        driver.pendingWrites.clear();
        write(area, 7, 3, {1, 0, 2});
        const std::string name = area;
        EXPECT_EQ(queue(), name + ":7x1 " + name + ":8x1 " + name + ":9x1");
        EXPECT_EQ(dataOf(0, 1), Bytes({1}));
        EXPECT_EQ(dataOf(1, 1), Bytes({0}));
        EXPECT_EQ(dataOf(2, 1), Bytes({2}));
    }
}

TEST_F(SetData, RequestCarriesStationAreaAndTag)
{
    quint8 data[2] = {1, 0};
    intf_setData(7, "D", 100, 1, data, 42);
    intf_setData(8, "M", 100, 1, data, -3);
    ASSERT_EQ(queue(), "7#D:100x1 8#M:100x1");
    EXPECT_EQ(driver.pendingWrites.at(0).reqTag, 42);
    EXPECT_EQ(driver.pendingWrites.at(1).reqTag, -3);
    EXPECT_EQ(driver.dataAreas.at(0).station, 7);
    EXPECT_EQ(driver.dataAreas.at(1).station, 8);
}

TEST_F(SetData, OtherAreasCountsBelowOneAndNoDataQueueNothing)
{
    for (const char *area : {"SM", "Q", "m"})
        EXPECT_EQ(write(area, 0, 1, {1, 1}), 1);
    for (const char *area : {"M", "D", "CV2"}) {
        EXPECT_EQ(write(area, 0, 0, {1}), 1);
        EXPECT_EQ(write(area, 0, -8, {1}), 1);
    }
    EXPECT_EQ(intf_setData(1, "D", 100, 1, nullptr, 0), 1);
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(SetData, SwitchedOffQueueStillMirrors)
{
    for (const char *property : {"1#1#0#3#8", "1#-1#0#3#8"}) {
        configure(property);
        write("D", 100, 1, {0x34, 0x12});
        write("M", 5, 1, {1});
        EXPECT_TRUE(driver.pendingWrites.isEmpty());
        EXPECT_EQ(writtenValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
        EXPECT_EQ(entryOf("M", 0).writePending, 1);
    }
}

TEST_F(SetData, NewerWriteReplacesAQueuedOneEqualOrNot)
{
    write("D", 0, 1, {0, 0});
    write("D", 1, 1, {0, 0});
    write("D", 1, 1, {0x34, 0x12}, 9);
    EXPECT_EQ(queue(), "D:0x1 D:1x1");
    EXPECT_EQ(dataOf(1, 2), Bytes({0x12, 0x34}));
    EXPECT_EQ(driver.pendingWrites.at(1).reqTag, 9);
}

TEST_F(SetData, AddressesWrapRoundAt32Bits)
{
    configure("1#0#0#3#1");
    write("D", INT_MAX, 2, {1, 2, 3, 4});
    EXPECT_EQ(queue(), "D:2147483647x1 D:-2147483648x1");
}

// The recipe list and its conversion into requests.
#include "driver/ostrel_kmr.h"

#include "driver_fixture.h"

#include <climits>

namespace {

_RCP_VAR_PRO entryOfDevice(qint32 devId, qint32 bufWord, qint32 count)
{
    _RCP_VAR_PRO entry = recipeEntry("D", 100, count, bufWord);
    entry.devId = devId;
    entry.station = 4;
    entry.rcpSpare = 9;
    return entry;
}

using RcpAddress = DriverTest;

class RcpAddrToVar : public DriverTest {
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        std::fill(recipe.begin(), recipe.end(), quint8(0x55));
    }

    // The request for `count` words from `bufWord` on.
    static VARIABLE requestOf(qint32 bufWord, qint32 count, int withData)
    {
        VARIABLE var;
        var.reqTag = 77;
        memset(var.data, 0xEE, sizeof var.data);
        rcpAddrToVar(entryOfDevice(1, bufWord, count), var, withData);
        EXPECT_EQ(var.count, count);
        return var;
    }

    // Bytes of `var.data` from `first` to the end that aren't 0.
    static qint64 bytesSet(const VARIABLE &var, int first = 0)
    {
        return 1024 - first - std::count(var.data + first, var.data + 1024, 0);
    }
};

} // namespace

TEST_F(RcpAddress, KeepsFullCopiesOfItsOwnDevicesEntriesInOrder)
{
    const QVector<_RCP_VAR_PRO> list{entryOfDevice(1, 10, 2), entryOfDevice(2, 20, 1),
                                     entryOfDevice(1, 30, 1)};
    driver.recipeCursor = 5;
    EXPECT_EQ(intf_setRcpAddress(&list), 2);
    ASSERT_EQ(driver.recipeVars.size(), 2);
    EXPECT_EQ(driver.recipeVars.at(1).bufWord, 30);
    const _RCP_VAR_PRO &kept = driver.recipeVars.at(0);
    EXPECT_EQ(kept.devId, 1);
    EXPECT_EQ(kept.station, 4);
    EXPECT_EQ(kept.area, QString("D"));
    EXPECT_EQ(kept.address, 100);
    EXPECT_EQ(kept.count, 2);
    EXPECT_EQ(kept.bufWord, 10);
    EXPECT_EQ(kept.rcpSpare, 9);
    EXPECT_EQ(driver.recipeCursor, 5);
}

TEST_F(RcpAddress, ReplacesTheListBeforeAlsoByNothing)
{
    const QVector<_RCP_VAR_PRO> own{entryOfDevice(1, 10, 1)};
    const QVector<_RCP_VAR_PRO> others{entryOfDevice(2, 10, 1)};
    const QVector<_RCP_VAR_PRO> empty;
    const QVector<_RCP_VAR_PRO> *const lists[] = {&others, &empty, nullptr};
    for (const auto *list : lists) {
        EXPECT_EQ(intf_setRcpAddress(&own), 1);
        EXPECT_EQ(intf_setRcpAddress(&own), 1);
        EXPECT_EQ(driver.recipeVars.size(), 1);
        EXPECT_EQ(intf_setRcpAddress(list), 0);
        EXPECT_TRUE(driver.recipeVars.isEmpty());
    }
}

TEST_F(RcpAddrToVar, CopiesTheTargetLeavesTheTagAndTurnsTheBytesOfEachWord)
{
    recipe[20] = 0x34;
    recipe[21] = 0x12;
    recipe[22] = 0x78;
    recipe[23] = 0x56;
    const VARIABLE var = requestOf(10, 2, 1);
    EXPECT_EQ(var.reqTag, 77);
    EXPECT_EQ(targetOf(var), "4#D:100x2");
    EXPECT_EQ(Bytes(var.data, var.data + 4), Bytes({0x12, 0x34, 0x56, 0x78}));
    EXPECT_EQ(bytesSet(var, 4), 0);
    EXPECT_EQ(requestOf(10, 2, -1).data[1], 0x34); // any number but 0
}

TEST_F(RcpAddrToVar, WithoutDataWordsOrBufferTheBytesAreZero)
{
    EXPECT_EQ(bytesSet(requestOf(10, 2, 0)), 0);
    for (const qint32 count : {0, -1, INT_MIN})
        EXPECT_EQ(bytesSet(requestOf(10, count, 1)), 0) << count;
    for (const qint32 bufWord : {-1, INT_MIN})
        EXPECT_EQ(bytesSet(requestOf(bufWord, 2, 1)), 0) << bufWord;
    driver.recipeBuffer = nullptr;
    EXPECT_EQ(bytesSet(requestOf(10, 2, 1)), 0);
}

TEST_F(RcpAddrToVar, WordsBeyondTheDataAreLeftOut)
{
    recipe[1022] = 0x34;
    recipe[1023] = 0x12;
    for (const qint32 count : {512, 513, INT_MAX}) {
        const VARIABLE var = requestOf(0, count, 1);
        EXPECT_EQ(var.data[1022], 0x12) << count;
        EXPECT_EQ(var.data[1023], 0x34) << count;
    }
}

// The recipe list and its conversion into requests.
#include "driver/ostrel_kmr.h"

#include "driver_fixture.h"

#include <algorithm>
#include <limits>

namespace {

const qint32 INT_LEAST = std::numeric_limits<qint32>::min();
const qint32 INT_MOST = std::numeric_limits<qint32>::max();

_RCP_VAR_PRO recipeEntry(qint32 devId, qint32 bufWord, qint32 count)
{
    _RCP_VAR_PRO entry;
    entry.devId = devId;
    entry.station = 4;
    entry.area = "D";
    entry.address = 100;
    entry.count = count;
    entry.bufWord = bufWord;
    entry.rcpSpare = 9;
    return entry;
}

class RcpAddress : public DriverTest {};

TEST_F(RcpAddress, KeepsTheEntriesOfItsOwnDeviceInOrder)
{
    const QVector<_RCP_VAR_PRO> list{recipeEntry(1, 10, 1), recipeEntry(2, 20, 1),
                                     recipeEntry(1, 30, 1)};
    EXPECT_EQ(intf_setRcpAddress(&list), 2);
    ASSERT_EQ(driver.recipeVars.size(), 2);
    EXPECT_EQ(driver.recipeVars.at(0).bufWord, 10);
    EXPECT_EQ(driver.recipeVars.at(1).bufWord, 30);
}

TEST_F(RcpAddress, KeepsFullCopies)
{
    const QVector<_RCP_VAR_PRO> list{recipeEntry(1, 10, 2)};
    intf_setRcpAddress(&list);
    ASSERT_EQ(driver.recipeVars.size(), 1);
    const _RCP_VAR_PRO &kept = driver.recipeVars.at(0);
    EXPECT_EQ(kept.devId, 1);
    EXPECT_EQ(kept.station, 4);
    EXPECT_EQ(kept.area, QString("D"));
    EXPECT_EQ(kept.address, 100);
    EXPECT_EQ(kept.count, 2);
    EXPECT_EQ(kept.rcpSpare, 9);
}

TEST_F(RcpAddress, ReplacesTheListBefore)
{
    const QVector<_RCP_VAR_PRO> first{recipeEntry(1, 10, 1), recipeEntry(1, 20, 1)};
    const QVector<_RCP_VAR_PRO> second{recipeEntry(1, 30, 1)};
    intf_setRcpAddress(&first);
    EXPECT_EQ(intf_setRcpAddress(&second), 1);
    EXPECT_EQ(driver.recipeVars.size(), 1);
}

TEST_F(RcpAddress, NothingOfItsOwnLeavesNothing)
{
    const QVector<_RCP_VAR_PRO> own{recipeEntry(1, 10, 1)};
    const QVector<_RCP_VAR_PRO> others{recipeEntry(2, 10, 1)};
    const QVector<_RCP_VAR_PRO> empty;
    const QVector<_RCP_VAR_PRO> *const lists[] = {&others, &empty, nullptr};
    for (const auto *list : lists) {
        intf_setRcpAddress(&own);
        EXPECT_EQ(intf_setRcpAddress(list), 0);
        EXPECT_TRUE(driver.recipeVars.isEmpty());
    }
}

TEST_F(RcpAddress, CursorStays)
{
    const QVector<_RCP_VAR_PRO> list{recipeEntry(1, 10, 1)};
    driver.recipeCursor = 5;
    intf_setRcpAddress(&list);
    EXPECT_EQ(driver.recipeCursor, 5);
}

class RcpAddrToVar : public DriverTest {
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        var.reqTag = 77;
        memset(var.data, 0xEE, sizeof var.data);
    }

    // Bytes of `var.data` from `first` to the end that aren't 0.
    qint64 bytesSetFrom(int first) const
    {
        return 1024 - first - std::count(var.data + first, var.data + 1024, 0);
    }

    VARIABLE var;
};

TEST_F(RcpAddrToVar, CopiesTheTargetAndLeavesTheTag)
{
    rcpAddrToVar(recipeEntry(1, 10, 2), var, 0);
    EXPECT_EQ(var.reqTag, 77);
    EXPECT_EQ(var.station, 4);
    EXPECT_EQ(var.area, QString("D"));
    EXPECT_EQ(var.address, 100);
    EXPECT_EQ(var.count, 2);
}

TEST_F(RcpAddrToVar, TurnsTheBytesOfEachWord)
{
    recipe[20] = 0x34;
    recipe[21] = 0x12;
    recipe[22] = 0x78;
    recipe[23] = 0x56;
    recipe[24] = 0xFF;
    rcpAddrToVar(recipeEntry(1, 10, 2), var, 1);
    EXPECT_EQ(var.data[0], 0x12);
    EXPECT_EQ(var.data[1], 0x34);
    EXPECT_EQ(var.data[2], 0x56);
    EXPECT_EQ(var.data[3], 0x78);
    EXPECT_EQ(bytesSetFrom(4), 0);
}

TEST_F(RcpAddrToVar, AnyWithDataButZeroCopies)
{
    recipe[0] = 0x34;
    rcpAddrToVar(recipeEntry(1, 0, 1), var, -1);
    EXPECT_EQ(var.data[1], 0x34);
}

TEST_F(RcpAddrToVar, WithoutDataTheBytesAreZero)
{
    std::fill(recipe.begin(), recipe.end(), quint8(0x55));
    rcpAddrToVar(recipeEntry(1, 10, 2), var, 0);
    EXPECT_EQ(bytesSetFrom(0), 0);
}

TEST_F(RcpAddrToVar, CountBelowOneCopiesNothing)
{
    std::fill(recipe.begin(), recipe.end(), quint8(0x55));
    for (const qint32 count : {0, -1, INT_LEAST}) {
        rcpAddrToVar(recipeEntry(1, 10, count), var, 1);
        EXPECT_EQ(bytesSetFrom(0), 0) << count;
        EXPECT_EQ(var.count, count);
    }
}

TEST_F(RcpAddrToVar, WordsBeyondTheBufferAreLeftOut)
{
    std::fill(recipe.begin(), recipe.end(), quint8(0x55));
    recipe[1022] = 0x34;
    recipe[1023] = 0x12;
    for (const qint32 count : {512, 513, INT_MOST}) {
        rcpAddrToVar(recipeEntry(1, 0, count), var, 1);
        EXPECT_EQ(var.data[1022], 0x12) << count;
        EXPECT_EQ(var.data[1023], 0x34) << count;
        EXPECT_EQ(var.count, count);
    }
}

TEST_F(RcpAddrToVar, NegativeBufferWordCopiesNothing)
{
    std::fill(recipe.begin(), recipe.end(), quint8(0x55));
    for (const qint32 bufWord : {-1, INT_LEAST}) {
        rcpAddrToVar(recipeEntry(1, bufWord, 2), var, 1);
        EXPECT_EQ(bytesSetFrom(0), 0) << bufWord;
    }
}

TEST_F(RcpAddrToVar, WithoutRecipeBufferTheBytesAreZero)
{
    driver.recipeBuffer = nullptr;
    rcpAddrToVar(recipeEntry(1, 10, 2), var, 1);
    EXPECT_EQ(bytesSetFrom(0), 0);
}

} // namespace

// The end of a batch: what becomes of the request lists, and what the host is told.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class Upkeep : public DriverTest {
protected:
    static void queueReads(int entries)
    {
        for (int i = 0; i < entries; ++i)
            driver.pendingReads << variable("D", 100 + i, 2);
        driver.sendState = 3;
    }

    // Front addresses of writes, one-shot reads and cyclic blocks and the recipe cursor, after a
    // batch of `state` has ended; every list has two entries.
    std::vector<int> frontsAfter(qint32 state)
    {
        driver.pendingWrites = QList<VARIABLE>() << variable("D", 10, 1) << variable("D", 11, 1);
        driver.pendingReads = QList<VARIABLE>() << variable("D", 20, 1) << variable("D", 21, 1);
        driver.cyclicReads = QList<VARIABLE>() << variable("D", 30, 1) << variable("D", 31, 1);
        driver.recipeCursor = 0;
        recipeOf(2);
        driver.sendState = state;
        dealListWhenFinish();
        return {driver.pendingWrites.at(0).address, driver.pendingReads.at(0).address,
                driver.cyclicReads.at(0).address, driver.recipeCursor};
    }

    void recipeOf(int entries)
    {
        driver.recipeVars.resize(entries);
        status[60115] = 1;
        status[60116] = 1;
    }
};

} // namespace

TEST_F(Upkeep, FinishedWriteLeavesItsQueue)
{
    driver.pendingWrites << variable("D", 1, 1) << variable("D", 2, 1);
    driver.sendState = 2;
    dealListWhenFinish();
    ASSERT_EQ(driver.pendingWrites.size(), 1);
    EXPECT_EQ(driver.pendingWrites.at(0).address, 2);
    EXPECT_EQ(driver.sendState, 2);
}

TEST_F(Upkeep, EmptyQueuesStayEmpty)
{
    for (const qint32 state : {2, 3, 4}) {
        driver.sendState = state;
        dealListWhenFinish();
    }
    EXPECT_TRUE(reports().empty());
}

TEST_F(Upkeep, LastOneShotReadIsReportedAsEnded)
{
    queueReads(1);
    driver.lastVar = driver.pendingReads.at(0);
    dealListWhenFinish();
    EXPECT_EQ(reports(), (std::vector<Report>{Report(-1, -1, "-1", 0)}));
    EXPECT_TRUE(driver.pendingReads.isEmpty());
    EXPECT_EQ(driver.sendState, 3);
}

TEST_F(Upkeep, EarlierOneShotReadsEndInSilence)
{
    queueReads(3);
    driver.lastVar = driver.pendingReads.at(2);
    dealListWhenFinish();
    EXPECT_TRUE(reports().empty());
    ASSERT_EQ(driver.pendingReads.size(), 2);
    EXPECT_EQ(driver.pendingReads.at(0).address, 101);
}

TEST_F(Upkeep, LastOneShotReadIsKnownByStationAreaAddressAndCount)
{
    VARIABLE others[4] = {variable("D", 100, 2), variable("TV", 100, 2), variable("D", 101, 2),
                          variable("D", 100, 3)};
    others[0].station = 2;
    for (const VARIABLE &other : others) {
        queueReads(1);
        driver.lastVar = other;
        dealListWhenFinish();
    }
    EXPECT_TRUE(reports().empty());
}

TEST_F(Upkeep, TagOfTheLastOneShotReadDoesNotMatter)
{
    queueReads(1);
    driver.lastVar = driver.pendingReads.at(0);
    driver.lastVar.reqTag = 77;
    dealListWhenFinish();
    EXPECT_EQ(reports().size(), 1u);
}

TEST_F(Upkeep, GivenUpLastOneShotReadIsReportedAsFailed)
{
    queueReads(1);
    driver.lastVar = driver.pendingReads.at(0);
    driver.commError = 1;
    dealListWhenFinish();
    EXPECT_EQ(reports(), (std::vector<Report>{Report(-1, -1, "-1", -1)}));
    EXPECT_TRUE(driver.pendingReads.isEmpty());
}

TEST_F(Upkeep, GivenUpOneShotReadDiscardsAll)
{
    queueReads(3);
    driver.lastVar = driver.pendingReads.at(2);
    driver.commError = 1;
    dealListWhenFinish();
    EXPECT_TRUE(reports().empty());
    EXPECT_TRUE(driver.pendingReads.isEmpty());
}

TEST_F(Upkeep, OneShotReadEndsWithoutACallback)
{
    queueReads(2);
    driver.lastVar = driver.pendingReads.at(0);
    intf_setAddrValueChangeCallBack(nullptr);
    dealListWhenFinish();
    EXPECT_EQ(driver.pendingReads.size(), 1);
}

TEST_F(Upkeep, CyclicBlocksArePolledInTurn)
{
    driver.cyclicReads << variable("D", 1, 1) << variable("D", 2, 1) << variable("D", 3, 1);
    driver.sendState = 4;
    dealListWhenFinish();
    ASSERT_EQ(driver.cyclicReads.size(), 3);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 2);
    EXPECT_EQ(driver.cyclicReads.at(1).address, 3);
    EXPECT_EQ(driver.cyclicReads.at(2).address, 1);
}

TEST_F(Upkeep, TwoCyclicBlocksChangePlaces)
{
    driver.cyclicReads << variable("D", 1, 1) << variable("D", 2, 1);
    driver.sendState = 4;
    driver.commError = 1; // given up blocks take their turn too
    dealListWhenFinish();
    EXPECT_EQ(driver.cyclicReads.at(0).address, 2);
    EXPECT_EQ(driver.cyclicReads.at(1).address, 1);
}

TEST_F(Upkeep, SingleCyclicBlockStays)
{
    driver.cyclicReads << variable("D", 1, 1);
    driver.sendState = 4;
    dealListWhenFinish();
    ASSERT_EQ(driver.cyclicReads.size(), 1);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 1);
}

TEST_F(Upkeep, FinishedWriteTouchesNothingElse)
{
    EXPECT_EQ(frontsAfter(2), std::vector<int>({11, 20, 30, 0}));
}

TEST_F(Upkeep, FinishedOneShotReadTouchesNothingElse)
{
    EXPECT_EQ(frontsAfter(3), std::vector<int>({10, 21, 30, 0}));
}

TEST_F(Upkeep, FinishedCyclicBlockTouchesNothingElse)
{
    EXPECT_EQ(frontsAfter(4), std::vector<int>({10, 20, 31, 0}));
}

TEST_F(Upkeep, FinishedRecipeEntryTouchesNothingElse)
{
    EXPECT_EQ(frontsAfter(5), std::vector<int>({10, 20, 30, 1}));
    EXPECT_EQ(frontsAfter(6), std::vector<int>({10, 20, 30, 1}));
}

TEST_F(Upkeep, OtherStatesTouchNothing)
{
    for (const qint32 state : {-1, 0, 1, 7})
        EXPECT_EQ(frontsAfter(state), std::vector<int>({10, 20, 30, 0})) << state;
    EXPECT_TRUE(reports().empty());
}

TEST_F(Upkeep, RecipeStepsThroughItsEntriesAndEndsBehindTheLast)
{
    recipeOf(3);
    driver.sendState = 5;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 1);
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 2);
    EXPECT_EQ(status[60115], 1);
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(status[60115], 0);
    EXPECT_EQ(status[60116], 1);
    EXPECT_EQ(driver.sendState, 5);
}

TEST_F(Upkeep, UploadClearsItsOwnRequest)
{
    recipeOf(2);
    driver.sendState = 6;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 1);
    EXPECT_EQ(status[60116], 1);
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(status[60116], 0);
    EXPECT_EQ(status[60115], 1);
}

TEST_F(Upkeep, GivenUpRecipeEndsAtOnce)
{
    recipeOf(3);
    driver.recipeCursor = 1;
    driver.commError = 1;
    driver.sendState = 5;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(status[60115], 0);
}

TEST_F(Upkeep, RecipeWithoutEntriesEndsAtOnce)
{
    recipeOf(0);
    driver.sendState = 6;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(status[60116], 0);
}

TEST_F(Upkeep, RecipeEndsWithoutStatusBlockOrMutex)
{
    recipeOf(1);
    driver.sendState = 5;
    driver.hostMutex = nullptr;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(status[60115], 1);
    driver.hostMutex = &mutex;
    driver.hostStatus = nullptr;
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 0);
}

TEST_F(Upkeep, MutexIsNotTakenBeforeTheEndOfATransfer)
{
    recipeOf(2);
    driver.sendState = 5;
    const QMutexLocker locker(&mutex);
    dealListWhenFinish();
    EXPECT_EQ(driver.recipeCursor, 1);
}

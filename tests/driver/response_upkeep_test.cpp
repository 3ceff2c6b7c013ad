// The end of a batch: the request lists after it, and the reports to the host.
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
        EXPECT_EQ(driver.sendState, state);
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

TEST_F(Upkeep, TouchesOnlyTheListOfTheFinishedRequest)
{
    const std::pair<qint32, std::vector<int>> rows[] = {
        {2, {11, 20, 30, 0}}, {3, {10, 21, 30, 0}}, {4, {10, 20, 31, 0}},
        {5, {10, 20, 30, 1}}, {6, {10, 20, 30, 1}}, {-1, {10, 20, 30, 0}},
        {0, {10, 20, 30, 0}}, {1, {10, 20, 30, 0}}, {7, {10, 20, 30, 0}}};
    for (const auto &[state, fronts] : rows)
        EXPECT_EQ(frontsAfter(state), fronts) << state;
    EXPECT_TRUE(reports().empty());
}

TEST_F(Upkeep, EmptyQueuesStayEmpty)
{
    for (const qint32 state : {2, 3, 4}) {
        driver.sendState = state;
        dealListWhenFinish();
    }
    EXPECT_TRUE(reports().empty());
}

// --- One-shot reads ------------------------------------------------------------------------------

TEST_F(Upkeep, LastOneShotReadIsReportedAsEndedOrAsGivenUp)
{
    for (const int failed : {0, 1}) {
        queueReads(1);
        driver.lastVar = driver.pendingReads.at(0);
        driver.lastVar.reqTag = 77; // does not matter
        driver.commError = failed;
        dealListWhenFinish();
        EXPECT_TRUE(driver.pendingReads.isEmpty());
    }
    EXPECT_EQ(told(), "-1/-1#-1:0 -1/-1#-1:-1");
}

TEST_F(Upkeep, EarlierOneShotReadEndsInSilenceAndAGivenUpOneDiscardsAll)
{
    queueReads(3);
    driver.lastVar = driver.pendingReads.at(2);
    dealListWhenFinish();
    ASSERT_EQ(driver.pendingReads.size(), 2);
    EXPECT_EQ(driver.pendingReads.at(0).address, 101);
    driver.commError = 1;
    dealListWhenFinish();
    EXPECT_TRUE(driver.pendingReads.isEmpty());
    EXPECT_TRUE(reports().empty());
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

// --- Cyclic blocks -------------------------------------------------------------------------------

TEST_F(Upkeep, CyclicBlocksArePolledInTurnGivenUpOnesToo)
{
    driver.cyclicReads << variable("D", 1, 1);
    driver.sendState = 4;
    dealListWhenFinish();
    ASSERT_EQ(driver.cyclicReads.size(), 1);
    driver.cyclicReads << variable("D", 2, 1) << variable("D", 3, 1);
    for (const int failed : {0, 1}) {
        driver.commError = failed;
        dealListWhenFinish();
    }
    ASSERT_EQ(driver.cyclicReads.size(), 3);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 3);
    EXPECT_EQ(driver.cyclicReads.at(1).address, 1);
    EXPECT_EQ(driver.cyclicReads.at(2).address, 2);
}

// --- Recipes -------------------------------------------------------------------------------------

TEST_F(Upkeep, RecipeStepsThroughItsEntriesAndClearsItsOwnRequestBehindTheLast)
{
    for (const qint32 state : {5, 6}) {
        const size_t own = state == 5 ? 60115 : 60116;
        const size_t other = state == 5 ? 60116 : 60115;
        recipeOf(3);
        driver.sendState = state;
        dealListWhenFinish();
        EXPECT_EQ(driver.recipeCursor, 1);
        dealListWhenFinish();
        EXPECT_EQ(driver.recipeCursor, 2);
        EXPECT_EQ(status[own], 1);
        dealListWhenFinish();
        EXPECT_EQ(driver.recipeCursor, 0);
        EXPECT_EQ(status[own], 0);
        EXPECT_EQ(status[other], 1);
    }
}

TEST_F(Upkeep, RecipeThatIsGivenUpOrHasNoEntriesEndsAtOnce)
{
    for (const int failed : {0, 1}) {
        recipeOf(failed ? 3 : 0);
        driver.recipeCursor = failed;
        driver.commError = failed;
        driver.sendState = 5;
        dealListWhenFinish();
        EXPECT_EQ(driver.recipeCursor, 0);
        EXPECT_EQ(status[60115], 0);
    }
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

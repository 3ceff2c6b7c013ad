#include "host/line/statistics.h"

#include <gtest/gtest.h>

using namespace kmr;
using std::chrono::milliseconds;

TEST(Statistics, EmptyOnesAreAllZero)
{
    const Statistics statistics;
    EXPECT_EQ(statistics.sent(), 0U);
    EXPECT_EQ(statistics.roundTrips().max.count(), 0);
}

TEST(Statistics, EveryOutcomeCountsAsSent)
{
    Statistics statistics;
    statistics.countGood(milliseconds(1));
    statistics.countRetry();
    statistics.countRetry();
    statistics.countGiveUp();
    statistics.countInterrupted();
    EXPECT_EQ(statistics.sent(), 5U);
    EXPECT_EQ(statistics.good(), 1U);
    EXPECT_EQ(statistics.retries(), 2U);
    EXPECT_EQ(statistics.giveUps(), 1U);
}

TEST(Statistics, PercentilesAreNearestRanks)
{
    Statistics statistics;
    for (int i = 100; i >= 1; --i)
        statistics.countGood(milliseconds(i));
    const RoundTrips trips = statistics.roundTrips();
    EXPECT_EQ(trips.min, milliseconds(1));
    EXPECT_EQ(trips.median, milliseconds(50));
    EXPECT_EQ(trips.p95, milliseconds(95));
    EXPECT_EQ(trips.p99, milliseconds(99));
    EXPECT_EQ(trips.max, milliseconds(100));
}

TEST(Statistics, LongRunsKeepTheNewestForPercentilesButAllForExtremes)
{
    Statistics statistics;
    statistics.countGood(milliseconds(1));
    statistics.countGood(milliseconds(900));
    for (std::size_t i = 0; i < Statistics::KEPT_ROUND_TRIPS; ++i)
        statistics.countGood(milliseconds(5));
    const RoundTrips trips = statistics.roundTrips();
    EXPECT_EQ(trips.min, milliseconds(1));
    EXPECT_EQ(trips.p99, milliseconds(5));
    EXPECT_EQ(trips.max, milliseconds(900));
}

TEST(Statistics, SummaryNamesAllFigures)
{
    Statistics statistics;
    statistics.countGood(std::chrono::microseconds(1500));
    statistics.countGiveUp();
    EXPECT_EQ(summary(statistics),
              "2 requests sent, 1 good, 0 sent again, 1 given up\n"
              "round trip min/median/p95/p99/max 1.500/1.500/1.500/1.500/1.500 ms");
}

TEST(Statistics, SummaryWithoutAGoodExchangeInventsNoRoundTrips)
{
    Statistics statistics;
    statistics.countGiveUp();
    EXPECT_EQ(summary(statistics), "1 requests sent, 0 good, 0 sent again, 1 given up");
}

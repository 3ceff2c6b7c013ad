#include "host/session/confirmed_values.h"

#include <gtest/gtest.h>

using namespace kmr;

TEST(ConfirmedValues, ElementsAreUnreadAtFirst)
{
    EXPECT_EQ(ConfirmedValues().worst({1, "D", 0, 1}).quality, Quality::Unread);
}

TEST(ConfirmedValues, OneElementThatIsNotGoodSpoilsARun)
{
    ConfirmedValues map;
    map.set({1, "D", 0, 8}, {Quality::Good, {}});
    EXPECT_EQ(map.worst({1, "D", 0, 8}).quality, Quality::Good);
    EXPECT_EQ(map.worst({1, "D", 0, 9}).quality, Quality::Unread);
    map.set({1, "D", 5, 1}, {Quality::Stale, {ReplyFault::Silence, 0}});
    EXPECT_EQ(map.worst({1, "D", 0, 8}).quality, Quality::Stale);
    EXPECT_EQ(map.worst({1, "D", 0, 8}).failure.fault, ReplyFault::Silence);
    EXPECT_EQ(map.worst({1, "D", 0, 5}).quality, Quality::Good);
}

TEST(ConfirmedValues, StationsAndAreasStayApart)
{
    ConfirmedValues map;
    map.set({1, "D", 0, 1}, {Quality::Good, {}});
    EXPECT_EQ(map.worst({2, "D", 0, 1}).quality, Quality::Unread);
    EXPECT_EQ(map.worst({1, "TV", 0, 1}).quality, Quality::Unread);
}

TEST(ConfirmedValues, ValueIsNewWhenItIsAnotherThanBefore)
{
    ConfirmedValues map;
    EXPECT_FALSE(map.confirm(1, "D", 0, 0));
    EXPECT_TRUE(map.confirm(1, "D", 0, 7));
    EXPECT_EQ(map.values({1, "D", 0, 2}), (std::vector<std::uint32_t>{7, 0}));
}

TEST(ConfirmedValues, ValueOutlivesItsQuality)
{
    ConfirmedValues map;
    map.confirm(1, "D", 0, 7);
    map.setStation(1, {Quality::Stale, {ReplyFault::Silence, 0}});
    EXPECT_EQ(map.worst({1, "D", 0, 1}).quality, Quality::Stale);
    EXPECT_FALSE(map.confirm(1, "D", 0, 7));
    EXPECT_EQ(map.worst({1, "D", 0, 1}).quality, Quality::Good);
}

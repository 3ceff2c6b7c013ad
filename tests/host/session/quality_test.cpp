#include "host/session/quality.h"

#include <gtest/gtest.h>

using namespace kmr;

TEST(QualityMap, ElementsAreUnreadAtFirst)
{
    EXPECT_EQ(QualityMap().worst({1, "D", 0, 1}).quality, Quality::Unread);
}

TEST(QualityMap, OneElementThatIsNotGoodSpoilsARun)
{
    QualityMap map;
    map.set({1, "D", 0, 8}, {Quality::Good, {}});
    EXPECT_EQ(map.worst({1, "D", 0, 8}).quality, Quality::Good);
    EXPECT_EQ(map.worst({1, "D", 0, 9}).quality, Quality::Unread);
    map.set({1, "D", 5, 1}, {Quality::Stale, {ReplyFault::Silence, 0}});
    EXPECT_EQ(map.worst({1, "D", 0, 8}).quality, Quality::Stale);
    EXPECT_EQ(map.worst({1, "D", 0, 8}).failure.fault, ReplyFault::Silence);
    EXPECT_EQ(map.worst({1, "D", 0, 5}).quality, Quality::Good);
}

TEST(QualityMap, StationsAndAreasStayApart)
{
    QualityMap map;
    map.set({1, "D", 0, 1}, {Quality::Good, {}});
    EXPECT_EQ(map.worst({2, "D", 0, 1}).quality, Quality::Unread);
    EXPECT_EQ(map.worst({1, "TV", 0, 1}).quality, Quality::Unread);
}

TEST(DisturbedBy, WriteReachesItsBlockOfBitsAndTheNextCounter)
{
    EXPECT_EQ(disturbedBy({1, "M", 17, 1}), (ElementRange{1, "M", 16, 16}));
    EXPECT_EQ(disturbedBy({1, "M", 15, 2}), (ElementRange{1, "M", 0, 32}));
    EXPECT_EQ(disturbedBy({1, "CV2", 200, 1}), (ElementRange{1, "CV2", 200, 2}));
    EXPECT_EQ(disturbedBy({1, "D", 7, 3}), (ElementRange{1, "D", 7, 3}));
}

TEST(Failure, IsTheRefusalOrTheFaultInWords)
{
    EXPECT_EQ(toText(Failure{ReplyFault::None, 3}), "refused: illegal data value (exception 03)");
    EXPECT_EQ(toText(Failure{ReplyFault::WrongLrc, 0}), "an answer with a wrong LRC");
}

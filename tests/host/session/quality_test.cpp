#include "host/session/quality.h"

#include <gtest/gtest.h>

using namespace kmr;

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

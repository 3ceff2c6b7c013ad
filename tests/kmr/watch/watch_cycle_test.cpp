#include "kmr/watch/watch_cycle.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kmr;
using std::chrono::milliseconds;
using Outcome = Exchange::Outcome;

namespace {

const WatchCycle::Time BEGIN = WatchCycle::Time() + std::chrono::hours(1);

void note(WatchCycle &cycle, Outcome outcome, milliseconds sinceBegin, const char *frame = ":0103")
{
    FRAME_PRO request;
    std::strcpy(request.frame, frame);
    Exchange exchange{request};
    exchange.outcome = outcome;
    cycle.note(exchange, BEGIN + sinceBegin);
}

} // namespace

TEST(WatchCycle, WithoutAWishTheNextCycleBeginsAtOnce)
{
    WatchCycle cycle(milliseconds(0));
    cycle.begin(2, BEGIN);
    EXPECT_EQ(cycle.text(), "- ms");
    note(cycle, Outcome::Good, milliseconds(40));
    EXPECT_EQ(cycle.text(), "- ms"); // half of it
    note(cycle, Outcome::Good, milliseconds(103));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(103)), milliseconds(0));
    EXPECT_EQ(cycle.text(), "103 ms");
}

TEST(WatchCycle, FastLineWaitsForTheWantedBegin)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(1, BEGIN);
    EXPECT_EQ(cycle.pause(BEGIN), milliseconds(0));
    note(cycle, Outcome::Good, milliseconds(103));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(103)), milliseconds(397));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(600)), milliseconds(0));
    EXPECT_EQ(cycle.text(), "500/500 ms");
}

TEST(WatchCycle, CyclesKeepTheirBeat)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(1, BEGIN);
    note(cycle, Outcome::Good, milliseconds(103));
    note(cycle, Outcome::Good, milliseconds(620));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(620)), milliseconds(380)); // until 1000
}

TEST(WatchCycle, SlowLineTellsWhatItReached)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(1, BEGIN);
    note(cycle, Outcome::Good, milliseconds(812));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(812)), milliseconds(0));
    EXPECT_EQ(cycle.text(), "812/500 ms");
}

TEST(WatchCycle, RequestThatIsSentAgainIsNotOver)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(1, BEGIN);
    note(cycle, Outcome::SentAgain, milliseconds(100));
    note(cycle, Outcome::Interrupted, milliseconds(150));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(150)), milliseconds(0));
    note(cycle, Outcome::GivenUp, milliseconds(200));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(200)), milliseconds(300));
}

TEST(WatchCycle, SilentStationThatIsPassedOverHoldsNothingUp)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(2, BEGIN);
    note(cycle, Outcome::PassedOver, milliseconds(10));
    note(cycle, Outcome::Good, milliseconds(60));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(60)), milliseconds(440));
}

TEST(WatchCycle, RequestsToWriteDoNotCount)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(2, BEGIN);
    note(cycle, Outcome::Good, milliseconds(10));
    note(cycle, Outcome::Good, milliseconds(20), ":0110");
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(20)), milliseconds(0));
    note(cycle, Outcome::Good, milliseconds(30));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(30)), milliseconds(470));
}

TEST(WatchCycle, ShortCycleHasTenths)
{
    WatchCycle cycle(milliseconds(0));
    cycle.begin(1, BEGIN);
    note(cycle, Outcome::Good, milliseconds(4));
    EXPECT_EQ(cycle.text(), "4.0 ms");
}

TEST(WatchCycle, BegunAnewOnAnotherLineCountsFromThere)
{
    WatchCycle cycle(milliseconds(500));
    cycle.begin(2, BEGIN);
    note(cycle, Outcome::Good, milliseconds(40));
    cycle.begin(2, BEGIN + milliseconds(9000));
    note(cycle, Outcome::Good, milliseconds(9040));
    EXPECT_EQ(cycle.pause(BEGIN + milliseconds(9040)), milliseconds(0)); // one of two
}

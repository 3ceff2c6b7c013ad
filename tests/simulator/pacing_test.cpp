#include "simulator/pacing.h"

#include "event_loop.h"

#include <gtest/gtest.h>

#include <memory>

using namespace std::chrono_literals;
using simulator::Pacing;
using simulator::Plan;

TEST(Pacing, CharacterTakesTheTimeOfTenBits)
{
    EXPECT_EQ(Pacing(9600).timeOf(1), 1041666ns);
    EXPECT_EQ(Pacing(9600).timeOf(60), 62500000ns);
    EXPECT_EQ(Pacing(115200).timeOf(17 + 43), 5208333ns);
}

TEST(Pacing, LineWithoutBaudRateTakesNoTime)
{
    Plan plan{{{3ms, "ab"}}, {}};
    Pacing().slowDown(plan, 17);
    EXPECT_EQ(Pacing().timeOf(1000), 0ns);
    EXPECT_EQ(plan.pieces[0].after, 3ms);
}

TEST(Pacing, AnswerComesWhenItsLastCharacterIsThroughBehindTheRequest)
{
    Plan plan{{{0ms, QByteArray(43, 'a')}}, {}};
    Pacing(115200).slowDown(plan, 17);
    EXPECT_EQ(plan.pieces[0].after, 5208333ns);
}

TEST(Pacing, PiecesTakeTheirOwnTimeOnTopOfTheirPauses)
{
    Plan plan{{{800ms, "abc"}, {20ms, "d"}}, {}};
    Pacing(1000).slowDown(plan, 7);
    EXPECT_EQ(plan.pieces[0].after, 900ms);
    EXPECT_EQ(plan.pieces[1].after, 30ms);
}

TEST(Pacing, SilenceStaysSilence)
{
    Plan plan;
    Pacing(9600).slowDown(plan, 17);
    EXPECT_TRUE(plan.pieces.empty());
}

TEST(CallAfter, CallsNotBeforeItsTimeAndInTheOrderOfTheTimes)
{
    QObject owner;
    QByteArray order;
    const auto begin = std::chrono::steady_clock::now();
    simulator::callAfter(5208333ns, owner, [&order] { order += 'b'; });
    simulator::callAfter(1ns, owner, [&order] { order += 'a'; });
    ASSERT_TRUE(waitUntil([&order] { return order.size() == 2; }));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 5208333ns);
    EXPECT_EQ(order, "ab");
}

TEST(CallAfter, CallsNobodyWhoseOwnerIsDeleted)
{
    auto owner = std::make_unique<QObject>();
    QObject other;
    QByteArray order;
    simulator::callAfter(1ns, *owner, [&order] { order += 'a'; });
    owner.reset();
    simulator::callAfter(2ns, other, [&order] { order += 'b'; });
    ASSERT_TRUE(waitUntil([&order] { return !order.isEmpty(); }));
    EXPECT_EQ(order, "b");
}

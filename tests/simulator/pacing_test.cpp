#include "simulator/pacing.h"

#include "event_loop.h"

#include <gtest/gtest.h>

#include <QDir>

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

TEST(Pacing, PiecesTakeTheirOwnTimeOnTopOfTheirPausesAndTheFirstThatOfTheRequest)
{
    Plan plan{{{800ms, "abc"}, {20ms, "d"}}, {}};
    Pacing(1000).slowDown(plan, 7);
    EXPECT_EQ(plan.pieces[0].after, 900ms);
    EXPECT_EQ(plan.pieces[1].after, 30ms);
}

TEST(CallAfter, CallsNotBeforeItsTime)
{
    QObject owner;
    bool isCalled = false;
    const auto begin = std::chrono::steady_clock::now();
    simulator::callAfter(5208333ns, owner, [&isCalled] { isCalled = true; });
    ASSERT_TRUE(waitUntil([&isCalled] { return isCalled; }));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 5208333ns);
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

TEST(SendPieces, PausesFollowOneAnotherAndLeaveNoFileOpen)
{
    const auto openFiles = [] { return QDir("/proc/self/fd").count(); };
    QObject owner;
    int sent = 0;
    const auto send = [&sent](const QByteArray &) { ++sent; };
    simulator::sendPieces({{{1us, "a"}}, {}}, owner, send); // what the event loop itself opens
    ASSERT_TRUE(waitUntil([&sent] { return sent == 1; }));
    const auto before = openFiles();
    const auto begin = std::chrono::steady_clock::now();
    simulator::sendPieces({std::vector<Plan::Piece>(100, {100us, "a"}), {}}, owner, send);
    ASSERT_TRUE(waitUntil([&sent] { return sent == 101; }));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 10ms);
    EXPECT_TRUE(waitUntil([&] { return openFiles() <= before; })) << openFiles() << ' ' << before;
}

TEST(SendPieces, KeepsTheirOrderInALateEventLoop)
{
    QObject owner;
    QByteArray sent;
    const Plan plan{{{0ms, "a"}, {1ms, "b"}, {1ms, "c"}, {1ms, "d"}}, {}};
    simulator::sendPieces(plan, owner, [&sent](const QByteArray &bytes) { sent += bytes; });
    EXPECT_EQ(sent, "a");
    const auto late = std::chrono::steady_clock::now() + 10ms;
    while (std::chrono::steady_clock::now() < late) {
    }
    ASSERT_TRUE(waitUntil([&sent] { return sent.size() == 4; }));
    EXPECT_EQ(sent, "abcd");
}

TEST(SendPieces, SendsNothingMoreOnceItsOwnerIsDeleted)
{
    auto owner = std::make_unique<QObject>();
    QObject other;
    QByteArray sent;
    const auto send = [&sent](const QByteArray &bytes) { sent += bytes; };
    simulator::sendPieces({{{1ms, "a"}}, {}}, *owner, send);
    owner.reset();
    simulator::sendPieces({{{2ms, "b"}}, {}}, other, send);
    ASSERT_TRUE(waitUntil([&sent] { return !sent.isEmpty(); }));
    EXPECT_EQ(sent, "b");
}

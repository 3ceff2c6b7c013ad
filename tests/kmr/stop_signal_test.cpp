#include "kmr/stop_signal.h"

#include "kmr/outcome.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

using namespace kmr;

TEST(StopSignal, FirstOneIsOnlyNoted)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        const auto stop = [signal] {
            catchStopSignals();
            std::raise(signal);
            std::exit(stopFlag() ? 0 : 1);
        };
        EXPECT_EXIT(stop(), testing::ExitedWithCode(0), "");
    }
}

TEST(StopSignal, ClosedTerminalMaySaySoTwice)
{
    const auto hangUpTwice = [] {
        catchStopSignals();
        std::raise(SIGHUP);
        std::raise(SIGHUP);
        std::exit(stopFlag() ? 0 : 1);
    };
    EXPECT_EXIT(hangUpTwice(), testing::ExitedWithCode(0), "");
    const auto hangUpUnderNohup = [] {
        std::signal(SIGHUP, SIG_IGN);
        catchStopSignals();
        std::raise(SIGHUP);
        std::exit(stopFlag() ? 1 : 0);
    };
    EXPECT_EXIT(hangUpUnderNohup(), testing::ExitedWithCode(0), "");
}

TEST(StopSignal, IsTheReasonWhyAnAnswerIsNotConfirmed)
{
    const RequestResult result{RequestResult::Outcome::Unknown, {ReplyFault::NotConfirmed, 0}};
    EXPECT_TRUE(toText(result).startsWith("unknown: the answer is not confirmed"));
    stopFlag() = true;
    EXPECT_EQ(toText(result), "unknown: stopped before the answer was confirmed");
    stopFlag() = false;
}

TEST(StopSignal, SecondOneEndsAProgramThatHangs)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        const auto stopAgainAndAgain = [signal] {
            catchStopSignals();
            for (;;)
                std::raise(signal);
        };
        EXPECT_EXIT(stopAgainAndAgain(), testing::KilledBySignal(signal), "");
    }
}

TEST(StopSignal, TwoAtOnceAreOne)
{
    const auto stopTwice = [] {
        catchStopSignals();
        std::raise(SIGTERM);
        std::raise(SIGTERM);
        std::exit(stopFlag() ? 0 : 1);
    };
    EXPECT_EXIT(stopTwice(), testing::ExitedWithCode(0), "");
}

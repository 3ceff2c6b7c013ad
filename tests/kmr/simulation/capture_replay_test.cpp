#include "kmr/simulation/capture_replay.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

const QByteArray READ_D100 = ":01031064000187\r\n";
const QByteArray READ_D101 = ":01031065000186\r\n";

Capture captureOf(std::vector<CapturedPiece> pieces)
{
    Capture capture;
    capture.pieces = std::move(pieces);
    return capture;
}

// The characters of the answer to `request`, "?" if the request is not in the capture.
QByteArray answerOf(CaptureReplay &replay, const QByteArray &request)
{
    const std::optional<simulator::Plan> plan = replay.answer(request);
    if (!plan)
        return "?";
    QByteArray characters;
    for (const simulator::Plan::Piece &piece : plan->pieces)
        characters += piece.bytes;
    return characters;
}

} // namespace

TEST(CaptureReplay, AnswersComeInTheirOrderAndTheLastAgain)
{
    CaptureReplay replay(captureOf({{0, true, READ_D100},
                                    {5, false, "first"},
                                    {9, true, READ_D101},
                                    {10, false, "other"},
                                    {11, true, READ_D100},
                                    {15, false, "second"}}));
    EXPECT_EQ(answerOf(replay, READ_D100), "first");
    EXPECT_EQ(answerOf(replay, READ_D100), "second");
    EXPECT_EQ(answerOf(replay, READ_D100), "second");
    EXPECT_EQ(answerOf(replay, READ_D101), "other");
}

TEST(CaptureReplay, PieceWithoutCharactersLeavesTheTimesOfTheOthers)
{
    CaptureReplay replay(
        captureOf({{0, true, READ_D100}, {3, false, ""}, {5, false, "a"}, {9, false, "b"}}));
    const auto plan = replay.answer(READ_D100);
    ASSERT_TRUE(plan && plan->pieces.size() == 2);
    EXPECT_EQ(plan->pieces[0].after, std::chrono::microseconds(5));
    EXPECT_EQ(plan->pieces[1].after, std::chrono::microseconds(4));
}

TEST(CaptureReplay, SilenceIsAnAnswerOfItsOwn)
{
    CaptureReplay replay(
        captureOf({{0, true, READ_D100}, {5, true, READ_D100}, {6, false, "late"}}));
    EXPECT_EQ(answerOf(replay, READ_D100), "");
    EXPECT_EQ(answerOf(replay, READ_D100), "late");
}

TEST(CaptureReplay, PiecesKeepTheirDelays)
{
    CaptureReplay replay(captureOf(
        {{1000, true, READ_D100}, {1250, false, ":0103"}, {9000, false, "020001F9\r\n"}}));
    const std::optional<simulator::Plan> plan = replay.answer(READ_D100);
    ASSERT_EQ(plan->pieces.size(), 2U);
    EXPECT_EQ(plan->pieces[0].after, std::chrono::microseconds(250));
    EXPECT_EQ(plan->pieces[1].after, std::chrono::microseconds(7750));
    EXPECT_EQ(plan->pieces[1].bytes, "020001F9\r\n");
}

TEST(CaptureReplay, WhatWasNeverSentIsUnknown)
{
    CaptureReplay replay(captureOf({{0, false, "noise"}, {5, true, READ_D100}}));
    EXPECT_EQ(answerOf(replay, READ_D101), "?");
    EXPECT_EQ(answerOf(replay, READ_D100), "");
}

} // namespace kmr

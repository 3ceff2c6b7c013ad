// Writes: queue, frames, mirror and acknowledgement.
#include "loaded_driver.h"

using WriteFlow = FlowTest;

TEST_F(WriteFlow, WordsTravelHighByteFirstAndAreAcknowledged)
{
    watch({{1, "D", 10, 2}});
    writeWords("D", 10, {0x1234, 0x5678}, 42);
    EXPECT_EQ(nextFrame(), ":0110100A00020412345678BB");
    EXPECT_EQ(frame.frameLen, 27);
    EXPECT_EQ(frame.replyLen, 21);
    EXPECT_EQ(frame.var.reqTag, 42);
    EXPECT_EQ(answer(":0110100A0002D3"), 1);
    EXPECT_EQ(errorInfo, "1#D10(2)(17)");
    EXPECT_EQ(nextFrame(), ":0103100A0002E0");
}

TEST_F(WriteFlow, EveryWritableAreaHasItsFrame)
{
    watch({{1, "D", 0, 1}});
    writeWords("TV", 3, {0x0102});
    writeWords("CV", 199, {0xABCD});
    writeWords("CV2", 200, {0x5678, 0x1234}); // 0x12345678, low word first
    EXPECT_EQ(exchange(":011006030001E5"), ":011006030001020102E0");
    EXPECT_EQ(exchange(":01100EC7000119"), ":01100EC7000102ABCD9F");
    EXPECT_EQ(exchange(":01100EC8000118"), ":01100EC80001041234567800");
    exchange(":0103020000FA");

    writeWords("D", 4096, {1});
    writeBits("Y", 17, {0});
    writeBits("M", 1535, {1});
    EXPECT_EQ(exchange(":0110900000015E"), ":0110900000010200015B");
    EXPECT_EQ(exchange(":0105050F0000E6"), ":0105050F0000E6");
    EXPECT_EQ(exchange(":01050DFFFF00EF"), ":01050DFFFF00EF");
    exchange(":0103020000FA");

    writeBits("M", 1536, {1});
    writeBits("S", 9, {1});
    writeBits("T", 255, {1});
    EXPECT_EQ(exchange(":0105B000FF004B"), ":0105B000FF004B");
    EXPECT_EQ(exchange(":01050009FF00F2"), ":01050009FF00F2");
    EXPECT_EQ(exchange(":010506FFFF00F6"), ":010506FFFF00F6");
    exchange(":0103020000FA");

    writeBits("C", 5, {1});
    EXPECT_EQ(exchange(":01050E05FF00E8"), ":01050E05FF00E8");
}

TEST_F(WriteFlow, BitOtherThanOneIsClearedHereAndThere)
{
    watch({{1, "M", 0, 1}});
    writeBits("M", 0, {1, 2});
    EXPECT_EQ(exchange(":01050800FF00F3"), ":01050800FF00F3");
    EXPECT_EQ(exchange(":010508010000F1"), ":010508010000F1");
    EXPECT_EQ(bits("M", 0, 2), (std::vector<int>{1, 0}));
}

TEST_F(WriteFlow, ThreeWritesInARowThenOneBlockIsPolled)
{
    watch({{1, "D", 0, 1}});
    writeBits("M", 0, {1, 1, 1, 1});
    EXPECT_EQ(exchange(":01050800FF00F3"), ":01050800FF00F3");
    EXPECT_EQ(exchange(":01050801FF00F2"), ":01050801FF00F2");
    EXPECT_EQ(exchange(":01050802FF00F1"), ":01050802FF00F1");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":01050803FF00F0"), ":01050803FF00F0");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
}

TEST_F(WriteFlow, WritesGoBeforeOneShotReadsAndShareTheirAllowance)
{
    watch({{1, "D", 0, 1}});
    readOnce({1, "D", 50, 1});
    readOnce({1, "D", 60, 1});
    writeBits("M", 0, {1, 1});
    EXPECT_EQ(exchange(":01050800FF00F3"), ":01050800FF00F3");
    EXPECT_EQ(exchange(":01050801FF00F2"), ":01050801FF00F2");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310320001B9");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020000FA"), ":0103103C0001AF");
}

TEST_F(WriteFlow, WithoutABlockNothingFollowsTheThirdWrite)
{
    writeBits("M", 0, {1, 1, 1, 1});
    exchange(":01050800FF00F3");
    exchange(":01050801FF00F2");
    exchange(":01050802FF00F1");
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(nextFrame(), "");
    configure("1#0#0#3#8");
    EXPECT_EQ(nextFrame(), ""); // the fourth was dropped
    writeBits("M", 9, {1});
    EXPECT_EQ(nextFrame(), ":01050809FF00EA");
}

TEST_F(WriteFlow, PlanEndsTheStallWithAPolledBlock)
{
    writeBits("M", 0, {1, 1, 1, 1});
    exchange(":01050800FF00F3");
    exchange(":01050801FF00F2");
    exchange(":01050802FF00F1");
    EXPECT_EQ(nextFrame(), "");
    watch({{1, "D", 0, 1}});
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":01050803FF00F0"), ":01050803FF00F0");
}

TEST_F(WriteFlow, ValueIsVisibleAndReportedBeforeAnythingIsSent)
{
    watch({{1, "D", 10, 1}, {1, "Y", 17, 1}});
    writeWords("D", 10, {0x1234, 0x5678});
    writeBits("Y", 17, {1});
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}, {1, 1, "Y", 17}}));
    EXPECT_EQ(words("D", 10, 2), (std::vector<int>{0x1234, 0x5678}));
    EXPECT_EQ(bits("Y", 17, 1), (std::vector<int>{1}));
}

TEST_F(WriteFlow, WritingTheShownValueIsSentWithoutAReport)
{
    watch({{1, "D", 10, 1}});
    writeWords("D", 10, {0});
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(nextFrame(), ":0110100A0001020000D2");
}

TEST_F(WriteFlow, AcknowledgementReportsWordsAndMakesThemTheReadValue)
{
    watch({{1, "D", 10, 3}});
    writeWords("D", 10, {1, 2, 3});
    takeReports();
    exchange(":0110100A0003D2");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}, {1, 1, "D", 11}, {1, 1, "D", 12}}));
    EXPECT_EQ(exchange(":010306000100020003F0"), ":0103100A0003DF");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(words("D", 10, 3), (std::vector<int>{1, 2, 3}));
}

TEST_F(WriteFlow, AcknowledgementOfABitIsNotReported)
{
    watch({{1, "M", 5, 1}});
    writeBits("M", 5, {1});
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "M", 5}}));
    exchange(":01050805FF00EE");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(bits("M", 5, 1), (std::vector<int>{1}));
    exchange(":0102022000DB");
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(WriteFlow, PendingBitHidesTheOtherByteUntilItsAcknowledgement)
{
    watch({{1, "M", 0, 16}});
    EXPECT_EQ(exchange(":010204FFFF0000FB"), ":010208000020D5");
    takeReports();
    writeBits("M", 0, {1});
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(bits("M", 0, 10), (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 1, 0, 0}));
    exchange(":01050800FF00F3");
    EXPECT_EQ(bits("M", 0, 10), (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
}

TEST_F(WriteFlow, CounterAcknowledgementSettlesOneCounterPerWord)
{
    watch({{1, "CV2", 200, 1}, {1, "CV2", 201, 1}});
    exchange(":01030400000000F8");
    exchange(":01030400000005F3");
    takeReports();
    writeWords("CV2", 200, {0x5678, 0x1234});
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "CV2", 200}}));
    exchange(":01100EC8000118"); // its two words settle CV2 201 as well, never written and so 0
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "CV2", 200}, {1, 1, "CV2", 201}}));
    EXPECT_EQ(words("CV2", 200, 4), (std::vector<int>{0x5678, 0x1234, 0, 0}));
}

TEST_F(WriteFlow, GivenUpWriteShowsAndReportsTheReadValueAgain)
{
    watch({{1, "D", 10, 1}});
    exchange(":0103020001F9");
    writeWords("D", 10, {0x1234});
    takeReports();
    giveUp();
    EXPECT_EQ(errorInfo, "1#D10(1)(0)");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}}));
    EXPECT_EQ(words("D", 10, 1), (std::vector<int>{1}));
    EXPECT_EQ(nextFrame(), ":0103100A0001E1"); // and is not tried again
}

TEST_F(WriteFlow, GivenUpBitIsReportedUnderItsOctalAddress)
{
    watch({{1, "Y", 17, 1}});
    writeBits("Y", 17, {1});
    takeReports();
    giveUp();
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "Y", 17}}));
    EXPECT_EQ(bits("Y", 17, 1), (std::vector<int>{0}));
}

TEST_F(WriteFlow, ReadOfAnotherValueEndsThePendingMirror)
{
    watch({{1, "D", 13, 1}});
    writeWords("D", 0, {1});
    writeWords("D", 2, {1});
    writeWords("D", 4, {1});
    writeWords("D", 13, {9});
    exchange(":011010000001DE");
    exchange(":011010020001DC");
    exchange(":011010040001DA");
    EXPECT_EQ(exchange(":0103020007F3"), ":0103100D0001DE");
    EXPECT_EQ(words("D", 13, 1), (std::vector<int>{7}));
    EXPECT_EQ(exchange(":0110100D0001D1"), ":0110100D0001020009C6");
    EXPECT_EQ(words("D", 13, 1), (std::vector<int>{9}));
}

TEST_F(WriteFlow, ReadOfOtherBitsEndsThePendingMirrorOfTheBlock)
{
    watch({{1, "M", 0, 2}});
    writeBits("S", 0, {1, 1, 1});
    writeBits("M", 0, {1});
    exchange(":01050000FF00FB");
    exchange(":01050001FF00FA");
    exchange(":01050002FF00F9");
    EXPECT_EQ(bits("M", 0, 2), (std::vector<int>{1, 0}));
    EXPECT_EQ(exchange(":0102020200F9"), ":010208000010E5");
    EXPECT_EQ(bits("M", 0, 2), (std::vector<int>{0, 1}));
}

TEST_F(WriteFlow, ReadOfTheKnownValueLeavesThePendingMirror)
{
    watch({{1, "D", 13, 1}});
    writeBits("M", 0, {1, 1, 1});
    writeWords("D", 13, {9});
    exchange(":01050800FF00F3");
    exchange(":01050801FF00F2");
    exchange(":01050802FF00F1");
    EXPECT_EQ(exchange(":0103020000FA"), ":0103100D0001DE");
    EXPECT_EQ(words("D", 13, 1), (std::vector<int>{9}));
}

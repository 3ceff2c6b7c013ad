// Writes, from the host's value to the acknowledgement, and one-shot reads among them.
#include "loaded_driver.h"

using WriteFlow = FlowTest;
using OneShotFlow = FlowTest;

static const Report ENDED_WELL{-1, -1, "-1", 0};
static const Report GIVEN_UP{-1, -1, "-1", -1};

TEST_F(WriteFlow, EveryWritableAreaHasItsFrame)
{
    watch({{1, "D", 0, 1}});
    writeWords("TV", 3, {0x0102}, 42);
    writeWords("CV", 199, {0xABCD});
    writeWords("CV2", 200, {0x5678, 0x1234}); // 0x12345678, low word first
    EXPECT_EQ(exchange(":011006030001E5"), ":011006030001020102E0");
    EXPECT_EQ(frame.var.reqTag, 42);
    EXPECT_EQ(errorInfo, "1#TV3(1)(17)");
    EXPECT_EQ(exchange(":01100EC7000119"), ":01100EC7000102ABCD9F");
    EXPECT_EQ(exchange(":01100EC8000118"), ":01100EC80001041234567800");
    exchange(":0103020000FA"); // after three writes a block is polled

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

TEST_F(WriteFlow, PlanEndsTheStallAfterThreeWritesWithoutABlock)
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

TEST_F(WriteFlow, ValueIsVisibleAtOnceReportedTwiceAndThenTheReadValue)
{
    watch({{1, "D", 10, 2}, {1, "M", 5, 1}});
    writeWords("D", 10, {0x1234, 0x5678});
    writeBits("M", 5, {1});
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}, {1, 1, "D", 11}, {1, 1, "M", 5}}));
    EXPECT_EQ(words("D", 10, 2), (std::vector<int>{0x1234, 0x5678}));
    EXPECT_EQ(bits("M", 5, 1), (std::vector<int>{1}));
    EXPECT_EQ(exchange(":0110100A0002D3"), ":0110100A00020412345678BB");
    EXPECT_EQ(exchange(":01050805FF00EE"), ":01050805FF00EE"); // bits are not reported again
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}, {1, 1, "D", 11}}));
    EXPECT_EQ(exchange(":01030412345678E4"), ":0103100A0002E0");
    EXPECT_EQ(exchange(":0102022000DB"), ":010208000010E5");
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
    exchange(
        ":01100EC8000118"); // its two words also settle CV2 201, which was not written and so is 0
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "CV2", 200}, {1, 1, "CV2", 201}}));
    EXPECT_EQ(words("CV2", 200, 4), (std::vector<int>{0x5678, 0x1234, 0, 0}));
}

TEST_F(WriteFlow, GivenUpWriteShowsAndReportsTheReadValueAgain)
{
    watch({{1, "D", 10, 1}, {1, "X", 17, 1}});
    exchange(":0103020001F9");
    writeWords("D", 10, {0x1234});
    writeBits("X", 17, {1}); // inputs have no write
    takeReports();
    giveUp();
    EXPECT_EQ(errorInfo, "1#D10(1)(0)");
    EXPECT_EQ(nextFrame(), ":01FF");
    giveUp();
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}, {1, 1, "X", 17}}));
    EXPECT_EQ(words("D", 10, 1), (std::vector<int>{1}));
    EXPECT_EQ(bits("X", 17, 1), (std::vector<int>{0}));
    EXPECT_EQ(nextFrame(), ":010204000010E9"); // and is not tried again
}

TEST_F(OneShotFlow, LongRunIsReadInPiecesAndItsEndReportedAfterTheLast)
{
    watch({{1, "D", 16, 1}});
    readOnce({1, "D", 0, 20}, 77);
    EXPECT_EQ(exchange(":01031000000000000000000000000000000000EC"), ":010310000008E4");
    EXPECT_EQ(frame.var.reqTag, 77);
    EXPECT_EQ(exchange(":01031000000000000000000000000000000000EC"), ":010310080008DC");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(exchange(":0103080001000200030004EA"), ":010310100004D8");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 16}, ENDED_WELL}));
    EXPECT_EQ(words("D", 16, 4), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(nextFrame(), ":010310100001DB");
}

TEST_F(OneShotFlow, FailureDropsTheJobAndIsReportedForTheLastPieceOnly)
{
    readOnce({1, "D", 500, 20});
    giveUp();
    EXPECT_EQ(takeReports(), Reports{});
    readOnce({1, "D", 500, 1});
    giveUp();
    EXPECT_EQ(takeReports(), (Reports{GIVEN_UP}));
    readOnce({1, "D", 500, 1});
    EXPECT_EQ(exchange(":0103020000FA"), ":010311F40001F6");
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(OneShotFlow, BitsAreQueuedAsWords)
{
    readOnce({1, "M", 40, 20}, 0, -1);
    EXPECT_EQ(exchange(":0102020500F6"), ":010208000010E5");
    EXPECT_EQ(errorInfo, "1#M2(2)(15)");
    EXPECT_EQ(bits("M", 0, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

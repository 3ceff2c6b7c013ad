// The queue of writes: cutting, superseding and its bound.
#include "loaded_driver.h"

using WriteQueueFlow = FlowTest;

TEST_F(WriteQueueFlow, LongRunIsCutAtTheGroupingLimit)
{
    writeWords("D", 100, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
    EXPECT_EQ(exchange(":01101064000873"), ":01101064000810000100020003000400050006000700083F");
    EXPECT_EQ(exchange(":0110106C00086B"), ":0110106C0008100009000A000B000C000D000E000F0010F7");
    EXPECT_EQ(exchange(":01101074000467"), ":01101074000408001100120013001415");
}

TEST_F(WriteQueueFlow, GroupingLimitOfZeroCutsWordByWord)
{
    configure("1#0#0#3#0");
    writeWords("D", 0, {1, 2, 3});
    EXPECT_EQ(exchange(":011010000001DE"), ":011010000001020001DB");
    EXPECT_EQ(exchange(":011010010001DD"), ":011010010001020002D9");
    EXPECT_EQ(exchange(":011010020001DC"), ":011010020001020003D7");
    EXPECT_EQ(words("D", 0, 3), (std::vector<int>{1, 2, 3}));
}

TEST_F(WriteQueueFlow, CounterMayBeCutBetweenItsWords)
{
    configure("1#0#0#3#1");
    writeWords("CV2", 200, {0x5678, 0x1234});
    EXPECT_EQ(exchange(":01100EC8000019"), ":01100EC8000002567849");
    EXPECT_EQ(exchange(":01100EC9000018"), ":01100EC90000021234D0");
}

TEST_F(WriteQueueFlow, SeveralCountersInOneWriteSendTheLastAndTheFirstWord)
{
    writeWords("CV2", 200, {0x1111, 0x2222, 0x3333, 0x4444});
    EXPECT_EQ(nextFrame(), ":01100EC80002084444111165");
}

TEST_F(WriteQueueFlow, NewerValueReplacesTheQueuedOneButNotTheFront)
{
    watch({{1, "D", 0, 1}});
    writeWords("D", 10, {1}, 101);
    writeWords("D", 10, {2}, 102);
    writeWords("D", 20, {5}, 103);
    writeWords("D", 10, {3}, 104);
    EXPECT_EQ(exchange(":0110100A0001D4"), ":0110100A0001020001D1");
    EXPECT_EQ(words("D", 10, 1), (std::vector<int>{3}));
    EXPECT_EQ(exchange(":0110100A0001D4"), ":0110100A0001020003CF");
    EXPECT_EQ(frame.var.reqTag, 104);
    EXPECT_EQ(exchange(":011010140001CA"), ":011010140001020005C3");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
}

TEST_F(WriteQueueFlow, AnotherCountIsAnotherTarget)
{
    writeWords("D", 0, {7});
    writeWords("D", 10, {1});
    writeWords("D", 10, {2, 3});
    exchange(":011010000001DE");
    EXPECT_EQ(exchange(":0110100A0001D4"), ":0110100A0001020001D1");
    EXPECT_EQ(exchange(":0110100A0002D3"), ":0110100A00020400020003CA");
}

TEST_F(WriteQueueFlow, FullQueueKeepsItsFirst512AndTheNewest)
{
    watch({{1, "D", 0, 1}});
    for (int address = 1000; address < 1515; ++address)
        writeWords("D", address, {address});
    std::vector<int> sent;
    for (int cycle = 0; cycle < 171; ++cycle) {
        for (int i = 0; i < 3; ++i) {
            exchange(":011000000001EE");
            sent.push_back(frame.var.address);
        }
        exchange(":0103020000FA");
    }
    EXPECT_EQ(sent.front(), 1000);
    EXPECT_EQ(sent[511], 1511);
    EXPECT_EQ(sent[512], 1514);
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

TEST_F(WriteQueueFlow, QueueSwitchedOffOnlyMirrors)
{
    configure("1#1#0#3#8");
    watch({{1, "D", 10, 1}});
    writeWords("D", 10, {5});
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 10}}));
    EXPECT_EQ(words("D", 10, 1), (std::vector<int>{5}));
    EXPECT_EQ(nextFrame(), ":0103100A0001E1");
}

TEST_F(WriteQueueFlow, UnservedAreasAndEmptyRunsQueueNothing)
{
    writeBits("SM", 0, {1, 1});
    writeWords("Q", 0, {1});
    writeWords("D", 0, {});
    writeBits("M", 0, {});
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(WriteQueueFlow, InputIsFramedWithoutAFunctionAndGivenUp)
{
    watch({{1, "X", 17, 1}});
    writeBits("X", 17, {1});
    takeReports();
    EXPECT_EQ(nextFrame(), ":01FF");
    EXPECT_EQ(frame.replyLen, 17);
    giveUp();
    EXPECT_EQ(errorInfo, "1#X17(1)(0)");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "X", 17}}));
    EXPECT_EQ(bits("X", 17, 1), (std::vector<int>{0}));
}

TEST_F(WriteQueueFlow, RefusedBitOfAWordStaysVisible)
{
    watch({{1, "TV_bit", 17, 1}});
    writeBits("TV_bit", 17, {1});
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "TV_bit", 17}}));
    EXPECT_EQ(nextFrame(), ":01FF");
    giveUp();
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "TV_bit", 17}}));
    EXPECT_EQ(bits("TV_bit", 16, 3), (std::vector<int>{0, 1, 0}));
}

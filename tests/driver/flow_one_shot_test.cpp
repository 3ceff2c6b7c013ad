// One-shot reads and the report of their end.
#include "loaded_driver.h"

using OneShotFlow = FlowTest;

static const Report ENDED_WELL{-1, -1, "-1", 0};
static const Report GIVEN_UP{-1, -1, "-1", -1};

TEST_F(OneShotFlow, RunIsReadOnceAndItsEndReported)
{
    readOnce({1, "D", 500, 3}, 77);
    EXPECT_EQ(nextFrame(), ":010311F40003F4");
    EXPECT_EQ(frame.var.reqTag, 77);
    EXPECT_EQ(answer(":010306000100020003F0"), 1);
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
    EXPECT_EQ(words("D", 500, 3), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(OneShotFlow, WatchedChangesAreReportedBeforeTheEnd)
{
    watch({{1, "D", 501, 1}});
    readOnce({1, "D", 500, 2});
    exchange(":01030400010002F5");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 501}, ENDED_WELL}));
}

TEST_F(OneShotFlow, LongRunIsReadInPiecesAndReportedAfterTheLast)
{
    readOnce({1, "D", 0, 20});
    EXPECT_EQ(exchange(":01031000000000000000000000000000000000EC"), ":010310000008E4");
    EXPECT_EQ(exchange(":01031000000000000000000000000000000000EC"), ":010310080008DC");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(exchange(":0103080000000000000000F4"), ":010310100004D8");
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

TEST_F(OneShotFlow, OfTwoJobsTheOneQueuedLastIsReported)
{
    readOnce({1, "D", 0, 1});
    readOnce({1, "D", 50, 1});
    exchange(":0103020000FA");
    EXPECT_EQ(takeReports(), Reports{});
    exchange(":0103020000FA");
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

TEST_F(OneShotFlow, FailureOfTheLastPieceIsReportedAndNothingIsLeft)
{
    watch({{1, "D", 0, 1}});
    readOnce({1, "D", 500, 1});
    EXPECT_EQ(nextFrame(), ":010311F40001F6");
    giveUp();
    EXPECT_EQ(errorInfo, "1#D500(1)(0)");
    EXPECT_EQ(takeReports(), (Reports{GIVEN_UP}));
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

TEST_F(OneShotFlow, FailureOfAnEarlierPieceDropsTheJobWithoutAReport)
{
    watch({{1, "D", 0, 1}});
    readOnce({1, "D", 500, 20});
    giveUp();
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

TEST_F(OneShotFlow, EndAfterAFailureIsReportedAsGoodAgain)
{
    readOnce({1, "D", 500, 1});
    giveUp();
    readOnce({1, "D", 500, 1});
    takeReports();
    exchange(":0103020000FA");
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

TEST_F(OneShotFlow, QueuedDuplicateIsRefreshedInPlace)
{
    watch({{1, "D", 0, 1}});
    readOnce({1, "D", 10, 1}, 1);
    readOnce({1, "D", 20, 1}, 2);
    readOnce({1, "D", 30, 1}, 3);
    readOnce({1, "D", 20, 1}, 4);
    EXPECT_EQ(exchange(":0103020000FA"), ":0103100A0001E1");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310140001D7");
    EXPECT_EQ(frame.var.reqTag, 4);
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL})); // D20 was asked for last
    EXPECT_EQ(exchange(":0103020000FA"), ":0103101E0001CD");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

TEST_F(OneShotFlow, DuplicateOfTheFrontIsReadTwiceAndReportedTwice)
{
    readOnce({1, "D", 10, 1}, 1);
    nextFrame();
    readOnce({1, "D", 10, 1}, 2);
    EXPECT_EQ(answer(":0103020000FA"), 1);
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
    EXPECT_EQ(exchange(":0103020000FA"), ":0103100A0001E1");
    EXPECT_EQ(frame.var.reqTag, 2);
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

TEST_F(OneShotFlow, BitsAreQueuedAsWords)
{
    readOnce({1, "M", 40, 20}, 0, -1);
    EXPECT_EQ(nextFrame(), ":010208000010E5");
    EXPECT_EQ(frame.var.address, 2);
    EXPECT_EQ(frame.var.count, 2);
    EXPECT_EQ(answer(":0102020500F6"), 1);
    EXPECT_EQ(errorInfo, "1#M2(2)(15)");
    EXPECT_EQ(bits("M", 0, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

TEST_F(OneShotFlow, BitsAreCutAtEightTimesTheGroupingLimit)
{
    readOnce({1, "M", 0, 80}, 0, -1);
    nextFrame();
    EXPECT_EQ(frame.var.count, 4); // 64 bits
    answer(":0102020000FB");
    nextFrame();
    EXPECT_EQ(frame.var.address, 4);
    EXPECT_EQ(frame.var.count, 1); // 16 bits
}

TEST_F(OneShotFlow, CounterOfTwoWordsIsOneRegister)
{
    readOnce({1, "CV2", 200, 2});
    EXPECT_EQ(exchange(":01030412345678E4"), ":01030EC8000125");
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
    EXPECT_EQ(words("CV2", 200, 2), (std::vector<int>{0x5678, 0x1234}));
}

TEST_F(OneShotFlow, WithoutABlockNothingFollowsTheThirdRead)
{
    for (int address : {0, 10, 20, 30})
        readOnce({1, "D", address, 1});
    exchange(":0103020000FA");
    exchange(":0103020000FA");
    exchange(":0103020000FA");
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(OneShotFlow, RetriesDoNotUseUpTheAllowance)
{
    for (int address : {0, 10, 20})
        readOnce({1, "D", address, 1});
    nextFrame();
    answer("");
    nextFrame();
    answer("");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020000FA"), ":0103100A0001E1");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310140001D7");
}

TEST_F(OneShotFlow, GroupingLimitOfZeroReadsElementByElement)
{
    configure("1#0#0#3#0");
    readOnce({1, "D", 0, 3});
    EXPECT_EQ(exchange(":0103020001F9"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020002F8"), ":010310010001EA");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(exchange(":0103020003F7"), ":010310020001E9");
    EXPECT_EQ(takeReports(), (Reports{ENDED_WELL}));
}

TEST_F(OneShotFlow, FullQueueKeepsItsFirst512AndTheNewest)
{
    watch({{1, "D", 0, 1}});
    for (int address = 1000; address < 1515; ++address)
        readOnce({1, "D", address, 1});
    std::vector<int> sent;
    for (int cycle = 0; cycle < 171; ++cycle) {
        for (int i = 0; i < 3; ++i) {
            exchange(":0103020000FA");
            sent.push_back(frame.var.address);
        }
        EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    }
    EXPECT_EQ(sent.front(), 1000);
    EXPECT_EQ(sent[511], 1511);
    EXPECT_EQ(sent[512], 1514);
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

// Polling, from the address list to the change report, with good and bad replies.
#include "loaded_driver.h"

using PollFlow = FlowTest;

TEST_F(PollFlow, FrameRecordDescribesTheRequestAndItsReply)
{
    watch({{7, "D", 100, 2}});
    ASSERT_EQ(kmr->getSendFrame(&frame), 1);
    EXPECT_EQ(std::string(frame.frame, 17), ":07031064000280\r\n");
    EXPECT_EQ(frame.frameLen, 17);
    EXPECT_EQ(frame.replyLen, 19);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(frame.replyDataLen, 8);
    EXPECT_EQ(frame.var.reqTag, 4);
    EXPECT_EQ(frame.var.station, 7);
    EXPECT_EQ(frame.var.area, QString::fromLatin1("D"));
    EXPECT_EQ(frame.var.address, 100);
    EXPECT_EQ(frame.var.count, 2);
}

TEST_F(PollFlow, OneCycleReadsEveryAreaAndReportsEveryChange)
{
    const struct {
        const char *request, *reply;
        Reports reports;
    } cycle[] = {
        {":010306050002EF", ":0103040001FFFEFA", {{1, 1, "TV", 5}, {1, 1, "TV", 6}}},
        {":01030E0A0001E3", ":01030200C733", {{1, 1, "CV", 10}}},
        {":01030EC8000125", ":01030412345678E4", {{1, 1, "CV2", 200}}},
        {":0103900000026A", ":01030480007FFFFA", {{1, 1, "D", 4096}, {1, 1, "D", 4097}}},
        {":010204000020D9", ":0102040080010078", {{1, 1, "X", 17}, {1, 1, "X", 20}}},
        {":010205000010E8", ":01020280007B", {{1, 1, "Y", 7}}},
        {":0102B00000103D", ":0102020500F6", {{1, 1, "M", 1536}, {1, 1, "M", 1538}}},
        {":010200000020DD", ":0102040180000078", {{1, 1, "S", 0}, {1, 1, "S", 15}}},
        {":010206F00010F7", ":010202000CEF", {{1, 1, "T", 250}, {1, 1, "T", 251}}},
        {":01020E100010CF", ":0102021000EB", {{1, 1, "C", 20}}},
    };
    EXPECT_EQ(watch({{1, "C", 20, 1},
                     {1, "T", 250, 2},
                     {1, "S", 0, 16},
                     {1, "M", 1536, 3},
                     {1, "Y", 7, 1},
                     {1, "X", 17, 2},
                     {1, "D", 4096, 2},
                     {1, "CV2", 200, 1},
                     {1, "CV", 10, 1},
                     {1, "TV", 5, 2}}),
              10);
    for (const auto &step : cycle) {
        EXPECT_EQ(exchange(step.reply), step.request);
        EXPECT_EQ(takeReports(), step.reports) << step.request;
    }
    EXPECT_EQ(nextFrame(), cycle[0].request);

    EXPECT_EQ(words("TV", 5, 2), (std::vector<int>{0x0001, 0xFFFE}));
    EXPECT_EQ(words("CV", 10, 1), (std::vector<int>{0x00C7}));
    EXPECT_EQ(words("CV2", 200, 2), (std::vector<int>{0x5678, 0x1234}));
    EXPECT_EQ(words("D", 4096, 2), (std::vector<int>{0x8000, 0x7FFF}));
    EXPECT_EQ(bits("X", 16, 2), (std::vector<int>{0, 1}));
    EXPECT_EQ(bits("Y", 7, 1), (std::vector<int>{1}));
    EXPECT_EQ(bits("M", 1536, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(bits("S", 14, 2), (std::vector<int>{0, 1}));
    EXPECT_EQ(bits("T", 249, 3), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(bits("C", 20, 1), (std::vector<int>{1}));
}

TEST_F(PollFlow, BlocksTakeTurnsAndStationsKeepSeparateValues)
{
    EXPECT_EQ(watch({{2, "D", 5, 1}, {1, "M", 0, 1}, {1, "D", 5, 1}}), 3);
    EXPECT_EQ(exchange(":0103021111D8"), ":010310050001E6");
    EXPECT_EQ(exchange(":0203022222B5"), ":020310050001E5");
    EXPECT_EQ(exchange(":0102020000FB"), ":010208000010E5");
    EXPECT_EQ(nextFrame(), ":010310050001E6");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 5}, {1, 2, "D", 5}}));
    EXPECT_EQ(words("D", 5, 1, 1), (std::vector<int>{0x1111}));
    EXPECT_EQ(words("D", 5, 1, 2), (std::vector<int>{0x2222}));
}

TEST_F(PollFlow, OnlyWatchedValuesThatChangedAreReported)
{
    watch({{1, "D", 100, 1}, {1, "D", 102, 1}}); // D101 is read but not watched
    EXPECT_EQ(exchange(":010306000100020003F0"), ":01031064000385");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 100}, {1, 1, "D", 102}}));
    exchange(":010306000100020003F0");
    EXPECT_EQ(takeReports(), Reports{});
    exchange(":010306000100FF0004F2");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 102}}));
    EXPECT_EQ(words("D", 100, 3), (std::vector<int>{0x0001, 0x00FF, 0x0004}));
}

TEST_F(PollFlow, SilenceIsRetriedTwiceThenGivenUpUntilTheNextGoodReply)
{
    watch({{1, "D", 100, 2}});
    exchange(":01030412345678E4");
    takeReports();
    for (const int result : {8, 8, 2}) {
        EXPECT_EQ(nextFrame(), ":01031064000286");
        EXPECT_EQ(answer(""), result);
        EXPECT_EQ(errorInfo, "1#D100(2)(0)");
    }
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(words("D", 100, 2), (std::vector<int>{0x1234, 0x5678}));
    EXPECT_EQ(exchange(":01030412340001B1"), ":01031064000286");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 101}}));
}

TEST_F(PollFlow, BlockOfWordBitsIsRefusedWithoutStallingTheOthers)
{
    EXPECT_EQ(watch({{1, "TV_bit", 17, 20}, {1, "D", 0, 1}}), 2);
    EXPECT_EQ(exchange(":0103020001F9"), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":01FF");
    giveUp();
    EXPECT_EQ(errorInfo, "1#TV_bit1(2)(0)");
    EXPECT_EQ(exchange(":0103020002F8"), ":010310000001EB");
    takeReports();
    EXPECT_EQ(exchange(":0103020001F9"), ":01FF"); // a reply is consumed
    EXPECT_EQ(takeReports(), Reports{});
}

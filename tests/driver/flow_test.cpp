// Polling, from the address list to the change report.
#include "loaded_driver.h"

using PollFlow = FlowTest;

TEST_F(PollFlow, WatchedWordIsPolledStoredAndReported)
{
    EXPECT_EQ(watch({{1, "D", 100, 1}}), 1);
    EXPECT_EQ(nextFrame(), ":01031064000187");
    EXPECT_EQ(answer(":0103021234B4"), 1);
    EXPECT_EQ(errorInfo, "1#D100(1)(15)");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 100}}));

    quint8 bytes[] = {0, 0};
    EXPECT_EQ(kmr->getData(1, QString::fromLatin1("D"), 100, 1, bytes), 1);
    EXPECT_EQ(bytes[0], 0x34);
    EXPECT_EQ(bytes[1], 0x12);
}

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
    EXPECT_EQ(bits("X", 17, 2), (std::vector<int>{1, 1}));
    EXPECT_EQ(bits("X", 16, 1), (std::vector<int>{0}));
    EXPECT_EQ(bits("Y", 7, 1), (std::vector<int>{1}));
    EXPECT_EQ(bits("M", 1536, 3), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(bits("S", 14, 2), (std::vector<int>{0, 1}));
    EXPECT_EQ(bits("T", 249, 3), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(bits("C", 20, 1), (std::vector<int>{1}));
}

TEST_F(PollFlow, BlocksTakeTurnsAndStationsAscendInsideAnArea)
{
    EXPECT_EQ(watch({{12, "D", 0, 1}, {1, "M", 0, 1}, {1, "D", 0, 1}}), 3);
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":1203020000E9"), ":120310000001DA");
    EXPECT_EQ(exchange(":0102020000FB"), ":010208000010E5");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":1203020000E9"), ":120310000001DA");
}

TEST_F(PollFlow, SameFrameIsHandedOutUntilItsReplyArrives)
{
    watch({{1, "D", 0, 1}, {1, "D", 50, 1}});
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    writeWords("D", 0, {1});
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    EXPECT_EQ(answer(":0103020000FA"), 1);
    EXPECT_EQ(nextFrame(), ":011010000001020001DB");
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

TEST_F(PollFlow, ReportsCarryTheDeviceNumberOfTheProperties)
{
    configure("9#0#0#3#8");
    watch({{1, "M", 3, 1}});
    exchange(":0102020800F3");
    EXPECT_EQ(takeReports(), (Reports{{9, 1, "M", 3}}));
}

TEST_F(PollFlow, StationsOfTheSameAddressKeepSeparateValues)
{
    watch({{1, "D", 5, 1}, {2, "D", 5, 1}});
    exchange(":0103021111D8");
    exchange(":0203022222B5");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 5}, {1, 2, "D", 5}}));
    EXPECT_EQ(words("D", 5, 1, 1), (std::vector<int>{0x1111}));
    EXPECT_EQ(words("D", 5, 1, 2), (std::vector<int>{0x2222}));
}

TEST_F(PollFlow, OctalRunIsReadAndReportedAcrossTheEndOfADigit)
{
    EXPECT_EQ(watch({{1, "X", 7, 2}}), 1); // X7 and X10, the inputs 7 and 8
    EXPECT_EQ(exchange(":01020280017A"), ":010204000010E9");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "X", 7}, {1, 1, "X", 10}}));
    EXPECT_EQ(bits("X", 6, 3), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(bits("X", 10, 1), (std::vector<int>{1}));
}

TEST_F(PollFlow, GapsOfOctalAreasAreMeasuredOnTheirDigits)
{
    EXPECT_EQ(watch({{1, "Y", 1, 1}, {1, "Y", 10, 1}}), 2); // ten numbers apart as written
    EXPECT_EQ(watch({{1, "Y", 7, 1}, {1, "Y", 10, 1}}), 1);
    EXPECT_EQ(nextFrame(), ":010205000010E8");
    EXPECT_EQ(frame.var.address, 7);
    EXPECT_EQ(frame.var.count, 4);
}

TEST_F(PollFlow, TimersBelowAndFrom255AreReadApart)
{
    EXPECT_EQ(watch({{1, "T", 250, 4}, {1, "T", 255, 1}}), 2);
    EXPECT_EQ(exchange(":0102020000FB"), ":010206F00010F7");
    EXPECT_EQ(frame.var.count, 4);
    EXPECT_EQ(exchange(":01020200807B"), ":010206F00010F7");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "T", 255}}));
}

TEST_F(PollFlow, CounterBlockKeepsItsCountFromTurnToTurn)
{
    EXPECT_EQ(watch({{1, "CV2", 200, 4}}), 1);
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(exchange(":0103080000000100000002F1"), ":01030EC8000224");
        EXPECT_EQ(frame.replyDataLen, 16);
        EXPECT_EQ(frame.var.count, 2);
    }
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "CV2", 200}, {1, 1, "CV2", 201}}));
    EXPECT_EQ(words("CV2", 200, 4), (std::vector<int>{1, 0, 2, 0}));
}

TEST_F(PollFlow, NewPlanReplacesTheOldOneAndKeepsTheValues)
{
    watch({{1, "D", 1, 1}});
    exchange(":0103020007F3");
    takeReports();
    EXPECT_EQ(watch({{1, "D", 50, 1}}), 1);
    EXPECT_EQ(words("D", 1, 1), (std::vector<int>{7}));
    EXPECT_EQ(exchange(":0103020000FA"), ":010310320001B9");
    writeWords("D", 1, {8});
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(PollFlow, EmptyPlanLeavesNothingToSend)
{
    watch({{1, "D", 1, 1}});
    EXPECT_EQ(watch({}), 0);
    frame.frameLen = -1;
    EXPECT_EQ(kmr->getSendFrame(&frame), 0);
    EXPECT_EQ(frame.frameLen, -1);
}

TEST_F(PollFlow, ReplyWithoutARequestChangesNothing)
{
    EXPECT_EQ(answer(":0103021234B4"), 0);
    EXPECT_EQ(errorInfo, "");
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(PollFlow, GroupingLimitOfZeroPollsElementByElement)
{
    configure("1#0#0#3#0");
    EXPECT_EQ(watch({{1, "D", 0, 3}, {1, "D", 1, 1}, {1, "M", 0, 2}}), 5);
    EXPECT_EQ(exchange(":0103020001F9"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020002F8"), ":010310010001EA");
    EXPECT_EQ(exchange(":0103020003F7"), ":010310020001E9");
    EXPECT_EQ(exchange(":0102020100FA"), ":010208000010E5");
    EXPECT_EQ(exchange(":0102020300F8"), ":010208000010E5");
    EXPECT_EQ(words("D", 0, 3), (std::vector<int>{1, 2, 3}));
}

TEST_F(PollFlow, NegativeGroupingLimitPollsElementByElement)
{
    configure("1#0#0#3#-2");
    EXPECT_EQ(watch({{1, "D", 0, 2}, {1, "TV_bit", 17, 20}}), 4);
    EXPECT_EQ(exchange(":0103020001F9"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020002F8"), ":010310010001EA");
}

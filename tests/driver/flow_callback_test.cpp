// Hosts that call the driver from inside a report.
#include "loaded_driver.h"

using CallbackFlow = FlowTest;

TEST_F(CallbackFlow, ReadDuringAReportStillSeesTheOldValue)
{
    watch({{1, "D", 100, 1}});
    exchange(":0103020001F9");
    std::vector<int> seen;
    onReport = [&](const Report &) { seen.push_back(words("D", 100, 1)[0]); };
    exchange(":0103020002F8");
    writeWords("D", 100, {3});
    EXPECT_EQ(seen, (std::vector<int>{1, 2}));
}

TEST_F(CallbackFlow, ReadDuringAnAcknowledgementSeesTheWrittenValue)
{
    watch({{1, "D", 100, 1}});
    writeWords("D", 100, {3});
    std::vector<int> seen;
    onReport = [&](const Report &) { seen.push_back(words("D", 100, 1)[0]); };
    exchange(":0110106400017A");
    EXPECT_EQ(seen, (std::vector<int>{3}));
}

TEST_F(CallbackFlow, StoreMayGrowWhileAReplyIsDecoded)
{
    watch({{1, "D", 0, 8}});
    onReport = [&](const Report &report) {
        for (int i = 0; i < 50; ++i)
            words("D", 1000 + 50 * std::get<3>(report) + i, 1);
    };
    exchange(":01031000010002000300040005000600070008C8");
    EXPECT_EQ(takeReports().size(), 8U);
    EXPECT_EQ(words("D", 0, 8), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(CallbackFlow, StoreMayGrowWhileBitsAreDecoded)
{
    watch({{1, "M", 0, 32}});
    onReport = [&](const Report &report) { bits("S", 800 * std::get<3>(report), 800); };
    EXPECT_EQ(exchange(":010204FFFFFFFFFD"), ":010208000020D5");
    EXPECT_EQ(takeReports().size(), 32U);
    EXPECT_EQ(bits("M", 0, 32), std::vector<int>(32, 1));
}

TEST_F(CallbackFlow, StoreMayGrowWhileCountersAreDecoded)
{
    watch({{1, "CV2", 200, 2}, {1, "CV2", 201, 1}});
    onReport = [&](const Report &) { words("D", static_cast<int>(reports.size()) * 100, 100); };
    exchange(":010304AABBCCDDEA");
    exchange(":010304112233444E");
    EXPECT_EQ(words("CV2", 200, 4), (std::vector<int>{0xCCDD, 0xAABB, 0x3344, 0x1122}));
}

TEST_F(CallbackFlow, StoreMayGrowWhileAWriteIsMirroredAndSettled)
{
    watch({{1, "D", 0, 8}});
    onReport = [&](const Report &) { words("TV", static_cast<int>(reports.size()) * 50, 50); };
    writeWords("D", 0, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(words("D", 0, 8), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    exchange(":011010000008D7");
    EXPECT_EQ(takeReports().size(), 16U);
    EXPECT_EQ(words("D", 0, 8), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(CallbackFlow, WriteOfTheReportedWordOutlivesTheReply)
{
    watch({{1, "D", 100, 1}});
    onReport = [&](const Report &) {
        onReport = nullptr;
        writeWords("D", 100, {9});
    };
    exchange(":0103020005F5");
    EXPECT_EQ(words("D", 100, 1), (std::vector<int>{9}));
    EXPECT_EQ(nextFrame(), ":0110106400010200096F");
}

TEST_F(CallbackFlow, WriteQueuedInAWriteReportFollowsIt)
{
    watch({{1, "D", 100, 1}});
    onReport = [&](const Report &) {
        onReport = nullptr;
        writeWords("D", 200, {1, 2, 3});
    };
    writeWords("D", 100, {7}); // is queued before it is mirrored and reported
    EXPECT_EQ(exchange(":0110106400017A"), ":01101064000102000771");
    EXPECT_EQ(exchange(":011010C8000314"), ":011010C800030600010002000308");
    EXPECT_EQ(words("D", 100, 1), (std::vector<int>{7}));
}

TEST_F(CallbackFlow, QueuesMayGrowWhileAnAcknowledgementIsReported)
{
    watch({{1, "D", 100, 1}});
    writeWords("D", 100, {7});
    onReport = [&](const Report &) {
        for (int address = 1000; address < 1040; ++address) {
            writeWords("D", address, {1});
            readOnce({1, "D", address, 1});
        }
    };
    EXPECT_EQ(exchange(":0110106400017A"), ":01101064000102000771");
    EXPECT_EQ(nextFrame(), ":011013E80001020001F0");
}

TEST_F(CallbackFlow, OneShotReadQueuedAtTheEndOfAnotherFollowsIt)
{
    readOnce({1, "D", 10, 1});
    onReport = [&](const Report &) {
        onReport = nullptr;
        for (int address = 20; address < 60; ++address)
            readOnce({1, "D", address, 1});
    };
    EXPECT_EQ(exchange(":0103020000FA"), ":0103100A0001E1");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310140001D7");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310150001D6");
}

TEST_F(CallbackFlow, OneShotReadQueuedInTheReportOfAFailureIsDroppedWithTheOthers)
{
    readOnce({1, "D", 10, 1});
    onReport = [&](const Report &) { readOnce({1, "D", 20, 1}); };
    giveUp();
    EXPECT_EQ(takeReports(), (Reports{{-1, -1, "-1", -1}}));
    EXPECT_EQ(nextFrame(), "");
}

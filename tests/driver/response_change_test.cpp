// Good replies: the reported changes, and the pending writes and marks after them.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class ReplyChange : public DriverTest {
protected:
    // Records what the host reads during the report, instead of the report.
    void lookDuringReports()
    {
        seen().clear();
        intf_setAddrValueChangeCallBack(look);
    }

    static std::vector<int> &seen()
    {
        static std::vector<int> all;
        return all;
    }

private:
    static qint32 look(qint32, qint32 station, QString area, qint32 address)
    {
        quint8 bytes[2] = {0, 0};
        intf_getData(station, area, address, 1, bytes);
        seen().push_back(bytes[0]);
        return 0;
    }
};

} // namespace

TEST_F(ReplyChange, OnlyWatchedWordsThatChangedAreReported)
{
    // The bytes after the two bytes of a word do not count.
    driver.dataAreas << holding(watchedWord("D", 100), {0x34, 0x12, 0x99}) << watchedWord("D", 101);
    readAnswered("D", 100, 3, ":0103061234ABCD000137\r\n");
    EXPECT_EQ(told(), "D:101");
}

TEST_F(ReplyChange, EachByteOfAnElementIsAChange)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    for (int i = 0; i < 5; ++i)
        driver.dataAreas << watchedWord("CV2", 200 + i);
    readAnswered("D", 100, 2, ":01030400010100F6\r\n");
    readAnswered("CV2", 200, 10, ":0103140000000100000100000100000100000000000000E4\r\n");
    EXPECT_EQ(told(), "D:100 D:101 CV2:200 CV2:201 CV2:202 CV2:203");
}

TEST_F(ReplyChange, ChangedWatchedBitsAreReportedLowestFirst)
{
    driver.dataAreas << holding(watchedBits("M", 1, 0x8107), {0x02, 0x01});
    readAnswered("M", 16, 1, ":0102020B8070\r\n"); // bit 8 is cleared
    EXPECT_EQ(told(), "M:16 M:24 M:31");
}

TEST_F(ReplyChange, ReportComesAfterTheEndOfAPendingWriteAndBeforeTheNewValue)
{
    driver.dataAreas << written(holding(watchedWord("D", 100), {0x77}), {0x99})
                     << written(watchedBits("M", 0, 0x0001), {0x01});
    lookDuringReports();
    readAnswered("D", 100, 1, ":0103021234B4\r\n");
    readAnswered("M", 0, 1, ":0102020100FA\r\n");
    EXPECT_EQ(seen(), std::vector<int>({0x77, 0}));
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({0x99, 0, 0, 0}));
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x01, 0, 0, 0}));
}

TEST_F(ReplyChange, EqualValueKeepsAPendingWriteAndADifferentOneEndsIt)
{
    driver.dataAreas << written(watchedWord("D", 100), {0}) << written(watchedWord("CV2", 200), {0})
                     << written(watchedBits("M", 0, 0), {0});
    readAnswered("D", 100, 1, ":0103020000FA\r\n");
    readAnswered("CV2", 200, 1, ":01030400000000F8\r\n");
    readAnswered("M", 0, 1, ":0102020000FB\r\n");
    for (const _DATA_ &entry : driver.dataAreas)
        EXPECT_EQ(entry.writePending, 1) << entry.index;
    readAnswered("D", 100, 1, ":0103020001F9\r\n");
    readAnswered("CV2", 200, 1, ":01030401000000F7\r\n");
    readAnswered("M", 0, 1, ":0102020001FA\r\n");
    for (const _DATA_ &entry : driver.dataAreas)
        EXPECT_EQ(entry.writePending, 0) << entry.index;
}

TEST_F(ReplyChange, GoodReplyClearsTheFailureMarkOfEveryElementAndNothingElseOfAnEqualOne)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101) << watchedWord("CV2", 200)
                     << watchedBits("M", 0, 0);
    for (int i = 0; i < 4; ++i) {
        driver.dataAreas[i].commFailed = 1;
        driver.dataAreas[i].writePending = 1;
    }
    readAnswered("D", 100, 2, ":01030400001234B2\r\n"); // one equal, one changed
    readAnswered("CV2", 200, 1, ":01030400000000F8\r\n");
    readAnswered("M", 0, 1, ":0102020000FB\r\n");
    for (const _DATA_ &entry : driver.dataAreas)
        EXPECT_EQ(entry.commFailed, 0) << entry.index;
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
    EXPECT_EQ(entryOf("D", 101).writePending, 0);
    EXPECT_EQ(entryOf("CV2", 200).writePending, 1);
    EXPECT_EQ(entryOf("M", 0).writePending, 1);
}

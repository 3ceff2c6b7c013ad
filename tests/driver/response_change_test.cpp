// Good replies: which changes the host hears of, and what becomes of pending writes and marks.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class ReplyChange : public DriverTest {
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        seen().clear();
    }

    // Notes, instead of the report, what the host reads in the middle of it.
    void lookDuringReports()
    {
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

TEST_F(ReplyChange, OnlyChangedWordsAreReported)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    driver.dataAreas[0].readValue[0] = 0x34;
    driver.dataAreas[0].readValue[1] = 0x12;
    readInFlight("D", 100, 2);
    answer(":0103041234ABCD3A\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 101)}));
}

TEST_F(ReplyChange, EitherByteOfAWordIsAChange)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    readInFlight("D", 100, 2);
    answer(":01030400010100F6\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 100), Report(1, 1, "D", 101)}));
}

TEST_F(ReplyChange, OnlyWatchedWordsAreReported)
{
    driver.dataAreas << watchedWord("D", 101);
    readInFlight("D", 100, 2);
    answer(":0103041234ABCD3A\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 101)}));
}

TEST_F(ReplyChange, EachByteOfACounterIsAChange)
{
    driver.dataAreas << watchedWord("CV2", 200) << watchedWord("CV2", 201)
                     << watchedWord("CV2", 202) << watchedWord("CV2", 203)
                     << watchedWord("CV2", 204);
    readInFlight("CV2", 200, 10);
    answer(":0103140000000100000100000100000100000000000000E4\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "CV2", 200), Report(1, 1, "CV2", 201),
                                              Report(1, 1, "CV2", 202), Report(1, 1, "CV2", 203)}));
}

TEST_F(ReplyChange, ChangedWatchedBitsAreReportedLowestFirst)
{
    driver.dataAreas << watchedBits("M", 1, 0x8007);
    driver.dataAreas[0].readValue[0] = 0x02;
    readInFlight("M", 16, 1);
    answer(":0102020B8070\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "M", 16), Report(1, 1, "M", 31)}));
}

TEST_F(ReplyChange, BitOfTheSecondByteIsReportedAlone)
{
    driver.dataAreas << watchedBits("M", 0, 0xFFFF);
    readInFlight("M", 0, 1);
    answer(":0102020001FA\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "M", 8)}));
}

TEST_F(ReplyChange, ClearedBitsAreReportedToo)
{
    driver.dataAreas << watchedBits("M", 0, 0x0101);
    driver.dataAreas[0].readValue[0] = 0x01;
    driver.dataAreas[0].readValue[1] = 0x01;
    readInFlight("M", 0, 1);
    answer(":0102020001FA\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "M", 0)}));
}

TEST_F(ReplyChange, OctalBitsAreReportedInOctalDigits)
{
    driver.dataAreas << watchedBits("X", 1, 0x8001) << watchedBits("X", 2, 0x0001);
    readInFlight("X", 20, 16);
    answer(":0102040180010077\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "X", 20), Report(1, 1, "X", 37),
                                              Report(1, 1, "X", 40)}));
}

TEST_F(ReplyChange, ReportComesBeforeTheNewValueIsStored)
{
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].readValue[0] = 0x77;
    lookDuringReports();
    readInFlight("D", 100, 1);
    answer(":0103021234B4\r\n");
    EXPECT_EQ(seen(), std::vector<int>({0x77}));
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
}

TEST_F(ReplyChange, ReportOfABitComesBeforeTheNewValueIsStored)
{
    driver.dataAreas << watchedBits("M", 0, 0x0001);
    lookDuringReports();
    readInFlight("M", 0, 1);
    answer(":0102020100FA\r\n");
    EXPECT_EQ(seen(), std::vector<int>({0}));
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x01, 0, 0, 0}));
}

TEST_F(ReplyChange, PendingWriteEndsBeforeTheReport)
{
    driver.dataAreas << watchedWord("D", 100) << watchedBits("M", 0, 0x0001);
    driver.dataAreas[0].writePending = 1;
    driver.dataAreas[0].readValue[0] = 0x77;
    driver.dataAreas[0].writtenValue[0] = 0x99;
    driver.dataAreas[1].writePending = 1;
    driver.dataAreas[1].writtenValue[0] = 0x01;
    lookDuringReports();
    readInFlight("D", 100, 1);
    answer(":0103021234B4\r\n");
    readInFlight("M", 0, 1);
    answer(":0102020100FA\r\n");
    EXPECT_EQ(seen(), std::vector<int>({0x77, 0}));
}

TEST_F(ReplyChange, DifferentValueEndsAPendingWrite)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("CV2", 200) << watchedBits("M", 0, 0);
    for (int i = 0; i < 3; ++i)
        driver.dataAreas[i].writePending = 1;
    readInFlight("D", 100, 1);
    answer(":0103020001F9\r\n");
    readInFlight("CV2", 200, 1);
    answer(":01030401000000F7\r\n");
    readInFlight("M", 0, 1);
    answer(":0102020001FA\r\n");
    EXPECT_EQ(entryOf("D", 100).writePending, 0);
    EXPECT_EQ(entryOf("CV2", 200).writePending, 0);
    EXPECT_EQ(entryOf("M", 0).writePending, 0);
}

TEST_F(ReplyChange, EqualValueKeepsAPendingWrite)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("CV2", 200) << watchedBits("M", 0, 0);
    for (int i = 0; i < 3; ++i)
        driver.dataAreas[i].writePending = 1;
    readInFlight("D", 100, 1);
    answer(":0103020000FA\r\n");
    readInFlight("CV2", 200, 1);
    answer(":01030400000000F8\r\n");
    readInFlight("M", 0, 1);
    answer(":0102020000FB\r\n");
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
    EXPECT_EQ(entryOf("CV2", 200).writePending, 1);
    EXPECT_EQ(entryOf("M", 0).writePending, 1);
}

TEST_F(ReplyChange, WrittenValueStaysAsItWas)
{
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].writtenValue[0] = 0x99;
    readInFlight("D", 100, 1);
    answer(":0103021234B4\r\n");
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({0x99, 0, 0, 0}));
}

TEST_F(ReplyChange, GoodReplyClearsTheFailureMarkOfEveryElement)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101) << watchedWord("CV2", 200)
                     << watchedBits("M", 0, 0);
    for (int i = 0; i < 4; ++i)
        driver.dataAreas[i].commFailed = 1;
    readInFlight("D", 100, 2);
    answer(":01030400001234B2\r\n"); // one equal, one changed
    readInFlight("CV2", 200, 1);
    answer(":01030400000000F8\r\n");
    readInFlight("M", 0, 1);
    answer(":0102020000FB\r\n");
    for (const _DATA_ &entry : driver.dataAreas)
        EXPECT_EQ(entry.commFailed, 0) << entry.index;
}

TEST_F(ReplyChange, WithoutACallbackValuesAreStoredInSilence)
{
    driver.dataAreas << watchedWord("D", 100) << watchedBits("M", 0, 0xFFFF);
    intf_setAddrValueChangeCallBack(nullptr);
    readInFlight("D", 100, 1);
    answer(":0103021234B4\r\n");
    readInFlight("M", 0, 1);
    answer(":010202FFFFFD\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("M", 0), Bytes({0xFF, 0xFF, 0, 0}));
}

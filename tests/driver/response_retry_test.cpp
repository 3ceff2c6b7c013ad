// Bad replies, giving up, and the text that names the request.
#include "driver/response.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class BadReply : public DriverTest {
protected:
    // Gives up the frames in flight with a single bad reply.
    void giveUp()
    {
        driver.retryLimit = 1;
        ASSERT_EQ(answer(""), 2);
    }

    static std::vector<int> failedIndexes(const char *area)
    {
        std::vector<int> indexes;
        for (const _DATA_ &entry : driver.dataAreas) {
            if (entry.area == area && entry.commFailed == 1)
                indexes.push_back(entry.index);
        }
        return indexes;
    }
};

class ErrorText : public DriverTest {
protected:
    static QString infoOf(const VARIABLE &var, const QByteArray &reply)
    {
        driver.frames.clear();
        FRAME_PRO frame;
        frame.var = var;
        driver.frames << frame;
        return getErrorInfo(reply);
    }
};

} // namespace

TEST_F(BadReply, IsSentAgainUntilTheRetryLimit)
{
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(driver.retryCount, 1);
    EXPECT_EQ(answer(":0183027A\r\n"), 8);
    EXPECT_EQ(driver.retryCount, 2);
    EXPECT_EQ(answer(":01"), 2);
    EXPECT_EQ(driver.retryCount, 0);
}

TEST_F(BadReply, LeavesFrameAndStoreAlone)
{
    driver.commError = 0;
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].readValue[0] = 5;
    readInFlight("D", 100, 1);
    answer(":0183027A\r\n");
    EXPECT_EQ(driver.frames.size(), 1);
    EXPECT_EQ(driver.commError, 0);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 100);
    EXPECT_EQ(readValueOf("D", 100), Bytes({5, 0, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).commFailed, 0);
    EXPECT_TRUE(reports().empty());
}

TEST_F(BadReply, SameFrameIsHandedOutAgain)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    FRAME_PRO frame;
    intf_getSendFrame(&frame);
    answer("");
    intf_getSendFrame(&frame);
    EXPECT_EQ(textOf(frame), ":01031064000187\r\n");
    answer("");
    answer("");
    intf_getSendFrame(&frame);
    EXPECT_EQ(textOf(frame), ":010310C8000123\r\n");
}

TEST_F(BadReply, GoodReplyInBetweenStartsTheCountAnew)
{
    readInFlight("D", 100, 1);
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(":0103020000FA\r\n"), 1);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 2);
}

TEST_F(BadReply, RetryLimitOfOneOrLessGivesUpAtOnce)
{
    for (const qint32 limit : {1, 0, -1}) {
        driver.retryLimit = limit;
        readInFlight("D", 100, 1);
        EXPECT_EQ(answer(""), 2) << limit;
    }
}

TEST_F(BadReply, FourCharactersAreBad)
{
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer(":010"), 8);
}

TEST_F(BadReply, GivingUpDropsTheWholeBatchAndClosesIt)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    readInFlight("D", 100, 1);
    readInFlight("D", 150, 1);
    giveUp();
    EXPECT_TRUE(driver.frames.isEmpty());
    EXPECT_EQ(driver.commError, 1);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 200);
    EXPECT_EQ(failedIndexes("D"), std::vector<int>({100}));
}

TEST_F(BadReply, GivingUpKeepsValuesAndReportsNothing)
{
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].readValue[0] = 5;
    driver.dataAreas[0].writePending = 1;
    readInFlight("D", 100, 1);
    giveUp();
    EXPECT_EQ(readValueOf("D", 100), Bytes({5, 0, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
    EXPECT_TRUE(reports().empty());
}

TEST_F(BadReply, GivingUpMarksEveryWord)
{
    for (const char *area : {"TV", "CV", "D"}) {
        readInFlight(area, 100, 3);
        giveUp();
        EXPECT_EQ(failedIndexes(area), std::vector<int>({100, 101, 102})) << area;
    }
}

TEST_F(BadReply, GivingUpMarksTwoEntriesACounter)
{
    readInFlight("CV2", 200, 4);
    giveUp();
    EXPECT_EQ(failedIndexes("CV2"), std::vector<int>({200, 201, 202, 203}));
}

TEST_F(BadReply, GivingUpMarksBitsByTheirAddressAsItStands)
{
    for (const char *area : {"X", "Y", "M", "S", "T", "C"}) {
        readInFlight(area, 17, 1);
        giveUp();
        EXPECT_EQ(failedIndexes(area), std::vector<int>({17, 18})) << area;
    }
}

TEST_F(BadReply, GivingUp32BitsMarksFourEntries)
{
    readInFlight("M", 32, 16);
    giveUp();
    EXPECT_EQ(failedIndexes("M"), std::vector<int>({32, 33, 34, 35}));
}

TEST_F(BadReply, GivingUpMarksSpecialMarkersAsBits)
{
    FRAME_PRO frame;
    frame.replyDataLen = 4;
    frame.var = variable("SM", 32, 1);
    driver.frames << frame;
    giveUp();
    EXPECT_EQ(failedIndexes("SM"), std::vector<int>({32, 33}));
}

TEST_F(BadReply, GivingUpOtherAreasMarksNothing)
{
    for (const char *area : {"TV_bit", "Q"}) {
        FRAME_PRO frame;
        frame.replyDataLen = 4;
        frame.var = variable(area, 32, 1);
        driver.frames << frame;
        giveUp();
    }
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(BadReply, GivingUpTheHighestAddressWrapsRound)
{
    readInFlight("D", INT_MAX, 2);
    giveUp();
    EXPECT_EQ(failedIndexes("D"), std::vector<int>({INT_MAX, INT_MIN}));
}

TEST_F(BadReply, GivenUpTvBitBlockMakesRoomForTheNext)
{
    driver.cyclicReads << variable("TV_bit", 1, 2) << variable("D", 0, 1);
    FRAME_PRO frame;
    intf_getSendFrame(&frame);
    giveUp();
    intf_getSendFrame(&frame);
    EXPECT_EQ(textOf(frame), ":010310000001EB\r\n");
}

TEST_F(BadReply, LaterGoodReplyClearsMarksAndError)
{
    readInFlight("D", 100, 1);
    giveUp();
    readInFlight("D", 100, 1);
    answer(":0103020000FA\r\n");
    EXPECT_EQ(entryOf("D", 100).commFailed, 0);
    EXPECT_EQ(driver.commError, 0);
}

TEST_F(BadReply, GivenUpWriteIsReleasedAndReported)
{
    driver.pendingWrites << variable("D", 10, 3);
    driver.dataAreas << watchedWord("D", 10) << watchedWord("D", 11) << watchedWord("D", 12);
    for (int i = 0; i < 3; ++i) {
        driver.dataAreas[i].writePending = 1;
        driver.dataAreas[i].writtenValue[0] = 9;
    }
    writeInFlight("D", 10, 3);
    giveUp();
    for (const _DATA_ &entry : driver.dataAreas) {
        EXPECT_EQ(entry.writePending, 0);
        EXPECT_EQ(entry.readValue[0], 0);
    }
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 10), Report(1, 1, "D", 11),
                                              Report(1, 1, "D", 12)}));
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
}

TEST_F(BadReply, GivenUpWriteMarksTheFirstWordOnly)
{
    writeInFlight("D", 10, 3);
    giveUp();
    EXPECT_EQ(failedIndexes("D"), std::vector<int>({10}));
}

TEST_F(BadReply, GivenUpBitWriteMarksTwoEntries)
{
    writeInFlight("M", 40, 1);
    giveUp();
    EXPECT_EQ(failedIndexes("M"), std::vector<int>({40, 41}));
}

TEST_F(BadReply, GivenUpRequestOutsideAWriteReleasesNothing)
{
    driver.dataAreas << watchedWord("D", 10);
    driver.dataAreas[0].writePending = 1;
    writeInFlight("D", 10, 1);
    driver.sendState = 5;
    giveUp();
    EXPECT_EQ(entryOf("D", 10).writePending, 1);
}

TEST_F(ErrorText, NamesStationAreaAddressCountAndReplyLength)
{
    EXPECT_EQ(infoOf(variable("D", 100, 10), ""), "1#D100(10)(0)");
    EXPECT_EQ(infoOf(variable("CV2", 200, 2), ":0183027A\r\n"), "1#CV2200(2)(11)");
}

TEST_F(ErrorText, OctalAddressStandsAsTheHostGaveIt)
{
    EXPECT_EQ(infoOf(variable("X", 17, 1), ":01"), "1#X17(1)(3)");
}

TEST_F(ErrorText, NegativeAddressIsUnsigned)
{
    EXPECT_EQ(infoOf(variable("D", -1, 1), ""), "1#D4294967295(1)(0)");
    EXPECT_EQ(infoOf(variable("D", INT_MIN, 1), ""), "1#D2147483648(1)(0)");
}

TEST_F(ErrorText, NegativeStationAndCountKeepTheirSign)
{
    VARIABLE var = variable("D", 0, -20);
    var.station = INT_MIN;
    EXPECT_EQ(infoOf(var, ""), "-2147483648#D0(-20)(0)");
}

TEST_F(ErrorText, HighestNumbersAreWrittenInFull)
{
    VARIABLE var = variable("D", INT_MAX, INT_MAX);
    var.station = INT_MAX;
    EXPECT_EQ(infoOf(var, QByteArray(1000, ':')), "2147483647#D2147483647(2147483647)(1000)");
}

TEST_F(ErrorText, AreaNameIsTakenAsItStands)
{
    EXPECT_EQ(infoOf(variable("%1%2%L3", 5, 6), ""), "1#%1%2%L35(6)(0)");
    EXPECT_EQ(infoOf(variable("", 5, 6), ""), "1#5(6)(0)");
}

TEST_F(ErrorText, CharactersOutsideLatin1Stay)
{
    VARIABLE var = variable("D", 5, 6);
    var.area = QString(QChar(0x0141)) + QChar(0) + "D";
    EXPECT_EQ(infoOf(var, ""), QString("1#") + QChar(0x0141) + QChar(0) + "D5(6)(0)");
}

TEST_F(ErrorText, NulInAReplyCounts)
{
    EXPECT_EQ(infoOf(variable("D", 5, 6), QByteArray(":0\0"
                                                     "1",
                                                     4)),
              "1#D5(6)(4)");
}

TEST_F(ErrorText, NegativeStationAndCountKeepTheirSigns)
{
    VARIABLE var = variable("D", 5, -1);
    var.station = -1;
    EXPECT_EQ(infoOf(var, ""), "-1#D5(-1)(0)");
}

TEST_F(ErrorText, NamesTheFrontFrame)
{
    readInFlight("D", 100, 1);
    readInFlight("D", 200, 1);
    EXPECT_EQ(getErrorInfo(""), "1#D100(1)(0)");
}

TEST_F(ErrorText, GoesOutWithEveryReply)
{
    readInFlight("D", 100, 1);
    writeInFlight("M", 5, 1);
    readInFlight("D", 300, 1);
    answer(":0103020000FA\r\n");
    EXPECT_EQ(errorInfo, "1#D100(1)(15)");
    answer(":01050805FF00EE\r\n");
    EXPECT_EQ(errorInfo, "1#M5(1)(17)");
    answer("");
    EXPECT_EQ(errorInfo, "1#D300(1)(0)");
    answer("");
    answer("");
    EXPECT_EQ(errorInfo, "1#D300(1)(0)");
    answer("");
    EXPECT_EQ(errorInfo, "");
}

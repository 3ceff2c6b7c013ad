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

    // Puts a request in flight that no function builds.
    static void inFlight(const char *area, qint32 address)
    {
        FRAME_PRO frame;
        frame.replyDataLen = 4;
        frame.var = variable(area, address, 1);
        driver.frames << frame;
    }

    // The entries of the store that are marked as failed.
    static std::string failed()
    {
        std::string all;
        for (const _DATA_ &entry : std::as_const(driver.dataAreas)) {
            if (entry.commFailed == 1)
                all += (all.empty() ? "" : " ") + entry.area.toStdString() + ":" +
                       std::to_string(entry.index);
        }
        return all;
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

    static VARIABLE ofStation(qint32 station, qint32 address, qint32 count)
    {
        VARIABLE var = variable("D", address, count);
        var.station = station;
        return var;
    }
};

} // namespace

// --- Retries -------------------------------------------------------------------------------------

TEST_F(BadReply, LeavesFrameAndStoreAloneUntilTheRetryLimit)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    driver.dataAreas << holding(watchedWord("D", 100), {5});
    int retries = 0;
    for (const char *reply : {"", ":0183027A\r\n"}) {
        EXPECT_EQ(nextFrame(), ":01031064000187\r\n");
        EXPECT_EQ(answer(reply), 8);
        EXPECT_EQ(driver.retryCount, ++retries);
        EXPECT_EQ(driver.commError, 0);
        EXPECT_EQ(entryOf("D", 100).commFailed, 0);
    }
    EXPECT_EQ(answer(":010"), 2);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.commError, 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({5, 0, 0, 0}));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(nextFrame(), ":010310C8000123\r\n");
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
    for (const qint32 limit : {1, 0, -1}) { // give up at once
        driver.retryLimit = limit;
        readInFlight("D", 100, 1);
        EXPECT_EQ(answer(""), 2) << limit;
    }
}

// --- Giving up -----------------------------------------------------------------------------------

TEST_F(BadReply, GivingUpDropsTheWholeBatchAndKeepsValues)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    driver.dataAreas << written(holding(watchedWord("D", 100), {5}), {9});
    readInFlight("D", 100, 1);
    readInFlight("D", 150, 1);
    giveUp();
    EXPECT_TRUE(driver.frames.isEmpty());
    EXPECT_EQ(driver.commError, 1);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 200);
    EXPECT_EQ(failed(), "D:100");
    EXPECT_EQ(readValueOf("D", 100), Bytes({5, 0, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
    EXPECT_TRUE(reports().empty());
}

// Two entries a counter, and an entry a byte for bits, counted from the address as it stands.
TEST_F(BadReply, GivingUpMarksAnEntryForEveryFourCharactersOfWordsAndEveryTwoOfBits)
{
    const struct {
        const char *area;
        qint32 address, count;
        const char *failed;
    } rows[] = {
        {"TV", 100, 2, "TV:100 TV:101"},
        {"CV", 100, 2, "CV:100 CV:101"},
        {"D", 100, 3, "D:100 D:101 D:102"},
        {"D", INT_MAX, 2, "D:2147483647 D:-2147483648"},
        {"CV2", 200, 4, "CV2:200 CV2:201 CV2:202 CV2:203"},
        {"X", 17, 1, "X:17 X:18"},
        {"Y", 17, 1, "Y:17 Y:18"},
        {"S", 17, 1, "S:17 S:18"},
        {"T", 17, 1, "T:17 T:18"},
        {"C", 17, 1, "C:17 C:18"},
        {"M", 32, 16, "M:32 M:33 M:34 M:35"},
    };
    for (const auto &row : rows) {
        driver.dataAreas.clear();
        readInFlight(row.area, row.address, row.count);
        giveUp();
        EXPECT_EQ(failed(), row.failed);
    }
}

TEST_F(BadReply, GivingUpMarksSpecialMarkersAsBitsAndNothingOfOtherAreas)
{
    for (const char *area : {"TV_bit", "Q"}) {
        inFlight(area, 32);
        giveUp();
    }
    EXPECT_TRUE(driver.dataAreas.isEmpty());
    inFlight("SM", 32);
    giveUp();
    EXPECT_EQ(failed(), "SM:32 SM:33");
}

TEST_F(BadReply, GivenUpWriteIsReleasedAndReportedAndItsFirstWordMarked)
{
    driver.pendingWrites << variable("D", 10, 3);
    for (int address = 10; address <= 12; ++address)
        driver.dataAreas << written(watchedWord("D", address), {9});
    writeInFlight("D", 10, 3);
    giveUp();
    for (const _DATA_ &entry : driver.dataAreas) {
        EXPECT_EQ(entry.writePending, 0);
        EXPECT_EQ(entry.readValue[0], 0);
    }
    EXPECT_EQ(told(), "D:10 D:11 D:12");
    EXPECT_EQ(failed(), "D:10");
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
}

TEST_F(BadReply, GivenUpRequestOutsideAWriteReleasesNothing)
{
    driver.dataAreas << written(watchedWord("D", 10), {0});
    writeInFlight("D", 10, 1);
    driver.sendState = 5;
    giveUp();
    EXPECT_EQ(entryOf("D", 10).writePending, 1);
}

// --- The text ------------------------------------------------------------------------------------

TEST_F(ErrorText, NamesStationAreaAddressCountAndReplyLength)
{
    EXPECT_EQ(infoOf(variable("D", 100, 10), ""), "1#D100(10)(0)");
    EXPECT_EQ(infoOf(variable("CV2", 200, 2), ":0183027A\r\n"), "1#CV2200(2)(11)");
    EXPECT_EQ(infoOf(variable("X", 17, 1), ":01"), "1#X17(1)(3)"); // as the host gave it
    EXPECT_EQ(infoOf(variable("D", 5, 6), QByteArray(":0\0:", 4)), "1#D5(6)(4)");
}

TEST_F(ErrorText, NegativeAddressIsUnsignedStationAndCountKeepTheirSign)
{
    EXPECT_EQ(infoOf(ofStation(-1, -1, -1), ""), "-1#D4294967295(-1)(0)");
    EXPECT_EQ(infoOf(ofStation(INT_MIN, INT_MIN, -20), ""), "-2147483648#D2147483648(-20)(0)");
    EXPECT_EQ(infoOf(ofStation(INT_MAX, INT_MAX, INT_MAX), QByteArray(1000, ':')),
              "2147483647#D2147483647(2147483647)(1000)");
}

TEST_F(ErrorText, AreaNameIsTakenAsItStands)
{
    EXPECT_EQ(infoOf(variable("%1%2%L3", 5, 6), ""), "1#%1%2%L35(6)(0)");
    EXPECT_EQ(infoOf(variable("", 5, 6), ""), "1#5(6)(0)");
    VARIABLE var = variable("D", 5, 6);
    var.area = QString(QChar(0x0141)) + QChar(0) + "D";
    EXPECT_EQ(infoOf(var, ""), QString("1#") + QChar(0x0141) + QChar(0) + "D5(6)(0)");
}

TEST_F(ErrorText, NamesTheFrontFrameAndGoesOutWithEveryReply)
{
    readInFlight("D", 100, 1);
    writeInFlight("M", 5, 1);
    readInFlight("D", 300, 1);
    EXPECT_EQ(getErrorInfo(""), "1#D100(1)(0)");
    const std::pair<const char *, const char *> replies[] = {{":0103020000FA\r\n", "1#D100(1)(15)"},
                                                             {":01050805FF00EE\r\n", "1#M5(1)(17)"},
                                                             {"", "1#D300(1)(0)"},
                                                             {"", "1#D300(1)(0)"},
                                                             {"", "1#D300(1)(0)"},
                                                             {"", ""}};
    for (const auto &[reply, text] : replies) {
        answer(reply);
        EXPECT_EQ(errorInfo, text);
    }
}

// The kinds of replies, and how the characters of good ones are stored.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

int kindOf(const char *text)
{
    return check_rcv_data(reinterpret_cast<const quint8 *>(text),
                          static_cast<qint32>(strlen(text)));
}

class Reply : public DriverTest {
protected:
    // Byte 0 and byte 1 after a reply to a read of one word.
    Bytes decoded(const QByteArray &characters)
    {
        driver.dataAreas.clear();
        readInFlight("D", 0, 1);
        answer(":010302" + characters);
        const Bytes bytes = readValueOf("D", 0);
        return Bytes(bytes.begin(), bytes.begin() + 2);
    }

    // The read values of the store, byte 0 first: "D:100=34120000".
    static std::string stored()
    {
        std::string all;
        for (const _DATA_ &entry : std::as_const(driver.dataAreas)) {
            const QByteArray bytes(reinterpret_cast<const char *>(entry.readValue), 4);
            all += (all.empty() ? "" : " ") + entry.area.toStdString() + ":" +
                   std::to_string(entry.index) + "=" + bytes.toHex().toUpper().constData();
        }
        return all;
    }

    // Puts a request in flight that no function builds.
    static void inFlight(const char *area, qint32 address, qint32 dataPos, qint32 dataLen)
    {
        FRAME_PRO frame;
        frame.replyDataPos = dataPos;
        frame.replyDataLen = dataLen;
        frame.var = variable(area, address, 1);
        driver.frames << frame;
    }
};

} // namespace

// --- Kinds of replies ----------------------------------------------------------------------------

TEST(ReplyKind, OfFourCharactersOrFewerIsBad)
{
    const quint8 data[] = ":0103";
    const quint8 acknowledgement[] = ":0110";
    EXPECT_EQ(check_rcv_data(data, 4), 0);
    EXPECT_EQ(check_rcv_data(data, 5), 1);
    EXPECT_EQ(check_rcv_data(acknowledgement, 4), 0);
    EXPECT_EQ(check_rcv_data(data, -1), 0);
    EXPECT_EQ(check_rcv_data(nullptr, 0), 0);
    EXPECT_EQ(check_rcv_data(nullptr, 20), 0);
    EXPECT_EQ(kindOf(""), 0);
}

TEST(ReplyKind, FollowsFromTheFunctionAlone)
{
    for (const char *acknowledgement : {":0105", ":0110", "\xFF\xFF\xFF\x31\x30garbage"})
        EXPECT_EQ(kindOf(acknowledgement), 2) << acknowledgement;
    for (const char *data : {":0102", ":0103", ":0106", ":010F", ":0100", ":0115", ":0111", ":0120",
                             ":017F", ":01 3", ":01\r\n"})
        EXPECT_EQ(kindOf(data), 1) << data;
    for (const char *bad : {":0180", ":0183", ":0190", ":0185", ":01:3", ":01A3", ":01a3",
                            ":01\x80\x33", ":01\xFF\x33"})
        EXPECT_EQ(kindOf(bad), 0) << bad;
}

// --- Values --------------------------------------------------------------------------------------

TEST_F(Reply, WithoutAFrameInFlightChangesNothing)
{
    errorInfo = "old";
    driver.commError = 1;
    driver.retryCount = 2;
    EXPECT_EQ(answer(":0103021234B4\r\n"), 0);
    EXPECT_EQ(errorInfo, "");
    EXPECT_EQ(driver.commError, 1);
    EXPECT_EQ(driver.retryCount, 2);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(Reply, ElementsAreStoredLowByteFirstAndBitsInTheBlocksOfTheirAddress)
{
    const struct {
        const char *area;
        qint32 address, count;
        const char *reply, *stored;
    } rows[] = {
        {"TV", 7, 2, ":0103041234ABCD3A\r\n", "TV:7=34120000 TV:8=CDAB0000"},
        {"CV", 8, 1, ":01030256782C\r\n", "CV:8=78560000"},
        {"D", 100, 1, ":0103021234B4\r\n", "D:100=34120000"},
        {"CV2", 200, 4, ":01030812345678FFFFFFFEE5\r\n", "CV2:200=78563412 CV2:201=FEFFFFFF"},
        {"M", 17, 16, ":01020401800FF079\r\n", "M:1=01800000 M:2=0FF00000"},
        {"S", 16, 1, ":0102021234B5\r\n", "S:1=12340000"},
        {"T", 31, 1, ":0102021234B5\r\n", "T:1=12340000"},
        {"C", 32, 1, ":0102021234B5\r\n", "C:2=12340000"},
        {"M", -1, 1, ":0102021234B5\r\n", "M:0=12340000"},
        {"M", -17, 1, ":0102021234B5\r\n", "M:-1=12340000"},
        {"X", 17, 1, ":0102021234B5\r\n", "X:0=12340000"}, // octal digits
        {"Y", 20, 1, ":0102021234B5\r\n", "Y:1=12340000"},
        {"X", 80, 1, ":0102021234B5\r\n", "X:0=12340000"}, // no octal number
    };
    for (const auto &row : rows) {
        driver.dataAreas.clear();
        readAnswered(row.area, row.address, row.count, row.reply);
        EXPECT_EQ(stored(), row.stored);
    }
}

TEST_F(Reply, UnusedBytesOfAWordOrBlockStay)
{
    driver.dataAreas << holding(watchedWord("D", 100), {0, 0, 0x99})
                     << holding(watchedBits("M", 0, 0), {0, 0, 0x99});
    readAnswered("D", 100, 1, ":0103021234B4\r\n");
    readAnswered("M", 0, 1, ":0102021234B5\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0x99, 0}));
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x12, 0x34, 0x99, 0}));
}

TEST_F(Reply, SpecialMarkersAreStoredAsBits)
{
    inFlight("SM", 32, 7, 4);
    EXPECT_EQ(answer(":0102021234B5\r\n"), 1);
    EXPECT_EQ(readValueOf("SM", 2), Bytes({0x12, 0x34, 0, 0}));
}

TEST_F(Reply, DataLieWhereTheRequestSaysAndARestThatIsNoElementIsCutOff)
{
    inFlight("D", 5, 9, 7);
    answer(":010304FFFF1234B4\r\n");
    EXPECT_EQ(readValueOf("D", 5), Bytes({0x12, 0xFF, 0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(Reply, TvBitAndUnknownAreasAreConsumedWithoutAValue)
{
    for (const char *area : {"TV_bit", "Q", "d"}) {
        inFlight(area, 1, 7, 4);
        EXPECT_EQ(answer(":0103021234B4\r\n"), 1);
    }
    EXPECT_TRUE(driver.frames.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(Reply, EveryCharacterHasItsNibble)
{
    // One row for 16 character codes, from 0x00 on.
    const char *const rows[] = {
        "0000000000000000", "0000000000000000", "0000000000000000", "0123456789ABCDEF",
        "0ABCDEF012345678", "9ABCDEF012345678", "9ABCDEF012345678", "9ABCDEF012345678",
        "9ABCDEF012345678", "9ABCDEF012345678", "9ABCDEF012345678", "9ABCDEF012345678",
        "9ABCDEF012345678", "9ABCDEF012345678", "9ABCDEF012345678", "9ABCDEF012345678"};
    for (int code = 0; code < 256; ++code) {
        const int nibble = std::stoi(std::string(1, rows[code / 16][code % 16]), nullptr, 16);
        const QByteArray character(1, static_cast<char>(code));
        EXPECT_EQ(decoded(character + "000"), Bytes({0, 16 * nibble})) << code;
        EXPECT_EQ(decoded("000" + character), Bytes({nibble, 0})) << code;
    }
}

TEST_F(Reply, MissingCharactersAreZeros)
{
    driver.dataAreas << holding(watchedWord("D", 100), {0xEE})
                     << holding(watchedWord("D", 101), {0, 0xEE});
    readAnswered("D", 100, 2, ":0103");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(told(), "D:100 D:101");
    // The host's memory after the end does not count.
    readAnswered("D", 100, 2, QByteArray::fromRawData(":01030412345678", 12));
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0, 0x50, 0, 0}));
}

TEST_F(Reply, NeitherLrcNorStationNorByteCountCount)
{
    readAnswered("D", 100, 1, "?9903FF123400");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
}

TEST_F(Reply, StationOfTheRequestIsTheKey)
{
    VARIABLE var = variable("D", 100, 1);
    var.station = 2;
    getReadFrame(var);
    answer(":0103021234B4\r\n");
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.at(0).station, 2);
}

// --- The frames in flight ------------------------------------------------------------------------

TEST_F(Reply, AnswersTheFrontFrameAndClosesTheBatchWithTheLast)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    readInFlight("D", 100, 1);
    readInFlight("D", 101, 1);
    driver.commError = 1;
    driver.retryCount = 2;
    EXPECT_EQ(answer(":0103021111D8\r\n"), 1);
    EXPECT_EQ(driver.commError, 0);
    EXPECT_EQ(driver.retryCount, 0);
    ASSERT_EQ(driver.frames.size(), 1);
    EXPECT_EQ(driver.frames.at(0).var.address, 101);
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.cyclicReads.at(0).address, 100);
    answer(":0103021111D8\r\n");
    EXPECT_EQ(driver.cyclicReads.at(0).address, 200);
}

TEST_F(Reply, AcknowledgementAnswersTheFrontFrameAndClosesTheBatchWithTheLast)
{
    driver.pendingWrites << variable("D", 100, 1);
    writeInFlight("D", 100, 1);
    writeInFlight("D", 101, 1);
    driver.commError = 1;
    driver.retryCount = 2;
    EXPECT_EQ(answer(":0110106400017A\r\n"), 1);
    EXPECT_EQ(driver.commError, 0);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.pendingWrites.size(), 1);
    answer(":01101065000179\r\n");
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
    EXPECT_TRUE(driver.frames.isEmpty());
}

TEST_F(Reply, AcknowledgementOutsideAWriteIsOnlyConsumed)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    driver.dataAreas << written(watchedWord("D", 100), {5});
    readAnswered("D", 100, 1, ":0110106400017A\r\n");
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0, 0, 0, 0}));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(driver.cyclicReads.at(0).address, 200);
}

TEST_F(Reply, DataInsteadOfAnAcknowledgementIsStored)
{
    driver.pendingWrites << variable("D", 100, 1);
    driver.dataAreas << written(watchedWord("D", 100), {5});
    writeInFlight("D", 100, 1);
    EXPECT_EQ(answer(":01061064000580\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x00, 0x64, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).writePending, 0);
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
}

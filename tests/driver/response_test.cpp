// Good replies: how their characters land in the store.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class Reply : public DriverTest {
protected:
    // Byte 0 and byte 1 that a reply to a read of one word leaves behind.
    Bytes decoded(const QByteArray &characters)
    {
        driver.dataAreas.clear();
        readInFlight("D", 0, 1);
        answer(":010302" + characters);
        const Bytes bytes = readValueOf("D", 0);
        return Bytes(bytes.begin(), bytes.begin() + 2);
    }
};

} // namespace

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

TEST_F(Reply, WordsAreStoredLowByteFirst)
{
    readInFlight("D", 100, 2);
    EXPECT_EQ(answer(":0103041234ABCD3A\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0xCD, 0xAB, 0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(Reply, UnusedBytesOfAWordOrBlockStay)
{
    driver.dataAreas << watchedWord("D", 100) << watchedBits("M", 0, 0);
    driver.dataAreas[0].readValue[2] = 0x99;
    driver.dataAreas[1].readValue[2] = 0x99;
    readInFlight("D", 100, 1);
    answer(":0103021234B4\r\n");
    readInFlight("M", 0, 1);
    answer(":0102021234B5\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0x99, 0}));
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x12, 0x34, 0x99, 0}));
}

TEST_F(Reply, EveryWordAreaIsStored)
{
    readInFlight("TV", 7, 1);
    answer(":0103021234B4\r\n");
    readInFlight("CV", 8, 1);
    answer(":01030256782C\r\n");
    EXPECT_EQ(readValueOf("TV", 7), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("CV", 8), Bytes({0x78, 0x56, 0, 0}));
}

TEST_F(Reply, CountersAreStoredLowByteFirst)
{
    readInFlight("CV2", 200, 4);
    EXPECT_EQ(answer(":01030812345678FFFFFFFEE5\r\n"), 1);
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({0x78, 0x56, 0x34, 0x12}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(Reply, BitsAreStoredInBlocksOf16)
{
    readInFlight("M", 0, 16);
    EXPECT_EQ(answer(":01020401800FF079\r\n"), 1);
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x01, 0x80, 0, 0}));
    EXPECT_EQ(readValueOf("M", 1), Bytes({0x0F, 0xF0, 0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(Reply, BitsAreKeyedByTheBlockOfTheirAddress)
{
    readInFlight("M", 17, 1);
    answer(":0102021234B5\r\n");
    EXPECT_EQ(readValueOf("M", 1), Bytes({0x12, 0x34, 0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(Reply, EveryBitAreaIsStored)
{
    for (const char *area : {"M", "S", "T", "C"}) {
        readInFlight(area, 16, 1);
        answer(":0102021234B5\r\n");
        EXPECT_EQ(readValueOf(area, 1), Bytes({0x12, 0x34, 0, 0}));
    }
    EXPECT_EQ(driver.dataAreas.size(), 4);
}

TEST_F(Reply, OctalAddressesAreKeyedByTheirLinearBlock)
{
    for (const char *area : {"X", "Y"}) {
        readInFlight(area, 17, 1);
        answer(":0102021234B5\r\n");
        EXPECT_EQ(readValueOf(area, 0), Bytes({0x12, 0x34, 0, 0}));
        readInFlight(area, 20, 1);
        answer(":01020256782D\r\n");
        EXPECT_EQ(readValueOf(area, 1), Bytes({0x56, 0x78, 0, 0}));
    }
    EXPECT_EQ(driver.dataAreas.size(), 4);
}

TEST_F(Reply, InvalidOctalAddressIsKeyedAsBlock0)
{
    readInFlight("X", 80, 1);
    answer(":0102021234B5\r\n");
    EXPECT_EQ(readValueOf("X", 0), Bytes({0x12, 0x34, 0, 0}));
}

TEST_F(Reply, BlockOfANegativeBitAddressIsTruncated)
{
    readInFlight("M", -1, 1);
    answer(":0102021234B5\r\n");
    readInFlight("M", -17, 1);
    answer(":01020256782D\r\n");
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x12, 0x34, 0, 0}));
    EXPECT_EQ(readValueOf("M", -1), Bytes({0x56, 0x78, 0, 0}));
}

TEST_F(Reply, SpecialMarkersAreStoredAsBits)
{
    FRAME_PRO frame;
    frame.replyDataPos = 7;
    frame.replyDataLen = 4;
    frame.var = variable("SM", 32, 1);
    driver.frames << frame;
    EXPECT_EQ(answer(":0102021234B5\r\n"), 1);
    EXPECT_EQ(readValueOf("SM", 2), Bytes({0x12, 0x34, 0, 0}));
}

TEST_F(Reply, DataStartWhereTheRequestSays)
{
    FRAME_PRO frame;
    frame.replyDataPos = 9;
    frame.replyDataLen = 4;
    frame.var = variable("D", 5, 1);
    driver.frames << frame;
    answer(":010304FFFF1234B4\r\n");
    EXPECT_EQ(readValueOf("D", 5), Bytes({0x12, 0xFF, 0, 0}));
}

TEST_F(Reply, LengthThatIsNoMultipleOfAnElementIsCutOff)
{
    FRAME_PRO frame;
    frame.replyDataPos = 7;
    frame.replyDataLen = 7;
    frame.var = variable("D", 5, 1);
    driver.frames << frame;
    answer(":01030412345678E4\r\n");
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(Reply, TvBitAndUnknownAreasAreConsumedWithoutAValue)
{
    for (const char *area : {"TV_bit", "Q", "d"}) {
        FRAME_PRO frame;
        frame.replyDataPos = 7;
        frame.replyDataLen = 4;
        frame.var = variable(area, 1, 1);
        driver.frames << frame;
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

TEST_F(Reply, ShortReplyIsStoredAsZeros)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    driver.dataAreas[0].readValue[0] = 0xEE;
    driver.dataAreas[1].readValue[1] = 0xEE;
    readInFlight("D", 100, 2);
    EXPECT_EQ(answer(":0103"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 100), Report(1, 1, "D", 101)}));
}

TEST_F(Reply, MissingCharactersAreZeros)
{
    readInFlight("D", 100, 2);
    answer(":01030412345");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0, 0x50, 0, 0}));
}

TEST_F(Reply, NeitherLrcNorStationNorByteCountCount)
{
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer("?9903FF123400"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
}

TEST_F(Reply, IsTheAnswerToTheFrontFrameOnly)
{
    readInFlight("D", 100, 1);
    readInFlight("D", 200, 1);
    EXPECT_EQ(answer(":0103021111D8\r\n"), 1);
    ASSERT_EQ(driver.frames.size(), 1);
    EXPECT_EQ(driver.frames.at(0).var.address, 200);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 1);
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

TEST_F(Reply, ClosesTheBatchWithItsLastFrameOnly)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    readInFlight("D", 100, 1);
    readInFlight("D", 101, 1);
    answer(":0103021111D8\r\n");
    EXPECT_EQ(driver.cyclicReads.at(0).address, 100);
    answer(":0103021111D8\r\n");
    EXPECT_EQ(driver.cyclicReads.at(0).address, 200);
}

TEST_F(Reply, GoodReplyEndsRetriesAndError)
{
    driver.commError = 1;
    driver.retryCount = 2;
    readInFlight("D", 100, 1);
    answer(":0103021111D8\r\n");
    EXPECT_EQ(driver.commError, 0);
    EXPECT_EQ(driver.retryCount, 0);
}

TEST_F(Reply, AcknowledgementEndsRetriesAndError)
{
    driver.commError = 1;
    driver.retryCount = 2;
    writeInFlight("D", 100, 1);
    EXPECT_EQ(answer(":0110106400017A\r\n"), 1);
    EXPECT_EQ(driver.commError, 0);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_TRUE(driver.frames.isEmpty());
}

TEST_F(Reply, AcknowledgementOutsideAWriteIsOnlyConsumed)
{
    driver.cyclicReads << variable("D", 100, 1) << variable("D", 200, 1);
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].writePending = 1;
    driver.dataAreas[0].writtenValue[0] = 5;
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer(":0110106400017A\r\n"), 1);
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0, 0, 0, 0}));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(driver.cyclicReads.at(0).address, 200);
}

TEST_F(Reply, AcknowledgementClosesTheBatchWithItsLastFrameOnly)
{
    driver.pendingWrites << variable("D", 100, 1);
    writeInFlight("D", 100, 1);
    writeInFlight("D", 101, 1);
    answer(":0110106400017A\r\n");
    EXPECT_EQ(driver.pendingWrites.size(), 1);
    answer(":01101065000179\r\n");
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
}

TEST_F(Reply, DataInsteadOfAnAcknowledgementIsStored)
{
    driver.pendingWrites << variable("D", 100, 1);
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].writePending = 1;
    driver.dataAreas[0].writtenValue[0] = 5;
    writeInFlight("D", 100, 1);
    EXPECT_EQ(answer(":01061064000580\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x00, 0x64, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).writePending, 0);
    EXPECT_TRUE(driver.pendingWrites.isEmpty());
}

// Read requests: the address of each area, the quantity, and the expected reply.
#include "driver/frames.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class ReadFrame : public DriverTest {
protected:
    static FRAME_PRO frameOf(VARIABLE var)
    {
        getReadFrame(var);
        return driver.frames.last();
    }

    struct Row {
        const char *area;
        qint32 address;
        qint32 count;
        const char *text; // without CR LF
    };

    template <size_t SIZE> static void expectFrames(const Row (&rows)[SIZE])
    {
        for (const Row &row : rows)
            EXPECT_EQ(textOf(frameOf(variable(row.area, row.address, row.count))),
                      std::string(row.text) + "\r\n")
                << row.area << row.address << " x " << row.count;
    }

    // Characters of data and of the whole reply that the frame expects.
    static std::pair<int, int> replyOf(const char *area, qint32 address, qint32 count)
    {
        const FRAME_PRO frame = frameOf(variable(area, address, count));
        EXPECT_EQ(frame.replyDataPos, 7);
        return {frame.replyDataLen, frame.replyLen};
    }
};

} // namespace

TEST_F(ReadFrame, IsAppendedBehindEarlierFrames)
{
    frameOf(variable("D", 0, 1));
    frameOf(variable("D", 1, 1));
    ASSERT_EQ(driver.frames.size(), 2);
    EXPECT_EQ(driver.frames.at(0).frameLen, 17);
    EXPECT_EQ(textOf(driver.frames.at(0)), ":010310000001EB\r\n");
    EXPECT_EQ(textOf(driver.frames.at(1)), ":010310010001EA\r\n");
}

TEST_F(ReadFrame, StationIsTheLastTwoCharactersOfItsDecimalNumber)
{
    const std::pair<qint32, const char *> rows[] = {
        {0, ":000310000001EC\r\n"},       {7, ":070310000001E5\r\n"},
        {12, ":120310000001DA\r\n"},      {99, ":99031000000153\r\n"},
        {123, ":230310000001C9\r\n"},     {100, ":000310000001EC\r\n"},
        {INT_MAX, ":470310000001A5\r\n"}, {-5, ":-50310000001F1\r\n"},
        {-12, ":120310000001DA\r\n"},     {INT_MIN, ":480310000001A4\r\n"}};
    for (const auto &[station, text] : rows) {
        VARIABLE var = variable("D", 0, 1);
        var.station = station;
        EXPECT_EQ(textOf(frameOf(var)), text) << station;
    }
}

TEST_F(ReadFrame, WordAreasHaveTheirBases)
{
    expectFrames({{"TV", 0, 1, ":010306000001F5"},
                  {"TV", 9999, 1, ":01032D0F0001BF"},
                  {"CV", 0, 1, ":01030E000001ED"},
                  {"CV", 199, 1, ":01030EC7000126"},
                  {"CV2", 200, 1, ":01030EC8000125"},
                  {"CV2", 255, 1, ":01030EFF0001EE"},
                  {"D", 0, 1, ":010310000001EB"},
                  {"D", 4095, 1, ":01031FFF0001DD"},
                  {"D", 4096, 1, ":0103900000016B"}, // from here on at 8000
                  {"D", 11999, 1, ":0103AEDF00016E"}});
}

TEST_F(ReadFrame, BitAreasHaveTheirBasesAndStartAtAMultipleOf16)
{
    expectFrames({{"S", 0, 1, ":010200000010ED"},
                  {"S", 9999, 1, ":010227000010C6"},
                  {"T", 0, 1, ":010206000010E7"},
                  {"T", 9999, 1, ":01022D000010C0"},
                  {"C", 0, 1, ":01020E000010DF"},
                  {"C", 255, 1, ":01020EF00010EF"},
                  {"M", 0, 1, ":010208000010E5"},
                  {"M", 15, 1, ":010208000010E5"},
                  {"M", 16, 1, ":010208100010D5"},
                  {"M", 31, 1, ":010208100010D5"},
                  {"M", 1535, 1, ":01020DF00010F0"},
                  {"M", 1536, 1, ":0102B00000103D"}, // from here on at AA00
                  {"M", 9999, 1, ":0102D10000101C"}});
}

TEST_F(ReadFrame, OctalAreasAreReadAtTheirLinearAddressOrAt0WhereTheyHaveNone)
{
    expectFrames({{"X", 0, 1, ":010204000010E9"},
                  {"X", 17, 1, ":010204000010E9"},
                  {"X", 20, 1, ":010204100010D9"},
                  {"X", 23417, 1, ":01022B000010C2"},
                  {"Y", 17, 1, ":010205000010E8"},
                  {"Y", 20, 1, ":010205100010D8"},
                  {"X", 18, 1, ":010204000010E9"},
                  {"X", 28, 1, ":010204000010E9"},
                  {"Y", 920, 1, ":010205000010E8"},
                  {"X", -20, 1, ":010204000010E9"}});
}

TEST_F(ReadFrame, WordCountIsTheLastFourCharactersOfItsDecimalNumber)
{
    expectFrames({{"D", 0, 8, ":010310000008E4"},
                  {"D", 0, 12, ":010310000012DA"},
                  {"TV", 0, 16, ":010306000016E0"},
                  {"CV2", 200, 32, ":01030EC8001610"},
                  {"D", 0, 12345, ":01031000234584"},
                  {"D", 0, 20000, ":010310000000EC"},
                  {"D", 0, -1, ":0103100000-1ED"},
                  {"D", 0, -10, ":010310000-10DC"},
                  {"D", 0, -123, ":01031000-123CA"},
                  {"D", 0, -1234, ":010310001234A6"}});
}

TEST_F(ReadFrame, CounterCountAboveOneIsHalvedInFrameAndRequest)
{
    expectFrames({{"CV2", 200, 4, ":01030EC8000224"},
                  {"CV2", 200, 3, ":01030EC8000125"},
                  {"CV2", 200, 2, ":01030EC8000125"},
                  {"CV2", 200, 0, ":01030EC8000026"},
                  {"CV2", 200, -4, ":01030EC800-42A"}});
    VARIABLE var = variable("CV2", 200, 4);
    EXPECT_EQ(frameOf(var).var.count, 2);
    getReadFrame(var);
    EXPECT_EQ(var.count, 2);
    EXPECT_EQ(frameOf(variable("CV2", 200, 1)).var.count, 1);
    EXPECT_EQ(frameOf(variable("D", 0, 4)).var.count, 4);
    EXPECT_EQ(frameOf(variable("CV", 0, 4)).var.count, 4);
}

TEST_F(ReadFrame, ExpectsFourCharactersAWordAndEightACounter)
{
    EXPECT_EQ(replyOf("D", 0, 1), std::make_pair(4, 15));
    EXPECT_EQ(replyOf("TV", 0, 8), std::make_pair(32, 43));
    EXPECT_EQ(replyOf("CV2", 200, 1), std::make_pair(8, 19));
    EXPECT_EQ(replyOf("CV2", 200, 4), std::make_pair(16, 27));
}

TEST_F(ReadFrame, BitsThatReachThe16thOfTheirBlockRead32Bits)
{
    expectFrames({{"M", 0, 15, ":010208000010E5"},
                  {"M", 13, 2, ":010208000010E5"},
                  {"M", 0, 16, ":010208000020D5"},
                  {"M", 14, 2, ":010208000020D5"},
                  {"S", 30, 2, ":010200100020CD"},
                  {"M", 0, 64, ":010208000020D5"},
                  {"M", 15, 1, ":010208000010E5"}, // a single bit does not
                  {"M", 15, 0, ":010208000010E5"},
                  {"M", 15, -1, ":010208000010E5"},
                  {"X", 17, 2, ":010204000020D9"},
                  {"X", 15, 2, ":010204000010E9"},
                  {"Y", 16, 2, ":010205000020D8"}});
    EXPECT_EQ(replyOf("M", 15, 1), std::make_pair(4, 15));
    EXPECT_EQ(replyOf("X", 17, 2), std::make_pair(8, 19));
}

TEST_F(ReadFrame, NegativeAddressIsCutFromItsTwosComplement)
{
    expectFrames({{"TV", -1, 1, ":010305FF0001F7"},
                  {"D", -4097, 1, ":0103FFFF0001FD"},
                  {"S", -15, 1, ":010200000010ED"},
                  {"S", -16, 1, ":0102FFF00010FE"},
                  {"M", -1, 16, ":010208000010E5"}, // the remainder is negative too
                  {"M", -1, 17, ":010208000020D5"}});
}

TEST_F(ReadFrame, HighNumbersAreCutToTheirFields)
{
    expectFrames({{"D", 70000, 1, ":010391700001FA"},
                  {"M", 65536, 1, ":0102AA00001043"},
                  {"D", INT_MAX, INT_MAX, ":01037FFF364701"},
                  {"M", INT_MAX, INT_MAX, ":0102A9F0002044"}});
}

TEST_F(ReadFrame, TheLastAddressOf32BitsHasItsAreasOwnBase)
{
    expectFrames({{"TV", INT_MAX, 1, ":010305FF0001F7"},
                  {"CV", INT_MAX, 1, ":01030DFF0001EF"},
                  {"CV2", INT_MAX, 1, ":01030DFF0001EF"},
                  {"S", INT_MAX, 1, ":0102FFF00010FE"},
                  {"T", INT_MAX, 1, ":010205F00010F8"},
                  {"C", INT_MAX, 1, ":01020DF00010F0"}});
}

TEST_F(ReadFrame, AreasOutsideTheTableAreFramedAsTheirStationAlone)
{
    for (const char *area : {"Q", "TV_bit", "SM", "d", ""}) {
        const FRAME_PRO frame = frameOf(variable(area, 5, 3));
        EXPECT_EQ(textOf(frame), ":01FF\r\n") << area;
        EXPECT_EQ(frame.var.count, 3);
        EXPECT_EQ(replyOf(area, 5, 3), std::make_pair(0, 11)) << area;
    }
}

TEST_F(ReadFrame, CarriesTheWholeRequest)
{
    VARIABLE var = variable("M", 40, 2);
    var.reqTag = 77;
    var.station = 3;
    var.data[0] = 0x5A;
    var.data[1023] = 0xA5;
    const FRAME_PRO frame = frameOf(var);
    EXPECT_EQ(frame.var.reqTag, 77);
    EXPECT_EQ(targetOf(frame.var), "3#M:40x2");
    EXPECT_EQ(frame.var.data[0], 0x5A);
    EXPECT_EQ(frame.var.data[1023], 0xA5);
}

// Read requests: where each area lies, how much is read, what reply is expected.
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

    static std::string read(const char *area, qint32 address, qint32 count)
    {
        return textOf(frameOf(variable(area, address, count)));
    }

    static std::string readFrom(qint32 station)
    {
        VARIABLE var = variable("D", 0, 1);
        var.station = station;
        return textOf(frameOf(var));
    }
};

} // namespace

TEST_F(ReadFrame, OneWordOfD)
{
    const FRAME_PRO frame = frameOf(variable("D", 0, 1));
    EXPECT_EQ(textOf(frame), ":010310000001EB\r\n");
    EXPECT_EQ(frame.frameLen, 17);
    EXPECT_EQ(frame.replyDataLen, 4);
    EXPECT_EQ(frame.replyLen, 15);
    EXPECT_EQ(frame.replyDataPos, 7);
}

TEST_F(ReadFrame, IsAppendedBehindEarlierFrames)
{
    read("D", 0, 1);
    read("D", 1, 1);
    ASSERT_EQ(driver.frames.size(), 2);
    EXPECT_EQ(textOf(driver.frames.at(0)), ":010310000001EB\r\n");
    EXPECT_EQ(textOf(driver.frames.at(1)), ":010310010001EA\r\n");
}

TEST_F(ReadFrame, StationIsWrittenInTwoDecimalDigits)
{
    EXPECT_EQ(readFrom(0), ":000310000001EC\r\n");
    EXPECT_EQ(readFrom(7), ":070310000001E5\r\n");
    EXPECT_EQ(readFrom(12), ":120310000001DA\r\n");
    EXPECT_EQ(readFrom(99), ":99031000000153\r\n");
}

TEST_F(ReadFrame, StationKeepsItsLastTwoCharacters)
{
    EXPECT_EQ(readFrom(123), ":230310000001C9\r\n");
    EXPECT_EQ(readFrom(100), ":000310000001EC\r\n");
    EXPECT_EQ(readFrom(INT_MAX), ":470310000001A5\r\n");
}

TEST_F(ReadFrame, NegativeStationKeepsItsLastTwoCharacters)
{
    EXPECT_EQ(readFrom(-5), ":-50310000001F1\r\n");
    EXPECT_EQ(readFrom(-12), ":120310000001DA\r\n");
    EXPECT_EQ(readFrom(INT_MIN), ":480310000001A4\r\n");
}

TEST_F(ReadFrame, TvStartsAt0600)
{
    EXPECT_EQ(read("TV", 0, 1), ":010306000001F5\r\n");
    EXPECT_EQ(read("TV", 9999, 1), ":01032D0F0001BF\r\n");
}

TEST_F(ReadFrame, CvStartsAt0E00)
{
    EXPECT_EQ(read("CV", 0, 1), ":01030E000001ED\r\n");
    EXPECT_EQ(read("CV", 199, 1), ":01030EC7000126\r\n");
}

TEST_F(ReadFrame, Cv2StartsAt0E00)
{
    EXPECT_EQ(read("CV2", 200, 1), ":01030EC8000125\r\n");
    EXPECT_EQ(read("CV2", 255, 1), ":01030EFF0001EE\r\n");
}

TEST_F(ReadFrame, DStartsAt1000Below4096)
{
    EXPECT_EQ(read("D", 4095, 1), ":01031FFF0001DD\r\n");
}

TEST_F(ReadFrame, DStartsAt8000From4096On)
{
    EXPECT_EQ(read("D", 4096, 1), ":0103900000016B\r\n");
    EXPECT_EQ(read("D", 11999, 1), ":0103AEDF00016E\r\n");
}

TEST_F(ReadFrame, SStartsAt0000)
{
    EXPECT_EQ(read("S", 0, 1), ":010200000010ED\r\n");
    EXPECT_EQ(read("S", 9999, 1), ":010227000010C6\r\n");
}

TEST_F(ReadFrame, XStartsAt0400InOctal)
{
    EXPECT_EQ(read("X", 0, 1), ":010204000010E9\r\n");
    EXPECT_EQ(read("X", 17, 1), ":010204000010E9\r\n");
    EXPECT_EQ(read("X", 20, 1), ":010204100010D9\r\n");
    EXPECT_EQ(read("X", 23417, 1), ":01022B000010C2\r\n");
}

TEST_F(ReadFrame, YStartsAt0500InOctal)
{
    EXPECT_EQ(read("Y", 17, 1), ":010205000010E8\r\n");
    EXPECT_EQ(read("Y", 20, 1), ":010205100010D8\r\n");
}

TEST_F(ReadFrame, TStartsAt0600)
{
    EXPECT_EQ(read("T", 0, 1), ":010206000010E7\r\n");
    EXPECT_EQ(read("T", 9999, 1), ":01022D000010C0\r\n");
}

TEST_F(ReadFrame, MStartsAt0800Below1536)
{
    EXPECT_EQ(read("M", 0, 1), ":010208000010E5\r\n");
    EXPECT_EQ(read("M", 1535, 1), ":01020DF00010F0\r\n");
}

TEST_F(ReadFrame, MStartsAtAA00From1536On)
{
    EXPECT_EQ(read("M", 1536, 1), ":0102B00000103D\r\n");
    EXPECT_EQ(read("M", 9999, 1), ":0102D10000101C\r\n");
}

TEST_F(ReadFrame, CStartsAt0E00)
{
    EXPECT_EQ(read("C", 0, 1), ":01020E000010DF\r\n");
    EXPECT_EQ(read("C", 255, 1), ":01020EF00010EF\r\n");
}

TEST_F(ReadFrame, BitsStartAtAMultipleOf16)
{
    EXPECT_EQ(read("M", 15, 1), ":010208000010E5\r\n");
    EXPECT_EQ(read("M", 16, 1), ":010208100010D5\r\n");
    EXPECT_EQ(read("M", 31, 1), ":010208100010D5\r\n");
}

TEST_F(ReadFrame, OctalAddressWithAn8Or9ReadsAs0)
{
    EXPECT_EQ(read("X", 18, 1), ":010204000010E9\r\n");
    EXPECT_EQ(read("X", 28, 1), ":010204000010E9\r\n");
    EXPECT_EQ(read("Y", 920, 1), ":010205000010E8\r\n");
}

TEST_F(ReadFrame, NegativeOctalAddressReadsAs0)
{
    EXPECT_EQ(read("X", -20, 1), ":010204000010E9\r\n");
}

TEST_F(ReadFrame, WordCountIsWrittenInDecimalDigits)
{
    EXPECT_EQ(read("D", 0, 8), ":010310000008E4\r\n");
    EXPECT_EQ(read("D", 0, 12), ":010310000012DA\r\n");
    EXPECT_EQ(read("TV", 0, 16), ":010306000016E0\r\n");
    EXPECT_EQ(read("CV2", 200, 32), ":01030EC8001610\r\n");
}

TEST_F(ReadFrame, WordCountKeepsItsLastFourCharacters)
{
    EXPECT_EQ(read("D", 0, 12345), ":01031000234584\r\n");
    EXPECT_EQ(read("D", 0, 20000), ":010310000000EC\r\n");
}

TEST_F(ReadFrame, NegativeWordCountKeepsItsLastFourCharacters)
{
    EXPECT_EQ(read("D", 0, -1), ":0103100000-1ED\r\n");
    EXPECT_EQ(read("D", 0, -10), ":010310000-10DC\r\n");
    EXPECT_EQ(read("D", 0, -123), ":01031000-123CA\r\n");
    EXPECT_EQ(read("D", 0, -1234), ":010310001234A6\r\n");
}

TEST_F(ReadFrame, WordsExpectFourCharactersEach)
{
    const FRAME_PRO frame = frameOf(variable("TV", 0, 8));
    EXPECT_EQ(frame.replyDataLen, 32);
    EXPECT_EQ(frame.replyLen, 43);
    EXPECT_EQ(frame.replyDataPos, 7);
}

TEST_F(ReadFrame, CounterCountIsHalvedInFrameAndRequest)
{
    VARIABLE var = variable("CV2", 200, 4);
    getReadFrame(var);
    const FRAME_PRO &frame = driver.frames.at(0);
    EXPECT_EQ(textOf(frame), ":01030EC8000224\r\n");
    EXPECT_EQ(frame.replyDataLen, 16);
    EXPECT_EQ(frame.replyLen, 27);
    EXPECT_EQ(frame.var.count, 2);
    EXPECT_EQ(var.count, 2);
}

TEST_F(ReadFrame, CounterCountOf2And3BecomesOne)
{
    EXPECT_EQ(read("CV2", 200, 2), ":01030EC8000125\r\n");
    EXPECT_EQ(read("CV2", 200, 3), ":01030EC8000125\r\n");
}

TEST_F(ReadFrame, CounterCountOfOneStaysOne)
{
    const FRAME_PRO frame = frameOf(variable("CV2", 200, 1));
    EXPECT_EQ(frame.var.count, 1);
    EXPECT_EQ(frame.replyDataLen, 8);
    EXPECT_EQ(frame.replyLen, 19);
}

TEST_F(ReadFrame, CounterCountBelowOneIsNotHalved)
{
    EXPECT_EQ(read("CV2", 200, 0), ":01030EC8000026\r\n");
    EXPECT_EQ(read("CV2", 200, -4), ":01030EC800-42A\r\n");
}

TEST_F(ReadFrame, OtherWordCountsStayAsTheyAre)
{
    EXPECT_EQ(frameOf(variable("D", 0, 4)).var.count, 4);
    EXPECT_EQ(frameOf(variable("CV", 0, 4)).var.count, 4);
}

TEST_F(ReadFrame, SingleBitReads16Bits)
{
    const FRAME_PRO frame = frameOf(variable("M", 15, 1));
    EXPECT_EQ(textOf(frame), ":010208000010E5\r\n");
    EXPECT_EQ(frame.replyDataLen, 4);
    EXPECT_EQ(frame.replyLen, 15);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(frame.var.count, 1);
}

TEST_F(ReadFrame, BitsUpToThe15thOfTheirBlockRead16Bits)
{
    EXPECT_EQ(read("M", 0, 15), ":010208000010E5\r\n");
    EXPECT_EQ(read("M", 13, 2), ":010208000010E5\r\n");
}

TEST_F(ReadFrame, BitsThatReachThe16thOfTheirBlockRead32Bits)
{
    const FRAME_PRO frame = frameOf(variable("M", 0, 16));
    EXPECT_EQ(textOf(frame), ":010208000020D5\r\n");
    EXPECT_EQ(frame.replyDataLen, 8);
    EXPECT_EQ(frame.replyLen, 19);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(read("M", 14, 2), ":010208000020D5\r\n");
    EXPECT_EQ(read("S", 30, 2), ":010200100020CD\r\n");
}

TEST_F(ReadFrame, OctalBitsAreMeasuredFromTheirLinearAddress)
{
    const FRAME_PRO frame = frameOf(variable("X", 17, 2));
    EXPECT_EQ(textOf(frame), ":010204000020D9\r\n");
    EXPECT_EQ(frame.replyDataLen, 8);
    EXPECT_EQ(read("X", 15, 2), ":010204000010E9\r\n");
    EXPECT_EQ(read("Y", 16, 2), ":010205000020D8\r\n");
}

TEST_F(ReadFrame, LongBitRunReads32Bits)
{
    EXPECT_EQ(read("M", 0, 64), ":010208000020D5\r\n");
}

TEST_F(ReadFrame, BitCountBelowOneReads16Bits)
{
    EXPECT_EQ(read("M", 15, 0), ":010208000010E5\r\n");
    EXPECT_EQ(read("M", 15, -1), ":010208000010E5\r\n");
}

TEST_F(ReadFrame, RemainderOfANegativeBitAddressIsNegative)
{
    EXPECT_EQ(read("M", -1, 16), ":010208000010E5\r\n");
    EXPECT_EQ(read("M", -1, 17), ":010208000020D5\r\n");
}

TEST_F(ReadFrame, NegativeAddressIsCutFromItsTwosComplement)
{
    EXPECT_EQ(read("TV", -1, 1), ":010305FF0001F7\r\n");
    EXPECT_EQ(read("D", -4097, 1), ":0103FFFF0001FD\r\n");
    EXPECT_EQ(read("S", -15, 1), ":010200000010ED\r\n");
    EXPECT_EQ(read("S", -16, 1), ":0102FFF00010FE\r\n");
}

TEST_F(ReadFrame, AddressBeyondFourDigitsLosesItsHighDigits)
{
    EXPECT_EQ(read("D", 70000, 1), ":010391700001FA\r\n");
    EXPECT_EQ(read("M", 65536, 1), ":0102AA00001043\r\n");
}

TEST_F(ReadFrame, HighestNumbersAreCutToTheirFields)
{
    EXPECT_EQ(read("D", INT_MAX, INT_MAX), ":01037FFF364701\r\n");
    EXPECT_EQ(read("M", INT_MAX, INT_MAX), ":0102A9F0002044\r\n");
}

TEST_F(ReadFrame, UnknownAreaIsFramedAsItsStationAlone)
{
    const FRAME_PRO frame = frameOf(variable("Q", 5, 3));
    EXPECT_EQ(textOf(frame), ":01FF\r\n");
    EXPECT_EQ(frame.frameLen, 7);
    EXPECT_EQ(frame.replyDataLen, 0);
    EXPECT_EQ(frame.replyLen, 11);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(frame.var.count, 3);
}

TEST_F(ReadFrame, TvBitIsFramedAsItsStationAlone)
{
    const FRAME_PRO frame = frameOf(variable("TV_bit", 1, 2));
    EXPECT_EQ(textOf(frame), ":01FF\r\n");
    EXPECT_EQ(frame.replyDataLen, 0);
    EXPECT_EQ(frame.replyLen, 11);
}

TEST_F(ReadFrame, AreasOutsideTheTableAreFramedAsTheirStationAlone)
{
    EXPECT_EQ(read("SM", 0, 1), ":01FF\r\n");
    EXPECT_EQ(read("d", 0, 1), ":01FF\r\n");
    EXPECT_EQ(read("", 0, 1), ":01FF\r\n");
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
    EXPECT_EQ(frame.var.station, 3);
    EXPECT_EQ(frame.var.area, "M");
    EXPECT_EQ(frame.var.address, 40);
    EXPECT_EQ(frame.var.count, 2);
    EXPECT_EQ(frame.var.data[0], 0x5A);
    EXPECT_EQ(frame.var.data[1023], 0xA5);
}

TEST_F(ReadFrame, TheLastAddressOf32BitsHasItsAreasOwnBase)
{
    EXPECT_EQ(read("TV", INT_MAX, 1), ":010305FF0001F7\r\n");
    EXPECT_EQ(read("CV", INT_MAX, 1), ":01030DFF0001EF\r\n");
    EXPECT_EQ(read("CV2", INT_MAX, 1), ":01030DFF0001EF\r\n");
    EXPECT_EQ(read("S", INT_MAX, 1), ":0102FFF00010FE\r\n");
    EXPECT_EQ(read("T", INT_MAX, 1), ":010205F00010F8\r\n");
    EXPECT_EQ(read("C", INT_MAX, 1), ":01020DF00010F0\r\n");
}

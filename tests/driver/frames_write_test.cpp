// Write requests: words, counters and single bits.
#include "driver/frames.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class WriteFrame : public DriverTest {
protected:
    static FRAME_PRO frameOf(const VARIABLE &var)
    {
        getWriteFrame(var);
        return driver.frames.last();
    }

    static VARIABLE words(const char *area, qint32 address, const std::vector<int> &values)
    {
        VARIABLE var = variable(area, address, static_cast<qint32>(values.size()));
        for (size_t i = 0; i < values.size(); ++i) {
            var.data[2 * i] = static_cast<quint8>(values[i] >> 8);
            var.data[2 * i + 1] = static_cast<quint8>(values[i] & 0xFF);
        }
        return var;
    }

    static std::string write(const char *area, qint32 address, const std::vector<int> &values)
    {
        return textOf(frameOf(words(area, address, values)));
    }

    struct BitRow {
        const char *area;
        qint32 address;
        quint8 value;
        const char *text; // without CR LF
    };

    template <size_t SIZE> static void expectBitFrames(const BitRow (&rows)[SIZE])
    {
        for (const BitRow &row : rows) {
            VARIABLE var = variable(row.area, row.address, 1);
            var.data[0] = row.value;
            EXPECT_EQ(textOf(frameOf(var)), std::string(row.text) + "\r\n")
                << row.area << row.address << " = " << int(row.value);
        }
    }
};

} // namespace

TEST_F(WriteFrame, OfWordsHasTheirValuesHighByteFirst)
{
    const FRAME_PRO frame = frameOf(words("D", 10, {0x1234, 0x5678}));
    EXPECT_EQ(textOf(frame), ":0110100A00020412345678BB\r\n");
    EXPECT_EQ(frame.frameLen, 27);
    EXPECT_EQ(frame.replyLen, 21);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(frame.replyDataLen, 4);
}

TEST_F(WriteFrame, WordAreasHaveTheirBases)
{
    EXPECT_EQ(write("TV", 0, {0xABCD}), ":01100600000102ABCD6E\r\n");
    EXPECT_EQ(write("TV", 9999, {0xABCD}), ":01102D0F000102ABCD38\r\n");
    EXPECT_EQ(write("CV", 199, {0x0001}), ":01100EC7000102000116\r\n");
    EXPECT_EQ(write("D", 4095, {0xFFFF}), ":01101FFF000102FFFFD0\r\n");
    EXPECT_EQ(write("D", 4096, {0xFFFF}), ":01109000000102FFFF5E\r\n");
    EXPECT_EQ(write("CV2", 255, {0x0001, 0x0002}), ":01100EFF00010400020001DA\r\n");
}

// For several counters only the last and the first word are sent.
TEST_F(WriteFrame, CounterGoesOutHighWordFirst)
{
    EXPECT_EQ(write("CV2", 200, {0x1234}), ":01100EC80000021234D1\r\n");
    EXPECT_EQ(write("CV2", 200, {0x1234, 0x5678}), ":01100EC80001045678123400\r\n");
    EXPECT_EQ(write("CV2", 200, {0xAAAA, 0xBBBB, 0xCCCC}), ":01100EC8000106CCCCAAAA26\r\n");
    EXPECT_EQ(write("CV2", 200, {0xAAAA, 0xBBBB, 0xCCCC, 0xDDDD}), ":01100EC8000208DDDDAAAA01\r\n");
}

TEST_F(WriteFrame, CountsAreWrittenInHexadecimalDigits)
{
    EXPECT_EQ(write("D", 0, std::vector<int>(12, 0x00FF)),
              ":01101000000C1800FF00FF00FF00FF00FF00FF00FF00FF00FF00FF00FF00FFC7\r\n");
    const std::string text = write("D", 0, std::vector<int>(128, 0));
    EXPECT_EQ(text.substr(0, 19), ":011010000080000000"); // 256 bytes keep two digits
}

TEST_F(WriteFrame, CountBelowOneCarriesNoValues)
{
    EXPECT_EQ(write("D", 0, {}), ":01101000000000DF\r\n");
    EXPECT_EQ(write("CV2", 200, {}), ":01100EC800000019\r\n");
    EXPECT_EQ(textOf(frameOf(variable("D", 0, -1))), ":01101000FFFFFEE3\r\n");
    EXPECT_EQ(textOf(frameOf(variable("CV2", 200, -4))), ":01100EC8FFFEF824\r\n");
}

TEST_F(WriteFrame, LongestWordWriteHas251Words)
{
    const FRAME_PRO longest = frameOf(words("D", 0, std::vector<int>(251, 0)));
    EXPECT_EQ(longest.frameLen, 1023);
    EXPECT_EQ(textOf(longest).substr(0, 15), ":0110100000FBF6");
    EXPECT_EQ(textOf(longest).substr(1015), "0000EE\r\n");
    const FRAME_PRO next = frameOf(words("D", 0, {1}));
    EXPECT_EQ(textOf(next), ":011010000001020001DB\r\n");
    EXPECT_EQ(std::string(next.frame + 23, 1001), std::string(1001, '\0')); // nothing is left
    const FRAME_PRO tooLong = frameOf(words("D", 0, std::vector<int>(252, 0x1234)));
    EXPECT_EQ(tooLong.frameLen, 0);
    EXPECT_EQ(tooLong.replyLen, 1021);
    EXPECT_EQ(tooLong.var.count, 252);
}

TEST_F(WriteFrame, CountBeyondTheDataReadsNothingBehindIt)
{
    EXPECT_EQ(frameOf(variable("D", 0, 513)).frameLen, 0);
    EXPECT_EQ(frameOf(variable("D", 0, INT_MAX)).frameLen, 0);
    VARIABLE var = words("CV2", 200, {0x1234});
    var.data[1022] = 0xAB;
    var.data[1023] = 0xCD;
    var.count = 512;
    EXPECT_EQ(textOf(frameOf(var)), ":01100EC8010000ABCD12345A\r\n");
    var.count = 513;
    EXPECT_EQ(textOf(frameOf(var)), ":01100EC801000200001234D0\r\n");
}

TEST_F(WriteFrame, BitAreasHaveTheirBases)
{
    expectBitFrames({{"S", 0, 1, ":01050000FF00FB"},
                     {"S", 9999, 1, ":0105270FFF00C5"},
                     {"Y", 17, 0, ":0105050F0000E6"},
                     {"Y", 20, 1, ":01050510FF00E6"},
                     {"Y", 18, 1, ":01050500FF00F6"}, // 8 is not an octal digit
                     {"Y", -7, 1, ":01050500FF00F6"},
                     {"T", 255, 1, ":010506FFFF00F6"},
                     {"M", 17, 1, ":01050811FF00E2"},
                     {"M", 1535, 1, ":01050DFFFF00EF"},
                     {"M", 1536, 1, ":0105B000FF004B"},
                     {"C", 255, 1, ":01050EFFFF00EE"}});
}

TEST_F(WriteFrame, OnlyOneSetsABit)
{
    expectBitFrames({{"M", 0, 0, ":010508000000F2"},
                     {"M", 0, 2, ":010508000000F2"},
                     {"M", 0, 255, ":010508000000F2"}});
}

TEST_F(WriteFrame, BitCountCountsInTheReplyLengthOnly)
{
    VARIABLE var = bitWrite(5);
    var.count = 3;
    const FRAME_PRO frame = frameOf(var);
    EXPECT_EQ(textOf(frame), ":01050805FF00EE\r\n");
    EXPECT_EQ(frame.replyLen, 25);
    EXPECT_EQ(frame.replyDataLen, 4);
}

TEST_F(WriteFrame, AddressIsCutToFourDigitsOfItsTwosComplement)
{
    expectBitFrames({{"S", -1, 1, ":0105FFFFFF00FD"}, {"M", INT_MAX, 1, ":0105A9FFFF0053"}});
    EXPECT_EQ(write("D", -4098, {0x0001}), ":0110FFFE0001020001EE\r\n");
    EXPECT_EQ(write("D", INT_MAX, {0x0001}), ":01107FFF00010200016D\r\n");
}

TEST_F(WriteFrame, InputsAndAreasOutsideTheTableAreFramedAsTheirStationAlone)
{
    expectBitFrames({{"TV_bit", 17, 1, ":01FF"},
                     {"SM", 0, 1, ":01FF"},
                     {"m", 0, 1, ":01FF"},
                     {"", 0, 1, ":01FF"}});
    const FRAME_PRO frame = frameOf(variable("X", 0, 1));
    EXPECT_EQ(textOf(frame), ":01FF\r\n");
    EXPECT_EQ(frame.replyLen, 17);
    EXPECT_EQ(frame.replyDataLen, 4);
    EXPECT_EQ(frame.replyDataPos, 7);
}

TEST_F(WriteFrame, CarriesTheWholeRequest)
{
    VARIABLE var = words("D", 200, {0x1234});
    var.reqTag = -3;
    var.station = 312;
    var.data[1023] = 0xA5;
    const FRAME_PRO frame = frameOf(var);
    EXPECT_EQ(textOf(frame).substr(0, 3), ":12"); // the last two digits of the station
    EXPECT_EQ(frame.replyLen, 17);
    EXPECT_EQ(frame.var.reqTag, -3);
    EXPECT_EQ(targetOf(frame.var), "312#D:200x1");
    EXPECT_EQ(frame.var.data[1023], 0xA5);
}

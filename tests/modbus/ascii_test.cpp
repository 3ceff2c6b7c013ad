// Modbus ASCII lines: the check, the characters, and their collection from a stream.
#include "modbus/ascii.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using modbus::LineFault;

QByteArray bytes(const char *hexDigits)
{
    return QByteArray::fromHex(hexDigits);
}

LineFault faultOf(const QByteArray &line)
{
    return modbus::decodeLine(line).fault;
}

// A line of `digits` times '0' between ':' and CR LF; its LRC, 00, is right.
QByteArray zeros(int digits)
{
    return ':' + QByteArray(digits, '0') + "\r\n";
}

TEST(Lrc, IsTheTwosComplementOfTheSumOfUnsignedBytes)
{
    EXPECT_EQ(modbus::lrc(bytes("010300000001")), 0xFB);
    EXPECT_EQ(modbus::lrc(bytes("F00F01")), 0x00); // a sum of 256
    EXPECT_EQ(modbus::lrc(QByteArray()), 0x00);
    EXPECT_EQ(modbus::lrc(bytes("80")), 0x80);
    EXPECT_EQ(modbus::lrc(bytes("FFFFFF")), 0x03);
}

TEST(EncodeLine, WritesUpperCaseDigitsLrcAndLineEnd)
{
    EXPECT_EQ(modbus::encodeLine(bytes("01030ab000cd")), QByteArray(":01030AB000CD75\r\n"));
    EXPECT_EQ(modbus::encodeLine(bytes("120500000000")), QByteArray(":120500000000E9\r\n"));
    EXPECT_EQ(modbus::encodeLine(QByteArray()), QByteArray(":00\r\n"));
}

TEST(Bytes, AreReadWithTheHighOneFirst)
{
    const QByteArray message = bytes("01ff8003");
    EXPECT_EQ(modbus::byteAt(message, 1), 0xFF);
    EXPECT_EQ(modbus::wordAt(message, 1), 0xFF80);
    EXPECT_EQ(modbus::valueAt(message, 0, 4), 0x01FF8003U);
    EXPECT_EQ(modbus::valueAt(message, 0, 0), 0U);
    EXPECT_EQ(modbus::hex(0xAB, 4), "00AB");
    EXPECT_EQ(modbus::stationOf(":1203"), "12");
    EXPECT_EQ(modbus::stationOf(":"), "");
}

TEST(DecodeLine, GivesTheMessageWithoutLrc)
{
    const modbus::DecodedLine decoded = modbus::decodeLine(":010300000001FB\r\n");
    EXPECT_EQ(decoded.fault, LineFault::None);
    EXPECT_EQ(decoded.message, bytes("010300000001"));
    EXPECT_EQ(modbus::decodeLine(":01030ab000cd75\r\n").message, bytes("01030AB000CD"));
}

TEST(DecodeLine, TakesEveryByteValue)
{
    for (int value = 0; value < 256; ++value) {
        const QByteArray message = bytes("0103") + static_cast<char>(value);
        const modbus::DecodedLine decoded = modbus::decodeLine(modbus::encodeLine(message));
        EXPECT_EQ(decoded.fault, LineFault::None) << value;
        EXPECT_EQ(decoded.message, message) << value;
    }
}

TEST(DecodeLine, WithAWrongLrcHasNoMessage)
{
    const modbus::DecodedLine decoded = modbus::decodeLine(":010300000001FA\r\n");
    EXPECT_EQ(decoded.fault, LineFault::WrongLrc);
    EXPECT_TRUE(decoded.message.isEmpty());
}

TEST(DecodeLine, NoticesAnySingleWrongDigit)
{
    const QByteArray good(":010300000001FB\r\n");
    for (int position = 1; position < 15; ++position) {
        QByteArray bad = good;
        bad[position] = good.at(position) == '9' ? '8' : '9';
        EXPECT_EQ(faultOf(bad), LineFault::WrongLrc) << position;
    }
}

TEST(DecodeLine, NamesTheFirstFault)
{
    const std::pair<QByteArray, LineFault> ROWS[] = {
        {"", LineFault::NoStart},
        {"010300000001FB\r\n", LineFault::NoStart},
        {" :010300000001FB\r\n", LineFault::NoStart},
        {":010300000001FB", LineFault::NoLineEnd},
        {":010300000001FB\r", LineFault::NoLineEnd},
        {":010300000001FB\n", LineFault::NoLineEnd},
        {":010300000001FB\n\r", LineFault::NoLineEnd},
        {":", LineFault::NoLineEnd},
        {":\r\n", LineFault::TooShort},
        {":01FF\r\n", LineFault::TooShort},
        {":0103F\r\n", LineFault::TooShort},
        {":0103FC\r\n", LineFault::None},
        {":01030FC\r\n", LineFault::NotHex},
        {zeros(1020), LineFault::None}, // 1023 characters
        {zeros(1021), LineFault::NotHex},
        {zeros(1022), LineFault::TooLong},
    };
    for (const auto &[line, fault] : ROWS)
        EXPECT_EQ(faultOf(line), fault) << line.left(20).toStdString();
}

TEST(DecodeLine, WantsHexadecimalDigitsOnly)
{
    for (const char wrong : {'/', ':', '@', 'G', '`', 'g', ' ', '\r', '\n', '\0', '\xB0'}) {
        QByteArray line(":0103FC\r\n");
        line[4] = wrong;
        EXPECT_EQ(faultOf(line), LineFault::NotHex) << static_cast<int>(wrong);
    }
}

TEST(LineFaultText, SaysWhatIsWrong)
{
    EXPECT_STREQ(modbus::toText(LineFault::None), "no fault");
    EXPECT_STREQ(modbus::toText(LineFault::NoStart), "no ':' at the start");
    EXPECT_STREQ(modbus::toText(LineFault::NoLineEnd), "no CR LF at the end");
    EXPECT_STREQ(modbus::toText(LineFault::TooLong), "line too long");
    EXPECT_STREQ(modbus::toText(LineFault::NotHex), "not in pairs of hexadecimal digits");
    EXPECT_STREQ(modbus::toText(LineFault::TooShort), "too short");
    EXPECT_STREQ(modbus::toText(LineFault::WrongLrc), "wrong LRC");
}

class LineCollection : public testing::Test {
protected:
    modbus::LineCollector collector;
};

using Lines = QList<QByteArray>;

TEST_F(LineCollection, PutsALineTogetherFromSingleCharacters)
{
    const QByteArray line(":0103FC\r\n");
    for (int i = 0; i < line.size() - 1; ++i) {
        EXPECT_TRUE(collector.take(line.mid(i, 1)).isEmpty()) << i;
        EXPECT_EQ(collector.partial(), line.left(i + 1));
    }
    EXPECT_EQ(collector.take("\n"), Lines{line});
}

TEST_F(LineCollection, HandsOutTheLinesOfOneBufferAndKeepsTheBeginningOfTheNext)
{
    const Lines expected{":0103FC\r\n", ":0202FC\r\n"};
    EXPECT_EQ(collector.take(":0103FC\r\n:0202FC\r\n:02"), expected);
    EXPECT_EQ(collector.take("02FC\r\n"), Lines{":0202FC\r\n"});
    EXPECT_TRUE(collector.partial().isEmpty());
    EXPECT_TRUE(collector.take(QByteArray()).isEmpty());
}

TEST_F(LineCollection, StartsAnewAtAColonInTheMiddle)
{
    EXPECT_EQ(collector.take(":0103:0202FC\r\n"), Lines{":0202FC\r\n"});
    EXPECT_EQ(collector.take("::::0103FC\r\n"), Lines{":0103FC\r\n"});
}

TEST_F(LineCollection, StartsAnewAtAColonBetweenCarriageReturnAndLineFeed)
{
    EXPECT_TRUE(collector.take(":0103FC\r:\n").isEmpty());
    EXPECT_EQ(collector.partial(), QByteArray(":\n"));
}

TEST_F(LineCollection, DropsAndCountsWhatStandsBeforeALine)
{
    EXPECT_EQ(collector.take("ab\r\n:0103FC\r\nc"), Lines{":0103FC\r\n"});
    EXPECT_EQ(collector.dropped(), 5U);
    EXPECT_TRUE(collector.partial().isEmpty());
}

TEST_F(LineCollection, GoesOnOverALineFeedOrCarriageReturnAlone)
{
    EXPECT_TRUE(collector.take(":01\n03\rFC\n\r").isEmpty());
    EXPECT_EQ(collector.take("\n"), Lines{":01\n03\rFC\n\r\n"});
}

TEST_F(LineCollection, KeepsNulAndCharactersWithTheTopBit)
{
    const QByteArray line(":\0\xB0\xFF\r\n", 6);
    EXPECT_EQ(collector.take(line), Lines{line});
}

TEST_F(LineCollection, HandsOutTheLongestLineWhole)
{
    const QByteArray longest = zeros(1021); // 1024 characters
    EXPECT_EQ(collector.take(longest), Lines{longest});
    EXPECT_EQ(collector.dropped(), 0U);
}

TEST_F(LineCollection, CutsOffALineThatIsOneLonger)
{
    const Lines lines = collector.take(zeros(1022));
    EXPECT_EQ(lines, Lines{':' + QByteArray(1022, '0') + "\r\n"});
    EXPECT_EQ(faultOf(lines.first()), LineFault::TooLong);
}

TEST_F(LineCollection, DropsTheRestOfAnOverlongLine)
{
    EXPECT_EQ(collector.take(zeros(2000)), Lines{':' + QByteArray(1024, '0')});
    EXPECT_EQ(collector.dropped(), 978U); // 976 digits, CR and LF
    EXPECT_EQ(collector.take(":0103FC\r\n"), Lines{":0103FC\r\n"});
}

TEST_F(LineCollection, ForgetsTheLineInProgressWhenCleared)
{
    collector.take("x:0103");
    collector.clear();
    EXPECT_TRUE(collector.partial().isEmpty());
    EXPECT_EQ(collector.dropped(), 0U);
    EXPECT_TRUE(collector.take("FC\r\n").isEmpty());
}

} // namespace

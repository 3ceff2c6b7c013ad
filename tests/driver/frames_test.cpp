// The frame around a request text: LRC, line end, upper case.
#include "driver/frames.h"

#include "driver_fixture.h"

#include <cstring>

namespace {

std::string framed(const QString &text)
{
    FRAME_PRO frame;
    getFrame(frame, text);
    return textOf(frame);
}

std::string upperOf(const char *text)
{
    char upper[32];
    memset(upper, '#', sizeof upper);
    uppers(upper, text);
    return upper;
}

QString inUpperCase(QString text)
{
    sToS(text);
    return text;
}

} // namespace

TEST(FrameText, IsFollowedByLrcAndLineEnd)
{
    FRAME_PRO frame;
    getFrame(frame, ":010300000001");
    EXPECT_EQ(frame.frameLen, 17);
    EXPECT_EQ(textOf(frame), ":010300000001FB\r\n");
}

TEST(FrameText, SumOfAMultipleOf256HasLrc00)
{
    EXPECT_EQ(framed(":01FF"), ":01FF00\r\n");
    EXPECT_EQ(framed(":01FFFF01"), ":01FFFF0100\r\n");
}

TEST(FrameText, SumOfZeroHasLrc00)
{
    EXPECT_EQ(framed(":0000"), ":000000\r\n");
}

TEST(FrameText, OnlyTheLowByteOfTheSumCounts)
{
    EXPECT_EQ(framed(":FFFFFF"), ":FFFFFF03\r\n");
    EXPECT_EQ(framed(":FFFF"), ":FFFF02\r\n");
}

TEST(FrameText, LrcIsWrittenInTwoUpperCaseDigits)
{
    EXPECT_EQ(framed(":5555"), ":555556\r\n");
    EXPECT_EQ(framed(":FE"), ":FE02\r\n");
    EXPECT_EQ(framed(":34"), ":34CC\r\n");
    EXPECT_EQ(framed(":45"), ":45BB\r\n");
    EXPECT_EQ(framed(":12"), ":12EE\r\n");
    EXPECT_EQ(framed(":60"), ":60A0\r\n");
    EXPECT_EQ(framed(":67"), ":6799\r\n");
}

TEST(FrameText, StationDigitsCountAsHexadecimalInTheLrc)
{
    EXPECT_EQ(framed(":120300000001"), ":120300000001EA\r\n");
}

TEST(FrameText, LowerCaseDigitsCountAndStayAsTheyAre)
{
    EXPECT_EQ(framed(":0a1f"), ":0a1fD7\r\n");
}

TEST(FrameText, LastSingleDigitCountsAsANumberOfItsOwn)
{
    EXPECT_EQ(framed(":0103F"), ":0103FED\r\n");
    EXPECT_EQ(framed(":7"), ":7F9\r\n");
}

TEST(FrameText, PairAddsWhatQtReadsInBase16)
{
    const std::pair<const char *, const char *> rows[] = {
        {":01G", "FF"},    {":01G103", "FC"}, {":011G03", "FC"}, {":01@@03", "FC"},
        {":01``03", "FC"}, {":01//03", "FC"}, {":01::03", "FC"}, {":01gg03", "FC"},
        {":01-503", "01"}, {":01-F03", "0B"}, {":01-g03", "FC"}, {":01--03", "FC"},
        {":015-03", "FC"}, {":01+503", "F7"}, {":015+03", "FC"}, {":01 503", "F7"},
        {":015 03", "F7"}, {":01  03", "FC"}, {":010x03", "FC"},
    };
    for (const auto &[text, lrc] : rows)
        EXPECT_EQ(framed(text), std::string(text) + lrc + "\r\n");
}

// Every pair of Latin-1 characters.
TEST(FrameText, PairThatQtRefusesAddsNothing)
{
    for (int code = 0; code < 0x10000; ++code) {
        const QString pair = QString(QChar(code >> 8)) + QChar(code & 0xFF);
        const int lrc = (0x100 - pair.toInt(nullptr, 16)) & 0xFF;
        const std::string text = framed(":" + pair);
        ASSERT_EQ(
            text.substr(3),
            QString::fromLatin1("%1\r\n").arg(lrc, 2, 16, QLatin1Char('0')).toUpper().toStdString())
            << code;
    }
}

TEST(FrameText, ColonAloneHasLrc00)
{
    EXPECT_EQ(framed(":"), ":00\r\n");
}

TEST(FrameText, EmptyTextChangesNothing)
{
    FRAME_PRO frame;
    frame.frame[0] = 'x';
    frame.frameLen = 9;
    getFrame(frame, "");
    EXPECT_EQ(frame.frameLen, 9);
    EXPECT_EQ(textOf(frame), std::string("x\0\0\0\0\0\0\0\0", 9));
}

TEST(FrameText, OtherFieldsStayAsTheyAre)
{
    FRAME_PRO frame;
    frame.replyLen = 2;
    frame.replyDataPos = 3;
    frame.replyDataLen = 4;
    frame.frameSpare = 5;
    frame.var.station = 6;
    getFrame(frame, ":0103");
    EXPECT_EQ(frame.replyLen, 2);
    EXPECT_EQ(frame.replyDataPos, 3);
    EXPECT_EQ(frame.replyDataLen, 4);
    EXPECT_EQ(frame.frameSpare, 5);
    EXPECT_EQ(frame.var.station, 6);
}

TEST(FrameText, NothingIsWrittenBehindTheLineEnd)
{
    FRAME_PRO frame;
    memset(frame.frame, '#', sizeof frame.frame);
    getFrame(frame, ":0103");
    EXPECT_EQ(std::string(frame.frame, 11), ":0103FC\r\n##");
}

TEST(FrameText, LowEightBitsOfACharacterGoOut)
{
    // U+0130 and U+0141 would be "0A" if their low bytes were taken for digits.
    const QString text = QString(":") + QChar(0x0130) + QChar(0x0141) + QChar(0x00E9) + "1";
    EXPECT_EQ(framed(text), ":0A\xE9"
                            "100\r\n");
}

TEST(FrameText, NulCharacterGoesOutLikeAnyOther)
{
    const QString text = QString(":01") + QChar(0) + "503";
    EXPECT_EQ(framed(text), std::string(":01\0"
                                        "503FC\r\n",
                                        11));
}

TEST(FrameText, TextOf1020CharactersFillsTheBuffer)
{
    FRAME_PRO frame;
    getFrame(frame, QString(":01") + QString(1017, '0'));
    EXPECT_EQ(frame.frameLen, 1024);
    EXPECT_EQ(textOf(frame).substr(1015), "00000FF\r\n");
}

TEST(FrameText, TextOf1021CharactersIsNotFramed)
{
    FRAME_PRO frame;
    frame.frameLen = 17;
    memset(frame.frame, '#', sizeof frame.frame);
    getFrame(frame, QString(":01") + QString(1018, '0'));
    EXPECT_EQ(frame.frameLen, 0);
    EXPECT_EQ(std::string(frame.frame, sizeof frame.frame), std::string(1024, '#'));
}

TEST(UpperCase, MapsOnlyAToZ)
{
    EXPECT_EQ(upperOf("0123456789abcdefg"), "0123456789ABCDEFG");
    EXPECT_EQ(upperOf("amz`{AMZ@[\t"), "AMZ`{AMZ@[\t");
}

TEST(UpperCase, KeepsBytesAbove127)
{
    EXPECT_EQ(upperOf("\xE0\xFF\xB5\x80z"), "\xE0\xFF\xB5\x80Z");
}

TEST(UpperCase, TerminatesTheCopy)
{
    char copy[4] = {'#', '#', '#', '#'};
    uppers(copy, "ab");
    EXPECT_EQ(std::string(copy, 4), std::string("AB\0#", 4));
}

TEST(UpperCase, EmptyTextGivesEmptyText)
{
    EXPECT_EQ(upperOf(""), "");
    EXPECT_EQ(inUpperCase(""), "");
}

TEST(UpperCase, TextIsReplacedByItsUpperCaseForm)
{
    EXPECT_EQ(inUpperCase("00ea60"), "00EA60");
}

TEST(UpperCase, AccentedLettersOfTextStay)
{
    EXPECT_EQ(inUpperCase(QString(QChar(0xE9)) + QChar(0xDF) + QChar(0xFF) + "a"),
              QString(QChar(0xE9)) + QChar(0xDF) + QChar(0xFF) + "A");
}

TEST(UpperCase, CharactersOutsideLatin1BecomeQuestionMarks)
{
    EXPECT_EQ(inUpperCase(QString("a") + QChar(0x0141) + "b"), "A?B");
}

TEST(UpperCase, TextEndsAtItsFirstNul)
{
    EXPECT_EQ(inUpperCase(QString("ab") + QChar(0) + "cd"), "AB");
}

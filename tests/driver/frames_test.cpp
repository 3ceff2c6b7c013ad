// The frame around a request text: LRC, line end, upper case.
#include "driver/frames.h"

#include "driver_fixture.h"

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

TEST(FrameText, IsFollowedByItsLrcInTwoUpperCaseDigitsAndTheLineEnd)
{
    const std::pair<const char *, const char *> rows[] = {
        {":", "00"},     {":0000", "00"},   {":01FF", "00"},         {":01FFFF01", "00"},
        {":FFFF", "02"}, {":FFFFFF", "03"}, {":5555", "56"},         {":FE", "02"},
        {":34", "CC"},   {":45", "BB"},     {":12", "EE"},           {":60", "A0"},
        {":67", "99"},   {":0a1f", "D7"},   {":010300000001", "FB"}, {":120300000001", "EA"}};
    for (const auto &[text, lrc] : rows)
        EXPECT_EQ(framed(text), std::string(text) + lrc + "\r\n");
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

TEST(FrameText, EveryPairOfLatin1CharactersAddsWhatQtReads)
{
    for (int code = 0; code < 0x10000; ++code) {
        const QString pair = QString(QChar(code >> 8)) + QChar(code & 0xFF);
        const int lrc = (0x100 - pair.toInt(nullptr, 16)) & 0xFF;
        const QString digits = QString("%1\r\n").arg(lrc, 2, 16, QLatin1Char('0')).toUpper();
        ASSERT_EQ(framed(":" + pair).substr(3), digits.toStdString()) << code;
    }
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

TEST(FrameText, WritesNothingBehindTheLineEndAndNoOtherField)
{
    FRAME_PRO frame;
    memset(frame.frame, '#', sizeof frame.frame);
    frame.replyLen = frame.replyDataPos = frame.replyDataLen = frame.frameSpare = 5;
    frame.var.station = 6;
    getFrame(frame, ":0103");
    EXPECT_EQ(frame.frameLen, 9);
    EXPECT_EQ(std::string(frame.frame, 11), ":0103FC\r\n##");
    for (const qint32 field :
         {frame.replyLen, frame.replyDataPos, frame.replyDataLen, frame.frameSpare})
        EXPECT_EQ(field, 5);
    EXPECT_EQ(frame.var.station, 6);
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
    EXPECT_EQ(framed(text), std::string(":01\0", 4) + "503FC\r\n");
}

TEST(FrameText, TextOf1020CharactersFillsTheBufferAndALongerOneIsNotFramed)
{
    FRAME_PRO frame;
    memset(frame.frame, '#', sizeof frame.frame);
    frame.frameLen = 17;
    getFrame(frame, QString(":01") + QString(1018, '0'));
    EXPECT_EQ(frame.frameLen, 0);
    EXPECT_EQ(std::string(frame.frame, sizeof frame.frame), std::string(1024, '#'));
    getFrame(frame, QString(":01") + QString(1017, '0'));
    EXPECT_EQ(frame.frameLen, 1024);
    EXPECT_EQ(textOf(frame).substr(1015), "00000FF\r\n");
}

TEST(UpperCase, MapsOnlyAToZ)
{
    EXPECT_EQ(upperOf("0123456789abcdefg"), "0123456789ABCDEFG");
    EXPECT_EQ(upperOf("amz`{AMZ@[\t"), "AMZ`{AMZ@[\t");
    EXPECT_EQ(upperOf("\xE0\xFF\xB5\x80z"), "\xE0\xFF\xB5\x80Z");
    EXPECT_EQ(upperOf(""), "");
}

TEST(UpperCase, TerminatesTheCopy)
{
    char copy[4] = {'#', '#', '#', '#'};
    uppers(copy, "ab");
    EXPECT_EQ(std::string(copy, 4), std::string("AB\0#", 4));
}

TEST(UpperCase, OfATextLeavesAccentsAndReplacesWhatLatin1Lacks)
{
    EXPECT_EQ(inUpperCase(""), "");
    EXPECT_EQ(inUpperCase("00ea60"), "00EA60");
    EXPECT_EQ(inUpperCase(QString(QChar(0xE9)) + QChar(0xDF) + QChar(0xFF) + "a"),
              QString(QChar(0xE9)) + QChar(0xDF) + QChar(0xFF) + "A");
    EXPECT_EQ(inUpperCase(QString("a") + QChar(0x0141) + "b"), "A?B");
    EXPECT_EQ(inUpperCase(QString("ab") + QChar(0) + "cd"), "AB"); // up to the first NUL
}

#include "host/line/frame_text.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

QString meaning(const QByteArray &line, const QByteArray &request = QByteArray())
{
    return toText(explainLine(line, request));
}

} // namespace

TEST(FrameText, LinesAreExplainedByThemselves)
{
    static const char *const ROWS[][2] = {
        {":01031064000880", "station 01: read D100 to D107"},
        {":010204000010E9", "station 01: read X0 to X17"},
        {":0103900000016B", "station 01: read D4096"},
        {":0102B00000103D", "station 01: read M1536 to M1551"},
        {":01031FFA0008DB", "station 01: read D4090 and on"},
        {":0103FFF000010C", "station 01: read 1 register from FFF0"},
        {":01030400FA0001FD", "station 01 answers 250 1"},
        {":010202210AD0", "station 01 answers on: bit 0, bit 5, bit 9, bit 11"},
        {":010301AA51", "station 01 answers no value"},
        {":01100EC80001040001117092", "station 01: write CV2200: 70000"},
        {":011010640002041234567861", "station 01: write D100 to D101: 4660 22136"},
        {":01101064000279", "station 01 has written D100 to D101"},
        {":011010640001007A", "station 01: write D100: no value"},
        {":0105B000FF004B", "station 01: write M1536: on"},
        {":0105050F0000E6", "station 01: write Y17: off"},
        {":0105050F0001E5", "station 01: write Y17: 0001, neither on nor off"},
        {":00050800FF00F4", "all stations: write M0: on"},
        {":0183027A", "station 01 refuses: illegal data address (exception 02)"},
        {":01031064000881", "station 01: read D100 to D107 [LRC 81 wrong, 80 would be right]"},
        {":01030800000001F3",
         "station 01 answers 0 1 [it announces 8 bytes of values and carries 4]"},
        {":0110106400010300FA7D",
         "station 01: write D100: 250 [it announces 3 bytes of values and carries 2]"},
        {"0103", "no ':' at the start"},
        {":010390000001 6B", "not in pairs of hexadecimal digits"},
        {":0103FC", "2 bytes do not fit a frame of this function"},
        {":01837C", "2 bytes do not fit a frame of this function"},
        {":01050800FFF3", "5 bytes do not fit a frame of this function"},
        {":01101064007B", "5 bytes do not fit a frame of this function"},
        {":010610000001E8", "a function that is not used on this line"},
    };
    for (const auto &[line, words] : ROWS)
        EXPECT_EQ(meaning(QByteArray(line) + "\r\n").toStdString(), words);
    EXPECT_EQ(meaning(":0103"), "no CR LF at the end");
}

TEST(FrameText, AnswerBehindItsRequestNamesTheElements)
{
    static const char *const ROWS[][3] = {
        {":01031064000286", ":01030400FA0001FD", "station 01 answers D100 to D101: 250 1"},
        {":010204000010E9", ":010202210AD0", "station 01 answers X0 to X17: on: X0, X5, X11, X13"},
        {":010204000010E9", ":0102020000FB", "station 01 answers X0 to X17: all off"},
        {":01030EC8000125", ":0103040001117076", "station 01 answers CV2200: 70000"},
        {":02031064000285", ":01030400FA0001FD", "station 01 answers 250 1"}, // another's request
    };
    for (const auto &[request, answer, words] : ROWS) {
        EXPECT_EQ(meaning(QByteArray(answer) + "\r\n", QByteArray(request) + "\r\n").toStdString(),
                  words);
    }
}

TEST(FrameText, PartsOfAFrameAreNamed)
{
    const FrameText read = explainLine(":01031064000880\r\n");
    EXPECT_EQ(read.kind, FrameKind::Request);
    EXPECT_EQ(read.function, "03 read holding registers");
    EXPECT_EQ(read.addressRange, "8 registers from 1064");
    EXPECT_EQ(read.aliases, QStringList{"TV2660 to TV2667"});
    EXPECT_EQ(read.lrc, "80 right");
    EXPECT_TRUE(read.isGood);
    const FrameText wrong = explainLine(":01031064000881\r\n");
    EXPECT_FALSE(wrong.isGood);
    EXPECT_EQ(wrong.lrc, "81 wrong, 80 would be right");
    const FrameText refusal = explainLine(":0183027A\r\n");
    EXPECT_EQ(refusal.kind, FrameKind::Refusal);
    EXPECT_EQ(refusal.function, "03 read holding registers");
    EXPECT_EQ(explainLine(":0105B000FF004B\r\n").kind, FrameKind::RequestOrAnswer);
}

TEST(FrameText, TypedLineGetsItsEnd)
{
    EXPECT_EQ(lineFromText(" :0183027A "), ":0183027A\r\n");
    EXPECT_EQ(lineFromText(":0183027A\\r\\n"), ":0183027A\r\n");
}

TEST(FrameText, InvisibleCharactersAreSpelledOut)
{
    EXPECT_EQ(visible(QByteArray(":01\xB1\x00\r\n", 7)), ":01\\xB1\\x00\\r\\n");
}

} // namespace kmr

#include "host/line/frame_text.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

QString meaning(const QByteArray &line, const QByteArray &request = QByteArray())
{
    return toText(explainLine(line, request));
}

} // namespace

TEST(FrameText, ReadRequestNamesItsElements)
{
    EXPECT_EQ(meaning(":01031064000880\r\n"), "station 01: read D100 to D107");
    EXPECT_EQ(meaning(":010204000010E9\r\n"), "station 01: read X0 to X17");
    EXPECT_EQ(meaning(":010390000001 6B\r\n"), "not in pairs of hexadecimal digits");
    EXPECT_EQ(meaning(":0103900000016B\r\n"), "station 01: read D4096");
    EXPECT_EQ(meaning(":0102B00000103D\r\n"), "station 01: read M1536 to M1551");
}

TEST(FrameText, RequestBeyondItsAreaSaysSo)
{
    EXPECT_EQ(meaning(":01031FFA0008DB\r\n"), "station 01: read D4090 and on");
}

TEST(FrameText, OverlappingAreasAreAllNamed)
{
    const FrameText text = explainLine(":01031064000880\r\n");
    EXPECT_EQ(text.function, "03 read holding registers");
    EXPECT_EQ(text.addressRange, "8 registers from 1064");
    EXPECT_EQ(text.aliases, QStringList{"TV2660 to TV2667"});
    EXPECT_EQ(text.lrc, "80 right");
    EXPECT_TRUE(text.isGood);
}

TEST(FrameText, AnswerAloneHasValuesButNoElements)
{
    EXPECT_EQ(meaning(":01030400FA0001FD\r\n"), "station 01 answers 250 1");
}

TEST(FrameText, AnswerBehindItsRequestNamesTheElements)
{
    EXPECT_EQ(meaning(":01030400FA0001FD\r\n", ":01031064000286\r\n"),
              "station 01 answers D100 to D101: 250 1");
    EXPECT_EQ(meaning(":010202210AD0\r\n", ":010204000010E9\r\n"),
              "station 01 answers X0 to X17: on: X0, X5, X11, X13");
    EXPECT_EQ(meaning(":0102020000FB\r\n", ":010204000010E9\r\n"),
              "station 01 answers X0 to X17: all off");
}

TEST(FrameText, RequestOfAnotherStationExplainsNothing)
{
    EXPECT_EQ(meaning(":01030400FA0001FD\r\n", ":02031064000285\r\n"), "station 01 answers 250 1");
}

TEST(FrameText, CountersHaveFourBytes)
{
    EXPECT_EQ(meaning(":0103040001117076\r\n", ":01030EC8000125\r\n"),
              "station 01 answers CV2200: 70000");
    EXPECT_EQ(meaning(":01100EC80001040001117092\r\n"), "station 01: write CV2200: 70000");
}

TEST(FrameText, WriteOfWordsAndItsAnswer)
{
    EXPECT_EQ(meaning(":011010640002041234567861\r\n"),
              "station 01: write D100 to D101: 4660 22136");
    EXPECT_EQ(meaning(":01101064000279\r\n"), "station 01 has written D100 to D101");
}

TEST(FrameText, WriteOfABitEqualsItsAnswer)
{
    const FrameText on = explainLine(":0105B000FF004B\r\n");
    EXPECT_EQ(on.kind, FrameKind::RequestOrAnswer);
    EXPECT_EQ(toText(on), "station 01: write M1536: on");
    EXPECT_EQ(meaning(":0105050F0000E6\r\n"), "station 01: write Y17: off");
    EXPECT_EQ(meaning(":0105050F0001E5\r\n"),
              "station 01: write Y17: 0001, which is neither on nor off");
}

TEST(FrameText, RefusalSaysWhy)
{
    const FrameText text = explainLine(":0183027A\r\n");
    EXPECT_EQ(text.kind, FrameKind::Refusal);
    EXPECT_EQ(text.function, "03 read holding registers");
    EXPECT_EQ(toText(text), "station 01 refuses: illegal data address (exception 02)");
}

TEST(FrameText, WrongLrcIsNamedWithTheRightOne)
{
    const FrameText text = explainLine(":01031064000881\r\n");
    EXPECT_FALSE(text.isGood);
    EXPECT_EQ(text.lrc, "81 wrong, 80 would be right");
    EXPECT_EQ(toText(text), "station 01: read D100 to D107 [LRC 81 wrong, 80 would be right]");
}

TEST(FrameText, LinesThatAreNoFramesSayWhy)
{
    EXPECT_EQ(meaning("0103\r\n"), "no ':' at the start");
    EXPECT_EQ(meaning(":0103"), "no CR LF at the end");
    EXPECT_EQ(meaning(":0103FC\r\n"), "2 bytes fit no frame of this function");
    EXPECT_EQ(meaning(":010610000001E8\r\n"), "a function that is not used on this line");
    EXPECT_EQ(meaning(":01030800000001F3\r\n"),
              "station 01 answers 0 1 [it announces 8 bytes of values and carries 4]");
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

TEST(FrameText, BitsWithoutTheirRequestAreCounted)
{
    EXPECT_EQ(meaning(":010202210AD0\r\n"), "station 01 answers on: bit 0, bit 5, bit 9, bit 11");
}

TEST(FrameText, AddressThatNoAreaHasIsToldAsItIs)
{
    EXPECT_EQ(meaning(":0103FFF000010C\r\n"), "station 01: read 1 register from FFF0");
}

TEST(FrameText, StationZeroIsAllStations)
{
    EXPECT_EQ(meaning(":00050800FF00F4\r\n"), "all stations: write M0: on");
}

TEST(FrameText, WriteThatAnnouncesOtherBytesThanItCarriesSaysSo)
{
    EXPECT_EQ(meaning(":0110106400010300FA7D\r\n"),
              "station 01: write D100: 250 [it announces 3 bytes of values and carries 2]");
}

TEST(FrameText, FramesWithoutAWholeValueSayWhatTheyAre)
{
    EXPECT_EQ(meaning(":010301AA51\r\n"), "station 01 answers no value");
    EXPECT_EQ(meaning(":011010640001007A\r\n"), "station 01: write D100: no value");
}

TEST(FrameText, FramesOfTheWrongLengthSayIt)
{
    EXPECT_EQ(meaning(":01837C\r\n"), "2 bytes fit no frame of this function");
    EXPECT_EQ(meaning(":01050800FFF3\r\n"), "5 bytes fit no frame of this function");
    EXPECT_EQ(meaning(":01101064007B\r\n"), "5 bytes fit no frame of this function");
}

} // namespace kmr

// Which lines the controller answers at all: start, LRC, station, function.
#include "simulator/controller.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using simulator::Controller;
using simulator::isStation;
using simulator::Memory;

const char *const SILENCE = "";

class ControllerOfStation01 : public testing::Test {
protected:
    std::string answerTo(const QByteArray &line)
    {
        return controller.answer(line).toStdString();
    }

    Controller controller{"01"};
};

TEST_F(ControllerOfStation01, AnswersItsOwnStation)
{
    EXPECT_EQ(answerTo(":010310000001EB\r\n"), ":0103020000FA\r\n");
}

TEST_F(ControllerOfStation01, GivesTheSameAnswerAgain)
{
    const std::string first = answerTo(":010310000001EB\r\n");
    EXPECT_EQ(answerTo(":010310000001EB\r\n"), first);
}

TEST_F(ControllerOfStation01, IsSilentToALineWithoutColon)
{
    EXPECT_EQ(answerTo("010310000001EB\r\n"), SILENCE);
    EXPECT_EQ(answerTo(""), SILENCE);
}

TEST_F(ControllerOfStation01, IsSilentToALineWithoutItsEnd)
{
    EXPECT_EQ(answerTo(":010310000001EB"), SILENCE);
    EXPECT_EQ(answerTo(":010310000001EB\r"), SILENCE);
    EXPECT_EQ(answerTo(":010310000001EB\n"), SILENCE);
}

TEST_F(ControllerOfStation01, IsSilentToAWrongLrc)
{
    EXPECT_EQ(answerTo(":010310000001EC\r\n"), SILENCE);
}

TEST_F(ControllerOfStation01, ObeysNoWriteWithAWrongLrc)
{
    EXPECT_EQ(answerTo(":01050500FF00F7\r\n"), SILENCE);
    EXPECT_TRUE(controller.memory() == Memory());
}

TEST_F(ControllerOfStation01, IsSilentToCharactersThatAreNoDigits)
{
    EXPECT_EQ(answerTo(":0103100000G1EB\r\n"), SILENCE);
    EXPECT_EQ(answerTo(":01031000001EB\r\n"), SILENCE);
}

TEST_F(ControllerOfStation01, IsSilentToStationAndLrcAlone)
{
    EXPECT_EQ(answerTo(":01FF\r\n"), SILENCE);
}

TEST_F(ControllerOfStation01, IsSilentToAnOverlongLine)
{
    // Function 16 with a right LRC, 00, but more digits than a line holds.
    const QByteArray line = ":0110" + QByteArray(1014, '0') + "EF" + "00" + "\r\n";
    EXPECT_EQ(answerTo(line), SILENCE);
}

TEST_F(ControllerOfStation01, IsSilentToOtherStations)
{
    EXPECT_EQ(answerTo(":020310000001EA\r\n"), SILENCE);
    EXPECT_EQ(answerTo(":110310000001DB\r\n"), SILENCE);
}

TEST_F(ControllerOfStation01, ObeysNoWriteToAnotherStation)
{
    EXPECT_EQ(answerTo(":02050500FF00F5\r\n"), SILENCE);
    EXPECT_TRUE(controller.memory() == Memory());
}

TEST(Station, IsComparedAsTheTwoCharactersOnTheWire)
{
    Controller controller("12");
    EXPECT_EQ(controller.answer(":120310000001DA\r\n").toStdString(), ":1203020000E9\r\n");
    EXPECT_EQ(controller.answer(":0C0310000001E0\r\n").toStdString(), SILENCE); // 12 in hexadecimal
}

TEST(Station, MayHaveHexadecimalLetters)
{
    Controller controller("F7");
    EXPECT_EQ(controller.answer(":F70310000001F5\r\n").toStdString(), ":F70302000004\r\n");
}

TEST(Station, IsTwoUpperCaseDigitsFrom01ToF7)
{
    EXPECT_TRUE(isStation("01"));
    EXPECT_TRUE(isStation("12"));
    EXPECT_TRUE(isStation("99"));
    EXPECT_TRUE(isStation("F7"));
}

TEST(Station, IsNoBroadcastAndNoReservedNumber)
{
    EXPECT_FALSE(isStation("00"));
    EXPECT_FALSE(isStation("F8"));
    EXPECT_FALSE(isStation("FF"));
}

TEST(Station, IsNoOtherText)
{
    for (const char *text : {"", "1", "001", "123", "1a", "+1", "-1", " 1", "1 ", "G1", "0x1"})
        EXPECT_FALSE(isStation(text)) << text;
}

TEST_F(ControllerOfStation01, ObeysABroadcastBitWriteInSilence)
{
    EXPECT_EQ(answerTo(":00050500FF00F7\r\n"), SILENCE);
    EXPECT_TRUE(controller.memory().bit(0x0500));
}

TEST_F(ControllerOfStation01, ObeysABroadcastRegisterWriteInSilence)
{
    EXPECT_EQ(answerTo(":00101000000102123497\r\n"), SILENCE);
    EXPECT_EQ(controller.memory().value(0x1000), 0x1234U);
}

TEST_F(ControllerOfStation01, IsSilentToABroadcastThatItRefusesOrReads)
{
    EXPECT_EQ(answerTo(":0007F9\r\n"), SILENCE);
    EXPECT_EQ(answerTo(":000310000001EC\r\n"), SILENCE);
    EXPECT_EQ(answerTo(":00050500FF01F6\r\n"), SILENCE);
    EXPECT_TRUE(controller.memory() == Memory());
}

TEST_F(ControllerOfStation01, RefusesOtherFunctions)
{
    EXPECT_EQ(answerTo(":0100FF\r\n"), ":0180017E\r\n");
    EXPECT_EQ(answerTo(":010100000001FD\r\n"), ":0181017D\r\n");
    EXPECT_EQ(answerTo(":010400000001FA\r\n"), ":0184017A\r\n");
    EXPECT_EQ(answerTo(":010610000001E8\r\n"), ":01860178\r\n");
    EXPECT_EQ(answerTo(":010F000000010101ED\r\n"), ":018F016F\r\n");
    EXPECT_EQ(answerTo(":017F80\r\n"), ":01FF01FF\r\n");
}

TEST_F(ControllerOfStation01, RefusesAnswersOfItsOwnKind)
{
    EXPECT_EQ(answerTo(":0183027A\r\n"), ":0183017B\r\n");
}

TEST_F(ControllerOfStation01, RefusesItsFunctionsWithoutData)
{
    EXPECT_EQ(answerTo(":0102FD\r\n"), ":0182037A\r\n");
    EXPECT_EQ(answerTo(":0103FC\r\n"), ":01830379\r\n");
    EXPECT_EQ(answerTo(":0105FA\r\n"), ":01850377\r\n");
    EXPECT_EQ(answerTo(":0110EF\r\n"), ":0190036C\r\n");
}

} // namespace

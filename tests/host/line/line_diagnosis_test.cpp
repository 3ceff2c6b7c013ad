#include "host/line/line_diagnosis.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

const char *const REQUEST = ":010310000001EB\r\n";
const char *const ANSWER = ":0103020007F3\r\n";

Probe probe(const QByteArray &received, ReplyFault fault, int exceptionCode = 0)
{
    return {REQUEST, received, fault, exceptionCode};
}

Probe answered(const QByteArray &received)
{
    return probe(received, ReplyFault::None);
}

Diagnosis diagnoseOne(const QByteArray &received, ReplyFault fault)
{
    return diagnose({probe(received, fault)}, EchoMode::Auto);
}

} // namespace

TEST(LineDiagnosis, AnswersAreAGoodLine)
{
    const Diagnosis diagnosis = diagnose({answered(ANSWER), answered(ANSWER)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Good);
    EXPECT_EQ(diagnosis.text, "The station answers, the line is good.");
    EXPECT_EQ(diagnosis.advice, "");
}

TEST(LineDiagnosis, EchoInFrontOfAnswersIsNamed)
{
    const QByteArray received = QByteArray(REQUEST) + ANSWER;
    const Diagnosis diagnosis = diagnose({answered(received)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Good);
    EXPECT_TRUE(diagnosis.text.endsWith("It hands back what is sent (echo), which is left out."));
}

TEST(LineDiagnosis, EchoThatTheSettingDeniesIsWrong)
{
    const QByteArray received = QByteArray(REQUEST) + ANSWER;
    const Diagnosis diagnosis = diagnose({answered(received)}, EchoMode::Off);
    EXPECT_EQ(diagnosis.finding, Finding::WrongEcho);
    EXPECT_EQ(diagnosis.advice, "Set the echo to auto or on.");
}

TEST(LineDiagnosis, MissingEchoThatTheSettingDemandsIsWrong)
{
    const Diagnosis diagnosis = diagnose({answered(ANSWER)}, EchoMode::On);
    EXPECT_EQ(diagnosis.finding, Finding::WrongEcho);
    EXPECT_EQ(diagnosis.advice, "Set the echo to auto or off.");
}

TEST(LineDiagnosis, OneUnansweredRequestMakesTheLineUnsteady)
{
    const Diagnosis diagnosis = diagnose(
        {answered(ANSWER), probe({}, ReplyFault::Silence), answered(ANSWER)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Unsteady);
    EXPECT_EQ(diagnosis.text,
              "The station answers only 2 of 3 requests; the first failure: no answer.");
}

TEST(LineDiagnosis, RefusalIsToldWithItsReason)
{
    const Diagnosis diagnosis =
        diagnose({probe(":0183027A\r\n", ReplyFault::None, 2)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Refused);
    EXPECT_EQ(diagnosis.text, "The line is good, but what was asked is refused: illegal data "
                              "address (exception 02).");
    EXPECT_EQ(diagnosis.advice, "Name an element that this controller has.");
}

TEST(LineDiagnosis, RefusalOfAGatewayPointsBehindIt)
{
    const Diagnosis diagnosis =
        diagnose({probe(":01830B71\r\n", ReplyFault::None, 11)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Refused);
    EXPECT_TRUE(diagnosis.advice.startsWith("This is the gateway's answer"));
}

TEST(LineDiagnosis, AdviceForOtherRefusalsFollowsTheirReason)
{
    const auto advice = [](int code) {
        return diagnose({probe({}, ReplyFault::None, code)}, EchoMode::Auto).advice;
    };
    EXPECT_EQ(advice(6), "Ask again later.");
    EXPECT_TRUE(advice(10).startsWith("This is the gateway's answer"));
    EXPECT_EQ(advice(4), "Look at the controller's own diagnosis for the cause.");
}

TEST(LineDiagnosis, NoCharacterIsSilence)
{
    EXPECT_EQ(diagnoseOne({}, ReplyFault::Silence).finding, Finding::Silent);
}

TEST(LineDiagnosis, RequestAloneIsAnEchoWithoutAnswer)
{
    EXPECT_EQ(diagnoseOne(REQUEST, ReplyFault::Silence).finding, Finding::EchoOnly);
}

TEST(LineDiagnosis, EchoInFrontOfAnotherStationsAnswerIsNoOtherHost)
{
    const QByteArray received = QByteArray(REQUEST) + ":0203020007F2\r\n";
    const Diagnosis diagnosis = diagnoseOne(received, ReplyFault::WrongStation);
    EXPECT_EQ(diagnosis.finding, Finding::OtherStation);
    EXPECT_EQ(diagnosis.text, "Station 2 answers, though station 1 was asked.");
}

TEST(LineDiagnosis, LineOfAnotherStationNamesBoth)
{
    const Diagnosis diagnosis = diagnoseOne(":0203020007F2\r\n", ReplyFault::WrongStation);
    EXPECT_EQ(diagnosis.finding, Finding::OtherStation);
    EXPECT_EQ(diagnosis.text, "Station 2 answers, though station 1 was asked.");
    EXPECT_EQ(diagnosis.advice, "Ask station 2, or set the controller's station number to 1.");
}

TEST(LineDiagnosis, StationThatNoHostCanAskIsToBeRenumbered)
{
    const Diagnosis diagnosis = diagnoseOne(":0A03020007EA\r\n", ReplyFault::WrongStation);
    EXPECT_EQ(diagnosis.text, "Station 0A answers, though station 1 was asked.");
    EXPECT_EQ(diagnosis.advice,
              "No host can ask that one: set the controller's station number to 1.");
}

TEST(LineDiagnosis, RequestThatIsNotOursBetraysAnotherHost)
{
    const Diagnosis diagnosis = diagnoseOne(":020310000001EA\r\n", ReplyFault::WrongStation);
    EXPECT_EQ(diagnosis.finding, Finding::OtherHost);
    EXPECT_EQ(diagnosis.text, "Requests of another host come: station 02: read D0.");
}

TEST(LineDiagnosis, AnswerOfTheWrongLengthDoesNotFit)
{
    const Diagnosis diagnosis = diagnoseOne(":01030400070000F1\r\n", ReplyFault::WrongLength);
    EXPECT_EQ(diagnosis.finding, Finding::NoFit);
    EXPECT_TRUE(diagnosis.text.endsWith("station 01 answers 7 0."));
}

// Seven data bits and even parity, seen as eight data bits.
TEST(LineDiagnosis, EvenEighthBitAsksFor7E1)
{
    const QByteArray received(":0\xB1"
                              "030\xB2"
                              "000\xB7\xC6"
                              "3\x8D\n");
    const Diagnosis diagnosis = diagnoseOne(received, ReplyFault::Noise);
    EXPECT_EQ(diagnosis.finding, Finding::WrongParity);
    EXPECT_EQ(diagnosis.advice,
              "Set the frame format 7E1 for the link, or in the gateway's settings.");
}

TEST(LineDiagnosis, OddEighthBitAsksFor7O1)
{
    const QByteArray received("\xBA\xB0"
                              "1\xB0\xB3\xB0"
                              "2\xB0\xB0\xB0"
                              "7F\xB3\r\x8A");
    const Diagnosis diagnosis = diagnoseOne(received, ReplyFault::Noise);
    EXPECT_EQ(diagnosis.advice,
              "Set the frame format 7O1 for the link, or in the gateway's settings.");
}

TEST(LineDiagnosis, EighthBitThatIsAlwaysSetAsksFor7N2)
{
    const QByteArray received("\xBA\xB0\xB1\xB0\xB3\xB0\xB2\xB0\xB0\xB0\xB7\xC6\xB3\x8D\x8A");
    const Diagnosis diagnosis = diagnoseOne(received, ReplyFault::Noise);
    EXPECT_EQ(diagnosis.advice,
              "Set the frame format 7N2 for the link, or in the gateway's settings.");
}

TEST(LineDiagnosis, BadLineIsDamagedAndShown)
{
    const Diagnosis diagnosis = diagnoseOne(":0103020007F4\r\n", ReplyFault::WrongLrc);
    EXPECT_EQ(diagnosis.finding, Finding::Damaged);
    EXPECT_EQ(diagnosis.text, "Answers come, but damaged, such as :0103020007F4\\r\\n.");
}

TEST(LineDiagnosis, LostColonIsDamageAndNoWrongSpeed)
{
    EXPECT_EQ(diagnoseOne("0103020007F3\r\n", ReplyFault::Noise).finding, Finding::Damaged);
}

TEST(LineDiagnosis, OneCharacterInFourMayBeNoFramesOwn)
{
    EXPECT_EQ(diagnoseOne("01?\n", ReplyFault::Noise).finding, Finding::Damaged);
    EXPECT_EQ(diagnoseOne("0??\n", ReplyFault::Noise).finding, Finding::Garbled);
}

TEST(LineDiagnosis, LongGarbageIsCutOff)
{
    const Diagnosis diagnosis = diagnoseOne(QByteArray(61, '0'), ReplyFault::Noise);
    EXPECT_EQ(diagnosis.text, "Answers come, but damaged, such as "
                              "000000000000000000000000000000000000000000000000000000000000....");
}

TEST(LineDiagnosis, OtherCharactersPointToSpeedAndParity)
{
    const Diagnosis diagnosis = diagnoseOne("\xE0\x1C"
                                            "0",
                                            ReplyFault::Noise);
    EXPECT_EQ(diagnosis.finding, Finding::Garbled);
    EXPECT_EQ(diagnosis.text,
              "Characters come, but no answer: \\xE0\\x1C0. Speed or parity is wrong.");
}

TEST(LineDiagnosis, FindingsHaveNames)
{
    EXPECT_EQ(findingName(Finding::Good), "good");
    EXPECT_EQ(findingName(Finding::OtherStation), "other station");
    EXPECT_EQ(findingName(Finding::Lost), "lost");
}

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

TEST(LineDiagnosis, EchoIsNamedAndWrongIfTheSettingContradictsIt)
{
    const QByteArray echoed = QByteArray(REQUEST) + ANSWER;
    const Diagnosis fits = diagnose({answered(echoed)}, EchoMode::Auto);
    EXPECT_EQ(fits.finding, Finding::Good);
    EXPECT_TRUE(fits.text.endsWith("It echoes what is sent; the echo is ignored."));
    const Diagnosis denied = diagnose({answered(echoed)}, EchoMode::Off);
    EXPECT_EQ(denied.finding, Finding::WrongEcho);
    EXPECT_EQ(denied.advice, "Set the echo to auto or on.");
    const Diagnosis missing = diagnose({answered(ANSWER)}, EchoMode::On);
    EXPECT_EQ(missing.finding, Finding::WrongEcho);
    EXPECT_EQ(missing.advice, "Set the echo to auto or off.");
}

TEST(LineDiagnosis, OneUnansweredRequestMakesTheLineUnsteady)
{
    const Diagnosis diagnosis = diagnose(
        {answered(ANSWER), probe({}, ReplyFault::Silence), answered(ANSWER)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Unsteady);
    EXPECT_EQ(diagnosis.text,
              "The station answers only 2 of 3 requests; the first failure: no answer.");
}

TEST(LineDiagnosis, CharactersBeforeAnAnswerAreNoise)
{
    const QByteArray noisy = REQUEST + QByteArray("\x01\x02") + ANSWER;
    const Diagnosis diagnosis =
        diagnose({answered(ANSWER), answered(noisy), answered(ANSWER)}, EchoMode::Auto);
    EXPECT_EQ(diagnosis.finding, Finding::Noisy);
    EXPECT_EQ(diagnosis.text, "The station answers, but other characters come before its answers: "
                              "\\x01\\x02.");
    EXPECT_EQ(diagnose({answered("\n" + QByteArray(ANSWER))}, EchoMode::Auto).finding,
              Finding::Good);
}

TEST(LineDiagnosis, AdviceForARefusalFollowsItsReason)
{
    const auto refused = [](int code) {
        return diagnose({probe({}, ReplyFault::None, code)}, EchoMode::Auto);
    };
    EXPECT_EQ(refused(2).finding, Finding::Refused);
    EXPECT_EQ(refused(2).text, "The line is good, but the requests are refused: illegal data "
                               "address (exception 02).");
    EXPECT_EQ(refused(2).advice, "Name an element that this controller has.");
    EXPECT_EQ(refused(6).advice, "Ask again later.");
    EXPECT_TRUE(refused(10).advice.startsWith("This is the gateway's answer"));
    EXPECT_TRUE(refused(11).advice.startsWith("This is the gateway's answer"));
    EXPECT_EQ(refused(4).advice, "Look at the controller's own diagnosis for the cause.");
}

TEST(LineDiagnosis, RefusalCountsWhicheverRequestItMeets)
{
    const Probe good = answered(ANSWER);
    const Probe refused = probe({}, ReplyFault::None, 6);
    for (const auto &probes :
         {std::vector<Probe>{refused, good, good}, {good, refused, good}, {good, good, refused}}) {
        const Diagnosis diagnosis = diagnose(probes, EchoMode::Auto);
        EXPECT_EQ(diagnosis.finding, Finding::Refused);
        EXPECT_EQ(diagnosis.text, "The line is good, but 1 of 3 requests was refused: server "
                                  "device busy (exception 06).");
        EXPECT_EQ(diagnosis.advice, "Ask again later.");
    }
}

TEST(LineDiagnosis, WhatComesInPlaceOfAnAnswerPointsToTheCause)
{
    const QByteArray otherStation = ":0203020007F2\r\n";
    const QByteArray zeros(61, '0');
    const struct {
        QByteArray received;
        ReplyFault fault;
        Finding finding;
        QString text; // its end
    } ROWS[] = {
        {"", ReplyFault::Silence, Finding::Silent, "no character came back."},
        {REQUEST, ReplyFault::Silence, Finding::EchoOnly, "but nothing answers."},
        {REQUEST + otherStation, ReplyFault::WrongStation, Finding::OtherStation,
         "Station 2 answers, but station 1 was asked."},
        {otherStation, ReplyFault::WrongStation, Finding::OtherStation,
         "Station 2 answers, but station 1 was asked."},
        {":020310000001EA\r\n", ReplyFault::WrongStation, Finding::OtherHost,
         "Requests of another host come: station 02: read D0."},
        {":01030400070000F1\r\n", ReplyFault::WrongLength, Finding::NoFit,
         "station 01 answers 7 0."},
        {":0103020007F4\r\n", ReplyFault::WrongLrc, Finding::Damaged,
         "Answers come, but damaged, such as :0103020007F4\\r\\n."},
        {"0103020007F3\r\n", ReplyFault::Noise, Finding::Damaged, "0103020007F3\\r\\n."},
        {"01?\n", ReplyFault::Noise, Finding::Damaged, "01?\\n."}, // one in four
        {"0??\n", ReplyFault::Noise, Finding::Garbled, "Speed or parity is wrong."},
        {"\xE0\x1C:", ReplyFault::Noise, Finding::Garbled,
         "Characters come, but no answer: \\xE0\\x1C:. Speed or parity is wrong."},
        {zeros, ReplyFault::Noise, Finding::Damaged, "such as " + zeros.left(60) + "...."},
    };
    for (const auto &row : ROWS) {
        const Diagnosis diagnosis = diagnoseOne(row.received, row.fault);
        EXPECT_EQ(diagnosis.finding, row.finding) << diagnosis.text.toStdString();
        EXPECT_TRUE(diagnosis.text.endsWith(row.text)) << diagnosis.text.toStdString();
    }
}

TEST(LineDiagnosis, StationThatNoHostCanAskIsToBeRenumbered)
{
    EXPECT_EQ(diagnoseOne(":0203020007F2\r\n", ReplyFault::WrongStation).advice,
              "Ask station 2, or set the controller's station number to 1.");
    const Diagnosis diagnosis = diagnoseOne(":0A03020007EA\r\n", ReplyFault::WrongStation);
    EXPECT_EQ(diagnosis.text, "Station 0A answers, but station 1 was asked.");
    EXPECT_EQ(diagnosis.advice,
              "No host can ask such a station: set the controller's station number to 1.");
}

// Seven data bits, received as eight: the eighth is the parity or the second stop bit.
TEST(LineDiagnosis, EighthBitNamesTheFrame)
{
    const std::pair<QByteArray, QString> ROWS[] = {
        {":0\xB1\60\63\60\xB2\60\60\60\xB7\xC6\63\x8D\n", "7E1"},
        {"\xBA\xB0\61\xB0\xB3\xB0\62\xB0\xB0\xB0\67F\xB3\r\x8A", "7O1"},
        {"\xBA\xB0\xB1\xB0\xB3\xB0\xB2\xB0\xB0\xB0\xB7\xC6\xB3\x8D\x8A", "7N2"}};
    for (const auto &[received, frame] : ROWS) {
        const Diagnosis diagnosis = diagnoseOne(received, ReplyFault::Noise);
        EXPECT_EQ(diagnosis.finding, Finding::WrongParity);
        EXPECT_EQ(diagnosis.advice,
                  "Set the frame format " + frame + " for the link, or in the gateway's settings.");
    }
}

TEST(LineDiagnosis, FindingsHaveNames)
{
    EXPECT_EQ(findingName(Finding::Good), "good");
    EXPECT_EQ(findingName(Finding::OtherStation), "other station");
    EXPECT_EQ(findingName(Finding::Lost), "lost");
}

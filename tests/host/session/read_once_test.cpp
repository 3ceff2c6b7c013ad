#include "host/session/read_once.h"

#include "tests/host/session_fixture.h"

using namespace kmr;
using Outcome = RequestResult::Outcome;

namespace {

using ReadingTest = SessionTest;

} // namespace

TEST_F(ReadingTest, ReadsEveryKindOfElement)
{
    session();
    setElement("D", 100, 0x1234);
    setElement("X", 17, 1);
    setElement("CV2", 200, 70000);
    setElement("TV", 5, 8);
    const auto readings = readNow(*m_session, tags({"D100", "X16x3", "CV2200", "TV5.2x2", "D100"}));
    EXPECT_EQ(readings[0].values, (Values{0x1234}));
    EXPECT_EQ(readings[1].values, (Values{0, 1, 0}));
    EXPECT_EQ(readings[2].values, (Values{70000}));
    EXPECT_EQ(readings[3].values, (Values{0, 1}));
    EXPECT_EQ(readings[4].values, (Values{0x1234}));
}

TEST_F(ReadingTest, WordsAreReadByOneShotReadsAndNotPolledAsWell)
{
    session();
    readNow(*m_session, tags({"D100x3"}));
    EXPECT_EQ(m_device.sent(), std::vector<QByteArray>{":01031064000385\r\n"});
}

TEST_F(ReadingTest, ReadsBothSidesOfABorder)
{
    session();
    for (const int number : {4094, 4095, 4096, 4097})
        setElement("D", number, static_cast<std::uint32_t>(number));
    setElement("M", 1535, 1);
    setElement("M", 1537, 1);
    const auto readings = readNow(*m_session, tags({"D4094x4", "M1534x4"}));
    EXPECT_EQ(readings[0].values, (Values{4094, 4095, 4096, 4097}));
    EXPECT_EQ(readings[1].values, (Values{0, 1, 0, 1}));
}

TEST_F(ReadingTest, WhatWasReadBeforeAnswersFellOutOfStepIsReadAgain)
{
    session();
    setElement("D", 100, 7);
    setElement("D", 200, 8);
    int requests = 0;
    m_spoil = [&requests](const QByteArray &, const QByteArray &answer) {
        ++requests; // the second also gets another answer
        return requests == 2 ? ":010302006397\r\n" + answer : answer;
    };
    const auto readings = readNow(*m_session, tags({"D100", "D200"}));
    EXPECT_EQ(readings[0].values, (Values{7}));
    EXPECT_EQ(readings[1].values, (Values{8}));
    EXPECT_EQ(requests, 4); // D100, D200 twice, D100 again
}

TEST_F(ReadingTest, LineThatStaysOutOfStepIsToldSo)
{
    session();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(5, 4) == "10C8" ? ":010302006397\r\n" + answer : answer; // D200
    };
    const auto readings = readNow(*m_session, tags({"D100", "D200"}));
    EXPECT_EQ(readings[0].values, (Values{0})); // read again after that
    EXPECT_EQ(readings[1].result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(readings[1].result.failure.fault, ReplyFault::SeveralAnswers);
}

TEST_F(ReadingTest, ManyBitsTakeARequestEachThirtyTwo)
{
    session();
    setElement("M", 1000, 1);
    const auto readings = readNow(*m_session, tags({"M0x1024"}));
    EXPECT_EQ(readings[0].values[1000], 1U);
    EXPECT_EQ(m_device.sent().size(), 32U);
}

TEST_F(ReadingTest, ValueThatNobodyAnsweredIsAnErrorNotAValue)
{
    session();
    setElement("D", 100, 7);
    EXPECT_EQ(readNow(*m_session, tags({"D100"}))[0].values, (Values{7}));
    m_spoil = silence;
    const auto reading = readNow(*m_session, tags({"D100"})).front();
    EXPECT_EQ(reading.result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(reading.result.failure.fault, ReplyFault::Silence);
    EXPECT_TRUE(reading.values.empty());
}

TEST_F(ReadingTest, StationThatLeavesTwoRequestsWithoutAnswerIsNotAskedForTheRest)
{
    session();
    m_spoil = silence;
    const auto readings = readNow(*m_session, tags({"D0", "D100", "D200", "M0", "D100x2"}));
    EXPECT_EQ(m_device.sent().size(), 6U); // two requests, each two times again
    EXPECT_EQ(readings[0].result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(readings[1].result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(readings[1].silentTag, "");
    for (const std::size_t i : {2u, 3u}) {
        EXPECT_EQ(readings[i].result.outcome, Outcome::NotSent);
        EXPECT_EQ(readings[i].silentTag, "D100");
    }
}

TEST_F(ReadingTest, StationThatFallsSilentAtBitsKeepsTheWordsThatItAnswered)
{
    session();
    setElement("D", 100, 7);
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(3, 2) == "02" ? QByteArray() : answer;
    };
    const auto readings = readNow(*m_session, tags({"D100", "M0", "M100", "M200"}));
    EXPECT_EQ(readings[0].values, (Values{7}));
    EXPECT_EQ(readings[2].result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(readings[3].result.outcome, Outcome::NotSent);
    EXPECT_EQ(readings[3].silentTag, "M100");
}

TEST_F(ReadingTest, StationThatGivesDamagedAnswersIsAskedOn)
{
    session();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        const QByteArray address = request.mid(5, 4);
        const bool isGood = address == "112C" || address == "08C0"; // D300 and M192
        return isGood ? answer : QByteArray(":0103020000FB\r\n");   // a wrong LRC
    };
    const auto readings =
        readNow(*m_session, tags({"D100", "D200", "D300", "M0", "M100", "M192x16"}));
    for (const std::size_t i : {0u, 1u, 3u, 4u})
        EXPECT_EQ(readings[i].result.failure.fault, ReplyFault::WrongLrc) << i;
    EXPECT_TRUE(readings[2].result.isDone());
    EXPECT_TRUE(readings[5].result.isDone());
}

TEST_F(ReadingTest, BitsThatWerePassedOverAfterADamagedAnswerAreAskedAllTheSame)
{
    session();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(5, 4) == "0800" ? QByteArray(":01020000FF\r\n") : answer; // M0
    };
    const auto readings = readNow(*m_session, tags({"M0", "M100", "2#M500"})); // 2 is silent
    EXPECT_EQ(readings[0].result.failure.fault, ReplyFault::WrongLrc);
    EXPECT_TRUE(readings[1].result.isDone());
    EXPECT_EQ(readings[2].result.failure.fault, ReplyFault::Silence);
}

TEST_F(ReadingTest, RefusedElementsDoNotStopTheOthers)
{
    session();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(5, 4) == "1064" ? QByteArray(":0183027A\r\n") : answer;
    };
    const auto readings = readNow(*m_session, tags({"D100", "D200"}));
    EXPECT_EQ(readings[0].result.outcome, Outcome::Refused);
    EXPECT_EQ(readings[0].result.failure.exceptionCode, 2);
    EXPECT_TRUE(readings[1].result.isDone());
}

TEST_F(ReadingTest, PolledBitsThatAreRefusedEndTheRead)
{
    session();
    m_spoil = [](const QByteArray &, const QByteArray &) { return QByteArray(":0182027B\r\n"); };
    EXPECT_EQ(readNow(*m_session, tags({"M0"}))[0].result.outcome, Outcome::Refused);
}

TEST_F(ReadingTest, LineLostAtAWordEndsTheRead)
{
    session();
    m_spoil = [this](const QByteArray &, const QByteArray &) {
        m_device.close();
        return QByteArray();
    };
    const auto readings = readNow(*m_session, tags({"D100", "D500", "M0"}));
    EXPECT_EQ(readings[0].result.outcome, Outcome::NoAnswer);
    for (const std::size_t i : {1u, 2u})
        EXPECT_EQ(readings[i].result.outcome, Outcome::NotSent);
    EXPECT_EQ(m_device.sent().size(), 1U);
}

TEST_F(ReadingTest, LineLostAtABitEndsTheRead)
{
    session();
    m_spoil = [this](const QByteArray &, const QByteArray &) {
        m_device.close();
        return QByteArray();
    };
    const auto readings = readNow(*m_session, tags({"M0", "M500"}));
    EXPECT_EQ(readings[0].result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(readings[1].result.outcome, Outcome::NotSent);
    EXPECT_EQ(m_device.sent().size(), 1U);
}

TEST_F(ReadingTest, StopFlagSetBeforeTheReadSendsNothing)
{
    session();
    m_stop = true;
    EXPECT_EQ(readNow(*m_session, tags({"D100", "M0"}))[0].result.outcome, Outcome::NotSent);
    EXPECT_TRUE(m_device.sent().empty());
}

TEST_F(ReadingTest, ObserversGoOnDuringAReadAndAfterIt)
{
    Session &own = session();
    int exchanges = 0;
    int confirmed = 0;
    own.setObserver([&exchanges](const Exchange &) { ++exchanges; });
    own.setConfirmObserver([&confirmed](const ElementRange &) { ++confirmed; });
    readNow(own, tags({"D0"}));
    EXPECT_GT(exchanges, 0);
    EXPECT_GT(confirmed, 0);
    exchanges = 0;
    own.step();
    EXPECT_EQ(exchanges, 1);
}

#include "host/session/session.h"

#include "host/session/read_once.h"
#include "tests/host/session_fixture.h"

using namespace kmr;
using Outcome = RequestResult::Outcome;

TEST_F(SessionTest, PollingBothSidesOfABorderReadsTheRightMemory)
{
    session();
    setElement("D", 4095, 1);
    setElement("D", 4096, 2);
    setElement("M", 1536, 1);
    poll({"D4095x2", "M1535x2"});
    for (int i = 0; i < 8; ++i)
        m_session->step();
    EXPECT_EQ(m_session->values(tag("D4095x2")), (Values{1, 2}));
    EXPECT_EQ(m_session->values(tag("M1535x2")), (Values{0, 1}));
    EXPECT_EQ(m_session->state(tag("M1535x2")).quality, Quality::Good);
}

TEST_F(SessionTest, WritesEveryKindOfElement)
{
    session();
    poll({"D100", "M0", "CV2200", "Y17"});
    EXPECT_TRUE(write("D100x10", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}).isDone());
    EXPECT_TRUE(write("M1x2", {1, 1}).isDone());
    EXPECT_TRUE(write("CV2200x2", {70000, 0xFFFFFFFF}).isDone());
    EXPECT_TRUE(write("Y17x2", {1, 1}).isDone());
    EXPECT_EQ(element("D", 100), 1U);
    EXPECT_EQ(element("D", 109), 10U);
    EXPECT_EQ(element("M", 0), 0U);
    EXPECT_EQ(element("M", 2), 1U);
    EXPECT_EQ(element("CV2", 200), 70000U);
    EXPECT_EQ(element("CV2", 201), 0xFFFFFFFFU);
    EXPECT_EQ(element("Y", 17), 1U);
    EXPECT_EQ(element("Y", 20), 1U);
}

TEST_F(SessionTest, WriteAcrossABorderReachesBothSides)
{
    session();
    poll({"D4095x2"});
    EXPECT_TRUE(write("D4095x2", {11, 12}).isDone());
    EXPECT_EQ(element("D", 4095), 11U);
    EXPECT_EQ(element("D", 4096), 12U);
}

TEST_F(SessionTest, ManyWritesInARowAllGoOut)
{
    session();
    poll({"D0"});
    for (std::uint32_t i = 0; i < 20; ++i)
        EXPECT_TRUE(write("D0", {i}).isDone());
    EXPECT_EQ(element("D", 0), 19U);
}

TEST_F(SessionTest, RefusedWriteIsToldFromASilentOne)
{
    session();
    poll({"D0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isWrite(request) ? QByteArray(":0190026D\r\n") : answer;
    };
    const RequestResult refused = write("D0", {1});
    EXPECT_EQ(refused.outcome, Outcome::Refused);
    EXPECT_EQ(refused.failure.exceptionCode, 2);
    m_spoil = silence;
    EXPECT_EQ(write("D0", {1}).outcome, Outcome::NoAnswer);
}

TEST_F(SessionTest, WriteThatIsRefusedOnlyBehindAnUnansweredAttemptIsUnknown)
{
    session();
    poll({"D0"});
    int attempts = 0; // the first is carried out, but its answer gets lost
    m_spoil = [&attempts](const QByteArray &, const QByteArray &) {
        return ++attempts == 1 ? QByteArray() : QByteArray(":01900669\r\n");
    };
    const RequestResult result = write("D0", {1});
    EXPECT_EQ(element("D", 0), 1U);
    EXPECT_EQ(result.outcome, Outcome::Unknown);
    EXPECT_EQ(result.failure.exceptionCode, 6);
}

TEST_F(SessionTest, ReadThatIsRefusedBehindAnUnansweredAttemptIsRefused)
{
    session();
    int attempts = 0;
    m_spoil = [&attempts](const QByteArray &, const QByteArray &) {
        return ++attempts == 1 ? QByteArray() : QByteArray(":01830676\r\n");
    };
    EXPECT_EQ(m_session->readOnce({1, "D", 0, 1}).outcome, Outcome::Refused);
}

TEST_F(SessionTest, WithoutAPlanEachRequestIsPolledOnlyItself)
{
    session();
    m_session->readOnce({2, "D", 0, 1}); // the controller is station 1
    const std::size_t sent = m_device.sent().size();
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(m_session->readOnce({1, "D", i, 1}).isDone());
    EXPECT_EQ(m_device.sent().size(), sent + 13); // each third followed by a polled one
    for (std::size_t i = sent; i < m_device.sent().size(); ++i)
        EXPECT_TRUE(m_device.sent()[i].startsWith(":01")) << m_device.sent()[i].constData();
}

TEST_F(SessionTest, WrittenValueIsNotGoodUntilItIsReadAgain)
{
    session();
    poll({"D0"});
    m_session->step();
    EXPECT_EQ(m_session->state(tag("D0")).quality, Quality::Good);
    write("D0", {5});
    EXPECT_EQ(m_session->state(tag("D0")).quality, Quality::Unread);
    m_session->step();
    EXPECT_EQ(m_session->state(tag("D0")).quality, Quality::Good);
    EXPECT_EQ(m_session->values(tag("D0")), (Values{5}));
}

TEST_F(SessionTest, WriteDisturbsItsWholeBlockOfBitsAndTheNextCounter)
{
    session(EchoMode::Off);
    poll({"M0x32", "CV2200x3"});
    for (int i = 0; i < 6; ++i)
        m_session->step();
    write("M3", {1});
    EXPECT_EQ(m_session->state(tag("M15")).quality, Quality::Unread);
    EXPECT_EQ(m_session->state(tag("M16")).quality, Quality::Good);
    write("CV2200", {1});
    EXPECT_EQ(m_session->state(tag("CV2201")).quality, Quality::Unread);
    EXPECT_EQ(m_session->state(tag("CV2202")).quality, Quality::Good);
}

TEST_F(SessionTest, GivenUpReadMakesItsValuesStale)
{
    session();
    poll({"D0"});
    m_session->step();
    m_spoil = silence;
    for (int i = 0; i < 3; ++i)
        m_session->step();
    EXPECT_EQ(m_session->state(tag("D0")).quality, Quality::Stale);
    EXPECT_EQ(m_session->state(tag("D0")).failure.fault, ReplyFault::Silence);
    EXPECT_EQ(m_session->statistics().retries(), 2U);
    EXPECT_EQ(m_session->statistics().giveUps(), 1U);
}

TEST_F(SessionTest, LineLostAfterSendingAWriteLeavesItUnknown)
{
    session();
    poll({"D0"});
    m_spoil = [this](const QByteArray &, const QByteArray &) {
        m_device.close();
        return QByteArray();
    };
    EXPECT_EQ(write("D0", {1}).outcome, Outcome::Unknown);
    EXPECT_EQ(write("D0", {2}).outcome, Outcome::NotSent);
}

TEST_F(SessionTest, BitWriteFirstLearnsWhetherTheLineEchoes)
{
    session();
    poll({"M0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) { return request + answer; };
    EXPECT_TRUE(write("M0", {1}).isDone());
    EXPECT_FALSE(isWrite(m_device.sent()[0]));
    EXPECT_TRUE(m_session->echo().isCertain());
}

TEST_F(SessionTest, EchoOfABitWriteIsNoConfirmation)
{
    session();
    poll({"M0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isWrite(request) ? request : request + answer; // the controller ignores the write
    };
    const RequestResult result = write("M0", {1});
    EXPECT_EQ(result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(result.failure.fault, ReplyFault::Silence);
}

TEST_F(SessionTest, BitWriteIsNotSentToAControllerThatAnswersNothing)
{
    session();
    poll({"M0"});
    m_spoil = silence;
    EXPECT_EQ(write("M0", {1}).outcome, Outcome::NotSent);
    for (const QByteArray &request : m_device.sent())
        EXPECT_FALSE(isWrite(request));
}

TEST_F(SessionTest, BitWriteToAControllerThatRefusesTheLessonIsSent)
{
    session();
    poll({"M0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isWrite(request) ? answer : QByteArray(":0183027A\r\n");
    };
    EXPECT_TRUE(write("M0", {1}).isDone());
    EXPECT_EQ(element("M", 0), 1U);
}

TEST_F(SessionTest, SilentStationKeepsNoOthersBitWriteFromBeingSent)
{
    session();
    poll({"2#M0"}); // the controller is station 1
    EXPECT_TRUE(write("M0", {1}).isDone());
    EXPECT_EQ(element("M", 0), 1U);
}

TEST_F(SessionTest, ReadBehindARequestThatIsBeingGivenUpIsAnswered)
{
    session();
    poll({"2#D0"});
    m_session->step(); // once, and it will be sent again
    EXPECT_TRUE(m_session->readOnce({1, "D", 0, 1}).isDone());
}

TEST_F(SessionTest, ChangesReachTheObserver)
{
    session();
    poll({"D0", "X17"});
    QStringList reports;
    m_session->setChangeObserver([&reports](qint32 station, const QString &area, qint32 address) {
        reports.append(QString("%1#%2%3").arg(station).arg(area).arg(address));
    });
    setElement("D", 0, 3);
    setElement("X", 17, 1);
    m_session->step();
    m_session->step();
    EXPECT_EQ(reports, (QStringList{"1#D0", "1#X17"}));
}

TEST_F(SessionTest, SmallestGroupLimitServesAllAreas)
{
    session(EchoMode::Auto, 1);
    setElement("X", 30, 1);
    poll({"D0x3", "X27x2"});
    EXPECT_TRUE(write("D0x3", {1, 2, 3}).isDone());
    const auto readings = readNow(*m_session, tags({"D0x3", "X27x2"}));
    EXPECT_EQ(readings[0].values, (Values{1, 2, 3}));
    EXPECT_EQ(readings[1].values, (Values{0, 1}));
}

TEST_F(SessionTest, WriteThatIsStoppedBetweenTwoAttemptsIsUnknown)
{
    session();
    poll({"D0"});
    m_spoil = silence;
    m_session->setObserver([this](const Exchange &) { m_stop = true; });
    EXPECT_EQ(write("D0", {1}).outcome, Outcome::Unknown);
    EXPECT_EQ(m_device.sent().size(), 1U);
}

TEST_F(SessionTest, BitWriteIsUnknownWhereNothingTellsItsEchoFromItsAnswer)
{
    session();
    poll({"M0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isWrite(request) ? answer : "\xFF" + answer; // noise may be the rest of an echo
    };
    const RequestResult result = write("M0", {1});
    EXPECT_EQ(result.outcome, Outcome::Unknown);
    EXPECT_EQ(result.failure.fault, ReplyFault::EchoOrAnswer);
}

TEST_F(SessionTest, FirstBitWriteToAStationLearnsTheEchoFromThatStation)
{
    session();
    poll({"2#M0"});
    simulator::Controller second("02");
    m_spoil = [&second](const QByteArray &request, const QByteArray &) {
        return second.answer(request);
    };
    EXPECT_TRUE(write("2#M0", {1}).isDone());
    EXPECT_EQ(m_device.sent()[0], ":020310000001EA\r\n");
}

TEST_F(SessionTest, RestartLeavesNothingOfTheOldLineToBeSent)
{
    session();
    poll({"D0"});
    m_spoil = [this](const QByteArray &, const QByteArray &) {
        m_device.close();
        return QByteArray();
    };
    EXPECT_EQ(write("D0", {1}).outcome, Outcome::Unknown);
    ASSERT_TRUE(m_device.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    m_spoil = nullptr;
    m_session->restart();
    poll({"D0"});
    const auto before = static_cast<std::ptrdiff_t>(m_device.sent().size());
    for (int i = 0; i < 4; ++i)
        m_session->step();
    EXPECT_EQ(std::count_if(m_device.sent().begin() + before, m_device.sent().end(), isWrite), 0);
}

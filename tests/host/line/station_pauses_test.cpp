#include "host/line/station_pauses.h"

#include "tests/host/session_fixture.h"

using namespace kmr;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds TIMEOUT(100);

// Stations 1 and 2 are polled.
class StationPausesTest : public testing::Test {
protected:
    StationPausesTest()
    {
        m_pauses.setStations({1, 2});
    }

    static StationPauses::TimePoint at(int milliseconds)
    {
        return StationPauses::TimePoint(std::chrono::milliseconds(milliseconds));
    }

    StationPauses m_pauses{TIMEOUT};
};

// Station 1 is simulated; station 2 answers while `m_second` is there.
class TwoStations : public SessionTest {
protected:
    TwoStations()
    {
        session();
        m_spoil = [this](const QByteArray &request, const QByteArray &answer) {
            return request.startsWith(":02") && m_second ? m_second->answer(request) : answer;
        };
        m_session->setObserver([this](const Exchange &exchange) { note(exchange); });
    }

    void note(const Exchange &exchange)
    {
        if (exchange.request.var.station != 1 || exchange.outcome != Exchange::Outcome::Good)
            return;
        m_longestWait = std::max(m_longestWait, m_device.elapsed() - m_lastGood);
        m_lastGood = m_device.elapsed();
        ++m_refreshes;
    }

    void runFor(milliseconds time)
    {
        const milliseconds end = m_device.elapsed() + time;
        while (m_device.elapsed() < end)
            m_session->step();
    }

    Quality quality(const QString &text) const
    {
        return m_session->state(tag(text)).quality;
    }

    std::unique_ptr<simulator::Controller> m_second;
    milliseconds m_lastGood{0}; // of station 1
    milliseconds m_longestWait{0};
    int m_refreshes = 0;
};

} // namespace

TEST_F(StationPausesTest, StationThatAnswersIsAsked)
{
    EXPECT_EQ(m_pauses.turnOf(1, at(0)), Turn::Ask);
    m_pauses.noteGiveUp(1, at(0));
    m_pauses.noteGiveUp(1, at(0));
    m_pauses.noteAnswer(1);
    EXPECT_EQ(m_pauses.turnOf(1, at(0)), Turn::Ask);
}

TEST_F(StationPausesTest, GivenUpStationIsAskedWithoutRetriesAfterAPause)
{
    m_pauses.noteGiveUp(2, at(10));
    EXPECT_EQ(m_pauses.turnOf(2, at(10)), Turn::PassOver);
    EXPECT_EQ(m_pauses.turnOf(2, at(309)), Turn::PassOver);
    EXPECT_EQ(m_pauses.turnOf(2, at(310)), Turn::AskOnce);
    EXPECT_EQ(m_pauses.turnOf(1, at(10)), Turn::Ask);
}

TEST_F(StationPausesTest, PausesGrowUpToTenTimeouts)
{
    for (const int pause : {300, 600, 1000, 1000}) {
        m_pauses.noteGiveUp(2, at(0));
        EXPECT_EQ(m_pauses.turnOf(2, at(pause - 1)), Turn::PassOver) << pause;
        EXPECT_EQ(m_pauses.turnOf(2, at(pause)), Turn::AskOnce) << pause;
    }
}

TEST_F(StationPausesTest, NobodyIsPassedOverWhenAllAreSilent)
{
    for (const int station : {1, 2, 1, 2})
        m_pauses.noteGiveUp(station, at(0));
    EXPECT_EQ(m_pauses.turnOf(1, at(1)), Turn::AskOnce);
    EXPECT_EQ(m_pauses.turnOf(2, at(1)), Turn::AskOnce);
}

TEST_F(StationPausesTest, LoneStationIsAskedWithoutRetriesAndPauses)
{
    m_pauses.setStations({2});
    m_pauses.noteGiveUp(2, at(0));
    m_pauses.noteGiveUp(2, at(0));
    EXPECT_EQ(m_pauses.turnOf(2, at(0)), Turn::AskOnce);
}

TEST_F(StationPausesTest, StationIsSilentWhenTwoRequestsInARowWereGivenUp)
{
    m_pauses.noteGiveUp(2, at(0));
    EXPECT_FALSE(m_pauses.isSilent(2));
    m_pauses.noteGiveUp(2, at(0));
    EXPECT_TRUE(m_pauses.isSilent(2));
    EXPECT_FALSE(m_pauses.isSilent(1));
    m_pauses.noteAnswer(2);
    EXPECT_FALSE(m_pauses.isSilent(2));
}

TEST_F(StationPausesTest, PauseAfterAnAnswerIsAShortOneAgain)
{
    m_pauses.noteGiveUp(2, at(0));
    m_pauses.noteGiveUp(2, at(300));
    m_pauses.noteAnswer(2);
    m_pauses.noteGiveUp(2, at(2000));
    EXPECT_FALSE(m_pauses.isSilent(2));
    EXPECT_EQ(m_pauses.turnOf(2, at(2299)), Turn::PassOver);
    EXPECT_EQ(m_pauses.turnOf(2, at(2300)), Turn::AskOnce);
}

TEST_F(StationPausesTest, ChangeOfThePlanKeepsWhoIsSilentAndARestartForgetsIt)
{
    m_pauses.noteGiveUp(2, at(0));
    m_pauses.noteGiveUp(2, at(0));
    m_pauses.setStations({1, 2, 3});
    EXPECT_TRUE(m_pauses.isSilent(2));
    EXPECT_EQ(m_pauses.turnOf(2, at(599)), Turn::PassOver);
    m_pauses.forgetAll();
    EXPECT_FALSE(m_pauses.isSilent(2));
    EXPECT_EQ(m_pauses.turnOf(2, at(599)), Turn::Ask);
}

TEST_F(TwoStations, SilentOneDoesNotStarveTheOther)
{
    poll({"D0", "2#D0x16"});
    runFor(milliseconds(3000)); // until the pauses are at their longest
    m_refreshes = 0;
    m_longestWait = milliseconds(0);
    runFor(milliseconds(2400));
    // A request without an answer takes its timeout and the same quiet time after it.
    EXPECT_LE(m_longestWait, milliseconds(205));
    // Four fifths of the time, at one millisecond an exchange.
    EXPECT_GT(m_refreshes, 1900);
}

TEST_F(TwoStations, SilentOnesValuesAreStaleAlsoWhereTheyArePassedOver)
{
    m_second = std::make_unique<simulator::Controller>("02");
    poll({"D0", "2#D0x80"});
    runFor(milliseconds(20));
    EXPECT_EQ(quality("2#D0x80"), Quality::Good);
    m_second.reset();
    int passedOver = 0;
    m_session->setObserver([&](const Exchange &exchange) {
        if (exchange.outcome != Exchange::Outcome::PassedOver)
            return;
        ++passedOver;
        EXPECT_EQ(m_session->state(refreshedBy(exchange.request)).quality, Quality::Stale);
    });
    runFor(milliseconds(2000));
    EXPECT_GT(passedOver, 10);
    EXPECT_EQ(quality("D0"), Quality::Good);
}

TEST_F(TwoStations, SilentOneThatAnswersAgainIsPolledAsBefore)
{
    poll({"D0", "2#D0", "2#D100"});
    runFor(milliseconds(10000));
    m_second = std::make_unique<simulator::Controller>("02");
    runFor(milliseconds(1210)); // the longest pause and the present exchange
    EXPECT_EQ(quality("2#D0"), Quality::Good);
    EXPECT_EQ(quality("2#D100"), Quality::Good);
    const std::size_t before = m_device.sent().size();
    for (int i = 0; i < 6; ++i)
        m_session->step();
    const std::vector<QByteArray> sent(m_device.sent().begin() + static_cast<int>(before),
                                       m_device.sent().end());
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(),
                            [](const QByteArray &frame) { return frame.startsWith(":02"); }),
              4);
}

TEST_F(TwoStations, OneThatRefusesIsNotSilent)
{
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.startsWith(":02") ? QByteArray(":02830477\r\n") : answer;
    };
    poll({"D0", "2#D0"});
    const std::size_t requestsInRound = 1 + 3;
    for (std::size_t i = 0; i < 5 * requestsInRound; ++i)
        m_session->step();
    EXPECT_EQ(m_session->statistics().giveUps(), 5U);
    EXPECT_EQ(m_session->statistics().retries(), 10U);
}

TEST_F(TwoStations, WhatIsPassedOverCountsAsNeitherSentNorGivenUp)
{
    poll({"D0", "2#D0"});
    runFor(milliseconds(3000));
    EXPECT_EQ(m_session->statistics().sent(), m_device.sent().size());
    EXPECT_EQ(m_session->statistics().retries(), 2U); // of the first request alone
}

TEST_F(TwoStations, SilentOneIsAskedWithRetriesAgainAfterARestartButNotForAnotherPlan)
{
    poll({"D0", "2#D0"});
    runFor(milliseconds(3000));
    poll({"D0", "2#D100"});
    runFor(milliseconds(3000));
    EXPECT_EQ(m_session->statistics().retries(), 2U);
    m_session->restart();
    poll({"D0", "2#D100"});
    runFor(milliseconds(3000));
    EXPECT_EQ(m_session->statistics().retries(), 4U);
}

TEST_F(TwoStations, WriteToASilentStationIsSentWithItsRetries)
{
    poll({"D0", "2#D0"});
    runFor(milliseconds(3000));
    const auto writes = [this] {
        return std::count_if(m_device.sent().begin(), m_device.sent().end(), isWrite);
    };
    EXPECT_EQ(write("2#D0", {1}).outcome, RequestResult::Outcome::NoAnswer);
    EXPECT_EQ(writes(), 3);
}

TEST_F(TwoStations, RecipeToASilentStationIsSentWithItsRetries)
{
    poll({"D0", "2#D0"});
    runFor(milliseconds(3000));
    _RCP_VAR_PRO entry;
    entry.devId = Session::DEVICE;
    entry.station = 2;
    entry.area = "D";
    entry.count = 1;
    RecipeProgress progress;
    const std::size_t before = m_device.sent().size();
    EXPECT_EQ(m_session->transferRecipe({entry}, Session::Transfer::Upload, progress).outcome,
              RequestResult::Outcome::NoAnswer);
    EXPECT_EQ(m_device.sent().size() - before, 3U);
}

TEST_F(TwoStations, GapIsKeptBetweenStations)
{
    m_session.reset();
    SessionSettings settings;
    settings.poll.gap = milliseconds(30);
    m_session = std::make_unique<Session>(library(), m_device, settings, m_stop, m_device.clock());
    m_second = std::make_unique<simulator::Controller>("02");
    poll({"D0", "2#D0"});
    for (int i = 0; i < 4; ++i)
        m_session->step();
    for (std::size_t i = 1; i < 4; ++i)
        EXPECT_GE(m_device.sentAt()[i] - m_device.sentAt()[i - 1], milliseconds(31));
}

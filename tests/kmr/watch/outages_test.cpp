#include "kmr/outages.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace kmr;

namespace {

const Failure SILENCE{ReplyFault::Silence, 0};
const Failure NOISE{ReplyFault::Noise, 0};
const Failure REFUSED{ReplyFault::None, 2};

ElementRange words(int station, int first, int count = 1)
{
    return {station, "D", first, count};
}

Outages::Time at(int milliseconds)
{
    return Outages::Time(std::chrono::milliseconds(milliseconds));
}

class OutagesTest : public testing::Test {
protected:
    // The lines reported since the last call.
    QStringList told()
    {
        return std::exchange(m_told, {});
    }

    QStringList m_told;
    QString m_time = "12:00";
    Outages m_outages{[this](const QString &line) { m_told.append(line); },
                      [this] { return m_time; }};
};

} // namespace

TEST_F(OutagesTest, SilentStationIsToldOnceWithTheRequest)
{
    m_outages.noteFailure(words(1, 100, 8), SILENCE, at(0));
    EXPECT_EQ(told(), QStringList("12:00 station 1: no answer, asked for D100..107"));
    m_outages.noteFailure(words(1, 100, 8), NOISE, at(10));
    m_outages.noteFailure(words(1, 200), SILENCE, at(20));
    EXPECT_EQ(told(), QStringList());
    m_outages.noteFailure(words(2, 7), SILENCE, at(30));
    EXPECT_EQ(told(), QStringList("12:00 station 2: no answer, asked for D7"));
}

TEST_F(OutagesTest, EndIsToldWhenAllItsRequestsWereAnsweredForAWhile)
{
    m_outages.noteFailure(words(1, 100), SILENCE, at(0));
    m_outages.noteFailure(words(1, 200), SILENCE, at(0));
    told();
    m_outages.noteAnswer(words(1, 100), at(1000));
    m_outages.tellEnds(at(9000));
    EXPECT_EQ(told(), QStringList());
    m_time = "12:01";
    m_outages.noteAnswer(words(1, 200), at(10000));
    m_time = "12:02";
    m_outages.tellEnds(at(12999));
    EXPECT_EQ(told(), QStringList());
    m_outages.tellEnds(at(13000));
    EXPECT_EQ(told(), QStringList("12:01 station 1 answers again"));
    m_outages.tellEnds(at(20000));
    EXPECT_EQ(told(), QStringList());
}

TEST_F(OutagesTest, RequestThatNobodyAnswersDoesNotFloodBetweenOthersAnswers)
{
    for (int i = 0; i < 100; ++i) {
        m_outages.noteFailure(words(1, 200), SILENCE, at(i));
        m_outages.noteAnswer(words(1, 100), at(i));
        m_outages.tellEnds(at(i));
    }
    EXPECT_EQ(told(), QStringList("12:00 station 1: no answer, asked for D200"));
}

TEST_F(OutagesTest, LineThatFailsEveryNowAndThenIsToldOnce)
{
    for (int i = 0; i < 100; ++i) {
        m_outages.noteFailure(words(1, 200), SILENCE, at(2000 * i));
        m_outages.noteAnswer(words(1, 200), at(2000 * i + 1000));
        m_outages.tellEnds(at(2000 * i + 1999));
    }
    EXPECT_EQ(told().size(), 1);
    m_outages.tellAllEnds();
    EXPECT_EQ(told(), QStringList("12:00 station 1 answers again"));
}

TEST_F(OutagesTest, RefusalConcernsItsElementsAndIsAnAnswerOfTheStation)
{
    m_outages.noteFailure(words(1, 100), SILENCE, at(0));
    m_outages.noteFailure(words(1, 100), REFUSED, at(1));
    m_outages.noteFailure(words(1, 200), REFUSED, at(2));
    EXPECT_EQ(told(),
              (QStringList{"12:00 station 1: no answer, asked for D100",
                           "12:00 station 1 D100: refused: illegal data address (exception 02)",
                           "12:00 station 1 D200: refused: illegal data address (exception 02)"}));
    m_outages.noteAnswer(words(1, 200), at(3));
    m_outages.tellAllEnds();
    EXPECT_EQ(told(),
              (QStringList{"12:00 station 1 answers again", "12:00 station 1 D200 answers again"}));
}

TEST_F(OutagesTest, NewLineKnowsNoOutage)
{
    m_outages.noteFailure(words(1, 100), SILENCE, at(0));
    m_outages.noteAnswer(words(1, 100), at(0));
    m_outages.forget();
    told();
    m_outages.tellAllEnds();
    EXPECT_EQ(told(), QStringList());
}

#include "host/line/poll_loop.h"

#include "host/tags/element_range.h"
#include "tests/host/scripted_device.h"

#include <gtest/gtest.h>

using namespace kmr;
using Outcome = Exchange::Outcome;
using Step = PollLoop::Step;
using std::chrono::milliseconds;

namespace {

const QByteArray READ_D100 = ":01031064000187\r\n";
const QByteArray D100_IS_1234 = ":0103021234B4\r\n";
const QByteArray D100_IS_0001 = ":0103020001F9\r\n";
const QByteArray WRONG_LRC = ":0103021234B5\r\n";
const QByteArray REFUSED = ":0183027A\r\n";

const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

struct Noted {
    Outcome outcome;
    ReplyFault fault;
    int exceptionCode;
    QByteArray received;
    QString driverText;
    milliseconds roundTrip;
};

// The driver polls D100 of station 1 and gives up at the third bad reply.
class PollLoopTest : public testing::Test {
protected:
    PollLoopTest()
    {
        qint32 result = 0;
        library().initProperty(nullptr, nullptr, nullptr, &result, "1#0#0#3#8", nullptr);
        library().addrMerge({toKey({1, "D", 100, 1})});
        m_settings.timeout = std::chrono::milliseconds(1000);
        m_settings.inStep = false; // in_step_test.cpp
    }

    // The answers to the first, the second, ... request; silence to all further ones.
    void answer(std::vector<std::vector<Piece>> answers)
    {
        m_answers = std::move(answers);
        m_device = std::make_unique<ScriptedDevice>([this](const QByteArray &) {
            const std::size_t index = m_requests++;
            return index < m_answers.size() ? m_answers[index] : std::vector<Piece>{};
        });
        m_loop =
            std::make_unique<PollLoop>(library(), *m_device, m_settings, m_stop, m_device->clock());
        m_loop->setObserver([this](const Exchange &exchange) {
            m_noted.push_back({exchange.outcome, exchange.fault, exchange.exceptionCode,
                               exchange.received, exchange.driverText,
                               std::chrono::duration_cast<milliseconds>(exchange.roundTrip)});
        });
        m_loop->setStepObserver([this](const StepNews &news) {
            m_strays += news.kind == StepNews::Kind::Stray && !news.late ? 1 : 0;
        });
    }

    int valueOfD100() const
    {
        quint8 bytes[2] = {};
        library().getData(1, "D", 100, 1, bytes);
        return bytes[0] + 256 * bytes[1];
    }

    PollSettings m_settings;
    std::atomic<bool> m_stop{false};
    std::unique_ptr<ScriptedDevice> m_device;
    std::unique_ptr<PollLoop> m_loop;
    std::vector<Noted> m_noted;
    int m_strays = 0;

private:
    std::vector<std::vector<Piece>> m_answers;
    std::size_t m_requests = 0;
};

// Accepts writes at once, but sends them later.
class SlowDevice : public ScriptedDevice {
public:
    SlowDevice(Responder responder, std::function<bool()> wait)
        : ScriptedDevice(std::move(responder)), m_wait(std::move(wait))
    {
    }

    qint64 bytesToWrite() const override
    {
        return m_isSent ? 0 : 17;
    }

    bool waitForBytesWritten(int) override
    {
        return m_isSent = m_wait();
    }

private:
    const std::function<bool()> m_wait;
    bool m_isSent = false;
};

} // namespace

TEST_F(PollLoopTest, AnswerInPiecesReachesTheDriver)
{
    answer({{{5, ":0103"}, {20, "021234B4\r"}, {300, "\n"}}});
    EXPECT_EQ(m_loop->step(), Step::Exchanged);
    EXPECT_EQ(m_device->sent(), std::vector<QByteArray>{READ_D100});
    EXPECT_EQ(valueOfD100(), 0x1234);
    ASSERT_EQ(m_noted.size(), 1U);
    EXPECT_EQ(m_noted[0].outcome, Outcome::Good);
    EXPECT_EQ(m_noted[0].received, D100_IS_1234);
    EXPECT_EQ(m_noted[0].driverText, "1#D100(1)(15)");
    EXPECT_EQ(m_noted[0].roundTrip, std::chrono::milliseconds(325));
}

TEST_F(PollLoopTest, SilenceIsSentAgainAndThenGivenUp)
{
    answer({});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(m_loop->step(), Step::Exchanged);
    ASSERT_EQ(m_noted.size(), 3U);
    EXPECT_EQ(m_noted[0].outcome, Outcome::SentAgain);
    EXPECT_EQ(m_noted[1].outcome, Outcome::SentAgain);
    EXPECT_EQ(m_noted[2].outcome, Outcome::GivenUp);
    EXPECT_EQ(m_noted[2].fault, ReplyFault::Silence);
    EXPECT_EQ(m_noted[2].driverText, "1#D100(1)(0)");
    EXPECT_EQ(m_device->sentAt(),
              (std::vector<milliseconds>{milliseconds(0), milliseconds(1000), milliseconds(2000)}));
}

TEST_F(PollLoopTest, FalseReplyNeverReachesTheDriver)
{
    answer({{{1, D100_IS_0001}}, {{1, WRONG_LRC}}, {{1, ":0203021234B3\r\n"}}});
    for (int i = 0; i < 3; ++i)
        m_loop->step();
    EXPECT_EQ(valueOfD100(), 1);
    EXPECT_EQ(m_noted[1].fault, ReplyFault::WrongLrc);
    EXPECT_EQ(m_noted[2].fault, ReplyFault::WrongStation);
}

TEST_F(PollLoopTest, RefusalIsNamed)
{
    answer({{{1, ":01830478\r\n"}}, {{1, REFUSED}}});
    m_loop->step();
    m_loop->step();
    EXPECT_EQ(m_noted[0].outcome, Outcome::SentAgain);
    EXPECT_EQ(m_noted[0].exceptionCode, 4);
    EXPECT_EQ(m_noted[0].fault, ReplyFault::None);
    EXPECT_EQ(m_noted[0].driverText, "1#D100(1)(11)");
}

TEST_F(PollLoopTest, ReadOfWhatTheControllerLacksIsNotSentAgain)
{
    answer({{{1, REFUSED}}, {{1, ":01830379\r\n"}}});
    m_loop->step();
    m_loop->step();
    EXPECT_EQ(m_noted[1].outcome, Outcome::GivenUp);
    EXPECT_EQ(m_noted[1].exceptionCode, 3);
    EXPECT_EQ(m_noted[0].outcome, Outcome::GivenUp);
    EXPECT_EQ(m_noted[0].exceptionCode, 2);
    EXPECT_EQ(m_noted[0].driverText, "1#D100(1)(11)");
}

TEST_F(PollLoopTest, OfAFloodOnlyTheEndsAreKept)
{
    const Piece flood{1, QByteArray(8000, 'x')};
    std::vector<Piece> pieces(100, flood);
    pieces.push_back({1, D100_IS_1234});
    answer({pieces});
    qint64 arrived = 0;
    m_loop->setObserver([&](const Exchange &exchange) {
        arrived = exchange.receivedChars;
        m_noted.push_back({exchange.outcome, exchange.fault, 0, exchange.received, {}, {}});
    });
    m_loop->step();
    EXPECT_EQ(m_noted[0].outcome, Outcome::Good);
    EXPECT_LE(m_noted[0].received.size(), 16384);
    EXPECT_TRUE(m_noted[0].received.startsWith('x'));
    EXPECT_TRUE(m_noted[0].received.endsWith(D100_IS_1234));
    EXPECT_EQ(arrived, 800015);
}

TEST_F(PollLoopTest, LateAnswerIsTakenForItsRequestSentAgain)
{
    answer({{{1400, D100_IS_0001}}, {{10, D100_IS_1234}}});
    m_loop->step();
    m_loop->step();
    EXPECT_EQ(m_noted[0].fault, ReplyFault::Silence);
    EXPECT_EQ(m_device->sentAt()[1], milliseconds(1000)); // at once
    EXPECT_EQ(m_noted[1].received, D100_IS_0001);
    EXPECT_EQ(valueOfD100(), 1);
}

TEST_F(PollLoopTest, NextRequestWaitsForTheAnswerThatIsStillOwed)
{
    answer({{{1400, D100_IS_0001}}, {{900, D100_IS_0001}}, {{10, D100_IS_1234}}});
    for (int i = 0; i < 3; ++i)
        m_loop->step();
    EXPECT_EQ(m_device->sentAt()[2], milliseconds(2300));
    EXPECT_EQ(m_noted[2].received, D100_IS_1234);
    EXPECT_EQ(m_strays, 0);
}

TEST_F(PollLoopTest, OwedAnswerThatDoesNotComeIsWaitedForAsLongAsTheRequestTook)
{
    answer({{}, {{10, D100_IS_1234}}, {{10, D100_IS_1234}}});
    for (int i = 0; i < 3; ++i)
        m_loop->step();
    EXPECT_EQ(m_device->sentAt()[2], milliseconds(1010 + 1000 + 1000));
}

TEST_F(PollLoopTest, BehindARequestThatWasGivenUpTheLineHasTimeToFallSilent)
{
    answer({});
    for (int i = 0; i < 4; ++i)
        m_loop->step();
    EXPECT_EQ(m_device->sentAt()[2], milliseconds(2000));
    EXPECT_EQ(m_device->sentAt()[3], milliseconds(3000 + 3 * 1000));
}

TEST_F(PollLoopTest, AnswerThatComesTwiceIsNotTakenForTheNextOne)
{
    m_settings.gap = milliseconds(20);
    answer({{{10, D100_IS_0001}, {5, D100_IS_0001}}, {{10, D100_IS_1234}}, {{10, D100_IS_1234}}});
    for (int i = 0; i < 3; ++i)
        m_loop->step();
    EXPECT_EQ(m_device->sentAt()[1], milliseconds(15 + 1000)); // the line was quiet
    EXPECT_EQ(m_noted[1].received, D100_IS_1234);
    EXPECT_EQ(m_strays, 1);
}

TEST_F(PollLoopTest, OtherStationsAnswerBetweenRequestsDisturbsNobody)
{
    m_settings.gap = milliseconds(20);
    answer({{{10, D100_IS_0001}, {5, ":0203020001F8\r\n"}}, {{10, D100_IS_1234}}});
    m_loop->step();
    m_loop->step();
    EXPECT_EQ(m_device->sentAt()[1], milliseconds(35));
    EXPECT_EQ(m_strays, 0);
}

TEST_F(PollLoopTest, FirstRequestWaitsForWhatSomebodyElseAskedFor)
{
    m_settings.firstQuiet = milliseconds(200);
    answer({{{10, D100_IS_1234}}});
    m_device->arrive(150, D100_IS_0001);
    m_loop->step();
    EXPECT_EQ(m_device->sentAt()[0], milliseconds(350));
    EXPECT_EQ(valueOfD100(), 0x1234);
    EXPECT_EQ(m_strays, 0);
}

TEST_F(PollLoopTest, WaitObserverIsCalledWhileAnAnswerIsWaitedFor)
{
    answer({});
    int calls = 0;
    m_loop->setWaitObserver([&calls] { ++calls; });
    m_loop->step();
    EXPECT_EQ(calls, 20); // a second, every 50 ms
}

TEST_F(PollLoopTest, AfterADamagedAnswerAShortQuietTimeIsEnough)
{
    answer({{{100, WRONG_LRC}}, {{10, D100_IS_1234}}});
    m_loop->step();
    m_loop->step();
    EXPECT_EQ(m_device->sentAt()[1], std::chrono::milliseconds(150));
    EXPECT_EQ(valueOfD100(), 0x1234);
}

TEST_F(PollLoopTest, LineIsEmptiedBeforeEachRequest)
{
    answer({{{10, D100_IS_1234}}});
    m_device->arrive(0, D100_IS_0001);
    m_loop->step();
    EXPECT_EQ(m_noted[0].received, D100_IS_1234);
    EXPECT_EQ(valueOfD100(), 0x1234);
}

TEST_F(PollLoopTest, EndlessNoiseEndsAtTheTimeout)
{
    answer({std::vector<Piece>(5000, {1, "U"})});
    EXPECT_EQ(m_loop->step(), Step::Exchanged);
    EXPECT_EQ(m_noted[0].fault, ReplyFault::Noise);
    EXPECT_EQ(m_device->elapsed(), std::chrono::milliseconds(1000));
}

TEST_F(PollLoopTest, LineThatNeverFallsSilentIsUsedAllTheSame)
{
    answer({std::vector<Piece>(20000, {1, "U"})});
    m_loop->step();
    m_loop->step();
    ASSERT_EQ(m_device->sentAt().size(), 2U);
    EXPECT_GE(m_device->sentAt()[1], std::chrono::milliseconds(11000));
}

TEST_F(PollLoopTest, WireTimeIsAddedToTheTimeout)
{
    m_settings.characterTime = std::chrono::milliseconds(10);
    answer({});
    m_loop->step();
    // 17 characters to send and 15 to receive
    EXPECT_EQ(m_device->elapsed(), std::chrono::milliseconds(1320));
}

TEST_F(PollLoopTest, EchoIsDropped)
{
    answer({{{1, READ_D100}, {5, D100_IS_1234}}});
    m_loop->step();
    EXPECT_EQ(valueOfD100(), 0x1234);
    EXPECT_TRUE(m_loop->echo().isCertain());
}

TEST_F(PollLoopTest, NothingToSendIsIdleAndPassesTime)
{
    answer({});
    library().addrMerge({});
    EXPECT_EQ(m_loop->step(), Step::Idle);
    EXPECT_EQ(m_device->elapsed(), std::chrono::milliseconds(10));
    EXPECT_TRUE(m_noted.empty());
}

TEST_F(PollLoopTest, GapIsKeptBetweenAnAnswerAndTheNextRequest)
{
    m_settings.gap = std::chrono::milliseconds(30);
    answer({{{5, ":0103020001F9\r\n"}}});
    EXPECT_EQ(m_loop->step(), Step::Exchanged);
    EXPECT_EQ(m_loop->step(), Step::Exchanged);
    EXPECT_EQ(m_device->sentAt()[1] - m_device->sentAt()[0], std::chrono::milliseconds(35));
}

TEST_F(PollLoopTest, StopFlagSendsNothingMore)
{
    answer({});
    m_stop = true;
    EXPECT_EQ(m_loop->step(), Step::Stopped);
    EXPECT_TRUE(m_device->sent().empty());
}

TEST_F(PollLoopTest, StopFlagEndsAWaitWithinFiftyMilliseconds)
{
    m_device = std::make_unique<ScriptedDevice>([this](const QByteArray &) {
        m_stop = true;
        return std::vector<Piece>{};
    });
    PollLoop loop(library(), *m_device, m_settings, m_stop, m_device->clock());
    Outcome outcome = Outcome::Good;
    loop.setObserver([&outcome](const Exchange &exchange) { outcome = exchange.outcome; });
    EXPECT_EQ(loop.step(), Step::Stopped);
    EXPECT_EQ(outcome, Outcome::Interrupted);
    EXPECT_LE(m_device->elapsed(), std::chrono::milliseconds(50));
}

TEST_F(PollLoopTest, LineLostAfterSendingIsAnInterruption)
{
    m_device = std::make_unique<ScriptedDevice>([this](const QByteArray &) {
        m_device->close();
        return std::vector<Piece>{};
    });
    PollLoop loop(library(), *m_device, m_settings, m_stop, m_device->clock());
    std::vector<Outcome> outcomes;
    loop.setObserver([&](const Exchange &exchange) { outcomes.push_back(exchange.outcome); });
    EXPECT_EQ(loop.step(), Step::LineLost);
    EXPECT_EQ(outcomes, std::vector<Outcome>{Outcome::Interrupted});
    EXPECT_EQ(loop.step(), Step::LineLost);
    EXPECT_EQ(outcomes.size(), 1U);
}

TEST_F(PollLoopTest, RequestThatFitsNoFrameIsNotSentButReported)
{
    answer({});
    QVector<_RCP_VAR_PRO> recipe(1);
    recipe[0].devId = 1;
    recipe[0].station = 1;
    recipe[0].area = "D";
    recipe[0].count = 300;
    std::vector<quint8> status(STATUS_BLOCK_BYTES);
    std::vector<quint8> words(600);
    QMutex mutex;
    qint32 result = 0;
    library().initProperty(status.data(), nullptr, words.data(), &result, "1#0#0#1#8", &mutex);
    library().setRcpAddress(&recipe);
    status[STATUS_RECIPE_DOWNLOAD] = 1;
    EXPECT_EQ(m_loop->step(), Step::Exchanged);
    EXPECT_TRUE(m_device->sent().empty());
    EXPECT_EQ(m_noted[0].outcome, Outcome::GivenUp);
    EXPECT_EQ(m_noted[0].fault, ReplyFault::NotSendable);
    library().initProperty(nullptr, nullptr, nullptr, &result, "", nullptr);
}

TEST_F(PollLoopTest, RunsWithoutAnObserver)
{
    answer({{{5, D100_IS_1234}}});
    m_loop->setObserver(nullptr);
    EXPECT_EQ(m_loop->step(), Step::Exchanged);
    EXPECT_EQ(valueOfD100(), 0x1234);
}

TEST_F(PollLoopTest, LineThatTakesNoCharactersIsLost)
{
    answer({});
    m_device->close();
    ASSERT_TRUE(m_device->open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    EXPECT_EQ(m_loop->step(), Step::LineLost);
    ASSERT_EQ(m_noted.size(), 1U);
    EXPECT_EQ(m_noted[0].outcome, Outcome::Interrupted);
}

TEST_F(PollLoopTest, StopFlagEndsTheWaitWhereNothingIsToBeSent)
{
    answer({});
    library().addrMerge({});
    PollLoop loop(library(), *m_device, m_settings, m_stop, [this] {
        m_stop = true; // while the loop looks at the time, to wait
        return m_device->clock()();
    });
    EXPECT_EQ(loop.step(), Step::Stopped);
}

TEST_F(PollLoopTest, StopFlagEndsThePassingOverOfSilentStations)
{
    answer({});
    m_loop->setTurnOf([this](const FRAME_PRO &) {
        m_stop = true;
        return Turn::PassOver;
    });
    EXPECT_EQ(m_loop->step(), Step::Stopped);
    ASSERT_EQ(m_noted.size(), 1U);
    EXPECT_EQ(m_noted[0].outcome, Outcome::PassedOver);
    EXPECT_TRUE(m_device->sent().empty());
}

TEST_F(PollLoopTest, FloodOfOldCharactersHoldsARequestBackForTheTimeoutAtMost)
{
    answer({});
    for (int i = 0; i < 5000; ++i)
        m_device->arrive(0, "U");
    int before = 0; // characters taken before the request
    m_settings.tap = [this, &before](bool, const QByteArray &) {
        before += m_device->sent().empty() ? 1 : 0;
    };
    auto now = m_device->clock()();
    const Clock clock = [&now] { return now += std::chrono::milliseconds(100); };
    PollLoop loop(library(), *m_device, m_settings, m_stop, clock);
    loop.step();
    EXPECT_EQ(m_device->sent(), std::vector<QByteArray>{READ_D100});
    EXPECT_LE(before, 12);
}

TEST_F(PollLoopTest, SlowLineIsWaitedFor)
{
    int waits = 0;
    SlowDevice device(
        [](const QByteArray &) {
            return std::vector<Piece>{{5, D100_IS_1234}};
        },
        [&waits] { return ++waits == 3; });
    PollLoop loop(library(), device, m_settings, m_stop, device.clock());
    EXPECT_EQ(loop.step(), Step::Exchanged);
    EXPECT_EQ(waits, 3);
    EXPECT_EQ(valueOfD100(), 0x1234);
}

TEST_F(PollLoopTest, LineThatTakesNoMoreCharactersIsLostAfterTheTimeout)
{
    std::chrono::milliseconds waited{0};
    SlowDevice device([](const QByteArray &) { return std::vector<Piece>{}; },
                      [&waited] {
                          waited += std::chrono::milliseconds(50);
                          return false;
                      });
    m_settings.characterTime = std::chrono::milliseconds(10); // 17 of them
    const Clock clock = [&waited] { return std::chrono::steady_clock::time_point(waited); };
    PollLoop loop(library(), device, m_settings, m_stop, clock);
    EXPECT_EQ(loop.step(), Step::LineLost);
    EXPECT_EQ(waited.count(), 1200); // the first check after 1170 ms
}

TEST_F(PollLoopTest, StopFlagEndsTheEmptyingOfAFloodedLine)
{
    answer({});
    for (int i = 0; i < 1000; ++i)
        m_device->arrive(0, "?");
    m_settings.tap = [this](bool, const QByteArray &) { m_stop = true; };
    PollLoop loop(library(), *m_device, m_settings, m_stop, m_device->clock());
    EXPECT_EQ(loop.step(), Step::Stopped);
    EXPECT_TRUE(m_device->sent().empty());
    EXPECT_TRUE(m_device->waitForReadyRead(0)); // most of it is still there
}

TEST_F(PollLoopTest, StopFlagEndsTheWaitForASlowLine)
{
    SlowDevice device([](const QByteArray &) { return std::vector<Piece>{}; },
                      [this] {
                          m_stop = true;
                          return false;
                      });
    PollLoop loop(library(), device, m_settings, m_stop, device.clock());
    EXPECT_EQ(loop.step(), Step::Stopped);
}

TEST_F(PollLoopTest, SlowLineThatIsLostIsWaitedForNoMore)
{
    SlowDevice *line = nullptr;
    SlowDevice device([](const QByteArray &) { return std::vector<Piece>{}; },
                      [&line] {
                          line->close();
                          return false;
                      });
    line = &device;
    PollLoop loop(library(), device, m_settings, m_stop, device.clock());
    EXPECT_EQ(loop.step(), Step::LineLost);
}

TEST_F(PollLoopTest, LineThatTakesHalfOfAFrameIsLost)
{
    class HalfDevice : public ScriptedDevice {
    public:
        using ScriptedDevice::ScriptedDevice;

    protected:
        qint64 writeData(const char *data, qint64 size) override
        {
            ScriptedDevice::writeData(data, size);
            return size / 2;
        }
    };
    HalfDevice device([](const QByteArray &) { return std::vector<Piece>{{5, D100_IS_1234}}; });
    PollLoop loop(library(), device, m_settings, m_stop, device.clock());
    EXPECT_EQ(loop.step(), Step::LineLost);
}

TEST_F(PollLoopTest, AnswerThatIsThereWhenTheTimeIsOverCounts)
{
    answer({{{5, D100_IS_1234}}});
    milliseconds stall{0}; // of the whole machine
    PollLoop loop(library(), *m_device, m_settings, m_stop,
                  [this, &stall] { return m_device->clock()() + stall; });
    loop.setWaitObserver([&stall] { stall = milliseconds(5000); });
    EXPECT_EQ(loop.step(), Step::Exchanged);
    EXPECT_EQ(valueOfD100(), 0x1234);
}

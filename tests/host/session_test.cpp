#include "host/session.h"

#include "host/error.h"
#include "host/poll_plan.h"
#include "host/reading.h"
#include "host/recipe.h"
#include "simulator/areas.h"
#include "simulator/controller.h"
#include "tests/host/scripted_device.h"

#include <gtest/gtest.h>

using namespace kmr;
using Elements = kmr::Run; // GoogleTest has a Run of its own
using Outcome = RequestResult::Outcome;

namespace
{

const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

// A session on a line to a simulated controller, which `m_spoil` may spoil.
class SessionTest : public testing::Test
{
protected:
    // Makes the session; to be called once.
    Session &session(EchoMode echo = EchoMode::Auto, int groupLimit = 8)
    {
        SessionSettings settings;
        settings.poll.timeout = std::chrono::milliseconds(100);
        settings.poll.echo = echo;
        settings.groupLimit = groupLimit;
        m_session =
            std::make_unique<Session>(library(), m_device, settings, m_stop, m_device.clock());
        return *m_session;
    }

    static Tag tag(const QString &text)
    {
        return TagReader(library(), 1).read(text);
    }

    static std::vector<Tag> tags(const QStringList &texts)
    {
        std::vector<Tag> list;
        for (const QString &text : texts)
            list.push_back(tag(text));
        return list;
    }

    void setElement(const QString &area, int number, std::uint32_t value)
    {
        ASSERT_TRUE(simulator::setElement(m_controller.memory(), area, number, value));
    }

    std::uint32_t element(const QString &area, int number)
    {
        return *simulator::element(m_controller.memory(), area, number);
    }

    void poll(const QStringList &texts)
    {
        m_session->poll(readRuns(tags(texts), m_session->groupLimit()));
    }

    // Writes all of a tag, as the command does.
    RequestResult write(const QString &text, const Values &values)
    {
        RequestResult result;
        auto next = values.begin();
        for (const Elements &run : writeRuns(tag(text), m_session->groupLimit())) {
            result = m_session->write(run, Values(next, next + run.count));
            if (!result.isDone())
                break;
            next += run.count;
        }
        return result;
    }

    simulator::Controller m_controller{"01"};
    std::function<QByteArray(const QByteArray &request, const QByteArray &answer)> m_spoil;
    ScriptedDevice m_device{[this](const QByteArray &request) {
        const QByteArray answer = m_controller.answer(request);
        return std::vector<Piece>{{1, m_spoil ? m_spoil(request, answer) : answer}};
    }};
    std::atomic<bool> m_stop{false};
    std::unique_ptr<Session> m_session;
};

QByteArray silence(const QByteArray &, const QByteArray &)
{
    return {};
}

bool isWrite(const QByteArray &request)
{
    return request.mid(3, 2) == "10" || request.mid(3, 2) == "05";
}

} // namespace

TEST_F(SessionTest, ReadsEveryKindOfElement)
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

TEST_F(SessionTest, WordsAreReadByOneShotReadsAndNotPolledAsWell)
{
    session();
    readNow(*m_session, tags({"D100x3"}));
    EXPECT_EQ(m_device.sent(), std::vector<QByteArray>{":01031064000385\r\n"});
}

TEST_F(SessionTest, ReadsBothSidesOfABorder)
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

TEST_F(SessionTest, ValueThatNobodyAnsweredIsAnErrorNotAValue)
{
    session();
    setElement("D", 100, 7);
    EXPECT_EQ(readNow(*m_session, tags({"D100"}))[0].values, (Values{7}));
    m_spoil = silence;
    const auto readings = readNow(*m_session, tags({"D100", "D500", "M0"}));
    for (const Reading &reading : readings) {
        EXPECT_EQ(reading.result.outcome, Outcome::NoAnswer);
        EXPECT_EQ(reading.result.failure.fault, ReplyFault::Silence);
        EXPECT_TRUE(reading.values.empty());
    }
}

TEST_F(SessionTest, SilentStationIsAskedOnlyOnce)
{
    session();
    m_spoil = silence;
    readNow(*m_session, tags({"D0x100", "M0x100"}));
    EXPECT_EQ(m_device.sent().size(), 3U); // once, and two times again
}

TEST_F(SessionTest, RefusedElementsDoNotStopTheOthers)
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

TEST_F(SessionTest, PolledBitsThatAreRefusedEndTheRead)
{
    session();
    m_spoil = [](const QByteArray &, const QByteArray &) { return QByteArray(":0182027B\r\n"); };
    EXPECT_EQ(readNow(*m_session, tags({"M0"}))[0].result.outcome, Outcome::Refused);
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
    EXPECT_EQ(m_device.sent()[0].mid(3, 2), "02");
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

TEST_F(SessionTest, ReportsOfTheDriverReachTheObserver)
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

TEST_F(SessionTest, RecipeGoesDownAndComesUp)
{
    session();
    std::vector<RecipeItem> items = {{tag("D100x10"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 0xFFFF}},
                                     {tag("CV2210x2"), {0x12345678, 9}},
                                     {tag("D4095x2"), {7, 8}}};
    const TransferResult down = download(*m_session, items);
    EXPECT_TRUE(down.result.isDone());
    EXPECT_EQ(down.finished, 6);
    EXPECT_EQ(element("D", 109), 0xFFFFU);
    EXPECT_EQ(element("CV2", 210), 0x12345678U);
    EXPECT_EQ(element("CV2", 211), 9U);
    EXPECT_EQ(element("D", 4096), 8U);

    setElement("D", 101, 22);
    EXPECT_TRUE(upload(*m_session, items).result.isDone());
    EXPECT_EQ(items[0].values, (Values{1, 22, 3, 4, 5, 6, 7, 8, 9, 0xFFFF}));
    EXPECT_EQ(items[1].values, (Values{0x12345678, 9}));
    EXPECT_EQ(items[2].values, (Values{7, 8}));
}

TEST_F(SessionTest, FailedRecipeNamesWhereItStopped)
{
    session();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(5, 4) == "106C" ? QByteArray() : answer; // D108
    };
    std::vector<RecipeItem> items = {{tag("D100x20"), Values(20, 1)}};
    const TransferResult down = download(*m_session, items);
    EXPECT_EQ(down.result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(down.finished, 1);
    EXPECT_EQ(down.requests, 3);
    EXPECT_EQ(down.failedName, "D108");
    EXPECT_EQ(element("D", 116), 0U);

    const TransferResult up = upload(*m_session, items);
    EXPECT_EQ(up.failedName, "D108");
    EXPECT_EQ(items[0].values, Values(20, 1));
}

TEST_F(SessionTest, RecipeBeginsAnewAfterAFailedOne)
{
    session();
    m_spoil = silence;
    std::vector<RecipeItem> items = {{tag("D100x20"), Values(20, 3)}};
    EXPECT_EQ(download(*m_session, items).finished, 0);
    m_spoil = nullptr;
    EXPECT_TRUE(download(*m_session, items).result.isDone());
    EXPECT_EQ(element("D", 100), 3U);
    EXPECT_EQ(element("D", 119), 3U);
}

TEST_F(SessionTest, LineLostInARecipeIsUnknown)
{
    session();
    m_spoil = [this](const QByteArray &request, const QByteArray &answer) {
        if (request.mid(5, 4) == "106C")
            m_device.close();
        return answer;
    };
    const std::vector<RecipeItem> items = {{tag("D100x20"), Values(20, 1)}};
    const TransferResult down = download(*m_session, items);
    EXPECT_EQ(down.result.outcome, Outcome::Unknown);
    EXPECT_EQ(down.finished, 1);
    EXPECT_EQ(down.failedName, "D108");

    ASSERT_TRUE(m_device.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    m_spoil = nullptr;
    EXPECT_TRUE(download(*m_session, items).result.isDone()); // from its beginning
    EXPECT_EQ(element("D", 119), 1U);
}

TEST_F(SessionTest, RecipeEntriesThatFitNoBufferOrFrameAreRefused)
{
    session();
    int finished = 0;
    const auto transfer = [&](const QString &area, int count, int bufWord) {
        QVector<_RCP_VAR_PRO> entries(1);
        entries[0].devId = Session::DEVICE;
        entries[0].station = 1;
        entries[0].area = area;
        entries[0].count = count;
        entries[0].bufWord = bufWord;
        m_session->transferRecipe(entries, Session::Transfer::Download, finished);
    };
    EXPECT_THROW(transfer("D", 10, 0), Error);
    EXPECT_THROW(transfer("D", 0, 0), Error);
    EXPECT_THROW(transfer("D", 1, -1), Error);
    EXPECT_THROW(transfer("D", 2, Session::RECIPE_WORDS - 1), Error);
    EXPECT_THROW(transfer("M", 1, 0), Error);
    EXPECT_NO_THROW(transfer("D", 2, Session::RECIPE_WORDS - 2));
    EXPECT_EQ(m_device.sent().size(), 1U);
}

TEST_F(SessionTest, EmptyRecipeSendsNothing)
{
    session();
    EXPECT_TRUE(download(*m_session, {}).result.isDone());
    EXPECT_TRUE(m_device.sent().empty());
}

TEST_F(SessionTest, RecipeDownloadMakesTheWordsUnread)
{
    session();
    poll({"D100"});
    m_session->step();
    download(*m_session, {{tag("D100"), {4}}});
    EXPECT_EQ(m_session->state(tag("D100")).quality, Quality::Unread);
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

TEST(RecipeFile, IsReadWithHeadingCommentsAndQuotes)
{
    const TagReader reader(library(), 1);
    const auto items =
        parseRecipe("# mixer\ntag,value\r\nD100,250\n\nD110x3,\"1,2,3\"\nCV2200, 7\n", "mixer.csv",
                    reader, RecipeValues::Needed);
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[1].values, (Values{1, 2, 3}));
    EXPECT_EQ(formatRecipe(items), "tag,value\nD100,250\nD110x3,1 2 3\nCV2200,7\n");
}

TEST(RecipeFile, EveryBadLineIsNamedWithItsNumber)
{
    const TagReader reader(library(), 1);
    try {
        parseRecipe("D100,1\nQ1,2\nD101\nM0,1\n", "mixer.csv", reader, RecipeValues::Needed);
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_EQ(error.code(), ExitCode::Usage);
        const std::string text = error.what();
        EXPECT_EQ(text.find("mixer.csv:1:"), std::string::npos) << text;
        EXPECT_NE(text.find("mixer.csv:2: bad tag \"Q1\""), std::string::npos) << text;
        EXPECT_NE(text.find("mixer.csv:3: D101: expected 1 value, got 0"), std::string::npos)
            << text;
        EXPECT_NE(text.find("mixer.csv:4: M0 can't be part"), std::string::npos) << text;
    }
}

TEST(RecipeFile, ValuesMayBeMissingForAnUpload)
{
    const TagReader reader(library(), 1);
    EXPECT_EQ(parseRecipe("D100\nD101,\n", "f", reader, RecipeValues::Ignored).size(), 2U);
    EXPECT_THROW(parseRecipe("# nothing\n", "f", reader, RecipeValues::Ignored), Error);
}

#include "host/session/recipe_transfer.h"

#include "host/error.h"
#include "tests/host/session_fixture.h"

using namespace kmr;
using Outcome = RequestResult::Outcome;

namespace {

using RecipeTest = SessionTest;

} // namespace

TEST_F(RecipeTest, RecipeGoesDownAndComesUp)
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

TEST_F(RecipeTest, FailedRecipeNamesWhereItStopped)
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
    EXPECT_EQ(down.failedName, "1#D108");
    EXPECT_EQ(element("D", 116), 0U);

    const TransferResult up = upload(*m_session, items);
    EXPECT_EQ(up.failedName, "1#D108");
    EXPECT_EQ(items[0].values, Values(20, 1));
}

TEST_F(RecipeTest, RecipeBeginsAnewAfterAFailedOne)
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

TEST_F(RecipeTest, LineLostInARecipeIsUnknown)
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
    EXPECT_EQ(down.failedName, "1#D108");

    ASSERT_TRUE(m_device.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    m_spoil = nullptr;
    EXPECT_TRUE(download(*m_session, items).result.isDone()); // from its beginning
    EXPECT_EQ(element("D", 119), 1U);
}

TEST_F(RecipeTest, RecipeEntriesThatFitNoBufferOrFrameAreRefused)
{
    session();
    RecipeProgress progress;
    const auto transfer = [&](const QString &area, int count, int bufWord) {
        QVector<_RCP_VAR_PRO> entries(1);
        entries[0].devId = Session::DEVICE;
        entries[0].station = 1;
        entries[0].area = area;
        entries[0].count = count;
        entries[0].bufWord = bufWord;
        m_session->transferRecipe(entries, Session::Transfer::Download, progress);
    };
    EXPECT_THROW(transfer("D", 10, 0), Error);
    EXPECT_THROW(transfer("D", 0, 0), Error);
    EXPECT_THROW(transfer("D", 1, -1), Error);
    EXPECT_THROW(transfer("D", 2, Session::RECIPE_WORDS - 1), Error);
    EXPECT_THROW(transfer("M", 1, 0), Error);
    EXPECT_NO_THROW(transfer("D", 2, Session::RECIPE_WORDS - 2));
    EXPECT_EQ(m_device.sent().size(), 1U);
}

TEST_F(RecipeTest, RequestsOfARecipeHoldWholeValues)
{
    session(EchoMode::Auto, 5);
    const std::vector<RecipeItem> items = {{tag("D100x8/float32"), Values(8, 1)}};
    EXPECT_EQ(downloadRanges(*m_session, items),
              (std::vector<kmr::ElementRange>{{1, "D", 100, 4}, {1, "D", 104, 4}}));
    EXPECT_EQ(download(*m_session, items).finished, 2);
    EXPECT_EQ(element("D", 107), 1U);
    m_session.reset();
    EXPECT_THROW(downloadRanges(session(EchoMode::Auto, 1), items), Error);
}

TEST_F(RecipeTest, WordsOfNeighbouringLinesGoInOneRequest)
{
    using kmr::ElementRange;
    m_inStep = true;
    session();
    std::vector<RecipeItem> items;
    for (int number = 100; number < 120; ++number)
        items.push_back({tag(QString("D%1").arg(number)), {static_cast<std::uint32_t>(number)}});
    for (const char *apart :
         {"2#D120", "D4095", "D4096", "D100/int32", "D102", "D101", "CV2200", "CV2201"})
        items.push_back({tag(apart), {1}});
    const std::vector<ElementRange> rest = {
        {2, "D", 120, 1}, {1, "D", 4095, 1},  {1, "D", 4096, 1}, {1, "D", 100, 3},
        {1, "D", 101, 1}, {1, "CV2", 200, 1}, {1, "CV2", 201, 1}};
    std::vector<ElementRange> down = {{1, "D", 100, 8}, {1, "D", 108, 8}, {1, "D", 116, 4}};
    std::vector<ElementRange> up = {{1, "D", 100, 8}, {1, "D", 108, 7}, {1, "D", 115, 5}};
    down.insert(down.end(), rest.begin(), rest.end());
    up.insert(up.end(), rest.begin(), rest.end());
    EXPECT_EQ(downloadRanges(*m_session, items), down);
    EXPECT_EQ(uploadRanges(*m_session, items), up); // full groups look alike

    items.resize(20);
    EXPECT_EQ(download(*m_session, items).finished, 3);
    EXPECT_EQ(element("D", 115), 115U);
    setElement("D", 119, 7);
    EXPECT_TRUE(upload(*m_session, items).result.isDone());
    EXPECT_EQ(items[15].values, Values{115});
    EXPECT_EQ(items[19].values, Values{7});
}

TEST_F(RecipeTest, BitsGoDownInTheOrderOfTheLinesAndComeUp)
{
    session();
    std::vector<RecipeItem> items = {
        {tag("D100"), {5}}, {tag("M0x3"), {1, 0, 1}}, {tag("D101"), {6}}, {tag("Y17"), {1}}};
    setElement("M", 1, 1);
    const TransferResult down = download(*m_session, items);
    EXPECT_TRUE(down.result.isDone());
    EXPECT_EQ(down.requests, 6);
    EXPECT_EQ(down.finished, 6);
    QByteArrayList written;
    for (const QByteArray &request : m_device.sent()) {
        if (isWrite(request))
            written.append(request.mid(3, 6));
    }
    EXPECT_EQ(written,
              (QByteArrayList{"101064", "050800", "050801", "050802", "101065", "05050F"}));
    EXPECT_EQ(element("M", 1), 0U);
    EXPECT_EQ(element("D", 101), 6U);

    setElement("M", 1, 1);
    const TransferResult up = upload(*m_session, items);
    EXPECT_TRUE(up.result.isDone());
    EXPECT_EQ(up.finished, up.requests);
    EXPECT_EQ(items[1].values, (Values{1, 1, 1}));
    EXPECT_EQ(items[2].values, Values{6});
    EXPECT_EQ(items[3].values, Values{1});
}

TEST_F(RecipeTest, BitThatFailsEndsTheDownload)
{
    session();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(3, 6) == "050801" ? QByteArray() : answer;
    };
    std::vector<RecipeItem> items = {
        {tag("D100"), {5}}, {tag("M0x3"), {1, 1, 1}}, {tag("D101"), {6}}};
    const TransferResult down = download(*m_session, items);
    EXPECT_EQ(down.result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(down.finished, 2);
    EXPECT_EQ(down.unsure, 1);
    EXPECT_EQ(down.failedName, "1#M1");
    EXPECT_EQ(element("D", 101), 0U);

    m_spoil = silence;
    const TransferResult up = upload(*m_session, items);
    EXPECT_EQ(up.result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(items[1].values, (Values{1, 1, 1}));
}

TEST_F(RecipeTest, EmptyRecipeSendsNothing)
{
    session();
    EXPECT_TRUE(download(*m_session, {}).result.isDone());
    EXPECT_TRUE(m_device.sent().empty());
}

TEST_F(RecipeTest, RecipeDownloadMakesTheWordsUnread)
{
    session();
    poll({"D100"});
    m_session->step();
    download(*m_session, {{tag("D100"), {4}}});
    EXPECT_EQ(m_session->state(tag("D100")).quality, Quality::Unread);
}

TEST_F(RecipeTest, DownloadThatIsStoppedBetweenTwoAttemptsIsUnknown)
{
    session();
    m_spoil = silence;
    m_session->setObserver([this](const Exchange &) { m_stop = true; });
    const TransferResult down = download(*m_session, {{tag("D100"), {4}}});
    EXPECT_EQ(down.result.outcome, Outcome::Unknown);
    EXPECT_EQ(down.failedName, "1#D100");
}

TEST_F(RecipeTest, RequestsOnTheirWayAreNotTakenForEntries)
{
    session();
    std::uint32_t value = 0;
    for (const char *polled : {"D0", "CV2200", "2#D100"}) {
        m_spoil = silence;
        poll({polled});
        m_session->step(); // once, and it will be sent again
        m_spoil = nullptr;
        const TransferResult down = download(*m_session, {{tag("D100"), {++value}}});
        EXPECT_TRUE(down.result.isDone()) << polled;
        EXPECT_EQ(down.finished, 1) << polled;
        EXPECT_EQ(element("D", 100), value) << polled;
    }
}

TEST_F(RecipeTest, PolledReadOfAnEntrysOwnWordIsNotTakenForTheEntry)
{
    session();
    int attempts = 0; // the second is the polled read's, sent again
    m_spoil = [&attempts](const QByteArray &, const QByteArray &answer) {
        return ++attempts == 2 ? answer : QByteArray();
    };
    poll({"D100"});
    m_session->step();
    std::vector<RecipeItem> items = {{tag("D100"), {}}, {tag("D200"), {}}};
    const TransferResult up = upload(*m_session, items);
    EXPECT_EQ(up.result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(up.finished, 0);
    EXPECT_EQ(up.failedName, "1#D100");
}

TEST_F(RecipeTest, EntryThatIsRefusedOnlyBehindAnUnansweredAttemptIsUnknown)
{
    session();
    int attempts = 0; // the first is carried out, but its answer gets lost
    m_spoil = [&attempts](const QByteArray &, const QByteArray &) {
        return ++attempts == 1 ? QByteArray() : QByteArray(":01900669\r\n");
    };
    const TransferResult down = download(*m_session, {{tag("D100"), {4}}});
    EXPECT_EQ(element("D", 100), 4U);
    EXPECT_EQ(down.result.outcome, Outcome::Unknown);
    EXPECT_EQ(down.failedName, "1#D100");
}

TEST_F(RecipeTest, RecipeBeyondTheBufferIsRefusedBeforeAnythingIsSent)
{
    session();
    std::vector<RecipeItem> items(4, {tag("D0x10000"), Values(10000, 1)});
    try {
        upload(*m_session, items);
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        EXPECT_STREQ(error.what(), "the recipe has 40000 words, but its buffer holds 32768: divide "
                                   "it into several files");
    }
    EXPECT_TRUE(m_device.sent().empty());
}

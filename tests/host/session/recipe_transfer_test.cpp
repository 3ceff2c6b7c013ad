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
    EXPECT_EQ(recipeRanges(items, 5),
              (std::vector<kmr::ElementRange>{{1, "D", 100, 4}, {1, "D", 104, 4}}));
    EXPECT_EQ(download(*m_session, items).finished, 2);
    EXPECT_EQ(element("D", 107), 1U);
    EXPECT_THROW(recipeRanges(items, 1), Error);
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

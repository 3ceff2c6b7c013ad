#include "host/session/recipe_transfer.h"

#include "host/error.h"
#include "tests/host/session_fixture.h"

using namespace kmr;
using Outcome = RequestResult::Outcome;

namespace {

using RecipeTest = SessionTest;

std::string faultOf(const QString &file)
{
    try {
        parseRecipe(file, "f", TagReader(library(), 1), RecipeValues::Needed);
    } catch (const Error &error) {
        return error.what();
    }
    return "none";
}

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
    EXPECT_EQ(down.failedName, "D108");
    EXPECT_EQ(element("D", 116), 0U);

    const TransferResult up = upload(*m_session, items);
    EXPECT_EQ(up.failedName, "D108");
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
    EXPECT_EQ(down.failedName, "D108");

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
    EXPECT_EQ(down.failedName, "D100");
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
    EXPECT_EQ(up.failedName, "D100");
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
    EXPECT_EQ(down.failedName, "D100");
}

TEST_F(RecipeTest, RecipeBeyondTheBufferIsRefusedBeforeAnythingIsSent)
{
    session();
    std::vector<RecipeItem> items(4, {tag("D0x10000"), Values(10000, 1)});
    try {
        upload(*m_session, items);
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_EQ(error.code(), ExitCode::Usage);
        EXPECT_STREQ(error.what(), "the recipe has 40000 words, but its buffer holds 32768: divide "
                                   "it into several files");
    }
    EXPECT_TRUE(m_device.sent().empty());
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

TEST(RecipeFile, TextKeepsItsCommasAndBlanks)
{
    const TagReader reader(library(), 1);
    const auto items = parseRecipe("D100x4/text,\"a, b \"\n", "f", reader, RecipeValues::Needed);
    EXPECT_EQ(items[0].values, (Values{0x2C61, 0x6220, 0x0020, 0}));
    EXPECT_EQ(formatRecipe(items), "tag,value\nD100x4/text,\"a, b \"\n");
}

TEST(RecipeFile, NewValuesLeaveAllElseAsItIs)
{
    const QString text = "# flour, for the night\r\n\r\n tag,value,\r\n\t# salt\r\n D100 , 250\r\n"
                         "D110x3,1,2,3\r\n\"D120x2/text\",\"a, b\"\r\nCV2200\r\nD130";
    auto items = parseRecipe(text, "f", TagReader(library(), 1), RecipeValues::Ignored);
    ASSERT_EQ(items.size(), 5U);
    items[0].values = {7};
    items[1].values = {4, 5, 6};
    items[2].values = {0x2C63, 0}; // "c,"
    items[3].values = {70000};
    items[4].values = {8};
    EXPECT_EQ(withValues(text, items),
              "# flour, for the night\r\n\r\n tag,value,\r\n\t# salt\r\n D100 ,7\r\n"
              "D110x3,4 5 6\r\n\"D120x2/text\",\"c,\"\r\nCV2200,70000\r\nD130,8");
}

TEST(RecipeFile, ColumnBehindTheValuesIsRefusedForAnUploadAsForADownload)
{
    const TagReader reader(library(), 1);
    for (const char *line : {"D100,250,flour", "D100,,flour", "D100/float32,21,5",
                             "D110x3,1 2 3,flour", "D110x5,1 2 3,flour", "D120x2/text,ab,flour"}) {
        EXPECT_THROW(parseRecipe(line, "f", reader, RecipeValues::Needed), Error) << line;
        EXPECT_THROW(parseRecipe(line, "f", reader, RecipeValues::Ignored), Error) << line;
    }
    EXPECT_EQ(parseRecipe("D100,250,", "f", reader, RecipeValues::Ignored).size(), 1U);
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
        EXPECT_NE(text.find("mixer.csv:3: D101 has no value"), std::string::npos) << text;
        EXPECT_NE(text.find("mixer.csv:4: M0 can't be part"), std::string::npos) << text;
    }
}

TEST(RecipeFile, ElementThatStandsTwiceIsNamedWithBothLines)
{
    EXPECT_EQ(faultOf("tag,value\nD100x3,1 2 3\n\nD101,5\n"),
              "f:4: D101 stands twice, first in line 2");
    const std::string both = faultOf("D100,bad\nD99x3,1 2 3\n");
    EXPECT_NE(both.find("f:1: bad value"), std::string::npos) << both;
    EXPECT_NE(both.find("f:2: D100 stands twice, first in line 1"), std::string::npos) << both;
    EXPECT_EQ(faultOf("D100x2,1 2\nD102,3\n2#D100,4\nTV100,5\nCV2201,6\nCV101,7\n"), "none");
    EXPECT_THROW(parseRecipe("D100\n1#D100\n", "f", TagReader(library(), 1), RecipeValues::Ignored),
                 Error);
}

TEST(RecipeFile, TagsOfANewRecipeNameEachElementOnce)
{
    const TagReader reader(library(), 1);
    EXPECT_EQ(recipeOf({reader.read("D100x3"), reader.read("D103")}).size(), 2U);
    try {
        recipeOf({reader.read("D100x3"), reader.read("D102")});
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_EQ(error.code(), ExitCode::Usage);
        EXPECT_STREQ(error.what(), "D102 stands twice, first in D100x3");
    }
    EXPECT_THROW(recipeOf({reader.read("M0")}), Error);
}

TEST(RecipeFile, TextWithoutItsFieldHasNoValueAndAnEmptyOneIsEmpty)
{
    EXPECT_EQ(faultOf("D300x4/text\n"), "f:1: D300x4/text has no value");
    const auto items =
        parseRecipe("D300x2/text,\n", "f", TagReader(library(), 1), RecipeValues::Needed);
    EXPECT_EQ(items[0].values, (Values{0, 0}));
    EXPECT_EQ(formatRecipe(items), "tag,value\nD300x2/text,\n");
}

TEST(RecipeFile, TextWithCommasNeedsQuotes)
{
    EXPECT_EQ(
        faultOf("D300x4/text,ab, cd\n"),
        "f:1: D300x4/text has 2 values, expected one text (a field with commas needs quotes)");
    EXPECT_EQ(faultOf("D300x4/text,\"ab, cd\"\n"), "none");
    EXPECT_EQ(faultOf("D300x4,1,2,3, 4\n"), "none");
}

TEST(RecipeFile, FloatThatIsNoNumberComesBackAsItWas)
{
    const TagReader reader(library(), 1);
    const std::vector<RecipeItem> items = {{reader.read("D100/float32"), {0xFFFF, 0xFFFF}},
                                           {reader.read("D102/bcd"), {0x000A}}};
    const QString file = formatRecipe(items);
    EXPECT_EQ(file, "tag,value\nD100/float32,0xFFFFFFFF\nD102/bcd,0x000A\n");
    const auto read = parseRecipe(file, "f", reader, RecipeValues::Needed);
    EXPECT_EQ(read[0].values, items[0].values);
    EXPECT_EQ(read[1].values, items[1].values);
}

TEST(RecipeFile, ValuesMayBeMissingForAnUpload)
{
    const TagReader reader(library(), 1);
    EXPECT_EQ(parseRecipe("D100\nD101,\n", "f", reader, RecipeValues::Ignored).size(), 2U);
    EXPECT_THROW(parseRecipe("# nothing\n", "f", reader, RecipeValues::Ignored), Error);
}

TEST(RecipeFile, WithOnlyBadLinesIsNotCalledEmptyAsWell)
{
    try {
        parseRecipe("M0,1\n", "f", TagReader(library(), 1), RecipeValues::Needed);
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_STREQ(error.what(), "f:1: M0 can't be part of a recipe: recipes hold words and "
                                   "counters (TV, CV, CV2, D)");
    }
}

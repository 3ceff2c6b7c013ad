// Replies to recipe uploads: the words are stored in the host's recipe buffer and in the store.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class RecipeReply : public DriverTest {
protected:
    // Sends the upload of the entry at the cursor.
    void upload()
    {
        status[60116] = 1;
        ASSERT_EQ(intf_getSendFrame(nullptr), 1);
        ASSERT_EQ(driver.sendState, 6);
    }

    void uploadAnswered(const QByteArray &reply)
    {
        upload();
        EXPECT_EQ(answer(reply), 1);
    }
};

} // namespace

TEST_F(RecipeReply, WordsGoToBufferAndStoreAndEachIsReportedChangedOrNot)
{
    recipe.assign(recipe.size(), 0xEE);
    driver.recipeVars << recipeEntry("D", 100, 3, 10);
    driver.dataAreas << watchedWord("D", 100);
    uploadAnswered(":0103061234ABCD000038\r\n");
    EXPECT_EQ(recipeBytes(19, 8), Bytes({0xEE, 0x34, 0x12, 0xCD, 0xAB, 0, 0, 0xEE}));
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0xCD, 0xAB, 0, 0}));
    EXPECT_EQ(told(), "D:100 0/-1#RWI:10 0/-1#RWI:11 0/-1#RWI:12");
}

TEST_F(RecipeReply, CountersFillTwoWordsEachLowWordFirstAndAreReportedOneApart)
{
    recipe.assign(recipe.size(), 0xEE);
    driver.recipeVars << recipeEntry("CV2", 200, 4, 0);
    uploadAnswered(":01030812345678FFFEFDFCEA\r\n");
    EXPECT_EQ(recipeBytes(0, 9), Bytes({0x78, 0x56, 0x34, 0x12, 0xFC, 0xFD, 0xFE, 0xFF, 0xEE}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({0xFC, 0xFD, 0xFE, 0xFF}));
    EXPECT_EQ(told(), "0/-1#RWI:0 0/-1#RWI:1");
}

TEST_F(RecipeReply, EntryBeforeTheBufferAndNoBufferFillTheStoreOnly)
{
    driver.recipeVars << recipeEntry("D", 100, 1, -1) << recipeEntry("D", 200, 1, 10);
    uploadAnswered(":0103021234B4\r\n");
    driver.recipeBuffer = nullptr;
    uploadAnswered(":0103021234B4\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("D", 200), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, BitsGoToTheStoreOnly)
{
    driver.recipeVars << recipeEntry("M", 0, 1, 10);
    uploadAnswered(":0102021234B5\r\n");
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0, 0}));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x12, 0x34, 0, 0}));
}

TEST_F(RecipeReply, OtherReadsLeaveTheBufferAlone)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10);
    for (const char *area : {"D", "CV2"}) {
        for (const qint32 state : {0, 2, 3, 4, 5}) {
            readInFlight(area, 100, 1);
            driver.sendState = state;
            answer(":0103021234B4\r\n");
        }
    }
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, CursorThatHasNoEntryLeftFillsTheStoreOnly)
{
    driver.recipeVars << recipeEntry("CV2", 200, 2, 10);
    upload();
    driver.recipeCursor = 1;
    EXPECT_EQ(answer(":01030412345678E4\r\n"), 1);
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({0x78, 0x56, 0x34, 0x12}));
    upload();
    driver.recipeVars.clear();
    EXPECT_EQ(answer(":01030422222222FA\r\n"), 1);
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({0x22, 0x22, 0x22, 0x22}));
    EXPECT_EQ(recipeBytes(20, 4), Bytes({0, 0, 0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, EachReplyFillsTheEntryAtTheCursorAndTheLastEndsTheTransfer)
{
    intf_setAddrValueChangeCallBack(nullptr); // without a callback
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("D", 200, 1, 20);
    uploadAnswered(":0103021111D8\r\n");
    EXPECT_EQ(status[60116], 1);
    EXPECT_EQ(driver.recipeCursor, 1);
    uploadAnswered(":0103022222B6\r\n");
    EXPECT_EQ(status[60116], 0);
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0x11, 0x11}));
    EXPECT_EQ(recipeBytes(40, 2), Bytes({0x22, 0x22}));
}

TEST_F(RecipeReply, AcknowledgedDownloadStepsOnAndSettlesNothing)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("D", 200, 1, 20);
    driver.dataAreas << written(watchedWord("D", 100), {0});
    status[60115] = 1;
    ASSERT_EQ(intf_getSendFrame(nullptr), 1);
    EXPECT_EQ(answer(":0110106400017A\r\n"), 1);
    EXPECT_EQ(driver.recipeCursor, 1);
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
}

// Replies to recipe uploads: the words go to the host's recipe buffer as well as to the store.
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class RecipeReply : public DriverTest {
protected:
    static _RCP_VAR_PRO recipeEntry(const char *area, qint32 address, qint32 count, qint32 bufWord)
    {
        _RCP_VAR_PRO entry;
        entry.devId = 1;
        entry.station = 1;
        entry.area = area;
        entry.address = address;
        entry.count = count;
        entry.bufWord = bufWord;
        return entry;
    }

    // Puts the upload of the entry at the cursor in flight.
    void upload()
    {
        status[60116] = 1;
        ASSERT_EQ(intf_getSendFrame(nullptr), 1);
        ASSERT_EQ(driver.sendState, 6);
    }

    Bytes recipeBytes(size_t first, size_t count) const
    {
        return Bytes(recipe.begin() + static_cast<long>(first),
                     recipe.begin() + static_cast<long>(first + count));
    }
};

} // namespace

TEST_F(RecipeReply, WordsGoToTheBufferLowByteFirst)
{
    driver.recipeVars << recipeEntry("D", 100, 2, 10);
    upload();
    EXPECT_EQ(answer(":0103041234ABCD3A\r\n"), 1);
    EXPECT_EQ(recipeBytes(19, 6), Bytes({0, 0x34, 0x12, 0xCD, 0xAB, 0}));
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0xCD, 0xAB, 0, 0}));
}

TEST_F(RecipeReply, EachWordIsReported)
{
    driver.recipeVars << recipeEntry("TV", 100, 2, 10);
    upload();
    answer(":0103041234ABCD3A\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(0, -1, "RWI", 10), Report(0, -1, "RWI", 11)}));
}

TEST_F(RecipeReply, WordsThatDidNotChangeAreReportedToo)
{
    driver.recipeVars << recipeEntry("CV", 100, 1, 10);
    upload();
    answer(":0103020000FA\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(0, -1, "RWI", 10)}));
}

TEST_F(RecipeReply, ChangeIsReportedBeforeTheBufferWord)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10);
    driver.dataAreas << watchedWord("D", 100);
    upload();
    answer(":0103021234B4\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 100), Report(0, -1, "RWI", 10)}));
}

TEST_F(RecipeReply, CountersFillTwoWordsEachLowWordFirst)
{
    driver.recipeVars << recipeEntry("CV2", 200, 4, 10);
    upload();
    answer(":01030812345678FFFEFDFCEA\r\n");
    EXPECT_EQ(recipeBytes(19, 10), Bytes({0, 0x78, 0x56, 0x34, 0x12, 0xFC, 0xFD, 0xFE, 0xFF, 0}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({0xFC, 0xFD, 0xFE, 0xFF}));
}

TEST_F(RecipeReply, CountersAreReportedOneApart)
{
    driver.recipeVars << recipeEntry("CV2", 200, 4, 10);
    upload();
    answer(":01030812345678FFFEFDFCEA\r\n");
    EXPECT_EQ(reports(), (std::vector<Report>{Report(0, -1, "RWI", 10), Report(0, -1, "RWI", 11)}));
}

TEST_F(RecipeReply, BytesAroundTheEntryStay)
{
    recipe.assign(recipe.size(), 0xEE);
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("CV2", 200, 2, 20);
    upload();
    answer(":0103021234B4\r\n");
    upload();
    answer(":01030412345678E4\r\n");
    EXPECT_EQ(recipeBytes(19, 4), Bytes({0xEE, 0x34, 0x12, 0xEE}));
    EXPECT_EQ(recipeBytes(39, 6), Bytes({0xEE, 0x78, 0x56, 0x34, 0x12, 0xEE}));
}

TEST_F(RecipeReply, EntryAtTheStartOfTheBufferIsFilled)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 0);
    upload();
    answer(":0103021234B4\r\n");
    EXPECT_EQ(recipeBytes(0, 2), Bytes({0x34, 0x12}));
    EXPECT_EQ(reports(), (std::vector<Report>{Report(0, -1, "RWI", 0)}));
}

TEST_F(RecipeReply, EntryBeforeTheBufferFillsTheStoreOnly)
{
    driver.recipeVars << recipeEntry("D", 100, 1, -1);
    upload();
    EXPECT_EQ(answer(":0103021234B4\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, BitsGoToTheStoreOnly)
{
    driver.recipeVars << recipeEntry("M", 0, 1, 10);
    upload();
    answer(":0102021234B5\r\n");
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0, 0}));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x12, 0x34, 0, 0}));
}

TEST_F(RecipeReply, OtherReadsLeaveTheBufferAlone)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10);
    for (const qint32 state : {0, 2, 3, 4, 5}) {
        readInFlight("D", 100, 1);
        driver.sendState = state;
        answer(":0103021234B4\r\n");
    }
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, EntryAtTheCursorTellsWhereWordsGo)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("D", 200, 1, 20);
    driver.recipeCursor = 1;
    upload();
    answer(":0103021234B4\r\n");
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0, 0}));
    EXPECT_EQ(recipeBytes(40, 2), Bytes({0x34, 0x12}));
}

TEST_F(RecipeReply, CursorOutsideTheEntriesFillsTheStoreOnly)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10);
    upload();
    driver.recipeVars.clear();
    EXPECT_EQ(answer(":0103021234B4\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, CursorBehindTheLastEntryFillsTheStoreOnly)
{
    driver.recipeVars << recipeEntry("CV2", 200, 2, 10);
    upload();
    driver.recipeCursor = 1;
    EXPECT_EQ(answer(":01030412345678E4\r\n"), 1);
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({0x78, 0x56, 0x34, 0x12}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, WithoutABufferTheStoreIsFilledOnly)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10);
    driver.recipeBuffer = nullptr;
    upload();
    EXPECT_EQ(answer(":0103021234B4\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(RecipeReply, WithoutACallbackTheBufferIsFilledInSilence)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10);
    intf_setAddrValueChangeCallBack(nullptr);
    upload();
    answer(":0103021234B4\r\n");
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0x34, 0x12}));
}

TEST_F(RecipeReply, LastEntryEndsTheTransfer)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("D", 200, 1, 20);
    upload();
    answer(":0103021111D8\r\n");
    EXPECT_EQ(status[60116], 1);
    upload();
    answer(":0103022222B6\r\n");
    EXPECT_EQ(status[60116], 0);
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(recipeBytes(20, 2), Bytes({0x11, 0x11}));
    EXPECT_EQ(recipeBytes(40, 2), Bytes({0x22, 0x22}));
}

TEST_F(RecipeReply, GivenUpEntryEndsTheTransfer)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("D", 200, 1, 20);
    driver.retryLimit = 1;
    upload();
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(status[60116], 0);
    EXPECT_EQ(driver.recipeCursor, 0);
    EXPECT_EQ(entryOf("D", 100).commFailed, 1);
}

TEST_F(RecipeReply, AcknowledgedDownloadStepsOnAndSettlesNothing)
{
    driver.recipeVars << recipeEntry("D", 100, 1, 10) << recipeEntry("D", 200, 1, 20);
    driver.dataAreas << watchedWord("D", 100);
    driver.dataAreas[0].writePending = 1;
    status[60115] = 1;
    ASSERT_EQ(intf_getSendFrame(nullptr), 1);
    EXPECT_EQ(answer(":0110106400017A\r\n"), 1);
    EXPECT_EQ(driver.recipeCursor, 1);
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
}

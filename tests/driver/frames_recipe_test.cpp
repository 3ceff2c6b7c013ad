// The choice of the next frame to send while the host asks for a recipe transfer.
#include "driver/frames.h"

#include "driver_fixture.h"

namespace {

class RecipeFrame : public DriverTest {
protected:
    // What is sent next, once the reply to it has taken the frame from the list.
    static std::string nextAnswered()
    {
        const std::string text = nextFrame();
        EXPECT_LE(driver.frames.size(), 1);
        driver.frames.clear();
        return text;
    }

    static VARIABLE bitWrite(qint32 address)
    {
        VARIABLE var = variable("M", address, 1);
        var.data[0] = 1;
        return var;
    }

    void addRecipeEntry(const char *area, qint32 address, qint32 count, qint32 bufWord)
    {
        _RCP_VAR_PRO entry;
        entry.devId = 1;
        entry.station = 1;
        entry.area = area;
        entry.address = address;
        entry.count = count;
        entry.bufWord = bufWord;
        driver.recipeVars.append(entry);
    }

    void requestDownload()
    {
        status[60115] = 1;
    }
    void requestUpload()
    {
        status[60116] = 1;
    }
};

} // namespace

TEST_F(RecipeFrame, DownloadSendsTheRecipeEntryAtTheCursor)
{
    addRecipeEntry("D", 10, 1, 0);
    addRecipeEntry("D", 20, 2, 5);
    recipe[10] = 0x34;
    recipe[11] = 0x12;
    recipe[12] = 0x78;
    recipe[13] = 0x56;
    driver.recipeCursor = 1;
    requestDownload();
    EXPECT_EQ(nextFrame(), ":0110101400020412345678B1\r\n");
    EXPECT_EQ(driver.sendState, 5);
    EXPECT_EQ(driver.recipeCursor, 1);
}

TEST_F(RecipeFrame, UploadReadsTheRecipeEntryAtTheCursor)
{
    addRecipeEntry("D", 10, 1, 0);
    addRecipeEntry("D", 20, 2, 5);
    recipe[10] = 0x34;
    driver.recipeCursor = 1;
    requestUpload();
    EXPECT_EQ(nextFrame(), ":010310140002D6\r\n");
    EXPECT_EQ(driver.sendState, 6);
    EXPECT_EQ(driver.curVar.data[1], 0);
}

TEST_F(RecipeFrame, RecipeEntryLeavesTheTagAsItWas)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.curVar.reqTag = 77;
    requestDownload();
    nextFrame();
    EXPECT_EQ(driver.frames.at(0).var.reqTag, 77);
}

TEST_F(RecipeFrame, DownloadGoesBeforeUpload)
{
    addRecipeEntry("D", 10, 1, 0);
    requestDownload();
    requestUpload();
    EXPECT_EQ(nextFrame(), ":0110100A0001020000D2\r\n");
    EXPECT_EQ(driver.sendState, 5);
}

TEST_F(RecipeFrame, RecipeGoesBeforeAllListsAndKeepsTheBurst)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.pendingWrites << bitWrite(5);
    driver.burstCount = 3;
    requestUpload();
    EXPECT_EQ(nextFrame(), ":0103100A0001E1\r\n");
    EXPECT_EQ(driver.burstCount, 3);
}

TEST_F(RecipeFrame, OnlyAByteOfOneRequestsARecipe)
{
    addRecipeEntry("D", 10, 1, 0);
    for (int value = 0; value <= 255; ++value) {
        for (const size_t request : {60115u, 60116u}) {
            status[request] = static_cast<quint8>(value);
            EXPECT_EQ(nextAnswered().empty(), value != 1) << request << " holds " << value;
            status[request] = 0;
        }
    }
}

TEST_F(RecipeFrame, NeighbouringStatusBytesRequestNothing)
{
    addRecipeEntry("D", 10, 1, 0);
    status[60114] = 1;
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(RecipeFrame, RecipeRequestWithoutEntriesOrHistorySendsNothing)
{
    requestDownload();
    driver.cyclicReads << variable("D", 0, 1);
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(driver.sendState, 0);
    status[60115] = 0;
    requestUpload();
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(RecipeFrame, WriteIsRepeatedBehindTheLastRecipeEntry)
{
    driver.curVar = bitWrite(5);
    requestDownload();
    driver.sendState = 2;
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(driver.sendState, 2);
    driver.sendState = 5;
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(driver.sendState, 5);
}

TEST_F(RecipeFrame, ReadIsRepeatedBehindTheLastRecipeEntry)
{
    driver.curVar = variable("D", 3, 1);
    requestUpload();
    for (const qint32 state : {3, 4, 6}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), ":010310030001E8\r\n");
        EXPECT_EQ(driver.sendState, state);
    }
}

TEST_F(RecipeFrame, UnknownStateIsNotRepeated)
{
    driver.curVar = variable("D", 3, 1);
    requestDownload();
    for (const qint32 state : {-1, 0, 1, 7}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), "");
    }
}

TEST_F(RecipeFrame, RepeatedCounterReadIsHalvedAgain)
{
    driver.curVar = variable("CV2", 200, 4);
    driver.sendState = 6;
    requestUpload();
    EXPECT_EQ(nextAnswered(), ":01030EC8000224\r\n");
    EXPECT_EQ(nextAnswered(), ":01030EC8000125\r\n");
}

TEST_F(RecipeFrame, CursorBehindTheEntriesRepeatsTheLastRequest)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.recipeCursor = 1;
    driver.curVar = variable("D", 3, 1);
    driver.sendState = 4;
    requestUpload();
    EXPECT_EQ(nextFrame(), ":010310030001E8\r\n");
    EXPECT_EQ(driver.sendState, 4);
}

TEST_F(RecipeFrame, WithoutAStatusBlockNoRecipeIsSeen)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.cyclicReads << variable("D", 0, 1);
    driver.hostStatus = nullptr;
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
}

TEST_F(RecipeFrame, WithoutAMutexNoRecipeIsSeen)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.cyclicReads << variable("D", 0, 1);
    requestDownload();
    driver.hostMutex = nullptr;
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
}

TEST_F(RecipeFrame, WithoutARecipeBufferADownloadCarriesZeros)
{
    addRecipeEntry("D", 10, 2, 3);
    driver.recipeBuffer = nullptr;
    requestDownload();
    EXPECT_EQ(nextFrame(), ":0110100A00020400000000CF\r\n");
}

TEST_F(RecipeFrame, RecipeEntryBeyondTheDataIsCopiedAsFarAsItFits)
{
    recipe[1022] = 0xCD;
    recipe[1023] = 0xAB;
    recipe[1024] = 0xEE;
    addRecipeEntry("CV2", 200, 600, 0);
    requestDownload();
    EXPECT_EQ(nextFrame(), ":01100EC8012CB0000000003C\r\n");
    EXPECT_EQ(driver.curVar.data[1022], 0xAB);
    EXPECT_EQ(driver.curVar.data[1023], 0xCD);
}

TEST_F(RecipeFrame, RecipeEntryBeyondTheFrameIsHandedOutWithoutText)
{
    addRecipeEntry("D", 10, 252, 0);
    requestDownload();
    FRAME_PRO frame;
    frame.frameLen = 99;
    EXPECT_EQ(intf_getSendFrame(&frame), 1);
    EXPECT_EQ(frame.frameLen, 0);
    EXPECT_EQ(frame.var.count, 252);
}

TEST_F(RecipeFrame, FrameInFlightComesBeforeARecipe)
{
    driver.cyclicReads << variable("D", 0, 1);
    nextFrame();
    addRecipeEntry("D", 9, 1, 0);
    requestDownload();
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.sendState, 4);
}

// The choice of the next frame to send.
#include "driver/frames.h"

#include "driver_fixture.h"

#include <chrono>
#include <future>

namespace
{

class SendFrame : public DriverTest
{
protected:
    // What is sent next, or an empty text when there is nothing.
    static std::string next()
    {
        FRAME_PRO frame;
        return intf_getSendFrame(&frame) == 1 ? textOf(frame) : std::string();
    }

    // The same, once the reply to it has taken the frame from the list.
    static std::string nextAnswered()
    {
        const std::string text = next();
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

TEST_F(SendFrame, NothingToSendReturns0)
{
    driver.sendState = 4;
    FRAME_PRO frame;
    frame.frameLen = 99;
    EXPECT_EQ(intf_getSendFrame(&frame), 0);
    EXPECT_EQ(frame.frameLen, 99);
    EXPECT_EQ(driver.sendState, 0);
}

TEST_F(SendFrame, SameFrameIsHandedOutUntilItsReply)
{
    driver.cyclicReads << variable("D", 0, 1) << variable("D", 50, 1);
    EXPECT_EQ(next(), ":010310000001EB\r\n");
    EXPECT_EQ(next(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.frames.size(), 1);
}

TEST_F(SendFrame, FrameInFlightComesBeforeEverythingElse)
{
    driver.cyclicReads << variable("D", 0, 1);
    next();
    addRecipeEntry("D", 9, 1, 0);
    requestDownload();
    driver.pendingWrites << bitWrite(0);
    EXPECT_EQ(next(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.sendState, 4);
    EXPECT_EQ(driver.burstCount, 0);
}

TEST_F(SendFrame, FrontOfSeveralFramesIsHandedOut)
{
    VARIABLE first = variable("D", 0, 1);
    VARIABLE second = variable("D", 1, 1);
    getReadFrame(first);
    getReadFrame(second);
    EXPECT_EQ(next(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.frames.size(), 2);
}

TEST_F(SendFrame, EveryFieldIsCopiedOut)
{
    VARIABLE var = variable("D", 7, 2);
    var.reqTag = 4;
    var.data[1023] = 0xA5;
    driver.cyclicReads << var;
    FRAME_PRO frame;
    ASSERT_EQ(intf_getSendFrame(&frame), 1);
    EXPECT_EQ(textOf(frame), ":010310070002E3\r\n");
    EXPECT_EQ(frame.replyLen, 19);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(frame.replyDataLen, 8);
    EXPECT_EQ(frame.var.reqTag, 4);
    EXPECT_EQ(frame.var.address, 7);
    EXPECT_EQ(frame.var.data[1023], 0xA5);
}

TEST_F(SendFrame, SpareFieldIsCarriedAlong)
{
    FRAME_PRO queued;
    queued.frameSpare = 1234;
    driver.frames << queued;
    FRAME_PRO frame;
    ASSERT_EQ(intf_getSendFrame(&frame), 1);
    EXPECT_EQ(frame.frameSpare, 1234);
}

TEST_F(SendFrame, WithoutAnOutputTheFrameIsStillChosen)
{
    driver.cyclicReads << variable("D", 0, 1);
    EXPECT_EQ(intf_getSendFrame(nullptr), 1);
    EXPECT_EQ(driver.frames.size(), 1);
}

TEST_F(SendFrame, CyclicBlockIsReadAndStaysInItsList)
{
    driver.cyclicReads << variable("D", 0, 1) << variable("D", 50, 1);
    driver.burstCount = 2;
    EXPECT_EQ(next(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.sendState, 4);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(driver.curVar.address, 0);
    EXPECT_EQ(driver.cyclicReads.size(), 2);
}

TEST_F(SendFrame, PendingWriteIsWrittenAndStaysInItsList)
{
    driver.pendingWrites << bitWrite(5) << bitWrite(6);
    EXPECT_EQ(next(), ":01050805FF00EE\r\n");
    EXPECT_EQ(driver.sendState, 2);
    EXPECT_EQ(driver.burstCount, 1);
    EXPECT_EQ(driver.curVar.address, 5);
    EXPECT_EQ(driver.pendingWrites.size(), 2);
}

TEST_F(SendFrame, OneShotReadIsReadAndStaysInItsList)
{
    driver.pendingReads << variable("D", 3, 2) << variable("D", 9, 1);
    EXPECT_EQ(next(), ":010310030002E7\r\n");
    EXPECT_EQ(driver.sendState, 3);
    EXPECT_EQ(driver.burstCount, 1);
    EXPECT_EQ(driver.curVar.address, 3);
    EXPECT_EQ(driver.pendingReads.size(), 2);
}

TEST_F(SendFrame, WriteGoesBeforeOneShotReadAndCyclicBlock)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.pendingWrites << bitWrite(5);
    EXPECT_EQ(next(), ":01050805FF00EE\r\n");
}

TEST_F(SendFrame, OneShotReadGoesBeforeCyclicBlock)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    EXPECT_EQ(next(), ":010310030001E8\r\n");
}

TEST_F(SendFrame, CounterOfACyclicBlockIsHalvedInTheRequestOnly)
{
    driver.cyclicReads << variable("CV2", 200, 4);
    EXPECT_EQ(next(), ":01030EC8000224\r\n");
    EXPECT_EQ(driver.curVar.count, 2);
    EXPECT_EQ(driver.cyclicReads.at(0).count, 4);
}

TEST_F(SendFrame, AfterThreeWritesACyclicBlockIsPolled)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingWrites << bitWrite(5);
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(nextAnswered(), ":010310000001EB\r\n");
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
}

TEST_F(SendFrame, OneShotReadsCountAgainstTheSameAllowance)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.burstCount = 2;
    EXPECT_EQ(nextAnswered(), ":010310030001E8\r\n");
    EXPECT_EQ(nextAnswered(), ":010310000001EB\r\n");
    EXPECT_EQ(nextAnswered(), ":010310030001E8\r\n");
}

TEST_F(SendFrame, WithoutCyclicBlocksNothingIsSentAfterThree)
{
    driver.pendingWrites << bitWrite(5);
    driver.pendingReads << variable("D", 3, 1);
    driver.burstCount = 3;
    driver.sendState = 2;
    EXPECT_EQ(next(), "");
    EXPECT_EQ(next(), "");
    EXPECT_EQ(driver.sendState, 0);
    EXPECT_EQ(driver.burstCount, 3);
    EXPECT_EQ(driver.pendingWrites.size(), 1);
}

TEST_F(SendFrame, InitialisationEndsTheStall)
{
    driver.burstCount = 3;
    configure("1#0#0#3#8");
    driver.pendingWrites << bitWrite(5);
    EXPECT_EQ(next(), ":01050805FF00EE\r\n");
}

TEST_F(SendFrame, DownloadSendsTheRecipeEntryAtTheCursor)
{
    addRecipeEntry("D", 10, 1, 0);
    addRecipeEntry("D", 20, 2, 5);
    recipe[10] = 0x34;
    recipe[11] = 0x12;
    recipe[12] = 0x78;
    recipe[13] = 0x56;
    driver.recipeCursor = 1;
    requestDownload();
    EXPECT_EQ(next(), ":0110101400020412345678B1\r\n");
    EXPECT_EQ(driver.sendState, 5);
    EXPECT_EQ(driver.recipeCursor, 1);
}

TEST_F(SendFrame, UploadReadsTheRecipeEntryAtTheCursor)
{
    addRecipeEntry("D", 10, 1, 0);
    addRecipeEntry("D", 20, 2, 5);
    recipe[10] = 0x34;
    driver.recipeCursor = 1;
    requestUpload();
    EXPECT_EQ(next(), ":010310140002D6\r\n");
    EXPECT_EQ(driver.sendState, 6);
    EXPECT_EQ(driver.curVar.data[1], 0);
}

TEST_F(SendFrame, RecipeEntryLeavesTheTagAsItWas)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.curVar.reqTag = 77;
    requestDownload();
    next();
    EXPECT_EQ(driver.frames.at(0).var.reqTag, 77);
}

TEST_F(SendFrame, DownloadGoesBeforeUpload)
{
    addRecipeEntry("D", 10, 1, 0);
    requestDownload();
    requestUpload();
    EXPECT_EQ(next(), ":0110100A0001020000D2\r\n");
    EXPECT_EQ(driver.sendState, 5);
}

TEST_F(SendFrame, RecipeGoesBeforeAllListsAndKeepsTheBurst)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.pendingWrites << bitWrite(5);
    driver.burstCount = 3;
    requestUpload();
    EXPECT_EQ(next(), ":0103100A0001E1\r\n");
    EXPECT_EQ(driver.burstCount, 3);
}

TEST_F(SendFrame, OnlyAByteOfOneRequestsARecipe)
{
    addRecipeEntry("D", 10, 1, 0);
    status[60115] = 2;
    status[60116] = 255;
    EXPECT_EQ(next(), "");
}

TEST_F(SendFrame, NeighbouringStatusBytesRequestNothing)
{
    addRecipeEntry("D", 10, 1, 0);
    status[60114] = 1;
    EXPECT_EQ(next(), "");
}

TEST_F(SendFrame, RecipeRequestWithoutEntriesOrHistorySendsNothing)
{
    requestDownload();
    driver.cyclicReads << variable("D", 0, 1);
    EXPECT_EQ(next(), "");
    EXPECT_EQ(driver.sendState, 0);
    status[60115] = 0;
    requestUpload();
    EXPECT_EQ(next(), "");
}

TEST_F(SendFrame, WriteIsRepeatedBehindTheLastRecipeEntry)
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

TEST_F(SendFrame, ReadIsRepeatedBehindTheLastRecipeEntry)
{
    driver.curVar = variable("D", 3, 1);
    requestUpload();
    for (const qint32 state : {3, 4, 6}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), ":010310030001E8\r\n");
        EXPECT_EQ(driver.sendState, state);
    }
}

TEST_F(SendFrame, UnknownStateIsNotRepeated)
{
    driver.curVar = variable("D", 3, 1);
    requestDownload();
    for (const qint32 state : {-1, 0, 1, 7}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), "");
    }
}

TEST_F(SendFrame, RepeatedCounterReadIsHalvedAgain)
{
    driver.curVar = variable("CV2", 200, 4);
    driver.sendState = 6;
    requestUpload();
    EXPECT_EQ(nextAnswered(), ":01030EC8000224\r\n");
    EXPECT_EQ(nextAnswered(), ":01030EC8000125\r\n");
}

TEST_F(SendFrame, CursorBehindTheEntriesRepeatsTheLastRequest)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.recipeCursor = 1;
    driver.curVar = variable("D", 3, 1);
    driver.sendState = 4;
    requestUpload();
    EXPECT_EQ(next(), ":010310030001E8\r\n");
    EXPECT_EQ(driver.sendState, 4);
}

TEST_F(SendFrame, WithoutAStatusBlockNoRecipeIsSeen)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.cyclicReads << variable("D", 0, 1);
    driver.hostStatus = nullptr;
    EXPECT_EQ(next(), ":010310000001EB\r\n");
}

TEST_F(SendFrame, WithoutAMutexNoRecipeIsSeen)
{
    addRecipeEntry("D", 10, 1, 0);
    driver.cyclicReads << variable("D", 0, 1);
    requestDownload();
    driver.hostMutex = nullptr;
    EXPECT_EQ(next(), ":010310000001EB\r\n");
}

TEST_F(SendFrame, WithoutARecipeBufferADownloadCarriesZeros)
{
    addRecipeEntry("D", 10, 2, 3);
    driver.recipeBuffer = nullptr;
    requestDownload();
    EXPECT_EQ(next(), ":0110100A00020400000000CF\r\n");
}

TEST_F(SendFrame, RecipeEntryBeyondTheDataIsCopiedAsFarAsItFits)
{
    recipe[1022] = 0xCD;
    recipe[1023] = 0xAB;
    recipe[1024] = 0xEE;
    addRecipeEntry("CV2", 200, 600, 0);
    requestDownload();
    EXPECT_EQ(next(), ":01100EC8012CB0000000003C\r\n");
    EXPECT_EQ(driver.curVar.data[1022], 0xAB);
    EXPECT_EQ(driver.curVar.data[1023], 0xCD);
}

TEST_F(SendFrame, RecipeEntryBeyondTheFrameIsHandedOutWithoutText)
{
    addRecipeEntry("D", 10, 252, 0);
    requestDownload();
    FRAME_PRO frame;
    frame.frameLen = 99;
    EXPECT_EQ(intf_getSendFrame(&frame), 1);
    EXPECT_EQ(frame.frameLen, 0);
    EXPECT_EQ(frame.var.count, 252);
}

TEST_F(SendFrame, MutexIsFreeAfterwards)
{
    driver.cyclicReads << variable("D", 0, 1);
    next();
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
}

TEST_F(SendFrame, StatusBytesAreReadUnderTheMutex)
{
    addRecipeEntry("D", 10, 1, 0);
    mutex.lock();
    std::future<std::string> text = std::async(std::launch::async, next);
    EXPECT_EQ(text.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    requestUpload();
    mutex.unlock();
    EXPECT_EQ(text.get(), ":0103100A0001E1\r\n");
}

TEST_F(SendFrame, MutexIsNotTakenWhileAFrameIsInFlight)
{
    driver.cyclicReads << variable("D", 0, 1);
    next();
    const QMutexLocker locker(&mutex);
    EXPECT_EQ(next(), ":010310000001EB\r\n");
}

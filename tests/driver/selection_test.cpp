// The choice of the next frame to send, among the queues, the cyclic blocks and recipe transfers.
#include "driver/frames.h"

#include "driver_fixture.h"

#include <array>

namespace {

class SendFrame : public DriverTest {
protected:
    quint8 &download = status[60115];
    quint8 &upload = status[60116];
};

class RecipeFrame : public SendFrame {
protected:
    void SetUp() override
    {
        SendFrame::SetUp();
        driver.recipeVars << recipeEntry("D", 10, 1, 0) << recipeEntry("D", 20, 2, 5);
    }
};

} // namespace

// --- Getting a frame -----------------------------------------------------------------------------

TEST_F(SendFrame, NothingToSendLeavesEveryByteOfTheOutput)
{
    static FRAME_PRO frame; // static: its padding is defined too
    frame.var.area = "Q";
    memset(frame.frame, 0xA5, sizeof frame.frame);
    memset(frame.var.data, 0xA5, sizeof frame.var.data);
    frame.frameLen = frame.replyLen = frame.replyDataPos = frame.replyDataLen = -1;
    frame.frameSpare = frame.var.reqTag = frame.var.station = -1;
    frame.var.address = frame.var.count = -1;
    std::array<char, sizeof frame> before;
    memcpy(before.data(), static_cast<const void *>(&frame), sizeof frame);
    driver.sendState = 4;
    EXPECT_EQ(intf_getSendFrame(&frame), 0);
    EXPECT_EQ(memcmp(before.data(), static_cast<const void *>(&frame), sizeof frame), 0);
    EXPECT_EQ(driver.sendState, 0);
}

TEST_F(SendFrame, FrameInFlightIsHandedOutBeforeAnythingElse)
{
    driver.cyclicReads << variable("D", 0, 1) << variable("D", 50, 1);
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    driver.pendingWrites << bitWrite(0);
    driver.recipeVars << recipeEntry("D", 9, 1, 0);
    download = 1;
    const QMutexLocker locker(&mutex); // which is not taken now
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.frames.size(), 1);
    EXPECT_EQ(driver.sendState, 4);
    EXPECT_EQ(driver.burstCount, 0);
}

TEST_F(SendFrame, FrontOfSeveralFramesIsHandedOut)
{
    readInFlight("D", 0, 1);
    readInFlight("D", 1, 1);
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.frames.size(), 2);
}

TEST_F(SendFrame, EveryFieldIsCopiedOut)
{
    VARIABLE var = variable("D", 7, 2);
    var.reqTag = 4;
    var.data[1023] = 0xA5;
    getReadFrame(var);
    driver.frames[0].frameSpare = 1234;
    FRAME_PRO frame;
    ASSERT_EQ(intf_getSendFrame(&frame), 1);
    EXPECT_EQ(textOf(frame), ":010310070002E3\r\n");
    EXPECT_EQ(frame.replyLen, 19);
    EXPECT_EQ(frame.replyDataPos, 7);
    EXPECT_EQ(frame.replyDataLen, 8);
    EXPECT_EQ(frame.frameSpare, 1234);
    EXPECT_EQ(frame.var.reqTag, 4);
    EXPECT_EQ(frame.var.address, 7);
    EXPECT_EQ(frame.var.data[1023], 0xA5);
}

TEST_F(SendFrame, WithoutAnOutputTheFrameIsStillChosen)
{
    driver.cyclicReads << variable("D", 0, 1);
    EXPECT_EQ(intf_getSendFrame(nullptr), 1);
    EXPECT_EQ(driver.frames.size(), 1);
    ASSERT_TRUE(mutex.tryLock()); // and the mutex is free again
    mutex.unlock();
}

// --- The queues and the cyclic blocks ------------------------------------------------------------

TEST_F(SendFrame, CyclicBlockIsReadAndStaysInItsList)
{
    driver.cyclicReads << variable("D", 0, 1) << variable("D", 50, 1);
    driver.burstCount = 2;
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.sendState, 4);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(driver.curVar.address, 0);
    EXPECT_EQ(driver.cyclicReads.size(), 2);
}

TEST_F(SendFrame, PendingWriteGoesFirstAndStaysInItsList)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.pendingWrites << bitWrite(5) << bitWrite(6);
    EXPECT_EQ(nextFrame(), ":01050805FF00EE\r\n");
    EXPECT_EQ(driver.sendState, 2);
    EXPECT_EQ(driver.burstCount, 1);
    EXPECT_EQ(driver.curVar.address, 5);
    EXPECT_EQ(driver.pendingWrites.size(), 2);
}

TEST_F(SendFrame, OneShotReadGoesBeforeACyclicBlockAndStaysInItsList)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 2) << variable("D", 9, 1);
    EXPECT_EQ(nextFrame(), ":010310030002E7\r\n");
    EXPECT_EQ(driver.sendState, 3);
    EXPECT_EQ(driver.burstCount, 1);
    EXPECT_EQ(driver.curVar.address, 3);
    EXPECT_EQ(driver.pendingReads.size(), 2);
}

TEST_F(SendFrame, CounterOfACyclicBlockIsHalvedInTheRequestOnly)
{
    driver.cyclicReads << variable("CV2", 200, 4);
    EXPECT_EQ(nextFrame(), ":01030EC8000224\r\n");
    EXPECT_EQ(driver.curVar.count, 2);
    EXPECT_EQ(driver.cyclicReads.at(0).count, 4);
}

TEST_F(SendFrame, AfterThreeWritesACyclicBlockIsPolled)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingWrites << bitWrite(5);
    for (const char *expected :
         {":01050805FF00EE\r\n", ":01050805FF00EE\r\n", ":01050805FF00EE\r\n",
          ":010310000001EB\r\n", ":01050805FF00EE\r\n"})
        EXPECT_EQ(nextAnswered(), expected);
}

TEST_F(SendFrame, OneShotReadsCountAgainstTheSameAllowance)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.burstCount = 2;
    for (const char *expected :
         {":010310030001E8\r\n", ":010310000001EB\r\n", ":010310030001E8\r\n"})
        EXPECT_EQ(nextAnswered(), expected);
}

TEST_F(SendFrame, WithoutCyclicBlocksNothingIsSentAfterThreeUntilTheNextInitialisation)
{
    driver.pendingWrites << bitWrite(5);
    driver.pendingReads << variable("D", 3, 1);
    driver.burstCount = 3;
    driver.sendState = 2;
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(driver.sendState, 0);
    EXPECT_EQ(driver.burstCount, 3);
    EXPECT_EQ(driver.pendingWrites.size(), 1);
    configure("1#0#0#3#8");
    driver.pendingWrites << bitWrite(5);
    EXPECT_EQ(nextFrame(), ":01050805FF00EE\r\n");
}

// --- Recipe transfers ----------------------------------------------------------------------------

TEST_F(RecipeFrame, DownloadSendsTheEntryAtTheCursor)
{
    recipe[10] = 0x34;
    recipe[11] = 0x12;
    recipe[12] = 0x78;
    recipe[13] = 0x56;
    driver.recipeCursor = 1;
    driver.curVar.reqTag = 77;
    download = 1;
    EXPECT_EQ(nextFrame(), ":0110101400020412345678B1\r\n");
    EXPECT_EQ(driver.sendState, 5);
    EXPECT_EQ(driver.recipeCursor, 1);
    EXPECT_EQ(driver.frames.at(0).var.reqTag, 77); // as it was
}

TEST_F(RecipeFrame, UploadReadsTheEntryAtTheCursor)
{
    recipe[10] = 0x34;
    driver.recipeCursor = 1;
    upload = 1;
    EXPECT_EQ(nextFrame(), ":010310140002D6\r\n");
    EXPECT_EQ(driver.sendState, 6);
    EXPECT_EQ(driver.curVar.data[1], 0);
}

TEST_F(RecipeFrame, DownloadGoesBeforeUploadAndBothBeforeAllListsAndKeepTheBurst)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    driver.pendingWrites << bitWrite(5);
    driver.burstCount = 3;
    download = upload = 1;
    EXPECT_EQ(nextAnswered(), ":0110100A0001020000D2\r\n");
    EXPECT_EQ(driver.sendState, 5);
    download = 0;
    EXPECT_EQ(nextAnswered(), ":0103100A0001E1\r\n");
    EXPECT_EQ(driver.burstCount, 3);
}

TEST_F(RecipeFrame, OnlyAByteOfOneAtItsPlaceIsARequest)
{
    for (int value = 0; value <= 255; ++value) {
        for (quint8 *request : {&download, &upload}) {
            *request = static_cast<quint8>(value);
            EXPECT_EQ(nextAnswered().empty(), value != 1) << value;
            *request = 0;
        }
    }
    status[60114] = 1;
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(RecipeFrame, WithoutStatusBlockOrMutexNoRequestIsSeen)
{
    driver.cyclicReads << variable("D", 0, 1);
    download = 1;
    driver.hostMutex = nullptr;
    EXPECT_EQ(nextAnswered(), ":010310000001EB\r\n");
    driver.hostMutex = &mutex;
    driver.hostStatus = nullptr;
    EXPECT_EQ(nextAnswered(), ":010310000001EB\r\n");
}

// A recipe request without an entry at the cursor.

TEST_F(SendFrame, RecipeRequestWithoutEntriesOrHistorySendsNothing)
{
    driver.cyclicReads << variable("D", 0, 1);
    download = 1;
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(driver.sendState, 0);
    download = 0;
    upload = 1;
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(RecipeFrame, LastRequestIsRepeatedAsWhatItWasBehindTheLastEntry)
{
    driver.recipeCursor = 2;
    download = 1;
    driver.curVar = bitWrite(5);
    for (const qint32 state : {2, 5}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
        EXPECT_EQ(driver.sendState, state);
    }
    driver.curVar = variable("D", 3, 1);
    for (const qint32 state : {3, 4, 6}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), ":010310030001E8\r\n");
        EXPECT_EQ(driver.sendState, state);
    }
    for (const qint32 state : {-1, 0, 1, 7}) {
        driver.sendState = state;
        EXPECT_EQ(nextAnswered(), "") << state;
    }
}

TEST_F(SendFrame, RepeatedCounterReadIsHalvedAgain)
{
    driver.curVar = variable("CV2", 200, 4);
    driver.sendState = 6;
    upload = 1;
    EXPECT_EQ(nextAnswered(), ":01030EC8000224\r\n");
    EXPECT_EQ(nextAnswered(), ":01030EC8000125\r\n");
}

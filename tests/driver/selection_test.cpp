// The choice of the next frame to send, among the queues and the cyclic blocks.
#include "driver/frames.h"

#include "driver_fixture.h"

#include <array>

namespace {

class SendFrame : public DriverTest {
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
};

} // namespace

TEST_F(SendFrame, NothingToSendReturns0)
{
    driver.sendState = 4;
    FRAME_PRO frame;
    EXPECT_EQ(intf_getSendFrame(&frame), 0);
    EXPECT_EQ(driver.sendState, 0);
}

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
    EXPECT_EQ(intf_getSendFrame(&frame), 0);
    EXPECT_EQ(memcmp(before.data(), static_cast<const void *>(&frame), sizeof frame), 0);
}

TEST_F(SendFrame, SameFrameIsHandedOutUntilItsReply)
{
    driver.cyclicReads << variable("D", 0, 1) << variable("D", 50, 1);
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.frames.size(), 1);
}

TEST_F(SendFrame, FrameInFlightComesBeforeTheQueues)
{
    driver.cyclicReads << variable("D", 0, 1);
    nextFrame();
    driver.pendingWrites << bitWrite(0);
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.sendState, 4);
    EXPECT_EQ(driver.burstCount, 0);
}

TEST_F(SendFrame, FrontOfSeveralFramesIsHandedOut)
{
    VARIABLE first = variable("D", 0, 1);
    VARIABLE second = variable("D", 1, 1);
    getReadFrame(first);
    getReadFrame(second);
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
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
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
    EXPECT_EQ(driver.sendState, 4);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(driver.curVar.address, 0);
    EXPECT_EQ(driver.cyclicReads.size(), 2);
}

TEST_F(SendFrame, PendingWriteIsWrittenAndStaysInItsList)
{
    driver.pendingWrites << bitWrite(5) << bitWrite(6);
    EXPECT_EQ(nextFrame(), ":01050805FF00EE\r\n");
    EXPECT_EQ(driver.sendState, 2);
    EXPECT_EQ(driver.burstCount, 1);
    EXPECT_EQ(driver.curVar.address, 5);
    EXPECT_EQ(driver.pendingWrites.size(), 2);
}

TEST_F(SendFrame, OneShotReadIsReadAndStaysInItsList)
{
    driver.pendingReads << variable("D", 3, 2) << variable("D", 9, 1);
    EXPECT_EQ(nextFrame(), ":010310030002E7\r\n");
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
    EXPECT_EQ(nextFrame(), ":01050805FF00EE\r\n");
}

TEST_F(SendFrame, OneShotReadGoesBeforeCyclicBlock)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingReads << variable("D", 3, 1);
    EXPECT_EQ(nextFrame(), ":010310030001E8\r\n");
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
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
    EXPECT_EQ(nextAnswered(), ":010310000001EB\r\n");
    EXPECT_EQ(nextAnswered(), ":01050805FF00EE\r\n");
}

TEST_F(SendFrame, FourthWriteWaitsForACyclicBlock)
{
    driver.cyclicReads << variable("D", 0, 1);
    driver.pendingWrites << bitWrite(1) << bitWrite(2) << bitWrite(3) << bitWrite(4);
    for (const char *expected :
         {":01050801FF00F2\r\n", ":01050802FF00F1\r\n", ":01050803FF00F0\r\n",
          ":010310000001EB\r\n", ":01050804FF00EF\r\n"}) {
        EXPECT_EQ(nextFrame(), expected);
        EXPECT_EQ(answer(driver.sendState == 2 ? expected : ":0103020000FA\r\n"), 1);
    }
    EXPECT_EQ(driver.burstCount, 1);
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
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(driver.sendState, 0);
    EXPECT_EQ(driver.burstCount, 3);
    EXPECT_EQ(driver.pendingWrites.size(), 1);
}

TEST_F(SendFrame, InitialisationEndsTheStall)
{
    driver.burstCount = 3;
    configure("1#0#0#3#8");
    driver.pendingWrites << bitWrite(5);
    EXPECT_EQ(nextFrame(), ":01050805FF00EE\r\n");
}

TEST_F(SendFrame, MutexIsFreeAfterwards)
{
    driver.cyclicReads << variable("D", 0, 1);
    nextFrame();
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
}

TEST_F(SendFrame, MutexIsNotTakenWhileAFrameIsInFlight)
{
    driver.cyclicReads << variable("D", 0, 1);
    nextFrame();
    const QMutexLocker locker(&mutex);
    EXPECT_EQ(nextFrame(), ":010310000001EB\r\n");
}

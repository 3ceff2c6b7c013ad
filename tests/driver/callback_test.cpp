// A host whose callback reads, writes, queues and configures in the middle of a report, so that
// every list of the driver grows, moves or empties while it is in use.
#include "driver/datastore.h"
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class BusyCallback : public DriverTest {
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        onReport() = [this] { growLists(); };
    }

    static void askOnce(qint32 address)
    {
        KEY_ADDRESS key = keyOf("D", address, 1);
        intf_addConditionRead(key, 0);
    }

    // Puts the upload of two words of D to buffer word 10 in flight and answers it.
    void uploadTwoWords()
    {
        driver.recipeVars << recipeEntry("D", 100, 2, 10);
        readInFlight("D", 100, 2);
        driver.sendState = 6;
        EXPECT_EQ(answer(":0103041111222292\r\n"), 1);
    }

    // Ends the one-shot read that was queued last.
    static void endOneShotRead()
    {
        driver.pendingReads << variable("D", 100, 1);
        driver.lastVar = driver.pendingReads.at(0);
        driver.sendState = 3;
        dealListWhenFinish();
    }

    // The header forbids this in a callback, but it must not harm the driver.
    static void emptyLists()
    {
        intf_initProperty(nullptr, nullptr, nullptr, nullptr, "1#0#0#3#8", nullptr);
    }

    // The same, and fills the entry that was the first with another element.
    static void fillStoreAnew()
    {
        quint8 word[2] = {0, 0};
        emptyLists();
        intf_getData(1, "TV", 0, 1, word);
    }

private:
    // Uses 40 new words: the store, the writes and the one-shot reads
    // grow by 40 entries.
    void growLists()
    {
        if (growing)
            return;
        growing = true;
        for (int i = 0; i < 40; ++i, ++nextAddress) {
            quint8 word[2] = {0, 0};
            intf_getData(1, "D", nextAddress, 1, word);
            word[0] = 1;
            intf_setData(1, "TV", nextAddress, 1, word, 0);
            askOnce(nextAddress);
        }
        growing = false;
    }

    int nextAddress = 5000;
    bool growing = false;
};

} // namespace

// --- Lists that grow -----------------------------------------------------------------------------

TEST_F(BusyCallback, ElementsOfAReplyAreStored)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101) << watchedWord("D", 102)
                     << watchedWord("CV2", 200) << watchedWord("CV2", 201)
                     << watchedBits("M", 0, 0xFFFF) << watchedBits("M", 1, 0xFFFF);
    readAnswered("D", 100, 3, ":0103061111222233332A\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0x22, 0x22, 0, 0}));
    EXPECT_EQ(readValueOf("D", 102), Bytes({0x33, 0x33, 0, 0}));
    EXPECT_EQ(told(), "D:100 D:101 D:102");
    readAnswered("CV2", 200, 4, ":010308111111112222222228\r\n");
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({0x11, 0x11, 0x11, 0x11}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({0x22, 0x22, 0x22, 0x22}));
    readAnswered("M", 0, 16, ":0102040F00F000FA\r\n");
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x0F, 0, 0, 0}));
    EXPECT_EQ(readValueOf("M", 1), Bytes({0xF0, 0, 0, 0}));
    EXPECT_EQ(reports().size(), 13u);
}

TEST_F(BusyCallback, WrittenElementsAreMirrored)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101) << watchedWord("CV2", 200)
                     << watchedBits("M", 0, 0xFFFF);
    quint8 bytes[4] = {1, 2, 3, 4};
    intf_setData(1, "D", 100, 2, bytes, 0);
    intf_setData(1, "CV2", 200, 2, bytes, 0);
    quint8 bits[3] = {1, 1, 1};
    intf_setData(1, "M", 7, 3, bits, 0);
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({1, 2, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 101), Bytes({3, 4, 0, 0}));
    EXPECT_EQ(entryOf("D", 101).writePending, 1);
    EXPECT_EQ(writtenValueOf("CV2", 200), Bytes({1, 2, 3, 4}));
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0x80, 0x03, 0, 0}));
    EXPECT_EQ(reports().size(), 6u);
}

TEST_F(BusyCallback, AcknowledgedWriteIsSettled)
{
    driver.pendingWrites << variable("D", 100, 2);
    driver.dataAreas << written(watchedWord("D", 100), {5}) << written(watchedWord("D", 101), {6});
    writeInFlight("D", 100, 2);
    EXPECT_EQ(answer(":01101064000279\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({5, 0, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({6, 0, 0, 0}));
    EXPECT_EQ(driver.pendingWrites.size(), 80);
    EXPECT_EQ(driver.pendingWrites.at(0).address, 5000);
}

TEST_F(BusyCallback, GivenUpWriteIsReleased)
{
    driver.retryLimit = 1;
    driver.pendingWrites << variable("M", 5, 1);
    driver.dataAreas << written(watchedBits("M", 0, 0x0020), {0});
    writeInFlight("M", 5, 1);
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(entryOf("M", 0).writePending, 0);
    EXPECT_EQ(entryOf("M", 5).commFailed, 1);
    EXPECT_EQ(entryOf("M", 6).commFailed, 1);
    EXPECT_EQ(driver.pendingWrites.at(0).area, "TV");
}

TEST_F(BusyCallback, EndOfTheLastOneShotReadLeavesTheQueueInOrder)
{
    endOneShotRead();
    EXPECT_EQ(told(), "-1/-1#-1:0");
    EXPECT_EQ(driver.pendingReads.size(), 40);
    EXPECT_EQ(driver.pendingReads.at(0).address, 5000);
}

TEST_F(BusyCallback, UploadedWordsReachTheRecipeBuffer)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    uploadTwoWords();
    EXPECT_EQ(recipeBytes(20, 4), Bytes({0x11, 0x11, 0x22, 0x22}));
    EXPECT_EQ(reports().size(), 4u);
}

TEST_F(BusyCallback, DoubleWordsAreReportedFromWhatWasWatched)
{
    _DATA_ entry = watchedBits("D", 100, 0x0003);
    entry.wordMonitor = 7;
    driver.dataAreas << entry;
    int oldWord = 0;
    int newWord = 3;
    _wordDataChange(&oldWord, &newWord, 1, "D", 100, 0);
    EXPECT_EQ(reports().size(), 5u);
}

// --- Lists that change otherwise -----------------------------------------------------------------

TEST_F(BusyCallback, RecipeDroppedDuringAnUploadFillsTheStoreOnly)
{
    onReport() = [] { intf_setRcpAddress(nullptr); };
    uploadTwoWords();
    EXPECT_EQ(recipeBytes(20, 4), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0x22, 0x22, 0, 0}));
}

TEST_F(BusyCallback, RecipeReplacedDuringAnUploadTakesTheWordsThatFollow)
{
    onReport() = [] {
        const QVector<_RCP_VAR_PRO> list(1, recipeEntry("D", 0, 0, 50));
        intf_setRcpAddress(&list);
    };
    uploadTwoWords();
    EXPECT_EQ(recipeBytes(20, 4), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(recipeBytes(100, 4), Bytes({0, 0, 0x22, 0x22}));
}

TEST_F(BusyCallback, OneShotReadQueuedAtTheEndOfAnotherStays)
{
    onReport() = [] { askOnce(700); };
    endOneShotRead();
    ASSERT_EQ(driver.pendingReads.size(), 1);
    EXPECT_EQ(driver.pendingReads.at(0).address, 700);
    EXPECT_EQ(driver.lastVar.address, 700);
}

TEST_F(BusyCallback, OneShotReadQueuedAtAGiveUpIsDiscardedWithTheRest)
{
    driver.commError = 1;
    onReport() = [] { askOnce(700); };
    endOneShotRead();
    EXPECT_TRUE(driver.pendingReads.isEmpty());
}

TEST_F(BusyCallback, OneShotReadMayEndWithTheQueueEmptied)
{
    onReport() = emptyLists;
    endOneShotRead();
    EXPECT_EQ(driver.pendingReads.size(), 0);
}

TEST_F(BusyCallback, WriteToTheReportedWordIsPendingBehindTheReply)
{
    driver.dataAreas << watchedWord("D", 100);
    onReport() = [] {
        quint8 word[2] = {0x11, 0x22};
        onReport() = nullptr;
        intf_setData(1, "D", 100, 1, word, 0);
    };
    readAnswered("D", 100, 1, ":010302334483\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x44, 0x33, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({0x11, 0x22, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
}

TEST_F(BusyCallback, ElementsOfAReplyAreStoredUnderTheirKeyWhenTheStoreWasEmptied)
{
    for (const bool filled : {true, false}) {
        onReport() = filled ? fillStoreAnew : emptyLists;
        driver.dataAreas = QList<_DATA_>() << watchedWord("D", 100);
        readAnswered("D", 100, 1, ":010302334483\r\n");
        EXPECT_EQ(readValueOf("D", 100), Bytes({0x44, 0x33, 0, 0}));
        driver.dataAreas = QList<_DATA_>() << watchedBits("M", 0, 0x0001);
        readAnswered("M", 0, 1, ":0102020100FA\r\n");
        EXPECT_EQ(readValueOf("M", 0), Bytes({0x01, 0, 0, 0}));
        ASSERT_EQ(driver.dataAreas.size(), filled ? 2 : 1);
        EXPECT_EQ(driver.dataAreas.at(0).readValue[0], filled ? 0 : 1);
    }
}

TEST_F(BusyCallback, WrittenElementsAreMirroredUnderTheirKeyWhenTheStoreWasEmptied)
{
    onReport() = fillStoreAnew;
    quint8 bytes[2] = {1, 0x12};
    driver.dataAreas << watchedWord("D", 100);
    intf_setData(1, "D", 100, 1, bytes, 0);
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({1, 0x12, 0, 0}));
    EXPECT_EQ(writtenValueOf("TV", 0), Bytes({0, 0, 0, 0}));
    driver.dataAreas = QList<_DATA_>() << watchedBits("M", 0, 0x0001);
    intf_setData(1, "M", 0, 1, bytes, 0);
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0x01, 0, 0, 0}));
    EXPECT_EQ(writtenValueOf("TV", 0), Bytes({0, 0, 0, 0}));
}

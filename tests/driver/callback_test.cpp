// A host whose callback reads, writes and queues in the middle of a report, so that every list of
// the driver grows and moves while it is in use.
#include "driver/datastore.h"
#include "driver/response.h"

#include "driver_fixture.h"

namespace {

class BusyCallback : public DriverTest {
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        nextAddress() = 5000;
        depth() = 0;
        intf_setAddrValueChangeCallBack(grow);
    }

    static int &nextAddress()
    {
        static int address = 0;
        return address;
    }

private:
    static int &depth()
    {
        static int calls = 0;
        return calls;
    }

    // Touches 40 words that nobody touched before: the store, the writes and the one-shot reads
    // grow by 40 entries.
    static void growLists(qint32 station)
    {
        for (int i = 0; i < 40; ++i, ++nextAddress()) {
            quint8 word[2] = {0, 0};
            intf_getData(station, "D", nextAddress(), 1, word);
            word[0] = 1;
            intf_setData(station, "TV", nextAddress(), 1, word, 0);
            KEY_ADDRESS key;
            key.station = station;
            key.area = "D";
            key.address = nextAddress();
            key.count = 1;
            intf_addConditionRead(key, 0);
        }
    }

    static qint32 grow(qint32 devId, qint32 station, QString area, qint32 address)
    {
        record(devId, station, area, address);
        if (depth() == 0) {
            ++depth();
            growLists(station);
            --depth();
        }
        return 0;
    }
};

// Replaces the recipe by nothing in the middle of an upload.
qint32 dropRecipe(qint32, qint32, QString, qint32)
{
    const QVector<_RCP_VAR_PRO> nothing;
    intf_setRcpAddress(&nothing);
    return 0;
}

// Replaces the recipe by a variable elsewhere in the buffer in the middle of an upload.
qint32 moveRecipe(qint32, qint32, QString, qint32)
{
    _RCP_VAR_PRO entry;
    entry.devId = 1;
    entry.bufWord = 50;
    const QVector<_RCP_VAR_PRO> list(1, entry);
    intf_setRcpAddress(&list);
    return 0;
}

// Queues another one-shot read when one has ended.
qint32 askAgain(qint32, qint32, QString, qint32)
{
    KEY_ADDRESS key;
    key.station = 1;
    key.area = "D";
    key.address = 700;
    key.count = 1;
    intf_addConditionRead(key, 0);
    return 0;
}

// Writes to the very word whose change it is told of.
qint32 writeBack(qint32, qint32 station, QString area, qint32 address)
{
    quint8 word[2] = {0x11, 0x22};
    intf_setAddrValueChangeCallBack(nullptr);
    intf_setData(station, area, address, 1, word, 0);
    return 0;
}

// Configures the driver anew, which empties the store, and fills the entry that was the first with
// another element.
qint32 configureAnew(qint32, qint32 station, QString, qint32)
{
    quint8 word[2] = {0, 0};
    intf_initProperty(nullptr, nullptr, nullptr, nullptr, "1#0#0#3#8", nullptr);
    intf_getData(station, "TV", 0, 1, word);
    return 0;
}

// Configures the driver anew and leaves its lists empty.
qint32 emptyLists(qint32, qint32, QString, qint32)
{
    intf_initProperty(nullptr, nullptr, nullptr, nullptr, "1#0#0#3#8", nullptr);
    return 0;
}

} // namespace

TEST_F(BusyCallback, WordsOfAReplyAreStored)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101) << watchedWord("D", 102);
    readInFlight("D", 100, 3);
    EXPECT_EQ(answer(":0103061111222233332A\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0x22, 0x22, 0, 0}));
    EXPECT_EQ(readValueOf("D", 102), Bytes({0x33, 0x33, 0, 0}));
    EXPECT_EQ(reports(), (std::vector<Report>{Report(1, 1, "D", 100), Report(1, 1, "D", 101),
                                              Report(1, 1, "D", 102)}));
}

TEST_F(BusyCallback, CountersOfAReplyAreStored)
{
    driver.dataAreas << watchedWord("CV2", 200) << watchedWord("CV2", 201);
    readInFlight("CV2", 200, 4);
    answer(":010308111111112222222228\r\n");
    EXPECT_EQ(readValueOf("CV2", 200), Bytes({0x11, 0x11, 0x11, 0x11}));
    EXPECT_EQ(readValueOf("CV2", 201), Bytes({0x22, 0x22, 0x22, 0x22}));
}

TEST_F(BusyCallback, BitsOfAReplyAreStored)
{
    driver.dataAreas << watchedBits("M", 0, 0xFFFF) << watchedBits("M", 1, 0xFFFF);
    readInFlight("M", 0, 16);
    answer(":0102040F00F000FA\r\n");
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x0F, 0, 0, 0}));
    EXPECT_EQ(readValueOf("M", 1), Bytes({0xF0, 0, 0, 0}));
    EXPECT_EQ(reports().size(), 8u);
}

TEST_F(BusyCallback, WrittenWordsAreMirrored)
{
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    quint8 words[4] = {1, 2, 3, 4};
    intf_setData(1, "D", 100, 2, words, 0);
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({1, 2, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 101), Bytes({3, 4, 0, 0}));
    EXPECT_EQ(entryOf("D", 101).writePending, 1);
}

TEST_F(BusyCallback, WrittenCounterIsMirrored)
{
    driver.dataAreas << watchedWord("CV2", 200);
    quint8 bytes[4] = {1, 2, 3, 4};
    intf_setData(1, "CV2", 200, 2, bytes, 0);
    EXPECT_EQ(writtenValueOf("CV2", 200), Bytes({1, 2, 3, 4}));
}

TEST_F(BusyCallback, WrittenBitsAreMirrored)
{
    driver.dataAreas << watchedBits("M", 0, 0xFFFF);
    quint8 bits[3] = {1, 1, 1};
    intf_setData(1, "M", 7, 3, bits, 0);
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0x80, 0x03, 0, 0}));
    EXPECT_EQ(reports().size(), 3u);
}

TEST_F(BusyCallback, AcknowledgedWriteIsSettled)
{
    driver.pendingWrites << variable("D", 100, 2);
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    driver.dataAreas[0].writtenValue[0] = 5;
    driver.dataAreas[1].writtenValue[0] = 6;
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
    driver.dataAreas << watchedBits("M", 0, 0x0020);
    driver.dataAreas[0].writePending = 1;
    writeInFlight("M", 5, 1);
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(entryOf("M", 0).writePending, 0);
    EXPECT_EQ(entryOf("M", 5).commFailed, 1);
    EXPECT_EQ(entryOf("M", 6).commFailed, 1);
    EXPECT_EQ(driver.pendingWrites.at(0).area, "TV");
}

TEST_F(BusyCallback, EndOfTheLastOneShotReadLeavesTheQueueInOrder)
{
    driver.pendingReads << variable("D", 100, 1);
    driver.lastVar = driver.pendingReads.at(0);
    driver.sendState = 3;
    dealListWhenFinish();
    EXPECT_EQ(reports(), (std::vector<Report>{Report(-1, -1, "-1", 0)}));
    EXPECT_EQ(driver.pendingReads.size(), 40);
    EXPECT_EQ(driver.pendingReads.at(0).address, 5000);
}

TEST_F(BusyCallback, UploadedWordsReachTheRecipeBuffer)
{
    _RCP_VAR_PRO entry;
    entry.bufWord = 10;
    driver.recipeVars << entry;
    driver.dataAreas << watchedWord("D", 100) << watchedWord("D", 101);
    readInFlight("D", 100, 2);
    driver.sendState = 6;
    answer(":0103041111222292\r\n");
    EXPECT_EQ(Bytes(recipe.begin() + 20, recipe.begin() + 24), Bytes({0x11, 0x11, 0x22, 0x22}));
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

TEST_F(BusyCallback, RecipeDroppedDuringAnUploadFillsTheStoreOnly)
{
    _RCP_VAR_PRO entry;
    entry.bufWord = 10;
    driver.recipeVars << entry;
    intf_setAddrValueChangeCallBack(dropRecipe);
    readInFlight("D", 100, 2);
    driver.sendState = 6;
    EXPECT_EQ(answer(":0103041111222292\r\n"), 1);
    EXPECT_EQ(Bytes(recipe.begin() + 20, recipe.begin() + 24), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(readValueOf("D", 101), Bytes({0x22, 0x22, 0, 0}));
}

TEST_F(BusyCallback, RecipeReplacedDuringAnUploadTakesTheWordsThatFollow)
{
    _RCP_VAR_PRO entry;
    entry.bufWord = 10;
    driver.recipeVars << entry;
    intf_setAddrValueChangeCallBack(moveRecipe);
    readInFlight("D", 100, 2);
    driver.sendState = 6;
    EXPECT_EQ(answer(":0103041111222292\r\n"), 1);
    EXPECT_EQ(Bytes(recipe.begin() + 20, recipe.begin() + 24), Bytes({0x11, 0x11, 0, 0}));
    EXPECT_EQ(Bytes(recipe.begin() + 100, recipe.begin() + 104), Bytes({0, 0, 0x22, 0x22}));
}

TEST_F(BusyCallback, OneShotReadQueuedAtTheEndOfAnotherStays)
{
    driver.pendingReads << variable("D", 100, 1);
    driver.lastVar = driver.pendingReads.at(0);
    driver.sendState = 3;
    intf_setAddrValueChangeCallBack(askAgain);
    dealListWhenFinish();
    ASSERT_EQ(driver.pendingReads.size(), 1);
    EXPECT_EQ(driver.pendingReads.at(0).address, 700);
    EXPECT_EQ(driver.lastVar.address, 700);
}

TEST_F(BusyCallback, OneShotReadQueuedAtAGiveUpIsDiscardedWithTheRest)
{
    driver.pendingReads << variable("D", 100, 1);
    driver.lastVar = driver.pendingReads.at(0);
    driver.sendState = 3;
    driver.commError = 1;
    intf_setAddrValueChangeCallBack(askAgain);
    dealListWhenFinish();
    EXPECT_TRUE(driver.pendingReads.isEmpty());
}

TEST_F(BusyCallback, WriteToTheReportedWordIsPendingBehindTheReply)
{
    driver.dataAreas << watchedWord("D", 100);
    intf_setAddrValueChangeCallBack(writeBack);
    readInFlight("D", 100, 1);
    answer(":010302334483\r\n");
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x44, 0x33, 0, 0}));
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({0x11, 0x22, 0, 0}));
    EXPECT_EQ(entryOf("D", 100).writePending, 1);
}

TEST_F(BusyCallback, WordOfAReplyIsStoredUnderItsKeyWhenTheStoreWasEmptied)
{
    driver.dataAreas << watchedWord("D", 100);
    intf_setAddrValueChangeCallBack(configureAnew);
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer(":010302334483\r\n"), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x44, 0x33, 0, 0}));
    EXPECT_EQ(readValueOf("TV", 0), Bytes({0, 0, 0, 0}));
}

TEST_F(BusyCallback, BitsOfAReplyAreStoredUnderTheirKeyWhenTheStoreWasEmptied)
{
    driver.dataAreas << watchedBits("M", 0, 0x0001);
    intf_setAddrValueChangeCallBack(configureAnew);
    readInFlight("M", 0, 1);
    EXPECT_EQ(answer(":0102020100FA\r\n"), 1);
    EXPECT_EQ(readValueOf("M", 0), Bytes({0x01, 0, 0, 0}));
    EXPECT_EQ(readValueOf("TV", 0), Bytes({0, 0, 0, 0}));
}

TEST_F(BusyCallback, WrittenWordIsMirroredUnderItsKeyWhenTheStoreWasEmptied)
{
    driver.dataAreas << watchedWord("D", 100);
    intf_setAddrValueChangeCallBack(configureAnew);
    quint8 word[2] = {0x34, 0x12};
    intf_setData(1, "D", 100, 1, word, 0);
    EXPECT_EQ(writtenValueOf("D", 100), Bytes({0x34, 0x12, 0, 0}));
    EXPECT_EQ(writtenValueOf("TV", 0), Bytes({0, 0, 0, 0}));
}

TEST_F(BusyCallback, WrittenBitIsMirroredUnderItsKeyWhenTheStoreWasEmptied)
{
    driver.dataAreas << watchedBits("M", 0, 0x0001);
    intf_setAddrValueChangeCallBack(configureAnew);
    quint8 bit = 1;
    intf_setData(1, "M", 0, 1, &bit, 0);
    EXPECT_EQ(writtenValueOf("M", 0), Bytes({0x01, 0, 0, 0}));
    EXPECT_EQ(writtenValueOf("TV", 0), Bytes({0, 0, 0, 0}));
}

TEST_F(BusyCallback, WordOfAReplyIsStoredAnewWhenTheStoreIsEmpty)
{
    driver.dataAreas << watchedWord("D", 100);
    intf_setAddrValueChangeCallBack(emptyLists);
    readInFlight("D", 100, 1);
    EXPECT_EQ(answer(":010302334483\r\n"), 1);
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(readValueOf("D", 100), Bytes({0x44, 0x33, 0, 0}));
}

TEST_F(BusyCallback, OneShotReadMayEndWithTheQueueEmptied)
{
    driver.pendingReads << variable("D", 100, 1);
    driver.lastVar = driver.pendingReads.at(0);
    driver.sendState = 3;
    intf_setAddrValueChangeCallBack(emptyLists);
    dealListWhenFinish();
    EXPECT_EQ(driver.pendingReads.size(), 0);
}

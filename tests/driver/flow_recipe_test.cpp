// Recipe transfers, requested by the host through its status block.
#include "loaded_driver.h"

#include <algorithm>

class RecipeFlow : public FlowTest {
protected:
    static _RCP_VAR_PRO entry(const char *area, int address, int count, int bufWord, int devId = 1)
    {
        _RCP_VAR_PRO variable;
        variable.devId = devId;
        variable.station = 1;
        variable.area = QString::fromLatin1(area);
        variable.address = address;
        variable.count = count;
        variable.bufWord = bufWord;
        return variable;
    }

    int setRecipe(const QVector<_RCP_VAR_PRO> &list)
    {
        return kmr->setRcpAddress(&list);
    }

    // Two words, a counter and one word of this device, and one word of another.
    void setUsualRecipe()
    {
        EXPECT_EQ(setRecipe({entry("D", 10, 2, 10), entry("D", 99, 1, 0, 2),
                             entry("CV2", 200, 2, 4), entry("TV", 7, 1, 0)}),
                  3);
    }

    void setBuffer(size_t word, const std::vector<quint8> &bytes)
    {
        std::copy(bytes.begin(), bytes.end(), recipe.begin() + static_cast<int>(word) * 2);
    }

    std::vector<int> buffer(size_t word, size_t count) const
    {
        const auto first = recipe.begin() + static_cast<int>(word) * 2;
        return std::vector<int>(first, first + static_cast<int>(count) * 2);
    }

    quint8 &download = status[STATUS_RECIPE_DOWNLOAD];
    quint8 &upload = status[STATUS_RECIPE_UPLOAD];
};

TEST_F(RecipeFlow, RequestBytesLieAtTheirPlaces)
{
    EXPECT_EQ(&download - status.data(), 60115);
    EXPECT_EQ(&upload - status.data(), 60116);
}

TEST_F(RecipeFlow, DownloadWritesEveryEntryAndClearsItsRequest)
{
    setUsualRecipe();
    setBuffer(10, {0x34, 0x12, 0x78, 0x56});
    setBuffer(4, {0x78, 0x56, 0x34, 0x12});
    setBuffer(0, {0xCD, 0xAB});
    download = 1;
    EXPECT_EQ(exchange(":0110100A0002D3"), ":0110100A00020412345678BB");
    EXPECT_EQ(exchange(":01100EC8000118"), ":01100EC80001041234567800");
    EXPECT_EQ(download, 1);
    EXPECT_EQ(exchange(":011006070001E1"), ":01100607000102ABCD67");
    EXPECT_EQ(download, 0);
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(RecipeFlow, DownloadIsReadFromTheBufferWhenItsTurnComes)
{
    setRecipe({entry("D", 0, 1, 0), entry("D", 1, 1, 1)});
    download = 1;
    EXPECT_EQ(exchange(":011010000001DE"), ":011010000001020000DC");
    setBuffer(1, {0x34, 0x12});
    EXPECT_EQ(nextFrame(), ":01101001000102123495");
    setBuffer(1, {0xFF, 0xFF});
    EXPECT_EQ(nextFrame(), ":01101001000102123495");
}

TEST_F(RecipeFlow, DownloadDoesNotTouchTheStore)
{
    watch({{1, "D", 0, 1}});
    exchange(":0103020007F3");
    takeReports();
    setRecipe({entry("D", 0, 1, 0)});
    setBuffer(0, {0x34, 0x12});
    download = 1;
    exchange(":011010000001DE");
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{7}));
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(RecipeFlow, UploadFillsBufferAndStoreAndReportsEveryWord)
{
    setUsualRecipe();
    upload = 1;
    EXPECT_EQ(exchange(":01030412345678E4"), ":0103100A0002E0");
    EXPECT_EQ(takeReports(), (Reports{{0, -1, "RWI", 10}, {0, -1, "RWI", 11}}));
    EXPECT_EQ(exchange(":010304AABBCCDDEA"), ":01030EC8000125");
    EXPECT_EQ(takeReports(), (Reports{{0, -1, "RWI", 4}}));
    EXPECT_EQ(upload, 1);
    EXPECT_EQ(exchange(":0103020102F7"), ":010306070001EE");
    EXPECT_EQ(takeReports(), (Reports{{0, -1, "RWI", 0}}));
    EXPECT_EQ(upload, 0);

    EXPECT_EQ(buffer(10, 2), (std::vector<int>{0x34, 0x12, 0x78, 0x56}));
    EXPECT_EQ(buffer(4, 2), (std::vector<int>{0xDD, 0xCC, 0xBB, 0xAA}));
    EXPECT_EQ(buffer(0, 2), (std::vector<int>{0x02, 0x01, 0x00, 0x00}));
    EXPECT_EQ(words("D", 10, 2), (std::vector<int>{0x1234, 0x5678}));
    EXPECT_EQ(words("CV2", 200, 2), (std::vector<int>{0xCCDD, 0xAABB}));
}

TEST_F(RecipeFlow, UploadedCountersAreReportedOneApartAndStoredTwoWordsApart)
{
    setRecipe({entry("CV2", 200, 4, 20)});
    upload = 1;
    EXPECT_EQ(exchange(":0103080102030405060708D0"), ":01030EC8000224");
    EXPECT_EQ(takeReports(), (Reports{{0, -1, "RWI", 20}, {0, -1, "RWI", 21}}));
    EXPECT_EQ(buffer(20, 4), (std::vector<int>{4, 3, 2, 1, 8, 7, 6, 5}));
}

TEST_F(RecipeFlow, UploadReportsAWatchedChangeBeforeTheBufferWord)
{
    watch({{1, "D", 0, 1}});
    setRecipe({entry("D", 0, 1, 3)});
    upload = 1;
    exchange(":0103020001F9");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 0}, {0, -1, "RWI", 3}}));
}

TEST_F(RecipeFlow, DownloadGoesBeforeUploadAndBothBeforeEverythingElse)
{
    watch({{1, "D", 50, 1}});
    writeBits("M", 0, {1});
    readOnce({1, "D", 60, 1});
    setRecipe({entry("D", 0, 1, 0)});
    download = upload = 1;
    EXPECT_EQ(exchange(":011010000001DE"), ":011010000001020000DC");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":01050800FF00F3"), ":01050800FF00F3");
    EXPECT_EQ(exchange(":0103020000FA"), ":0103103C0001AF");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310320001B9");
}

TEST_F(RecipeFlow, FrameInFlightIsFinishedBeforeTheTransferBegins)
{
    watch({{1, "D", 50, 1}});
    setRecipe({entry("D", 0, 1, 0)});
    EXPECT_EQ(nextFrame(), ":010310320001B9");
    download = 1;
    EXPECT_EQ(exchange(":0103020000FA"), ":010310320001B9");
    EXPECT_EQ(nextFrame(), ":011010000001020000DC");
}

TEST_F(RecipeFlow, OnlyAByteOfExactlyOneIsARequest)
{
    setRecipe({entry("D", 0, 1, 0)});
    download = 2;
    upload = 255;
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(download, 2);
}

TEST_F(RecipeFlow, TransferGivenUpHalfWayBeginsAnewNextTime)
{
    setUsualRecipe();
    download = 1;
    exchange(":0110100A0002D3");
    EXPECT_EQ(nextFrame(), ":01100EC80001040000000014");
    giveUp();
    EXPECT_EQ(errorInfo, "1#CV2200(2)(0)");
    EXPECT_EQ(download, 0);
    EXPECT_EQ(nextFrame(), "");
    upload = 1;
    EXPECT_EQ(nextFrame(), ":0103100A0002E0");
    giveUp();
    EXPECT_EQ(upload, 0);
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(RecipeFlow, TransferAfterAFailureRunsToItsEnd)
{
    setRecipe({entry("D", 0, 1, 0), entry("D", 1, 1, 0)});
    download = 1;
    giveUp();
    download = 1;
    EXPECT_EQ(exchange(":011010000001DE"), ":011010000001020000DC");
    EXPECT_EQ(download, 1);
    EXPECT_EQ(exchange(":011010010001DD"), ":011010010001020000DB");
    EXPECT_EQ(download, 0);
}

TEST_F(RecipeFlow, LastRequestIsRepeatedWhileARequestStandsWithoutARecipe)
{
    watch({{1, "D", 0, 1}, {1, "D", 50, 1}});
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    download = 1;
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(exchange(":0103020000FA"), ":010310000001EB");
    EXPECT_EQ(download, 1);
    download = 0;
    EXPECT_EQ(nextFrame(), ":010310320001B9"); // three turns of two blocks
}

TEST_F(RecipeFlow, LastWriteIsRepeatedAsAWrite)
{
    writeWords("D", 10, {7});
    exchange(":0110100A0001D4");
    upload = 1;
    EXPECT_EQ(exchange(":0110100A0001D4"), ":0110100A0001020007CB");
    EXPECT_EQ(upload, 1);
}

TEST_F(RecipeFlow, RepeatedCounterReadHalvesItsCountAgain)
{
    watch({{1, "CV2", 200, 4}});
    exchange(":0103080000000100000002F1");
    upload = 1;
    EXPECT_EQ(exchange(":01030400000001F7"), ":01030EC8000125");
    EXPECT_EQ(exchange(":01030400000001F7"), ":01030EC8000125");
}

TEST_F(RecipeFlow, RequestWithoutRecipeAndWithoutALastRequestSendsNothing)
{
    download = 1;
    EXPECT_EQ(nextFrame(), "");
    download = 0;
    upload = 1;
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(upload, 1);
}

TEST_F(RecipeFlow, ShorterListInMidTransferRepeatsTheLastEntryAndEnds)
{
    setRecipe({entry("D", 0, 1, 0), entry("D", 1, 1, 0), entry("D", 2, 1, 0)});
    download = 1;
    exchange(":011010000001DE");
    exchange(":011010010001DD");
    setRecipe({entry("D", 5, 1, 0)});
    EXPECT_EQ(exchange(":011010010001DD"), ":011010010001020000DB");
    EXPECT_EQ(download, 0);
    download = 1;
    EXPECT_EQ(nextFrame(), ":011010050001020000D7");
}

TEST_F(RecipeFlow, UploadReplyBehindAShorterListFillsOnlyTheStore)
{
    setRecipe({entry("D", 0, 1, 0), entry("D", 1, 1, 1)});
    upload = 1;
    exchange(":0103020001F9");
    nextFrame();
    setRecipe({});
    takeReports();
    EXPECT_EQ(answer(":0103020002F8"), 1);
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(buffer(0, 2), (std::vector<int>{1, 0, 0, 0}));
    EXPECT_EQ(words("D", 1, 1), (std::vector<int>{2}));
}

TEST_F(RecipeFlow, LongestEntryFillsTheFrameAndALongerOneIsNotSent)
{
    setRecipe({entry("D", 0, 251, 0), entry("D", 0, 252, 0)});
    download = 1;
    EXPECT_EQ(nextFrame().substr(0, 15), ":0110100000FBF6");
    EXPECT_EQ(frame.frameLen, 1023);
    EXPECT_EQ(answer(":0110100000FBE4"), 1);
    EXPECT_EQ(kmr->getSendFrame(&frame), 1);
    EXPECT_EQ(frame.frameLen, 0);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(errorInfo, "1#D0(252)(0)");
    EXPECT_EQ(download, 0);
}

TEST_F(RecipeFlow, ReinitialisationKeepsTheListAndItsPlace)
{
    setRecipe({entry("D", 0, 1, 0), entry("D", 1, 1, 0)});
    download = 1;
    exchange(":011010000001DE");
    nextFrame();
    configure("1#0#0#3#8");
    EXPECT_EQ(answer(":011010010001DD"), 0);
    EXPECT_EQ(exchange(":011010010001DD"), ":011010010001020000DB");
    EXPECT_EQ(download, 0);
}

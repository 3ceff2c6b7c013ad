// Recipe transfers, requested by the host through its status block.
#include "loaded_driver.h"

#include <algorithm>

class RecipeFlow : public FlowTest {
protected:
    // Two words, a counter and one word of this device, and one word of another.
    void setUsualRecipe()
    {
        EXPECT_EQ(setRecipe({recipeEntry("D", 10, 2, 10), recipeEntry("D", 99, 1, 0, 2),
                             recipeEntry("CV2", 200, 2, 4), recipeEntry("TV", 7, 1, 0)}),
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

TEST_F(RecipeFlow, ShorterListInMidTransferRepeatsTheLastEntryAndEnds)
{
    setRecipe({recipeEntry("D", 0, 1, 0), recipeEntry("D", 1, 1, 0), recipeEntry("D", 2, 1, 0)});
    download = 1;
    exchange(":011010000001DE");
    exchange(":011010010001DD");
    setRecipe({recipeEntry("D", 5, 1, 0)});
    EXPECT_EQ(exchange(":011010010001DD"), ":011010010001020000DB");
    EXPECT_EQ(download, 0);
    download = 1;
    EXPECT_EQ(nextFrame(), ":011010050001020000D7");
}

TEST_F(RecipeFlow, LongestEntryFillsTheFrameAndALongerOneIsNotSent)
{
    setRecipe({recipeEntry("D", 0, 251, 0), recipeEntry("D", 0, 252, 0)});
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

// Null pointers, to every function that takes one.
#include "loaded_driver.h"

class NullFlow : public FlowTest {
protected:
    // Configures with a null status block, recipe buffer or mutex.
    void configureWith(quint8 *statusBlock, quint8 *recipeBuffer, QMutex *hostMutex)
    {
        EXPECT_EQ(
            kmr->initProperty(statusBlock, nullptr, recipeBuffer, nullptr, "1#0#0#3#8", hostMutex),
            1);
    }

    void setRecipeOfD0()
    {
        _RCP_VAR_PRO entry;
        entry.devId = entry.station = entry.count = 1;
        entry.area = QString::fromLatin1("D");
        const QVector<_RCP_VAR_PRO> list{entry};
        EXPECT_EQ(kmr->setRcpAddress(&list), 1);
    }
};

TEST_F(NullFlow, ProtocolTypeWritesNothing)
{
    kmr->getProtocolType(nullptr);
}

TEST_F(NullFlow, WithoutCallbackChangesAreStoredUnreported)
{
    kmr->setAddrValueChangeCallBack(nullptr);
    watch({{1, "D", 0, 1}, {1, "M", 0, 1}});
    exchange(":0103021234B4");
    exchange(":0102020100FA");
    writeWords("D", 0, {5});
    writeBits("M", 0, {0});
    readOnce({1, "D", 9, 1});
    exchange(":011010000001DE");
    exchange(":010508000000F2");
    exchange(":0103020000FA");
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{5}));
    EXPECT_EQ(takeReports(), Reports{});
}

TEST_F(NullFlow, WithoutCallbackAnUploadStillFillsTheBuffer)
{
    kmr->setAddrValueChangeCallBack(nullptr);
    setRecipeOfD0();
    status[STATUS_RECIPE_UPLOAD] = 1;
    exchange(":0103021234B4");
    EXPECT_EQ(recipe[0], 0x34);
    EXPECT_EQ(recipe[1], 0x12);
}

TEST_F(NullFlow, NullPropertiesKeepTheSettingsAndDropTheRest)
{
    watch({{1, "D", 0, 1}});
    nextFrame();
    EXPECT_EQ(kmr->initProperty(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(watch({{1, "D", 0, 8}}), 1);
    exchange(":01031000010000000000000000000000000000EB");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 0}}));
}

TEST_F(NullFlow, WithoutStatusBlockOrMutexNoTransferIsSeen)
{
    setRecipeOfD0();
    status[STATUS_RECIPE_DOWNLOAD] = status[STATUS_RECIPE_UPLOAD] = 1;
    configureWith(nullptr, recipe.data(), &mutex);
    EXPECT_EQ(nextFrame(), "");
    configureWith(status.data(), recipe.data(), nullptr);
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(status[STATUS_RECIPE_DOWNLOAD], 1);
    EXPECT_EQ(status[STATUS_RECIPE_UPLOAD], 1);
}

TEST_F(NullFlow, WithoutRecipeBufferADownloadCarriesZeros)
{
    setRecipeOfD0();
    status[STATUS_RECIPE_DOWNLOAD] = 1;
    configureWith(status.data(), nullptr, &mutex);
    EXPECT_EQ(exchange(":011010000001DE"), ":011010000001020000DC");
    EXPECT_EQ(status[STATUS_RECIPE_DOWNLOAD], 0);
}

TEST_F(NullFlow, WithoutRecipeBufferAnUploadFillsTheStore)
{
    setRecipeOfD0();
    status[STATUS_RECIPE_UPLOAD] = 1;
    configureWith(status.data(), nullptr, &mutex);
    EXPECT_EQ(exchange(":0103021234B4"), ":010310000001EB");
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0x1234}));
    EXPECT_EQ(takeReports(), Reports{}); // no word of the buffer has come in
    EXPECT_EQ(status[STATUS_RECIPE_UPLOAD], 0);
}

TEST_F(NullFlow, NullRecipeListEmptiesTheRecipe)
{
    setRecipeOfD0();
    EXPECT_EQ(kmr->setRcpAddress(nullptr), 0);
    status[STATUS_RECIPE_DOWNLOAD] = 1;
    EXPECT_EQ(nextFrame(), "");
}

TEST_F(NullFlow, AddressChecksAnswerWithoutAnOutput)
{
    const QString area = QString::fromLatin1("X");
    EXPECT_EQ(kmr->checkAddrValidity(area, QString::fromLatin1("17"), nullptr, 1, 0), 0);
    EXPECT_EQ(kmr->checkAddrValidity(area, QString::fromLatin1("18"), nullptr, 1, 0), 2);
    EXPECT_EQ(kmr->checkAddr(area, QString::fromLatin1("17"), nullptr, -1, 1), 0);
    EXPECT_EQ(kmr->checkAddr(QString::fromLatin1("D"), QString::fromLatin1("5"), nullptr, 1, 1), 0);
    EXPECT_EQ(
        kmr->checkAddr(QString::fromLatin1("TV_bit"), QString::fromLatin1("1.2"), nullptr, -1, 1),
        0);
}

TEST_F(NullFlow, SeriesAnswersWithoutItsOutputs)
{
    QVector<QString> texts;
    QVector<qint32> numbers;
    for (const char *name : {"D", "X", "TV_bit"}) {
        const QString area = QString::fromLatin1(name);
        EXPECT_EQ(kmr->multiCopy(area, 0, 2, 1, nullptr, nullptr), 1) << name;
        EXPECT_EQ(kmr->multiCopy(area, 2000000, 2, 1, nullptr, &numbers), 2) << name;
        EXPECT_EQ(kmr->multiCopy(area, 2000000, 2, 1, &texts, nullptr), 2) << name;
    }
    EXPECT_EQ(kmr->multiCopy(QString::fromLatin1("SM"), 0, 1, 1, nullptr, nullptr), 0);
}

TEST_F(NullFlow, FrameIsKeptForTheNextCaller)
{
    EXPECT_EQ(kmr->getSendFrame(nullptr), 0);
    watch({{1, "D", 0, 1}, {1, "D", 50, 1}});
    EXPECT_EQ(kmr->getSendFrame(nullptr), 1);
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

TEST_F(NullFlow, ReadWithoutABufferIsIgnored)
{
    for (const char *area : {"D", "CV2", "M", "X", "Q"})
        EXPECT_EQ(kmr->getData(1, QString::fromLatin1(area), 0, 2, nullptr), 1) << area;
}

TEST_F(NullFlow, WriteWithoutDataIsIgnored)
{
    for (const char *area : {"D", "CV2", "M", "X", "Q"})
        EXPECT_EQ(kmr->setData(1, QString::fromLatin1(area), 0, 2, nullptr, 0), 1) << area;
    EXPECT_EQ(nextFrame(), "");
}

#include "host/session/request_ranges.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

// The first element and the characters of the answer of each request that the driver makes.
std::vector<std::pair<QString, int>> cycle(const QStringList &texts, int groupLimit = 8)
{
    std::vector<Tag> tags;
    for (const QString &text : texts)
        tags.push_back(TagReader(library(), 1).read(text));
    qint32 result = 0;
    const QByteArray property = "1#0#0#1#" + QByteArray::number(groupLimit);
    library().initProperty(nullptr, nullptr, nullptr, &result, property.constData(), nullptr);
    const int count = library().addrMerge(toKeys(readRanges(tags, groupLimit, Neighbours::Unlike)));
    std::vector<std::pair<QString, int>> blocks;
    for (int i = 0; i < count; ++i) {
        FRAME_PRO frame;
        library().getSendFrame(&frame);
        blocks.emplace_back(elementName(frame.var.area, refreshedBy(frame).first),
                            frame.replyDataLen / 2);
        QByteArray reply;
        QString errorInfo;
        library().dealRcvFrame(reply, errorInfo);
    }
    return blocks;
}

using Blocks = std::vector<std::pair<QString, int>>;

} // namespace

TEST(UnlikeCut, LongRunsOfWordsHaveThreeLengthsInTurn)
{
    EXPECT_EQ(
        cycle({"D100x40"}),
        (Blocks{
            {"D100", 16}, {"D108", 14}, {"D115", 12}, {"D121", 16}, {"D129", 14}, {"D136", 8}}));
}

TEST(UnlikeCut, TwoFullGroupsAreCutSoThatTheDriverDoesNotJoinThem)
{
    EXPECT_EQ(cycle({"D100x16"}), (Blocks{{"D100", 14}, {"D107", 16}, {"D115", 2}}));
}

TEST(UnlikeCut, RunsThatDifferAnywayStayAsTheyAre)
{
    EXPECT_EQ(cycle({"D100x8", "D200x3", "M0x20"}), (Blocks{{"D100", 16}, {"D200", 6}, {"M0", 4}}));
}

TEST(UnlikeCut, SingleWordsAreReadWithAndWithoutTheOneBelow)
{
    EXPECT_EQ(cycle({"D100", "D200", "D300"}), (Blocks{{"D100", 2}, {"D199", 4}, {"D300", 2}}));
    EXPECT_EQ(cycle({"D4095", "D4096"}).back().first, "D4096"); // never across a border
}

TEST(UnlikeCut, CountersAreReadOneAndTwoInTurn)
{
    EXPECT_EQ(cycle({"CV2200x4"}), (Blocks{{"CV2200", 8}, {"CV2202", 4}, {"CV2203", 4}}));
    EXPECT_EQ(cycle({"CV2254x2"}), (Blocks{{"CV2254", 4}, {"CV2255", 4}}));
}

TEST(UnlikeCut, BitsAreReadInOneBlockAndTwoInTurn)
{
    EXPECT_EQ(cycle({"M0x100"}),
              (Blocks{{"M0", 4}, {"M32", 2}, {"M48", 4}, {"M80", 2}, {"M96", 4}}));
    EXPECT_EQ(cycle({"M15", "M31", "X0", "Y0"}),
              (Blocks{{"X0", 2}, {"Y0", 4}, {"M0", 2}, {"M16", 4}}));
}

TEST(UnlikeCut, ValuesOf32BitsStayInOneRequest)
{
    EXPECT_EQ(cycle({"D100x16/float32"}), (Blocks{{"D100", 12}, {"D106", 16}, {"D114", 4}}));
}

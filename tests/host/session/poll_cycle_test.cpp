#include "host/session/poll_cycle.h"

#include "host/session/request_ranges.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

std::vector<Tag> tags(const QStringList &texts)
{
    std::vector<Tag> list;
    for (const QString &text : texts)
        list.push_back(tagOf(text));
    return list;
}

PollCycle rawCycle(const QStringList &texts)
{
    return pollCycleOf(library(), toRawKeys(tags(texts)), tags(texts), 8);
}

PollCycle cycle(const QStringList &texts)
{
    return pollCycleOf(library(), toKeys(readRanges(tags(texts), 8)), tags(texts), 8);
}

} // namespace

TEST(PollCycle, BridgedGapIsCountedAsNotAskedFor)
{
    const PollCycle made = rawCycle({"D100x2", "D103"});
    ASSERT_EQ(made.blocks.size(), 1U);
    EXPECT_EQ(made.blocks[0].frame, ":01031064000484\r\n");
    EXPECT_EQ(made.blocks[0].replyChars, 27);
    EXPECT_EQ(made.blocks[0].refreshed, (kmr::ElementRange{1, "D", 100, 4}));
    EXPECT_EQ(made.blocks[0].unasked, 1);
    EXPECT_TRUE(made.gaps.empty());
}

TEST(PollCycle, SingleBitReadsItsBlockOfSixteen)
{
    const PollCycle made = cycle({"X3"});
    ASSERT_EQ(made.blocks.size(), 1U);
    EXPECT_EQ(made.blocks[0].frame, ":010204000010E9\r\n");
    EXPECT_EQ(made.blocks[0].refreshed, (kmr::ElementRange{1, "X", 0, 16}));
    EXPECT_EQ(made.blocks[0].unasked, 15);
}

TEST(PollCycle, BitsBeyondThirtyTwoAreNeverRefreshed)
{
    const PollCycle made = rawCycle({"M0x34"});
    ASSERT_EQ(made.gaps.size(), 1U);
    EXPECT_EQ(made.gaps[0].elements, (kmr::ElementRange{1, "M", 32, 2}));
    EXPECT_EQ(made.gaps[0].reason, "never refreshed: the block from M0 has 34 bits, and one read "
                                   "covers 32 at most");
    EXPECT_TRUE(cycle({"M0x34"}).gaps.empty());
}

TEST(PollCycle, BlockAcrossABorderReadsWrongly)
{
    const PollCycle made = rawCycle({"D4095x2"});
    ASSERT_EQ(made.gaps.size(), 1U);
    EXPECT_EQ(made.gaps[0].elements, (kmr::ElementRange{1, "D", 4096, 1}));
    EXPECT_TRUE(made.gaps[0].reason.startsWith("read wrongly: the block from D4095"));
    EXPECT_TRUE(cycle({"D4095x2"}).gaps.empty());
}

TEST(PollCycle, BitOfAWordIsNeverRefreshedByItsOwnBlock)
{
    const PollCycle made = rawCycle({"TV5.3"});
    ASSERT_EQ(made.gaps.size(), 1U);
    EXPECT_EQ(made.gaps[0].elements, (kmr::ElementRange{1, "TV", 5, 1}));
    EXPECT_TRUE(made.gaps[0].reason.contains("reads nothing"));
    EXPECT_TRUE(cycle({"TV5.3"}).gaps.empty());
}

TEST(PollCycle, BlocksComeInTheDriversOrder)
{
    const PollCycle made = cycle({"X0", "D0", "CV2200", "TV0"});
    ASSERT_EQ(made.blocks.size(), 4U);
    EXPECT_EQ(made.blocks[0].refreshed.area, "TV");
    EXPECT_EQ(made.blocks[1].refreshed.area, "CV2");
    EXPECT_EQ(made.blocks[2].refreshed.area, "D");
    EXPECT_EQ(made.blocks[3].refreshed.area, "X");
}

TEST(PollCycle, HalfOfTheCountersOfABlockIsNeverRefreshed)
{
    const PollCycle made = rawCycle({"CV2200x2"});
    ASSERT_EQ(made.gaps.size(), 1U);
    EXPECT_EQ(made.gaps[0].elements, (kmr::ElementRange{1, "CV2", 201, 1}));
    EXPECT_EQ(made.gaps[0].reason,
              "never refreshed: the driver treats the number of counters in a block "
              "as a number of words, and reads half of them");
    EXPECT_TRUE(cycle({"CV2200x2"}).gaps.empty());
}

TEST(PollCycle, LongRunOfInputsIsCutInDecimalDigits)
{
    const PollCycle made = rawCycle({"TV5.3", "X0x140"});
    ASSERT_EQ(made.gaps.size(), 4U);
    EXPECT_EQ(made.gaps[3].elements, (kmr::ElementRange{1, "X", 116, 24}));
    EXPECT_EQ(made.gaps[3].reason, "never refreshed: no block contains it, since the driver counts "
                                   "octal numbers in decimal");
    EXPECT_TRUE(cycle({"TV5.3", "X0x140"}).gaps.empty());
}

TEST(PollCycle, GapsApartAndOfOtherStationsAreNamedEach)
{
    const PollCycle made = rawCycle({"TV5.3", "TV90.3", "TV91", "2#TV5.3"});
    ASSERT_EQ(made.gaps.size(), 3U);
    EXPECT_EQ(made.gaps[0].elements, (kmr::ElementRange{1, "TV", 5, 1}));
    EXPECT_EQ(made.gaps[1].elements, (kmr::ElementRange{1, "TV", 90, 1}));
    EXPECT_EQ(made.gaps[2].elements, (kmr::ElementRange{2, "TV", 5, 1}));
}

} // namespace kmr

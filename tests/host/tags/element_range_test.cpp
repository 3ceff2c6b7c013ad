#include "host/tags/element_range.h"

#include <gtest/gtest.h>

using namespace kmr;

TEST(ElementRange, KeysTellBitsFromWords)
{
    EXPECT_EQ(toKey({2, "X", 15, 3}).elemKind, -1);
    EXPECT_EQ(toKey({2, "X", 15, 3}).address, 17);
    EXPECT_EQ(toKey({2, "X", 15, 3}).station, 2);
    EXPECT_NE(toKey({2, "D", 15, 3}).elemKind, -1);
    EXPECT_EQ(toKey({2, "D", 15, 3}).count, 3);
}

TEST(RefreshedBy, WhatLiesBehindABorderIsLeftOut)
{
    FRAME_PRO frame;
    frame.var.station = 1;
    frame.var.area = "D";
    frame.var.address = 4094;
    frame.replyDataLen = 16; // four words
    EXPECT_EQ(refreshedBy(frame), (ElementRange{1, "D", 4094, 2}));
    frame.var.area = "M";
    frame.var.address = 1530;
    frame.replyDataLen = 8; // 32 bits
    EXPECT_EQ(refreshedBy(frame), (ElementRange{1, "M", 1520, 16}));
}

TEST(RefreshedBy, InputsAreWholeBlocksInLinearNumbers)
{
    FRAME_PRO frame;
    frame.var.station = 3;
    frame.var.area = "X";
    frame.var.address = 21; // octal
    frame.replyDataLen = 4;
    EXPECT_EQ(refreshedBy(frame), (ElementRange{3, "X", 16, 16}));
}

TEST(ElementRange, EqualsAnotherOnlyInAllItsParts)
{
    const ElementRange run{1, "D", 100, 2};
    EXPECT_TRUE(run == (ElementRange{1, "D", 100, 2}));
    EXPECT_FALSE(run == (ElementRange{2, "D", 100, 2}));
    EXPECT_FALSE(run == (ElementRange{1, "TV", 100, 2}));
    EXPECT_FALSE(run == (ElementRange{1, "D", 101, 2}));
    EXPECT_FALSE(run == (ElementRange{1, "D", 100, 3}));
}

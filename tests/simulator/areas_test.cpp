// The panel's device areas as windows on the controller's memory.
#include "simulator/areas.h"

#include <gtest/gtest.h>

namespace {

using simulator::element;
using simulator::ElementKind;
using simulator::Memory;
using simulator::placeOf;
using simulator::setElement;

// The address of a bit, -1 where there is no such bit.
int bitAt(const char *area, int number)
{
    const auto place = placeOf(area, number);
    return place && place->kind == ElementKind::Bit ? place->address : -1;
}

// The address of a register, -1 where there is no such register.
int registerAt(const char *area, int number)
{
    const auto place = placeOf(area, number);
    return place && place->kind == ElementKind::Register ? place->address : -1;
}

// True when both elements are the same memory.
bool areShared(const char *area, int number, const char *otherArea, int otherNumber)
{
    Memory memory;
    const bool stored = setElement(memory, area, number, 1);
    return stored && element(memory, otherArea, otherNumber) == 1U;
}

TEST(Area, XTakesOctalDigits)
{
    EXPECT_EQ(bitAt("X", 0), 0x0400);
    EXPECT_EQ(bitAt("X", 7), 0x0407);
    EXPECT_EQ(bitAt("X", 10), 0x0408);
    EXPECT_EQ(bitAt("X", 17), 0x040F);
    EXPECT_EQ(bitAt("X", 23417), 0x2B0F);
}

TEST(Area, YTakesOctalDigits)
{
    EXPECT_EQ(bitAt("Y", 0), 0x0500);
    EXPECT_EQ(bitAt("Y", 17), 0x050F);
    EXPECT_EQ(bitAt("Y", 23417), 0x2C0F);
}

TEST(Area, XAndYHaveNoElementsWithTheDigits8And9)
{
    for (const int digits : {8, 9, 18, 80, 190, 20009}) {
        EXPECT_EQ(bitAt("X", digits), -1) << digits;
        EXPECT_EQ(bitAt("Y", digits), -1) << digits;
    }
}

TEST(Area, MChangesItsBaseAt1536)
{
    EXPECT_EQ(bitAt("M", 0), 0x0800);
    EXPECT_EQ(bitAt("M", 1535), 0x0DFF);
    EXPECT_EQ(bitAt("M", 1536), 0xB000);
    EXPECT_EQ(bitAt("M", 22015), 0xFFFF);
}

TEST(Area, MFrom22016KeepsTheLower16BitsOfItsAddress)
{
    EXPECT_EQ(bitAt("M", 22016), 0x0000);
    EXPECT_EQ(bitAt("M", 65536), 0xAA00);
}

TEST(Area, SStartsAtTheBeginning)
{
    EXPECT_EQ(bitAt("S", 0), 0x0000);
    EXPECT_EQ(bitAt("S", 9999), 0x270F);
}

TEST(Area, TStartsAt0600)
{
    EXPECT_EQ(bitAt("T", 0), 0x0600);
    EXPECT_EQ(bitAt("T", 9999), 0x2D0F);
}

TEST(Area, CStartsAt0E00)
{
    EXPECT_EQ(bitAt("C", 0), 0x0E00);
    EXPECT_EQ(bitAt("C", 9999), 0x350F);
}

TEST(Area, TvStartsAt0600)
{
    EXPECT_EQ(registerAt("TV", 0), 0x0600);
    EXPECT_EQ(registerAt("TV", 9999), 0x2D0F);
}

TEST(Area, CvEndsWhereCv2Starts)
{
    EXPECT_EQ(registerAt("CV", 0), 0x0E00);
    EXPECT_EQ(registerAt("CV", 199), 0x0EC7);
    EXPECT_EQ(registerAt("CV2", 200), 0x0EC8);
    EXPECT_EQ(registerAt("CV2", 255), 0x0EFF);
}

TEST(Area, DChangesItsBaseAt4096)
{
    EXPECT_EQ(registerAt("D", 0), 0x1000);
    EXPECT_EQ(registerAt("D", 4095), 0x1FFF);
    EXPECT_EQ(registerAt("D", 4096), 0x9000);
    EXPECT_EQ(registerAt("D", 11999), 0xAEDF);
}

struct Beyond {
    const char *area;
    int number;
};

class OutsideAnArea : public testing::TestWithParam<Beyond> {};

TEST_P(OutsideAnArea, ThereIsNothing)
{
    Memory memory;
    EXPECT_FALSE(placeOf(GetParam().area, GetParam().number));
    EXPECT_FALSE(element(memory, GetParam().area, GetParam().number));
    EXPECT_FALSE(setElement(memory, GetParam().area, GetParam().number, 1));
    EXPECT_TRUE(memory == Memory());
}

INSTANTIATE_TEST_SUITE_P(Below, OutsideAnArea,
                         testing::Values(Beyond{"X", -1}, Beyond{"Y", -1}, Beyond{"M", -1},
                                         Beyond{"S", -1}, Beyond{"T", -1}, Beyond{"C", -1},
                                         Beyond{"TV", -1}, Beyond{"CV", -1}, Beyond{"CV2", 199},
                                         Beyond{"D", -1}));

INSTANTIATE_TEST_SUITE_P(Above, OutsideAnArea,
                         testing::Values(Beyond{"X", 23420}, Beyond{"Y", 23420}, Beyond{"M", 65537},
                                         Beyond{"S", 10000}, Beyond{"T", 10000}, Beyond{"C", 10000},
                                         Beyond{"TV", 10000}, Beyond{"CV", 200}, Beyond{"CV2", 256},
                                         Beyond{"D", 12000}));

INSTANTIATE_TEST_SUITE_P(Unknown, OutsideAnArea,
                         testing::Values(Beyond{"", 0}, Beyond{"d", 0}, Beyond{"SM", 0},
                                         Beyond{"TV_bit", 0}));

TEST(Overlap, BitAreasShareTheirMemory)
{
    EXPECT_TRUE(areShared("S", 1024, "X", 0));
    EXPECT_TRUE(areShared("X", 400, "Y", 0));
    EXPECT_TRUE(areShared("Y", 400, "T", 0));
    EXPECT_TRUE(areShared("T", 512, "M", 0));
    EXPECT_TRUE(areShared("T", 2048, "C", 0));
    EXPECT_TRUE(areShared("M", 22016, "S", 0));
}

TEST(Overlap, WordAreasShareTheirMemory)
{
    EXPECT_TRUE(areShared("TV", 2048, "CV", 0));
    EXPECT_TRUE(areShared("TV", 2248, "CV2", 200));
    EXPECT_TRUE(areShared("TV", 2560, "D", 0));
}

TEST(Overlap, BitsAndWordsAtOneAddressAreApart)
{
    EXPECT_FALSE(areShared("T", 0, "TV", 0));
    EXPECT_FALSE(areShared("CV", 0, "C", 0));
}

TEST(Element, IsSetAndCleared)
{
    Memory memory;
    EXPECT_TRUE(setElement(memory, "X", 17, 1));
    EXPECT_EQ(element(memory, "X", 17), 1U);
    EXPECT_TRUE(memory.bit(0x040F));
    EXPECT_TRUE(setElement(memory, "X", 17, 0));
    EXPECT_EQ(element(memory, "X", 17), 0U);
}

TEST(Element, HoldsTheHighestValueOfItsKind)
{
    Memory memory;
    EXPECT_TRUE(setElement(memory, "D", 4096, 0xFFFF));
    EXPECT_TRUE(setElement(memory, "CV2", 255, 0xFFFFFFFF));
    EXPECT_EQ(element(memory, "D", 4096), 0xFFFFU);
    EXPECT_EQ(element(memory, "CV2", 255), 0xFFFFFFFFU);
}

TEST(Element, RefusesAValueThatDoesNotFit)
{
    Memory memory;
    EXPECT_FALSE(setElement(memory, "M", 0, 2));
    EXPECT_FALSE(setElement(memory, "D", 0, 0x10000));
    EXPECT_TRUE(memory == Memory());
}

} // namespace

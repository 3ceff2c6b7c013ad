#include "driver/address.h"

#include "driver_fixture.h"

#include <climits>

namespace {

const DeviceArea &areaNamed(const char *name)
{
    return *findDeviceArea(QString(name));
}

} // namespace

// --- Areas ---------------------------------------------------------------------------------------

TEST(DeviceArea, NamesAreComparedExactly)
{
    EXPECT_NE(findDeviceArea("CV2"), nullptr);
    for (const char *name : {"cv2", "CV2 ", "TV_BIT", "", "Q"})
        EXPECT_EQ(findDeviceArea(name), nullptr) << name;
    EXPECT_EQ(findDeviceArea(QString("D") + QChar(0)), nullptr);
}

TEST(DeviceArea, PollingOrderIsWordsThenBitsThenTvBits)
{
    const char *const order[] = {"TV", "CV", "CV2", "D", "X", "Y", "M", "S", "T", "C", "TV_bit"};
    for (int code = 0; code < 11; ++code)
        EXPECT_EQ(areaNamed(order[code]).pollingOrder, code) << order[code];
    EXPECT_EQ(areaNamed("SM").pollingOrder, -1);
}

TEST(DeviceArea, OnlyTvBitIsTvBit)
{
    EXPECT_TRUE(isTvBit(areaNamed("TV_bit")));
    EXPECT_FALSE(isTvBit(areaNamed("TV")));
    EXPECT_FALSE(isTvBit(areaNamed("T")));
}

TEST(DeviceArea, ElementsAreBitsWordsCountersOrNone)
{
    for (const char *name : BIT_AREAS)
        EXPECT_EQ(elementKind(findDeviceArea(name)), BIT_ELEMENTS) << name;
    for (const char *name : WORD_AREAS)
        EXPECT_EQ(elementKind(findDeviceArea(name)), WORD_ELEMENTS) << name;
    EXPECT_EQ(elementKind(findDeviceArea("CV2")), COUNTER_ELEMENTS);
    EXPECT_EQ(elementKind(findDeviceArea("SM")), NO_ELEMENTS);
    EXPECT_EQ(elementKind(nullptr), NO_ELEMENTS);
}

// --- Octal digits --------------------------------------------------------------------------------

TEST(OctalDigits, AreReadAndWrittenInBaseEight)
{
    const std::pair<qint32, qint32> rows[] = {
        {0, 0}, {17, 15}, {20, 16}, {23417, 9999}, {1777777777, 268435455}};
    for (const auto &[digits, linear] : rows) {
        EXPECT_EQ(linearFromOctalDigits(digits), linear);
        EXPECT_EQ(octalDigitsFromLinear(linear), digits);
    }
}

TEST(OctalDigits, WithAnEightANineOrASignReadAsZero)
{
    for (const qint32 digits : {8, 19, 817, INT_MAX, -1, -17, INT_MIN})
        EXPECT_EQ(linearFromOctalDigits(digits), 0) << digits;
}

TEST(OctalDigits, OfANegativeNumberOrOneThatNeedsMoreThan32BitsAreZero)
{
    for (const qint32 linear : {1073741823, INT_MAX, -1, INT_MIN}) // 7777777777, 17777777777
        EXPECT_EQ(octalDigitsFromLinear(linear), 0) << linear;
}

TEST(OctalDigits, CountInAreasXAndYOnly)
{
    EXPECT_EQ(linearAddress(areaNamed("X"), 17), 15);
    EXPECT_EQ(linearAddress(areaNamed("Y"), 20), 16);
    EXPECT_EQ(linearAddress(areaNamed("M"), 17), 17);
    EXPECT_EQ(linearAddress(areaNamed("D"), 17), 17);
}

TEST(AddressPlus, WrapsRoundAt32Bits)
{
    EXPECT_EQ(addressPlus(100, 3), 103);
    EXPECT_EQ(addressPlus(-1, 1), 0);
    EXPECT_EQ(addressPlus(INT_MAX, 1), INT_MIN);
    EXPECT_EQ(addressPlus(INT_MIN, -1), INT_MAX);
}

TEST(Check8Num, RefusesAnEightOrNineInAnyPlaceOfAPositiveNumber)
{
    for (const int number : {0, 7, 1777, 1234567, -1, -18, INT_MIN})
        EXPECT_EQ(check8Num(number), 1) << number;
    for (const int number : {18, 19, 8000, 191, INT_MAX}) // 2147483647
        EXPECT_EQ(check8Num(number), 0) << number;
}

// --- a2i_ddd_DD ----------------------------------------------------------------------------------

TEST(WordDotBit, IsWordTimesSixteenPlusBit)
{
    const std::pair<const char *, int> rows[] = {{"0.0", 0},
                                                 {"0.9", 9},
                                                 {"0.10", 10},
                                                 {"100.15", 1615},
                                                 {"1.0", 16},
                                                 {"007.1", 113},
                                                 {" 2 .3", 35},
                                                 {"+2.3", 35},
                                                 {"-1.0", -16},
                                                 {"-1.15", -1},
                                                 {"134217727.15", INT_MAX},
                                                 {"-134217728.0", INT_MIN}};
    for (const auto &[text, expected] : rows) {
        int value = 777;
        EXPECT_EQ(a2i_ddd_DD(text, &value), 1) << text;
        EXPECT_EQ(value, expected) << text;
    }
}

TEST(WordDotBit, BeyondThe32BitsIsTheLowestNumber)
{
    for (const char *text : {"134217728.0", "2147483647.15", "-134217729.15"}) {
        int value = 777;
        EXPECT_EQ(a2i_ddd_DD(text, &value), 1) << text;
        EXPECT_EQ(value, INT_MIN) << text;
    }
}

TEST(WordDotBit, IsAllThatIsTakenAndTheResultStaysOtherwise)
{
    const char *const texts[] = {"",     "100",   "1.2.3",       ".",      ".5",   "5.",
                                 "a.1",  "1.a",   "0x1.1",       "100.16", "1.99", "1.09",
                                 "1.00", "1.010", "1.015",       "1. 5",   "1.5 ", "1.15 ",
                                 "1.+5", "1.-1",  "2147483648.0"};
    for (const char *text : texts) {
        int value = 777;
        EXPECT_EQ(a2i_ddd_DD(text, &value), -1) << text;
        EXPECT_EQ(value, 777) << text;
    }
}

TEST(CheckSplitter, WantsACarriageReturnThatNoAsteriskPrecedes)
{
    for (const char *frame : {"AB\r", "A\r", "*A\r", "\r\r"})
        EXPECT_EQ(bCheckSplitter(frame), 1) << frame;
    for (const char *frame : {"AB*\r", "*\r", "AB", "AB\r\n", "A\rB", "", "A", "\r"})
        EXPECT_EQ(bCheckSplitter(frame), 0) << frame;
}

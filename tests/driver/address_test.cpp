#include "driver/address.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

const int INT_LEAST = std::numeric_limits<int>::min();
const int INT_MOST = std::numeric_limits<int>::max();

const DeviceArea &areaNamed(const char *name)
{
    return *findDeviceArea(QString(name));
}

// --- Areas ---------------------------------------------------------------------------------------

TEST(DeviceArea, NamesAreComparedExactly)
{
    EXPECT_NE(findDeviceArea("CV2"), nullptr);
    EXPECT_EQ(findDeviceArea("cv2"), nullptr);
    EXPECT_EQ(findDeviceArea("CV2 "), nullptr);
    EXPECT_EQ(findDeviceArea("TV_BIT"), nullptr);
    EXPECT_EQ(findDeviceArea(""), nullptr);
    EXPECT_EQ(findDeviceArea("Q"), nullptr);
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

TEST(DeviceArea, AnUnknownAreaHasNoElements)
{
    EXPECT_EQ(elementKind(nullptr), NO_ELEMENTS);
    EXPECT_EQ(elementKind(findDeviceArea("SM")), NO_ELEMENTS);
}

TEST(DeviceArea, ElementsAreBitsWordsOrCounters)
{
    for (const char *name : {"X", "Y", "M", "S", "T", "C"})
        EXPECT_EQ(elementKind(findDeviceArea(name)), BIT_ELEMENTS) << name;
    for (const char *name : {"TV", "CV", "D"})
        EXPECT_EQ(elementKind(findDeviceArea(name)), WORD_ELEMENTS) << name;
    EXPECT_EQ(elementKind(findDeviceArea("CV2")), COUNTER_ELEMENTS);
}

// --- Octal digits --------------------------------------------------------------------------------

TEST(OctalDigits, AreReadInBaseEight)
{
    EXPECT_EQ(linearFromOctalDigits(0), 0);
    EXPECT_EQ(linearFromOctalDigits(17), 15);
    EXPECT_EQ(linearFromOctalDigits(23417), 9999);
    EXPECT_EQ(linearFromOctalDigits(1777777777), 268435455);
}

TEST(OctalDigits, WithAnEightOrNineReadAsZero)
{
    EXPECT_EQ(linearFromOctalDigits(8), 0);
    EXPECT_EQ(linearFromOctalDigits(19), 0);
    EXPECT_EQ(linearFromOctalDigits(817), 0);
    EXPECT_EQ(linearFromOctalDigits(INT_MOST), 0);
}

TEST(OctalDigits, OfANegativeNumberReadAsZero)
{
    EXPECT_EQ(linearFromOctalDigits(-1), 0);
    EXPECT_EQ(linearFromOctalDigits(-17), 0);
    EXPECT_EQ(linearFromOctalDigits(INT_LEAST), 0);
}

TEST(OctalDigits, AreWrittenInBaseEight)
{
    EXPECT_EQ(octalDigitsFromLinear(0), 0);
    EXPECT_EQ(octalDigitsFromLinear(15), 17);
    EXPECT_EQ(octalDigitsFromLinear(16), 20);
    EXPECT_EQ(octalDigitsFromLinear(9999), 23417);
    EXPECT_EQ(octalDigitsFromLinear(268435455), 1777777777);
}

TEST(OctalDigits, OfANumberThatNeedsMoreThan32BitsAreZero)
{
    EXPECT_EQ(octalDigitsFromLinear(1073741823), 0); // 7777777777
    EXPECT_EQ(octalDigitsFromLinear(INT_MOST), 0);   // 17777777777
    EXPECT_EQ(octalDigitsFromLinear(-1), 0);
    EXPECT_EQ(octalDigitsFromLinear(INT_LEAST), 0);
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
    EXPECT_EQ(addressPlus(INT_MOST, 1), INT_LEAST);
    EXPECT_EQ(addressPlus(INT_LEAST, -1), INT_MOST);
}

// --- check8Num -----------------------------------------------------------------------------------

TEST(Check8Num, AcceptsOctalDigits)
{
    EXPECT_EQ(check8Num(0), 1);
    EXPECT_EQ(check8Num(7), 1);
    EXPECT_EQ(check8Num(1777), 1);
    EXPECT_EQ(check8Num(1234567), 1);
}

TEST(Check8Num, RefusesAnEightOrNineInAnyPlace)
{
    EXPECT_EQ(check8Num(18), 0);
    EXPECT_EQ(check8Num(19), 0);
    EXPECT_EQ(check8Num(8000), 0);
    EXPECT_EQ(check8Num(191), 0);
    EXPECT_EQ(check8Num(INT_MOST), 0); // 2147483647
}

TEST(Check8Num, AcceptsNegativeNumbers)
{
    EXPECT_EQ(check8Num(-1), 1);
    EXPECT_EQ(check8Num(-18), 1);
    EXPECT_EQ(check8Num(INT_LEAST), 1);
}

// --- a2i_ddd_DD ----------------------------------------------------------------------------------

struct WordDotBit {
    const char *name;
    const char *text;
    int value;
};

std::ostream &operator<<(std::ostream &out, const WordDotBit &row)
{
    return out << row.name;
}

class WordDotBitAccepted : public testing::TestWithParam<WordDotBit> {};

TEST_P(WordDotBitAccepted, GivesWordTimesSixteenPlusBit)
{
    int value = 777;
    EXPECT_EQ(a2i_ddd_DD(GetParam().text, &value), 1);
    EXPECT_EQ(value, GetParam().value);
}

const WordDotBit ACCEPTED[] = {
    {"First", "0.0", 0},
    {"OneDigitBit", "0.9", 9},
    {"LowestTwoDigitBit", "0.10", 10},
    {"HighestBit", "100.15", 1615},
    {"SecondWord", "1.0", 16},
    {"LeadingZerosInWord", "007.1", 113},
    {"WhiteSpaceAroundWord", " 2 .3", 35},
    {"PlusSignInWord", "+2.3", 35},
    {"MinusSignInWord", "-1.0", -16},
    {"MinusWordAndBit", "-1.15", -1},
    {"Highest32BitValue", "134217727.15", 2147483647},
    {"Lowest32BitValue", "-134217728.0", INT_LEAST},
    {"ValueBeyond32Bits", "134217728.0", INT_LEAST},
    {"ValueFarBeyond32Bits", "2147483647.15", INT_LEAST},
    {"ValueBelow32Bits", "-134217729.15", INT_LEAST},
};

INSTANTIATE_TEST_SUITE_P(Texts, WordDotBitAccepted, testing::ValuesIn(ACCEPTED),
                         [](const auto &row) { return std::string(row.param.name); });

class WordDotBitRefused : public testing::TestWithParam<WordDotBit> {};

TEST_P(WordDotBitRefused, GivesMinusOneAndLeavesTheResult)
{
    int value = 777;
    EXPECT_EQ(a2i_ddd_DD(GetParam().text, &value), -1);
    EXPECT_EQ(value, 777);
}

const WordDotBit REFUSED[] = {
    {"Empty", "", 0},
    {"NoDot", "100", 0},
    {"TwoDots", "1.2.3", 0},
    {"DotAlone", ".", 0},
    {"NoWord", ".5", 0},
    {"NoBit", "5.", 0},
    {"LetterInWord", "a.1", 0},
    {"LetterInBit", "1.a", 0},
    {"HexadecimalWord", "0x1.1", 0},
    {"BitSixteen", "100.16", 0},
    {"BitNinetyNine", "1.99", 0},
    {"TwoDigitBitBelowTen", "100.05", 0},
    {"TwoDigitNine", "1.09", 0},
    {"TwoDigitZero", "1.00", 0},
    {"ThreeDigitBit", "1.010", 0},
    {"ThreeDigitBitInRange", "1.015", 0},
    {"WhiteSpaceBeforeBit", "1. 5", 0},
    {"WhiteSpaceBehindBit", "1.5 ", 0},
    {"WhiteSpaceBehindTwoDigitBit", "1.15 ", 0},
    {"PlusSignInBit", "1.+5", 0},
    {"MinusSignInBit", "1.-1", 0},
    {"WordBeyond32Bits", "2147483648.0", 0},
};

INSTANTIATE_TEST_SUITE_P(Texts, WordDotBitRefused, testing::ValuesIn(REFUSED),
                         [](const auto &row) { return std::string(row.param.name); });

// --- bCheckSplitter ------------------------------------------------------------------------------

TEST(CheckSplitter, AcceptsACarriageReturnAtTheEnd)
{
    EXPECT_EQ(bCheckSplitter("AB\r"), 1);
    EXPECT_EQ(bCheckSplitter("A\r"), 1);
    EXPECT_EQ(bCheckSplitter("*A\r"), 1);
    EXPECT_EQ(bCheckSplitter("\r\r"), 1);
}

TEST(CheckSplitter, RefusesACarriageReturnBehindAnAsterisk)
{
    EXPECT_EQ(bCheckSplitter("AB*\r"), 0);
    EXPECT_EQ(bCheckSplitter("*\r"), 0);
}

TEST(CheckSplitter, RefusesAnyOtherLastByte)
{
    EXPECT_EQ(bCheckSplitter("AB"), 0);
    EXPECT_EQ(bCheckSplitter("AB\r\n"), 0);
    EXPECT_EQ(bCheckSplitter("A\rB"), 0);
}

TEST(CheckSplitter, RefusesFewerThanTwoBytes)
{
    EXPECT_EQ(bCheckSplitter(""), 0);
    EXPECT_EQ(bCheckSplitter("A"), 0);
    EXPECT_EQ(bCheckSplitter("\r"), 0);
}

} // namespace

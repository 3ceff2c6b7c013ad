// The checks of typed addresses, intf_checkAddrValidity and intf_checkAddr.
#include "driver/address.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

const qint32 INT_LEAST = std::numeric_limits<qint32>::min();
const qint32 INT_MOST = std::numeric_limits<qint32>::max();
const qint32 UNTOUCHED = 777;

enum { WANT_BITS = 0, WANT_WORDS = 1, BIT_TYPE = -1, COUNTER_TYPE = 1 };

enum { VALID = 0, WRONG_KIND = 1, OUT_OF_RANGE = 2, UNKNOWN_AREA = 3, NO_ADDRESS = 4 };
enum { WRONG_COUNTER_TYPE = 5 };

struct CheckRow {
    const char *name;
    const char *area;
    bool bits; // whether the host asks for bits
    const char *text;
    qint32 count;
    qint32 result;
    qint32 address;
};

std::ostream &operator<<(std::ostream &out, const CheckRow &row)
{
    return out << row.name;
}

class CheckedAddress : public testing::TestWithParam<CheckRow> {};

TEST_P(CheckedAddress, GivesCodeAndNumberByWantWord)
{
    const CheckRow &row = GetParam();
    qint32 address = UNTOUCHED;
    const qint32 want = row.bits ? WANT_BITS : WANT_WORDS;
    EXPECT_EQ(intf_checkAddrValidity(row.area, row.text, &address, row.count, want), row.result);
    EXPECT_EQ(address, row.address);
}

TEST_P(CheckedAddress, GivesCodeAndNumberByDataType)
{
    const CheckRow &row = GetParam();
    qint32 address = UNTOUCHED;
    const qint32 type = row.bits ? BIT_TYPE : COUNTER_TYPE;
    EXPECT_EQ(intf_checkAddr(row.area, row.text, &address, type, row.count), row.result);
    EXPECT_EQ(address, row.address);
}

std::string rowName(const testing::TestParamInfo<CheckRow> &row)
{
    return row.param.name;
}

const CheckRow BIT_RANGES[] = {
    {"XFirst", "X", true, "0", 1, VALID, 0},
    {"XKeepsItsDigits", "X", true, "17", 1, VALID, 17},
    {"XLastDigitEight", "X", true, "18", 1, OUT_OF_RANGE, 18},
    {"XFirstDigitNine", "X", true, "917", 1, OUT_OF_RANGE, 917},
    {"XLast", "X", true, "23417", 1, VALID, 23417},
    {"XBehindLast", "X", true, "23420", 1, OUT_OF_RANGE, 23420},
    {"XRunOverLast", "X", true, "23417", 2, OUT_OF_RANGE, 23417},
    {"XRunMeasuredInDecimal", "X", true, "23410", 8, VALID, 23410},
    {"XRunThroughAnEight", "X", true, "17", 2, VALID, 17},
    {"YFirst", "Y", true, "0", 1, VALID, 0},
    {"YLast", "Y", true, "23417", 1, VALID, 23417},
    {"YRunOverLast", "Y", true, "23416", 3, OUT_OF_RANGE, 23416},
    {"YDigitNine", "Y", true, "19", 1, OUT_OF_RANGE, 19},
    {"MFirst", "M", true, "0", 1, VALID, 0},
    {"MTakesEightsAndNines", "M", true, "89", 1, VALID, 89},
    {"MLast", "M", true, "65536", 1, VALID, 65536},
    {"MRunOverLast", "M", true, "65536", 2, OUT_OF_RANGE, 65536},
    {"MBehindLast", "M", true, "65537", 1, OUT_OF_RANGE, 65537},
    {"SLast", "S", true, "9999", 1, VALID, 9999},
    {"SRunOverLast", "S", true, "9999", 2, OUT_OF_RANGE, 9999},
    {"SBehindLast", "S", true, "10000", 1, OUT_OF_RANGE, 10000},
    {"TLast", "T", true, "9999", 1, VALID, 9999},
    {"TBehindLast", "T", true, "10000", 1, OUT_OF_RANGE, 10000},
    {"CLast", "C", true, "9990", 10, VALID, 9990},
    {"CRunOverLast", "C", true, "9990", 11, OUT_OF_RANGE, 9990},
    {"TvBitFirst", "TV_bit", true, "0.0", 1, VALID, 0},
    {"TvBitCombinesWordAndBit", "TV_bit", true, "100.15", 1, VALID, 1615},
    {"TvBitLast", "TV_bit", true, "9999.15", 1, VALID, 159999},
    {"TvBitRunOverLast", "TV_bit", true, "9999.15", 2, OUT_OF_RANGE, 159999},
    {"TvBitBehindLast", "TV_bit", true, "10000.0", 1, OUT_OF_RANGE, 160000},
};

INSTANTIATE_TEST_SUITE_P(BitRanges, CheckedAddress, testing::ValuesIn(BIT_RANGES), rowName);

const CheckRow WORD_RANGES[] = {
    {"TvFirst", "TV", false, "0", 1, VALID, 0},
    {"TvLast", "TV", false, "9999", 1, VALID, 9999},
    {"TvRunOverLast", "TV", false, "9999", 2, OUT_OF_RANGE, 9999},
    {"TvBehindLast", "TV", false, "10000", 1, OUT_OF_RANGE, 10000},
    {"CvFirst", "CV", false, "0", 1, VALID, 0},
    {"CvLast", "CV", false, "199", 1, VALID, 199},
    {"CvRunOverLast", "CV", false, "198", 3, OUT_OF_RANGE, 198},
    {"CvBehindLast", "CV", false, "200", 1, OUT_OF_RANGE, 200},
    {"Cv2BeforeFirst", "CV2", false, "199", 1, OUT_OF_RANGE, 199},
    {"Cv2First", "CV2", false, "200", 1, VALID, 200},
    {"Cv2DigitsAreDecimal", "CV2", false, "208", 1, VALID, 208},
    {"Cv2Last", "CV2", false, "255", 1, VALID, 255},
    {"Cv2RunOverLast", "CV2", false, "255", 2, OUT_OF_RANGE, 255},
    {"Cv2BehindLast", "CV2", false, "256", 1, OUT_OF_RANGE, 256},
    {"DFirst", "D", false, "0", 1, VALID, 0},
    {"DLast", "D", false, "11999", 1, VALID, 11999},
    {"DRunToLast", "D", false, "11990", 10, VALID, 11990},
    {"DRunOverLast", "D", false, "11990", 11, OUT_OF_RANGE, 11990},
    {"DBehindLast", "D", false, "12000", 1, OUT_OF_RANGE, 12000},
};

INSTANTIATE_TEST_SUITE_P(WordRanges, CheckedAddress, testing::ValuesIn(WORD_RANGES), rowName);

// The text alone decides; a text that doesn't convert leaves the number untouched.
const CheckRow TEXTS[] = {
    {"Empty", "D", false, "", 1, NO_ADDRESS, UNTOUCHED},
    {"LetterBehindDigit", "D", false, "1a", 1, NO_ADDRESS, UNTOUCHED},
    {"Minus", "D", false, "-1", 1, NO_ADDRESS, UNTOUCHED},
    {"Plus", "D", false, "+1", 1, NO_ADDRESS, UNTOUCHED},
    {"MinusBehindNumber", "D", false, "1-", 1, NO_ADDRESS, UNTOUCHED},
    {"Hexadecimal", "D", false, "0x10", 1, NO_ADDRESS, UNTOUCHED},
    {"Fraction", "D", false, "1.5", 1, NO_ADDRESS, UNTOUCHED},
    {"WhiteSpaceAround", "D", false, " 12\t", 1, VALID, 12},
    {"WhiteSpaceWithin", "D", false, "1 2", 1, NO_ADDRESS, UNTOUCHED},
    {"LeadingZeros", "D", false, "00010", 1, VALID, 10},
    {"Highest32BitNumber", "D", false, "2147483647", 1, OUT_OF_RANGE, INT_MOST},
    {"Beyond32Bits", "D", false, "2147483648", 1, NO_ADDRESS, UNTOUCHED},
    {"TvLetter", "TV", false, "x", 1, NO_ADDRESS, UNTOUCHED},
    {"CvLetter", "CV", false, "x", 1, NO_ADDRESS, UNTOUCHED},
    {"Cv2Letter", "CV2", false, "x", 1, NO_ADDRESS, UNTOUCHED},
    {"XLetter", "X", true, "x", 1, NO_ADDRESS, UNTOUCHED},
    {"XMinus", "X", true, "-1", 1, NO_ADDRESS, UNTOUCHED},
    {"XPlus", "X", true, "+1", 1, NO_ADDRESS, UNTOUCHED},
    {"XLeadingZeros", "X", true, "0017", 1, VALID, 17},
    {"XWhiteSpaceAround", "X", true, " 17 ", 1, VALID, 17},
    {"XBeyond32Bits", "X", true, "99999999999", 1, NO_ADDRESS, UNTOUCHED},
    {"MLetter", "M", true, "1a", 1, NO_ADDRESS, UNTOUCHED},
    {"MFraction", "M", true, "1.5", 1, NO_ADDRESS, UNTOUCHED},
    {"TvBitWithoutDot", "TV_bit", true, "100", 1, NO_ADDRESS, UNTOUCHED},
    {"TvBitTwoDots", "TV_bit", true, "1.2.3", 1, NO_ADDRESS, UNTOUCHED},
    {"TvBitSixteen", "TV_bit", true, "1.16", 1, NO_ADDRESS, UNTOUCHED},
    {"TvBitMinus", "TV_bit", true, "-1.0", 1, NO_ADDRESS, UNTOUCHED},
    {"TvBitPlus", "TV_bit", true, "+1.0", 1, NO_ADDRESS, UNTOUCHED},
    {"TvBitHighest32BitNumber", "TV_bit", true, "134217727.15", 1, OUT_OF_RANGE, INT_MOST},
    {"TvBitBeyond32Bits", "TV_bit", true, "134217728.0", 1, OUT_OF_RANGE, INT_LEAST},
    {"TvBitFarBeyond32Bits", "TV_bit", true, "268435456.0", 1, OUT_OF_RANGE, INT_LEAST},
};

INSTANTIATE_TEST_SUITE_P(Texts, CheckedAddress, testing::ValuesIn(TEXTS), rowName);

// Start + count - 1 is compared as it stands, in 64 bits.
const CheckRow COUNTS[] = {
    {"DZero", "D", false, "0", 0, VALID, 0},
    {"DZeroBehindLast", "D", false, "12000", 0, VALID, 12000},
    {"DZeroTwoBehindLast", "D", false, "12001", 0, OUT_OF_RANGE, 12001},
    {"DNegative", "D", false, "12005", -5, VALID, 12005},
    {"DLeast", "D", false, "5", INT_LEAST, VALID, 5},
    {"DMost", "D", false, "5", INT_MOST, OUT_OF_RANGE, 5},
    {"TvMost", "TV", false, "5", INT_MOST, OUT_OF_RANGE, 5},
    {"CvZeroBehindLast", "CV", false, "200", 0, VALID, 200},
    {"CvMost", "CV", false, "5", INT_MOST, OUT_OF_RANGE, 5},
    {"Cv2ZeroBehindLast", "CV2", false, "256", 0, VALID, 256},
    {"Cv2ZeroBeforeFirst", "CV2", false, "199", 0, OUT_OF_RANGE, 199},
    {"Cv2Most", "CV2", false, "200", INT_MOST, OUT_OF_RANGE, 200},
    {"XNegative", "X", true, "23420", -2, VALID, 23420},
    {"XMost", "X", true, "7", INT_MOST, OUT_OF_RANGE, 7},
    {"MZeroBehindLast", "M", true, "65537", 0, VALID, 65537},
    {"MMost", "M", true, "7", INT_MOST, OUT_OF_RANGE, 7},
    {"SLeast", "S", true, "0", INT_LEAST, VALID, 0},
    {"CMost", "C", true, "7", INT_MOST, OUT_OF_RANGE, 7},
    {"TvBitZeroBehindLast", "TV_bit", true, "10000.0", 0, VALID, 160000},
    {"TvBitMost", "TV_bit", true, "1.0", INT_MOST, OUT_OF_RANGE, 16},
};

INSTANTIATE_TEST_SUITE_P(Counts, CheckedAddress, testing::ValuesIn(COUNTS), rowName);

const CheckRow AREAS_AND_ORDER[] = {
    {"QIsUnknown", "Q", true, "1", 1, UNKNOWN_AREA, UNTOUCHED},
    {"SmIsUnknown", "SM", true, "1", 1, UNKNOWN_AREA, UNTOUCHED},
    {"SmAsWordsIsUnknown", "SM", false, "1", 1, UNKNOWN_AREA, UNTOUCHED},
    {"LowerCaseIsUnknown", "d", false, "1", 1, UNKNOWN_AREA, UNTOUCHED},
    {"EmptyIsUnknown", "", false, "1", 1, UNKNOWN_AREA, UNTOUCHED},
    {"UnknownAreaBeforeLetters", "Q", true, "abc", 1, UNKNOWN_AREA, UNTOUCHED},
    {"MinusBeforeUnknownArea", "Q", true, "-1", 1, NO_ADDRESS, UNTOUCHED},
    {"PlusBeforeUnknownArea", "Q", true, "+1", 1, NO_ADDRESS, UNTOUCHED},
    {"WrongKindBeforeMinus", "D", true, "-1", 1, WRONG_KIND, UNTOUCHED},
    {"WrongKindBeforeLetters", "X", false, "abc", 1, WRONG_KIND, UNTOUCHED},
    {"RangeBeforeOctalDigits", "X", true, "99999", 1, OUT_OF_RANGE, 99999},
};

INSTANTIATE_TEST_SUITE_P(AreasAndOrder, CheckedAddress, testing::ValuesIn(AREAS_AND_ORDER),
                         rowName);

// --- What the two functions ask of the kind ------------------------------------------------------

TEST(CheckAddrValidity, RefusesWordsOfABitArea)
{
    for (const char *area : {"X", "Y", "M", "S", "T", "C", "TV_bit"}) {
        qint32 address = UNTOUCHED;
        EXPECT_EQ(intf_checkAddrValidity(area, "1", &address, 1, 1), WRONG_KIND) << area;
        EXPECT_EQ(address, UNTOUCHED) << area;
    }
}

TEST(CheckAddrValidity, RefusesBitsOfAWordArea)
{
    for (const char *area : {"TV", "CV", "CV2", "D"}) {
        qint32 address = UNTOUCHED;
        EXPECT_EQ(intf_checkAddrValidity(area, "200", &address, 1, 0), WRONG_KIND) << area;
        EXPECT_EQ(address, UNTOUCHED) << area;
    }
}

TEST(CheckAddrValidity, TakesAnyWantWordButZeroForWords)
{
    qint32 address = UNTOUCHED;
    EXPECT_EQ(intf_checkAddrValidity("D", "1", &address, 1, -1), VALID);
    EXPECT_EQ(intf_checkAddrValidity("D", "1", &address, 1, 2), VALID);
    EXPECT_EQ(intf_checkAddrValidity("X", "1", &address, 1, -1), WRONG_KIND);
    EXPECT_EQ(intf_checkAddrValidity("X", "1", &address, 1, 2), WRONG_KIND);
}

TEST(CheckAddrValidity, HasNoDataTypesForCounters)
{
    qint32 address = UNTOUCHED;
    EXPECT_EQ(intf_checkAddrValidity("CV2", "200", &address, 1, 2), VALID);
}

TEST(CheckAddr, RefusesAnyTypeButMinusOneForABitArea)
{
    for (const char *area : {"X", "Y", "M", "S", "T", "C", "TV_bit"})
        for (const qint32 type : {-2, 0, 1, 9})
            EXPECT_EQ(intf_checkAddr(area, "1", nullptr, type, 1), WRONG_KIND) << area << type;
}

TEST(CheckAddr, RefusesTypeMinusOneForAWordArea)
{
    for (const char *area : {"TV", "CV", "CV2", "D"})
        EXPECT_EQ(intf_checkAddr(area, "200", nullptr, -1, 1), WRONG_KIND) << area;
}

TEST(CheckAddr, TakesAnyTypeButMinusOneForA16BitWordArea)
{
    for (const char *area : {"TV", "CV", "D"})
        for (const qint32 type : {-2, 0, 1, 2, 4, 10})
            EXPECT_EQ(intf_checkAddr(area, "1", nullptr, type, 1), VALID) << area << type;
}

TEST(CheckAddr, TakesFiveTypesForACounter)
{
    for (const qint32 type : {1, 3, 5, 6, 9})
        EXPECT_EQ(intf_checkAddr("CV2", "200", nullptr, type, 1), VALID) << type;
}

TEST(CheckAddr, RefusesEveryOtherTypeForACounter)
{
    for (const qint32 type : {-2, 0, 2, 4, 7, 8, 10, 11, INT_MOST, INT_LEAST})
        EXPECT_EQ(intf_checkAddr("CV2", "200", nullptr, type, 1), WRONG_COUNTER_TYPE) << type;
}

TEST(CheckAddr, RefusesACounterTypeBeforeItConvertsTheText)
{
    qint32 address = UNTOUCHED;
    EXPECT_EQ(intf_checkAddr("CV2", "abc", &address, 2, 1), WRONG_COUNTER_TYPE);
    EXPECT_EQ(intf_checkAddr("CV2", "300", &address, 2, 1), WRONG_COUNTER_TYPE);
    EXPECT_EQ(intf_checkAddr("CV2", "-1", &address, 2, 1), NO_ADDRESS);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST(CheckAddr, TakesTheCountLast)
{
    EXPECT_EQ(intf_checkAddr("D", "11999", nullptr, 2, 1), VALID);
    EXPECT_EQ(intf_checkAddrValidity("D", "11999", nullptr, 2, 1), OUT_OF_RANGE);
}

TEST(CheckAddr, NullOutputIsNotWritten)
{
    EXPECT_EQ(intf_checkAddr("D", "1", nullptr, 1, 1), VALID);
    EXPECT_EQ(intf_checkAddr("X", "18", nullptr, -1, 1), OUT_OF_RANGE);
    EXPECT_EQ(intf_checkAddrValidity("TV_bit", "1.5", nullptr, 1, 0), VALID);
    EXPECT_EQ(intf_checkAddrValidity("TV_bit", "1", nullptr, 1, 0), NO_ADDRESS);
}

} // namespace

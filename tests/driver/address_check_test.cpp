// The checks of typed addresses, intf_checkAddrValidity and intf_checkAddr.
#include "driver/address.h"

#include "driver_fixture.h"

#include <climits>

namespace {

const qint32 UNTOUCHED = 777;

enum { VALID = 0, WRONG_KIND = 1, OUT_OF_RANGE = 2, UNKNOWN_AREA = 3, NO_ADDRESS = 4 };
enum { WRONG_COUNTER_TYPE = 5 };

struct Row {
    const char *area;
    const char *text;
    qint32 count;
    qint32 result;
    qint32 address; // handed out
};

// Both functions give these results when they are asked for bits, or for words.
template <size_t SIZE> void expectChecked(const Row (&rows)[SIZE], bool bits)
{
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.area << " '" << row.text << "' x " << row.count);
        qint32 address = UNTOUCHED;
        EXPECT_EQ(intf_checkAddrValidity(row.area, row.text, &address, row.count, bits ? 0 : 1),
                  row.result);
        EXPECT_EQ(address, row.address);
        address = UNTOUCHED;
        EXPECT_EQ(intf_checkAddr(row.area, row.text, &address, bits ? -1 : 1, row.count),
                  row.result);
        EXPECT_EQ(address, row.address);
    }
}

} // namespace

TEST(CheckedAddress, LiesInsideItsAreaWithTheWholeRun)
{
    const struct {
        const char *area, *first, *last, *behind;
        qint32 firstAddress, lastAddress, behindAddress;
    } areas[] = {
        {"X", "0", "23417", "23420", 0, 23417, 23420},
        {"Y", "0", "23417", "23420", 0, 23417, 23420},
        {"M", "0", "65536", "65537", 0, 65536, 65537},
        {"S", "0", "9999", "10000", 0, 9999, 10000},
        {"T", "0", "9999", "10000", 0, 9999, 10000},
        {"C", "0", "9999", "10000", 0, 9999, 10000},
        {"TV_bit", "0.0", "9999.15", "10000.0", 0, 159999, 160000},
        {"TV", "0", "9999", "10000", 0, 9999, 10000},
        {"CV", "0", "199", "200", 0, 199, 200},
        {"CV2", "200", "255", "256", 200, 255, 256},
        {"D", "0", "11999", "12000", 0, 11999, 12000},
    };
    for (const auto &row : areas) {
        const bool bits = elementKind(findDeviceArea(row.area)) == BIT_ELEMENTS;
        expectChecked({{row.area, row.first, 1, VALID, row.firstAddress},
                       {row.area, row.last, 1, VALID, row.lastAddress},
                       {row.area, row.last, 2, OUT_OF_RANGE, row.lastAddress},
                       {row.area, row.behind, 1, OUT_OF_RANGE, row.behindAddress}},
                      bits);
    }
    expectChecked({{"CV2", "199", 1, OUT_OF_RANGE, 199},
                   {"CV2", "208", 1, VALID, 208},
                   {"D", "11990", 10, VALID, 11990}},
                  false);
    expectChecked({{"TV_bit", "100.15", 1, VALID, 1615}, {"M", "89", 1, VALID, 89}}, true);
}

// A run is measured in decimal, including digits 8 and 9 that no address has.
TEST(CheckedAddress, OfAnOctalAreaHasOctalDigitsOnly)
{
    expectChecked({{"X", "17", 2, VALID, 17},
                   {"X", "23410", 8, VALID, 23410},
                   {"X", "18", 1, OUT_OF_RANGE, 18},
                   {"X", "917", 1, OUT_OF_RANGE, 917},
                   {"Y", "19", 1, OUT_OF_RANGE, 19}},
                  true);
}

TEST(CheckedAddress, WithoutANumberIsNoneAndLeavesTheOutput)
{
    for (const char *text : {"", "1a", "-1", "+1", "1-", "0x10", "1.5", "1 2", "2147483648"})
        expectChecked({{"D", text, 1, NO_ADDRESS, UNTOUCHED}}, false);
    for (const char *text : {"x", "-1", "+1", "1.5", "99999999999"})
        expectChecked({{"X", text, 1, NO_ADDRESS, UNTOUCHED}}, true);
    for (const char *text : {"100", "1.2.3", "1.16", "-1.0", "+1.0"})
        expectChecked({{"TV_bit", text, 1, NO_ADDRESS, UNTOUCHED}}, true);
}

TEST(CheckedAddress, MayHaveBlanksAroundAndZerosInFront)
{
    expectChecked({{"D", " 12\t", 1, VALID, 12}, {"D", "00010", 1, VALID, 10}}, false);
    expectChecked({{"X", "0017", 1, VALID, 17}, {"X", " 17 ", 1, VALID, 17}}, true);
}

TEST(CheckedAddress, BeyondTheAreaIsWrittenUpTo32Bits)
{
    expectChecked({{"D", "2147483647", 1, OUT_OF_RANGE, INT_MAX}}, false);
    expectChecked({{"TV_bit", "134217727.15", 1, OUT_OF_RANGE, INT_MAX},
                   {"TV_bit", "134217728.0", 1, OUT_OF_RANGE, INT_MIN},
                   {"TV_bit", "268435456.0", 1, OUT_OF_RANGE, INT_MIN}},
                  true);
}

// Start + count - 1 is compared in 64 bits.
TEST(CheckedAddress, MayHaveAnyCount)
{
    expectChecked({{"D", "0", 0, VALID, 0},
                   {"D", "12000", 0, VALID, 12000},
                   {"D", "12001", 0, OUT_OF_RANGE, 12001},
                   {"D", "12005", -5, VALID, 12005},
                   {"D", "5", INT_MIN, VALID, 5},
                   {"D", "5", INT_MAX, OUT_OF_RANGE, 5},
                   {"CV2", "256", 0, VALID, 256},
                   {"CV2", "199", 0, OUT_OF_RANGE, 199}},
                  false);
    expectChecked({{"X", "23420", -2, VALID, 23420},
                   {"X", "7", INT_MAX, OUT_OF_RANGE, 7},
                   {"TV_bit", "10000.0", 0, VALID, 160000},
                   {"TV_bit", "1.0", INT_MAX, OUT_OF_RANGE, 16}},
                  true);
}

TEST(CheckedAddress, OfAnUnknownAreaIsRefusedUnlessItsSignIs)
{
    for (const bool bits : {false, true}) {
        for (const char *area : {"Q", "SM", "d", ""})
            expectChecked({{area, "1", 1, UNKNOWN_AREA, UNTOUCHED}}, bits);
        expectChecked({{"Q", "abc", 1, UNKNOWN_AREA, UNTOUCHED},
                       {"Q", "-1", 1, NO_ADDRESS, UNTOUCHED},
                       {"Q", "+1", 1, NO_ADDRESS, UNTOUCHED}},
                      bits);
    }
}

TEST(CheckedAddress, OfTheWrongKindIsRefusedBeforeItsText)
{
    expectChecked({{"D", "-1", 1, WRONG_KIND, UNTOUCHED}}, true);
    expectChecked({{"X", "abc", 1, WRONG_KIND, UNTOUCHED}}, false);
}

TEST(CheckAddrValidity, AsksForBitsWithZeroAndForWordsWithAnythingElse)
{
    for (const qint32 wantWord : {-1, 1, 2}) {
        for (const char *area : BIT_AREAS)
            EXPECT_EQ(intf_checkAddrValidity(area, "1", nullptr, 1, wantWord), WRONG_KIND) << area;
        EXPECT_EQ(intf_checkAddrValidity("D", "1", nullptr, 1, wantWord), VALID);
        EXPECT_EQ(intf_checkAddrValidity("CV2", "200", nullptr, 1, wantWord), VALID);
    }
    for (const char *area : {"TV", "CV", "CV2", "D"})
        EXPECT_EQ(intf_checkAddrValidity(area, "200", nullptr, 1, 0), WRONG_KIND) << area;
}

TEST(CheckAddr, AsksForBitsWithTypeMinusOneAndForWordsWithAnyOther)
{
    for (const qint32 type : {-2, 0, 1, 2, 9, 10}) {
        for (const char *area : BIT_AREAS)
            EXPECT_EQ(intf_checkAddr(area, "1", nullptr, type, 1), WRONG_KIND) << area << type;
        for (const char *area : WORD_AREAS)
            EXPECT_EQ(intf_checkAddr(area, "1", nullptr, type, 1), VALID) << area << type;
    }
    for (const char *area : {"TV", "CV", "CV2", "D"})
        EXPECT_EQ(intf_checkAddr(area, "200", nullptr, -1, 1), WRONG_KIND) << area;
}

TEST(CheckAddr, TakesFiveTypesForACounter)
{
    for (const qint32 type : {1, 3, 5, 6, 9})
        EXPECT_EQ(intf_checkAddr("CV2", "200", nullptr, type, 1), VALID) << type;
    for (const qint32 type : {-2, 0, 2, 4, 7, 8, 10, 11, INT_MAX, INT_MIN})
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

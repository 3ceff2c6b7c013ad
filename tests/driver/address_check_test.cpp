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

// X and Y keep their octal digits, but a run is measured in decimal; 65536 is the last M.
TEST(CheckedAddress, OfBitsLiesInsideItsArea)
{
    const Row rows[] = {{"X", "0", 1, VALID, 0},
                        {"X", "17", 1, VALID, 17},
                        {"X", "18", 1, OUT_OF_RANGE, 18},
                        {"X", "917", 1, OUT_OF_RANGE, 917},
                        {"X", "23417", 1, VALID, 23417},
                        {"X", "23420", 1, OUT_OF_RANGE, 23420},
                        {"X", "23417", 2, OUT_OF_RANGE, 23417},
                        {"X", "23410", 8, VALID, 23410},
                        {"X", "17", 2, VALID, 17},
                        {"Y", "0", 1, VALID, 0},
                        {"Y", "23417", 1, VALID, 23417},
                        {"Y", "23416", 3, OUT_OF_RANGE, 23416},
                        {"Y", "19", 1, OUT_OF_RANGE, 19},
                        {"M", "0", 1, VALID, 0},
                        {"M", "89", 1, VALID, 89},
                        {"M", "65536", 1, VALID, 65536},
                        {"M", "65536", 2, OUT_OF_RANGE, 65536},
                        {"S", "0", 1, VALID, 0},
                        {"S", "9999", 1, VALID, 9999},
                        {"S", "10000", 1, OUT_OF_RANGE, 10000},
                        {"T", "0", 1, VALID, 0},
                        {"T", "9999", 1, VALID, 9999},
                        {"T", "10000", 1, OUT_OF_RANGE, 10000},
                        {"C", "0", 1, VALID, 0},
                        {"C", "9990", 10, VALID, 9990},
                        {"C", "9990", 11, OUT_OF_RANGE, 9990},
                        {"TV_bit", "0.0", 1, VALID, 0},
                        {"TV_bit", "100.15", 1, VALID, 1615},
                        {"TV_bit", "9999.15", 1, VALID, 159999},
                        {"TV_bit", "9999.15", 2, OUT_OF_RANGE, 159999},
                        {"TV_bit", "10000.0", 1, OUT_OF_RANGE, 160000}};
    expectChecked(rows, true);
}

TEST(CheckedAddress, OfWordsLiesInsideItsArea)
{
    const Row rows[] = {{"TV", "0", 1, VALID, 0},
                        {"TV", "9999", 1, VALID, 9999},
                        {"TV", "9999", 2, OUT_OF_RANGE, 9999},
                        {"TV", "10000", 1, OUT_OF_RANGE, 10000},
                        {"CV", "0", 1, VALID, 0},
                        {"CV", "199", 1, VALID, 199},
                        {"CV", "198", 3, OUT_OF_RANGE, 198},
                        {"CV", "200", 1, OUT_OF_RANGE, 200},
                        {"CV2", "199", 1, OUT_OF_RANGE, 199},
                        {"CV2", "200", 1, VALID, 200},
                        {"CV2", "208", 1, VALID, 208},
                        {"CV2", "255", 1, VALID, 255},
                        {"CV2", "255", 2, OUT_OF_RANGE, 255},
                        {"CV2", "256", 1, OUT_OF_RANGE, 256},
                        {"D", "0", 1, VALID, 0},
                        {"D", "11999", 1, VALID, 11999},
                        {"D", "11990", 10, VALID, 11990},
                        {"D", "11990", 11, OUT_OF_RANGE, 11990},
                        {"D", "12000", 1, OUT_OF_RANGE, 12000}};
    expectChecked(rows, false);
}

TEST(CheckedAddress, WithoutANumberIsNoneAndLeavesTheOutput)
{
    const Row words[] = {
        {"D", "", 1, NO_ADDRESS, UNTOUCHED},           {"D", "1a", 1, NO_ADDRESS, UNTOUCHED},
        {"D", "-1", 1, NO_ADDRESS, UNTOUCHED},         {"D", "+1", 1, NO_ADDRESS, UNTOUCHED},
        {"D", "1-", 1, NO_ADDRESS, UNTOUCHED},         {"D", "0x10", 1, NO_ADDRESS, UNTOUCHED},
        {"D", "1.5", 1, NO_ADDRESS, UNTOUCHED},        {"D", "1 2", 1, NO_ADDRESS, UNTOUCHED},
        {"D", "2147483648", 1, NO_ADDRESS, UNTOUCHED}, {"CV2", "x", 1, NO_ADDRESS, UNTOUCHED}};
    expectChecked(words, false);
    const Row bits[] = {{"X", "x", 1, NO_ADDRESS, UNTOUCHED},
                        {"X", "-1", 1, NO_ADDRESS, UNTOUCHED},
                        {"X", "+1", 1, NO_ADDRESS, UNTOUCHED},
                        {"M", "1.5", 1, NO_ADDRESS, UNTOUCHED},
                        {"X", "99999999999", 1, NO_ADDRESS, UNTOUCHED},
                        {"TV_bit", "100", 1, NO_ADDRESS, UNTOUCHED},
                        {"TV_bit", "1.2.3", 1, NO_ADDRESS, UNTOUCHED},
                        {"TV_bit", "1.16", 1, NO_ADDRESS, UNTOUCHED},
                        {"TV_bit", "-1.0", 1, NO_ADDRESS, UNTOUCHED},
                        {"TV_bit", "+1.0", 1, NO_ADDRESS, UNTOUCHED}};
    expectChecked(bits, true);
}

TEST(CheckedAddress, MayHaveBlanksAroundAndZerosInFront)
{
    const Row words[] = {{"D", " 12\t", 1, VALID, 12}, {"D", "00010", 1, VALID, 10}};
    expectChecked(words, false);
    const Row bits[] = {{"X", "0017", 1, VALID, 17}, {"X", " 17 ", 1, VALID, 17}};
    expectChecked(bits, true);
}

TEST(CheckedAddress, BeyondTheAreaIsWrittenUpTo32Bits)
{
    const Row words[] = {{"D", "2147483647", 1, OUT_OF_RANGE, INT_MAX}};
    expectChecked(words, false);
    const Row bits[] = {{"TV_bit", "134217727.15", 1, OUT_OF_RANGE, INT_MAX},
                        {"TV_bit", "134217728.0", 1, OUT_OF_RANGE, INT_MIN},
                        {"TV_bit", "268435456.0", 1, OUT_OF_RANGE, INT_MIN}};
    expectChecked(bits, true);
}

// Start + count - 1 is compared as it stands, in 64 bits.
TEST(CheckedAddress, MayHaveAnyCount)
{
    const Row words[] = {{"D", "0", 0, VALID, 0},
                         {"D", "12000", 0, VALID, 12000},
                         {"D", "12001", 0, OUT_OF_RANGE, 12001},
                         {"D", "12005", -5, VALID, 12005},
                         {"D", "5", INT_MIN, VALID, 5},
                         {"D", "5", INT_MAX, OUT_OF_RANGE, 5},
                         {"CV2", "256", 0, VALID, 256},
                         {"CV2", "199", 0, OUT_OF_RANGE, 199}};
    expectChecked(words, false);
    const Row bits[] = {{"X", "23420", -2, VALID, 23420},
                        {"X", "7", INT_MAX, OUT_OF_RANGE, 7},
                        {"TV_bit", "10000.0", 0, VALID, 160000},
                        {"TV_bit", "1.0", INT_MAX, OUT_OF_RANGE, 16}};
    expectChecked(bits, true);
}

TEST(CheckedAddress, OfAnUnknownAreaIsRefusedUnlessItsSignIs)
{
    const Row rows[] = {
        {"Q", "1", 1, UNKNOWN_AREA, UNTOUCHED},   {"SM", "1", 1, UNKNOWN_AREA, UNTOUCHED},
        {"d", "1", 1, UNKNOWN_AREA, UNTOUCHED},   {"", "1", 1, UNKNOWN_AREA, UNTOUCHED},
        {"Q", "abc", 1, UNKNOWN_AREA, UNTOUCHED}, {"Q", "-1", 1, NO_ADDRESS, UNTOUCHED},
        {"Q", "+1", 1, NO_ADDRESS, UNTOUCHED}};
    expectChecked(rows, true);
    expectChecked(rows, false);
}

TEST(CheckedAddress, OfTheWrongKindIsRefusedBeforeItsText)
{
    const Row words[] = {{"D", "-1", 1, WRONG_KIND, UNTOUCHED}};
    expectChecked(words, true);
    const Row bits[] = {{"X", "abc", 1, WRONG_KIND, UNTOUCHED}};
    expectChecked(bits, false);
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

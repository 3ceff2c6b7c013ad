#include "kmr/run/condition.h"

#include "host/error.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

Condition conditionOf(const QString &text)
{
    return parseCondition(text, NamedTagReader(TagReader(library(), 1)));
}

} // namespace

TEST(Condition, OnlyNumbersAreInARangeAndTheyAreComparedExactly)
{
    const struct {
        const char *condition;
        const char *value;
        bool holds;
    } rows[] = {
        {"D50/float32>=20", "nan", false}, // shown as 0x7FC00000
        {"D50/float32<20", "-inf", false},
        {"D50/float32 0.1..0.1", "0.1", true},
        {"D60/bcd<=300", "0x00FA", false},
        {"D60/bcd<=300", "250", true},
        {"D60/hex<=300", "0x00FA", true},
        {"D60/hex<0xFB", "0x00FA", true},
        {"D60/text<300", "AB", false},
        {"D400/int64>=9007199254740993", "9007199254740992", false}, // equal as double
        {"D400/int64 9007199254740993..9007199254740994", "9007199254740992", false},
        {"D400/int64 9007199254740993..9007199254740994", "9007199254740993", true},
        {"D400/int64 9007199254740991..9007199254740992", "9007199254740993", false},
        {"D400/uint64>1.8446744073709551614e19", "18446744073709551615", true},
        {"D400/int64<=-5e-1", "-1", true},
    };
    for (const auto &row : rows) {
        const Condition condition = conditionOf(row.condition);
        EXPECT_EQ(holds(condition, parseValues(condition.tag, row.value)), row.holds)
            << row.condition << " with " << row.value;
    }
}

TEST(Condition, BoundsAreNumbersAndInOrder)
{
    for (const char *text :
         {"D50/float32>nan", "D50/float32<0xG", "D400/int64 9007199254740993..9007199254740992"})
        EXPECT_THROW(conditionOf(text), Error) << text;
}

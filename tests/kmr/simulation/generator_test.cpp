#include "kmr/simulation/generator.h"

#include <gtest/gtest.h>

namespace kmr {

TEST(Generator, GoesThroughItsRangeAsItsKindSays)
{
    using std::chrono::milliseconds;
    struct Row {
        GeneratorKind kind;
        int time; // in ms
        double number;
    };
    const Row rows[] = {
        {GeneratorKind::Sine, 0, 15},        {GeneratorKind::Sine, 250, 20},
        {GeneratorKind::Sine, 750, 10},      {GeneratorKind::Ramp, 0, 10},
        {GeneratorKind::Ramp, 500, 15},      {GeneratorKind::Ramp, 1000, 10},
        {GeneratorKind::Square, 499, 10},    {GeneratorKind::Square, 500, 20},
        {GeneratorKind::Counter, 999, 10},   {GeneratorKind::Counter, 10999, 20},
        {GeneratorKind::Counter, 11000, 10},
    };
    for (const Row &row : rows) {
        const Generator generator{{}, row.kind, milliseconds(1000), 10, 20};
        EXPECT_DOUBLE_EQ(numberAt(generator, milliseconds(row.time), 0), row.number) << row.time;
    }
}

TEST(Generator, DrawsAnotherNumberEachPeriodAndTheSameFromTheSameSeed)
{
    using std::chrono::milliseconds;
    const Generator generator{{}, GeneratorKind::Random, milliseconds(1000), 10, 20};
    const double first = numberAt(generator, milliseconds(0), 1);
    EXPECT_TRUE(10 <= first && first <= 20);
    EXPECT_EQ(numberAt(generator, milliseconds(999), 1), first);
    EXPECT_NE(numberAt(generator, milliseconds(1000), 1), first);
    EXPECT_NE(numberAt(generator, milliseconds(0), 2), first);
}

} // namespace kmr

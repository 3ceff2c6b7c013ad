// The moving values of the controller's memory.
#include "simulator/animation.h"

#include <gtest/gtest.h>

namespace {

using simulator::advance;
using simulator::element;
using simulator::Memory;
using simulator::setElement;

// An area's element before and after one step.
struct Step {
    const char *area;
    int number;
    std::uint32_t before;
    std::uint32_t after;
};

} // namespace

TEST(Animation, MovesOneCounterOneWordAndEightInputsAndNothingElse)
{
    Memory memory;
    Memory expected;
    advance(memory);
    setElement(expected, "X", 0, 1);
    setElement(expected, "CV2", 200, 1);
    setElement(expected, "D", 0, 7);
    EXPECT_TRUE(memory == expected);
    advance(memory);
    setElement(expected, "X", 0, 0);
    setElement(expected, "X", 1, 1);
    setElement(expected, "CV2", 200, 2);
    setElement(expected, "D", 0, 14);
    EXPECT_TRUE(memory == expected);
}

TEST(Animation, BeginsAnewBehindTheEnd)
{
    for (const Step &step : {Step{"CV2", 200, 0xFFFFFFFF, 0}, Step{"D", 0, 992, 999},
                             Step{"D", 0, 993, 0}, Step{"D", 0, 999, 6}, Step{"X", 7, 1, 0}}) {
        Memory memory;
        setElement(memory, step.area, step.number, step.before);
        advance(memory);
        EXPECT_EQ(element(memory, step.area, step.number), step.after) << step.area << step.before;
        EXPECT_EQ(element(memory, "X", 0), 1U);
    }
}

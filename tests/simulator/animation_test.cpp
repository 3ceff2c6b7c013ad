// The moving values of the controller's memory.
#include "simulator/animation.h"

#include <gtest/gtest.h>

namespace {

using simulator::advance;
using simulator::element;
using simulator::Memory;
using simulator::setElement;

// X 0 to X 7 as text, X 0 first: "10000000".
std::string inputs(const Memory &memory)
{
    std::string text;
    for (int number = 0; number < 8; ++number)
        text += element(memory, "X", number) == 1U ? '1' : '0';
    return text;
}

TEST(Animation, LightsOneInputAfterTheOther)
{
    Memory memory;
    advance(memory);
    EXPECT_EQ(inputs(memory), "10000000");
    advance(memory);
    EXPECT_EQ(inputs(memory), "01000000");
}

TEST(Animation, LightsTheFirstInputAfterTheLast)
{
    Memory memory;
    setElement(memory, "X", 7, 1);
    advance(memory);
    EXPECT_EQ(inputs(memory), "10000000");
}

TEST(Animation, CountsTheCounterUp)
{
    Memory memory;
    advance(memory);
    EXPECT_EQ(element(memory, "CV2", 200), 1U);
    advance(memory);
    EXPECT_EQ(element(memory, "CV2", 200), 2U);
}

TEST(Animation, LetsTheCounterOverflow)
{
    Memory memory;
    setElement(memory, "CV2", 200, 0xFFFFFFFF);
    advance(memory);
    EXPECT_EQ(element(memory, "CV2", 200), 0U);
}

TEST(Animation, RaisesTheWordAndFallsBackBelow1000)
{
    Memory memory;
    advance(memory);
    EXPECT_EQ(element(memory, "D", 0), 7U);
    setElement(memory, "D", 0, 992);
    advance(memory);
    EXPECT_EQ(element(memory, "D", 0), 999U);
    advance(memory);
    EXPECT_EQ(element(memory, "D", 0), 6U);
}

TEST(Animation, TouchesNothingElse)
{
    Memory memory;
    Memory expected;
    advance(memory);
    setElement(expected, "X", 0, 1);
    setElement(expected, "CV2", 200, 1);
    setElement(expected, "D", 0, 7);
    EXPECT_TRUE(memory == expected);
}

} // namespace

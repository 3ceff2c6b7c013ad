// The controller's memory by Modbus address and by element.
#include "simulator/memory.h"

#include <gtest/gtest.h>

namespace {

using simulator::element;
using simulator::Memory;
using simulator::setElement;

TEST(Memory, IsZeroAtFirst)
{
    const Memory memory;
    for (int address = 0; address < 0x10000; ++address) {
        ASSERT_FALSE(memory.bit(static_cast<std::uint16_t>(address))) << address;
        ASSERT_EQ(memory.value(static_cast<std::uint16_t>(address)), 0U) << address;
    }
}

TEST(Memory, KeepsItsFirstAndLastBit)
{
    Memory memory;
    memory.setBit(0x0000, true);
    memory.setBit(0xFFFF, true);
    EXPECT_TRUE(memory.bit(0x0000));
    EXPECT_FALSE(memory.bit(0x0001));
    EXPECT_FALSE(memory.bit(0xFFFE));
    EXPECT_TRUE(memory.bit(0xFFFF));
    memory.setBit(0xFFFF, false);
    EXPECT_FALSE(memory.bit(0xFFFF));
}

TEST(Memory, CutsAValueToTheBytesOfItsRegister)
{
    Memory memory;
    for (const int address : {0x0000, 0x0EC7, 0x0EC8, 0x0EFF, 0x0F00, 0xFFFF})
        memory.setValue(static_cast<std::uint16_t>(address), 0x89ABCDEF);
    EXPECT_EQ(memory.value(0x0000), 0xCDEFU);
    EXPECT_EQ(memory.value(0x0001), 0U);
    EXPECT_EQ(memory.value(0x0EC7), 0xCDEFU);
    EXPECT_EQ(memory.value(0x0EC8), 0x89ABCDEFU);
    EXPECT_EQ(memory.value(0x0EFF), 0x89ABCDEFU);
    EXPECT_EQ(memory.value(0x0F00), 0xCDEFU);
    EXPECT_EQ(memory.value(0xFFFF), 0xCDEFU);
}

TEST(Memory, KeepsBitsAndRegistersApart)
{
    Memory memory;
    memory.setBit(0x0600, true);
    EXPECT_EQ(memory.value(0x0600), 0U);
    memory.setValue(0x0601, 0xFFFF);
    EXPECT_FALSE(memory.bit(0x0601));
}

TEST(Memory, IsEqualOnlyWithTheSameBitsAndRegisters)
{
    Memory memory;
    Memory withBit;
    withBit.setBit(5, true);
    Memory withRegister;
    withRegister.setValue(5, 1);
    EXPECT_TRUE(memory == Memory());
    EXPECT_FALSE(memory == withBit);
    EXPECT_FALSE(memory == withRegister);
}

TEST(Element, IsSetAndClearedByTheNumberThatThePanelShows)
{
    Memory memory;
    EXPECT_TRUE(setElement(memory, "X", 17, 1));
    EXPECT_TRUE(memory.bit(0x040F));
    EXPECT_EQ(element(memory, "X", 17), 1U);
    EXPECT_TRUE(setElement(memory, "X", 17, 0));
    EXPECT_EQ(element(memory, "X", 17), 0U);
    EXPECT_TRUE(setElement(memory, "CV2", 255, 0xFFFFFFFF));
    EXPECT_EQ(element(memory, "CV2", 255), 0xFFFFFFFFU);
}

TEST(Element, WindowsThatOverlapShareTheirMemory)
{
    Memory memory;
    EXPECT_TRUE(setElement(memory, "T", 512, 1));
    EXPECT_EQ(element(memory, "M", 0), 1U);
    EXPECT_TRUE(setElement(memory, "TV", 2560, 7));
    EXPECT_EQ(element(memory, "D", 0), 7U);
}

TEST(Element, RefusesWhatIsNotThereAndWhatDoesNotFit)
{
    Memory memory;
    EXPECT_FALSE(setElement(memory, "X", 18, 1));
    EXPECT_FALSE(element(memory, "X", 18));
    EXPECT_FALSE(setElement(memory, "CV2", 199, 1));
    EXPECT_FALSE(element(memory, "CV2", 199));
    EXPECT_FALSE(setElement(memory, "M", 0, 2));
    EXPECT_FALSE(setElement(memory, "D", 0, 0x10000));
    EXPECT_TRUE(memory == Memory());
}

} // namespace

// The controller's memory by Modbus address.
#include "simulator/memory.h"

#include <gtest/gtest.h>

namespace {

using simulator::Memory;

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
}

TEST(Memory, ClearsABit)
{
    Memory memory;
    memory.setBit(0x0400, true);
    memory.setBit(0x0400, false);
    EXPECT_FALSE(memory.bit(0x0400));
}

TEST(Memory, KeepsItsFirstAndLastRegister)
{
    Memory memory;
    memory.setValue(0x0000, 0x1234);
    memory.setValue(0xFFFF, 0xFFFF);
    EXPECT_EQ(memory.value(0x0000), 0x1234U);
    EXPECT_EQ(memory.value(0x0001), 0U);
    EXPECT_EQ(memory.value(0xFFFF), 0xFFFFU);
}

TEST(Memory, KeepsBitsAndRegistersApart)
{
    Memory memory;
    memory.setBit(0x0600, true);
    EXPECT_EQ(memory.value(0x0600), 0U);
    memory.setValue(0x0601, 0xFFFF);
    EXPECT_FALSE(memory.bit(0x0601));
}

TEST(Memory, HasFourBytesInACounterRegisterAndTwoBesideThem)
{
    EXPECT_EQ(Memory::registerBytes(0x0EC7), 2);
    EXPECT_EQ(Memory::registerBytes(0x0EC8), 4);
    EXPECT_EQ(Memory::registerBytes(0x0EFF), 4);
    EXPECT_EQ(Memory::registerBytes(0x0F00), 2);
}

TEST(Memory, CutsAValueToTheBytesOfItsRegister)
{
    Memory memory;
    memory.setValue(0x0EC7, 0x89ABCDEF);
    memory.setValue(0x0EC8, 0x89ABCDEF);
    memory.setValue(0x0EFF, 0x89ABCDEF);
    memory.setValue(0x0F00, 0x89ABCDEF);
    EXPECT_EQ(memory.value(0x0EC7), 0xCDEFU);
    EXPECT_EQ(memory.value(0x0EC8), 0x89ABCDEFU);
    EXPECT_EQ(memory.value(0x0EFF), 0x89ABCDEFU);
    EXPECT_EQ(memory.value(0x0F00), 0xCDEFU);
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

} // namespace

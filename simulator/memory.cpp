#include "simulator/memory.h"

namespace simulator {

int Memory::registerBytes(std::uint16_t address)
{
    return address >= FIRST_COUNTER && address <= LAST_COUNTER ? 4 : 2;
}

bool Memory::bit(std::uint16_t address) const
{
    return m_bits[address];
}

void Memory::setBit(std::uint16_t address, bool value)
{
    m_bits[address] = value;
}

std::uint32_t Memory::value(std::uint16_t address) const
{
    return m_registers[address];
}

void Memory::setValue(std::uint16_t address, std::uint32_t value)
{
    m_registers[address] = registerBytes(address) == 4 ? value : value & 0xFFFF;
}

bool Memory::operator==(const Memory &other) const
{
    return m_bits == other.m_bits && m_registers == other.m_registers;
}

} // namespace simulator

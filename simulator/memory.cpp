#include "simulator/memory.h"

namespace simulator {

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
    m_registers[address] = modbus::registerBytes(address) == 4 ? value : value & 0xFFFF;
}

bool Memory::operator==(const Memory &other) const
{
    return m_bits == other.m_bits && m_registers == other.m_registers;
}

void setElement(Memory &memory, const modbus::Place &place, std::uint32_t value)
{
    if (place.table == modbus::Table::Bits)
        memory.setBit(place.address, value == 1);
    else
        memory.setValue(place.address, value);
}

bool setElement(Memory &memory, const QString &area, int number, std::uint32_t value)
{
    const auto place = modbus::placeOf(area, modbus::linearNumber(area, number));
    if (!place || value > modbus::highestValue(*place))
        return false;
    setElement(memory, *place, value);
    return true;
}

std::optional<std::uint32_t> element(const Memory &memory, const QString &area, int number)
{
    const auto place = modbus::placeOf(area, modbus::linearNumber(area, number));
    if (!place)
        return std::nullopt;
    if (place->table == modbus::Table::Bits)
        return memory.bit(place->address) ? 1 : 0;
    return memory.value(place->address);
}

} // namespace simulator

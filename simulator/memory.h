// The memory of the simulated controller, as its Modbus functions see it.
#pragma once

#include "modbus/areas.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {

// Bits (functions 02 and 05) and registers (functions 03 and 10 hexadecimal), both flat by Modbus
// address: 65,536 of each, all 0 at first. A register holds modbus::registerBytes().
class Memory {
public:
    // Addresses 0 to `SIZE` - 1 exist.
    static constexpr int SIZE = 0x10000;

    bool bit(std::uint16_t address) const;
    void setBit(std::uint16_t address, bool value);

    std::uint32_t value(std::uint16_t address) const;

    // Stores `value` in a register; bits beyond its size are cut off.
    void setValue(std::uint16_t address, std::uint32_t value);

    bool operator==(const Memory &other) const;

private:
    std::vector<bool> m_bits = std::vector<bool>(SIZE);
    std::vector<std::uint32_t> m_registers = std::vector<std::uint32_t>(SIZE);
};

// Stores `value`, which must fit the element.
void setElement(Memory &memory, const modbus::Place &place, std::uint32_t value);

// Stores `value` in the element of `area` that the panel shows as `number`: "X" and 17. Returns
// false and changes nothing if there is no such element or the value does not fit it.
bool setElement(Memory &memory, const QString &area, int number, std::uint32_t value);

// The value of such an element, 0 or 1 for a bit. Nothing if there is no such element.
std::optional<std::uint32_t> element(const Memory &memory, const QString &area, int number);

} // namespace simulator

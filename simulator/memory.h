// The memory of the simulated controller, as its Modbus functions see it.
#pragma once

#include <cstdint>
#include <vector>

namespace simulator {

// Bits (functions 02 and 05) and registers (functions 03 and 10 hexadecimal), both flat by Modbus
// address: 65,536 of each, all 0 at first. A register holds two bytes, a counter register four.
class Memory {
public:
    // Addresses 0 to `SIZE` - 1 exist.
    static constexpr int SIZE = 0x10000;

    // The counter registers lie from `FIRST_COUNTER` to `LAST_COUNTER`, one address each.
    static constexpr std::uint16_t FIRST_COUNTER = 0x0EC8;
    static constexpr std::uint16_t LAST_COUNTER = 0x0EFF;

    // Bytes of the register at `address`: 4 for a counter register, else 2.
    static int registerBytes(std::uint16_t address);

    bool bit(std::uint16_t address) const;
    void setBit(std::uint16_t address, bool value);

    std::uint32_t value(std::uint16_t address) const;

    // Stores `value` in a register; what exceeds its bytes is cut off.
    void setValue(std::uint16_t address, std::uint32_t value);

    bool operator==(const Memory &other) const;

private:
    std::vector<bool> m_bits = std::vector<bool>(SIZE);
    std::vector<std::uint32_t> m_registers = std::vector<std::uint32_t>(SIZE);
};

} // namespace simulator

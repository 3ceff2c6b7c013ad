// The device areas of a panel as windows on the controller's memory.
//
//   area  elements      bits or registers from        further elements
//   S     0 to 9999     bits 0x0000
//   X, Y  0 to 23417    bits 0x0400, 0x0500
//   T     0 to 9999     bits 0x0600
//   M     0 to 65536    bits 0x0800                   from 1536 on: 0xAA00 + number
//   C     0 to 9999     bits 0x0E00
//   TV    0 to 9999     registers 0x0600
//   CV    0 to 199      registers 0x0E00
//   CV2   200 to 255    registers 0x0E00 + number
//   D     0 to 11999    registers 0x1000              from 4096 on: 0x8000 + number
//
// Windows overlap: S 1024 is X 0, T 512 is M 0, TV 2248 is CV2 200, and they share the memory
// there. The address of M 22016 and above leaves 16 bits and keeps the lower ones, as it does on
// the wire.
#pragma once

#include "simulator/memory.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace simulator {

enum class ElementKind { Bit, Register };

struct Place {
    ElementKind kind;
    std::uint16_t address; // of Memory's bits or registers
};

// Where element `number` of `area` lies: "D" and 100, or "X" and 17, whose digits are octal as the
// panel shows them. Nothing for an unknown area, a number outside it and digits that are not octal.
std::optional<Place> placeOf(const QString &area, int number);

// The highest value that the element at `place` holds.
std::uint32_t highestValue(const Place &place);

// The value of one element, 0 or 1 for a bit. Nothing where placeOf() has nothing.
std::optional<std::uint32_t> element(const Memory &memory, const QString &area, int number);

// Stores `value`, which fits the element.
void setElement(Memory &memory, const Place &place, std::uint32_t value);

// Stores `value`. Returns false and changes nothing where placeOf() has nothing and where the value
// does not fit the element.
bool setElement(Memory &memory, const QString &area, int number, std::uint32_t value);

} // namespace simulator

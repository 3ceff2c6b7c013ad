// Which elements of the device areas lie at an address of the controller's Modbus tables.
#pragma once

#include <QString>
#include <QStringList>

namespace kmr {

enum class ModbusTable { Bits, Registers };

// The names of `count` bits or registers from `address` (0 to 65535) on: "D100 to D107", or "D4090
// and on" where they reach beyond the area's end. The areas' windows overlap, so there may be
// several names; the first is that of the window that begins closest below, which is nearly always
// what was meant. Empty where no area lies.
QStringList elementsAt(ModbusTable table, int address, int count);

// The name of one element by the first of those windows: "X17", or "" where no area lies.
QString elementAt(ModbusTable table, int address);

// True for the registers of the counters CV2 200 to CV2 255, which hold four bytes each instead of
// two.
bool isCounterRegister(int address);

} // namespace kmr

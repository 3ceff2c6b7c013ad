// The controller's address map: which Modbus address each element of its device areas has.
//
//   area  elements         table      addresses
//   S     0 to 9999        bits       0000 to 270F
//   X     0 to 9999        bits       0400 to 2B0F   shown in octal digits, 0 to 23417
//   Y     0 to 9999        bits       0500 to 2C0F   as X
//   T     0 to 9999        bits       0600 to 2D0F
//   M     0 to 1535        bits       0800 to 0DFF
//         1536 to 22015    bits       B000 to FFFF
//         22016 to 65536   bits       0000 to AA00   the address wraps round at 16 bits
//   C     0 to 9999        bits       0E00 to 350F
//   TV    0 to 9999        registers  0600 to 2D0F   TV 2248 to 2303 are hidden by the counters
//   CV    0 to 199         registers  0E00 to 0EC7
//   CV2   200 to 255       registers  0EC8 to 0EFF   counters, four bytes each instead of two
//   D     0 to 4095        registers  1000 to 1FFF
//         4096 to 11999    registers  9000 to AEDF
//
// Windows overlap: S 1024 is X 0, T 512 is M 0, TV 2560 is D 0.
//
// Element numbers are linear: X17 (octal, as the panel shows it) is 15. Only numbers called "shown"
// have the digits of the panel. Every function accepts unknown areas; they have no elements.
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace modbus {

enum class Table { Bits, Registers };

// Elements of an area with consecutive addresses.
struct Window {
    Table table;
    const char *area;
    int first;             // number of the first element
    int last;              // number of the last element
    std::uint16_t address; // Modbus address of the first element
    int bytes;             // size of one register, 2 or 4; 0 for bits
};

// One bit or register of the controller.
struct Place {
    Table table;
    std::uint16_t address;
};

// The place of element `number` of `area`; nothing for a number outside the area.
std::optional<Place> placeOf(const QString &area, int number);

// Whether any area has an element at the address.
bool hasElement(Table table, int address);

// The highest value that the element at `place` holds.
std::uint32_t highestValue(const Place &place);

// Bytes that the register at `address` carries: 4 for a counter, else 2.
int registerBytes(int address);

// The window of the counters.
const Window &counters();

// The elements of an area of words that can't be read or written, because the controller has its
// counters there. Nothing for an area without such elements.
struct HiddenWords {
    int first;
    int last;
};
std::optional<HiddenWords> hiddenByCounters(const QString &area);

// The names of `count` bits or registers from `address` (0 to 65535) on: "D100 to D107", or "D4090
// and on" if they reach beyond the end of a window. There may be several names, since windows
// overlap; the first is that of the window that begins closest below the address, which is nearly
// always the one meant. Empty if no area has the address.
QStringList elementsAt(Table table, int address, int count);

// The first name of one element: "X17", or "" if no area has the address.
QString elementAt(Table table, int address);

// The first element after `number` whose address does not follow that of the element before it. A
// request that crosses such a border reads or writes other memory after it. INT_MAX if there is no
// border.
int nextBorder(const QString &area, int number);

// True for areas of bits, and for the area of the counters; false for an unknown area.
bool isBitArea(const QString &area);
bool isCounterArea(const QString &area);

// True for the areas whose elements are shown in octal digits.
bool isOctalArea(const QString &area);

// The shown digits of element `number` as a decimal number: 17 for X 15. And the reverse; digits
// that are not octal give -1 in an octal area.
int shownNumber(const QString &area, int number);
int linearNumber(const QString &area, int shown);

// "X17" for the area "X" and the number 15.
QString elementName(const QString &area, int number);

} // namespace modbus

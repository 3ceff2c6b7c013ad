// The controller's address map: which Modbus address each element of its device areas has.
//
//   area  elements         table      addresses
//   S     0 to 9999        bits       0000 to 270F
//   X     0 to 9999        bits       0400 to 2B0F   shown in octal digits, 0 to 23417
//   Y     0 to 9999        bits       0500 to 2C0F   likewise
//   T     0 to 9999        bits       0600 to 2D0F
//   M     0 to 1535        bits       0800 to 0DFF
//         1536 to 22015    bits       B000 to FFFF
//         22016 to 65536   bits       0000 to AA00   the address leaves 16 bits and starts anew
//   C     0 to 9999        bits       0E00 to 350F
//   TV    0 to 9999        registers  0600 to 2D0F   TV 2248 to 2303 are hidden by the counters
//   CV    0 to 199         registers  0E00 to 0EC7
//   CV2   200 to 255       registers  0EC8 to 0EFF   counters, four bytes each instead of two
//   D     0 to 4095        registers  1000 to 1FFF
//         4096 to 11999    registers  9000 to AEDF
//
// Windows overlap: S 1024 is X 0, T 512 is M 0, TV 2560 is D 0.
//
// Element numbers are linear here, X17 (octal as the panel shows it) is 15, unless they are called
// "shown". Areas that don't exist have no elements: every function takes them.
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace modbus {

enum class Table { Bits, Registers };

// Elements of an area whose addresses follow one another.
struct Window {
    Table table;
    const char *area;
    int first;             // number of the first element
    int last;              // and of the last
    std::uint16_t address; // of the first element
    int bytes;             // that one register carries, 2 or 4; 0 for bits
};

// One bit or register of the controller.
struct Place {
    Table table;
    std::uint16_t address;
};

// Where element `number` of `area` lies; nothing for a number outside it.
std::optional<Place> placeOf(const QString &area, int number);

// Whether any area has an element at the address.
bool hasElement(Table table, int address);

// The highest value that the element at `place` holds.
std::uint32_t highestValue(const Place &place);

// Bytes that the register at `address` carries: 4 for a counter, else 2.
int registerBytes(int address);

// The counters' window.
const Window &counters();

// The elements of an area of words that can't be read or written, because the controller keeps its
// counters there. Nothing for an area without any.
struct HiddenWords {
    int first;
    int last;
};
std::optional<HiddenWords> hiddenByCounters(const QString &area);

// The names of `count` bits or registers from `address` (0 to 65535) on: "D100 to D107", or "D4090
// and on" if they reach beyond the end of a window. There may be several names, since windows
// overlap; the first is that of the window that begins closest below, which is nearly always what
// was meant. Empty if no area lies there.
QStringList elementsAt(Table table, int address, int count);

// The name of one element by the first of those windows: "X17", or "" if no area lies there.
QString elementAt(Table table, int address);

// The first element after `number` whose address does not follow on that of the element before it.
// A request from below to beyond such a border reads or writes other memory there. INT_MAX if no
// border follows.
int nextBorder(const QString &area, int number);

bool isBitArea(const QString &area);
bool isCounterArea(const QString &area);

// True for the areas whose elements are shown in octal digits.
bool isOctalArea(const QString &area);

// The shown digits of element `number`, read as a decimal number: 17 for X 15. And back; digits
// that are not octal give -1 in an octal area.
int shownNumber(const QString &area, int number);
int linearNumber(const QString &area, int shown);

// "X17" for the area "X" and the number 15.
QString elementName(const QString &area, int number);

} // namespace modbus

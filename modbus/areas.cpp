#include "modbus/areas.h"

#include <QLatin1String>

#include <algorithm>
#include <climits>
#include <iterator>
#include <vector>

namespace modbus {

namespace {

constexpr Window COUNTERS = {Table::Registers, "CV2", 200, 255, 0x0EC8, 4};

// Each table in descending order of addresses, so that the window that begins closest below an
// address is found first.
constexpr Window WINDOWS[] = {
    {Table::Bits, "M", 1536, 22015, 0xB000, 0},
    {Table::Bits, "C", 0, 9999, 0x0E00, 0},
    {Table::Bits, "M", 0, 1535, 0x0800, 0},
    {Table::Bits, "T", 0, 9999, 0x0600, 0},
    {Table::Bits, "Y", 0, 9999, 0x0500, 0},
    {Table::Bits, "X", 0, 9999, 0x0400, 0},
    {Table::Bits, "S", 0, 9999, 0x0000, 0},
    {Table::Bits, "M", 22016, 65536, 0x0000, 0},
    {Table::Registers, "D", 4096, 11999, 0x9000, 2},
    {Table::Registers, "D", 0, 4095, 0x1000, 2},
    COUNTERS,
    {Table::Registers, "CV", 0, 199, 0x0E00, 2},
    {Table::Registers, "TV", 0, 9999, 0x0600, 2},
};

bool isOf(const Window &window, const QString &area)
{
    return area == QLatin1String(window.area);
}

int lastAddress(const Window &window)
{
    return window.address + window.last - window.first;
}

const Window *findArea(const QString &area)
{
    const auto *const found =
        std::find_if(std::begin(WINDOWS), std::end(WINDOWS),
                     [&area](const Window &window) { return isOf(window, area); });
    return found == std::end(WINDOWS) ? nullptr : found;
}

// A register of another size does not belong to the window.
bool holds(const Window &window, Table table, int address)
{
    return window.table == table && address >= window.address && address <= lastAddress(window) &&
           (table == Table::Bits || window.bytes == registerBytes(address));
}

std::vector<const Window *> windowsAt(Table table, int address)
{
    std::vector<const Window *> windows;
    for (const Window &window : WINDOWS) {
        if (holds(window, table, address))
            windows.push_back(&window);
    }
    return windows;
}

QString nameIn(const Window &window, int address)
{
    return elementName(window.area, address - window.address + window.first);
}

} // namespace

std::optional<Place> placeOf(const QString &area, int number)
{
    for (const Window &window : WINDOWS) {
        if (isOf(window, area) && number >= window.first && number <= window.last)
            return Place{window.table,
                         static_cast<std::uint16_t>(window.address + number - window.first)};
    }
    return std::nullopt;
}

bool hasElement(Table table, int address)
{
    return std::any_of(std::begin(WINDOWS), std::end(WINDOWS),
                       [&](const Window &window) { return holds(window, table, address); });
}

std::uint32_t highestValue(const Place &place)
{
    if (place.table == Table::Bits)
        return 1;
    return registerBytes(place.address) == 4 ? 0xFFFFFFFF : 0xFFFF;
}

int registerBytes(int address)
{
    return address >= COUNTERS.address && address <= lastAddress(COUNTERS) ? COUNTERS.bytes : 2;
}

const Window &counters()
{
    return COUNTERS;
}

std::optional<HiddenWords> hiddenByCounters(const QString &area)
{
    for (const Window &window : WINDOWS) {
        if (isOf(window, area) && window.bytes == 2 && window.address < COUNTERS.address &&
            lastAddress(window) > lastAddress(COUNTERS))
            return HiddenWords{COUNTERS.address - window.address + window.first,
                               lastAddress(COUNTERS) - window.address + window.first};
    }
    return std::nullopt;
}

QStringList elementsAt(Table table, int address, int count)
{
    QStringList names;
    for (const Window *window : windowsAt(table, address)) {
        const QString first = nameIn(*window, address);
        const int last = address + count - 1;
        if (count <= 1)
            names.append(first);
        else if (holds(*window, table, last))
            names.append(first + " to " + nameIn(*window, last));
        else
            names.append(first + " and on");
    }
    return names;
}

QString elementAt(Table table, int address)
{
    const std::vector<const Window *> windows = windowsAt(table, address);
    return windows.empty() ? QString() : nameIn(*windows.front(), address);
}

int nextBorder(const QString &area, int number)
{
    int border = INT_MAX;
    for (const Window &window : WINDOWS) {
        if (isOf(window, area) && window.first > number && placeOf(area, window.first - 1))
            border = std::min(border, window.first);
    }
    return border;
}

bool isBitArea(const QString &area)
{
    const Window *const window = findArea(area);
    return window != nullptr && window->table == Table::Bits;
}

bool isCounterArea(const QString &area)
{
    return isOf(COUNTERS, area);
}

bool isOctalArea(const QString &area)
{
    return area == QLatin1String("X") || area == QLatin1String("Y");
}

int shownNumber(const QString &area, int number)
{
    return isOctalArea(area) ? QString::number(number, 8).toInt() : number;
}

int linearNumber(const QString &area, int shown)
{
    if (!isOctalArea(area))
        return shown;
    bool isOctal = false;
    const int number = QString::number(shown).toInt(&isOctal, 8);
    return isOctal ? number : -1;
}

QString elementName(const QString &area, int number)
{
    return area + QString::number(shownNumber(area, number));
}

} // namespace modbus

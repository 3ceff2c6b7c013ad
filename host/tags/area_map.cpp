#include "host/tags/area_map.h"

#include "host/tags/element_range.h"

#include <vector>

namespace kmr {

namespace {

struct Window {
    ModbusTable table;
    const char *area;
    int begin; // Modbus address of the first element
    int end;   // behind the last
    int first; // number of the first element
};

// Each table in falling order of `begin`. The address of M 22016 and above leaves 16 bits, so that
// these begin at 0 again.
constexpr Window WINDOWS[] = {
    {ModbusTable::Bits, "M", 0xB000, 0x10000, 1536},
    {ModbusTable::Bits, "C", 0x0E00, 0x0E00 + 10000, 0},
    {ModbusTable::Bits, "M", 0x0800, 0x0E00, 0},
    {ModbusTable::Bits, "T", 0x0600, 0x0600 + 10000, 0},
    {ModbusTable::Bits, "Y", 0x0500, 0x0500 + 10000, 0},
    {ModbusTable::Bits, "X", 0x0400, 0x0400 + 10000, 0},
    {ModbusTable::Bits, "S", 0x0000, 10000, 0},
    {ModbusTable::Bits, "M", 0x0000, 0xAA01, 22016},
    {ModbusTable::Registers, "D", 0x9000, 0x8000 + 12000, 4096},
    {ModbusTable::Registers, "D", 0x1000, 0x2000, 0},
    {ModbusTable::Registers, "TV", 0x0F00, 0x0600 + 10000, 2304},
    {ModbusTable::Registers, "CV2", 0x0EC8, 0x0F00, 200},
    {ModbusTable::Registers, "CV", 0x0E00, 0x0EC8, 0},
    {ModbusTable::Registers, "TV", 0x0600, 0x0EC8, 0},
};

std::vector<const Window *> windowsAt(ModbusTable table, int address)
{
    std::vector<const Window *> windows;
    for (const Window &window : WINDOWS) {
        if (window.table == table && address >= window.begin && address < window.end)
            windows.push_back(&window);
    }
    return windows;
}

QString nameIn(const Window &window, int address)
{
    return elementName(window.area, address - window.begin + window.first);
}

} // namespace

QStringList elementsAt(ModbusTable table, int address, int count)
{
    QStringList names;
    for (const Window *window : windowsAt(table, address)) {
        const QString first = nameIn(*window, address);
        const int last = address + count - 1;
        if (count <= 1)
            names.append(first);
        else if (last < window->end)
            names.append(first + " to " + nameIn(*window, last));
        else
            names.append(first + " and on");
    }
    return names;
}

QString elementAt(ModbusTable table, int address)
{
    const std::vector<const Window *> windows = windowsAt(table, address);
    return windows.empty() ? QString() : nameIn(*windows.front(), address);
}

bool isCounterRegister(int address)
{
    return address >= 0x0EC8 && address < 0x0F00;
}

} // namespace kmr

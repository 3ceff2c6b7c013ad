#include "simulator/areas.h"

#include <QLatin1String>

namespace simulator {

namespace {

constexpr int NO_UPPER = 0x7FFFFFFF;

struct Window {
    const char *name;
    ElementKind kind;
    bool octal;    // elements are numbered in octal
    int lowest;    // first element
    int highest;   // last element; octal digits where `octal` is set
    int base;      // Modbus address of element 0
    int upperFrom; // from this element on `upperBase` counts
    int upperBase; // Modbus address that element 0 would have there
};

constexpr Window WINDOWS[] = {
    {"X", ElementKind::Bit, true, 0, 23417, 0x0400, NO_UPPER, 0},
    {"Y", ElementKind::Bit, true, 0, 23417, 0x0500, NO_UPPER, 0},
    {"M", ElementKind::Bit, false, 0, 65536, 0x0800, 1536, 0xAA00},
    {"S", ElementKind::Bit, false, 0, 9999, 0x0000, NO_UPPER, 0},
    {"T", ElementKind::Bit, false, 0, 9999, 0x0600, NO_UPPER, 0},
    {"C", ElementKind::Bit, false, 0, 9999, 0x0E00, NO_UPPER, 0},
    {"TV", ElementKind::Register, false, 0, 9999, 0x0600, NO_UPPER, 0},
    {"CV", ElementKind::Register, false, 0, 199, 0x0E00, NO_UPPER, 0},
    {"CV2", ElementKind::Register, false, 200, 255, 0x0E00, NO_UPPER, 0},
    {"D", ElementKind::Register, false, 0, 11999, 0x1000, 4096, 0x8000},
};

const Window *findWindow(const QString &area)
{
    for (const Window &window : WINDOWS) {
        if (area == QLatin1String(window.name))
            return &window;
    }
    return nullptr;
}

// Reads the decimal digits of `digits` in base 8: 17 gives 15. Nothing when one is 8 or 9.
std::optional<int> linearFromOctalDigits(int digits)
{
    bool ok = false;
    const int linear = QString::number(digits).toInt(&ok, 8);
    return ok ? std::optional<int>(linear) : std::nullopt;
}

} // namespace

std::optional<Place> placeOf(const QString &area, int number)
{
    const Window *window = findWindow(area);
    if (!window || number < window->lowest || number > window->highest)
        return std::nullopt;
    const std::optional<int> linear = window->octal ? linearFromOctalDigits(number) : number;
    if (!linear)
        return std::nullopt;
    const int base = *linear < window->upperFrom ? window->base : window->upperBase;
    return Place{window->kind, static_cast<std::uint16_t>((base + *linear) & 0xFFFF)};
}

std::uint32_t highestValue(const Place &place)
{
    if (place.kind == ElementKind::Bit)
        return 1;
    return Memory::registerBytes(place.address) == 4 ? 0xFFFFFFFF : 0xFFFF;
}

std::optional<std::uint32_t> element(const Memory &memory, const QString &area, int number)
{
    const std::optional<Place> place = placeOf(area, number);
    if (!place)
        return std::nullopt;
    if (place->kind == ElementKind::Bit)
        return memory.bit(place->address) ? 1 : 0;
    return memory.value(place->address);
}

void setElement(Memory &memory, const Place &place, std::uint32_t value)
{
    if (place.kind == ElementKind::Bit)
        memory.setBit(place.address, value == 1);
    else
        memory.setValue(place.address, value);
}

bool setElement(Memory &memory, const QString &area, int number, std::uint32_t value)
{
    const std::optional<Place> place = placeOf(area, number);
    if (!place || value > highestValue(*place))
        return false;
    setElement(memory, *place, value);
    return true;
}

} // namespace simulator

#include "tests/soak/cell.h"

#include "modbus/areas.h"

namespace soak {

namespace {

constexpr int BITS = 16;

void add(std::vector<Cell> &cells, CellKind kind, Owner owner, const QString &area, int first,
         int count)
{
    for (int i = 0; i < count; ++i) {
        const int number = first + i * (kind == CellKind::Bits ? BITS : 1);
        const QString tag =
            area + QString::number(number) + (kind == CellKind::Bits ? "x16" : QString());
        const auto index = static_cast<std::uint32_t>(cells.size() + 1);
        cells.push_back({kind, owner, area, number, tag, modbus::placeOf(area, number)->address,
                         index << (kind == CellKind::Counter ? 24 : 8)});
    }
}

} // namespace

std::vector<Cell> makeCells()
{
    std::vector<Cell> cells;
    add(cells, CellKind::Word, Owner::Controller, "D", 100, 16);
    add(cells, CellKind::Word, Owner::Controller, "D", 4092, 8); // around a border of addresses
    add(cells, CellKind::Word, Owner::Controller, "TV", 0, 4);
    add(cells, CellKind::Word, Owner::Controller, "CV", 10, 2);
    add(cells, CellKind::Counter, Owner::Controller, "CV2", 200, 4);
    add(cells, CellKind::Bits, Owner::Controller, "M", 0, 3);
    add(cells, CellKind::Bits, Owner::Controller, "X", 0, 1);
    add(cells, CellKind::Word, Owner::Host, "D", 200, 8);
    add(cells, CellKind::Counter, Owner::Host, "CV2", 210, 3);
    add(cells, CellKind::Bits, Owner::Host, "M", 160, 1);
    add(cells, CellKind::Bits, Owner::Host, "Y", 0, 1);
    return cells;
}

std::uint32_t fromElements(const std::vector<std::uint32_t> &elements)
{
    if (elements.size() == 1)
        return elements.front();
    std::uint32_t value = 0;
    for (auto bit = elements.rbegin(); bit != elements.rend(); ++bit)
        value = value << 1 | *bit;
    return value;
}

std::uint32_t load(const simulator::Memory &memory, const Cell &cell)
{
    if (cell.kind != CellKind::Bits)
        return memory.value(cell.address);
    std::uint32_t value = 0;
    for (int i = 0; i < BITS; ++i) {
        const auto address = static_cast<std::uint16_t>(cell.address + i);
        value |= (memory.bit(address) ? 1U : 0U) << i;
    }
    return value;
}

void store(simulator::Memory &memory, const Cell &cell, std::uint32_t value)
{
    if (cell.kind != CellKind::Bits) {
        memory.setValue(cell.address, value);
        return;
    }
    for (int i = 0; i < BITS; ++i)
        memory.setBit(static_cast<std::uint16_t>(cell.address + i), (value >> i & 1U) != 0);
}

} // namespace soak

// The elements of the controller's memory that the soak test watches, each with a mark of its own
// in its high bits, so that an answer for another element is detected.
#pragma once

#include "simulator/memory.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace soak {

enum class CellKind { Word, Counter, Bits }; // Bits: 16 of them, the first in the lowest bit

// Who changes a cell.
enum class Owner { Controller, Host };

struct Cell {
    CellKind kind;
    Owner owner;
    QString area;
    int number;            // of its (first) element, 0 for the octal areas
    QString tag;           // as the host's user types it
    std::uint16_t address; // in the controller's memory
    std::uint32_t mark;    // what it holds at first; its lower 8 bits are 0 and change freely

    bool isOf(const QString &otherArea, int first, int end) const
    {
        return area == otherArea && number >= first && number < end;
    }
};

// All cells. A cell's index is in its mark.
std::vector<Cell> makeCells();

// A cell's value of those of its elements: one, or its bits.
std::uint32_t fromElements(const std::vector<std::uint32_t> &elements);

std::uint32_t load(const simulator::Memory &memory, const Cell &cell);
void store(simulator::Memory &memory, const Cell &cell, std::uint32_t value);

} // namespace soak

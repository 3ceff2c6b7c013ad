// The simulated controller: takes lines of Modbus ASCII and answers them as a controller would.
#pragma once

#include "simulator/exchange.h"
#include "simulator/memory.h"

#include <QByteArray>

#include <cstdint>
#include <functional>

namespace simulator {

// Which registers a controller has: all 65,536, or those of the areas in modbus/areas.h, so that it
// answers a wrong address with exception 02.
enum class Registers { All, OfAreas };

// True for the two characters of a station that a controller can have: "01" to "F7".
bool isStation(const QByteArray &characters);

// What a line says, before anything is done about it: without an answer, and the outcome counts
// only for a bad line.
Exchange understand(const QByteArray &line);

// A controller with its memory. Functions 02, 03, 05 and 10 (hexadecimal) are served, every other
// is refused. A read or write lies wholly within the counter registers or wholly outside them.
//
// It has no clock and no link: the same lines always give the same answers.
class Controller {
public:
    using Observer = std::function<void(const Exchange &)>;

    // `station`: the two characters that it goes by on the wire. A panel writes its station number
    // in decimal digits, so its station 12 is "12" here. Must be a station as isStation() has it.
    explicit Controller(const QByteArray &station, Registers registers = Registers::All);

    // Answers one line, ':' to LF. Returns the answer, ':' to LF, or an empty array for silence:
    // to a bad line, to another station's and to a broadcast (station "00"), which is obeyed.
    QByteArray answer(const QByteArray &line);

    // The same in two steps, for faults between them: does what the line asks for, and tells the
    // observer of it.
    Exchange obey(const QByteArray &line);
    void tell(const Exchange &exchange) const;

    // True for a good line to this station alone.
    bool isAddressedBy(const QByteArray &line) const;

    // `observer` is called at the end of each answer(), before the answer is handed out, and by
    // tell(). An empty
    // one is never called.
    void setObserver(Observer observer);

    Memory &memory()
    {
        return m_memory;
    }
    const Memory &memory() const
    {
        return m_memory;
    }

private:
    Memory m_memory;
    std::uint8_t m_station;
    Registers m_registers;
    Observer m_observer;
};

} // namespace simulator

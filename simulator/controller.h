// The simulated controller: answers lines of Modbus ASCII as a controller does.
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

// The content of a line, without carrying it out: there is no answer, and the outcome is valid only
// for a bad line.
Exchange understand(const QByteArray &line);

// A controller with its memory. Carries out functions 02, 03, 05 and 10 (hexadecimal) and refuses
// every other. A read or write must be wholly within the counter registers or wholly outside them.
//
// It has no clock and no link: the same lines always give the same answers.
class Controller {
public:
    using Observer = std::function<void(const Exchange &)>;

    // `station`: its two characters on the wire; isStation() must be true for them. A panel writes
    // its station number in decimal digits, so station 12 of a panel is "12" here.
    explicit Controller(const QByteArray &station, Registers registers = Registers::All);

    // Answers one line, ':' to LF. Returns the answer, ':' to LF, or an empty array for silence:
    // after a bad line, a line to another station and a broadcast (station "00"), which is carried
    // out.
    QByteArray answer(const QByteArray &line);

    // The same in two steps, so that faults can act between them: carries out the line, and calls
    // the observer.
    Exchange carryOut(const QByteArray &line);
    void report(const Exchange &exchange) const;

    // True for a good line to this station alone.
    bool isAddressedBy(const QByteArray &line) const;

    // `observer` is called by report() and at the end of each answer(), before it returns. An empty
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

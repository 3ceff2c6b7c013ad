// One line that reached the simulated controller, and its outcome, for logs and tests.
#pragma once

#include "modbus/ascii.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace simulator {

enum class Outcome {
    BadLine,      // ignored: see `fault`
    OtherStation, // ignored: to another station
    NotHeard,     // dropped by a fault before the controller
    Refused,      // with an exception, see `exception`; none is sent for a broadcast
    Executed      // answered, unless it was a broadcast
};

struct Exchange {
    QByteArray line;   // as it arrived
    QByteArray answer; // ':' to LF, before faults damage it; empty for silence
    Outcome outcome = Outcome::BadLine;
    modbus::LineFault fault = modbus::LineFault::None;
    std::uint8_t exception = 0; // modbus::ILLEGAL_..., 0 for none
    QStringList faults;         // names of the faults that hit it: "flip"

    // The content of the line, unless the outcome is BadLine. Fields that a short line lacks are 0.
    std::uint8_t station = 0;   // 0x12 for the characters "12"
    std::uint8_t function = 0;  // of any value
    std::uint16_t address = 0;  // first bit or register
    std::uint16_t quantity = 0; // of bits or registers; for WRITE_SINGLE_COIL its value
};

// The exchange in words, without line end: "station 01: read 8 registers from 1064, answered".
// Faults are named at the end: "... executed, not answered (fault silence)".
QString describe(const Exchange &exchange);

} // namespace simulator

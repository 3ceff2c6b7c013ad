// One line that reached the simulated controller and what came of it, for logs and tests.
#pragma once

#include "modbus/ascii.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace simulator {

enum class Outcome {
    BadLine,      // ignored: see `fault`
    OtherStation, // ignored: meant for somebody else
    NotHeard,     // a fault kept it from the controller
    Refused,      // an exception, see `exception`; to a broadcast none is sent
    Executed      // answered, unless it was a broadcast
};

struct Exchange {
    QByteArray line;   // as it arrived
    QByteArray answer; // ':' to LF, before faults spoil it on its way; empty for silence
    Outcome outcome = Outcome::BadLine;
    modbus::LineFault fault = modbus::LineFault::None;
    std::uint8_t exception = 0; // modbus::ILLEGAL_..., 0 for none
    QStringList faults;         // names of those that hit it: "flip"

    // What the line says, if it is not a BadLine. Fields that the line is too short for are 0.
    std::uint8_t station = 0;   // 0x12 for the characters "12"
    std::uint8_t function = 0;  // of any value
    std::uint16_t address = 0;  // first bit or register
    std::uint16_t quantity = 0; // of bits or registers; for WRITE_SINGLE_COIL its value
};

// The exchange in words, without line end: "station 01: read 8 registers from 1064, answered".
// Faults are named at the end: "... obeyed, not answered (fault silence)".
QString describe(const Exchange &exchange);

} // namespace simulator

// The function and exception codes of the Modbus Application Protocol V1.1b3 that this line uses.
#pragma once

#include <QString>

#include <cstdint>

namespace modbus {

// Functions (section 6).
constexpr std::uint8_t READ_DISCRETE_INPUTS = 0x02;
constexpr std::uint8_t READ_HOLDING_REGISTERS = 0x03;
constexpr std::uint8_t WRITE_SINGLE_COIL = 0x05;
constexpr std::uint8_t WRITE_MULTIPLE_REGISTERS = 0x10;

// Set in the function code of an answer that is an exception (section 7).
constexpr std::uint8_t EXCEPTION_BIT = 0x80;

// Exceptions (section 7).
constexpr std::uint8_t ILLEGAL_FUNCTION = 0x01;
constexpr std::uint8_t ILLEGAL_DATA_ADDRESS = 0x02;
constexpr std::uint8_t ILLEGAL_DATA_VALUE = 0x03;

// Largest quantities of one request (sections 6.2, 6.3 and 6.12).
constexpr std::uint16_t MAX_READ_BITS = 0x07D0;
constexpr std::uint16_t MAX_READ_REGISTERS = 0x007D;
constexpr std::uint16_t MAX_WRITE_REGISTERS = 0x007B;

// Values of WRITE_SINGLE_COIL (section 6.5); no other is allowed.
constexpr std::uint16_t COIL_ON = 0xFF00;
constexpr std::uint16_t COIL_OFF = 0x0000;

// The station number of requests that all stations carry out and none answers (Modbus over Serial
// Line V1.02, section 2.2).
constexpr std::uint8_t BROADCAST = 0x00;

// Highest station number of a controller (the same section); those above are reserved.
constexpr std::uint8_t MAX_STATION = 0xF7;

// True for READ_DISCRETE_INPUTS and READ_HOLDING_REGISTERS.
bool isRead(int function);

// An exception in words: "illegal data address"; "unknown reason" for a code without a name.
QString exceptionName(int code);

// The same with its code in hexadecimal digits: "illegal data address (exception 02)".
QString exceptionText(int code);

} // namespace modbus

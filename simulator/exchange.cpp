#include "simulator/exchange.h"

#include "modbus/protocol.h"

namespace simulator {

namespace {

// Upper-case hexadecimal digits, as they stand in the line.
QString hex(unsigned value, int digits)
{
    return QString::number(value, 16).toUpper().rightJustified(digits, QLatin1Char('0'));
}

QString stationText(std::uint8_t station)
{
    return station == modbus::BROADCAST ? QStringLiteral("all stations")
                                        : "station " + hex(station, 2);
}

QString coilText(std::uint16_t value)
{
    switch (value) {
    case modbus::COIL_ON:
        return "on";
    case modbus::COIL_OFF:
        return "off";
    default:
        return hex(value, 4);
    }
}

// "1 bit", "16 bits".
QString counted(int quantity, const char *unit)
{
    return QString::number(quantity) + ' ' + unit + (quantity == 1 ? "" : "s");
}

QString requestText(const Exchange &exchange)
{
    const QString address = hex(exchange.address, 4);
    switch (exchange.function) {
    case modbus::READ_DISCRETE_INPUTS:
        return "read " + counted(exchange.quantity, "bit") + " from " + address;
    case modbus::READ_HOLDING_REGISTERS:
        return "read " + counted(exchange.quantity, "register") + " from " + address;
    case modbus::WRITE_SINGLE_COIL:
        return "write bit " + address + ' ' + coilText(exchange.quantity);
    case modbus::WRITE_MULTIPLE_REGISTERS:
        return "write " + counted(exchange.quantity, "register") + " from " + address;
    default:
        return "function " + hex(exchange.function, 2);
    }
}

QString exceptionText(std::uint8_t exception)
{
    switch (exception) {
    case modbus::ILLEGAL_FUNCTION:
        return "illegal function";
    case modbus::ILLEGAL_DATA_ADDRESS:
        return "illegal data address";
    default:
        return "illegal data value";
    }
}

} // namespace

QString describe(const Exchange &exchange)
{
    if (exchange.outcome == Outcome::BadLine)
        return QString("bad line ignored: ") + modbus::toText(exchange.fault);
    const QString request = stationText(exchange.station) + ": " + requestText(exchange);
    if (exchange.outcome == Outcome::OtherStation)
        return request + ", ignored";
    if (exchange.outcome == Outcome::Refused)
        return request + ", refused: " + exceptionText(exchange.exception);
    return request + (exchange.answer.isEmpty() ? ", obeyed" : ", answered");
}

} // namespace simulator

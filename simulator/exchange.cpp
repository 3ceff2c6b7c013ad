#include "simulator/exchange.h"

#include "modbus/protocol.h"

namespace simulator {

namespace {

QString stationText(std::uint8_t station)
{
    return station == modbus::BROADCAST ? QStringLiteral("all stations")
                                        : "station " + modbus::hex(station, 2);
}

QString coilText(std::uint16_t value)
{
    switch (value) {
    case modbus::COIL_ON:
        return "on";
    case modbus::COIL_OFF:
        return "off";
    default:
        return modbus::hex(value, 4);
    }
}

// "1 bit", "16 bits".
QString counted(int quantity, const char *unit)
{
    return QString::number(quantity) + ' ' + unit + (quantity == 1 ? "" : "s");
}

QString requestText(const Exchange &exchange)
{
    const QString address = modbus::hex(exchange.address, 4);
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
        return "function " + modbus::hex(exchange.function, 2);
    }
}

// The outcome of a request to this station or to all.
QString outcomeText(const Exchange &exchange)
{
    const bool isBroadcast = exchange.station == modbus::BROADCAST;
    const bool isUnanswered = exchange.answer.isEmpty() && !isBroadcast;
    if (exchange.outcome == Outcome::NotHeard)
        return "not received";
    if (exchange.outcome == Outcome::Refused)
        return QString("refused: ") + modbus::exceptionName(exchange.exception) +
               (isUnanswered ? ", not answered" : "");
    if (modbus::isRead(exchange.function) && isBroadcast)
        return "ignored: a read of all stations gets no answer";
    if (isBroadcast)
        return "executed";
    if (isUnanswered)
        return modbus::isRead(exchange.function) ? "not answered" : "executed, not answered";
    return "answered";
}

} // namespace

QString describe(const Exchange &exchange)
{
    if (exchange.outcome == Outcome::BadLine)
        return QString("bad line ignored: ") + modbus::toText(exchange.fault);
    const QString request = stationText(exchange.station) + ": " + requestText(exchange) + ", ";
    if (exchange.outcome == Outcome::OtherStation)
        return request + "ignored";
    const QString faults = exchange.faults.join(", ");
    return request + outcomeText(exchange) + (faults.isEmpty() ? "" : " (fault " + faults + ')');
}

} // namespace simulator

#include "modbus/protocol.h"

#include <iterator>

namespace modbus {

bool isRead(int function)
{
    return function == READ_DISCRETE_INPUTS || function == READ_HOLDING_REGISTERS;
}

QString exceptionName(int code)
{
    static const char *const NAMES[] = {nullptr,
                                        "illegal function",
                                        "illegal data address",
                                        "illegal data value",
                                        "server device failure",
                                        "acknowledge",
                                        "server device busy",
                                        nullptr,
                                        "memory parity error",
                                        nullptr,
                                        "gateway path unavailable",
                                        "gateway target device failed to respond"};
    const bool isNamed = code > 0 && code < static_cast<int>(std::size(NAMES)) && NAMES[code];
    return isNamed ? NAMES[code] : "unknown reason";
}

QString exceptionText(int code)
{
    return QString("%1 (exception %2)").arg(exceptionName(code)).arg(code, 2, 16, QLatin1Char('0'));
}

} // namespace modbus

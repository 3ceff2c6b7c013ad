#include "modbus/ascii.h"

#include <algorithm>

namespace modbus {

namespace {

constexpr int MIN_LINE_CHARS = 9; // ':', station, function, LRC, CR LF

bool isHexDigit(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F') ||
           (character >= 'a' && character <= 'f');
}

bool isHexPairs(const QByteArray &digits)
{
    return digits.size() % 2 == 0 && std::all_of(digits.begin(), digits.end(), isHexDigit);
}

} // namespace

std::uint8_t lrc(const QByteArray &message)
{
    unsigned sum = 0;
    for (const char byte : message)
        sum += static_cast<std::uint8_t>(byte);
    return static_cast<std::uint8_t>(~sum + 1);
}

QByteArray encodeLine(const QByteArray &message)
{
    QByteArray checked = message;
    checked.append(static_cast<char>(lrc(message)));
    return ':' + checked.toHex().toUpper() + "\r\n";
}

QByteArray stationOf(const QByteArray &line)
{
    return line.mid(1, 2);
}

std::uint8_t byteAt(const QByteArray &message, int position)
{
    return static_cast<std::uint8_t>(message.at(position));
}

std::uint16_t wordAt(const QByteArray &message, int position)
{
    return static_cast<std::uint16_t>(valueAt(message, position, 2));
}

std::uint32_t valueAt(const QByteArray &message, int position, int bytes)
{
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; ++i)
        value = value << 8 | byteAt(message, position + i);
    return value;
}

QString hex(unsigned value, int digits)
{
    return QString::number(value, 16).toUpper().rightJustified(digits, QLatin1Char('0'));
}

const char *toText(LineFault fault)
{
    switch (fault) {
    case LineFault::None:
        return "no fault";
    case LineFault::NoStart:
        return "no ':' at the start";
    case LineFault::NoLineEnd:
        return "no CR LF at the end";
    case LineFault::TooLong:
        return "line too long";
    case LineFault::NotHex:
        return "not in pairs of hexadecimal digits";
    case LineFault::TooShort:
        return "too short";
    case LineFault::WrongLrc:
        return "wrong LRC";
    }
    return "unknown fault";
}

DecodedLine decodeLine(const QByteArray &line)
{
    if (!line.startsWith(':'))
        return {LineFault::NoStart, {}};
    if (line.size() > MAX_LINE_CHARS)
        return {LineFault::TooLong, {}};
    if (!line.endsWith("\r\n"))
        return {LineFault::NoLineEnd, {}};
    if (line.size() < MIN_LINE_CHARS)
        return {LineFault::TooShort, {}};
    const QByteArray digits = line.mid(1, line.size() - 3);
    if (!isHexPairs(digits))
        return {LineFault::NotHex, {}};
    QByteArray message = QByteArray::fromHex(digits);
    if (lrc(message) != 0) // with the LRC the sum of all bytes is 0
        return {LineFault::WrongLrc, {}};
    message.chop(1);
    return {LineFault::None, message};
}

QList<QByteArray> LineCollector::take(const QByteArray &bytes)
{
    QList<QByteArray> lines;
    for (const char byte : bytes) {
        if (byte == ':') {
            m_line = ":";
        } else if (m_line.isEmpty()) {
            ++m_dropped;
        } else {
            m_line.append(byte);
            if (m_line.endsWith("\r\n") || m_line.size() > MAX_LINE_CHARS) {
                lines.append(m_line);
                m_line.clear();
            }
        }
    }
    return lines;
}

void LineCollector::clear()
{
    m_line.clear();
    m_dropped = 0;
}

} // namespace modbus

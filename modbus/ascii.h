// Modbus ASCII on the wire, for both ends of a line: the host and the simulated controller. Modbus
// over Serial Line V1.02, section 2.5.2.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace modbus {

// Longest line, ':' to LF, that a controller of this line sends or accepts, in characters. Above
// the 513 of the standard, because this driver's frames may be longer.
constexpr int MAX_LINE_CHARS = 1024;

// The two's complement of the sum of all bytes (section 2.5.2.2).
std::uint8_t lrc(const QByteArray &message);

// `message` (station, function, data) as a line: ':', upper-case digits, LRC, CR LF.
QByteArray encodeLine(const QByteArray &message);

// The two characters of the station in a line: "12", also in a bad line. Empty if the line is too
// short.
QByteArray stationOf(const QByteArray &line);

// One byte of a message, two bytes, and `bytes` (0 to 4) bytes as a number, high-order byte first.
// `position` counts from 0, and the bytes must exist.
std::uint8_t byteAt(const QByteArray &message, int position);
std::uint16_t wordAt(const QByteArray &message, int position);
std::uint32_t valueAt(const QByteArray &message, int position, int bytes);

// `value` in at least `digits` upper-case hexadecimal digits, as in a line.
QString hex(unsigned value, int digits);

enum class LineFault {
    None,
    NoStart,   // the first character is not ':'
    NoLineEnd, // CR LF is missing
    TooLong,   // more than MAX_LINE_CHARS characters
    NotHex,    // a character that is not a hexadecimal digit, or an odd number of digits
    TooShort,  // no room for station, function and LRC
    WrongLrc
};

// The fault in words: "wrong LRC".
const char *toText(LineFault fault);

struct DecodedLine {
    LineFault fault = LineFault::None;
    QByteArray message; // station, function, data, without LRC; empty if there is a fault
};

// Checks and decodes one whole line, ':' to CR LF.
DecodedLine decodeLine(const QByteArray &line);

// Collects characters, in pieces of any size, into lines. Characters before a ':' are dropped; a
// ':' within a line starts a new one. A line of more than MAX_LINE_CHARS characters is cut off and
// returned, so that decodeLine() finds it bad. Characters with the top bit set (a wrong parity
// setting) are kept as they are.
class LineCollector {
public:
    // Takes `bytes` and returns the lines that they complete, ':' to LF each.
    QList<QByteArray> take(const QByteArray &bytes);

    // The characters of the line in progress; empty if there is none.
    const QByteArray &partial() const
    {
        return m_line;
    }

    // Characters dropped since the last clear() because no line was in progress.
    std::size_t dropped() const
    {
        return m_dropped;
    }

    // Forgets the line in progress.
    void clear();

private:
    QByteArray m_line;
    std::size_t m_dropped = 0;
};

} // namespace modbus

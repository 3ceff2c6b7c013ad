#include "byte_source.h"

#include <iterator>

namespace {

// Limits of the driver: ends of areas, second bases, octal and 32-bit limits.
const qint32 LIMITS[] = {0,     -1,    1,     7,     8,          15,          16,   17,
                         199,   200,   254,   255,   256,        1535,        1536, 4095,
                         4096,  9999,  10000, 11999, 12000,      23417,       2047, 32767,
                         32768, 65535, 65536, 99999, 0x7FFFFFFF, -0x7FFFFFFF, -16,  -17};

const char *const AREAS[] = {"X",  "Y", "M",   "S", "T",      "C",  "TV",
                             "CV", "D", "CV2", "D", "TV_bit", "SM", ""};

} // namespace

std::uint8_t ByteSource::byte()
{
    if (m_left == 0)
        return 0;
    --m_left;
    return *m_bytes++;
}

qint32 ByteSource::number()
{
    const int kind = below(16);
    if (kind < 8)
        return below(64);
    if (kind < 10)
        return byte();
    if (kind < 12)
        return byte() * 256 + byte();
    if (kind < 15)
        return LIMITS[static_cast<std::size_t>(byte()) % std::size(LIMITS)];
    quint32 bits = 0;
    for (int i = 0; i < 4; ++i)
        bits = bits << 8 | byte();
    return static_cast<qint32>(bits);
}

qint32 ByteSource::numberUpTo(qint32 most)
{
    const qint32 value = number();
    return value <= most ? value : value % (most + 1);
}

qint32 ByteSource::station()
{
    const int kind = below(16);
    return kind < 15 ? kind % 4 : number();
}

QString ByteSource::area()
{
    const std::size_t choice = static_cast<std::size_t>(byte()) % 16;
    if (choice >= std::size(AREAS))
        return text();
    return QString::fromLatin1(AREAS[choice]);
}

QString ByteSource::text()
{
    const QString typed = QString::fromLatin1("0123456789.-+ 8X");
    const int length = below(16);
    const bool anyCharacter = below(4) == 0;
    QString result;
    for (int i = 0; i < length; ++i) {
        const int code = byte();
        if (anyCharacter)
            result += QChar(static_cast<ushort>(code * 256 + byte()));
        else
            result += typed.at(code % 16);
    }
    return result;
}

QByteArray ByteSource::rest()
{
    const QByteArray all(reinterpret_cast<const char *>(m_bytes), static_cast<int>(m_left));
    m_bytes += m_left;
    m_left = 0;
    return all;
}

// A hash of everything that calls give back, field by field, so that it does not depend on the
// sizes of Qt's types.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

class Digest {
public:
    void number(std::int64_t value)
    {
        mix(static_cast<std::uint64_t>(value));
    }

    void bytes(const void *data, std::size_t size)
    {
        number(static_cast<std::int64_t>(size));
        const auto *next = static_cast<const std::uint8_t *>(data);
        for (; size >= sizeof(std::uint64_t); size -= sizeof(std::uint64_t)) {
            std::uint64_t word = 0; // of the same bytes the same word, whatever the byte order
            for (unsigned i = 0; i < sizeof word; ++i)
                word |= static_cast<std::uint64_t>(*next++) << (8 * i);
            mix(word);
        }
        for (; size > 0; --size)
            mix(*next++);
    }

    void text(const QString &text)
    {
        number(text.size());
        for (const QChar character : text)
            mix(character.unicode());
    }

    std::uint64_t value() const
    {
        return m_value;
    }

private:
    // FNV-1a, 64 bits, and a shift that carries high bits down.
    void mix(std::uint64_t word)
    {
        m_value = (m_value ^ word) * 0x100000001B3u;
        m_value ^= m_value >> 29;
    }

    std::uint64_t m_value = 0xCBF29CE484222325u;
};

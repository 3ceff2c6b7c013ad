// Arguments from bytes: a fuzzer's input or a random sequence is converted to numbers, texts and
// records. After the end of the bytes everything is 0.
#pragma once

#include "driver/ostrel_kmr.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class ByteSource {
public:
    // `bytes` must outlive the source.
    ByteSource(const std::uint8_t *bytes, std::size_t size) : m_bytes(bytes), m_left(size) {}

    bool isEmpty() const
    {
        return m_left == 0;
    }

    std::uint8_t byte();

    // 0 to `end` - 1; `end` at most 256.
    int below(int end)
    {
        return byte() % end;
    }

    // Any 32-bit number. Small ones and those next to a limit of the driver are most frequent.
    qint32 number();

    // A number of at most `most`, negative ones included.
    qint32 numberUpTo(qint32 most);

    // A controller station: mostly 0 to 3, so that calls collide, else any number.
    qint32 station();

    // A device area name, mostly one that the driver knows.
    QString area();

    // An address as a user may type it, or up to 15 arbitrary characters.
    QString text();

    // All that is left.
    QByteArray rest();

private:
    const std::uint8_t *m_bytes;
    std::size_t m_left;
};

// What a person types to name elements of the controller: [STATION#]AREA ADDRESS[xCOUNT], written
// together, for example D100, X17, 2#M0x16, TV5.3.
#pragma once

#include "host/driver_library.h"
#include "host/run.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace kmr {

enum class ElementKind {
    Bit,
    Word,    // 16 bits
    Counter, // 32 bits
    WordBit  // one bit of a TV word: read by reading the word, can't be written
};

struct Tag {
    QString text; // as typed
    ElementKind kind = ElementKind::Word;
    bool isWritable = true;
    Run elements;     // for WordBit the words that hold the bits
    int firstBit = 0; // WordBit: the first one's bit in the first word, 0 to 15
    int count = 1;    // values
};

// Reads tags with the help of the driver, which alone decides what a valid address is.
class TagReader {
public:
    // `station`: for tags that name none, 1 to 99. `driver` must outlive the reader.
    TagReader(const DriverFunctions &driver, int station);

    // Throws Error (Usage) that says what is wrong with the tag. Where an address fits two areas,
    // the longer name counts: CV2200 is the counter CV2 200, CV21 the word CV 21, since CV2 begins
    // at 200.
    Tag read(const QString &text) const;

    // The areas of the driver's catalogue, bit areas first.
    const QStringList &areas() const
    {
        return m_areas;
    }

private:
    int check(const QString &area, const QString &address, int count, int &number) const;
    bool readAddress(const QString &area, const QString &address, int count, Tag &tag) const;
    QString whyInvalid(const QString &area, const QString &address, int count) const;

    const DriverFunctions &m_driver;
    const int m_station;
    QStringList m_areas;
};

// The lowest station number, and the highest: two decimal digits travel.
constexpr int MIN_STATION = 1;
constexpr int MAX_STATION = 99;

} // namespace kmr

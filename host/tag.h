// What a person types to name elements of the controller:
//
//     [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE]
//
// written together, for example D100, X0..17, 2#M0x16, TV5.3, D100/float32, D200x8/text. END and
// COUNT both count elements, whatever the type: D100x4/float32 are two values in four words.
#pragma once

#include "host/driver_library.h"
#include "host/run.h"
#include "host/value_type.h"

#include <QString>

#include <cstdint>
#include <optional>
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
    int count = 1;    // elements or bits of words
    ValueType type = ValueType::Plain;
    WordOrder wordOrder = WordOrder::LowFirst; // of 32-bit types in words
    QString unit;                              // of a name: "°C"
    double scale = 1; // of a name: what is shown is `scale` times the value
};

// Elements that each number of the tag takes: 2 where a 32-bit type lies in words, else 1.
int elementsPerNumber(const Tag &tag);

// Reads tags with the help of the driver, which alone decides what a valid address is.
class NameTable;

class TagReader {
public:
    // `station`: for tags that name none, 1 to 99. `driver` must outlive the reader.
    TagReader(const DriverFunctions &driver, int station,
              WordOrder wordOrder = WordOrder::LowFirst);

    // Throws Error (Usage) that says what is wrong with the tag. Where an address fits two areas,
    // the longer name counts: CV2200 is the counter CV2 200, CV21 the word CV 21, since CV2 begins
    // at 200.
    //
    // A name of the table that is set counts before an address.
    Tag read(const QString &text) const;

    // `names` must outlive the reader.
    void setNames(const NameTable &names)
    {
        m_names = &names;
    }

    // The areas of the driver's catalogue, bit areas first.
    const QStringList &areas() const
    {
        return m_areas;
    }

private:
    struct Extent { // what stands behind the area
        QString address;
        QString end;              // empty where there is none
        std::optional<int> count; // where it is given
    };

    int check(const QString &area, const QString &address, int count, int &number) const;
    Tag readNamed(const QString &text) const;
    Tag readAddressed(const QString &text) const;
    int countOf(const QString &area, const Extent &extent, ValueType type) const;
    bool readAddress(const QString &area, const QString &address, int count, Tag &tag) const;
    QString whyInvalid(const QString &area, const QString &address, int count) const;

    const DriverFunctions &m_driver;
    const int m_station;
    const WordOrder m_wordOrder;
    const NameTable *m_names = nullptr;
    QStringList m_areas;
};

// The lowest station number, and the highest: two decimal digits travel.
constexpr int MIN_STATION = 1;
constexpr int MAX_STATION = 99;

} // namespace kmr

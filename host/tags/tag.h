// Tags, as typed, and the elements of the controller that they name.
#pragma once

#include "host/driver_library.h"
#include "host/tags/element_range.h"
#include "host/tags/scaling.h"
#include "host/tags/tag_syntax.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace kmr {

enum class ElementKind {
    Bit,
    Word,    // 16 bits
    Counter, // 32 bits
    WordBit  // one bit of a word: read by reading the word, can't be written
};

// The text for a number of the controller: "open" for 1.
struct ValueText {
    std::int64_t number = 0;
    QString text;
};

struct Tag {
    QString text; // as typed
    ElementKind kind = ElementKind::Word;
    bool isWritable = true;
    ElementRange elements; // for WordBit the words that hold the bits
    int firstBit = 0;      // WordBit: the first one's bit in the first word, 0 to 15
    int count = 1;         // elements or bits of words
    ValueType type = ValueType::Plain;
    WordOrder wordOrder = WordOrder::LowFirst; // of types of 32 and 64 bits in words
    ByteOrder byteOrder = ByteOrder::LowFirst; // of texts
    QString unit;                              // of a name: "°C"
    std::optional<Scaling> scaling;            // of a name
    std::vector<ValueText> texts;              // of a name: shown instead of numbers
};

// Elements of each value of the tag: 2 or 4 for a longer type in words, else 1.
int elementsPerNumber(const Tag &tag);

// The driver's check of the address in a tag. For bits of D and CV words, that of the words.
struct AddressCheck {
    QString area;    // the driver's: "TV_bit" for bits of TV words
    QString address; // as typed
    int count = 1;
    int result = 0; // of intf_checkAddrValidity()
};

// Reads tags. The driver decides which addresses are valid. The reader also refuses what a request
// can't read: words at the addresses of the controller's counters, and octal numbers after an
// area's end, which the driver computes in decimal. It adds the bits of D and CV words, D100.3; the
// driver knows only those of TV words.
class TagReader {
public:
    // `station`: for tags without a station, 1 to 99. `driver` must outlive the reader.
    TagReader(const DriverFunctions &driver, int station, WordOrder wordOrder = WordOrder::LowFirst,
              ByteOrder byteOrder = ByteOrder::LowFirst);

    // Throws Error (Usage) that says what is wrong with the tag. If an address fits two areas, the
    // one with the longer name counts: CV2200 is the counter CV2 200, CV21 the word CV 21, since
    // CV2 begins at 200.
    Tag read(const QString &text) const;

    // The driver's check of a tag, for the same areas as read(). For a run whose end is wrong, the
    // check of the end. Throws Error (Usage) for a text that does not have the form of a tag, and
    // for a run that ends before it begins.
    AddressCheck check(const QString &text) const;

    // The areas of the driver's catalogue, bit areas first.
    const QStringList &areas() const
    {
        return m_areas;
    }

private:
    AddressCheck checkIn(const QString &area, const TagText &tag) const;
    int ask(const QString &area, const QString &address, int count, int &number) const;
    int countOf(const QString &area, const QString &address, const TagText &tag) const;
    bool readAddress(const QString &area, const QString &address, int count, Tag &tag) const;
    int askBits(const QString &area, const QString &address, int count, int &number) const;
    QString whyNoArea(const TagText &tag) const;
    QString whyInvalid(const QString &area, const QString &address, int count) const;

    const DriverFunctions *m_driver;
    int m_station;
    WordOrder m_wordOrder;
    ByteOrder m_byteOrder;
    QStringList m_areas;
};

} // namespace kmr

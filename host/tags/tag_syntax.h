// The parts of a typed tag:
//
//     [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE]
//
// written without blanks, for example D100, X0..17, 2#M0x16, D100.3, D100/float32, D200x8/text. END
// and COUNT both count elements, whatever the type: D100x4/float32 are two values in four words.
//
// TYPE says how the words are read as values:
//
//   type      elements of one value       shown as
//   (none)    1 bit, word or counter      decimal without sign
//   int16     1 word                      decimal with sign
//   uint16    1 word                      decimal
//   int32     2 words or 1 counter        decimal with sign
//   uint32    2 words or 1 counter        decimal
//   float32   2 words or 1 counter        decimal, as many digits as needed to read it back
//   int64     4 words                     decimal with sign
//   uint64    4 words                     decimal
//   float64   4 words                     as float32
//   hex       1 word or 1 counter         0x and 4 or 8 hexadecimal digits
//   bcd       1 word or 1 counter         4 or 8 decimal digits, one in each 4 bits
//   text      all words                   2 characters (Latin-1) a word
//
// A float or bcd that isn't a number is shown as hex.
#pragma once

#include "host/error.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kmr {

enum class ValueType {
    Plain,
    Int16,
    UInt16,
    Int32,
    UInt32,
    Float32,
    Int64,
    UInt64,
    Float64,
    Hex,
    Bcd,
    Text
};

// Which word of a value of 32 or 64 bits has the lowest address.
enum class WordOrder { LowFirst, HighFirst };

// Which byte of a word holds the first of its two characters.
enum class ByteOrder { LowFirst, HighFirst };

// The type called `name`, or nothing.
std::optional<ValueType> valueTypeOf(const QString &name);

// All names, for messages.
QStringList valueTypeNames();

// The words of one value of the type: 1, 2 or 4.
int wordsOf(ValueType type);

// The lowest and the highest station number: a request has two decimal digits for it.
constexpr int MIN_STATION = 1;
constexpr int MAX_STATION = 99;

struct TagText {
    std::optional<int> station;
    QString name;             // area and address: "CV2200"
    QString end;              // empty if there is none
    std::optional<int> count; // 1 to 65537
    ValueType type = ValueType::Plain;
};

// Splits a tag without checking area and address. Throws Error (Usage) for a text without this
// form, and for stations, counts and types that don't exist.
TagText splitTag(const QString &text);

// The tag with these parts.
QString joinTag(const TagText &tag);

// The error (Usage) of a bad tag.
Error badTag(const QString &text, const QString &why);

} // namespace kmr

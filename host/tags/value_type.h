// How the words of a tag are read as values: the part of a tag behind '/', for example float32.
//
//   type      elements of one value       shown as
//   (none)    1 bit, word or counter      decimal without sign
//   int16     1 word                      decimal with sign
//   uint16    1 word                      decimal
//   int32     2 words or 1 counter        decimal with sign
//   uint32    2 words or 1 counter        decimal
//   float32   2 words or 1 counter        decimal, as many digits as tell it from its neighbours
//   hex       1 word or 1 counter         0x and 4 or 8 hexadecimal digits
//   bcd       1 word or 1 counter         4 or 8 decimal digits, one in each 4 bits
//   text      all words                   2 characters (Latin-1) a word, the low-order byte first
//
// What isn't a number in float32 or bcd is shown as hex.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kmr {

enum class ValueType { Plain, Int16, UInt16, Int32, UInt32, Float32, Hex, Bcd, Text };

// Which of the two words of a 32-bit value has the lower address.
enum class WordOrder { LowFirst, HighFirst };

// The type called `name`, or nothing.
std::optional<ValueType> valueTypeOf(const QString &name);

// All names, for messages.
QStringList valueTypeNames();

bool is32Bit(ValueType type);

} // namespace kmr

// Values: as the driver has them, as a person types and sees them, and as programs take them.
#pragma once

#include "host/tags/tag.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <variant>
#include <vector>

namespace kmr {

// One for each element of a tag, or for each bit of a word: what the controller holds.
using Values = std::vector<std::uint32_t>;

// Reads a tag's values, separated by blanks or commas: decimal numbers, or 0x and hexadecimal
// digits for the bits as they are, whatever the type and the scale. Without a type 0 or 1 for bits,
// -32768 to 65535 for words and -2147483648 to 4294967295 for counters. A text is taken as it is,
// padded with zeroes; \xNN stands for any character, \\ for a backslash. Throws Error (Usage) where
// a value is out of the type's range or their number is not the tag's. Numbers of a tag with a
// scale are divided by it.
Values parseValues(const Tag &tag, const QString &text);

// One value as its type has it. Texts are text, and what a type can't show as a number is its bits
// in hexadecimal digits: a float32 that is no number, and a bcd value with other digits.
using Value = std::variant<std::int64_t, double, QString>;

// The values that a tag's elements hold, times its scale. `values` has one for each element.
std::vector<Value> interpret(const Tag &tag, const Values &values);

// The same as text for a person, and separated by blanks.
QString toText(const Value &value);
QStringList valueTexts(const Tag &tag, const Values &values);
QString formatValues(const Tag &tag, const Values &values);

} // namespace kmr

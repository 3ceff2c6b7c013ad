// Values: as the driver has them, as people type and see them, and as programs use them.
#pragma once

#include "host/tags/tag.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <variant>
#include <vector>

namespace kmr {

// The controller's values: one for each element of a tag, or for each bit of a word.
using Values = std::vector<std::uint32_t>;

// Reads a tag's values, separated by blanks or commas: decimal numbers, or 0x and hexadecimal or 0b
// and binary digits for the bits, whatever the type and the scaling. Without a type 0 or 1, on or
// off for bits, -32768 to 65535 for words and -2147483648 to 4294967295 for counters. The text of
// interpret() gives the same value: a scaled number, one of the tag's own texts (in quotes if it
// has blanks and is not alone), the unit at the end. The value of type text is used as it is,
// padded with zeros; \xNN is any character, \\ a backslash. Throws Error (Usage) if a value is out
// of the type's range or their number does not fit the tag.
Values parseValues(const Tag &tag, const QString &text);

// One value in its type. It is a text for type text, and if it could not be read back as a number:
// a float that is not a number and a bcd value with other digits, as their bits in hexadecimal
// digits, and a scaled number with more digits than a double has.
using Value = std::variant<std::int64_t, double, QString, std::uint64_t>;

// The values of a tag's elements, scaled, or the tag's own texts for them. `values` has one for
// each element.
std::vector<Value> interpret(const Tag &tag, const Values &values);

// The same as texts, and separated by blanks as parseValues() accepts them.
QString toText(const Value &value);
QStringList valueTexts(const Tag &tag, const Values &values);
QString formatValues(const Tag &tag, const Values &values);

// The same with the tag's unit at the end, unless only texts are shown.
QString withUnit(const Tag &tag, const Values &values);

} // namespace kmr

// Values as text: one number for each element of a tag, separated by blanks or commas.
#pragma once

#include "host/tag.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace kmr {

using Values = std::vector<std::uint32_t>;

// Reads a tag's values: 0 or 1 for bits, -32768 to 65535 for words and -2147483648 to 4294967295
// for counters, in decimal or as 0x and hexadecimal digits. Throws Error (Usage) where one is none
// of these or their number is not the tag's.
Values parseValues(const Tag &tag, const QString &text);

// The values in decimal, without sign, separated by blanks.
QString formatValues(const Values &values);

} // namespace kmr

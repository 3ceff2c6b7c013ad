// The bits of a tag's numbers, and the elements that hold them.
#pragma once

#include "host/tags/values.h"

#include <QString>
#include <QtGlobal>

namespace kmr {

// The bits of one number of the tag: 1, 16, 32 or 64.
int widthOf(const Tag &tag);

// Adds the elements that hold one number.
void appendElements(const Tag &tag, quint64 bits, Values &values);

// The number that begins with this element of the tag.
quint64 numberOf(const Tag &tag, Values::const_iterator values);

// "0x00FA": with as many digits as the number has room for.
QString hexText(const Tag &tag, quint64 bits);

// How numbers are shown, whatever the tag's type, scaling and texts say.
enum class NumberFormat { AsTag, Unsigned, Signed, Hex, Binary };

// The next one, and after the last the first.
NumberFormat nextFormat(NumberFormat format);

// "decimal", "signed", "hexadecimal" or "binary"; empty for AsTag.
QString toText(NumberFormat format);

// As formatValues(). Bits are 0 or 1 in every format. parseValues() takes hexadecimal and binary
// numbers back.
QString formatNumbers(const Tag &tag, const Values &values, NumberFormat format);

} // namespace kmr

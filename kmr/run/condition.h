// A condition of a test script: "D100=250", "boiler.temp 20..25".
//
//   TAG=VALUE   TAG!=VALUE      values as for 'kmr write', for all elements of the tag
//   TAG<VALUE   TAG<=VALUE      one number, for each value of the tag
//   TAG>VALUE   TAG>=VALUE
//   TAG LOW..HIGH               two numbers, both included, for each value of the tag
//
// Values are compared as they are shown, with the scale and the type of the tag, and exactly.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/tags/values.h"

#include <QString>

namespace kmr {

enum class Comparison { Equal, NotEqual, Less, AtMost, Greater, AtLeast, Within };

struct Condition {
    Tag tag;
    Comparison comparison = Comparison::Equal;
    Values wanted; // Equal, NotEqual
    QString low;   // Within; for Less, AtMost, Greater and AtLeast the bound; a decimal number
    QString high;  // Within; a decimal number
};

// Reads a condition. Throws Error (Usage) that says what is wrong with it.
Condition parseCondition(const QString &text, const NamedTagReader &reader);

// Whether the values of the tag's elements meet the condition. A value that is not shown as a
// number is in no range: a text, an infinite float, and the bits of a float or bcd value that is
// not a number.
bool holds(const Condition &condition, const Values &values);

} // namespace kmr

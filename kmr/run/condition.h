// What a test script expects of a tag: "D100=250", "boiler.temp 20..25".
//
//   TAG=VALUE   TAG!=VALUE      values as 'kmr write' takes them, for all elements of the tag
//   TAG<VALUE   TAG<=VALUE      one number, for each value of the tag
//   TAG>VALUE   TAG>=VALUE
//   TAG LOW..HIGH               likewise, both included
//
// Values are compared as they are shown: with the scale and the type of the tag.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/tags/values.h"

#include <QString>

namespace kmr {

enum class Comparison { Equal, NotEqual, Less, AtMost, Greater, AtLeast, Within };

struct Condition {
    Tag tag;
    Comparison comparison = Comparison::Equal;
    Values wanted;   // Equal, NotEqual
    double low = 0;  // Within; of the others that compare numbers the one bound
    double high = 0; // Within
};

// Throws Error (Usage).
Condition parseCondition(const QString &text, const NamedTagReader &reader);

// Whether the values that the tag's elements hold are as expected. What is shown as no number is in
// no range.
bool holds(const Condition &condition, const Values &values);

} // namespace kmr

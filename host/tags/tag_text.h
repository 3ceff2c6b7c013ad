// The parts of what a person types to name elements of the controller:
//
//     [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE]
//
// written together, for example D100, X0..17, 2#M0x16, TV5.3, D100/float32, D200x8/text. END and
// COUNT both count elements, whatever the type: D100x4/float32 are two values in four words.
#pragma once

#include "host/error.h"
#include "host/tags/value_type.h"

#include <QString>

#include <optional>

namespace kmr {

// The lowest station number, and the highest: two decimal digits travel.
constexpr int MIN_STATION = 1;
constexpr int MAX_STATION = 99;

struct TagText {
    std::optional<int> station;
    QString name;             // area and address: "CV2200"
    QString end;              // empty where there is none
    std::optional<int> count; // 1 to 65537
    ValueType type = ValueType::Plain;
};

// Splits a tag. Which areas and addresses there are is for the driver to say. Throws Error (Usage)
// for what has not this form, and for stations, counts and types that don't exist.
TagText splitTag(const QString &text);

// The error (Usage) of a bad tag.
Error badTag(const QString &text, const QString &why);

} // namespace kmr

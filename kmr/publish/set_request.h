// What others ask to be written, as it comes from the broker. Either the value alone, as 'kmr
// write' takes it, or JSON:
//
//   [1, 0, 1]                    a list of values
//   {"value": 21.5}              an object, with
//     "id": "a7"                 repeated in the outcome; the same id again is the same request
//     "expires": "2026-11-22T04:30:00Z"   when it is out of date
#pragma once

#include "host/tags/tag.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace kmr {

struct SetRequest {
    // One of the values, and what JSON says it is.
    struct Item {
        enum class Kind { Typed, Number, Truth, Text };

        Kind kind = Kind::Typed;
        QString text; // of a truth "1" or "0"
    };

    std::vector<Item> items;
    QString id;                    // or empty
    std::optional<qint64> expires; // milliseconds since 1970 UTC
};

constexpr int LONGEST_SET_REQUEST = 4096; // bytes

// Throws Error (Usage) that says what is wrong.
SetRequest parseSetRequest(const QByteArray &payload);

// The values as parseValues() takes them. Throws Error (Usage) when JSON has another type than the
// tag: a number for a text, a text for a number (but for the tag's own texts and hexadecimal
// digits), true or false for anything but a bit.
QString typedValues(const SetRequest &request, const Tag &tag);

} // namespace kmr

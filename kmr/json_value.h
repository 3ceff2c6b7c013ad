// Values in JSON, as records and messages have them.
#pragma once

#include "host/tags/values.h"

#include <QString>
#include <nlohmann/json.hpp>

#include <vector>

namespace kmr {

using Json = nlohmann::ordered_json;

// A number, or text; null for a number that is infinite or not a number.
Json toJson(const Value &value);

// A list of them.
Json toJson(const std::vector<Value> &values);

// Text, or null if it is empty.
Json textOrNull(const QString &text);

} // namespace kmr

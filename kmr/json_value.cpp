#include "kmr/json_value.h"

#include <cmath>

namespace kmr {

Json toJson(const Value &value)
{
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return *number;
    if (const auto *number = std::get_if<std::uint64_t>(&value))
        return *number;
    if (const auto *number = std::get_if<double>(&value))
        return std::isfinite(*number) ? Json(*number) : Json();
    return std::get<QString>(value).toStdString();
}

Json toJson(const std::vector<Value> &values)
{
    Json array = Json::array();
    for (const Value &value : values)
        array.push_back(toJson(value));
    return array;
}

Json textOrNull(const QString &text)
{
    return text.isEmpty() ? Json() : Json(text.toStdString());
}

} // namespace kmr

#include "host/tags/value_type.h"

namespace kmr {

namespace {

const struct {
    const char *name;
    ValueType type;
} TYPES[] = {{"float32", ValueType::Float32}, {"int16", ValueType::Int16},
             {"uint16", ValueType::UInt16},   {"int32", ValueType::Int32},
             {"uint32", ValueType::UInt32},   {"hex", ValueType::Hex},
             {"bcd", ValueType::Bcd},         {"text", ValueType::Text}};

} // namespace

std::optional<ValueType> valueTypeOf(const QString &name)
{
    for (const auto &entry : TYPES) {
        if (name == entry.name)
            return entry.type;
    }
    return std::nullopt;
}

QStringList valueTypeNames()
{
    QStringList names;
    for (const auto &entry : TYPES)
        names.append(entry.name);
    return names;
}

bool is32Bit(ValueType type)
{
    return type == ValueType::Int32 || type == ValueType::UInt32 || type == ValueType::Float32;
}

} // namespace kmr

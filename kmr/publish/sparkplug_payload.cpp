#include "kmr/publish/sparkplug_payload.h"

#include <protozero/pbf_builder.hpp>

#include <algorithm>
#include <cstring>

namespace kmr::sparkplug {

namespace {

using MetricBuilder = protozero::pbf_builder<MetricField>;

// Section 6.4.9.1.
constexpr std::uint32_t BAD = 0;
constexpr std::uint32_t GOOD = 192;
constexpr std::uint32_t STALE = 500;

DataType scalarTypeOf(const Tag &tag)
{
    if (tag.type == ValueType::Text || !tag.texts.empty())
        return DataType::String;
    if (tag.scaling)
        return DataType::Double;
    switch (tag.type) {
    case ValueType::Int16:
        return DataType::Int16;
    case ValueType::Int32:
        return DataType::Int32;
    case ValueType::UInt32:
    case ValueType::Int64:
        return DataType::Int64;
    case ValueType::UInt64:
        return DataType::UInt64;
    case ValueType::Float32:
        return DataType::Float;
    case ValueType::Float64:
        return DataType::Double;
    default: // one element, without a sign
        break;
    }
    if (tag.kind == ElementKind::Bit || tag.kind == ElementKind::WordBit)
        return DataType::Boolean;
    return tag.kind == ElementKind::Word ? DataType::UInt16 : DataType::Int64;
}

// Hexadecimal digits are only for people.
Tag asNumber(Tag tag)
{
    if (tag.type == ValueType::Hex)
        tag.type = ValueType::Plain;
    return tag;
}

template <typename To, typename From> To bitsAs(From value)
{
    static_assert(sizeof(To) == sizeof(From));
    To result;
    std::memcpy(&result, &value, sizeof result);
    return result;
}

// A value as its type has it: a number in two's complement, 0 or 1, or the bits of a float. Nothing
// if it is not such a value.
std::optional<std::uint64_t> bitsOf(DataType scalar, const Value &value)
{
    if (scalar == DataType::Float || scalar == DataType::Double) {
        bool isNumber = false;
        const double number = toText(value).toDouble(&isNumber);
        if (!isNumber)
            return std::nullopt;
        return scalar == DataType::Double ? bitsAs<std::uint64_t>(number)
                                          : bitsAs<std::uint32_t>(static_cast<float>(number));
    }
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return static_cast<std::uint64_t>(*number);
    if (const auto *number = std::get_if<std::uint64_t>(&value))
        return *number;
    return std::nullopt;
}

void addScalar(MetricBuilder &metric, DataType type, std::uint64_t bits)
{
    switch (type) {
    case DataType::Int64:
    case DataType::UInt64:
        return metric.add_uint64(MetricField::Long, bits);
    case DataType::Float:
        return metric.add_float(MetricField::Float,
                                bitsAs<float>(static_cast<std::uint32_t>(bits)));
    case DataType::Double:
        return metric.add_double(MetricField::Double, bitsAs<double>(bits));
    case DataType::Boolean:
        return metric.add_bool(MetricField::Boolean, bits != 0);
    default:
        return metric.add_uint32(MetricField::Int, static_cast<std::uint32_t>(bits));
    }
}

void appendLowFirst(std::string &bytes, std::uint64_t bits, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>(bits >> (8 * i) & 0xff);
}

std::string packed(DataType scalar, const std::vector<std::uint64_t> &values)
{
    std::string bytes;
    if (scalar != DataType::Boolean) {
        for (const std::uint64_t bits : values)
            appendLowFirst(bytes, bits, bytesPerElement(scalar));
        return bytes;
    }
    appendLowFirst(bytes, values.size(), 4);
    for (std::size_t i = 0; i < values.size(); i += 8) {
        std::uint64_t byte = 0;
        for (std::size_t bit = 0; bit < 8 && i + bit < values.size(); ++bit)
            byte |= values[i + bit] << (7 - bit);
        appendLowFirst(bytes, byte, 1);
    }
    return bytes;
}

void addTexts(MetricBuilder &metric, const std::vector<Value> &shown, bool isArray)
{
    if (!isArray)
        return metric.add_string(MetricField::String, toText(shown.front()).toStdString());
    std::string bytes;
    for (const Value &value : shown)
        bytes += toText(value).toStdString() + '\0';
    metric.add_bytes(MetricField::Bytes, bytes);
}

// The field of the values; empty if their type can't express them.
std::string valueField(const Tag &tag, const Values &values)
{
    std::string field;
    if (values.empty())
        return field;
    const DataType scalar = scalarTypeOf(tag);
    const bool isArray = dataTypeOf(tag) != scalar;
    const std::vector<Value> shown = interpret(asNumber(tag), values);
    MetricBuilder metric(field);
    if (scalar == DataType::String) {
        addTexts(metric, shown, isArray);
        return field;
    }
    std::vector<std::uint64_t> all;
    for (const Value &value : shown) {
        const std::optional<std::uint64_t> bits = bitsOf(scalar, value);
        if (!bits)
            return field;
        all.push_back(*bits);
    }
    if (isArray)
        metric.add_bytes(MetricField::Bytes, packed(scalar, all));
    else
        addScalar(metric, scalar, all.front());
    return field;
}

// Section 6.4.8: keys and values are lists of the same length.
std::string propertiesOf(std::uint32_t quality, const QString &unit, const QString &cause)
{
    std::string set;
    protozero::pbf_builder<PropertySetField> properties(set);
    const auto add = [&properties](const char *key, DataType type, auto addValue) {
        std::string bytes;
        protozero::pbf_builder<PropertyValueField> value(bytes);
        value.add_uint32(PropertyValueField::Type, static_cast<std::uint32_t>(type));
        addValue(value);
        properties.add_string(PropertySetField::Keys, key);
        properties.add_message(PropertySetField::Values, bytes);
    };
    const auto addText = [&add](const char *key, const QString &text) {
        if (!text.isEmpty())
            add(key, DataType::String, [&text](auto &value) {
                value.add_string(PropertyValueField::String, text.toStdString());
            });
    };
    add("Quality", DataType::Int32,
        [quality](auto &value) { value.add_uint32(PropertyValueField::Int, quality); });
    addText("engUnit", unit);
    addText("cause", cause);
    return set;
}

std::uint32_t qualityOf(const Sample &sample, bool isNull)
{
    if (sample.quality == Quality::Stale)
        return STALE;
    return sample.quality == Quality::Good && !isNull ? GOOD : BAD;
}

void begin(MetricBuilder &metric, const QString &name, qint64 time, DataType type)
{
    metric.add_string(MetricField::Name, name.toStdString());
    metric.add_uint64(MetricField::Timestamp, static_cast<std::uint64_t>(time));
    metric.add_uint32(MetricField::DataType, static_cast<std::uint32_t>(type));
}

} // namespace

DataType dataTypeOf(const Tag &tag)
{
    const DataType scalar = scalarTypeOf(tag);
    const bool isOne = tag.type == ValueType::Text || tag.count == elementsPerNumber(tag);
    return isOne ? scalar : arrayOf(scalar);
}

QByteArray metric(const Tag &tag, const Sample &sample, qint64 time)
{
    const std::string value = valueField(tag, sample.values);
    std::string bytes;
    MetricBuilder metric(bytes);
    begin(metric, tag.text, time, dataTypeOf(tag));
    if (value.empty())
        metric.add_bool(MetricField::IsNull, true);
    metric.add_message(MetricField::Properties,
                       propertiesOf(qualityOf(sample, value.empty()), tag.unit, sample.cause));
    return QByteArray::fromStdString(bytes + value);
}

QByteArray metric(const QString &name, qint64 time, bool value)
{
    std::string bytes;
    MetricBuilder metric(bytes);
    begin(metric, name, time, DataType::Boolean);
    metric.add_bool(MetricField::Boolean, value);
    return QByteArray::fromStdString(bytes);
}

QByteArray metric(const QString &name, qint64 time, int value)
{
    std::string bytes;
    MetricBuilder metric(bytes);
    begin(metric, name, time, DataType::Int64);
    metric.add_uint64(MetricField::Long, static_cast<std::uint64_t>(value));
    return QByteArray::fromStdString(bytes);
}

QByteArray metric(const QString &name, qint64 time, const QString &value)
{
    std::string bytes;
    MetricBuilder metric(bytes);
    begin(metric, name, time, DataType::String);
    if (value.isEmpty())
        metric.add_bool(MetricField::IsNull, true);
    else
        metric.add_string(MetricField::String, value.toStdString());
    return QByteArray::fromStdString(bytes);
}

// Fields may stand in any order.
QByteArray historical(const QByteArray &metric)
{
    std::string bytes = metric.toStdString();
    MetricBuilder(bytes).add_bool(MetricField::IsHistorical, true);
    return QByteArray::fromStdString(bytes);
}

QByteArray payload(qint64 time, const std::vector<QByteArray> &metrics, std::optional<int> seq)
{
    std::string bytes;
    protozero::pbf_builder<PayloadField> payload(bytes);
    payload.add_uint64(PayloadField::Timestamp, static_cast<std::uint64_t>(time));
    for (const QByteArray &metric : metrics)
        payload.add_message(PayloadField::Metrics, metric.toStdString());
    if (seq)
        payload.add_uint64(PayloadField::Seq, static_cast<std::uint64_t>(*seq));
    return QByteArray::fromStdString(bytes);
}

} // namespace kmr::sparkplug

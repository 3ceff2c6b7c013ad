#include "kmr/publish/sparkplug_command.h"

#include "host/error.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>
#include <protozero/pbf_reader.hpp>

#include <charconv>
#include <cmath>
#include <optional>

namespace kmr::sparkplug {

namespace {

using protozero::pbf_reader;
using protozero::pbf_wire_type;
using protozero::tag_and_type;
using Texts = std::vector<QByteArray>; // of values in JSON

// As it came, before its type is known.
struct RawMetric {
    QString name;
    std::optional<DataType> type;
    bool isNull = false;
    QByteArray value; // of anything but integers and arrays, in JSON
    std::optional<std::uint32_t> integer;
    std::optional<std::uint64_t> longInteger;
    std::optional<QByteArray> array;
};

bool isSigned(DataType type)
{
    switch (type) {
    case DataType::Int8:
    case DataType::Int16:
    case DataType::Int32:
    case DataType::Int64:
        return true;
    default:
        return false;
    }
}

QByteArray bytesOf(const protozero::data_view &view)
{
    return {view.data(), static_cast<int>(view.size())};
}

// With as many digits as tell it from its neighbours: 21.3 as a float is not 21.299999.
template <typename Number> QByteArray textOfFloat(Number number)
{
    if (!std::isfinite(number))
        return "null";
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    return {text, static_cast<int>(end - text)};
}

QByteArray textOfText(const QByteArray &text)
{
    const QByteArray list =
        QJsonDocument(QJsonArray{QString::fromUtf8(text)}).toJson(QJsonDocument::Compact);
    return list.mid(1, list.size() - 2);
}

template <typename Integer> QByteArray textAt(const char *bytes)
{
    return QByteArray::number(static_cast<qlonglong>(qFromLittleEndian<Integer>(bytes)));
}

QByteArray textOfUnsigned(const char *bytes)
{
    return QByteArray::number(static_cast<qulonglong>(qFromLittleEndian<quint64>(bytes)));
}

// How the elements of an array are read.
struct Packing {
    DataType element;
    QByteArray (*text)(const char *bytes);
};
const Packing PACKINGS[] = {
    {DataType::Int8, textAt<qint8>},
    {DataType::Int16, textAt<qint16>},
    {DataType::Int32, textAt<qint32>},
    {DataType::Int64, textAt<qint64>},
    {DataType::UInt8, textAt<quint8>},
    {DataType::UInt16, textAt<quint16>},
    {DataType::UInt32, textAt<quint32>},
    {DataType::UInt64, textOfUnsigned},
    {DataType::Float,
     [](const char *bytes) { return textOfFloat(qFromLittleEndian<float>(bytes)); }},
    {DataType::Double,
     [](const char *bytes) { return textOfFloat(qFromLittleEndian<double>(bytes)); }},
};

Texts truthsOf(const QByteArray &array)
{
    const int head = 4;
    if (array.size() < head)
        return {"null"};
    const auto count = qFromLittleEndian<quint32>(array.constData());
    if ((quint64{count} + 7) / 8 != static_cast<quint64>(array.size() - head))
        return {"null"};
    Texts texts;
    for (quint32 i = 0; i < count; ++i) {
        const int byte = array[head + static_cast<int>(i / 8)];
        texts.push_back((byte >> (7 - i % 8) & 1) != 0 ? "true" : "false");
    }
    return texts;
}

Texts elementsOf(const QByteArray &array, DataType type)
{
    Texts texts;
    if (type == DataType::BooleanArray)
        return truthsOf(array);
    if (type == DataType::StringArray && array.endsWith('\0')) {
        for (const QByteArray &text : array.chopped(1).split('\0'))
            texts.push_back(textOfText(text));
        return texts;
    }
    for (const Packing &packing : PACKINGS) {
        const int bytes = bytesPerElement(packing.element);
        if (arrayOf(packing.element) != type || array.size() % bytes != 0)
            continue;
        for (int i = 0; i < array.size(); i += bytes)
            texts.push_back(packing.text(array.constData() + i));
        return texts;
    }
    return {"null"};
}

Texts valuesOf(const RawMetric &metric, DataType type)
{
    if (metric.isNull)
        return {"null"};
    if (metric.array)
        return elementsOf(*metric.array, type);
    if (metric.integer)
        return {isSigned(type) ? QByteArray::number(static_cast<qint32>(*metric.integer))
                               : QByteArray::number(*metric.integer)};
    if (metric.longInteger)
        return {isSigned(type) ? QByteArray::number(static_cast<qint64>(*metric.longInteger))
                               : QByteArray::number(quint64{*metric.longInteger})};
    return {metric.value.isEmpty() ? "null" : metric.value};
}

constexpr std::uint32_t field(MetricField field, pbf_wire_type type)
{
    return tag_and_type(field, type);
}

RawMetric parseMetric(pbf_reader reader)
{
    RawMetric metric;
    while (reader.next()) {
        switch (reader.tag_and_type()) {
        case field(MetricField::Name, pbf_wire_type::length_delimited):
            metric.name = QString::fromUtf8(bytesOf(reader.get_view()));
            break;
        case field(MetricField::DataType, pbf_wire_type::varint):
            metric.type = DataType{reader.get_uint32()};
            break;
        case field(MetricField::IsNull, pbf_wire_type::varint):
            metric.isNull = reader.get_bool();
            break;
        case field(MetricField::Int, pbf_wire_type::varint):
            metric.integer = reader.get_uint32();
            break;
        case field(MetricField::Long, pbf_wire_type::varint):
            metric.longInteger = reader.get_uint64();
            break;
        case field(MetricField::Float, pbf_wire_type::fixed32):
            metric.value = textOfFloat(reader.get_float());
            break;
        case field(MetricField::Double, pbf_wire_type::fixed64):
            metric.value = textOfFloat(reader.get_double());
            break;
        case field(MetricField::Boolean, pbf_wire_type::varint):
            metric.value = reader.get_bool() ? "true" : "false";
            break;
        case field(MetricField::String, pbf_wire_type::length_delimited):
            metric.value = textOfText(bytesOf(reader.get_view()));
            break;
        case field(MetricField::Bytes, pbf_wire_type::length_delimited):
            metric.array = bytesOf(reader.get_view());
            break;
        default:
            reader.skip();
        }
    }
    return metric;
}

QByteArray listOf(const Texts &texts)
{
    QByteArray list;
    for (const QByteArray &text : texts)
        list += (list.isEmpty() ? '[' : ',') + text;
    return list.isEmpty() ? "[]" : list + ']';
}

} // namespace

CommandPayload parseCommands(const QByteArray &payload,
                             const std::function<DataType(const QString &name)> &typeOf)
{
    CommandPayload result;
    try {
        pbf_reader reader(payload.constData(), static_cast<std::size_t>(payload.size()));
        while (reader.next()) {
            switch (reader.tag_and_type()) {
            case tag_and_type(PayloadField::Timestamp, pbf_wire_type::varint):
                result.hasTime = true;
                reader.skip();
                break;
            case tag_and_type(PayloadField::Metrics, pbf_wire_type::length_delimited): {
                const RawMetric metric = parseMetric(reader.get_message());
                const DataType type = metric.type ? *metric.type : typeOf(metric.name);
                result.commands.push_back({metric.name, listOf(valuesOf(metric, type))});
                break;
            }
            default:
                reader.skip();
            }
        }
    } catch (const protozero::exception &error) {
        throw Error(ErrorKind::Usage,
                    QString("a command is not a Sparkplug B payload: %1").arg(error.what()));
    }
    return result;
}

} // namespace kmr::sparkplug

// What Sparkplug B payloads consist of, as Protocol Buffers number it: the fields that are used, of
// those in the Eclipse Sparkplug Specification 3.0.0, chapter "Payloads" (its Protocol Buffer
// schema), and the data types there.
#pragma once

#include <cstdint>

namespace kmr::sparkplug {

enum class PayloadField : std::uint32_t {
    Timestamp = 1, // uint64: when it was sent, milliseconds since 1970 UTC
    Metrics = 2,   // each a MetricField message
    Seq = 3,       // uint64: 0 to 255
};

enum class MetricField : std::uint32_t {
    Name = 1,         // string
    Timestamp = 3,    // uint64: of the value
    DataType = 4,     // uint32
    IsHistorical = 5, // bool
    IsNull = 7,       // bool
    Properties = 9,   // a PropertySetField message
    Int = 10,         // uint32: integers of up to 32 bits, in two's complement
    Long = 11,        // uint64: those of 64 bits
    Float = 12,
    Double = 13,
    Boolean = 14,
    String = 15,
    Bytes = 16, // arrays
};

enum class PropertySetField : std::uint32_t {
    Keys = 1,   // strings
    Values = 2, // for each key a PropertyValueField message
};

enum class PropertyValueField : std::uint32_t {
    Type = 1,   // uint32: a DataType
    Int = 3,    // uint32
    String = 8, // string
};

// An array is a type of its own; its elements are packed into bytes, the lowest byte first.
enum class DataType : std::uint32_t {
    Int8 = 1,
    Int16 = 2,
    Int32 = 3,
    Int64 = 4,
    UInt8 = 5,
    UInt16 = 6,
    UInt32 = 7,
    UInt64 = 8,
    Float = 9,
    Double = 10,
    Boolean = 11,
    String = 12,
    Int8Array = 22,
    Int16Array = 23,
    Int32Array = 24,
    Int64Array = 25,
    UInt8Array = 26,
    UInt16Array = 27,
    UInt32Array = 28,
    UInt64Array = 29,
    FloatArray = 30,
    DoubleArray = 31,
    BooleanArray = 32, // their number in 4 bytes, then 8 in a byte, the first in the highest bit
    StringArray = 33,  // each ends with a zero byte
};

// The type of an array has 21 more than that of its elements.
constexpr DataType arrayOf(DataType element)
{
    return DataType{static_cast<std::uint32_t>(element) + 21};
}

// Bytes of an element in an array; not for Boolean and String, which are packed otherwise.
constexpr int bytesPerElement(DataType element)
{
    switch (element) {
    case DataType::Int8:
    case DataType::UInt8:
        return 1;
    case DataType::Int16:
    case DataType::UInt16:
        return 2;
    case DataType::Int32:
    case DataType::UInt32:
    case DataType::Float:
        return 4;
    default:
        return 8;
    }
}

} // namespace kmr::sparkplug

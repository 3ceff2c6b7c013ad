#include "host/tags/values.h"

#include "host/error.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace kmr {

namespace {

struct Limits {
    qint64 lowest;
    qint64 highest;
};

Limits limitsOf(const Tag &tag)
{
    const bool isCounter = tag.kind == ElementKind::Counter;
    switch (tag.type) {
    case ValueType::Int16:
        return {-0x8000, 0x7FFF};
    case ValueType::UInt16:
        return {0, 0xFFFF};
    case ValueType::Int32:
        return {-0x80000000LL, 0x7FFFFFFF};
    case ValueType::UInt32:
        return {0, 0xFFFFFFFFLL};
    case ValueType::Hex:
        return {0, isCounter ? 0xFFFFFFFFLL : 0xFFFF};
    case ValueType::Bcd:
        return {0, isCounter ? 99999999 : 9999};
    case ValueType::Plain:
    case ValueType::Float32:
    case ValueType::Text:
        break;
    }
    if (isCounter)
        return {-0x80000000LL, 0xFFFFFFFFLL};
    return tag.kind == ElementKind::Word ? Limits{-0x8000, 0xFFFF} : Limits{0, 1};
}

Error badValue(const Tag &tag, const QString &text, const QString &expected)
{
    return Error(ErrorKind::Usage,
                 QString("bad value \"%1\" for %2: expected %3").arg(text, tag.text, expected));
}

std::uint32_t toBcd(qint64 value)
{
    std::uint32_t digits = 0;
    for (int shift = 0; value > 0; shift += 4, value /= 10)
        digits |= static_cast<std::uint32_t>(value % 10) << shift;
    return digits;
}

// Of one value of the tag.
int widthOf(const Tag &tag)
{
    if (tag.kind == ElementKind::Counter)
        return 32;
    return tag.kind == ElementKind::Word ? 16 * elementsPerNumber(tag) : 1;
}

std::uint32_t hexBits(const Tag &tag, const QString &text)
{
    const quint64 highest = (quint64{1} << widthOf(tag)) - 1;
    bool isNumber = false;
    const quint64 bits = text.toULongLong(&isNumber, 16);
    if (!isNumber || bits > highest)
        throw badValue(tag, text, "0x0 to 0x" + QString::number(highest, 16).toUpper());
    return static_cast<std::uint32_t>(bits);
}

// The unscaled number nearest to a scaled one, as text.
QString unscaled(const Tag &tag, const QString &text)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber) / tag.scale;
    if (!isNumber)
        throw badValue(tag, text, "a number, for example 21.5");
    return tag.type == ValueType::Float32 ? QString::number(value, 'g', 9)
                                          : QString::number(value, 'f', 0);
}

// As a person types the limits: times the scale.
QString rangeText(const Tag &tag, double lowest, double highest)
{
    const auto [first, last] = std::minmax({lowest * tag.scale, highest * tag.scale});
    return QString("%1 to %2").arg(first, 0, 'g', 12).arg(last, 0, 'g', 12);
}

std::uint32_t floatBits(const Tag &tag, const QString &text)
{
    bool isNumber = false;
    const float value = (tag.scale == 1 ? text : unscaled(tag, text)).toFloat(&isNumber);
    if (!isNumber)
        throw badValue(
            tag, text,
            QString("a number from %1, for example 21.5").arg(rangeText(tag, -3.4e38, 3.4e38)));
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::uint32_t integerBits(const Tag &tag, const QString &text)
{
    const Limits limits = limitsOf(tag);
    bool isNumber = false;
    const qint64 value = (tag.scale == 1 ? text : unscaled(tag, text)).toLongLong(&isNumber);
    if (!isNumber || value < limits.lowest || value > limits.highest)
        throw badValue(tag, text,
                       rangeText(tag, static_cast<double>(limits.lowest),
                                 static_cast<double>(limits.highest)));
    return tag.type == ValueType::Bcd ? toBcd(value) : static_cast<std::uint32_t>(value);
}

// The bits of one value, 32 at most.
std::uint32_t parseValue(const Tag &tag, const QString &text)
{
    if (text.startsWith("0x", Qt::CaseInsensitive))
        return hexBits(tag, text);
    return tag.type == ValueType::Float32 ? floatBits(tag, text) : integerBits(tag, text);
}

void appendElements(const Tag &tag, std::uint32_t bits, Values &values)
{
    if (tag.kind != ElementKind::Word) {
        values.push_back(bits);
    } else if (elementsPerNumber(tag) == 1) {
        values.push_back(bits & 0xFFFF);
    } else {
        const bool isLowFirst = tag.wordOrder == WordOrder::LowFirst;
        values.push_back(isLowFirst ? bits & 0xFFFF : bits >> 16);
        values.push_back(isLowFirst ? bits >> 16 : bits & 0xFFFF);
    }
}

QByteArray unescape(const Tag &tag, const QString &text)
{
    static const QRegularExpression ESCAPE("\\\\(?:x([0-9A-Fa-f]{2})|(.?))");
    QByteArray bytes;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            if (text[i].unicode() > 0xFF)
                throw badValue(tag, text, "characters of Latin-1 only");
            bytes.append(static_cast<char>(text[i].unicode()));
            continue;
        }
        const QRegularExpressionMatch match = ESCAPE.match(text, i);
        if (match.capturedLength(1) != 2 && match.captured(2) != "\\")
            throw badValue(tag, text, "\\xNN or \\\\ behind a backslash");
        bytes.append(match.capturedLength(1) == 2
                         ? static_cast<char>(match.captured(1).toInt(nullptr, 16))
                         : '\\');
        i += static_cast<int>(match.capturedLength()) - 1;
    }
    return bytes;
}

Values parseText(const Tag &tag, const QString &text)
{
    QByteArray bytes = unescape(tag, text);
    if (bytes.size() > 2 * tag.count)
        throw badValue(tag, text, QString("%1 characters at most").arg(2 * tag.count));
    bytes.append(2 * tag.count - static_cast<int>(bytes.size()), '\0');
    Values values;
    for (int i = 0; i < tag.count; ++i)
        values.push_back(static_cast<quint8>(bytes[2 * i]) |
                         static_cast<std::uint32_t>(static_cast<quint8>(bytes[2 * i + 1])) << 8);
    return values;
}

// Up to the zeroes at the end.
QString textOf(const Values &values)
{
    QByteArray bytes;
    for (const std::uint32_t value : values) {
        bytes.append(static_cast<char>(value & 0xFF));
        bytes.append(static_cast<char>(value >> 8));
    }
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    QString text;
    for (const char byte : bytes) {
        const unsigned code = static_cast<quint8>(byte);
        if (code == '\\')
            text += "\\\\";
        else if (code < 0x20 || (code >= 0x7F && code < 0xA0))
            text += QString("\\x%1").arg(code, 2, 16, QChar('0'));
        else
            text += QChar(code);
    }
    return text;
}

float toFloat(std::uint32_t bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// As few digits as tell it from its neighbours.
template <typename Float> QString floatText(Float value)
{
    char text[32];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return QString::fromLatin1(text, static_cast<int>(result.ptr - text));
}

// With as many digits as the value has room for.
QString hexText(const Tag &tag, std::uint32_t bits)
{
    return "0x" + QString::number(bits, 16).toUpper().rightJustified(widthOf(tag) / 4, '0');
}

// What is no number keeps its bits, since many of them mean none.
Value floatValue(const Tag &tag, std::uint32_t bits)
{
    const float value = toFloat(bits);
    if (std::isnan(value))
        return hexText(tag, bits);
    return floatText(value).toDouble();
}

// Digits that are no decimal ones make a hexadecimal number of it.
Value bcdValue(const Tag &tag, std::uint32_t bits)
{
    bool isNumber = false;
    const qint64 value = QString::number(bits, 16).toLongLong(&isNumber, 10);
    if (isNumber)
        return std::int64_t{value};
    return hexText(tag, bits);
}

Value valueOf(const Tag &tag, std::uint32_t bits)
{
    switch (tag.type) {
    case ValueType::Int16:
        return std::int64_t{static_cast<std::int16_t>(bits)};
    case ValueType::Int32:
        return std::int64_t{static_cast<std::int32_t>(bits)};
    case ValueType::Float32:
        return floatValue(tag, bits);
    case ValueType::Hex:
        return hexText(tag, bits);
    case ValueType::Bcd:
        return bcdValue(tag, bits);
    case ValueType::Plain:
    case ValueType::UInt16:
    case ValueType::UInt32:
    case ValueType::Text:
        break;
    }
    return std::int64_t{bits};
}

// Twelve digits: beyond them lies only what the multiplication brought in.
Value scaled(const Value &value, double scale)
{
    const auto times = [scale](double number) {
        return QString::number(number * scale, 'g', 12).toDouble();
    };
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return times(static_cast<double>(*number));
    if (const auto *number = std::get_if<double>(&value))
        return times(*number);
    return value;
}

} // namespace

Values parseValues(const Tag &tag, const QString &text)
{
    if (tag.type == ValueType::Text)
        return parseText(tag, text);
    static const QRegularExpression SEPARATORS("[,\\s]+");
    const QStringList texts = text.split(SEPARATORS, Qt::SkipEmptyParts);
    const int count = tag.count / elementsPerNumber(tag);
    if (texts.size() != count) {
        throw Error(ErrorKind::Usage, QString("%1: expected %2 %3, got %4")
                                          .arg(tag.text)
                                          .arg(count)
                                          .arg(count == 1 ? "value" : "values")
                                          .arg(texts.size()));
    }
    Values values;
    for (const QString &one : texts)
        appendElements(tag, parseValue(tag, one), values);
    return values;
}

std::vector<Value> interpret(const Tag &tag, const Values &values)
{
    if (tag.type == ValueType::Text)
        return {textOf(values)};
    const std::size_t step = static_cast<std::size_t>(elementsPerNumber(tag));
    std::vector<Value> result;
    for (std::size_t i = 0; i + step <= values.size(); i += step) {
        std::uint32_t bits = values[i];
        if (step == 2)
            bits = tag.wordOrder == WordOrder::LowFirst ? values[i + 1] << 16 | values[i]
                                                        : values[i] << 16 | values[i + 1];
        const Value value = valueOf(tag, bits);
        result.push_back(tag.scale == 1 ? value : scaled(value, tag.scale));
    }
    return result;
}

QString toText(const Value &value)
{
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return QString::number(*number);
    if (const auto *number = std::get_if<double>(&value))
        return floatText(*number);
    return std::get<QString>(value);
}

QStringList valueTexts(const Tag &tag, const Values &values)
{
    QStringList texts;
    for (const Value &value : interpret(tag, values))
        texts.append(toText(value));
    return texts;
}

QString formatValues(const Tag &tag, const Values &values)
{
    return valueTexts(tag, values).join(' ');
}

} // namespace kmr

#include "host/tags/values.h"

#include "host/error.h"
#include "host/tags/nearest.h"
#include "host/tags/number_bits.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace kmr {

namespace {

// After the point: enough to distinguish the smallest doubles.
constexpr int FLOAT_PLACES = 345;

struct Limits {
    qint64 lowest;
    quint64 highest;
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
        return {0, 0xFFFFFFFF};
    case ValueType::Int64:
        return {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
    case ValueType::UInt64:
        return {0, std::numeric_limits<quint64>::max()};
    case ValueType::Hex:
        return {0, isCounter ? 0xFFFFFFFFU : 0xFFFF};
    case ValueType::Bcd:
        return {0, isCounter ? 99999999U : 9999};
    case ValueType::Plain:
    case ValueType::Float32:
    case ValueType::Float64:
    case ValueType::Text:
        break;
    }
    if (isCounter)
        return {-0x80000000LL, 0xFFFFFFFF};
    return tag.kind == ElementKind::Word ? Limits{-0x8000, 0xFFFF} : Limits{0, 1};
}

bool isFloat(ValueType type)
{
    return type == ValueType::Float32 || type == ValueType::Float64;
}

Error badValue(const Tag &tag, const QString &text, const QString &expected)
{
    return Error(ErrorKind::Usage,
                 QString("bad value \"%1\" for %2: expected %3").arg(text, tag.text, expected));
}

quint64 toBcd(quint64 value)
{
    quint64 digits = 0;
    for (int shift = 0; value > 0; shift += 4, value /= 10)
        digits |= value % 10 << shift;
    return digits;
}

quint64 allBits(const Tag &tag)
{
    return std::numeric_limits<quint64>::max() >> (64 - widthOf(tag));
}

bool isHex(const QString &text)
{
    return text.startsWith("0x", Qt::CaseInsensitive);
}

bool isBinary(const QString &text)
{
    return text.startsWith("0b", Qt::CaseInsensitive);
}

std::optional<quint64> plainBits(const Tag &tag, const QString &text)
{
    bool isNumber = false;
    const quint64 bits =
        isHex(text) ? text.toULongLong(&isNumber, 16) : text.mid(2).toULongLong(&isNumber, 2);
    if (!isNumber || bits > allBits(tag))
        return std::nullopt;
    return bits;
}

// The bits of a number of the tag's type.
template <typename Float, typename Bits> quint64 bitsOf(Float value)
{
    static_assert(sizeof(Float) == sizeof(Bits));
    Bits bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::optional<quint64> floatBits(const Tag &tag, const QString &text)
{
    bool isNumber = false;
    quint64 bits = 0;
    if (tag.type == ValueType::Float32)
        bits = bitsOf<float, std::uint32_t>(text.toFloat(&isNumber));
    else
        bits = bitsOf<double, quint64>(text.toDouble(&isNumber));
    return isNumber ? std::optional<quint64>(bits) : std::nullopt;
}

std::optional<quint64> integerBits(const Tag &tag, const QString &text)
{
    const Limits limits = limitsOf(tag);
    bool isNumber = false;
    if (text.startsWith('-')) {
        const qint64 value = text.toLongLong(&isNumber);
        if (!isNumber || value < limits.lowest)
            return std::nullopt;
        return static_cast<quint64>(value) & allBits(tag);
    }
    const quint64 value = text.toULongLong(&isNumber);
    if (!isNumber || value > limits.highest)
        return std::nullopt;
    return tag.type == ValueType::Bcd ? toBcd(value) : value;
}

// The bits of a number as it is shown.
std::optional<quint64> numberBits(const Tag &tag, const QString &text)
{
    if (!tag.scaling || !isDecimal(text)) // infinity is not scaled
        return isFloat(tag.type) ? floatBits(tag, text)
               : tag.scaling     ? std::nullopt
                                 : integerBits(tag, text);
    return isFloat(tag.type) ? floatBits(tag, tag.scaling->held(text, FLOAT_PLACES))
                             : integerBits(tag, tag.scaling->held(text, 0));
}

// The limits as they are typed.
QString rangeText(const Tag &tag)
{
    const Limits limits = limitsOf(tag);
    QString lowest = QString::number(limits.lowest);
    QString highest = QString::number(limits.highest);
    if (isFloat(tag.type)) {
        highest = tag.type == ValueType::Float32 ? "3.4e38" : "1.79e308";
        lowest = '-' + highest;
    }
    if (tag.scaling) {
        lowest = tag.scaling->shown(lowest);
        highest = tag.scaling->shown(highest);
    }
    if (lowest.toDouble() > highest.toDouble())
        std::swap(lowest, highest);
    if (!isFloat(tag.type))
        return lowest + " to " + highest;
    return QString("a number from %1 to %2, for example 21.5")
        .arg(lowest.toDouble(), 0, 'g', 12)
        .arg(highest.toDouble(), 0, 'g', 12);
}

QString expectedOf(const Tag &tag, const QString &text)
{
    if (isHex(text))
        return "0x0 to 0x" + QString::number(allBits(tag), 16).toUpper();
    if (isBinary(text))
        return "0b0 to 0b" + QString::number(allBits(tag), 2);
    QStringList texts;
    for (const ValueText &known : tag.texts)
        texts.append(known.text);
    if (!texts.isEmpty())
        return QString("%1, or %2%3")
            .arg(texts.join(", "), rangeText(tag), didYouMean(text, texts));
    if (tag.kind == ElementKind::Bit)
        return "0 or 1, off or on";
    return tag.scaling && !isDecimal(text) ? QString("a number, for example 21.5") : rangeText(tag);
}

std::optional<quint64> textBits(const Tag &tag, const QString &text)
{
    for (const ValueText &known : tag.texts) {
        if (text.compare(known.text, Qt::CaseInsensitive) == 0)
            return integerBits(tag, QString::number(known.number));
    }
    if (tag.kind == ElementKind::Bit && text.compare("on", Qt::CaseInsensitive) == 0)
        return 1;
    if (tag.kind == ElementKind::Bit && text.compare("off", Qt::CaseInsensitive) == 0)
        return 0;
    return std::nullopt;
}

// The bits of one value, 64 at most.
quint64 parseValue(const Tag &tag, const QString &text)
{
    std::optional<quint64> bits = textBits(tag, text);
    if (!bits)
        bits = isHex(text) || isBinary(text) ? plainBits(tag, text) : numberBits(tag, text);
    if (!bits)
        throw badValue(tag, text, expectedOf(tag, text));
    return *bits;
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
            throw badValue(tag, text, "\\xNN or \\\\ after a backslash");
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
    for (int i = 0; i < tag.count; ++i) {
        const std::uint32_t first = static_cast<quint8>(bytes[2 * i]);
        const std::uint32_t second = static_cast<quint8>(bytes[2 * i + 1]);
        const bool isLowFirst = tag.byteOrder == ByteOrder::LowFirst;
        values.push_back(isLowFirst ? second << 8 | first : first << 8 | second);
    }
    return values;
}

// The text without zeros at the end.
QString textOf(const Tag &tag, const Values &values)
{
    const int first = tag.byteOrder == ByteOrder::LowFirst ? 0 : 8;
    QByteArray bytes;
    for (const std::uint32_t value : values) {
        bytes.append(static_cast<char>(value >> first));
        bytes.append(static_cast<char>(value >> (8 - first)));
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

// As few digits as needed to read it back.
template <typename Float> QString floatText(Float value)
{
    char text[32];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return QString::fromLatin1(text, static_cast<int>(result.ptr - text));
}

// A value that is not a number is shown as its bits, since many bit patterns are not a number.
template <typename Float, typename Bits> Value floatValue(const Tag &tag, quint64 bits)
{
    const Bits narrow = static_cast<Bits>(bits);
    Float value = 0;
    std::memcpy(&value, &narrow, sizeof value);
    if (std::isnan(value))
        return hexText(tag, bits);
    return floatText(value).toDouble();
}

// With digits that are not decimal it is shown as a hexadecimal number.
Value bcdValue(const Tag &tag, quint64 bits)
{
    bool isNumber = false;
    const qint64 value = QString::number(bits, 16).toLongLong(&isNumber, 10);
    if (isNumber)
        return std::int64_t{value};
    return hexText(tag, bits);
}

// The number in the controller.
Value valueOf(const Tag &tag, quint64 bits)
{
    switch (tag.type) {
    case ValueType::Int16:
        return std::int64_t{static_cast<std::int16_t>(bits)};
    case ValueType::Int32:
        return std::int64_t{static_cast<std::int32_t>(bits)};
    case ValueType::Int64:
        return static_cast<std::int64_t>(bits);
    case ValueType::Float32:
        return floatValue<float, std::uint32_t>(tag, bits);
    case ValueType::Float64:
        return floatValue<double, quint64>(tag, bits);
    case ValueType::Hex:
        return hexText(tag, bits);
    case ValueType::Bcd:
        return bcdValue(tag, bits);
    case ValueType::Plain:
    case ValueType::UInt16:
    case ValueType::UInt32:
    case ValueType::UInt64:
    case ValueType::Text:
        break;
    }
    if (bits <= static_cast<quint64>(std::numeric_limits<std::int64_t>::max()))
        return static_cast<std::int64_t>(bits);
    return std::uint64_t{bits};
}

// As a double if that has the same bits when it is written.
Value scaled(const Tag &tag, const Value &held, quint64 bits)
{
    const QString number = toText(held);
    if (!isDecimal(number))
        return held;
    const QString exact = tag.scaling->shown(number);
    const double nearest = exact.toDouble();
    if (numberBits(tag, floatText(nearest)) == bits)
        return nearest;
    return exact;
}

Value shownOf(const Tag &tag, quint64 bits)
{
    Value held = valueOf(tag, bits);
    const auto *number = std::get_if<std::int64_t>(&held);
    for (const ValueText &known : tag.texts) {
        if (number != nullptr && *number == known.number)
            return known.text;
    }
    return tag.scaling ? scaled(tag, held, bits) : held;
}

// Throws Error (Usage) for "1,,2", whose values would otherwise be written to the wrong elements.
void requireEachValue(const Tag &tag, const QString &text)
{
    static const QRegularExpression QUOTED("\"[^\"]*\"");
    static const QRegularExpression MISSING("^,|,\\s*,|,$");
    if (QString(text).replace(QUOTED, "text").contains(MISSING))
        throw Error(
            ErrorKind::Usage,
            QString("%1: a value is missing before or after a comma: \"%2\"").arg(tag.text, text));
}

// "1 open "not ready"", if a tag has texts.
QStringList splitValues(const Tag &tag, const QString &text)
{
    static const QRegularExpression SEPARATORS("[,\\s]+");
    static const QRegularExpression QUOTED("\"([^\"]*)\"|[^,\\s\"]+");
    if (!tag.texts.empty() && tag.count == elementsPerNumber(tag))
        return {text};
    requireEachValue(tag, text);
    if (tag.texts.empty())
        return text.split(SEPARATORS, Qt::SkipEmptyParts);
    QStringList texts;
    for (auto found = QUOTED.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        texts.append(match.capturedStart(1) >= 0 ? match.captured(1) : match.captured());
    }
    return texts;
}

QString withoutUnit(const Tag &tag, const QString &text)
{
    const QString end = ' ' + tag.unit;
    return !tag.unit.isEmpty() && text.endsWith(end) ? text.chopped(end.size()).trimmed() : text;
}

} // namespace

Values parseValues(const Tag &tag, const QString &text)
{
    if (tag.type == ValueType::Text)
        return parseText(tag, text);
    const QStringList texts = splitValues(tag, withoutUnit(tag, text.trimmed()));
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
        return {textOf(tag, values)};
    const int step = elementsPerNumber(tag);
    std::vector<Value> result;
    for (auto value = values.begin(); values.end() - value >= step; value += step)
        result.push_back(shownOf(tag, numberOf(tag, value)));
    return result;
}

QString toText(const Value &value)
{
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return QString::number(*number);
    if (const auto *number = std::get_if<double>(&value))
        return floatText(*number);
    if (const auto *number = std::get_if<std::uint64_t>(&value))
        return QString::number(*number);
    return std::get<QString>(value);
}

QStringList valueTexts(const Tag &tag, const Values &values)
{
    const std::vector<Value> shown = interpret(tag, values);
    QStringList texts;
    for (const Value &value : shown) {
        const QString text = toText(value);
        const bool needsQuotes =
            !tag.texts.empty() && shown.size() > 1 && (text.contains(' ') || text.contains(','));
        texts.append(needsQuotes ? '"' + text + '"' : text);
    }
    return texts;
}

QString formatValues(const Tag &tag, const Values &values)
{
    return valueTexts(tag, values).join(' ');
}

QString withUnit(const Tag &tag, const Values &values)
{
    const std::vector<Value> shown = interpret(tag, values);
    const bool hasNumber = std::any_of(shown.begin(), shown.end(),
                                       [](const Value &value) { return isDecimal(toText(value)); });
    const QString text = formatValues(tag, values);
    return hasNumber && !tag.unit.isEmpty() ? text + ' ' + tag.unit : text;
}

} // namespace kmr

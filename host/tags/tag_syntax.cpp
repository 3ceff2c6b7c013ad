#include "host/tags/tag_syntax.h"

#include "host/tags/nearest.h"

#include <QRegularExpression>
#include <QStringList>

namespace kmr {

namespace {

const struct {
    const char *name;
    ValueType type;
} TYPES[] = {
    {"float32", ValueType::Float32}, {"int16", ValueType::Int16},   {"uint16", ValueType::UInt16},
    {"int32", ValueType::Int32},     {"uint32", ValueType::UInt32}, {"float64", ValueType::Float64},
    {"int64", ValueType::Int64},     {"uint64", ValueType::UInt64}, {"hex", ValueType::Hex},
    {"bcd", ValueType::Bcd},         {"text", ValueType::Text}};

constexpr int MAX_COUNT = 65537; // elements of the largest area

ValueType readType(const QString &text, const QString &name)
{
    const std::optional<ValueType> type = valueTypeOf(name);
    if (!type)
        throw badTag(
            text, QString("\"%1\" is not a type, expected %2%3")
                      .arg(name, valueTypeNames().join(", "), didYouMean(name, valueTypeNames())));
    return *type;
}

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

int wordsOf(ValueType type)
{
    switch (type) {
    case ValueType::Int32:
    case ValueType::UInt32:
    case ValueType::Float32:
        return 2;
    case ValueType::Int64:
    case ValueType::UInt64:
    case ValueType::Float64:
        return 4;
    default:
        return 1;
    }
}

TagText splitTag(const QString &text)
{
    static const QRegularExpression PARTS("^(?:([0-9]{1,9})#)?([^#/\\s]+?)"
                                          "(?:\\.\\.([0-9.]+)|x([0-9]{1,9}))?(?:/([^/\\s]*))?$");
    const QRegularExpressionMatch match = PARTS.match(text);
    if (!match.hasMatch())
        throw badTag(text, "a tag is [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE] written "
                           "together, for example D100, 2#M0x16, TV5.3, D100..107, D100/float32");

    TagText tag;
    if (match.capturedStart(1) >= 0)
        tag.station = match.captured(1).toInt();
    if (tag.station && (*tag.station < MIN_STATION || *tag.station > MAX_STATION))
        throw badTag(text, "a station is 1 to 99, sent as two decimal digits");
    tag.name = match.captured(2);
    if (match.capturedStart(5) >= 0)
        tag.type = readType(text, match.captured(5));
    tag.end = match.captured(3);
    if (match.capturedStart(4) >= 0)
        tag.count = match.captured(4).toInt();
    if (tag.count && (*tag.count < 1 || *tag.count > MAX_COUNT))
        throw badTag(text, QString("a count is 1 to %1").arg(MAX_COUNT));
    return tag;
}

QString joinTag(const TagText &tag)
{
    QString text = tag.station ? QString("%1#%2").arg(*tag.station).arg(tag.name) : tag.name;
    if (!tag.end.isEmpty())
        text += ".." + tag.end;
    if (tag.count)
        text += QString("x%1").arg(*tag.count);
    for (const auto &entry : TYPES) {
        if (entry.type == tag.type)
            text += QString("/%1").arg(entry.name);
    }
    return text;
}

Error badTag(const QString &text, const QString &why)
{
    return Error(ErrorKind::Usage, QString("bad tag \"%1\": %2").arg(text, why));
}

} // namespace kmr

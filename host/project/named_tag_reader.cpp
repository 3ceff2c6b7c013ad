#include "host/project/named_tag_reader.h"

#include "host/error.h"
#include "host/tags/nearest.h"
#include "host/tags/values.h"

#include <QRegularExpression>

#include <algorithm>
#include <vector>

namespace kmr {

namespace {

Error usage(const QString &text)
{
    return Error(ErrorKind::Usage, text);
}

bool isScaled(const Name &name)
{
    const QString scale = name.scale.isEmpty() ? QString("1") : name.scale;
    return !(scale.toDouble() == 1 && name.offset.toDouble() == 0);
}

// Sets how the name's values are shown. Throws Error (Usage) if the tag has no such values.
void addMeaning(const Name &name, Tag &tag)
{
    const bool isNumeric = tag.type != ValueType::Text && tag.type != ValueType::Hex;
    const bool isFloat = tag.type == ValueType::Float32 || tag.type == ValueType::Float64;
    const bool isBit = tag.kind == ElementKind::Bit || tag.kind == ElementKind::WordBit;
    tag.unit = name.unit;
    if (isScaled(name)) {
        if (!isNumeric || isBit)
            throw badTag(name.name, QString("%1 has no numbers to scale").arg(name.tag));
        tag.scaling = Scaling(name.scale.isEmpty() ? "1" : name.scale,
                              name.offset.isEmpty() ? "0" : name.offset);
    }
    if (name.texts.empty())
        return;
    if (!isNumeric || isFloat)
        throw badTag(name.name, QString("%1 has no whole numbers for texts").arg(name.tag));
    Tag one = tag;
    one.text = "its texts";
    one.scaling.reset();
    one.count = elementsPerNumber(tag);
    for (const ValueText &text : name.texts)
        parseValues(one, QString::number(text.number));
    tag.texts = name.texts;
}

// The tag as it would be typed.
QString joined(const Name &name, std::optional<int> station, std::optional<int> count,
               std::optional<ValueType> type)
{
    TagText tag = splitTag(name.tag);
    if (station)
        tag.station = station;
    if (count) {
        tag.count = count;
        tag.end.clear();
    }
    tag.type = type.value_or(tag.type);
    return joinTag(tag);
}

} // namespace

std::optional<NamedTagReader::Found> NamedTagReader::find(const QString &text) const
{
    static const QRegularExpression STATION("^([0-9]{1,9})#(.+)$");
    static const QRegularExpression ENDS[] = {QRegularExpression("^(.+)$"),
                                              QRegularExpression("^(.+)()/([^/\\s]+)$"),
                                              QRegularExpression("^(.+)x([0-9]{1,9})$"),
                                              QRegularExpression("^(.+)x([0-9]{1,9})/([^/\\s]+)$")};
    if (!m_names)
        return std::nullopt;
    const QRegularExpressionMatch station = STATION.match(text);
    const QString rest = station.hasMatch() ? station.captured(2) : text;
    for (const QRegularExpression &end : ENDS) {
        const QRegularExpressionMatch parts = end.match(rest);
        Found found;
        found.name = m_names->find(parts.captured(1));
        found.type = valueTypeOf(parts.captured(3));
        if (found.name == nullptr || (!found.type && parts.capturedLength(3) > 0))
            continue;
        if (station.hasMatch())
            found.station = station.captured(1).toInt();
        if (parts.capturedLength(2) > 0)
            found.count = parts.captured(2).toInt();
        return found;
    }
    return std::nullopt;
}

Tag NamedTagReader::read(const QString &text) const
{
    if (const std::optional<Found> found = find(text))
        return readNamed(*found, text);
    try {
        return m_reader.read(text);
    } catch (const Error &error) {
        throw usage(error.text() + unknownName(text));
    }
}

QString NamedTagReader::unknownName(const QString &text) const
{
    if (!m_names)
        return {};
    QStringList known;
    for (const Name &name : m_names->names())
        known.append(name.name);
    return QString(" (and %1 has no such name%2)").arg(m_names->file(), didYouMean(text, known));
}

Tag NamedTagReader::readNamed(const Found &found, const QString &text) const
{
    const Name &name = *found.name;
    const QString place = QString("%1:%2: ").arg(m_names->file()).arg(name.line);
    if (!name.fault.isEmpty())
        throw usage(place + name.fault);
    if (isTag(name.name))
        throw usage(place + name.name + " can't be a name, it is a tag itself");
    try {
        Tag tag = tagOf(found);
        tag.text = text;
        return tag;
    } catch (const Error &error) {
        throw usage(place + name.name + ": " + error.text());
    }
}

Tag NamedTagReader::tagOf(const Found &found) const
{
    const Name &name = *found.name;
    Tag tag = m_reader.read(joined(name, found.station, found.count, found.type));
    tag.wordOrder = name.wordOrder.value_or(tag.wordOrder);
    tag.byteOrder = name.byteOrder.value_or(tag.byteOrder);
    if (!found.type)
        addMeaning(name, tag);
    return tag;
}

bool NamedTagReader::isTag(const QString &text) const
{
    try {
        m_reader.read(text);
        return true;
    } catch (const Error &) {
        return false;
    }
}

AddressCheck NamedTagReader::check(const QString &text) const
{
    const std::optional<Found> found = find(text);
    return m_reader.check(found ? joined(*found->name, found->station, found->count, found->type)
                                : text);
}

QStringList checkNames(const NameTable &names, const TagReader &reader)
{
    std::vector<LineFault> faults;
    for (const LineFault &fault : names.faults())
        faults.push_back(
            {fault.line, QString("%1:%2: %3").arg(names.file()).arg(fault.line).arg(fault.text)});
    const NamedTagReader named(reader, names);
    for (const Name &name : names.names()) {
        try {
            if (name.fault.isEmpty())
                named.read(name.name);
        } catch (const Error &error) {
            faults.push_back({name.line, error.text()});
        }
    }
    std::stable_sort(faults.begin(), faults.end(),
                     [](const LineFault &a, const LineFault &b) { return a.line < b.line; });
    QStringList texts;
    for (const LineFault &fault : faults)
        texts.append(fault.text);
    return texts;
}

} // namespace kmr

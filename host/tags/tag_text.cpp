#include "host/tags/tag_text.h"

#include <QRegularExpression>
#include <QStringList>

namespace kmr {

namespace {

constexpr int MAX_COUNT = 65537; // elements of the largest area

ValueType readType(const QString &text, const QString &name)
{
    const std::optional<ValueType> type = valueTypeOf(name);
    if (!type)
        throw badTag(
            text, QString("\"%1\" is no type, expected %2").arg(name, valueTypeNames().join(", ")));
    return *type;
}

} // namespace

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
        throw badTag(text, "a station is 1 to 99, two decimal digits travel on the line");
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

Error badTag(const QString &text, const QString &why)
{
    return Error(ErrorKind::Usage, QString("bad tag \"%1\": %2").arg(text, why));
}

} // namespace kmr

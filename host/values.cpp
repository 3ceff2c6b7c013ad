#include "host/values.h"

#include "host/error.h"

#include <QRegularExpression>
#include <QStringList>

namespace kmr {

namespace {

struct Limits {
    qint64 lowest;
    qint64 highest;
};

Limits limitsOf(ElementKind kind)
{
    switch (kind) {
    case ElementKind::Word:
        return {-0x8000, 0xFFFF};
    case ElementKind::Counter:
        return {-0x80000000LL, 0xFFFFFFFFLL};
    case ElementKind::Bit:
    case ElementKind::WordBit:
        break;
    }
    return {0, 1};
}

std::uint32_t parseValue(const Tag &tag, const QString &text)
{
    const Limits limits = limitsOf(tag.kind);
    const bool isHex = text.startsWith("0x", Qt::CaseInsensitive);
    bool isNumber = false;
    const qint64 value = text.toLongLong(&isNumber, isHex ? 16 : 10);
    if (!isNumber || value < limits.lowest || value > limits.highest) {
        throw Error(ExitCode::Usage, QString("bad value \"%1\" for %2: expected %3 to %4")
                                         .arg(text, tag.text)
                                         .arg(limits.lowest)
                                         .arg(limits.highest));
    }
    const std::uint32_t bits = static_cast<std::uint32_t>(value);
    return tag.kind == ElementKind::Word ? bits & 0xFFFF : bits;
}

} // namespace

Values parseValues(const Tag &tag, const QString &text)
{
    static const QRegularExpression SEPARATORS("[,\\s]+");
    const QStringList texts = text.split(SEPARATORS, Qt::SkipEmptyParts);
    if (texts.size() != tag.count) {
        throw Error(ExitCode::Usage, QString("%1: expected %2 %3, got %4")
                                         .arg(tag.text)
                                         .arg(tag.count)
                                         .arg(tag.count == 1 ? "value" : "values")
                                         .arg(texts.size()));
    }
    Values values;
    for (const QString &one : texts)
        values.push_back(parseValue(tag, one));
    return values;
}

QString formatValues(const Values &values)
{
    QStringList texts;
    for (const std::uint32_t value : values)
        texts.append(QString::number(value));
    return texts.join(' ');
}

} // namespace kmr

#include "host/tags/number_bits.h"

#include <QStringList>

namespace kmr {

namespace {

// Of the word with the lowest address first.
int shiftOf(const Tag &tag, int word)
{
    const int words = elementsPerNumber(tag);
    return WORD_BITS * (tag.wordOrder == WordOrder::LowFirst ? word : words - 1 - word);
}

qint64 withSign(quint64 bits, int width)
{
    const int unused = 64 - width;
    return static_cast<qint64>(bits << unused) >> unused;
}

QString formatNumber(const Tag &tag, quint64 bits, NumberFormat format)
{
    const int width = widthOf(tag);
    if (width == 1)
        return QString::number(bits);
    switch (format) {
    case NumberFormat::Signed:
        return QString::number(withSign(bits, width));
    case NumberFormat::Hex:
        return hexText(tag, bits);
    case NumberFormat::Binary:
        return "0b" + QString::number(bits, 2).rightJustified(width, '0');
    case NumberFormat::Unsigned:
    case NumberFormat::AsTag:
        break;
    }
    return QString::number(bits);
}

} // namespace

int widthOf(const Tag &tag)
{
    if (tag.kind == ElementKind::Counter)
        return 32;
    return tag.kind == ElementKind::Word ? WORD_BITS * elementsPerNumber(tag) : 1;
}

void appendElements(const Tag &tag, quint64 bits, Values &values)
{
    if (tag.kind != ElementKind::Word) {
        values.push_back(static_cast<std::uint32_t>(bits));
        return;
    }
    for (int word = 0; word < elementsPerNumber(tag); ++word)
        values.push_back(static_cast<std::uint32_t>(bits >> shiftOf(tag, word) & 0xFFFF));
}

quint64 numberOf(const Tag &tag, Values::const_iterator values)
{
    if (tag.kind != ElementKind::Word)
        return *values;
    quint64 bits = 0;
    for (int word = 0; word < elementsPerNumber(tag); ++word)
        bits |= quint64{*values++} << shiftOf(tag, word);
    return bits;
}

QString hexText(const Tag &tag, quint64 bits)
{
    return "0x" + QString::number(bits, 16).toUpper().rightJustified(widthOf(tag) / 4, '0');
}

NumberFormat nextFormat(NumberFormat format)
{
    return format == NumberFormat::Binary ? NumberFormat::AsTag
                                          : static_cast<NumberFormat>(static_cast<int>(format) + 1);
}

QString toText(NumberFormat format)
{
    switch (format) {
    case NumberFormat::Unsigned:
        return "decimal";
    case NumberFormat::Signed:
        return "signed";
    case NumberFormat::Hex:
        return "hexadecimal";
    case NumberFormat::Binary:
        return "binary";
    case NumberFormat::AsTag:
        break;
    }
    return {};
}

QString formatNumbers(const Tag &tag, const Values &values, NumberFormat format)
{
    if (format == NumberFormat::AsTag)
        return formatValues(tag, values);
    QStringList texts;
    const int step = elementsPerNumber(tag);
    for (auto value = values.begin(); values.end() - value >= step; value += step)
        texts.append(formatNumber(tag, numberOf(tag, value), format));
    return texts.join(' ');
}

} // namespace kmr

#include "host/tags/tag.h"

#include "host/error.h"
#include "modbus/areas.h"

#include <QRegularExpression>

#include <algorithm>

namespace kmr {

namespace {

enum CheckResult { VALID = 0, WRONG_KIND = 1, OUT_OF_RANGE = 2, UNKNOWN_AREA = 3, NO_ADDRESS = 4 };

// "100.3": bit 3 of word 100.
bool namesBits(const QString &area, const QString &address)
{
    return address.count('.') == 1 && !isBitArea(area) && !isCounterArea(area);
}

// The driver's area for such an address.
QString driverArea(const QString &area, const QString &address)
{
    return area == "TV" && namesBits(area, address) ? QString(WORD_BIT_AREA) : area;
}

// Words that hold `count` bits from `firstBit` of the first one on.
int wordsOfBits(int firstBit, int count)
{
    return (firstBit + count + WORD_BITS - 1) / WORD_BITS;
}

QString endFault(const QString &area, const QString &address, const TagText &tag)
{
    return QString("\"%1\" is not an address in %2 at or after %3").arg(tag.end, area, address);
}

bool startsLikeNumber(const QString &text)
{
    return !text.isEmpty() && (text[0].isDigit() || text[0] == '-' || text[0] == '+');
}

// The text up to the first digit.
QString lettersOf(const QString &name)
{
    int count = 0;
    while (count < name.size() && !name[count].isDigit())
        ++count;
    return name.left(count);
}

// The areas that `name` may mean, the longest first.
QStringList areasThatBegin(const QString &name, const QStringList &areas)
{
    QStringList candidates;
    for (const QString &area : areas) {
        if (name.startsWith(area) && startsLikeNumber(name.mid(area.size())))
            candidates.append(area);
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const QString &a, const QString &b) { return a.size() > b.size(); });
    return candidates;
}

QString counterNames()
{
    const modbus::Window &counters = modbus::counters();
    return QString("%1 to %2")
        .arg(elementName(counters.area, counters.first), elementName(counters.area, counters.last));
}

void checkType(const Tag &tag)
{
    const ValueType type = tag.type;
    if (type == ValueType::Plain)
        return;
    if (tag.kind == ElementKind::Bit || tag.kind == ElementKind::WordBit)
        throw badTag(tag.text, "bits have no type");
    if (tag.kind == ElementKind::Counter) {
        if (type == ValueType::Int16 || type == ValueType::UInt16 || type == ValueType::Text ||
            wordsOf(type) == 4)
            throw badTag(tag.text, "a counter has 32 bits: expected int32, uint32, float32, hex or "
                                   "bcd");
        return;
    }
    const int words = wordsOf(type);
    if (tag.count % words != 0)
        throw badTag(tag.text, QString("values of %1 bits take %2 words each, but %3 are named")
                                   .arg(words * WORD_BITS)
                                   .arg(words == 2 ? "two" : "four")
                                   .arg(tag.count));
    for (int first = tag.elements.first; first < tag.elements.end(); first += words) {
        if (nextBorder(tag.elements.area, first) < first + words)
            throw badTag(tag.text,
                         QString("the words of the value at %1 can't be read together, since the "
                                 "controller keeps some of them elsewhere")
                             .arg(elementName(tag.elements.area, first)));
    }
}

} // namespace

int elementsPerNumber(const Tag &tag)
{
    return tag.kind == ElementKind::Word ? wordsOf(tag.type) : 1;
}

TagReader::TagReader(const DriverFunctions &driver, int station, WordOrder wordOrder,
                     ByteOrder byteOrder)
    : m_driver(&driver), m_station(station), m_wordOrder(wordOrder), m_byteOrder(byteOrder)
{
    m_driver->getRegListByType(0, m_areas);
    m_driver->getRegListByType(1, m_areas);
}

Tag TagReader::read(const QString &text) const
{
    const TagText parts = splitTag(text);
    Tag tag;
    tag.text = text;
    tag.type = parts.type;
    tag.wordOrder = m_wordOrder;
    tag.byteOrder = m_byteOrder;
    tag.elements.station = parts.station.value_or(m_station);
    const QStringList candidates = areasThatBegin(parts.name, m_areas);
    if (candidates.isEmpty())
        throw badTag(text, whyNoArea(parts));
    QStringList reasons;
    for (const QString &area : candidates) {
        const QString address = parts.name.mid(area.size());
        const int count = countOf(area, address, parts);
        if (count < 1) {
            reasons.append(endFault(area, address, parts));
        } else if (readAddress(area, address, count, tag)) {
            checkType(tag);
            return tag;
        } else {
            reasons.append(whyInvalid(area, address, count));
        }
    }
    throw badTag(text, reasons.join("; "));
}

AddressCheck TagReader::check(const QString &text) const
{
    const TagText tag = splitTag(text);
    QStringList candidates = areasThatBegin(tag.name, m_areas);
    if (candidates.isEmpty()) // let the driver report it
        candidates.append(lettersOf(tag.name));
    std::optional<AddressCheck> longest;
    for (const QString &area : candidates) {
        AddressCheck found = checkIn(area, tag);
        if (found.result == VALID)
            return found;
        if (!longest)
            longest = found;
    }
    return *longest;
}

AddressCheck TagReader::checkIn(const QString &area, const TagText &tag) const
{
    const QString address = tag.name.mid(area.size());
    AddressCheck found{driverArea(area, address), address, countOf(area, address, tag), VALID};
    if (found.count < 1) {
        found.address = tag.end;
        found.count = 1;
    }
    int number = 0;
    found.result = ask(found.area, found.address, found.count, number);
    if (found.result == VALID && found.address != address)
        throw badTag(tag.name + ".." + tag.end, endFault(area, address, tag));
    return found;
}

// 0 or less if the end is not an address or is before the beginning.
int TagReader::countOf(const QString &area, const QString &address, const TagText &tag) const
{
    if (tag.count)
        return *tag.count;
    if (tag.end.isEmpty())
        return !isBitArea(area) && !isCounterArea(area) ? wordsOf(tag.type) : 1;
    const QString checked = driverArea(area, address);
    if (namesBits(area, address) != namesBits(area, tag.end))
        return 0;
    int first = 0;
    int last = 0;
    if (ask(checked, tag.end, 1, last) != VALID)
        return 0;
    if (ask(checked, address, 1, first) != VALID)
        return 1; // the address is wrong, not the count
    return linearNumber(checked, last) - linearNumber(checked, first) + 1;
}

int TagReader::ask(const QString &area, const QString &address, int count, int &number) const
{
    const bool isBit = area == WORD_BIT_AREA || isBitArea(area);
    if (!isBit && namesBits(area, address))
        return askBits(area, address, count, number);
    return m_driver->checkAddrValidity(area, address, &number, count, isBit ? 0 : 1);
}

// The driver's number of a bit of a TV word.
int TagReader::askBits(const QString &area, const QString &address, int count, int &number) const
{
    static const QRegularExpression PARTS("^([0-9]+)\\.([0-9]|1[0-5])$");
    const QRegularExpressionMatch parts = PARTS.match(address);
    if (!parts.hasMatch())
        return NO_ADDRESS;
    const int bit = parts.captured(2).toInt();
    const int result = ask(area, parts.captured(1), wordsOfBits(bit, count), number);
    if (result == VALID)
        number = number * WORD_BITS + bit;
    return result;
}

// Fills `tag` if the address is valid.
bool TagReader::readAddress(const QString &area, const QString &address, int count, Tag &tag) const
{
    int number = 0;
    const QString checked = driverArea(area, address);
    if (ask(checked, address, count, number) != VALID)
        return false;
    tag.elements.area = area;
    if (namesBits(area, address)) {
        tag.kind = ElementKind::WordBit;
        tag.isWritable = false;
        tag.firstBit = number % WORD_BITS;
        tag.elements.first = number / WORD_BITS;
        tag.elements.count = wordsOfBits(tag.firstBit, count);
    } else {
        tag.kind = isBitArea(area)       ? ElementKind::Bit
                   : isCounterArea(area) ? ElementKind::Counter
                                         : ElementKind::Word;
        tag.elements.first = linearNumber(area, number);
        tag.elements.count = count;
    }
    tag.count = count;

    QStringList description; // mask, lowest, highest, word area, writable
    m_driver->getRegDiscription(area, description);
    tag.isWritable = tag.isWritable && description.value(4) == "1";
    // The driver computes the end of a run of octal numbers in decimal.
    const int highest = linearNumber(area, description.value(2).toInt());
    if (tag.elements.end() - 1 > highest)
        return false;
    const auto hidden = modbus::hiddenByCounters(area);
    return !hidden || tag.elements.end() <= hidden->first || tag.elements.first > hidden->last;
}

QString TagReader::whyNoArea(const TagText &tag) const
{
    TagText meant = tag;
    meant.name = tag.name.toUpper();
    const bool isArea = !areasThatBegin(meant.name, m_areas).isEmpty();
    return QString("expected an area in capitals (%1) and a number after it%2")
        .arg(m_areas.join(", "),
             isArea ? QString(", did you mean %1?").arg(joinTag(meant)) : QString());
}

QString TagReader::whyInvalid(const QString &area, const QString &address, int count) const
{
    const QString checked = driverArea(area, address);
    QStringList description;
    m_driver->getRegDiscription(area, description);
    int number = 0;
    switch (ask(checked, address, count, number)) {
    case WRONG_KIND:
        return QString("%1 has no such elements").arg(area);
    case UNKNOWN_AREA:
        return QString("%1 is not an area").arg(area);
    case NO_ADDRESS:
        return namesBits(area, address)
                   ? QString("\"%1\" is not a bit of a word, expected for example 5.3 (bit 0 to "
                             "15, without leading zero)")
                         .arg(address)
                   : QString("\"%1\" is not an address in %2").arg(address, area);
    case VALID:
        if (const auto hidden = modbus::hiddenByCounters(area))
            return QString("%1 to %2 are at the addresses of the counters: use %3")
                .arg(elementName(area, hidden->first), elementName(area, hidden->last),
                     counterNames());
        break;
    default:
        break;
    }
    const QString remark = modbus::isOctalArea(area) ? QString(" in octal digits")
                           : area == "CV" ? QString(" (the counters are %1)").arg(counterNames())
                                          : QString();
    return QString("out of range: %1 reaches from %2 to %3%4")
        .arg(area, description.value(1), description.value(2), remark);
}

} // namespace kmr

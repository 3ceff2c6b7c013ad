#include "host/tag.h"

#include "host/error.h"
#include "host/names.h"

#include <QRegularExpression>

#include <algorithm>

namespace kmr {

namespace {

constexpr int MAX_COUNT = 65537; // elements of the largest area
constexpr int WORD_BITS = 16;
const char *const WORD_BIT_AREA = "TV_bit"; // the driver's name for bits of TV words

// These words lie where the controller keeps its four-byte counters 200 to 255.
constexpr int FIRST_COUNTER_WORD = 2248; // in TV
constexpr int LAST_COUNTER_WORD = 2303;

enum CheckResult { VALID = 0, WRONG_KIND = 1, OUT_OF_RANGE = 2, UNKNOWN_AREA = 3, NO_ADDRESS = 4 };

Error badTag(const QString &text, const QString &why)
{
    return Error(ExitCode::Usage, QString("bad tag \"%1\": %2").arg(text, why));
}

bool startsLikeNumber(const QString &text)
{
    return !text.isEmpty() && (text[0].isDigit() || text[0] == '-' || text[0] == '+');
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

ValueType readType(const QString &text, const QString &name)
{
    const std::optional<ValueType> type = valueTypeOf(name);
    if (!type)
        throw badTag(
            text, QString("\"%1\" is no type, expected %2").arg(name, valueTypeNames().join(", ")));
    return *type;
}

void checkType(const Tag &tag)
{
    const ValueType type = tag.type;
    if (type == ValueType::Plain)
        return;
    if (tag.kind == ElementKind::Bit || tag.kind == ElementKind::WordBit)
        throw badTag(tag.text, "bits have no type");
    if (tag.kind == ElementKind::Counter) {
        if (type == ValueType::Int16 || type == ValueType::UInt16 || type == ValueType::Text)
            throw badTag(tag.text, "a counter has 32 bits: expected int32, uint32, float32, hex or "
                                   "bcd");
        return;
    }
    if (!is32Bit(type))
        return;
    if (tag.count % 2 != 0)
        throw badTag(
            tag.text,
            QString("values of 32 bits take two words each, but %1 are named").arg(tag.count));
    for (int first = tag.elements.first; first < tag.elements.end(); first += 2) {
        if (nextBorder(tag.elements.area, first) == first + 1)
            throw badTag(tag.text,
                         QString("the two words of the value at %1 can't be read together, since "
                                 "the controller keeps the second one elsewhere")
                             .arg(elementName(tag.elements.area, first)));
    }
}

} // namespace

int elementsPerNumber(const Tag &tag)
{
    return is32Bit(tag.type) && tag.kind == ElementKind::Word ? 2 : 1;
}

TagReader::TagReader(const DriverFunctions &driver, int station, WordOrder wordOrder)
    : m_driver(driver), m_station(station), m_wordOrder(wordOrder)
{
    m_driver.getRegListByType(0, m_areas);
    m_driver.getRegListByType(1, m_areas);
}

Tag TagReader::read(const QString &text) const
{
    if (m_names == nullptr)
        return readAddressed(text);
    if (m_names->find(text) != nullptr)
        return readNamed(text);
    try {
        return readAddressed(text);
    } catch (const Error &error) {
        throw Error(ExitCode::Usage,
                    QString("%1 (and %2 has no such name)").arg(error.text(), m_names->file()));
    }
}

Tag TagReader::readNamed(const QString &text) const
{
    const Name &name = *m_names->find(text);
    Tag tag = readAddressed(name.tag);
    const bool hasNumbers = tag.type != ValueType::Text && tag.type != ValueType::Hex &&
                            (tag.kind == ElementKind::Word || tag.kind == ElementKind::Counter);
    if (name.scale != 1 && !hasNumbers)
        throw badTag(text, QString("%1 has no numbers that could be scaled").arg(name.tag));
    tag.text = name.name;
    tag.unit = name.unit;
    tag.scale = name.scale;
    return tag;
}

Tag TagReader::readAddressed(const QString &text) const
{
    static const QRegularExpression PARTS("^(?:([0-9]{1,9})#)?([^#/\\s]+?)"
                                          "(?:\\.\\.([0-9.]+)|x([0-9]{1,9}))?(?:/([^/\\s]*))?$");
    const QRegularExpressionMatch match = PARTS.match(text);
    if (!match.hasMatch())
        throw badTag(text, "a tag is [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE] written "
                           "together, for example D100, 2#M0x16, TV5.3, D100..107, D100/float32");

    Tag tag;
    tag.text = text;
    tag.wordOrder = m_wordOrder;
    const QString station = match.captured(1);
    tag.elements.station = station.isEmpty() ? m_station : station.toInt();
    if (tag.elements.station < MIN_STATION || tag.elements.station > MAX_STATION)
        throw badTag(text, "a station is 1 to 99, two decimal digits travel on the line");
    if (match.capturedStart(5) >= 0)
        tag.type = readType(text, match.captured(5));
    Extent extent;
    extent.end = match.captured(3);
    if (match.capturedStart(4) >= 0)
        extent.count = match.captured(4).toInt();
    if (extent.count && (*extent.count < 1 || *extent.count > MAX_COUNT))
        throw badTag(text, QString("a count is 1 to %1").arg(MAX_COUNT));

    const QString name = match.captured(2);
    const QStringList candidates = areasThatBegin(name, m_areas);
    if (candidates.isEmpty())
        throw badTag(text, QString("expected an area in capitals (%1) and a number behind it")
                               .arg(m_areas.join(", ")));
    QStringList reasons;
    for (const QString &area : candidates) {
        extent.address = name.mid(area.size());
        const int count = countOf(area, extent, tag.type);
        if (count < 1) {
            reasons.append(QString("\"%1\" is no address in %2 at or behind %3")
                               .arg(extent.end, area, extent.address));
        } else if (readAddress(area, extent.address, count, tag)) {
            checkType(tag);
            return tag;
        } else {
            reasons.append(whyInvalid(area, extent.address, count));
        }
    }
    throw badTag(text, reasons.join("; "));
}

// 0 where the end is no address or lies before the beginning.
int TagReader::countOf(const QString &area, const Extent &extent, ValueType type) const
{
    if (extent.count)
        return *extent.count;
    if (extent.end.isEmpty())
        return is32Bit(type) && !isBitArea(area) && !isCounterArea(area) ? 2 : 1;
    const bool isWordBit = area == "TV" && extent.address.contains('.');
    const QString checked = isWordBit ? QString(WORD_BIT_AREA) : area;
    int first = 0;
    int last = 0;
    if (check(checked, extent.end, 1, last) != VALID)
        return 0;
    if (check(checked, extent.address, 1, first) != VALID)
        return 1; // the address is what is wrong
    return fromDriverAddress(checked, last) - fromDriverAddress(checked, first) + 1;
}

int TagReader::check(const QString &area, const QString &address, int count, int &number) const
{
    const bool isBit = area == WORD_BIT_AREA || isBitArea(area);
    return m_driver.checkAddrValidity(area, address, &number, count, isBit ? 0 : 1);
}

// Fills `tag` where the address is valid.
bool TagReader::readAddress(const QString &area, const QString &address, int count, Tag &tag) const
{
    int number = 0;
    tag.elements.area = area;
    if (area == "TV" && address.contains('.')) {
        if (check(WORD_BIT_AREA, address, count, number) != VALID)
            return false;
        tag.kind = ElementKind::WordBit;
        tag.isWritable = false;
        tag.firstBit = number % WORD_BITS;
        tag.elements.first = number / WORD_BITS;
        tag.elements.count = (tag.firstBit + count + WORD_BITS - 1) / WORD_BITS;
    } else {
        if (check(area, address, count, number) != VALID)
            return false;
        tag.kind = isBitArea(area)       ? ElementKind::Bit
                   : isCounterArea(area) ? ElementKind::Counter
                                         : ElementKind::Word;
        tag.elements.first = fromDriverAddress(area, number);
        tag.elements.count = count;
    }
    tag.count = count;

    QStringList description; // mask, lowest, highest, word area, writable
    m_driver.getRegDiscription(area, description);
    tag.isWritable = tag.isWritable && description.value(4) == "1";
    // The driver computes the end of a run of octal numbers in decimal.
    const int highest = fromDriverAddress(area, description.value(2).toInt());
    if (tag.elements.end() - 1 > highest)
        return false;
    return area != "TV" || tag.elements.end() <= FIRST_COUNTER_WORD ||
           tag.elements.first > LAST_COUNTER_WORD;
}

QString TagReader::whyInvalid(const QString &area, const QString &address, int count) const
{
    const bool isWordBit = area == "TV" && address.contains('.');
    QStringList description;
    m_driver.getRegDiscription(area, description);
    int number = 0;
    switch (check(isWordBit ? QString(WORD_BIT_AREA) : area, address, count, number)) {
    case WRONG_KIND:
        return QString("%1 has no such elements").arg(area);
    case UNKNOWN_AREA:
        return QString("%1 is no area").arg(area);
    case NO_ADDRESS:
        return isWordBit ? QString("\"%1\" is no bit of a word, expected for example 5.3 (bit 0 to "
                                   "15, without leading zero)")
                               .arg(address)
                         : QString("\"%1\" is no address in %2").arg(address, area);
    case VALID:
        if (area == "TV")
            return "TV2248 to TV2303 lie where the controller keeps its counters: use CV2200 to "
                   "CV2255";
        break;
    default:
        break;
    }
    const char *const remark = area == "X" || area == "Y" ? " in octal digits"
                               : area == "CV"             ? " (the counters are CV2200 to CV2255)"
                                                          : "";
    return QString("out of range: %1 reaches from %2 to %3%4")
        .arg(area, description.value(1), description.value(2), remark);
}

} // namespace kmr

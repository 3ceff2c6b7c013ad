#include "host/tag.h"

#include "host/error.h"

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

} // namespace

TagReader::TagReader(const DriverFunctions &driver, int station)
    : m_driver(driver), m_station(station)
{
    m_driver.getRegListByType(0, m_areas);
    m_driver.getRegListByType(1, m_areas);
}

Tag TagReader::read(const QString &text) const
{
    static const QRegularExpression PARTS("^(?:([0-9]{1,9})#)?([^#\\s]+?)(?:x([0-9]{1,9}))?$");
    const QRegularExpressionMatch match = PARTS.match(text);
    if (!match.hasMatch())
        throw badTag(text, "a tag is [STATION#]AREA ADDRESS[xCOUNT] written together, for example "
                           "D100, 2#M0x16, TV5.3");

    Tag tag;
    tag.text = text;
    const QString station = match.captured(1);
    tag.elements.station = station.isEmpty() ? m_station : station.toInt();
    if (tag.elements.station < MIN_STATION || tag.elements.station > MAX_STATION)
        throw badTag(text, "a station is 1 to 99, two decimal digits travel on the line");
    const QString count = match.captured(3);
    tag.count = count.isEmpty() ? 1 : count.toInt();
    if (tag.count < 1 || tag.count > MAX_COUNT)
        throw badTag(text, QString("a count is 1 to %1").arg(MAX_COUNT));

    const QString name = match.captured(2);
    QStringList candidates;
    for (const QString &area : m_areas) {
        if (name.startsWith(area) && startsLikeNumber(name.mid(area.size())))
            candidates.append(area);
    }
    if (candidates.isEmpty())
        throw badTag(text, QString("expected an area in capitals (%1) and a number behind it")
                               .arg(m_areas.join(", ")));
    std::sort(candidates.begin(), candidates.end(),
              [](const QString &a, const QString &b) { return a.size() > b.size(); });
    for (const QString &area : candidates) {
        if (readAddress(area, name.mid(area.size()), tag.count, tag))
            return tag;
    }

    QStringList reasons;
    for (const QString &area : candidates)
        reasons.append(whyInvalid(area, name.mid(area.size()), tag.count));
    throw badTag(text, reasons.join("; "));
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
    return QString("out of range: %1 reaches from %2 to %3%4")
        .arg(area, description.value(1), description.value(2),
             area == "X" || area == "Y" ? " in octal digits" : "");
}

} // namespace kmr

#include "address.h"

namespace {

const qint32 NO_UPPER = 0x7FFFFFFF; // an address too: such a row has the same base on both sides

const qint32 LOWEST = -0x7FFFFFFF - 1; // outside of every area

const ElementKind BIT = BIT_ELEMENTS;
const ElementKind WORD = WORD_ELEMENTS;
const ElementKind COUNTER = COUNTER_ELEMENTS;
const WatchKind BITS = WATCHED_AS_BITS;
const WatchKind WORDS = WATCHED_AS_WORDS;

// name, kind, watch, pollingOrder, octal, lowest, highest, mask, writable, base, upperFrom,
// upperBase
const DeviceArea DEVICE_AREAS[] = {
    {"TV", WORD, WORDS, 0, false, 0, 9999, "dddd", true, 0x0600, NO_UPPER, 0x0600},
    {"CV", WORD, WORDS, 1, false, 0, 199, "ddd", true, 0x0E00, NO_UPPER, 0x0E00},
    {"CV2", COUNTER, WORDS, 2, false, 200, 255, "ddd", true, 0x0E00, NO_UPPER, 0x0E00},
    {"D", WORD, WORDS, 3, false, 0, 11999, "ddddd", true, 0x1000, 4096, 0x8000},
    {"X", BIT, BITS, 4, true, 0, 23417, "ooooo", false, 0x0400, NO_UPPER, 0x0400},
    {"Y", BIT, BITS, 5, true, 0, 23417, "ooooo", true, 0x0500, NO_UPPER, 0x0500},
    // 65536 is one above the 16-bit range on purpose: panels rely on it being valid.
    {"M", BIT, BITS, 6, false, 0, 65536, "ddddd", true, 0x0800, 1536, 0xAA00},
    {"S", BIT, BITS, 7, false, 0, 9999, "dddd", true, 0x0000, NO_UPPER, 0x0000},
    {"T", BIT, BITS, 8, false, 0, 9999, "dddd", true, 0x0600, NO_UPPER, 0x0600},
    {"C", BIT, BITS, 9, false, 0, 9999, "dddd", true, 0x0E00, NO_UPPER, 0x0E00},
    // Bits for values, words for watching: each watched bit has an entry of its own.
    {"TV_bit", BIT, WORDS, 10, false, 0, 159999, nullptr, true, 0, NO_UPPER, 0},
    // Watched as bits, but neither polled nor available as values.
    {"SM", NO_ELEMENTS, BITS, -1, false, 0, 0, nullptr, true, 0, NO_UPPER, 0},
};

const DeviceArea &TV_BIT = DEVICE_AREAS[10];

const char *const BIT_AREA_NAMES[] = {"X", "Y", "M", "S", "T", "C"};
const char *const WORD_AREA_NAMES[] = {"TV", "CV", "CV2", "D"};

// Character by character: most rows differ in the first one, and a call into Qt costs more.
bool isNamed(const DeviceArea &area, const QString &name)
{
    const int length = static_cast<int>(name.size());
    for (int i = 0; i < length; ++i) {
        if (area.name[i] == '\0' || name.at(i) != QLatin1Char(area.name[i]))
            return false;
    }
    return area.name[length] == '\0';
}

// The decimal digits of `value` as an unsigned 32-bit number.
QString unsignedText(qint64 value)
{
    return QString::number(static_cast<quint32>(value));
}

bool hasSign(const QString &text)
{
    return text.contains(QLatin1Char('-')) || text.contains(QLatin1Char('+'));
}

bool parseAddress(const DeviceArea &area, const QString &text, qint32 *value)
{
    if (isTvBit(area))
        return a2i_ddd_DD(text, value) == 1;
    bool ok = false;
    const int number = text.toInt(&ok);
    if (ok)
        *value = number;
    return ok;
}

// Everything after the type checks; these differ in the two exported checks.
AddressCheck checkAddressText(const DeviceArea &area, const QString &text, qint32 *address,
                              qint32 count)
{
    qint32 value = 0;
    if (!parseAddress(area, text, &value))
        return ADDRESS_SYNTAX_ERROR;
    if (address)
        *address = value;
    if (value < area.lowest)
        return ADDRESS_OUT_OF_RANGE;
    // For octal areas the end is computed in decimal on the digits, and only the start is checked
    // for octal digits: editors rely on both.
    if (qint64(value) + count - 1 > area.highest)
        return ADDRESS_OUT_OF_RANGE;
    if (area.octal && !check8Num(value))
        return ADDRESS_OUT_OF_RANGE;
    return ADDRESS_VALID;
}

bool isCounterDataType(qint32 dataType)
{
    return dataType == 1 || dataType == 3 || dataType == 5 || dataType == 6 || dataType == 9;
}

// The step that the editor wants: -2 means one 32-bit value.
qint32 seriesStep(const DeviceArea &area, qint32 step)
{
    if (step >= 1)
        return step;
    const bool takesTwoElements = area.kind == WORD_ELEMENTS || isTvBit(area);
    return step == -2 && takesTwoElements ? 2 : 1;
}

int octalSeries(qint32 start, qint32 n, qint32 step, QVector<QString> &texts,
                QVector<qint32> &numbers, qint32 max)
{
    int result = SERIES_INSIDE;
    qint64 correction = 0;
    for (qint32 i = 0; i < n; ++i) {
        qint64 value = start + qint64(i) * step + correction;
        // Only the last digit carries, on purpose: a tens digit that becomes 8 or 9 stays.
        const qint64 lastDigit = value % 10;
        if (lastDigit > 7) {
            value += 10 - lastDigit;
            correction += 10 - lastDigit;
        }
        if (value > max) {
            value = max;
            result = SERIES_CLIPPED;
        }
        texts.append(QString::number(value));
        numbers.append(static_cast<qint32>(value));
    }
    return result;
}

int wordBitSeries(qint32 start, qint32 n, qint32 step, QVector<QString> &texts,
                  QVector<qint32> &numbers)
{
    // The text of the end does not match its number, on purpose; editors show it as it is.
    const qint32 max = 65535 * 16 + 15;
    const QLatin1String endText("65536.15");
    int result = SERIES_INSIDE;
    for (qint32 i = 0; i < n; ++i) {
        const qint64 value = start + qint64(i) * step;
        if (value > max) {
            texts.append(endText);
            numbers.append(max);
            result = SERIES_CLIPPED;
        } else {
            texts.append(unsignedText(value / 16) + QLatin1Char('.') + unsignedText(value % 16));
            numbers.append(static_cast<qint32>(value));
        }
    }
    return result;
}

} // namespace

const DeviceArea *findDeviceArea(const QString &name)
{
    for (const DeviceArea &area : DEVICE_AREAS) {
        if (isNamed(area, name))
            return &area;
    }
    return nullptr;
}

ElementKind elementKind(const DeviceArea *area)
{
    return area ? area->kind : NO_ELEMENTS;
}

bool isTvBit(const DeviceArea &area)
{
    return &area == &TV_BIT;
}

qint32 linearAddress(const DeviceArea &area, qint32 address)
{
    return area.octal ? linearFromOctalDigits(address) : address;
}

qint32 wrapped(qint64 value)
{
    return static_cast<qint32>(static_cast<quint32>(value));
}

qint32 addressPlus(qint32 address, qint64 offset)
{
    return wrapped(address + offset);
}

qint32 linearFromOctalDigits(qint32 digits)
{
    qint32 linear = 0;
    for (qint32 rest = digits, weight = 1; rest > 0; rest /= 10, weight *= 8) {
        if (rest % 10 > 7)
            return 0;
        linear += rest % 10 * weight;
    }
    return linear;
}

qint32 octalDigitsFromLinear(qint32 linear)
{
    qint64 digits = 0;
    qint64 weight = 1;
    for (qint32 rest = linear; rest > 0; rest /= 8, weight *= 10)
        digits += rest % 8 * weight;
    return digits <= 0x7FFFFFFF ? static_cast<qint32>(digits) : 0;
}

int check8Num(int value)
{
    for (int rest = value; rest > 0; rest /= 10) {
        if (rest % 10 > 7)
            return 0;
    }
    return 1;
}

int a2i_ddd_DD(QString text, int *result)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return -1;
    bool wordOk = false;
    bool bitOk = false;
    const int word = parts.at(0).toInt(&wordOk);
    const int bit = parts.at(1).toInt(&bitOk);
    if (!wordOk || !bitOk)
        return -1;
    const int bitChars = static_cast<int>(parts.at(1).size());
    const bool oneDigit = bitChars == 1;
    const bool tenToFifteen = bitChars == 2 && bit >= 10 && bit <= 15;
    if (!oneDigit && !tenToFifteen)
        return -1;
    const qint64 combined = qint64(word) * 16 + bit;
    const bool fits = combined == static_cast<qint32>(combined);
    *result = fits ? static_cast<qint32>(combined) : LOWEST;
    return 1;
}

int bCheckSplitter(QByteArray frame)
{
    const int length = static_cast<int>(frame.size());
    return length >= 2 && frame.at(length - 1) == '\r' && frame.at(length - 2) != '*' ? 1 : 0;
}

qint32 intf_checkAddrValidity(QString area, QString addressText, qint32 *address, qint32 count,
                              qint32 wantWord) noexcept
{
    const DeviceArea *const row = findDeviceArea(area);
    const ElementKind kind = elementKind(row);
    if (kind != NO_ELEMENTS && (kind == BIT_ELEMENTS) != (wantWord == 0))
        return ADDRESS_KIND_MISMATCH;
    if (hasSign(addressText))
        return ADDRESS_SYNTAX_ERROR;
    if (kind == NO_ELEMENTS)
        return ADDRESS_UNKNOWN_AREA;
    return checkAddressText(*row, addressText, address, count);
}

qint32 intf_checkAddr(QString area, QString addressText, qint32 *address, qint32 dataType,
                      qint32 count) noexcept
{
    const DeviceArea *const row = findDeviceArea(area);
    const ElementKind kind = elementKind(row);
    if (kind != NO_ELEMENTS && (kind == BIT_ELEMENTS) != (dataType == -1))
        return ADDRESS_KIND_MISMATCH;
    if (hasSign(addressText))
        return ADDRESS_SYNTAX_ERROR;
    if (kind == NO_ELEMENTS)
        return ADDRESS_UNKNOWN_AREA;
    if (kind == COUNTER_ELEMENTS && !isCounterDataType(dataType))
        return ADDRESS_DATA_TYPE_MISMATCH;
    return checkAddressText(*row, addressText, address, count);
}

qint32 intf_getRegDiscription(QString area, QStringList &out) noexcept
{
    const DeviceArea *const row = findDeviceArea(area);
    if (!row || !row->mask)
        return 0;
    const QLatin1String yes("1");
    const QLatin1String no("0");
    out << QString(QLatin1String(row->mask)) << QString::number(row->lowest)
        << QString::number(row->highest) << QString(row->kind == BIT_ELEMENTS ? no : yes)
        << QString(row->writable ? yes : no);
    return 1;
}

qint32 intf_getRegListByType(qint32 type, QStringList &out) noexcept
{
    // Type 0 fills the list and returns 0: the result is the type, not success.
    if (type == 0) {
        for (const char *name : BIT_AREA_NAMES)
            out << QString(QLatin1String(name));
        return 0;
    }
    if (type == 1) {
        for (const char *name : WORD_AREA_NAMES)
            out << QString(QLatin1String(name));
        return 1;
    }
    return 0;
}

int multiCp_dec(qint32 start, qint32 n, qint32 step, QVector<QString> &texts,
                QVector<qint32> &numbers, qint32 max, QString endText)
{
    int result = SERIES_INSIDE;
    for (qint32 i = 0; i < n; ++i) {
        const qint64 value = start + qint64(i) * step;
        if (value > max) {
            texts.append(endText);
            numbers.append(max);
            result = SERIES_CLIPPED;
        } else {
            texts.append(unsignedText(value));
            numbers.append(static_cast<qint32>(value));
        }
    }
    return result;
}

qint32 intf_multiCopy(const QString &area, qint32 start, qint32 n, qint32 step,
                      QVector<QString> *texts, QVector<qint32> *numbers) noexcept
{
    const DeviceArea *const row = findDeviceArea(area);
    if (elementKind(row) == NO_ELEMENTS)
        return SERIES_UNKNOWN_AREA;
    QVector<QString> noTexts;
    QVector<qint32> noNumbers;
    QVector<QString> &textsOut = texts ? *texts : noTexts;
    QVector<qint32> &numbersOut = numbers ? *numbers : noNumbers;
    const qint32 usedStep = seriesStep(*row, step);
    if (isTvBit(*row))
        return wordBitSeries(start, n, usedStep, textsOut, numbersOut);
    if (row->octal)
        return octalSeries(start, n, usedStep, textsOut, numbersOut, row->highest);
    return multiCp_dec(start, n, usedStep, textsOut, numbersOut, row->highest,
                       QString::number(row->highest));
}

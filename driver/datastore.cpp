#include "datastore.h"

#include "address.h"
#include "polling.h"

namespace {

bool hasKey(const _DATA_ &entry, qint32 station, const QString &area, qint32 index)
{
    return entry.station == station && entry.area == area && entry.index == index;
}

int findFromFront(const QList<_DATA_> &areas, qint32 station, const QString &area, qint32 index)
{
    for (int i = 0; i < areas.size(); ++i) {
        if (hasKey(areas.at(i), station, area, index))
            return i;
    }
    return -1;
}

bool watchesBit(qint32 bitMonitor, int bit)
{
    return bit >= 0 && ((bitMonitor >> bit) & 1);
}

// The value that the host sees: a pending write is visible at once.
const quint8 *currentValue(const _DATA_ &entry)
{
    return entry.writePending == 1 ? entry.writtenValue : entry.readValue;
}

// The mask of a bit address within its byte; 0 for negative addresses.
quint8 maskOfBit(qint32 bit)
{
    return bit % BLOCK_BITS < 0 ? quint8(0) : static_cast<quint8>(1 << (bit % 8));
}

qint32 hostAddress(const DeviceArea &area, qint32 linear)
{
    return area.octal ? octalDigitsFromLinear(linear) : linear;
}

void readBits(qint32 station, const QString &area, qint32 first, qint32 count, quint8 *out)
{
    for (qint32 i = 0; i < count; ++i) {
        const qint32 bit = addressPlus(first, i);
        const _DATA_ &entry = dataArea(station, area, bit / BLOCK_BITS);
        out[i] = (currentValue(entry)[byteOfBit(bit)] & maskOfBit(bit)) ? 1 : 0;
    }
}

void readElements(qint32 station, const QString &area, qint32 first, qint32 count, size_t bytes,
                  quint8 *out)
{
    for (qint32 i = 0; i < count; ++i, out += bytes)
        memcpy(out, currentValue(dataArea(station, area, addressPlus(first, i))), bytes);
}

void saveBits(qint32 station, const QString &area, qint32 first, qint32 count, const quint8 *data)
{
    for (qint32 i = 0; i < count; ++i) {
        const qint32 bit = addressPlus(first, i);
        const int byte = byteOfBit(bit);
        const quint8 mask = maskOfBit(bit);
        const quint8 current = currentValue(dataArea(station, area, bit / BLOCK_BITS))[byte];
        const quint8 changed = static_cast<quint8>(data[i] == 1 ? current | mask : current & ~mask);
        if (changed != current)
            _OnlyOneDataTypeDataChange(station, area, bit, 0, 0, 0);
        _DATA_ &entry = dataAreaToChange(station, area, bit / BLOCK_BITS);
        // The block's other byte keeps what was last written there, not what was last read.
        entry.writtenValue[byte] = changed;
        entry.writePending = 1;
    }
}

void saveElements(qint32 station, const QString &area, qint32 first, qint32 count, size_t bytes,
                  const quint8 *data)
{
    for (qint32 i = 0; i < count; ++i, data += bytes) {
        const qint32 address = addressPlus(first, i);
        if (memcmp(currentValue(dataArea(station, area, address)), data, bytes) != 0)
            _OnlyOneDataTypeDataChange(station, area, address, 0, 0, 0);
        _DATA_ &entry = dataAreaToChange(station, area, address);
        memcpy(entry.writtenValue, data, bytes);
        entry.writePending = 1;
    }
}

VARIABLE writeRequest(qint32 station, const QString &area, qint32 address, qint32 count,
                      qint32 reqTag)
{
    VARIABLE request;
    request.reqTag = reqTag;
    request.station = station;
    request.area = area;
    request.address = address;
    request.count = count;
    return request;
}

// One request for each bit, at the next decimal number: Y7 is followed by 8, which is not an octal
// digit and is sent as Y0. Hosts end a run of Y at a digit 7.
void queueBitWrites(qint32 station, const QString &area, qint32 first, qint32 count,
                    const quint8 *data, qint32 reqTag)
{
    for (qint32 i = 0; i < count; ++i) {
        VARIABLE request = writeRequest(station, area, addressPlus(first, i), 1, reqTag);
        request.data[0] = data[i];
        queueRequest(driver.pendingWrites, request);
    }
}

// Counters are cut by words, too, so a cut may be between the two words of one counter.
void queueWordWrites(qint32 station, const QString &area, qint32 first, qint32 count,
                     const quint8 *data, qint32 reqTag)
{
    const qint32 most = qMax(driver.wordGroupLimit, 1);
    qint32 words = 0;
    for (qint32 done = 0; done < count; done += words, data += 2 * words) {
        words = qMin(count - done, most);
        VARIABLE request = writeRequest(station, area, addressPlus(first, done), words, reqTag);
        for (qint32 word = 0; word < words; ++word) {
            request.data[2 * word] = data[2 * word + 1];
            request.data[2 * word + 1] = data[2 * word];
        }
        queueRequest(driver.pendingWrites, request);
    }
}

} // namespace

int getIndexOfDataArea(int station, QString area, int index, QList<_DATA_> &areas)
{
    if (&areas == &driver.dataAreas)
        return positionInStore(station, area, index);
    const int position = findFromFront(areas, station, area, index);
    if (position >= 0)
        return position;
    _DATA_ entry;
    entry.station = station;
    entry.area = area;
    entry.index = index;
    areas.append(entry);
    return static_cast<int>(areas.size()) - 1;
}

void reportToHost(qint32 devId, qint32 station, const QString &area, qint32 address)
{
    if (driver.valueChangedCallback)
        driver.valueChangedCallback(devId, station, area, address);
}

int byteOfBit(qint32 bit)
{
    return bit % BLOCK_BITS >= 8 ? 1 : 0;
}

void reportElement(const _DATA_ &entry)
{
    if (entry.wordMonitor % 2 == 1)
        reportToHost(driver.devId, entry.station, entry.area, entry.index);
}

void reportBlock(const DeviceArea &area, _DATA_ entry, int changedBits)
{
    for (int bit = 0; bit < BLOCK_BITS; ++bit) {
        if (watchesBit(entry.bitMonitor, bit) && ((changedBits >> bit) & 1)) {
            const qint32 linear = wrapped(qint64(entry.index) * BLOCK_BITS + bit);
            reportToHost(driver.devId, entry.station, entry.area, hostAddress(area, linear));
        }
    }
}

void _OnlyOneDataTypeDataChange(int station, QString area, int address, int oldWord, int newWord,
                                int wholeBlock)
{
    const DeviceArea *const row = findDeviceArea(area);
    if (!row || row->watch == WATCHED_AS_WORDS) {
        reportElement(dataArea(station, area, address));
    } else if (wholeBlock == 1) {
        reportBlock(*row, dataArea(station, area, address), oldWord ^ newWord);
    } else {
        const qint32 watched = dataArea(station, area, address / BLOCK_BITS).bitMonitor;
        if (watchesBit(watched, address % BLOCK_BITS))
            reportToHost(driver.devId, station, area, hostAddress(*row, address));
    }
}

void _wordDataChange(int *oldWord, int *newWord, int station, QString area, int address, int noBits)
{
    const _DATA_ entry = dataArea(station, area, address);
    if (!oldWord || !newWord || *oldWord == *newWord)
        return;
    if (noBits == 0) {
        const int changedBits = *oldWord ^ *newWord;
        for (int bit = 0; bit < BLOCK_BITS; ++bit) {
            if (watchesBit(entry.bitMonitor, bit) && ((changedBits >> bit) & 1))
                reportToHost(driver.devId, station, area + QLatin1String("_bit"),
                             wrapped(qint64(address) * BLOCK_BITS + bit));
        }
    }
    if (entry.wordMonitor & 1)
        reportToHost(driver.devId, station, area, address);
    if (address >= 0 && (entry.wordMonitor & 2))
        reportToHost(driver.devId, station, area + QLatin1String("_double"), address);
    if (address >= 1 && (entry.wordMonitor & 4))
        reportToHost(driver.devId, station, area + QLatin1String("_double"), address - 1);
}

void write_saveDataToArea(int station, QString area, int address, int count, unsigned char *data)
{
    const DeviceArea *const row = findDeviceArea(area);
    switch (elementKind(row)) {
    case BIT_ELEMENTS:
        saveBits(station, area, linearAddress(*row, address), count, data);
        break;
    case WORD_ELEMENTS:
        saveElements(station, area, address, count, 2, data);
        break;
    case COUNTER_ELEMENTS:
        saveElements(station, area, address, count / 2, 4, data);
        break;
    default:
        break;
    }
}

qint32 intf_getData(qint32 station, QString area, qint32 address, qint32 count,
                    quint8 *out) noexcept
{
    if (!out)
        return 1;
    const DeviceArea *const row = findDeviceArea(area);
    switch (elementKind(row)) {
    case BIT_ELEMENTS:
        readBits(station, area, linearAddress(*row, address), count, out);
        break;
    case WORD_ELEMENTS:
        readElements(station, area, address, count, 2, out);
        break;
    case COUNTER_ELEMENTS:
        readElements(station, area, address, count / 2, 4, out);
        break;
    default:
        break;
    }
    return 1;
}

qint32 intf_setData(qint32 station, QString area, qint32 address, qint32 count, quint8 *data,
                    qint32 reqTag) noexcept
{
    if (!data)
        return 1;
    if (driver.writeQueueOff == 0) {
        switch (elementKind(findDeviceArea(area))) {
        case BIT_ELEMENTS:
            queueBitWrites(station, area, address, count, data, reqTag);
            break;
        case WORD_ELEMENTS:
        case COUNTER_ELEMENTS:
            queueWordWrites(station, area, address, count, data, reqTag);
            break;
        default:
            break;
        }
    }
    write_saveDataToArea(station, area, address, count, data);
    return 1;
}

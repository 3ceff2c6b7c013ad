#include "polling.h"

#include "address.h"
#include "datastore.h"

#include <algorithm>

namespace {

// A piece of a run that one request can read.
struct Chunk {
    qint32 group; // only chunks of the same group are joined
    qint32 address;
    qint32 count;
    const KEY_ADDRESS *run; // gives station and area
};

bool comesBefore(const Chunk &left, const Chunk &right)
{
    return left.group < right.group || (left.group == right.group && left.address < right.address);
}

bool sameTarget(const VARIABLE &left, const VARIABLE &right)
{
    return left.address == right.address && left.count == right.count &&
           left.station == right.station && left.area == right.area;
}

// Bits are cut at eight times the limit of words, although a read covers at most 32 of them.
qint32 chunkLimit(const DeviceArea &area)
{
    const bool bits = area.watch == WATCHED_AS_BITS;
    return qMax(bits ? driver.bitGroupLimit : driver.wordGroupLimit, 1);
}

// Whole words that hold `bits` bits, rounded up.
qint64 wordsOfBits(qint64 bits)
{
    return bits / BLOCK_BITS + (bits % BLOCK_BITS != 0 ? 1 : 0);
}

void cutIntoChunks(const KEY_ADDRESS &key, QVector<Chunk> &chunks)
{
    const DeviceArea *const area = findDeviceArea(key.area);
    if (!area || area->pollingOrder < 0)
        return;
    qint32 start = key.address;
    qint64 count = key.count;
    if (isTvBit(*area)) { // polled as words
        start = key.address / BLOCK_BITS;
        count = wordsOfBits(qint64(key.address % BLOCK_BITS) + key.count);
    }
    // Stations of 256 and more share their groups with the next area.
    const qint32 group = addressPlus(key.station, area->pollingOrder * 256);
    const qint32 limit = chunkLimit(*area);
    // Cut in decimal steps: a chunk of an octal run may begin at a number with a digit 8 or 9,
    // which is read as 0. Hosts keep runs of X and Y within one request.
    for (qint64 done = 0; done < count; done += limit) {
        const Chunk chunk = {group, addressPlus(start, done),
                             static_cast<qint32>(qMin<qint64>(limit, count - done)), &key};
        chunks.append(chunk);
    }
}

// The block that chunks are joined to. 64 bits, so that its end never wraps round.
struct OpenBlock {
    qint64 start;
    qint64 length;
};

OpenBlock openBlock(const Chunk &chunk)
{
    VARIABLE block;
    block.reqTag = READ_BLOCK_TAG;
    block.station = chunk.run->station;
    block.area = chunk.run->area;
    block.address = chunk.address;
    block.count = chunk.count;
    driver.cyclicReads.append(block);
    const OpenBlock opened = {chunk.address, chunk.count};
    return opened;
}

// True when `chunk` may not join a block that starts at `blockStart`: the timers and counters from
// 255 on are read apart from those below. Only the starts are looked at.
bool crosses255(const Chunk &chunk, qint64 blockStart)
{
    const QString &area = chunk.run->area;
    const bool dividedAt255 = area == QLatin1String("T") || area == QLatin1String("C");
    return dividedAt255 && chunk.address >= 255 && blockStart < 255;
}

// Joins chunks, sorted by group and address, into read blocks. Lengths of X and Y are differences
// of their octal digits read as decimal numbers. A counter chunk after the first of its group is a
// block of its own, and the open block keeps its start and length: if stations of 256 and more
// share a group, a later chunk that joins the open block still lengthens the block added last.
void appendBlocks(const QVector<Chunk> &chunks)
{
    OpenBlock open = {0, 0};
    for (int i = 0; i < chunks.size(); ++i) {
        const Chunk &chunk = chunks.at(i);
        const qint64 end = qint64(chunk.address) + chunk.count;
        if (i == 0 || chunk.group != chunks.at(i - 1).group) {
            open = openBlock(chunk);
            continue;
        }
        if (chunk.run->area == QLatin1String("CV2")) {
            openBlock(chunk);
            continue;
        }
        if (end <= open.start + open.length)
            continue;
        // The word limit also applies to bits: a bit run may be long, joined bit runs may not.
        if (end - open.start > driver.wordGroupLimit) {
            open = openBlock(chunk);
            continue;
        }
        if (crosses255(chunk, open.start)) {
            open = openBlock(chunk);
            continue;
        }
        open.length = end - open.start;
        driver.cyclicReads.last().count = static_cast<qint32>(open.length);
    }
}

VARIABLE oneShotRead(const KEY_ADDRESS &piece, qint32 reqTag)
{
    VARIABLE request;
    request.reqTag = reqTag;
    request.station = piece.station;
    request.area = piece.area;
    request.address = piece.address;
    request.count = piece.count;
    if (elementKind(findDeviceArea(piece.area)) == BIT_ELEMENTS) {
        // The words that the bits would fill, wherever in its word the run starts. The read uses
        // the number of the word as a bit address: for M40 the queue holds 2, and M0 to M15 are
        // read. Hosts read bits once by polling them.
        request.address = piece.address / BLOCK_BITS;
        request.count = static_cast<qint32>(wordsOfBits(piece.count));
    }
    return request;
}

} // namespace

void queueRequest(QList<VARIABLE> &queue, const VARIABLE &request)
{
    const QList<VARIABLE> &queued = queue;
    const int size = static_cast<int>(queued.size());
    for (int i = size - 1; i >= 1; --i) {
        if (sameTarget(queued.at(i), request)) {
            queue[i] = request;
            return;
        }
    }
    if (size < QUEUE_MOST)
        queue.append(request);
    else
        queue[QUEUE_MOST - 1] = request;
}

int _setBitValue(int value, quint8 bit, bool on)
{
    const quint32 mask = bit < 32 ? 1u << bit : 0u;
    const quint32 bits = static_cast<quint32>(value);
    return static_cast<int>(on ? bits | mask : bits & ~mask);
}

int _setDataAreaMonitorFlag(int station, QString area, int address, int count)
{
    const DeviceArea *const row = findDeviceArea(area);
    int mark = 0;
    if (row && row->watch == WATCHED_AS_BITS) {
        const qint32 first = linearAddress(*row, address);
        for (int i = 0; i < count; ++i) {
            const qint32 bit = addressPlus(first, i);
            _DATA_ &entry = dataAreaToChange(station, area, bit / BLOCK_BITS);
            mark = _setBitValue(entry.bitMonitor, static_cast<quint8>(bit % BLOCK_BITS), true);
            entry.bitMonitor = mark;
        }
    } else {
        for (int i = 0; i < count; ++i) {
            _DATA_ &entry = dataAreaToChange(station, area, addressPlus(address, i));
            mark = _setBitValue(entry.wordMonitor, 0, true);
            entry.wordMonitor = mark;
        }
    }
    return mark;
}

KEY_ADDRESS cutFront(KEY_ADDRESS &rest, qint32 maxCount)
{
    KEY_ADDRESS piece = rest;
    piece.count = qMin(rest.count, qMax(maxCount, 1));
    rest.address = addressPlus(rest.address, piece.count);
    rest.count -= piece.count;
    return piece;
}

void groupingKey(KEY_ADDRESS &key, qint32 maxCount, QList<KEY_ADDRESS> &out, qint32)
{
    KEY_ADDRESS rest = key;
    do
        out.append(cutFront(rest, maxCount));
    while (rest.count > 0);
}

qint32 intf_addrMerge(const QList<KEY_ADDRESS> &list) noexcept
{
    clearWatchMarks();
    for (const KEY_ADDRESS &key : list)
        _setDataAreaMonitorFlag(key.station, key.area, key.address, key.count);

    driver.cyclicReads.clear();
    QVector<Chunk> chunks;
    for (const KEY_ADDRESS &key : list)
        cutIntoChunks(key, chunks);
    std::reverse(chunks.begin(), chunks.end()); // among equal ones the newest comes first
    std::stable_sort(chunks.begin(), chunks.end(), comesBefore);
    appendBlocks(chunks);
    return static_cast<qint32>(driver.cyclicReads.size());
}

qint32 intf_addConditionRead(KEY_ADDRESS &key, qint32 reqTag) noexcept
{
    const qint32 most = key.elemKind == -1 ? driver.bitGroupLimit : driver.wordGroupLimit;
    KEY_ADDRESS rest = key;
    do {
        const KEY_ADDRESS piece = cutFront(rest, most);
        driver.lastVar = oneShotRead(piece, reqTag);
        queueRequest(driver.pendingReads, driver.lastVar);
    } while (rest.count > 0);
    return 1;
}

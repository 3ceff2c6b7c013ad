#include "response.h"

#include "address.h"
#include "datastore.h"

#include <algorithm>

namespace {

const int BYTE_CHARS = 2;
const int WORD_CHARS = 4;
const int COUNTER_CHARS = 8;

const int ERROR_INFO_NUMBERS_MOST = 64; // characters of everything but the area in the error text

// The fields of the request for decoding, copied: a callback may make the driver's lists grow.
struct Request {
    qint32 station;
    QString area;
    qint32 address;
    qint32 count;
    qint32 dataPos;
    qint32 dataLen;
};

Request requestInFlight()
{
    const FRAME_PRO &frame = driver.frames.at(0);
    return {frame.var.station, frame.var.area,     frame.var.address,
            frame.var.count,   frame.replyDataPos, frame.replyDataLen};
}

// Any character has a value: codes below '0' are 0, those above '@' count from 'A', which is 10,
// modulo 16. So lower-case digits have the value of upper-case ones.
inline int nibbleOf(char character)
{
    const int code = static_cast<quint8>(character);
    return code < '0' ? 0 : (code + (code > '@' ? 9 : 0)) & 0x0F;
}

// A missing character counts as 0, so that the missing end of a short reply is decoded as zeros.
int nibbleAt(const QByteArray &reply, qint64 position)
{
    return position < reply.size() ? nibbleOf(reply.at(static_cast<int>(position))) : 0;
}

inline quint8 byteAt(const QByteArray &reply, qint64 position)
{
    if (position + 1 >= reply.size())
        return static_cast<quint8>(nibbleAt(reply, position) * 16 + nibbleAt(reply, position + 1));
    const char *const digits = reply.constData() + position;
    return static_cast<quint8>(nibbleOf(digits[0]) * 16 + nibbleOf(digits[1]));
}

// Values are kept as numbers between reply and store: if they were built byte by byte in memory and
// then read as a whole, each read would wait for the writes.
quint32 wordAt(const QByteArray &reply, qint64 position)
{
    return quint32(byteAt(reply, position)) << 8 | byteAt(reply, position + 2);
}

// Whether the `size` bytes are those of `value`, low-order byte first.
bool holds(const quint8 *bytes, quint32 value, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        if (bytes[i] != static_cast<quint8>(value >> (8 * i)))
            return false;
    }
    return true;
}

void put(quint8 *bytes, quint32 value, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<quint8>(value >> (8 * i));
}

// Stores the value read for one word or counter, reporting a change before it is stored.
void storeElement(const Request &request, qint32 address, quint32 value, size_t size)
{
    const _DATA_ &known = dataArea(request.station, request.area, address);
    const bool changed = !holds(known.readValue, value, size);
    if (!changed && !known.commFailed)
        return;
    _DATA_ &entry = dataAreaToChange(request.station, request.area, address);
    entry.commFailed = 0;
    if (!changed)
        return;
    entry.writePending = 0;
    reportElement(entry);
    _DATA_ &reported = dataAreaToChange(request.station, request.area, address);
    put(reported.readValue, value, size);
}

// Stores the 16 bits read for one block, reporting changes before they are stored.
void storeBlock(const Request &request, const DeviceArea &area, qint32 block, quint32 bits)
{
    const _DATA_ &known = dataArea(request.station, request.area, block);
    const int changedBits =
        (known.readValue[0] + 256 * known.readValue[1]) ^ static_cast<int>(bits);
    if (changedBits == 0 && !known.commFailed)
        return;
    _DATA_ &entry = dataAreaToChange(request.station, request.area, block);
    entry.commFailed = 0;
    if (changedBits == 0)
        return;
    entry.writePending = 0;
    reportBlock(area, entry, changedBits);
    _DATA_ &reported = dataAreaToChange(request.station, request.area, block);
    put(reported.readValue, bits, BLOCK_BITS / 8);
}

// The area text of the reports about an upload: built once for each reply, and only if the host has
// a callback.
QString uploadEvent()
{
    const bool heard = driver.sendState == SEND_RECIPE_UPLOAD && driver.valueChangedCallback;
    return heard ? QString(QLatin1String("RWI")) : QString();
}

// Passes a value of an uploaded recipe entry to the host. `word` is its place in the buffer and
// `reportedWord` the number reported to the host, both counted from the entry's first word.
void storeInRecipe(const QString &event, qint32 word, qint32 reportedWord, quint32 value,
                   size_t size)
{
    // The report of the previous word may have replaced the recipe list.
    if (!driver.recipeBuffer || driver.recipeCursor >= driver.recipeVars.size())
        return;
    const qint32 first = driver.recipeVars.at(driver.recipeCursor).bufWord;
    if (first < 0)
        return;
    put(driver.recipeBuffer + 2 * (qint64(first) + word), value, size);
    reportToHost(0, -1, event, addressPlus(first, reportedWord));
}

void decodeWords(const Request &request, const QByteArray &reply)
{
    const QString event = uploadEvent();
    for (qint32 i = 0; i < request.dataLen / WORD_CHARS; ++i) {
        const qint64 position = request.dataPos + qint64(i) * WORD_CHARS;
        const quint32 word = wordAt(reply, position);
        storeElement(request, addressPlus(request.address, i), word, 2);
        if (driver.sendState == SEND_RECIPE_UPLOAD)
            storeInRecipe(event, i, i, word, 2);
    }
}

void decodeCounters(const Request &request, const QByteArray &reply)
{
    const QString event = uploadEvent();
    for (qint32 i = 0; i < request.dataLen / COUNTER_CHARS; ++i) {
        const qint64 position = request.dataPos + qint64(i) * COUNTER_CHARS;
        const quint32 counter =
            wordAt(reply, position) << 16 | wordAt(reply, position + WORD_CHARS);
        storeElement(request, addressPlus(request.address, i), counter, 4);
        // The reported number goes up by one for each counter, that of the buffer by two words, on
        // purpose: hosts count the reports.
        if (driver.sendState == SEND_RECIPE_UPLOAD)
            storeInRecipe(event, 2 * i, i, counter, 4);
    }
}

void decodeBlocks(const Request &request, const DeviceArea &area, const QByteArray &reply)
{
    const qint32 firstBlock = linearAddress(area, request.address) / BLOCK_BITS;
    for (qint32 i = 0; i < request.dataLen / WORD_CHARS; ++i) {
        const qint64 position = request.dataPos + qint64(i) * WORD_CHARS;
        const quint32 bits = byteAt(reply, position) | quint32(byteAt(reply, position + 2)) << 8;
        storeBlock(request, area, addressPlus(firstBlock, i), bits);
    }
}

void decodeReply(const Request &request, const QByteArray &reply)
{
    const DeviceArea *const area = findDeviceArea(request.area);
    if (!area)
        return;
    if (area->kind == WORD_ELEMENTS)
        decodeWords(request, reply);
    else if (area->kind == COUNTER_ELEMENTS)
        decodeCounters(request, reply);
    else if (area->watch == WATCHED_AS_BITS)
        decodeBlocks(request, *area, reply);
}

// The elements are counted from the request's address, also for bits: it is neither read as octal
// nor divided by 16, and there is an entry for each byte of bits and two for each counter. Nothing
// reads the marks yet; entries that this adds change only the length of the store.
void markFailed(const Request &request)
{
    const DeviceArea *const area = findDeviceArea(request.area);
    if (!area)
        return;
    qint32 entries = 0;
    if (area->kind == WORD_ELEMENTS || area->kind == COUNTER_ELEMENTS)
        entries = request.dataLen / WORD_CHARS;
    else if (area->watch == WATCHED_AS_BITS)
        entries = request.dataLen / BYTE_CHARS;
    for (qint32 i = 0; i < entries; ++i)
        dataAreaToChange(request.station, request.area, addressPlus(request.address, i))
            .commFailed = 1;
}

void settleWrite(const Request &request, qint32 success)
{
    if (driver.sendState == SEND_WRITE)
        write_FailOrSuc(request.station, request.area, request.address, request.count, success);
}

void finishFrontFrame()
{
    if (!driver.frames.isEmpty())
        driver.frames.removeFirst();
    if (driver.frames.isEmpty())
        dealListWhenFinish();
    driver.retryCount = 0;
}

void giveUp(const Request &request)
{
    driver.commError = 1;
    settleWrite(request, 0);
    markFailed(request);
    driver.frames.clear();
    driver.retryCount = 0;
    dealListWhenFinish();
}

bool isLastOneShotRead(const VARIABLE &request)
{
    return request.station == driver.lastVar.station && request.area == driver.lastVar.area &&
           request.address == driver.lastVar.address && request.count == driver.lastVar.count;
}

void finishOneShotRead()
{
    if (driver.pendingReads.isEmpty())
        return;
    const bool failed = driver.commError != 0;
    if (isLastOneShotRead(driver.pendingReads.at(0)))
        reportToHost(-1, -1, QLatin1String("-1"), failed ? -1 : 0);
    if (failed)
        driver.pendingReads.clear();
    else if (!driver.pendingReads.isEmpty()) // a callback that configures the driver empties it
        driver.pendingReads.removeFirst();
}

// Copies the block once; QList::takeFirst would copy it twice.
void turnCyclicBlocks()
{
    const QList<VARIABLE> &blocks = driver.cyclicReads;
    if (blocks.size() < 2)
        return;
    driver.cyclicReads.append(blocks.at(0));
    driver.cyclicReads.removeFirst();
}

// Advances the transfer; at its end resets the cursor and clears the host's request.
void finishRecipeEntry(int requestByte)
{
    if (driver.commError == 0) {
        ++driver.recipeCursor;
        if (driver.recipeCursor < driver.recipeVars.size())
            return;
    }
    driver.recipeCursor = 0;
    if (!driver.hostStatus || !driver.hostMutex)
        return;
    driver.hostMutex->lock();
    driver.hostStatus[requestByte] = 0;
    driver.hostMutex->unlock();
}

// Writes `number` in decimal digits and returns where they end.
QChar *putNumber(QChar *out, qint64 number)
{
    if (number < 0)
        *out++ = QLatin1Char('-');
    QChar *const first = out;
    quint64 rest = static_cast<quint64>(qAbs(number));
    do {
        *out++ = QLatin1Char(static_cast<char>('0' + rest % 10));
        rest /= 10;
    } while (rest > 0);
    std::reverse(first, out);
    return out;
}

// Every reply gets an error text, so it is built in the memory that `text` already has.
void describeRequest(QString &text, qint64 replyLength)
{
    const VARIABLE &var = driver.frames.at(0).var;
    const int areaLength = static_cast<int>(var.area.size());
    text.reserve(areaLength + ERROR_INFO_NUMBERS_MOST);
    text.resize(areaLength + ERROR_INFO_NUMBERS_MOST);
    QChar *const begin = text.data();
    QChar *out = putNumber(begin, var.station);
    *out++ = QLatin1Char('#');
    out = std::copy(var.area.constData(), var.area.constData() + areaLength, out);
    out = putNumber(out, static_cast<quint32>(var.address));
    *out++ = QLatin1Char('(');
    out = putNumber(out, var.count);
    *out++ = QLatin1Char(')');
    *out++ = QLatin1Char('(');
    out = putNumber(out, replyLength);
    *out++ = QLatin1Char(')');
    text.truncate(static_cast<int>(out - begin));
}

// A counter write counts words, two for each counter, and settles as many records. The counters
// after the written ones take their own last written value, or 0, as the value read, and the change
// is reported to the host. Their real value comes with the next read.
void settleElement(qint32 station, const QString &area, qint32 address, size_t bytes,
                   qint32 success)
{
    _DATA_ &entry = dataAreaToChange(station, area, address);
    entry.writePending = 0;
    if (success == 1)
        memcpy(entry.readValue, entry.writtenValue, bytes);
    _OnlyOneDataTypeDataChange(station, area, address, 0, 0, 0);
}

// The first bit settled releases its whole block of 16, and `success` is passed as `wholeBlock`: an
// acknowledged bit address is treated as a block number whose values are equal, so that nothing is
// reported. Hosts get the value from the next read. The call leaves an entry of that block number
// in the store.
void settleBit(qint32 station, const QString &area, qint32 bit, qint32 success)
{
    _DATA_ &entry = dataAreaToChange(station, area, bit / BLOCK_BITS);
    entry.writePending = 0;
    if (success == 1)
        entry.readValue[byteOfBit(bit)] = entry.writtenValue[byteOfBit(bit)];
    _OnlyOneDataTypeDataChange(station, area, bit, 0, 0, success);
}

} // namespace

qint32 check_rcv_data(const quint8 *text, qint32 length)
{
    if (!text || length <= 4)
        return REPLY_BAD;
    if ((text[3] == '1' && text[4] == '0') || (text[3] == '0' && text[4] == '5'))
        return REPLY_WRITE_ACKNOWLEDGED;
    // An exception sets the top bit of the function code.
    return text[3] > '7' ? REPLY_BAD : REPLY_DATA;
}

QString getErrorInfo(QByteArray reply)
{
    QString text;
    describeRequest(text, reply.size());
    return text;
}

void write_FailOrSuc(qint32 station, QString area, qint32 address, qint32 count, qint32 success)
{
    const DeviceArea *const row = findDeviceArea(area);
    if (row && row->watch == WATCHED_AS_BITS) {
        const qint32 first = linearAddress(*row, address);
        for (qint32 i = 0; i < count; ++i)
            settleBit(station, area, addressPlus(first, i), success);
    } else {
        const size_t bytes = elementKind(row) == COUNTER_ELEMENTS ? 4 : 2;
        for (qint32 i = 0; i < count; ++i)
            settleElement(station, area, addressPlus(address, i), bytes, success);
    }
}

void dealListWhenFinish()
{
    switch (driver.sendState) {
    case SEND_WRITE:
        if (!driver.pendingWrites.isEmpty())
            driver.pendingWrites.removeFirst();
        break;
    case SEND_ONE_SHOT_READ:
        finishOneShotRead();
        break;
    case SEND_CYCLIC_READ:
        turnCyclicBlocks();
        break;
    case SEND_RECIPE_DOWNLOAD:
        finishRecipeEntry(STATUS_RECIPE_DOWNLOAD);
        break;
    case SEND_RECIPE_UPLOAD:
        finishRecipeEntry(STATUS_RECIPE_UPLOAD);
        break;
    default:
        break;
    }
}

qint32 intf_dealRcvFrame(QByteArray &reply, QString &errorInfo) noexcept
{
    if (driver.frames.isEmpty()) {
        errorInfo = QLatin1String("");
        return REPLY_UNEXPECTED;
    }
    describeRequest(errorInfo, reply.size());
    const Request request = requestInFlight();
    const quint8 *const text = reinterpret_cast<const quint8 *>(reply.constData());
    switch (check_rcv_data(text, static_cast<qint32>(reply.size()))) {
    case REPLY_DATA:
        driver.commError = 0;
        decodeReply(request, reply);
        finishFrontFrame();
        return REPLY_ACCEPTED;
    case REPLY_WRITE_ACKNOWLEDGED:
        settleWrite(request, 1);
        driver.commError = 0;
        finishFrontFrame();
        return REPLY_ACCEPTED;
    default:
        ++driver.retryCount;
        if (driver.retryCount < driver.retryLimit)
            return REPLY_SEND_AGAIN;
        giveUp(request);
        return REPLY_GIVEN_UP;
    }
}

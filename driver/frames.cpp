#include "frames.h"

#include "address.h"

namespace {

const int REPLY_DATA_POS = 7;           // after ':', station, function and byte count
const int READ_REPLY_OVERHEAD = 11;     // ':', station, function, byte count, LRC, CR LF
const int WRITE_REPLY_OVERHEAD = 13;    // ':', station, function, address, LRC, CR LF
const int WORDS_MOST = VALUE_BYTES / 2; // that a request's data holds
// ':', station, function, address, quantity, byte count and every word that a request holds
const int REQUEST_TEXT_MOST = 15 + 4 * WORDS_MOST;

// -1 for a character that is not a hexadecimal digit.
int hexDigitValue(ushort code)
{
    if (code >= '0' && code <= '9')
        return code - '0';
    if (code >= 'A' && code <= 'F')
        return code - 'A' + 10;
    if (code >= 'a' && code <= 'f')
        return code - 'a' + 10;
    return -1;
}

// The value of a pair, or of a last single character, as Qt reads it in base 16; 0 if Qt refuses
// it.
// "-2" takes 2 off the sum of the LRC, and blanks are skipped.
int hexValue(const ushort *characters, int count)
{
    if (count == 2) {
        const int high = hexDigitValue(characters[0]);
        const int low = hexDigitValue(characters[1]);
        if (high >= 0 && low >= 0)
            return high * 16 + low;
    }
    const QString text(reinterpret_cast<const QChar *>(characters), count);
    return text.toInt(nullptr, 16);
}

quint8 lrcOf(const ushort *text, int length)
{
    quint32 sum = 0;
    for (int position = 1; position < length; position += 2)
        sum += static_cast<quint32>(hexValue(text + position, qMin(2, length - position)));
    return static_cast<quint8>(~sum + 1);
}

char hexDigit(int nibble)
{
    return "0123456789ABCDEF"[nibble];
}

// A request from ':' to its last data digit, built without allocating.
struct RequestText {
    ushort characters[REQUEST_TEXT_MOST];
    int length;
};

void append(RequestText &text, char character)
{
    text.characters[text.length++] = static_cast<uchar>(character);
}

void append(RequestText &text, const char *characters)
{
    for (; *characters; ++characters)
        append(text, *characters);
}

// Appends the last `width` upper-case hexadecimal digits of `value`, a negative one in two's
// complement.
void appendHex(RequestText &text, qint64 value, int width)
{
    for (int digit = width - 1; digit >= 0; --digit)
        append(text, hexDigit(static_cast<int>(value >> (4 * digit)) & 0x0F));
}

// Appends the last `width` characters of `value` in decimal digits after zeros.
void appendDecimal(RequestText &text, qint32 value, int width)
{
    qint64 rest = qAbs(qint64(value));
    bool signLeft = value < 0;
    for (int position = width - 1; position >= 0; --position) {
        char character = static_cast<char>('0' + rest % 10);
        if (rest == 0 && signLeft) {
            character = '-';
            signLeft = false;
        }
        text.characters[text.length + position] = static_cast<uchar>(character);
        rest /= 10;
    }
    text.length += width;
}

RequestText requestStart(qint32 station)
{
    RequestText text;
    text.length = 0;
    append(text, ':');
    // Decimal digits on purpose: station 12 is sent as "12", which the controller reads as 18.
    appendDecimal(text, station, 2);
    return text;
}

bool isFramedAsBits(const DeviceArea &area)
{
    return area.kind == BIT_ELEMENTS && !isTvBit(area);
}

bool isFramedAsWords(const DeviceArea &area)
{
    return area.kind == WORD_ELEMENTS || area.kind == COUNTER_ELEMENTS;
}

qint64 modbusBase(const DeviceArea &area, qint32 element)
{
    return element < area.upperFrom ? area.base : area.upperBase;
}

quint16 wordOf(const VARIABLE &var, qint32 word)
{
    if (word >= WORDS_MOST)
        return 0;
    return static_cast<quint16>(var.data[2 * word] * 256 + var.data[2 * word + 1]);
}

void appendWordValues(RequestText &text, const VARIABLE &var)
{
    for (qint32 word = 0; word < var.count && word < WORDS_MOST; ++word)
        appendHex(text, wordOf(var, word), 4);
}

// High word first. A request for several counters carries only its last and its first word, but
// quantity and byte count announce all of them, on purpose: controllers in the field expect it.
void appendCounterValues(RequestText &text, const VARIABLE &var)
{
    if (var.count > 1)
        appendHex(text, wordOf(var, var.count - 1), 4);
    if (var.count > 0)
        appendHex(text, wordOf(var, 0), 4);
}

void appendWordWrite(RequestText &text, const DeviceArea &area, const VARIABLE &var)
{
    const bool counters = area.kind == COUNTER_ELEMENTS;
    append(text, "10");
    appendHex(text, modbusBase(area, var.address) + var.address, 4);
    appendHex(text, counters ? var.count / 2 : var.count, 4);
    appendHex(text, qint64(var.count) * 2, 2);
    if (counters)
        appendCounterValues(text, var);
    else
        appendWordValues(text, var);
}

void appendBitWrite(RequestText &text, const DeviceArea &area, const VARIABLE &var)
{
    const qint32 bit = linearAddress(area, var.address);
    append(text, "05");
    appendHex(text, modbusBase(area, bit) + bit, 4);
    append(text, var.data[0] == 1 ? "FF00" : "0000");
}

// Bit reads start at a multiple of 16 and cover 16 or 32 bits. 16 bits from such a multiple on read
// 32, on purpose. The rest of a longer block, up to the bit group limit, is never polled: hosts
// keep their runs of bits short.
bool readsTwoWords(const VARIABLE &var, qint32 bit)
{
    return var.count > 1 && qint64(bit % BLOCK_BITS) + var.count > 15;
}

// See getFrame; `text` has UTF-16 codes.
void finishFrame(FRAME_PRO &frame, const ushort *text, int length)
{
    if (length == 0)
        return;
    if (length > FRAME_TEXT_MOST) {
        frame.frameLen = 0;
        return;
    }
    const quint8 lrc = lrcOf(text, length);
    for (int i = 0; i < length; ++i)
        frame.frame[i] = static_cast<char>(text[i] & 0xFF);
    frame.frame[length] = hexDigit(lrc >> 4);
    frame.frame[length + 1] = hexDigit(lrc & 0x0F);
    frame.frame[length + 2] = '\r';
    frame.frame[length + 3] = '\n';
    frame.frameLen = length + 4;
}

void appendFrame(const RequestText &text, qint32 replyLen, qint32 replyDataLen, const VARIABLE &var)
{
    // Only the characters that the previous frame left are cleared.
    FRAME_PRO &frame = driver.nextFrame;
    memset(frame.frame, 0, static_cast<size_t>(frame.frameLen));
    finishFrame(frame, text.characters, text.length);
    frame.var = var;
    frame.replyLen = replyLen;
    frame.replyDataPos = REPLY_DATA_POS;
    frame.replyDataLen = replyDataLen;
    driver.frames.append(frame);
}

} // namespace

void getFrame(FRAME_PRO &frame, QString text)
{
    finishFrame(frame, text.utf16(), static_cast<int>(text.size()));
}

void sToS(QString &text)
{
    const QByteArray latin1 = text.toLatin1();
    QByteArray upper(latin1.size() + 1, '\0');
    uppers(upper.data(), latin1.constData());
    text = QString::fromLatin1(upper.constData());
}

void uppers(char *dst, const char *src)
{
    for (; *src; ++src, ++dst)
        *dst = static_cast<char>(*src >= 'a' && *src <= 'z' ? *src - 'a' + 'A' : *src);
    *dst = '\0';
}

void getReadFrame(VARIABLE &var)
{
    RequestText text = requestStart(var.station);
    qint32 replyDataLen = 0;
    const DeviceArea *const area = findDeviceArea(var.area);
    if (area && isFramedAsWords(*area)) {
        const bool counters = area->kind == COUNTER_ELEMENTS;
        if (counters && var.count > 1)
            var.count /= 2;
        append(text, "03");
        appendHex(text, modbusBase(*area, var.address) + var.address, 4);
        // In decimal digits; blocks of at most 8 words read the same either way.
        appendDecimal(text, var.count, 4);
        replyDataLen = wrapped(qint64(var.count) * (counters ? 8 : 4));
    } else if (area && isFramedAsBits(*area)) {
        const qint32 bit = linearAddress(*area, var.address);
        const bool twoWords = readsTwoWords(var, bit);
        append(text, "02");
        appendHex(text, modbusBase(*area, bit) + bit / BLOCK_BITS * BLOCK_BITS, 4);
        append(text, twoWords ? "0020" : "0010");
        replyDataLen = twoWords ? 8 : 4;
    }
    appendFrame(text, wrapped(qint64(replyDataLen) + READ_REPLY_OVERHEAD), replyDataLen, var);
}

void getWriteFrame(const VARIABLE &var)
{
    RequestText text = requestStart(var.station);
    const DeviceArea *const area = findDeviceArea(var.area);
    if (area && isFramedAsWords(*area))
        appendWordWrite(text, *area, var);
    else if (area && isFramedAsBits(*area) && area->writable)
        appendBitWrite(text, *area, var);
    appendFrame(text, wrapped(qint64(var.count) * 4 + WRITE_REPLY_OVERHEAD), 4, var);
}

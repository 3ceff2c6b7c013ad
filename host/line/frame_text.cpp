#include "host/line/frame_text.h"

#include "host/line/answer_form.h"
#include "modbus/areas.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"

namespace kmr {

namespace {

constexpr int REQUEST_BYTES = 6; // station, function, address, quantity or value
constexpr int WRITE_HEAD_BYTES = 7;
constexpr int ANSWER_HEAD_BYTES = 3; // station, function, byte count
constexpr int REFUSAL_BYTES = 3;

const char *functionName(int function)
{
    switch (function) {
    case modbus::READ_DISCRETE_INPUTS:
        return " read discrete inputs";
    case modbus::READ_HOLDING_REGISTERS:
        return " read holding registers";
    case modbus::WRITE_SINGLE_COIL:
        return " write single coil";
    case modbus::WRITE_MULTIPLE_REGISTERS:
        return " write multiple registers";
    default:
        return " (not used on this line)";
    }
}

modbus::Table tableOf(int readFunction)
{
    return readFunction == modbus::READ_DISCRETE_INPUTS ? modbus::Table::Bits
                                                        : modbus::Table::Registers;
}

QString counted(int count, modbus::Table table)
{
    const QString unit = table == modbus::Table::Bits ? "bit" : "register";
    return QString::number(count) + ' ' + unit + (count == 1 ? "" : "s");
}

// Eight bits are in a byte, the first one lowest (Modbus Application Protocol V1.1b3, section
// 6.2). `address` is that of the first bit, or -1 if it isn't known.
QString bitsText(const QByteArray &data, int address)
{
    QStringList names;
    for (int bit = 0; bit < 8 * data.size(); ++bit) {
        if ((modbus::byteAt(data, bit / 8) >> (bit % 8) & 1) == 0)
            continue;
        const QString name =
            address < 0 ? QString() : modbus::elementAt(modbus::Table::Bits, address + bit);
        names.append(name.isEmpty() ? "bit " + QString::number(bit) : name);
    }
    return names.isEmpty() ? QString("all off") : "on: " + names.join(", ");
}

QString registersText(const QByteArray &data, int bytesEach)
{
    QStringList values;
    for (int i = 0; i + bytesEach <= data.size(); i += bytesEach)
        values.append(QString::number(modbus::valueAt(data, i, bytesEach)));
    return values.isEmpty() ? QString("no value") : values.join(' ');
}

void tellElements(int address, int count, modbus::Table table, FrameText &text)
{
    text.addressRange =
        counted(count, table) + " from " + modbus::hex(static_cast<unsigned>(address), 4);
    text.aliases = modbus::elementsAt(table, address, count);
    if (!text.aliases.isEmpty())
        text.elements = text.aliases.takeFirst();
}

void explainBitWrite(const QByteArray &message, FrameText &text)
{
    text.kind = FrameKind::RequestOrAnswer;
    tellElements(modbus::wordAt(message, 2), 1, modbus::Table::Bits, text);
    const int value = modbus::wordAt(message, 4);
    text.values = value == modbus::COIL_ON ? QString("on")
                  : value == modbus::COIL_OFF
                      ? QString("off")
                      : modbus::hex(static_cast<unsigned>(value), 4) + ", neither on nor off";
}

void explainRegisterWrite(const QByteArray &message, FrameText &text)
{
    const int address = modbus::wordAt(message, 2);
    tellElements(address, modbus::wordAt(message, 4), modbus::Table::Registers, text);
    if (message.size() == REQUEST_BYTES) {
        text.kind = FrameKind::Answer;
        return;
    }
    text.kind = FrameKind::Request;
    const QByteArray data = message.mid(WRITE_HEAD_BYTES);
    if (modbus::byteAt(message, WRITE_HEAD_BYTES - 1) != data.size())
        text.fault = QString("it announces %1 bytes of values and carries %2")
                         .arg(modbus::byteAt(message, WRITE_HEAD_BYTES - 1))
                         .arg(data.size());
    text.values = registersText(data, modbus::registerBytes(address));
}

// `request`: the message of the line before, or empty.
void explainReadAnswer(const QByteArray &message, const QByteArray &request, FrameText &text)
{
    const modbus::Table table = tableOf(modbus::byteAt(message, 1));
    const QByteArray data = message.mid(ANSWER_HEAD_BYTES);
    const bool isKnown = request.size() == REQUEST_BYTES && isAnswerTo(message, request);
    const int address = isKnown ? modbus::wordAt(request, 2) : -1;
    text.kind = FrameKind::Answer;
    if (modbus::byteAt(message, 2) != data.size())
        text.fault = QString("it announces %1 bytes of values and carries %2")
                         .arg(modbus::byteAt(message, 2))
                         .arg(data.size());
    if (isKnown)
        tellElements(address, modbus::wordAt(request, 4), table, text);
    text.values = table == modbus::Table::Bits
                      ? bitsText(data, address)
                      : registersText(data, modbus::registerBytes(address));
}

void explainMessage(const QByteArray &message, const QByteArray &request, FrameText &text)
{
    const int function = modbus::byteAt(message, 1);
    const int plain = function & ~modbus::EXCEPTION_BIT;
    text.function = modbus::hex(static_cast<unsigned>(plain), 2) + functionName(plain);
    if (function != plain && message.size() == REFUSAL_BYTES) {
        text.kind = FrameKind::Refusal;
        text.exception = modbus::exceptionText(modbus::byteAt(message, 2));
    } else if (modbus::isRead(function) && message.size() == REQUEST_BYTES &&
               (message == request || !isAnswerTo(message, request))) {
        // An answer of three bytes has the same length. Only other hosts ask for three bytes.
        text.kind = FrameKind::Request;
        tellElements(modbus::wordAt(message, 2), modbus::wordAt(message, 4), tableOf(function),
                     text);
    } else if (modbus::isRead(function) && message.size() > ANSWER_HEAD_BYTES) {
        explainReadAnswer(message, request, text);
    } else if (function == modbus::WRITE_SINGLE_COIL && message.size() == REQUEST_BYTES) {
        explainBitWrite(message, text);
    } else if (function == modbus::WRITE_MULTIPLE_REGISTERS && message.size() >= REQUEST_BYTES) {
        explainRegisterWrite(message, text);
    } else if (functionName(plain)[1] == '(') {
        text.fault = "a function that is not used on this line";
    } else {
        text.fault = QString("%1 bytes do not fit a frame of this function").arg(message.size());
    }
}

QString lrcText(int found, int right)
{
    return found == right ? modbus::hex(static_cast<unsigned>(found), 2) + " right"
                          : QString("%1 wrong, %2 would be right")
                                .arg(modbus::hex(static_cast<unsigned>(found), 2),
                                     modbus::hex(static_cast<unsigned>(right), 2));
}

} // namespace

FrameText explainLine(const QByteArray &line, const QByteArray &request)
{
    FrameText text;
    const modbus::DecodedLine decoded = modbus::decodeLine(line);
    if (decoded.fault != modbus::LineFault::None && decoded.fault != modbus::LineFault::WrongLrc) {
        text.fault = modbus::toText(decoded.fault);
        return text;
    }
    QByteArray message = QByteArray::fromHex(line.mid(1, line.size() - 3));
    const int lrc = modbus::byteAt(message, static_cast<int>(message.size()) - 1);
    message.chop(1);
    text.station = QString::fromLatin1(modbus::stationOf(line));
    text.lrc = lrcText(lrc, modbus::lrc(message));
    explainMessage(message, modbus::decodeLine(request).message, text);
    if (decoded.fault != modbus::LineFault::None)
        text.fault = "LRC " + text.lrc;
    text.isGood = text.fault.isEmpty();
    return text;
}

QString toText(const FrameText &frame)
{
    const QString station =
        frame.station == "00" ? QString("all stations") : "station " + frame.station;
    const QString subject = frame.elements.isEmpty() ? frame.addressRange : frame.elements;
    QString text;
    switch (frame.kind) {
    case FrameKind::Request:
        text = frame.values.isEmpty() ? station + ": read " + subject
                                      : station + ": write " + subject + ": " + frame.values;
        break;
    case FrameKind::Answer:
        text = frame.values.isEmpty()
                   ? station + " has written " + subject
                   : station + " answers " +
                         (subject.isEmpty() ? frame.values : subject + ": " + frame.values);
        break;
    case FrameKind::RequestOrAnswer:
        text = station + ": write " + subject + ": " + frame.values;
        break;
    case FrameKind::Refusal:
        text = station + " refuses: " + frame.exception;
        break;
    case FrameKind::Unreadable:
        return frame.fault;
    }
    return frame.isGood ? text : text + " [" + frame.fault + ']';
}

QByteArray lineFromText(const QString &text)
{
    QString line = text.trimmed();
    line.replace("\\r", "\r").replace("\\n", "\n");
    return line.trimmed().toLatin1() + "\r\n";
}

QString visible(const QByteArray &characters)
{
    QString text;
    for (const char character : characters) {
        const int code = static_cast<unsigned char>(character);
        if (character == '\r')
            text += "\\r";
        else if (character == '\n')
            text += "\\n";
        else if (code < 0x20 || code > 0x7E)
            text += "\\x" + modbus::hex(static_cast<unsigned>(code), 2);
        else
            text += QLatin1Char(character);
    }
    return text;
}

} // namespace kmr

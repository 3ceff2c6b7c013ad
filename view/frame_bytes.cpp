#include "view/frame_bytes.h"

#include "host/line/frame_text.h"
#include "modbus/areas.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"

#include <QCoreApplication>

namespace kmr {

namespace {

struct Frames {
    Q_DECLARE_TR_FUNCTIONS(Frames)
};

QString functionName(int function)
{
    switch (function) {
    case modbus::READ_DISCRETE_INPUTS:
        return Frames::tr("read bits");
    case modbus::READ_HOLDING_REGISTERS:
        return Frames::tr("read registers");
    case modbus::WRITE_SINGLE_COIL:
        return Frames::tr("write one bit");
    case modbus::WRITE_MULTIPLE_REGISTERS:
        return Frames::tr("write registers");
    default:
        return Frames::tr("unknown on this line");
    }
}

modbus::Table tableOf(int function)
{
    const bool isBits =
        function == modbus::READ_DISCRETE_INPUTS || function == modbus::WRITE_SINGLE_COIL;
    return isBits ? modbus::Table::Bits : modbus::Table::Registers;
}

// Takes a message apart from its beginning on.
class Parts {
public:
    Parts(const QByteArray &message, const QByteArray &request)
        : m_message(message), m_request(request)
    {
    }

    std::vector<FramePart> take()
    {
        head();
        const bool isAnswer = !m_request.isEmpty();
        if ((m_function & modbus::EXCEPTION_BIT) != 0)
            exception();
        else if (isAnswer && modbus::isRead(m_function))
            readData();
        else
            places(isAnswer);
        if (left() > 0)
            add(left(), Frames::tr("too much"), Frames::tr("nothing is expected here"), true);
        return m_parts;
    }

private:
    qsizetype left() const
    {
        return m_message.size() - m_at;
    }

    // Whether so many bytes were there.
    bool add(qsizetype bytes, const QString &name, const QString &meaning, bool isBad = false)
    {
        if (left() < bytes || bytes == 0)
            return false;
        const QByteArray part = m_message.mid(static_cast<int>(m_at), static_cast<int>(bytes));
        m_parts.push_back({QString::fromLatin1(part.toHex().toUpper()), name, meaning, isBad});
        m_at += bytes;
        return true;
    }

    int byte() const
    {
        return left() > 0 ? modbus::byteAt(m_message, static_cast<int>(m_at)) : 0;
    }
    int word() const
    {
        return left() > 1 ? modbus::wordAt(m_message, static_cast<int>(m_at)) : 0;
    }

    void head()
    {
        const QString characters = modbus::hex(static_cast<unsigned>(byte()), 2);
        add(1, Frames::tr("station"),
            characters == "00" ? Frames::tr("all stations")
                               : Frames::tr("station %1").arg(characters));
        m_function = byte();
        const bool isRefused = (m_function & modbus::EXCEPTION_BIT) != 0;
        add(1, Frames::tr("function"),
            isRefused ? Frames::tr("\"%1\" is refused")
                            .arg(functionName(m_function & ~modbus::EXCEPTION_BIT))
                      : functionName(m_function));
    }

    void exception()
    {
        add(1, Frames::tr("exception"), modbus::exceptionName(byte()));
    }

    // Address, then quantity or value; of a write of registers also these.
    void places(bool isAnswer)
    {
        m_address = word();
        const QString element = modbus::elementAt(tableOf(m_function), m_address);
        add(2, Frames::tr("address"),
            element.isEmpty() ? Frames::tr("no area lies there") : element);
        if (m_function == modbus::WRITE_SINGLE_COIL) {
            add(2, Frames::tr("value"),
                word() == modbus::COIL_ON    ? Frames::tr("on")
                : word() == modbus::COIL_OFF ? Frames::tr("off")
                                             : Frames::tr("neither on nor off"),
                word() != modbus::COIL_ON && word() != modbus::COIL_OFF);
            return;
        }
        add(2, Frames::tr("quantity"), QString::number(word()));
        if (m_function == modbus::WRITE_MULTIPLE_REGISTERS && !isAnswer)
            data();
    }

    void readData()
    {
        m_address = m_request.size() >= 4 ? modbus::wordAt(m_request, 2) : 0;
        if (m_function == modbus::READ_HOLDING_REGISTERS) {
            data();
            return;
        }
        count();
        for (int bit = 0; left() > 0; bit += 8)
            add(1, Frames::tr("bits"), bitsText(byte(), m_address + bit));
    }

    void count()
    {
        const bool isRight = byte() == left() - 1;
        add(1, Frames::tr("bytes of data"),
            isRight ? QString::number(byte())
                    : Frames::tr("%1, but %2 follow").arg(byte()).arg(left() - 1),
            !isRight);
    }

    void data()
    {
        count();
        for (int address = m_address; left() > 0; ++address) {
            const int bytes =
                static_cast<int>(std::min<qsizetype>(left(), modbus::registerBytes(address)));
            const auto value = modbus::valueAt(m_message, static_cast<int>(m_at), bytes);
            add(bytes, modbus::elementAt(modbus::Table::Registers, address),
                QString::number(value));
        }
    }

    // The first one is the lowest bit.
    static QString bitsText(int byte, int address)
    {
        QStringList on;
        for (int bit = 0; bit < 8; ++bit) {
            if ((byte >> bit & 1) != 0)
                on.append(modbus::elementAt(modbus::Table::Bits, address + bit));
        }
        const QString first = modbus::elementAt(modbus::Table::Bits, address);
        return on.isEmpty() ? Frames::tr("from %1 on: all off").arg(first)
                            : Frames::tr("from %1 on: %2 on").arg(first, on.join(", "));
    }

    const QByteArray m_message;
    const QByteArray m_request; // its message
    qsizetype m_at = 0;
    int m_function = 0;
    int m_address = 0;
    std::vector<FramePart> m_parts;
};

FramePart lrcPart(const QByteArray &message, int found)
{
    int sum = 0;
    QStringList terms;
    for (const char byte : message) {
        sum += static_cast<std::uint8_t>(byte);
        terms.append(modbus::hex(static_cast<std::uint8_t>(byte), 2));
    }
    const int right = modbus::lrc(message);
    const QString working = Frames::tr("%1 = %2; 100 − %3 = %4")
                                .arg(terms.join('+'), modbus::hex(static_cast<unsigned>(sum), 2),
                                     modbus::hex(static_cast<unsigned>(sum & 0xFF), 2),
                                     modbus::hex(static_cast<unsigned>(right), 2));
    return {modbus::hex(static_cast<unsigned>(found), 2), Frames::tr("LRC"),
            (found == right ? Frames::tr("right: ") : Frames::tr("wrong: ")) + working,
            found != right};
}

} // namespace

std::vector<FramePart> explainBytes(const QByteArray &line, const QByteArray &request)
{
    const modbus::LineFault fault = modbus::decodeLine(line).fault;
    if (fault != modbus::LineFault::None && fault != modbus::LineFault::WrongLrc)
        return {{visible(line), Frames::tr("no frame"), modbus::toText(fault), true}};
    QByteArray message = QByteArray::fromHex(line.mid(1, line.size() - 3));
    const int lrc = modbus::byteAt(message, static_cast<int>(message.size()) - 1);
    message.chop(1);
    std::vector<FramePart> parts = {{":", Frames::tr("start"), {}, false}};
    for (FramePart &part : Parts(message, modbus::decodeLine(request).message).take())
        parts.push_back(std::move(part));
    parts.push_back(lrcPart(message, lrc));
    parts.push_back({"\\r\\n", Frames::tr("end"), {}, false});
    return parts;
}

} // namespace kmr

#include "host/line/other_protocol.h"

#include "host/error.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"

#include <QDeadlineTimer>

#include <algorithm>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds STOP_CHECK(50);

// Transaction 1, protocol 0, and the high-order byte of the length, which is small.
const QByteArray TCP_HEAD = QByteArray::fromHex("0001000000");

// The CRC of Modbus RTU, low-order byte first (Modbus over Serial Line V1.02, section 6.2.2).
QByteArray crc(const QByteArray &message)
{
    unsigned value = 0xFFFF;
    for (const char byte : message) {
        value ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1U) != 0 ? value >> 1U ^ 0xA001U : value >> 1U;
    }
    QByteArray bytes;
    bytes.append(static_cast<char>(value & 0xFFU)).append(static_cast<char>(value >> 8U));
    return bytes;
}

QByteArray framed(OtherProtocol protocol, const QByteArray &message)
{
    if (protocol == OtherProtocol::ModbusRtu)
        return message + crc(message);
    return TCP_HEAD + static_cast<char>(message.size()) + message;
}

// True if the peer sends the answer.
bool answers(QIODevice &peer, OtherProtocol protocol, int station,
             std::chrono::milliseconds timeout, const std::atomic<bool> &stop)
{
    peer.write(registerRequest(protocol, station));
    const QDeadlineTimer end(timeout);
    QByteArray received;
    while (!stop && !end.hasExpired() && !isLost(peer)) {
        peer.waitForReadyRead(static_cast<int>(std::min(timeout, STOP_CHECK).count()));
        received += peer.readAll();
        if (isRegisterAnswer(protocol, station, received))
            return true;
    }
    return false;
}

} // namespace

QByteArray registerRequest(OtherProtocol protocol, int station)
{
    return framed(protocol, static_cast<char>(station) + QByteArray::fromHex("0300000001"));
}

bool isRegisterAnswer(OtherProtocol protocol, int station, const QByteArray &received)
{
    const QByteArray request = registerRequest(protocol, station);
    const QByteArray answer =
        received.startsWith(request) ? received.mid(request.size()) : received;
    const int head =
        protocol == OtherProtocol::ModbusTcp ? static_cast<int>(TCP_HEAD.size()) + 1 : 0;
    if (answer.size() < head + 3)
        return false;
    const bool isRefusal = modbus::byteAt(answer, head + 1) ==
                           (modbus::READ_HOLDING_REGISTERS | modbus::EXCEPTION_BIT);
    const QByteArray message = answer.mid(head, isRefusal ? 3 : 5);
    const bool isValue = message.size() == 5 && message.mid(1, 2) == QByteArray::fromHex("0302");
    // Over TCP a server may answer with its own unit.
    const bool isOfStation =
        protocol == OtherProtocol::ModbusTcp || modbus::byteAt(message, 0) == station;
    return (isRefusal || isValue) && isOfStation && answer == framed(protocol, message);
}

std::optional<OtherProtocol> findOtherProtocol(const LinkAddress &address, int station,
                                               std::chrono::milliseconds timeout,
                                               const std::atomic<bool> &stop)
{
    for (const OtherProtocol protocol : {OtherProtocol::ModbusTcp, OtherProtocol::ModbusRtu}) {
        try {
            const auto peer = openLink(address, CONNECT_LIMIT, stop);
            if (answers(*peer, protocol, station, timeout, stop))
                return protocol;
        } catch (const Error &) { // a peer that accepts no further connection can't be asked
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace kmr

#include "simulator/controller.h"

#include "modbus/protocol.h"

#include <utility>

namespace simulator {

namespace {

using modbus::Table;

constexpr int RANGE_BYTES = 4; // address and quantity, or address and value

// The result of a function: an exception, or the data of the answer.
struct Result {
    std::uint8_t exception = 0;
    QByteArray data;
};

Result refuse(std::uint8_t exception)
{
    return {exception, {}};
}

void appendValue(QByteArray &data, std::uint32_t value, int size)
{
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        data.append(static_cast<char>(value >> shift & 0xFF));
}

// The byte count, then the bytes.
QByteArray counted(const QByteArray &bytes)
{
    return static_cast<char>(bytes.size()) + bytes;
}

// True when all registers from `address` on exist and are of one size.
bool areAlike(Registers registers, int address, int quantity)
{
    const int bytes = modbus::registerBytes(address);
    for (int other = address; other < address + quantity; ++other) {
        if (other >= Memory::SIZE || modbus::registerBytes(other) != bytes)
            return false;
        if (registers == Registers::OfAreas && !modbus::hasElement(Table::Registers, other))
            return false;
    }
    return true;
}

// The functions check in the order of their state diagrams: structure and quantity first, then the
// addresses (Modbus Application Protocol V1.1b3, sections 6.2, 6.3, 6.5 and 6.12). `data` is what
// follows the function code.

Result readBits(const Memory &memory, const QByteArray &data)
{
    if (data.size() != RANGE_BYTES)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    const int address = modbus::wordAt(data, 0);
    const int quantity = modbus::wordAt(data, 2);
    if (quantity < 1 || quantity > modbus::MAX_READ_BITS)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    if (address + quantity > Memory::SIZE)
        return refuse(modbus::ILLEGAL_DATA_ADDRESS);
    QByteArray bytes((quantity + 7) / 8, '\0');
    for (int i = 0; i < quantity; ++i) {
        if (memory.bit(static_cast<std::uint16_t>(address + i)))
            bytes[i / 8] = static_cast<char>(bytes.at(i / 8) | 1 << i % 8);
    }
    return {0, counted(bytes)};
}

Result readRegisters(const Memory &memory, Registers registers, const QByteArray &data)
{
    if (data.size() != RANGE_BYTES)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    const std::uint16_t address = modbus::wordAt(data, 0);
    const int quantity = modbus::wordAt(data, 2);
    if (quantity < 1 || quantity > modbus::MAX_READ_REGISTERS)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    if (!areAlike(registers, address, quantity))
        return refuse(modbus::ILLEGAL_DATA_ADDRESS);
    const int size = modbus::registerBytes(address);
    QByteArray bytes;
    for (int i = 0; i < quantity; ++i)
        appendValue(bytes, memory.value(static_cast<std::uint16_t>(address + i)), size);
    return {0, counted(bytes)};
}

Result writeBit(Memory &memory, const QByteArray &data)
{
    if (data.size() != RANGE_BYTES)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    const std::uint16_t value = modbus::wordAt(data, 2);
    if (value != modbus::COIL_ON && value != modbus::COIL_OFF)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    memory.setBit(modbus::wordAt(data, 0), value == modbus::COIL_ON);
    return {0, data};
}

Result writeRegisters(Memory &memory, Registers registers, const QByteArray &data)
{
    constexpr int HEAD_BYTES = RANGE_BYTES + 1; // and the byte count
    if (data.size() < HEAD_BYTES || data.size() != HEAD_BYTES + modbus::byteAt(data, RANGE_BYTES))
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    const std::uint16_t address = modbus::wordAt(data, 0);
    const int quantity = modbus::wordAt(data, 2);
    const int size = modbus::registerBytes(address);
    if (quantity < 1 || quantity > modbus::MAX_WRITE_REGISTERS ||
        data.size() != HEAD_BYTES + quantity * size)
        return refuse(modbus::ILLEGAL_DATA_VALUE);
    if (!areAlike(registers, address, quantity))
        return refuse(modbus::ILLEGAL_DATA_ADDRESS);
    for (int i = 0; i < quantity; ++i) {
        memory.setValue(static_cast<std::uint16_t>(address + i),
                        modbus::valueAt(data, HEAD_BYTES + i * size, size));
    }
    return {0, data.left(RANGE_BYTES)};
}

Result execute(Memory &memory, Registers registers, std::uint8_t function, const QByteArray &data)
{
    switch (function) {
    case modbus::READ_DISCRETE_INPUTS:
        return readBits(memory, data);
    case modbus::READ_HOLDING_REGISTERS:
        return readRegisters(memory, registers, data);
    case modbus::WRITE_SINGLE_COIL:
        return writeBit(memory, data);
    case modbus::WRITE_MULTIPLE_REGISTERS:
        return writeRegisters(memory, registers, data);
    default:
        return refuse(modbus::ILLEGAL_FUNCTION);
    }
}

QByteArray answerLine(const Exchange &exchange, const QByteArray &data)
{
    QByteArray message;
    message.append(static_cast<char>(exchange.station));
    if (exchange.exception == 0) {
        message.append(static_cast<char>(exchange.function));
        message.append(data);
    } else {
        message.append(static_cast<char>(exchange.function | modbus::EXCEPTION_BIT));
        message.append(static_cast<char>(exchange.exception));
    }
    return modbus::encodeLine(message);
}

// The content of the line, without carrying it out.
Exchange decode(const QByteArray &line, const QByteArray &message)
{
    Exchange exchange;
    exchange.line = line;
    exchange.station = modbus::byteAt(message, 0);
    exchange.function = modbus::byteAt(message, 1);
    if (message.size() >= 4)
        exchange.address = modbus::wordAt(message, 2);
    if (message.size() >= 6)
        exchange.quantity = modbus::wordAt(message, 4);
    return exchange;
}

Exchange badLine(const QByteArray &line, modbus::LineFault fault)
{
    Exchange exchange;
    exchange.line = line;
    exchange.fault = fault;
    return exchange;
}

Exchange serve(Memory &memory, Registers registers, std::uint8_t station, const QByteArray &line)
{
    const modbus::DecodedLine decoded = modbus::decodeLine(line);
    if (decoded.fault != modbus::LineFault::None)
        return badLine(line, decoded.fault);
    Exchange exchange = decode(line, decoded.message);
    if (exchange.station != station && exchange.station != modbus::BROADCAST) {
        exchange.outcome = Outcome::OtherStation;
        return exchange;
    }
    const Result result = execute(memory, registers, exchange.function, decoded.message.mid(2));
    exchange.outcome = result.exception == 0 ? Outcome::Executed : Outcome::Refused;
    exchange.exception = result.exception;
    if (exchange.station != modbus::BROADCAST)
        exchange.answer = answerLine(exchange, result.data);
    return exchange;
}

} // namespace

bool isStation(const QByteArray &characters)
{
    bool ok = false;
    const int station = characters.toInt(&ok, 16);
    // Formatting the number again excludes lower case, signs and blanks.
    return ok && station > modbus::BROADCAST && station <= modbus::MAX_STATION &&
           characters == modbus::hex(static_cast<unsigned>(station), 2).toLatin1();
}

Exchange understand(const QByteArray &line)
{
    const modbus::DecodedLine decoded = modbus::decodeLine(line);
    return decoded.fault == modbus::LineFault::None ? decode(line, decoded.message)
                                                    : badLine(line, decoded.fault);
}

Controller::Controller(const QByteArray &station, Registers registers)
    : m_station(static_cast<std::uint8_t>(station.toInt(nullptr, 16))), m_registers(registers)
{
}

QByteArray Controller::answer(const QByteArray &line)
{
    const Exchange exchange = carryOut(line);
    report(exchange);
    return exchange.answer;
}

Exchange Controller::carryOut(const QByteArray &line)
{
    return serve(m_memory, m_registers, m_station, line);
}

void Controller::report(const Exchange &exchange) const
{
    if (m_observer)
        m_observer(exchange);
}

bool Controller::isAddressedBy(const QByteArray &line) const
{
    const modbus::DecodedLine decoded = modbus::decodeLine(line);
    return decoded.fault == modbus::LineFault::None &&
           modbus::byteAt(decoded.message, 0) == m_station;
}

void Controller::setObserver(Observer observer)
{
    m_observer = std::move(observer);
}

} // namespace simulator

// The same read of 8 words with Qt SerialBus, in Modbus ASCII: request and reply are its public
// classes. Its ASCII framing is private, so they are framed here in the same way: a byte array,
// LRC, hexadecimal digits.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <QDataStream>
#include <QModbusRequest>
#include <QModbusResponse>

namespace {

const quint8 STATION = 1;

char lrcOf(const QByteArray &message)
{
    int sum = 0;
    for (char byte : message)
        sum += byte;
    return static_cast<char>(-sum);
}

QByteArray encodeLine(const QModbusRequest &request)
{
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream << STATION << request;
    message.append(lrcOf(message));
    return ':' + message.toHex().toUpper() + "\r\n";
}

QModbusResponse decodeLine(const QByteArray &line)
{
    if (!line.startsWith(':') || !line.endsWith("\r\n"))
        return QModbusResponse();
    const QByteArray message = QByteArray::fromHex(line.mid(1, line.size() - 3));
    if (lrcOf(message) != 0 || message.isEmpty() || message.at(0) != char(STATION))
        return QModbusResponse();
    QModbusResponse response;
    QDataStream stream(message.mid(1, message.size() - 2));
    stream >> response;
    return response;
}

QVector<quint16> valuesOf(const QModbusResponse &response)
{
    QDataStream stream(response.data());
    quint8 bytes = 0;
    stream >> bytes;
    QVector<quint16> values(bytes / 2);
    for (quint16 &value : values)
        stream >> value;
    return values;
}

void qtSerialBusRead(benchmark::State &state)
{
    const QByteArray reply = bench::received(bench::READ_8_REPLY);
    const auto request = [] {
        return QModbusRequest(QModbusRequest::ReadHoldingRegisters, quint16(0x1000), quint16(8));
    };
    bench::require(encodeLine(request()) == ":010310000008E4\r\n", "the request");
    const QModbusResponse response = decodeLine(reply);
    bench::require(response.functionCode() == QModbusRequest::ReadHoldingRegisters, "the function");
    const QVector<quint16> values = valuesOf(response);
    bench::require(std::vector<int>(values.begin(), values.end()) == bench::READ_8_VALUES,
                   "values");
    for (auto _ : state) {
        benchmark::DoNotOptimize(encodeLine(request()).constData());
        benchmark::DoNotOptimize(valuesOf(decodeLine(reply)).constData());
    }
}
BENCHMARK(qtSerialBusRead)->Name("peer/qt_serialbus_ascii");

} // namespace

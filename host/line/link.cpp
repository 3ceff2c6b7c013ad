#include "host/line/link.h"

#include "host/error.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds STOP_CHECK(50);
constexpr qint64 READ_BUFFER_BYTES = 65536;
const char *const EXAMPLES =
    "a link is serial:///dev/ttyUSB0?baud=9600&frame=7E1 or tcp://host:port";

void parseFrame(const QString &text, LinkAddress &address, QStringList &faults)
{
    const QString upper = text.toUpper();
    if (upper.size() != 3 || !QString("78").contains(upper[0]) ||
        !QString("NEO").contains(upper[1]) || !QString("12").contains(upper[2])) {
        faults.append(QString("frame=%1: expected data bits (7, 8), parity (N, E, O) and stop bits "
                              "(1, 2), for example 7E1")
                          .arg(text));
        return;
    }
    address.dataBits = upper[0] == '7' ? QSerialPort::Data7 : QSerialPort::Data8;
    address.parity = upper[1] == 'E'   ? QSerialPort::EvenParity
                     : upper[1] == 'O' ? QSerialPort::OddParity
                                       : QSerialPort::NoParity;
    address.stopBits = upper[2] == '2' ? QSerialPort::TwoStop : QSerialPort::OneStop;
}

void parseSerial(const QUrl &url, LinkAddress &address, QStringList &faults)
{
    address.kind = LinkAddress::Kind::Serial;
    address.device = url.path();
    if (!url.host().isEmpty())
        faults.append(
            QString("the device needs three slashes: serial:///%1").arg(url.host() + url.path()));
    else if (address.device.isEmpty() || address.device == "/")
        faults.append("the device is missing");

    const QList<std::pair<QString, QString>> items = [&url] {
        QList<std::pair<QString, QString>> list;
        for (const auto &item : QUrlQuery(url).queryItems())
            list.append({item.first, item.second});
        return list;
    }();
    for (const auto &[name, value] : items) {
        if (name == "baud") {
            bool isNumber = false;
            address.baud = value.toInt(&isNumber);
            if (!isNumber || address.baud < 1)
                faults.append(
                    QString("baud=%1: expected bits a second, for example 9600").arg(value));
        } else if (name == "frame") {
            parseFrame(value, address, faults);
        } else {
            faults.append(QString("%1: unknown setting, expected baud or frame").arg(name));
        }
    }
}

void parseTcp(const QUrl &url, LinkAddress &address, QStringList &faults)
{
    address.kind = LinkAddress::Kind::Tcp;
    address.host = url.host();
    if (address.host.isEmpty())
        faults.append("the host is missing");
    const int port = url.port(address.port);
    if (port < 1) // QUrl refuses ports above 65535
        faults.append(QString("port %1: expected 1 to 65535").arg(port));
    address.port = static_cast<quint16>(port);
    if (!url.path().isEmpty() || url.hasQuery())
        faults.append("nothing may follow the port");
}

// "tcp://[::1]:8888"
QString tcpText(const LinkAddress &address)
{
    QUrl url;
    url.setScheme("tcp");
    url.setHost(address.host);
    url.setPort(address.port);
    return url.toString();
}

bool isConnecting(const QAbstractSocket &socket)
{
    return socket.state() != QAbstractSocket::ConnectedState &&
           socket.state() != QAbstractSocket::UnconnectedState;
}

// Lets Qt connect: waitForConnected() ends the attempt when it times out and can't be repeated.
bool connectSocket(QAbstractSocket &socket, const LinkAddress &address,
                   std::chrono::milliseconds timeout, const std::atomic<bool> &stop,
                   QIODevice::OpenMode mode = QIODevice::ReadWrite)
{
    QTimer wake;
    wake.start(std::min(timeout, STOP_CHECK));
    const QDeadlineTimer end(timeout);
    socket.connectToHost(address.host, address.port, mode);
    while (isConnecting(socket) && !stop && !end.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (socket.state() != QAbstractSocket::ConnectedState)
        return false;
    socket.setSocketOption(QAbstractSocket::LowDelayOption,
                           1); // requests are small and must not wait
    return true;
}

// Why the connection failed.
QString connectFault(const QAbstractSocket &socket, bool isStopped)
{
    if (isStopped)
        return "stopped";
    if (socket.error() == QAbstractSocket::ConnectionRefusedError)
        return socket.errorString() +
               " (nothing listens there: is the controller or gateway on, and the port right?)";
    return (isConnecting(socket) ? QString("no answer in time") : socket.errorString()) +
           " (check the address, the cable and the network)";
}

std::unique_ptr<QIODevice> openTcp(const LinkAddress &address, std::chrono::milliseconds timeout,
                                   const std::atomic<bool> &stop, QIODevice::OpenMode mode)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->setReadBufferSize(READ_BUFFER_BYTES); // otherwise a peer that floods fills the memory
    if (!connectSocket(*socket, address, timeout, stop, mode)) {
        throw Error(
            ErrorKind::Link,
            QString("cannot connect to %1: %2").arg(tcpText(address), connectFault(*socket, stop)));
    }
    return socket;
}

QString serialAdvice(const QSerialPort &port)
{
    const QFileInfo file(port.portName().startsWith('/') ? port.portName()
                                                         : "/dev/" + port.portName());
    if (!file.exists())
        return "there is no such device: is the adapter plugged in?";
    if (!file.isReadable() || !file.isWritable())
        return "not permitted: add your user to the group that owns the device, often dialout";
    if (port.error() == QSerialPort::PermissionError)
        return "busy: another program has the port open";
    return "is it a serial port that takes these settings?";
}

bool openPort(QSerialPort &port, const LinkAddress &address,
              QIODevice::OpenMode mode = QIODevice::ReadWrite)
{
    // Before opening: an open pseudo-terminal refuses 7 data bits.
    port.setBaudRate(address.baud);
    port.setDataBits(address.dataBits);
    port.setParity(address.parity);
    port.setStopBits(address.stopBits);
    port.setFlowControl(QSerialPort::NoFlowControl);
    return port.open(mode);
}

std::unique_ptr<QIODevice> openSerial(const LinkAddress &address, QIODevice::OpenMode mode)
{
    auto port = std::make_unique<QSerialPort>(address.device);
    if (!openPort(*port, address, mode)) {
        throw Error(ErrorKind::Link,
                    QString("cannot open %1: %2 (%3)")
                        .arg(address.device, port->errorString(), serialAdvice(*port)));
    }
    return port;
}

} // namespace

LinkAddress parseLink(const QString &text)
{
    LinkAddress address;
    QStringList faults;
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() && !text.isEmpty())
        faults.append(url.errorString().section(';', 0, 0)); // the rest is Qt's own text
    else if (url.scheme() == "serial")
        parseSerial(url, address, faults);
    else if (url.scheme() == "tcp")
        parseTcp(url, address, faults);
    else
        faults.append("it must begin with serial:// or tcp://");
    if (!faults.isEmpty()) {
        throw Error(
            ErrorKind::Usage,
            QString("bad link \"%1\": %2\n(%3)").arg(text, faults.join("; "), QString(EXAMPLES)));
    }
    return address;
}

std::unique_ptr<QIODevice> openLink(const LinkAddress &address, std::chrono::milliseconds timeout,
                                    const std::atomic<bool> &stop, QIODevice::OpenMode mode)
{
    return address.kind == LinkAddress::Kind::Tcp ? openTcp(address, timeout, stop, mode)
                                                  : openSerial(address, mode);
}

bool reconnect(QIODevice &device, const LinkAddress &address, const QString &nameById,
               std::chrono::milliseconds timeout, const std::atomic<bool> &stop)
{
    if (auto *const socket = qobject_cast<QAbstractSocket *>(&device)) {
        socket->abort();
        return connectSocket(*socket, address, timeout, stop);
    }
    auto *const port = qobject_cast<QSerialPort *>(&device);
    if (port == nullptr)
        return false;
    port->close();
    const bool isElsewhere = !nameById.isEmpty() && !QFile::exists(address.device);
    port->setPortName(isElsewhere ? nameById : address.device);
    return openPort(*port, address);
}

QString nameById(const QString &device, const QString &folder)
{
    const QString wanted = QFileInfo(device).canonicalFilePath();
    for (const QFileInfo &link : QDir(folder).entryInfoList(QDir::System | QDir::Files)) {
        if (!wanted.isEmpty() && link.canonicalFilePath() == wanted)
            return link.absoluteFilePath();
    }
    return {};
}

std::chrono::nanoseconds characterTime(const LinkAddress &address)
{
    if (address.kind == LinkAddress::Kind::Tcp)
        return std::chrono::nanoseconds(0);
    const int bits = 1 + static_cast<int>(address.dataBits) +
                     (address.parity == QSerialPort::NoParity ? 0 : 1) +
                     static_cast<int>(address.stopBits);
    return std::chrono::nanoseconds(std::chrono::seconds(bits)) / address.baud;
}

std::chrono::milliseconds quietBeforeUse(std::chrono::nanoseconds characterTime)
{
    using std::chrono::milliseconds;
    const bool isSerial = characterTime > std::chrono::nanoseconds::zero();
    return isSerial ? std::chrono::ceil<milliseconds>(64 * characterTime) + milliseconds(100)
                    : milliseconds(0);
}

bool isLost(const QIODevice &device)
{
    if (!device.isOpen())
        return true;
    if (const auto *socket = qobject_cast<const QAbstractSocket *>(&device))
        return socket->state() != QAbstractSocket::ConnectedState;
    if (const auto *port = qobject_cast<const QSerialPort *>(&device))
        return port->error() != QSerialPort::NoError && port->error() != QSerialPort::TimeoutError;
    return false;
}

} // namespace kmr

// The link to a controller: a serial port or a TCP connection, as a QIODevice.
#pragma once

#include <QIODevice>
#include <QSerialPort>
#include <QString>

#include <atomic>
#include <chrono>
#include <memory>

namespace kmr {

// A link as typed: "serial:///dev/ttyUSB0?baud=9600&frame=7E1" or "tcp://host:port".
struct LinkAddress {
    enum class Kind { Serial, Tcp };

    Kind kind = Kind::Tcp;
    QString host;                                        // TCP: name or address
    quint16 port = 8888;                                 // TCP: 1 to 65535
    QString device;                                      // serial: "/dev/ttyUSB0"
    qint32 baud = 9600;                                  // serial: bits a second
    QSerialPort::DataBits dataBits = QSerialPort::Data7; // serial: 7 or 8
    QSerialPort::Parity parity = QSerialPort::EvenParity;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
};

// Reads a typed link. Parts that are left out have the values above, the driver's own default
// settings. Throws Error (Usage) that names every bad part.
LinkAddress parseLink(const QString &text);

// The time for connecting over TCP. It does not depend on the timeout of a controller's answer: a
// lost packet is sent again after a second.
constexpr std::chrono::seconds CONNECT_LIMIT(3);

// Opens the link, for TCP within `timeout` and unless `stop` is set; TCP needs a QCoreApplication.
// With `mode` QIODevice::ReadOnly the link can't send. Throws Error (Link) with cause and remedy.
std::unique_ptr<QIODevice> openLink(const LinkAddress &address, std::chrono::milliseconds timeout,
                                    const std::atomic<bool> &stop,
                                    QIODevice::OpenMode mode = QIODevice::ReadWrite);

// Opens a lost link again, on the device that openLink() returned. Returns false if that fails,
// over TCP within `timeout` and before `stop` is set. If a serial port no longer exists, it is
// opened by `nameById`, unless that is empty.
bool reconnect(QIODevice &device, const LinkAddress &address, const QString &nameById,
               std::chrono::milliseconds timeout, const std::atomic<bool> &stop);

// The name of a serial port that stays the same when its adapter is plugged in again and gets
// another number: the link in `folder` that leads to it, or an empty text.
QString nameById(const QString &device, const QString &folder = "/dev/serial/by-id");

// The time of one character on the wire; 0 for TCP.
std::chrono::nanoseconds characterTime(const LinkAddress &address);

// True if nothing can be sent or received over an opened device any more.
bool isLost(const QIODevice &device);

} // namespace kmr

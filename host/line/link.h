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

// Reads a typed link. What it leaves out keeps the values above, which are the driver's own default
// settings. Throws Error (Usage) that names every bad part.
LinkAddress parseLink(const QString &text);

// For connecting over TCP, a limit of its own: how long a controller may take to answer says
// nothing about the network. One lost packet is sent again after a second.
constexpr std::chrono::seconds CONNECT_LIMIT(3);

// Opens the link, for TCP within `timeout` and until `stop` is set; needs a QCoreApplication then.
// Opened for reading only, it can't send. Throws Error (Link) with the cause and a remedy.
std::unique_ptr<QIODevice> openLink(const LinkAddress &address, std::chrono::milliseconds timeout,
                                    const std::atomic<bool> &stop,
                                    QIODevice::OpenMode mode = QIODevice::ReadWrite);

// Opens a lost link again, on the device that openLink() made; false if it does not come about,
// over TCP within `timeout` and before `stop` is set. A serial port that is not there any more is
// looked for under `nameById`, unless that is empty.
bool reconnect(QIODevice &device, const LinkAddress &address, const QString &nameById,
               std::chrono::milliseconds timeout, const std::atomic<bool> &stop);

// The name that a serial port keeps when its adapter is plugged in again, which may give it another
// number: the link in `folder` that leads to it, or an empty text.
QString nameById(const QString &device, const QString &folder = "/dev/serial/by-id");

// How long one character takes on the wire; 0 for TCP.
std::chrono::nanoseconds characterTime(const LinkAddress &address);

// The silence to keep before the first request. On a serial line somebody may have asked just
// before us and gone: his answer is on its way for as long as a long exchange lasts and a
// controller ponders.
std::chrono::milliseconds quietBeforeUse(std::chrono::nanoseconds characterTime);

// True when nothing can be sent or received over an opened device any more.
bool isLost(const QIODevice &device);

} // namespace kmr

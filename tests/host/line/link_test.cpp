#include "host/line/link.h"

#include "host/error.h"
#include "tests/host/line/full_server.h"

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace kmr;

namespace {

// The text of the error, or an empty one if the link is good.
std::string faultOf(const QString &text)
{
    try {
        parseLink(text);
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        return error.what();
    }
    return {};
}

const std::atomic<bool> NEVER{false};

std::unique_ptr<QIODevice> openNow(const QString &link)
{
    return openLink(parseLink(link), std::chrono::seconds(2), NEVER);
}

bool names(const std::string &text, const char *part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(Link, SerialSettingsAreReadFromTheQuery)
{
    const LinkAddress address = parseLink("serial:///dev/ttyUSB0?baud=19200&frame=8O2");
    EXPECT_EQ(address.kind, LinkAddress::Kind::Serial);
    EXPECT_EQ(address.device, "/dev/ttyUSB0");
    EXPECT_EQ(address.baud, 19200);
    EXPECT_EQ(address.dataBits, QSerialPort::Data8);
    EXPECT_EQ(address.parity, QSerialPort::OddParity);
    EXPECT_EQ(address.stopBits, QSerialPort::TwoStop);
}

TEST(Link, SerialDefaultsAreTheDriversOwn)
{
    const LinkAddress address = parseLink("serial:///dev/ttyS1");
    EXPECT_EQ(address.baud, 9600);
    EXPECT_EQ(address.dataBits, QSerialPort::Data7);
    EXPECT_EQ(address.parity, QSerialPort::EvenParity);
    EXPECT_EQ(address.stopBits, QSerialPort::OneStop);
}

TEST(Link, TcpTakesHostAndPort)
{
    const LinkAddress address = parseLink("tcp://192.168.0.10:502");
    EXPECT_EQ(address.kind, LinkAddress::Kind::Tcp);
    EXPECT_EQ(address.host, "192.168.0.10");
    EXPECT_EQ(address.port, 502);
    EXPECT_EQ(parseLink("tcp://plc").port, 8888);
}

TEST(Link, EveryBadPartIsNamed)
{
    const std::string fault = faultOf("serial:///dev/ttyS1?baud=fast&frame=9X3&parity=even");
    EXPECT_TRUE(names(fault, "baud=fast")) << fault;
    EXPECT_TRUE(names(fault, "frame=9X3")) << fault;
    EXPECT_TRUE(names(fault, "parity: unknown setting")) << fault;
}

TEST(Link, OtherMistakesAreNamed)
{
    static const char *const ROWS[][2] = {
        {"", "bad link \"\": it must begin with serial:// or tcp://"},
        {"udp://plc:1", "serial:// or tcp://"},
        {"serial://dev/ttyS1", "three slashes"},
        {"serial://", "the device is missing"},
        {"serial:///", "the device is missing"},
        {"serial:///dev/ttyS1?baud=0", "baud=0: expected bits a second"},
        {"tcp://:502", "host is missing"},
        {"tcp://plc:0", "port 0"},
        {"tcp://plc:1/x", "nothing may follow the port"},
        {"tcp://plc:1?timeout=5", "nothing may follow the port"},
        {"tcp://plc:65536", "port number out of range\n(a link is "}, // without the insides of Qt
        {"tcp://127.0.0.1:99999", "port number out of range\n(a link is "},
    };
    for (const auto &[link, fault] : ROWS)
        EXPECT_TRUE(names(faultOf(link), fault)) << link << ": " << faultOf(link);
    EXPECT_EQ(faultOf("tcp://plc:65535"), "");
}

TEST(Link, EachPartOfAFrameIsChecked)
{
    for (const char *frame : {"7E", "9E1", "7X1", "7E3", "7E12"}) {
        const std::string fault = faultOf(QString("serial:///dev/ttyS1?frame=%1").arg(frame));
        EXPECT_TRUE(names(fault, "expected data bits (7, 8)")) << frame << ' ' << fault;
    }
    EXPECT_EQ(faultOf("serial:///dev/ttyS1?frame=7n1"), "");
}

TEST(Link, CharacterTakesItsBitsOnASerialLineAndNothingOnTcp)
{
    EXPECT_EQ(characterTime(parseLink("serial:///dev/x?baud=10000&frame=7E1")).count(), 1000000);
    EXPECT_EQ(characterTime(parseLink("serial:///dev/x?baud=10000&frame=8E2")).count(), 1200000);
    EXPECT_EQ(characterTime(parseLink("serial:///dev/x?baud=10000&frame=7N1")).count(), 900000);
    EXPECT_EQ(characterTime(parseLink("tcp://plc")).count(), 0);
}

TEST(Link, LinkThatCannotBeOpenedIsNamedWithAdvice)
{
    static const char *const ROWS[][2] = {
        {"serial:///dev/no-such-port", "(there is no such device: is the adapter plugged in?)"},
        {"tcp://127.0.0.1:1", "nothing listens there"},
        {"tcp://[::1]:1", "cannot connect to tcp://[::1]:1: "},
        {"tcp://255.255.255.255:1", "check the address, the cable and the network"},
    };
    for (const auto &[link, fault] : ROWS) {
        try {
            openNow(link);
            ADD_FAILURE() << link << " opened";
        } catch (const Error &error) {
            EXPECT_EQ(error.kind(), ErrorKind::Link);
            EXPECT_TRUE(names(error.what(), fault)) << error.what();
        }
    }
}

TEST(Link, FileThatIsNoPortIsRefused)
{
    QTemporaryDir directory;
    QFile file(directory.filePath("port"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_THROW(openNow("serial://" + file.fileName()), Error);
}

TEST(Link, StopBreaksOffAnAttemptToConnect)
{
    const FullServer server;
    std::atomic<bool> stop{false};
    QTimer::singleShot(0, [&stop] { stop = true; });
    try {
        openLink(parseLink(server.link()), std::chrono::minutes(10), stop);
        FAIL() << "it opened";
    } catch (const Error &error) {
        EXPECT_TRUE(names(error.what(), ": stopped")) << error.what();
    }
}

TEST(Link, AttemptToConnectEndsAfterItsTime)
{
    const FullServer server;
    try {
        openLink(parseLink(server.link()), std::chrono::milliseconds(20), NEVER);
        FAIL() << "it opened";
    } catch (const Error &error) {
        EXPECT_TRUE(names(error.what(), ": no answer in time (check the address, "))
            << error.what();
    }
}

TEST(Link, PortThatIsOpenAlreadyIsBusy)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const QString link = QString("serial://") + ptsname(terminal);
    const auto port = openNow(link);
    try {
        openNow(link);
        ADD_FAILURE() << "it opened twice";
    } catch (const Error &error) {
        EXPECT_TRUE(names(error.what(), "busy: another program has the port open")) << error.what();
    }
    close(terminal);
}

TEST(Link, OnlyAConnectionOrAPortIsOpenedAgain)
{
    QBuffer device;
    EXPECT_FALSE(
        reconnect(device, parseLink("serial:///dev/x"), {}, std::chrono::milliseconds(1), NEVER));
}

TEST(Link, PortThatCameBackUnderAnotherNameIsOpenedByItsId)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath("ttyUSB0");
    const QString idFolder = folder.filePath("by-id");
    const QString id = idFolder + "/usb-adapter";
    QDir().mkdir(idFolder);
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const QString port = ptsname(terminal);
    ASSERT_TRUE(QFile::link(port, name) && QFile::link(port, id));
    const LinkAddress address = parseLink("serial://" + name);
    const auto device = openNow("serial://" + name);
    EXPECT_EQ(nameById(port, idFolder), id);
    EXPECT_EQ(nameById("/dev/null", idFolder), "");
    QFile::remove(name);
    EXPECT_TRUE(reconnect(*device, address, id, std::chrono::milliseconds(1), NEVER));
    close(terminal);
}

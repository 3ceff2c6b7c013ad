// kmr doctor against simulated controllers, good and bad ones.
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/pseudo_terminal.h"
#include "tests/kmr/kmr_process.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

class DoctorOnBothLinks : public testing::TestWithParam<const char *> {
protected:
    Finished examine(const QStringList &simulation, const QStringList &arguments = {})
    {
        const QStringList place = QString(GetParam()) == "tcp"
                                      ? QStringList{"--listen", "tcp://127.0.0.1:0"}
                                      : QStringList{"--pty", m_directory.filePath("line")};
        const Simulator simulator(place + simulation);
        m_link = simulator.link();
        return run(QStringList{"doctor", "--link", m_link} + arguments);
    }

    QTemporaryDir m_directory;
    QString m_link;
};

Finished examine(const FakeController &controller)
{
    return run({"doctor", "--timeout", "400", "--link", controller.link()});
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Links, DoctorOnBothLinks, testing::Values("tcp", "pty"),
                         [](const auto &info) { return std::string(info.param); });

TEST_P(DoctorOnBothLinks, FindingsHaveAnExitCodeAndAdvice)
{
    struct Row {
        const char *fault;
        const char *echo; // the setting
        int exitCode;
        const char *text; // behind the link, a pattern
    };
    const Row rows[] = {
        {"", "auto", 0, "The station answers, the line is good\\.\n$"},
        {"deaf", "auto", 4,
         "Nothing answers: no character came back\\.\nCheck that the controller is on.* 'kmr scan' "
         "asks other stations, --try other speeds and frames\\.\n$"},
        {"exception=2", "auto", 5,
         ".* are refused: illegal data address \\(exception 02\\)\\.\nName an element that this "
         "controller has\\. --tag names the element to read\\.\n$"},
        {"exception=6", "auto", 5,
         ".* are refused: server device busy \\(exception 06\\)\\.\nAsk again later\\.\n$"},
        {"echo", "auto", 0, ".* It echoes what is sent"},
        {"echo", "off", 4, ".*\nSet the echo to auto or on\\. The option is --echo\\.\n$"},
        {"station", "auto", 4, "Station \\d+ answers, but station 1 was asked\\.\n"},
        {"flip", "auto", 4, "Answers come, but damaged, such as "},
        {"noise", "auto", 1,
         "The station answers, but other characters come before its answers: .*\nCheck plugs"},
        {"silence,every=5", "auto", 1,
         "The station answers only 2 of 3 requests; the first failure: no answer\\.\n.*--timeout "
         "sets how long an answer may take\\. 'kmr ping' measures the losses\\.\n$"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.fault);
        const QStringList fault =
            *row.fault == '\0' ? QStringList() : QStringList{"--fault", row.fault};
        // Without any answers the time does not matter.
        const char *const timeout = std::string(row.fault) == "deaf" ? "20" : "500";
        const Finished doctor = examine(fault, {"--timeout", timeout, "--echo", row.echo});
        EXPECT_EQ(doctor.exitCode, row.exitCode);
        ASSERT_TRUE(doctor.out.startsWith(m_link + ": ")) << doctor.out.toStdString();
        const QString text = doctor.out.mid(m_link.size() + 2);
        EXPECT_TRUE(matches(text, (std::string("^") + row.text).c_str())) << text.toStdString();
    }
}

TEST(Doctor, GarbageEndsWithFour)
{
    const Finished doctor =
        examine(FakeController([](const QByteArray &) { return QByteArray("\xE0\x1C\xFF\x83"); }));
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(matches(doctor.out, "Speed or parity is wrong\\.\n.* On a serial link --try finds "
                                    "them\\.\n$"))
        << doctor.out.toStdString();
}

TEST(Doctor, AnswerThatTakesMorePatienceIsCalledLate)
{
    int requests = 0;
    const FakeController controller([&requests](const QByteArray &) {
        return QByteArray(++requests > 3 ? ":0103020007F3\r\n" : "");
    });
    const Finished doctor = examine(controller);
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_EQ(doctor.out,
              controller.link() +
                  ": The station answers, but late: not within 400 ms, but within 2000 ms.\nSet "
                  "the timeout to 2000 ms, or find what slows down the controller or its gateway. "
                  "The option is --timeout.\n");
    EXPECT_EQ(doctor.err, "no answer within 400 ms: waiting 2000 ms for one\n");
}

TEST(Doctor, LostLineEndsWithFour)
{
    const Finished doctor =
        examine(FakeController([](const QByteArray &) { return QByteArray(); }));
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.contains(": The other side closed the link"))
        << doctor.out.toStdString();
}

// A peer that closes the connection at what it doesn't understand, as most servers do.
TEST(Doctor, PeerThatSpeaksAnotherModbusIsNamed)
{
    const struct {
        const char *request;
        const char *answer;
        const char *finding;
    } ROWS[] = {{"000100000006010300000001", "000100000003018302", "modbus tcp"},
                {"010300000001840a", "0103020007f986", "modbus rtu"}};
    for (const auto &row : ROWS) {
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0));
        QObject::connect(&server, &QTcpServer::newConnection, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, [socket, &row] {
                if (socket->readAll() == QByteArray::fromHex(row.request))
                    socket->write(QByteArray::fromHex(row.answer));
                else
                    socket->disconnectFromHost();
            });
        });
        const Finished doctor = run({"doctor", "--timeout", "10000", "--format", "csv", "--link",
                                     QString("tcp://127.0.0.1:%1").arg(server.serverPort())});
        EXPECT_EQ(doctor.exitCode, 4);
        EXPECT_TRUE(
            doctor.out.contains(QString(",%1,The other side speaks Modbus ").arg(row.finding)))
            << doctor.out.toStdString();
        EXPECT_EQ(doctor.err, "no Modbus ASCII: trying Modbus TCP and Modbus RTU\n");
    }
}

TEST(Doctor, LinkThatDoesNotOpenIsARecordAndEndsWithThree)
{
    const Finished doctor =
        run({"doctor", "--link", "serial:///dev/no-such-port", "--format", "jsonl"});
    EXPECT_EQ(doctor.exitCode, 3);
    EXPECT_TRUE(matches(doctor.out, "^\\{\"schema\":1,\"command\":\"doctor\",\"time\":\"[^\"]+\","
                                    "\"link\":\"serial:///dev/no-such-port\",\"finding\":\"not "
                                    "opened\",\"text\":\"cannot open /dev/no-such-port: [^\"]+\","
                                    "\"advice\":null\\}\n$"))
        << doctor.out.toStdString();
}

// The controller receives only what is sent at 19200 bits a second.
TEST(Doctor, TryNamesTheFramingThatWorks)
{
    simulator::Controller controller("01");
    int terminal = -1;
    simulator::PseudoTerminal line([&](const QByteArray &request) {
        termios settings{};
        tcgetattr(terminal, &settings);
        return cfgetospeed(&settings) == B19200 ? simulator::respondAs(controller)(request)
                                                : simulator::Plan();
    });
    const QTemporaryDir directory;
    const QString path = directory.filePath("line");
    ASSERT_EQ(line.open(path), "");
    terminal = open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY);

    const Finished doctor = run({"doctor", "--try", "--timeout", "1000", "--link",
                                 "serial://" + path + "?baud=115200&frame=8O1"});
    close(terminal);
    EXPECT_EQ(doctor.exitCode, 0);
    EXPECT_EQ(doctor.out, "serial://" + path +
                              "?baud=19200&frame=7E1: The station answers, the line is good.\n");
    EXPECT_EQ(doctor.err, "serial://" + path + "?baud=9600&frame=7E1: silent\n");
}

TEST(Doctor, TryThatFindsNothingHasARecordForEachFraming)
{
    const QTemporaryDir directory;
    const Simulator simulator({"--pty", directory.filePath("line"), "--station", "2"});
    const Finished doctor =
        run({"doctor", "--try", "--timeout", "1", "--format", "csv", "--link", simulator.link()});
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.startsWith("time,link,finding,text,advice\n"));
    EXPECT_EQ(doctor.out.count(",silent,,\n"), 30) << doctor.out.toStdString();
    EXPECT_TRUE(doctor.err.contains("none of 30 usual framings is answered"));
}

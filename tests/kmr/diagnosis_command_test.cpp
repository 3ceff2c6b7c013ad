// The commands of kmr that explain and test, against a simulated controller in this process.
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/tcp_server.h"
#include "tests/kmr/kmr_process.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace {

class DiagnosisCommand : public testing::Test {
protected:
    DiagnosisCommand()
    {
        EXPECT_EQ(m_server.listen("127.0.0.1", 0), "");
    }

    Finished kmr(const QStringList &arguments)
    {
        return run(arguments +
                   QStringList{"--link", QString("tcp://127.0.0.1:%1").arg(m_server.port())});
    }

    simulator::Controller m_controller{"01"};
    simulator::TcpServer m_server{simulator::respondAs(m_controller)};
    QTemporaryDir m_directory;
};

} // namespace

TEST_F(DiagnosisCommand, TraceGoesToStderrAndTheCaptureTellsTheSame)
{
    ASSERT_TRUE(simulator::setElement(m_controller.memory(), "D", 100, 250));
    const QString capture = m_directory.filePath("field.jsonl");
    const Finished read = kmr({"read", "D100", "--trace", "--capture", capture});
    EXPECT_EQ(read.out, "D100 250\n");
    EXPECT_TRUE(matches(
        read.err,
        "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\S+ > :01031064000187\\\\r\\\\n  "
        "station 01: read D100\n\\d{4}-\\S+ < :01030200FA00\\\\r\\\\n  "
        "station 01 answers D100: 250\n"))
        << read.err.toStdString();
    const Finished trace = kmr({"trace", capture});
    EXPECT_EQ(trace.exitCode, 0);
    EXPECT_TRUE(trace.out.contains(" < :01030200FA00\\r\\n  station 01 answers D100: 250\n"));
    EXPECT_EQ(trace.out.count('\n'), read.err.count('\n'));
}

TEST_F(DiagnosisCommand, TraceOfACutCaptureShowsWhatIsWholeAndEndsWithOne)
{
    const QString capture = m_directory.filePath("field.jsonl");
    kmr({"read", "D100", "--in-step", "off", "--capture", capture});
    saveFile(capture, loadFile(capture).chopped(12));
    const Finished trace = kmr({"trace", capture});
    EXPECT_EQ(trace.exitCode, 1);
    EXPECT_TRUE(trace.out.endsWith("station 01: read D100\n")) << trace.out.toStdString();
    EXPECT_EQ(trace.err, capture + ":3: is incomplete and left out\n");
}

// The traffic of another host, as a gateway sends it.
TEST_F(DiagnosisCommand, ListenExplainsAnotherHostsTrafficAndSendsNothing)
{
    const QByteArray traffic = ":01031064000187\r\n:01030200FA00\r\n:0103";
    QTcpServer gateway;
    QByteArray sent;
    ASSERT_TRUE(gateway.listen(QHostAddress::LocalHost, 0));
    QObject::connect(&gateway, &QTcpServer::newConnection, [&] {
        QTcpSocket *socket = gateway.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead,
                         [&, socket] { sent += socket->readAll(); });
        socket->write(traffic);
    });
    const QString link = QString("tcp://127.0.0.1:%1").arg(gateway.serverPort());
    const QString capture = m_directory.filePath("field.jsonl");
    const Finished listen = run(
        {"listen", "--format", "csv", "--capture", capture, "--link", link}, [](QProcess &process) {
            QObject::connect(&process, &QProcess::readyReadStandardOutput,
                             [&process] { kill(static_cast<pid_t>(process.processId()), SIGHUP); });
        });
    EXPECT_EQ(listen.exitCode, 0);
    const QStringList lines = listen.out.split('\n');
    ASSERT_EQ(lines.size(), 5) << listen.out.toStdString();
    EXPECT_TRUE(lines[0].startsWith("time,direction,frame,kind,station,"));
    EXPECT_TRUE(lines[1].contains(",sent,:01031064000187\\r\\n,request,01,"));
    EXPECT_TRUE(lines[2].contains(",received,:01030200FA00\\r\\n,answer,01,"));
    EXPECT_TRUE(lines[3].contains(",received,:0103,unreadable,"));
    EXPECT_EQ(listen.err, "heard 1 requests, 1 answers, 0 refusals and 1 unreadable lines\n");
    EXPECT_EQ(sent, "");

    const Simulator replay({capture, "--listen", "tcp://127.0.0.1:0"}, "replay");
    EXPECT_EQ(run({"read", "D100", "--in-step", "off", "--link", replay.link()}).out, "D100 250\n");
}

TEST_F(DiagnosisCommand, ListenThatHearsNothingOrLosesTheLinkEndsWithFour)
{
    const Finished silent = kmr({"listen", "--for", "0.01"});
    EXPECT_EQ(silent.exitCode, 4);
    EXPECT_TRUE(silent.err.contains("\nnothing came: check that a host uses this line"));
    QTcpServer gateway;
    ASSERT_TRUE(gateway.listen(QHostAddress::LocalHost, 0));
    QObject::connect(&gateway, &QTcpServer::newConnection,
                     [&] { gateway.nextPendingConnection()->disconnectFromHost(); });
    const Finished lost =
        run({"listen", "--link", QString("tcp://127.0.0.1:%1").arg(gateway.serverPort())});
    EXPECT_EQ(lost.exitCode, 4);
    EXPECT_TRUE(lost.err.contains("\nthe link is lost: ")) << lost.err.toStdString();
}

TEST_F(DiagnosisCommand, CheckTakesNames)
{
    const QString names = m_directory.filePath("names.csv");
    saveFile(names, "boiler.temp,D110\n");
    const Finished check = kmr({"check", "boiler.temp", "--names", names});
    EXPECT_EQ(check.exitCode, 0) << check.err.toStdString();
    EXPECT_EQ(check.out, "boiler.temp: valid (result 0), area D, address 110, count 1\n");
}

TEST_F(DiagnosisCommand, SeriesBeyondTheEndEndsWithOne)
{
    const Finished series = kmr({"series", "D", "11990", "3", "5"});
    EXPECT_EQ(series.exitCode, 1);
    EXPECT_EQ(series.out, "D11990\nD11995\nD11999\n");
    EXPECT_TRUE(series.err.contains("result 2")) << series.err.toStdString();
}

TEST_F(DiagnosisCommand, SeriesNamesWhatIsNoAddress)
{
    const Finished octal = kmr({"series", "X", "70", "3", "5"});
    EXPECT_EQ(octal.exitCode, 1);
    EXPECT_EQ(octal.out, "X70\nX75\nX80\n"); // the driver's own
    EXPECT_EQ(octal.err, "1 of 3 are not addresses of X, the first is X80: take another start or "
                         "step\n");
    EXPECT_EQ(kmr({"series", "TV_bit", "33", "2", "15"}).exitCode, 0);
}

TEST_F(DiagnosisCommand, PingOfASilentStationEndsWithFour)
{
    const Finished ping =
        kmr({"ping", "2", "--interval", "0", "--station", "2", "--timeout", "20"});
    EXPECT_EQ(ping.exitCode, 4);
    EXPECT_EQ(ping.out, "station 2 D0: no answer\nstation 2 D0: no answer\n");
    EXPECT_EQ(ping.err, "2 requests sent, 0 answered, 100.0% lost\n"
                        "no answer within 20 ms: 'kmr doctor' finds out if answers come late\n");
}

TEST_F(DiagnosisCommand, ScanFindsTheStationThatAnswers)
{
    const Finished scan = kmr({"scan", "--stations", "1..3", "--timeout", "500"});
    EXPECT_EQ(scan.exitCode, 0);
    EXPECT_TRUE(matches(scan.out, "^station 1: answered in \\d+\\.\\d{3} ms\n$"))
        << scan.out.toStdString();
    EXPECT_EQ(scan.err, "1 of 3 stations answer\n");
    EXPECT_EQ(kmr({"scan", "--stations", "2..3", "--timeout", "20"}).exitCode, 4);
}

TEST_F(DiagnosisCommand, StoppedScanCountsTheStationsThatItAsked)
{
    const QString link = QString("tcp://127.0.0.1:%1").arg(m_server.port());
    const Finished scan =
        run({"scan", "--stations", "2..9", "--timeout", "600000", "--trace", "--link", link},
            [](QProcess &process) { // the trace shows the first request
                process.setReadChannel(QProcess::StandardError);
                while (process.peek(1).isEmpty() && process.waitForReadyRead(10000)) {
                }
                kill(static_cast<pid_t>(process.processId()), SIGINT);
            });
    EXPECT_EQ(scan.exitCode, 4);
    EXPECT_TRUE(scan.err.endsWith(
        "0 of 1 stations answer, stopped while waiting for the last one, 7 not asked\n"))
        << scan.err.toStdString();
}

TEST_F(DiagnosisCommand, PlanGoesByTheSpeedThatIsAskedElse9600)
{
    // 32 characters of 10 bits each.
    EXPECT_TRUE(kmr({"plan", "D100"}).out.contains("32 characters, 33.3 ms on the wire\n"));
    const Finished plan = kmr({"plan", "D100", "--baud", "19200"});
    EXPECT_EQ(plan.exitCode, 0) << plan.err.toStdString();
    EXPECT_TRUE(plan.out.contains("32 characters, 16.7 ms")) << plan.out.toStdString();
}

TEST_F(DiagnosisCommand, PlanShowsWhatKeepingInStepCosts)
{
    const Finished plan = kmr({"plan", "D100x40"});
    EXPECT_TRUE(plan.out.endsWith("in step: 6 of them and 0 check questions, 341.7 ms; with "
                                  "--in-step off 5 requests, 312.5 ms, so that it takes 9.3 % "
                                  "more\n"))
        << plan.out.toStdString();
    EXPECT_TRUE(kmr({"plan", "D100"}).out.contains("1 of them and 1 check questions"));
    EXPECT_TRUE(kmr({"plan", "D100x8", "M0"}).out.contains("it takes 0.0 % more"));
}

TEST_F(DiagnosisCommand, PlanIsThatOfKmrUnlessTheListIsAskedForAsTyped)
{
    EXPECT_EQ(kmr({"plan", "D4095x2", "--raw"}).exitCode, 1);
    EXPECT_EQ(kmr({"plan", "D4095x2"}).exitCode, 0);
}

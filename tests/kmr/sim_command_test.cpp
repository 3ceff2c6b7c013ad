// 'kmr sim' as its users have it.
#include "tests/kmr/kmr_process.h"

#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(Sim, SaysReadyAndEndsCleanlyOnSigterm)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    EXPECT_TRUE(matches(simulator.ready(), "^ready tcp://127\\.0\\.0\\.1:[1-9][0-9]*$"))
        << simulator.ready().toStdString();
    EXPECT_EQ(simulator.terminate(), 0);
}

TEST(Sim, LinkOfAnAddressWithColonsKeepsItsBrackets)
{
    if (!QTcpServer().listen(QHostAddress::LocalHostIPv6))
        GTEST_SKIP() << "this machine has no IPv6";
    Simulator simulator({"--listen", "tcp://[::1]:0"});
    EXPECT_TRUE(matches(simulator.ready(), "^ready tcp://\\[::1\\]:[1-9][0-9]*$"))
        << simulator.ready().toStdString();
    EXPECT_EQ(run({"read", "D100", "--link", simulator.link()}).out, "D100 0\n");
}

TEST(Sim, LogsRequestsInWords)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--log"});
    EXPECT_EQ(run({"read", "D100", "--link", simulator.link()}).exitCode, 0);
    EXPECT_EQ(simulator.terminate(), 0);
    const QString log = simulator.log();
    EXPECT_TRUE(log.contains("station 01: read 1 register from 1064, answered"))
        << log.toStdString();
}

TEST(Sim, RefusesRegistersThatNoAreaHasUnlessItIsToldNotTo)
{
    const QByteArray request = ":01032D100001BE\r\n"; // behind TV 9999
    for (const auto &[strict, answer] :
         {std::pair("on", ":0183027A\r\n"), std::pair("off", ":0103020000FA\r\n")}) {
        const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--strict", strict});
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", simulator.link().section(':', -1).toUShort());
        ASSERT_TRUE(socket.waitForConnected());
        socket.write(request);
        while (!socket.canReadLine() && socket.waitForReadyRead()) {
        }
        EXPECT_EQ(socket.readAll(), QByteArray(answer));
    }
}

TEST(Sim, RemovesItsPseudoTerminal)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("line");
    Simulator simulator({"--pty", path});
    EXPECT_EQ(simulator.ready(), "ready serial://" + path);
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_EQ(simulator.terminate(), 0);
    EXPECT_FALSE(QFileInfo(path).isSymLink());
}

TEST(Sim, GoesByItsStationsDigits)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--station", "12"});
    EXPECT_EQ(run({"read", "12#D0", "--link", simulator.link()}).out, "12#D0 0\n");
    EXPECT_EQ(run({"read", "18#D0", "--timeout", "20", "--link", simulator.link()}).exitCode, 4);
}

TEST(Sim, FaultsHitTheRequestsThatTheyAreTypedFor)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--fault", "exception=6,every=2",
                         "--fault", "echo,every=3", "--seed", "7"});
    const QStringList read = {"read",      "D0",  "--retries", "0",
                              "--in-step", "off", "--link",    simulator.link()};
    EXPECT_EQ(run(read).out, "D0 0\n");
    const Finished refused = run(read);
    EXPECT_EQ(refused.exitCode, 5);
    EXPECT_TRUE(refused.err.contains("exception 06")) << refused.err.toStdString();
    EXPECT_EQ(run(read + QStringList{"--echo", "off"}).exitCode, 4);
}

TEST(Sim, AnimatesWhatAWatcherSees)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--animate"});
    const Finished watch = run({"watch", "CV2200", "--count", "3", "--link", simulator.link()});
    EXPECT_EQ(watch.exitCode, 0);
    EXPECT_EQ(watch.out.count('\n'), 3);
}

TEST(Sim, BusyPortEndsWithThree)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    EXPECT_EQ(run({"sim", "--listen", simulator.link()}).exitCode, 3);
}

TEST(Sim, KeepsItsMemoryInAFile)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("plant.csv");
    saveFile(file, "tag,value\nM5,1\nD100,250\n");
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--load", file, "--save", file});
    EXPECT_EQ(run({"read", "M5", "D100", "--link", simulator.link()}).out, "M5 1\nD100 250\n");
    EXPECT_EQ(run({"write", "CV2200=70000", "M5=0", "--link", simulator.link()}).exitCode, 0);
    EXPECT_EQ(simulator.terminate(), 0);
    EXPECT_EQ(loadFile(file), "tag,value\nCV2200,70000\nD100,250\n");
}

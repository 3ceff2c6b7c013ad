// 'kmr sim' as its users run it.
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
    const QString path = directory.filePath("my line%41");
    Simulator simulator({"--pty", path});
    EXPECT_EQ(simulator.ready(), "ready serial://" + directory.filePath("my%20line%2541"));
    EXPECT_EQ(run({"read", "D100", "--link", simulator.link()}).out, "D100 0\n");
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

TEST(Sim, SeveralStationsAnswerOnOneLine)
{
    const Simulator simulator(
        {"--listen", "tcp://127.0.0.1:0", "--station", "1,2", "--station", "5"});
    EXPECT_EQ(run({"write", "2#D1=7", "5#D1=9", "--link", simulator.link()}).exitCode, 0);
    EXPECT_EQ(run({"read", "D1", "2#D1", "5#D1", "--link", simulator.link()}).out,
              "D1 0\n2#D1 7\n5#D1 9\n");
    EXPECT_EQ(run({"read", "3#D1", "--timeout", "20", "--link", simulator.link()}).exitCode, 4);
}

TEST(Sim, SetsWhatLinesOnStdinSayAndAnswersEach)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--station", "1,2", "--control"});
    for (const char *line : {"X0=1", "D100 = 5", "2#D100x2=-1 6", "CV2200=70000", "TV5.3=1"})
        EXPECT_EQ(simulator.answerTo(line), "ok") << line;
    EXPECT_TRUE(simulator.answerTo("D1=70000").startsWith("error: bad value \"70000\" for D1: "));
    EXPECT_TRUE(simulator.answerTo("").startsWith("error: \"\" is not an assignment: "));
    EXPECT_TRUE(
        simulator.answerTo("3#D1=1").startsWith("error: station 3 is not simulated, only 1, 2"));
    EXPECT_EQ(
        run({"read", "X0x2", "D100", "2#D100x2", "CV2200", "TV5", "--link", simulator.link()}).out,
        "X0x2 1 0\nD100 5\n2#D100x2 65535 6\nCV2200 70000\nTV5 8\n");
}

TEST(Sim, KnowsNamesInItsMemoryFileAndOnStdin)
{
    const QTemporaryDir directory;
    const QString names = directory.filePath("names.csv");
    const QString plant = directory.filePath("plant.csv");
    saveFile(names, "name,tag,unit,scale\noven,D100/int16,C,0.1\ndoor,X17\n");
    saveFile(plant, "oven,-21.5\nCV2200,7\n");
    Simulator simulator(
        {"--listen", "tcp://127.0.0.1:0", "--control", "--names", names, "--load", plant});
    EXPECT_EQ(simulator.answerTo("door=1"), "ok");
    EXPECT_EQ(run({"read", "D100/int16", "X17", "CV2200", "--link", simulator.link()}).out,
              "D100/int16 -215\nX17 1\nCV2200 7\n");
}

TEST(Sim, ClosedStdinIsTheEndOfItsLines)
{
    const QTemporaryDir directory;
    const QString ready = directory.filePath("ready");
    const Finished read = runShell(
        QString("\"$KMR\" sim --control --listen tcp://127.0.0.1:0 <&- >%1 & "
                "until [ -s %1 ]; do sleep 0.02; done; "
                "\"$KMR\" read D0 --link $(cut -d' ' -f2 %1); kill $!; wait $!; echo ended $?")
            .arg(ready));
    EXPECT_EQ(read.out, "D0 0\nended 0\n") << qPrintable(read.err);
}

TEST(Sim, GeneratesValues)
{
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--generate",
                               "D100x2=counter,period=1440min,range=5..9", "--generate",
                               "X0=random,range=1..1"});
    EXPECT_EQ(run({"read", "D100x2", "X0", "--link", simulator.link()}).out, "D100x2 5 5\nX0 1\n");
}

// The controller over real TCP connections on the loopback address.
#include "simulator/tcp_server.h"

#include "event_loop.h"

#include <QTcpSocket>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

const char *const LOOPBACK = "127.0.0.1";

class TcpLink : public testing::Test {
protected:
    TcpLink()
    {
        EXPECT_EQ(server.listen(LOOPBACK, 0), QString());
    }

    // A client that is connected to the server.
    std::unique_ptr<QTcpSocket> makeClient() const
    {
        auto client = std::make_unique<QTcpSocket>();
        client->connectToHost(LOOPBACK, server.port());
        EXPECT_TRUE(waitUntil([&] { return client->state() == QTcpSocket::ConnectedState; }));
        return client;
    }

    // The next line that `client` receives; what has come when no line does.
    static std::string receive(QTcpSocket &client)
    {
        EXPECT_TRUE(waitUntil([&] { return client.canReadLine(); }));
        return client.readLine().toStdString();
    }

    simulator::Controller controller{"01"};
    simulator::TcpServer server{controller};
};

TEST_F(TcpLink, AnswersARequest)
{
    controller.memory().setValue(0x1000, 0x1234);
    const auto client = makeClient();
    client->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*client), ":0103021234B4\r\n");
}

TEST_F(TcpLink, AnswersARequestThatComesInSingleCharacters)
{
    const auto client = makeClient();
    for (const char character : QByteArray(":010310000001EB\r\n")) {
        client->write(&character, 1);
        ASSERT_TRUE(waitUntil([&] { return client->bytesToWrite() == 0; }));
    }
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
}

TEST_F(TcpLink, AnswersTwoRequestsOfOnePiece)
{
    const auto client = makeClient();
    client->write(":01050500FF00F6\r\n:010205000010E8\r\n");
    EXPECT_EQ(receive(*client), ":01050500FF00F6\r\n");
    EXPECT_EQ(receive(*client), ":0102020100FA\r\n");
}

TEST_F(TcpLink, AnswersNothingButItsOwnRequests)
{
    const auto client = makeClient();
    client->write("noise:020310000001EA\r\n:010310000001FF\r\n:0103:010310000001EB\r\n");
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
    EXPECT_EQ(client->bytesAvailable(), 0);
}

TEST_F(TcpLink, ServesSeveralClientsWithOneMemory)
{
    const auto writer = makeClient();
    const auto reader = makeClient();
    writer->write(":01101000000102BEEF2F\r\n");
    EXPECT_EQ(receive(*writer), ":011010000001DE\r\n");
    reader->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*reader), ":010302BEEF4D\r\n");
    EXPECT_EQ(writer->bytesAvailable(), 0);
}

TEST_F(TcpLink, KeepsTheLinesOfItsClientsApart)
{
    const auto first = makeClient();
    const auto second = makeClient();
    first->write(":01031000");
    ASSERT_TRUE(waitUntil([&] { return first->bytesToWrite() == 0; }));
    second->write(":010310010001EA\r\n");
    EXPECT_EQ(receive(*second), ":0103020000FA\r\n");
    first->write("0001EB\r\n");
    EXPECT_EQ(receive(*first), ":0103020000FA\r\n");
}

TEST_F(TcpLink, OutlivesAClientThatLeavesInMidLine)
{
    auto leaving = makeClient();
    leaving->write(":01031000");
    leaving->disconnectFromHost();
    ASSERT_TRUE(waitUntil([&] { return leaving->state() == QTcpSocket::UnconnectedState; }));
    const auto client = makeClient();
    client->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
}

TEST_F(TcpLink, ClosesItsConnectionsAtTheEnd)
{
    auto ended = std::make_unique<simulator::TcpServer>(controller);
    ASSERT_EQ(ended->listen(LOOPBACK, 0), QString());
    QTcpSocket client;
    client.connectToHost(LOOPBACK, ended->port());
    ASSERT_TRUE(waitUntil([&] { return client.state() == QTcpSocket::ConnectedState; }));
    client.write(":010310000001EB\r\n");
    EXPECT_EQ(receive(client), ":0103020000FA\r\n");
    ended.reset();
    EXPECT_TRUE(waitUntil([&] { return client.state() == QTcpSocket::UnconnectedState; }));
}

// Servers with one fault on all requests.
class FaultyTcpLink : public TcpLink {
protected:
    void spoil(const simulator::Fault &fault)
    {
        faults = simulator::Faults({fault});
        ASSERT_EQ(faulty.listen(LOOPBACK, 0), QString());
    }

    std::unique_ptr<QTcpSocket> makeFaultyClient() const
    {
        auto client = std::make_unique<QTcpSocket>();
        client->connectToHost(LOOPBACK, faulty.port());
        EXPECT_TRUE(waitUntil([&] { return client->state() == QTcpSocket::ConnectedState; }));
        return client;
    }

    simulator::Faults faults;
    simulator::TcpServer faulty{controller, &faults};
};

TEST_F(FaultyTcpLink, SendsPiecesLater)
{
    spoil({simulator::FaultKind::Pieces, 1});
    const auto client = makeFaultyClient();
    int arrivals = 0;
    QObject::connect(client.get(), &QTcpSocket::readyRead, client.get(), [&] { ++arrivals; });
    client->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
    EXPECT_GE(arrivals, 1);
}

TEST_F(FaultyTcpLink, DropsAPieceWhoseClientHasLeft)
{
    spoil({simulator::FaultKind::Late, 20});
    auto leaving = makeFaultyClient();
    leaving->write(":010310000001EB\r\n");
    ASSERT_TRUE(waitUntil([&] { return leaving->bytesToWrite() == 0; }));
    leaving.reset();
    const auto client = makeFaultyClient();
    client->write(":010310010001EA\r\n");
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
}

TEST_F(FaultyTcpLink, ClosesAndComesBackAtTheSamePort)
{
    spoil({simulator::FaultKind::Close, 1, 2}); // every second request
    const quint16 port = faulty.port();
    const auto client = makeFaultyClient();
    client->write(":010310000001EB\r\n:010310000001EB\r\n:010310000001EB\r\n");
    ASSERT_TRUE(waitUntil([&] { return client->state() == QTcpSocket::UnconnectedState; }));
    ASSERT_TRUE(waitUntil([&] { return faulty.port() == port; }));
    const auto again = makeFaultyClient();
    again->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*again), ":0103020000FA\r\n");
}

TEST_F(FaultyTcpLink, ComesBackWhenItsPortIsFreeAgain)
{
    spoil({simulator::FaultKind::Close, 1, 2});
    const quint16 port = faulty.port();
    const auto client = makeFaultyClient();
    auto squatter = std::make_unique<QTcpServer>();
    QObject::connect(client.get(), &QTcpSocket::disconnected, squatter.get(),
                     [&] { squatter->listen(QHostAddress(LOOPBACK), port); });
    client->write(":010310000001EB\r\n:010310000001EB\r\n");
    ASSERT_TRUE(waitUntil([&] { return client->state() == QTcpSocket::UnconnectedState; }));
    squatter.reset();
    EXPECT_TRUE(waitUntil([&] { return faulty.port() == port; }));
}

TEST(TcpServer, HasNoPortBeforeItListens)
{
    simulator::Controller controller("01");
    const simulator::TcpServer server(controller);
    EXPECT_EQ(server.port(), 0);
}

TEST(TcpServer, ListensAtAName)
{
    simulator::Controller controller("01");
    simulator::TcpServer server(controller);
    EXPECT_EQ(server.listen("localhost", 0), QString());
    EXPECT_NE(server.port(), 0);
}

TEST_F(TcpLink, SaysThatAPortIsTaken)
{
    simulator::TcpServer second(controller);
    EXPECT_EQ(second.listen(LOOPBACK, server.port()),
              QString("The bound address is already in use; end the program that uses this port or "
                      "give another port"));
    EXPECT_EQ(second.port(), 0);
}

TEST(TcpServer, SaysThatAnAddressIsNotOfThisMachine)
{
    simulator::Controller controller("01");
    simulator::TcpServer server(controller);
    EXPECT_EQ(server.listen("192.0.2.1", 8888),
              QString("The address is not available; give an address of this machine and a port "
                      "that you may use"));
}

TEST(TcpServer, SaysThatThereIsNoSuchHost)
{
    simulator::Controller controller("01");
    simulator::TcpServer server(controller);
    EXPECT_EQ(server.listen("", 8888),
              QString("no such host; give an address of this machine, for example 127.0.0.1"));
}

} // namespace

// The controller over real TCP connections on the loopback address.
#include "simulator/tcp_server.h"

#include "event_loop.h"
#include "simulator/faults.h"

#include <QEvent>
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
        return makeClientOf(server);
    }

    static std::unique_ptr<QTcpSocket> makeClientOf(const simulator::TcpServer &server)
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
    simulator::TcpServer server{simulator::respondAs(controller)};
};

TEST_F(TcpLink, AnswersRequestsInPiecesAndTwoAtOnceAndNothingElse)
{
    controller.memory().setValue(0x1000, 0x1234);
    const auto client = makeClient();
    client->write("noise:020310000001EA\r\n:010310000001FF\r\n:0103:01031000");
    ASSERT_TRUE(waitUntil([&] { return client->bytesToWrite() == 0; }));
    client->write("0001EB\r\n:01050500FF00F6\r\n:010205000010E8\r\n");
    EXPECT_EQ(receive(*client), ":0103021234B4\r\n");
    EXPECT_EQ(receive(*client), ":01050500FF00F6\r\n");
    EXPECT_EQ(receive(*client), ":0102020100FA\r\n");
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

// Counts the sockets that Qt is asked to delete.
class DeletionCounter : public QObject {
public:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::DeferredDelete && object->inherits("QTcpSocket"))
            ++count;
        return false;
    }

    int count = 0;
};

TEST_F(TcpLink, ForgetsAConnectionThatIsClosedAlsoInMidLine)
{
    DeletionCounter deleted;
    QCoreApplication::instance()->installEventFilter(&deleted);
    auto leaving = makeClient();
    leaving->write(":01031000");
    leaving->disconnectFromHost();
    EXPECT_TRUE(waitUntil([&] { return deleted.count == 1; }));
    const auto client = makeClient();
    client->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
}

TEST_F(TcpLink, ClosesItsConnectionsAtTheEnd)
{
    auto ended = std::make_unique<simulator::TcpServer>(simulator::respondAs(controller));
    ASSERT_EQ(ended->listen(LOOPBACK, 0), QString());
    const auto client = makeClientOf(*ended);
    client->write(":010310000001EB\r\n");
    EXPECT_EQ(receive(*client), ":0103020000FA\r\n");
    ended.reset();
    EXPECT_TRUE(waitUntil([&] { return client->state() == QTcpSocket::UnconnectedState; }));
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
        return makeClientOf(faulty);
    }

    simulator::Faults faults;
    simulator::TcpServer faulty{simulator::respondAs(controller, &faults)};
};

TEST_F(FaultyTcpLink, SendsLateAndDropsWhatNobodyWaitsFor)
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

TEST_F(TcpLink, ComesBackWhenItsPortIsFreeAgainHoweverLateThatIs)
{
    QTcpServer squatter;
    quint16 port = 0;
    simulator::TcpServer closing([&](const QByteArray &) {
        QTimer::singleShot(0, &squatter, [&] { squatter.listen(QHostAddress(LOOPBACK), port); });
        return simulator::Plan{{}, std::chrono::milliseconds(1)};
    });
    ASSERT_EQ(closing.listen(LOOPBACK, 0), QString());
    port = closing.port();
    const auto client = makeClientOf(closing);
    client->write(":010310000001EB\r\n");
    ASSERT_TRUE(waitUntil([&] { return squatter.isListening(); }));
    bool isFree = false;
    QTimer::singleShot(350, &squatter, [&] { // after several attempts
        isFree = true;
        squatter.close();
    });
    EXPECT_TRUE(waitUntil([&] { return closing.port() == port; }));
    EXPECT_TRUE(isFree);
}

TEST_F(TcpLink, SaysWhyItCannotListen)
{
    const QString taken = "The bound address is already in use; end the program that uses this "
                          "port or give another port";
    const QString foreign = "The address is not available; give an address of this machine and a "
                            "port that you may use";
    const QString unknown = "no such host; give an address of this machine, for example 127.0.0.1";
    simulator::TcpServer other(simulator::respondAs(controller));
    EXPECT_EQ(other.port(), 0);
    EXPECT_EQ(other.listen(LOOPBACK, server.port()), taken);
    EXPECT_EQ(other.listen("192.0.2.1", 8888), foreign);
    EXPECT_EQ(other.listen("", 8888), unknown);
    EXPECT_EQ(other.port(), 0);
    EXPECT_EQ(other.listen("localhost", 0), QString()); // a name
    EXPECT_NE(other.port(), 0);
}

} // namespace

// What becomes of messages when the connection breaks.
#include "kmr/publish/broker.h"
#include "kmr/publish/courier.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <gtest/gtest.h>

#include <sys/socket.h>

using namespace kmr;

TEST(Broker, MessageThatMeetsABrokenConnectionIsNotAnswered)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    BrokerSettings settings;
    settings.host = "127.0.0.1";
    settings.port = server.serverPort();
    settings.isMqtt5 = false;
    settings.clientId = "one";
    bool isConnected = false;
    QStringList answers;
    const Message will = {0, 0, "line/$state", "offline", true, {}};
    Broker broker(settings, will,
                  {[&] { isConnected = true; },
                   [&](int, const QString &refusal) { answers.append(refusal); },
                   [](const Incoming &) {}, [](const QString &) {}});
    ASSERT_TRUE(broker.connect());
    ASSERT_TRUE(server.waitForNewConnection(60000));
    QTcpSocket *const peer = server.nextPendingConnection();
    peer->write(QByteArray::fromHex("20020000")); // CONNACK
    ASSERT_TRUE(peer->waitForBytesWritten(60000));
    const WakeUp wakeUp;
    while (!isConnected)
        ASSERT_TRUE(broker.wait(wakeUp.descriptor(), std::chrono::milliseconds(50)));
    const linger reset = {1, 0};
    setsockopt(static_cast<int>(peer->socketDescriptor()), SOL_SOCKET, SO_LINGER, &reset,
               sizeof reset);
    peer->abort();
    const Message message = {1, 0, "line/oven", "21.5", true, {}};
    for (int i = 0; i < 3; ++i) // "Connection reset by peer", then "Broken pipe"
        broker.publish(message);
    EXPECT_EQ(answers, QStringList());
}

// What becomes of messages when the connection breaks, or when they are too long for the broker.
#include "kmr/publish/broker.h"
#include "kmr/publish/courier.h"
#include "kmr/publish/plain_topics.h"
#include "kmr/publish/sparkplug_node.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/socket.h>

#include <future>

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

namespace {

// A courier, and a broker that by itself answers only the CONNECT.
class CourierTest : public testing::Test {
protected:
    CourierTest()
    {
        EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost));
    }

    std::unique_ptr<Courier> courier(bool isSparkplug = true)
    {
        BrokerSettings settings;
        settings.host = "127.0.0.1";
        settings.port = m_server.serverPort();
        settings.isSparkplug = isSparkplug;
        settings.clientId = "one";
        std::shared_ptr<Convention> convention = m_node;
        if (!isSparkplug)
            convention = std::make_shared<PlainTopics>(Topics("line", {}), PayloadForm::Json, true);
        return std::make_unique<Courier>(
            settings, convention, m_outbox, m_wakeUp,
            Courier::Events{[] {},
                            [this](const std::vector<Incoming> &requests) {
                                m_requested.set_value(requests.front().payload.size());
                            },
                            [this](std::size_t count) { m_dropped.set_value(count); },
                            [this](const QString &line) { m_reported.append(line); }});
    }

    // The next connection, to a broker that takes packets of up to so many bytes.
    std::unique_ptr<QTcpSocket> accept(char longest)
    {
        EXPECT_TRUE(m_server.waitForNewConnection(60000));
        std::unique_ptr<QTcpSocket> socket(m_server.nextPendingConnection());
        socket->write(QByteArray::fromHex("200800000527000000") + longest);
        return socket;
    }

    // What comes until these bytes, or until the connection is closed.
    static QByteArray readUntil(QTcpSocket &socket, const QByteArray &wanted)
    {
        QByteArray got;
        while (!(got += socket.readAll()).contains(wanted) && socket.waitForReadyRead(60000))
            continue;
        return got;
    }

    void push(const QByteArray &metric)
    {
        m_outbox->push({0, 0, "spBv1.0/plant/NDATA/line1", metric, false, {}});
    }

    const QTemporaryDir m_directory;
    QTcpServer m_server;
    const std::shared_ptr<SparkplugNode> m_node = std::make_shared<SparkplugNode>(
        Topics("plant/line1", {}), std::vector<PublishedTag>{}, false,
        m_directory.filePath("bdseq"), [](const QString &) {});
    const std::shared_ptr<WakeUp> m_wakeUp = std::make_shared<WakeUp>();
    const std::shared_ptr<Outbox> m_outbox =
        std::make_shared<Outbox>(0, true, [this] { m_wakeUp->wake(); });
    std::promise<std::size_t> m_dropped;
    std::promise<qint64> m_requested; // bytes of the payload
    QStringList m_reported;
};

const QByteArray ANY_MORE = "never sent";

} // namespace

TEST_F(CourierTest, WithoutABirthTheBrokerGetsNoDataAndIsTriedAgain)
{
    push("value");
    const auto courier = this->courier();
    auto peer = accept(80);
    const QByteArray refused = readUntil(*peer, ANY_MORE);
    EXPECT_EQ(peer->state(), QAbstractSocket::UnconnectedState);
    EXPECT_FALSE(refused.contains("NBIRTH") || refused.contains("NDATA"));
    peer = accept(120);
    const QByteArray taken = readUntil(*peer, "value");
    EXPECT_TRUE(taken.contains("NBIRTH") && taken.contains("value"));
    peer->abort();
    courier->end();
    ASSERT_FALSE(m_reported.isEmpty());
    EXPECT_TRUE(m_reported[0].contains(" does not take the birth, so it gets no data: "));
}

TEST_F(CourierTest, DataThatIsTooLongForTheBrokerIsDroppedAndTakesNoSeq)
{
    push(QByteArray(200, 'x'));
    const auto courier = this->courier();
    const auto peer = accept(120);
    readUntil(*peer, "NBIRTH");
    std::future<std::size_t> dropped = m_dropped.get_future();
    ASSERT_EQ(dropped.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_EQ(dropped.get(), 1U);
    push("value");
    const QByteArray last = QByteArray("value") + QByteArray::fromHex("1801");
    EXPECT_TRUE(readUntil(*peer, last).contains(last));
    peer->abort();
    courier->end();
}

TEST_F(CourierTest, DataThatTheBrokerRefusesIsCountedAsDropped)
{
    push("value");
    const auto courier = this->courier(false);
    const auto peer = accept(120);
    readUntil(*peer, "value");
    peer->write(QByteArray::fromHex("40020002400400038700")); // PUBACKs: taken, not authorised
    peer->flush();
    std::future<std::size_t> dropped = m_dropped.get_future();
    ASSERT_EQ(dropped.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_EQ(dropped.get(), 1U);
    peer->abort();
    courier->end();
    EXPECT_TRUE(m_outbox->isEmpty());
}

TEST_F(CourierTest, DataThatExceedsAQuotaOfTheBrokerIsSentAgain)
{
    push("value");
    const auto courier = this->courier(false);
    auto peer = accept(120);
    readUntil(*peer, "value");
    peer->write(QByteArray::fromHex("40020002400400039700")); // PUBACKs: taken, quota exceeded
    peer->flush();
    peer = accept(120);
    EXPECT_TRUE(readUntil(*peer, "value").contains("value"));
    peer->abort();
    courier->end();
    EXPECT_FALSE(m_outbox->isEmpty());
}

TEST_F(CourierTest, DoesNotWaitForTheBrokerToTakeADeathThatIsTooLong)
{
    const auto courier = this->courier(false);
    const auto peer = accept(24); // "online" fits, "offline" does not
    readUntil(*peer, "online");
    const auto start = std::chrono::steady_clock::now();
    courier->end();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)); // 0.1 s
    EXPECT_FALSE(readUntil(*peer, ANY_MORE).contains("offline"));
}

TEST_F(CourierTest, OfARequestOfAnyLengthNoMoreThanAllowedIsKeptInMemory)
{
    const auto courier = this->courier(false);
    const auto peer = accept(120);
    readUntil(*peer, "online");
    // PUBLISH of 70014 bytes, without properties
    peer->write(QByteArray::fromHex("30fea204000b") + "line/oven/x" + '\0' +
                QByteArray(70000, '1'));
    while (peer->bytesToWrite() > 0)
        ASSERT_TRUE(peer->waitForBytesWritten(60000));
    std::future<qint64> requested = m_requested.get_future();
    ASSERT_EQ(requested.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_EQ(requested.get(), 65537);
    peer->abort();
    courier->end();
}

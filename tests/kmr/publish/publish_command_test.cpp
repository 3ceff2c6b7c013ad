// 'kmr publish' between a simulated controller and Debian's mosquitto.
#include "tests/kmr/kmr_process.h"
#include "tests/kmr/publish/publish_fixture.h"

#include <QTcpSocket>
#include <QUrl>
#include <gtest/gtest.h>

#include <cstddef>
#include <future>
#include <map>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// What systemd is to its services: a socket that takes notices.
class ServiceManager {
public:
    ServiceManager()
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const socklen_t size = sizeof(sa_family_t); // the system finds a free name
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr *>(&address), size), 0);
        socklen_t length = sizeof address;
        EXPECT_EQ(getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &length), 0);
        m_name = QByteArray(address.sun_path + 1,
                            static_cast<int>(length - offsetof(sockaddr_un, sun_path)) - 1);
    }
    ~ServiceManager()
    {
        close(m_socket);
    }
    ServiceManager(const ServiceManager &) = delete;
    ServiceManager &operator=(const ServiceManager &) = delete;

    QString address() const
    {
        return '@' + m_name;
    }

    // All that come, a line each, until the last one.
    std::string notices() const
    {
        std::string all;
        while (all.find("STOPPING=1\n") == std::string::npos) {
            char text[100];
            const ssize_t length = recv(m_socket, text, sizeof text, 0);
            all += std::string(text, static_cast<std::size_t>(length)) + '\n';
        }
        return all;
    }

private:
    const int m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    QByteArray m_name;
};

QString scrape(const QUrl &url)
{
    QTcpSocket socket;
    socket.connectToHost(url.host(), static_cast<quint16>(url.port()));
    EXPECT_TRUE(socket.waitForConnected(60000));
    socket.write("GET " + url.path().toUtf8() + " HTTP/1.0\r\n\r\n");
    while (socket.waitForReadyRead(60000)) {
    }
    return QString::fromUtf8(socket.readAll());
}

} // namespace

TEST_F(PublishTest, ValuesAreRetainedWithTheirQualityAndChangesFollow)
{
    set("D100=215");
    const auto publisher = publish({"oven", "1#X0x2"});
    publisher->waitFor("connected to the broker");
    Subscriber subscriber(m_broker, "line/#", "first");
    subscriber.waitFor(
        R"(^line/oven . \{"value":21.5,"unit":"°C","quality":"good","time":"[^"]*Z","cause":null\}$)");
    set("D100=220");
    subscriber.waitFor(R"(^line/oven 0 \{"value":22.0,)");
    set("X1=1");
    subscriber.waitFor(R"(^line/1%23X0x2 0 \{"value":\[0,1\],"unit":null,)");
    Subscriber late(m_broker, "line/#", "late");
    late.waitFor(R"(^line/\$state 1 online$)");
    Subscriber later(m_broker, "line/oven", "later");
    later.waitFor(R"(^line/oven 1 \{"value":22.0,)");
}

TEST_F(PublishTest, PlainMessagesHaveFieldsWithTabsAlsoOverMqtt311)
{
    set("D100=215");
    const auto publisher = publish({"oven", "--payload", "plain", "--mqtt", "3.1.1"});
    Subscriber(m_broker, "line/oven", "one").waitFor("^line/oven . good\t[^\t]*Z\t21.5\t°C$");
}

TEST_F(PublishTest, StateIsOnlineUntilTheEndHoweverItCame)
{
    Subscriber subscriber(m_broker, "line/$state", "one");
    auto publisher = publish({"oven"});
    subscriber.waitFor("online");
    EXPECT_EQ(publisher->terminate(), 0);
    subscriber.waitFor("offline");
    publisher = publish({"oven"});
    subscriber.waitFor("online");
    publisher->kill();
    subscriber.waitFor("offline");
}

TEST_F(PublishTest, WhatIsNotReadIsStaleWithItsCause)
{
    set("D100=215");
    Subscriber subscriber(m_broker, "line/#", "one");
    const auto publisher = publish({"oven"});
    subscriber.waitFor(R"(^line/oven 0 \{"value":21.5,.*"quality":"good")");
    m_simulator.terminate();
    subscriber.waitFor(
        R"(^line/oven 0 \{"value":21.5,.*"quality":"stale",.*,"cause":"the line was lost"\})");
}

TEST_F(PublishTest, RefusedTagIsStaleAndASilentStationIsNamed)
{
    Subscriber subscriber(m_broker, "line/#", "one");
    const auto publisher = publish({"oven", "7#D0"});
    subscriber.waitFor(R"(^line/7%23D0 0 \{"value":null,.*"quality":"stale",.*"cause":"no answer)");
    subscriber.waitFor(R"(^line/\$line 0 \{.*"line":"open","exchanges":.*"silent_stations":\[7\])");
}

TEST_F(PublishTest, RestartOfTheBrokerLosesNothing)
{
    Subscriber subscriber(m_broker, "line/oven", "one");
    const auto publisher = publish({"oven"});
    subscriber.waitFor(R"("quality":"good")");
    m_broker.stop();
    publisher->waitFor("no connection to the broker");
    setAndAwaitSpool("11", "\"value\":1.1,");
    setAndAwaitSpool("12", "\"value\":1.2,");
    setAndAwaitSpool("13", "\"value\":1.3,");
    m_broker.start();
    for (const char *const value : {"1.1", "1.2", "1.3"})
        subscriber.waitFor(QString(R"("value":%1,.*"quality":"good")").arg(value));
}

TEST_F(PublishTest, BrokerThatForgotTheValuesGetsThemAgain)
{
    const auto publisher = publish({"oven", "--heartbeat", "0"});
    Subscriber(m_broker, "line/oven", "one").waitFor(R"("quality":"good")");
    publishTo(m_broker, "line/oven", {"-r", "-n"});
    m_broker.stop();
    publisher->waitFor("no connection to the broker");
    m_broker.start();
    publisher->waitFor("connected to the broker");
    Subscriber(m_broker, "line/oven", "two").waitFor(R"("quality":"good")");
}

TEST_F(PublishTest, ChangesWhileTheBrokerIsAwayOutlastKillAndArriveInOrder)
{
    Subscriber subscriber(m_broker, "line/oven", "one");
    auto publisher = publish({"oven"});
    subscriber.waitFor(R"("quality":"good")");
    m_broker.stop();
    publisher->waitFor("no connection to the broker");
    setAndAwaitSpool("11", "\"value\":1.1,");
    setAndAwaitSpool("12", "\"value\":1.2,");
    setAndAwaitSpool("13", "\"value\":1.3,");
    publisher->kill();
    set("D100=14");
    publisher = publish({"oven"});
    publisher->waitFor("messages wait in kmr-publish.spool");
    m_broker.start();
    for (const char *const value : {"1.1", "1.2", "1.3", "1.4"})
        subscriber.waitFor(QString(R"("value":%1,.*"quality":"good")").arg(value));
    EXPECT_EQ(publisher->terminate(), 0);
}

TEST_F(PublishTest, WritesAreAnsweredWithTheirOutcome)
{
    Subscriber subscriber(m_broker, "line/+/outcome", "one");
    Subscriber answers(m_broker, "panel/#", "two");
    const auto publisher = publish({"oven", "speed", "--allow-write"});
    publisher->waitFor("connected to the broker");
    publishTo(m_broker, "line/oven/set", {"-r", "-m", "99"});
    subscriber.waitFor("^line/oven/outcome 0 .*\"refused\",\"reason\":\"retained: ");
    publishTo(m_broker, "line/oven/set", {"-m", R"({"value": 21.5, "id": "a7"})"});
    subscriber.waitFor(
        R"(^line/oven/outcome 0 \{"name":"oven","outcome":"confirmed","reason":null,"value":"21.5","id":"a7")");
    EXPECT_EQ(run({"read", "D100", "--link", m_simulator.link()}).out, "D100 215\n");
    publishTo(m_broker, "line/speed/set", {"-m", "1"});
    subscriber.waitFor("^line/speed/outcome 0 .*\"refused\",\"reason\":\"speed is not marked");
    publishTo(m_broker, "line/drum/set", {"-m", "1"});
    subscriber.waitFor("^line/drum/outcome 0 .*\"refused\",\"reason\":\"names.csv has no name");
    publishTo(m_broker, "line/valve/set",
              {"-m", "1", "-D", "publish", "response-topic", "panel/answers", "-D", "publish",
               "correlation-data", "c7"});
    answers.waitFor("^panel/answers 0 .*\"confirmed\"");
    publishTo(m_broker, "line/ghost/set", {"-m", "1"});
    subscriber.waitFor("^line/ghost/outcome 0 .*\"no answer\"");
    m_simulator.terminate();
    publisher->waitFor("the line was lost");
    EXPECT_FALSE(publisher->seen().contains("station 7")); // no outage, which polling would end
    publishTo(m_broker, "line/oven/set", {"-m", "20"});
    subscriber.waitFor("^line/oven/outcome 0 .*\"not sent\",\"reason\":\"the line is lost\"");
}

TEST_F(PublishTest, WithoutPermissionNobodyListensForWrites)
{
    Subscriber subscriber(m_broker, "line/#", "one");
    const auto publisher = publish({"oven", "--heartbeat", "0.1"});
    subscriber.waitFor("^line/oven 0");
    publishTo(m_broker, "line/oven/set", {"-m", "20"});
    subscriber.waitFor("^line/oven/set");
    subscriber.waitFor("^line/oven 0 .*\"value\":0.0");
    subscriber.waitFor("^line/oven 0 .*\"value\":0.0");
    EXPECT_EQ(subscriber.rest().filter("outcome"), QStringList());
}

TEST_F(PublishTest, AFloodOfRequestsIsCountedAndThePollingGoesOn)
{
    Subscriber subscriber(m_broker, "line/#", "one");
    const auto publisher = publish({"speed", "--allow-write"});
    publisher->waitFor("connected to the broker");
    QByteArray flood;
    for (int i = 0; i < 3000; ++i)
        flood += QByteArray::number(i) + '\n';
    publishTo(m_broker, "line/oven/set", {"-l"}, {}, flood);
    publisher->waitFor("too many requests to write at once: ");
    set("D0=7");
    subscriber.waitFor("^line/speed 0 \\{\"value\":7,");
    subscriber.waitFor("^line/\\$line 0 .*\"requests_refused\":[1-9]");
}

TEST_F(PublishTest, MetricsHaveTheFiguresOfTheLineAndOfTheRequests)
{
    const auto publisher = publish({"oven", "7#D0", "--allow-write", "--metrics", "127.0.0.1:0"});
    const QString url = publisher->waitFor("metrics at http://127.0.0.1:").section(' ', -1);
    publisher->waitFor("connected to the broker");
    publishTo(m_broker, "line/oven/set", {"-m", "20"});
    publishTo(m_broker, "line/oven/set", {"-m", "hot"});
    QString metrics;
    while (!metrics.contains("{outcome=\"refused\"} 1\n"))
        metrics = scrape(url);
    for (const char *const pattern :
         {"\nkmr_requests_total\\{outcome=\"confirmed\"\\} 1\n", "\nkmr_line_open 1\n",
          "\nkmr_broker_connected 1\n", "\nkmr_exchanges_good_total [1-9]",
          "\nkmr_give_ups_total [1-9]", "\nkmr_silent_stations 1\n", "\nkmr_strays_total 0\n",
          "\nkmr_round_trip_seconds_bucket\\{le=\"5\"\\} [1-9]", "\nkmr_spool_bytes 0\n"})
        EXPECT_TRUE(matches(metrics, pattern)) << pattern << " is not in\n"
                                               << metrics.toStdString();
    m_broker.stop();
    set("D100=30");
    while (!matches(metrics, "\nkmr_broker_connected 0\n(.*\n)*kmr_spool_messages [1-9]"))
        metrics = scrape(url);
    const Finished second = run({"publish", "oven", "--broker", m_broker.url(), "--metrics",
                                 QUrl(url).authority(), "--link", m_simulator.link()});
    EXPECT_EQ(second.exitCode, 2);
    EXPECT_TRUE(second.err.contains("for metrics: The bound address is already in use"));
    m_broker.start();
}

TEST(PublishService, TellsItsManagerThatItIsReadyAliveAndStopping)
{
    const QTemporaryDir directory;
    const BrokerProcess broker;
    const ServiceManager manager;
    auto notices = std::async(std::launch::async, [&manager] { return manager.notices(); });
    auto simulator = std::make_unique<Simulator>(QStringList{"--listen", "tcp://127.0.0.1:0"});
    const QString link = simulator->link();
    simulator.reset();
    PublisherProcess publisher(directory.path(), {"D100", "--broker", broker.url(), "--link", link},
                               {{"NOTIFY_SOCKET", manager.address()}, {"WATCHDOG_USEC", "20000"}});
    publisher.waitFor("trying again until it works");
    simulator = std::make_unique<Simulator>(
        QStringList{"--listen", "tcp://127.0.0.1:" + link.section(':', -1)});
    publisher.waitFor("connected to the broker");
    EXPECT_EQ(publisher.terminate(), 0);
    EXPECT_TRUE(matches(QString::fromStdString(notices.get()),
                        "^READY=1\n(READY=1\n|WATCHDOG=1\n)*WATCHDOG=1\n(READY=1\n|WATCHDOG=1\n)*"
                        "STOPPING=1\n$"));
}

TEST(PublishService, EndsWellWhileItWaitsForItsLine)
{
    const QTemporaryDir directory;
    const ServiceManager manager;
    PublisherProcess publisher(
        directory.path(), {"D100", "--broker", "mqtt://127.0.0.1:1", "--link", "tcp://127.0.0.1:1"},
        {{"NOTIFY_SOCKET", manager.address()}});
    publisher.waitFor("trying again until it works");
    EXPECT_EQ(publisher.terminate(), 0);
}

TEST(PublishGuarded, ClientsReadAndWriteWhatTheBrokerLetsThem)
{
    const QTemporaryDir directory;
    saveFile(directory.filePath("names.csv"), NAMES);
    saveFile(directory.filePath("login"), "kmr\nsecret\n");
    saveFile(directory.filePath("kmr.toml"), "names = \"names.csv\"\ntags = [\"oven\", \"valve\"]\n"
                                             "[publish]\nprefix = \"line\"\nallow-write = true\n"
                                             "credentials = \"login\"\n");
    const BrokerProcess broker(BrokerProcess::Kind::Guarded);
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    PublisherProcess stranger(directory.path(), {"--broker", broker.url(), "--link",
                                                 simulator.link(), "--credentials", "/dev/null"});
    stranger.waitFor("/dev/null: expected a line with the user");
    PublisherProcess publisher(directory.path(),
                               {"--broker", broker.url(), "--link", simulator.link()});
    publisher.waitFor("connected to the broker");
    Subscriber nobody(broker, "#", "nobody", "nobody");
    Subscriber panel(broker, "#", "panel", "panel");
    publishTo(broker, "line/valve/set", {"-m", "1"}, "nobody");
    publishTo(broker, "line/oven/set", {"-m", "1"}, "panel");
    publishTo(broker, "line/valve/set", {"-m", "1"}, "panel");
    panel.waitFor("^line/valve/outcome 0 .*\"confirmed\"");
    panel.waitFor("^line/valve 0 \\{\"value\":1,");
    EXPECT_EQ(run({"read", "M5", "D100", "--link", simulator.link()}).out, "M5 1\nD100 0\n");
    EXPECT_EQ(nobody.rest(), QStringList());
}

TEST(PublishEncrypted, BothSidesShowTheirCertificates)
{
    const QTemporaryDir directory;
    const BrokerProcess broker(BrokerProcess::Kind::Encrypted);
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    const QStringList common = {"D100",       "--prefix", "line",          "--broker",
                                broker.url(), "--link",   simulator.link()};
    const QStringList files = {"--certificate", broker.file("kmr.pem"), "--key",
                               broker.file("kmr.key")};
    PublisherProcess distrusting(directory.path(), common + files);
    distrusting.waitFor("no connection to the broker");
    distrusting.terminate();
    PublisherProcess publisher(directory.path(),
                               common + files + QStringList{"--ca", broker.file("ca.pem")});
    publisher.waitFor("connected to the broker");
    Subscriber(broker, "line/D100", "one").waitFor(R"("quality":"good")");
    EXPECT_EQ(publisher.terminate(), 0);
}

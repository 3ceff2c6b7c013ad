// 'kmr publish --sparkplug' with Debian's mosquitto. Payloads stand here as hexadecimal digits.
#include "tests/kmr/publish/publish_fixture.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace {

const char *const FORMAT = "%t %q%r %x"; // with quality of service and retained flag

QString hexOf(const char *text)
{
    return QByteArray(text).toHex();
}

// The metric bdSeq (Int64) with the number of a connection, after its time.
QString bdSeq(const char *number)
{
    return "0a05" + hexOf("bdSeq") + "18............2004" + "58" + number;
}

// A metric of type Double with these eight bytes.
QString oven(const char *bytes)
{
    return "0a04" + hexOf("oven") + "18............200a.*69" + bytes;
}

const char *const D_1_1 = "9a9999999999f13f";
const char *const D_1_2 = "333333333333f33f";
const char *const D_1_3 = "cdccccccccccf43f";
const char *const D_22 = "0000000000003640";

class SparkplugTest : public PublishTest {
protected:
    std::unique_ptr<PublisherProcess> publishNode(const QStringList &arguments)
    {
        return publish(QStringList{"--sparkplug", "plant/line1"} + arguments);
    }

    // A command of the host: a payload with a time and one metric, of these bytes.
    void command(const QByteArray &metric)
    {
        const QByteArray length = QByteArray::number(metric.size(), 16).rightJustified(2, '0');
        publishTo(m_broker, "spBv1.0/plant/NCMD/line1", {"-s"}, {},
                  QByteArray::fromHex("08e80712" + length) + metric);
    }

    Subscriber m_host{m_broker, "spBv1.0/plant/+/line1", "host", {}, FORMAT};
};

QByteArray metricOf(const char *name, const char *value)
{
    return QByteArray("\x0a") + static_cast<char>(qstrlen(name)) + name +
           QByteArray::fromHex(value);
}

const char *const TRUE_VALUE = "7001";

} // namespace

TEST_F(SparkplugTest, BirthHasAllMetricsAndDataFollowsInSequence)
{
    const auto publisher = publishNode({"oven", "valve"});
    m_host.waitFor("^spBv1.0/plant/NBIRTH/line1 00 08.{12}12.*" + bdSeq("00") + ".*" +
                   hexOf("Node Control/Rebirth") + "18............200b7000.*0a04" + hexOf("oven") +
                   ".*0a05" + hexOf("valve") + ".*1800$");
    set("D100=220");
    m_host.waitFor("^spBv1.0/plant/NDATA/line1 00 08.{12}12.*" + oven(D_22) + ".*18..$");
}

TEST_F(SparkplugTest, DeathHasTheNumberOfItsBirthHoweverItCame)
{
    for (const QStringList &version : {QStringList{}, QStringList{"--mqtt", "3.1.1"}}) {
        const bool isFirst = version.isEmpty();
        auto publisher = publishNode(QStringList{"oven"} + version);
        m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq(isFirst ? "00" : "02"));
        publisher->kill();
        m_host.waitFor("NDEATH/line1 10 08.{12}12..(" + bdSeq(isFirst ? "00" : "02") + ")$");
        publisher = publishNode(QStringList{"oven"} + version);
        m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq(isFirst ? "01" : "03"));
        EXPECT_EQ(publisher->terminate(), 0);
        m_host.waitFor("NDEATH/line1 00 .*" + bdSeq(isFirst ? "01" : "03") + "$");
    }
}

TEST_F(SparkplugTest, HostGetsANewBirthWhenItAsks)
{
    const auto publisher = publishNode({"oven"});
    m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq("00"));
    const QString first = m_host.waitFor("NDATA/line1 00 .*1801$");
    EXPECT_FALSE(first.contains(hexOf("°C") + "2801")); // the birth said that it was not read
    command(metricOf("Node Control/Rebirth", TRUE_VALUE));
    m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq("00") + ".*1800$");
}

TEST_F(SparkplugTest, CommandsAreWrittenAndTheirOutcomeIsAMetric)
{
    const auto publisher = publishNode({"oven", "speed", "--allow-write"});
    m_host.waitFor("NBIRTH/line1 00 .*" + hexOf("Write/Outcome") + "18............200c3801");
    command(metricOf("oven", "690000000000003640")); // 22
    m_host.waitFor("NDATA/line1 00 .*" + hexOf("Write/Outcome") + ".*" +
                   hexOf(R"({"name":"oven","outcome":"confirmed","reason":null,"value":"22")"));
    EXPECT_EQ(run({"read", "D100", "--link", m_simulator.link()}).out, "D100 220\n");
    command(metricOf("speed", "5001"));
    m_host.waitFor("NDATA/line1 00 .*" + hexOf(R"("refused","reason":"speed is not marked)"));
    command(metricOf("oven", TRUE_VALUE));
    m_host.waitFor("NDATA/line1 00 .*" + hexOf(R"("refused","reason":"oven is not a bit)"));
    command("\xff\xff");
    publisher->waitFor("a command is not a Sparkplug B payload");
}

TEST_F(SparkplugTest, WhatChangedWhileTheBrokerWasAwayIsHistoricalAfterTheBirth)
{
    auto publisher = publishNode({"oven"});
    m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq("00"));
    m_broker.stop();
    publisher->waitFor("no connection to the broker");
    setAndAwaitSpool("11", QByteArray::fromHex(D_1_1));
    setAndAwaitSpool("12", QByteArray::fromHex(D_1_2));
    publisher->kill();
    publisher = publishNode({"oven"});
    setAndAwaitSpool("13", QByteArray::fromHex(D_1_3));
    m_broker.start();
    m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq("01") + ".*" + oven(D_1_3) + ".*1800$");
    const QString historical = "2801.*";
    m_host.waitFor("NDATA/line1 00 .*" + oven(D_1_1) + historical + oven(D_1_2) + historical +
                   oven(D_1_3) + historical + "1801$");
}

TEST_F(SparkplugTest, DataThatIsTooLongTogetherIsSentInParts)
{
    const auto publisher = publishNode({"oven"});
    m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq("00"));
    m_broker.stop();
    publisher->waitFor("no connection to the broker");
    setAndAwaitSpool("11", QByteArray::fromHex(D_1_1));
    setAndAwaitSpool("12", QByteArray::fromHex(D_1_2));
    setAndAwaitSpool("13", QByteArray::fromHex(D_1_3));
    m_broker.configure("max_packet_size 200"); // enough for the birth, and for two of the values
    m_broker.start();
    m_host.waitFor("NBIRTH/line1 00 .*" + bdSeq("01"));
    m_host.waitFor("NDATA/line1 00 .*" + oven(D_1_1) + ".*1801$");
    m_host.waitFor("NDATA/line1 00 .*" + oven(D_1_2) + ".*" + oven(D_1_3) + ".*1802$");
    EXPECT_EQ(publisher->terminate(), 0); // nothing was dropped
}

TEST_F(SparkplugTest, WhatABrokerDidNotAnswerIsSentAgain)
{
    QTcpServer broker;
    ASSERT_TRUE(broker.listen(QHostAddress::LocalHost));
    // Takes a connection, and reads until these bytes came. Answers nothing but the CONNECT.
    const auto readUntil = [&broker](const QByteArray &wanted) {
        ASSERT_TRUE(broker.waitForNewConnection(60000));
        const std::unique_ptr<QTcpSocket> socket(broker.nextPendingConnection());
        socket->write(QByteArray::fromHex("20020000"));
        QByteArray got;
        while (!got.contains(wanted) && socket->waitForReadyRead(60000))
            got += socket->readAll();
        EXPECT_TRUE(got.contains(wanted)) << got.toHex().toStdString();
        EXPECT_TRUE(got.contains("MQTT\x04")); // as --mqtt 3.1.1 says
    };
    set("D100=220");
    const PublisherProcess publisher(m_directory.path(),
                                     {"oven", "--names", "names.csv", "--sparkplug", "plant/line1",
                                      "--mqtt", "3.1.1", "--link", m_simulator.link(), "--broker",
                                      QString("mqtt://127.0.0.1:%1").arg(broker.serverPort())});
    readUntil(QByteArray::fromHex(D_22));
    readUntil(QByteArray::fromHex(D_22) + QByteArray::fromHex("2801"));
}

TEST_F(SparkplugTest, SpoolOfPlainMessagesIsRefused)
{
    m_broker.stop();
    auto publisher = publish({"oven"});
    publisher->waitFor("no connection to the broker");
    setAndAwaitSpool("11", "\"value\":1.1,");
    EXPECT_EQ(publisher->terminate(), 0);
    publisher = publishNode({"oven"});
    publisher->waitFor("kmr-publish.spool holds messages that are not of the Sparkplug node "
                       "plant/line1: deliver them as before, or name another file with --spool");
    m_broker.start();
}

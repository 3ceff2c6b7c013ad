#include "tests/kmr/publish/broker_process.h"

#include "tests/kmr/kmr_process.h"

#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <gtest/gtest.h>

namespace {

constexpr int PATIENCE_MS = 60000;

int freePort()
{
    QTcpServer server;
    EXPECT_TRUE(server.listen(QHostAddress::LocalHost, 0));
    return server.serverPort();
}

void runTool(const QString &program, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS)) << program.toStdString();
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
}

} // namespace

BrokerProcess::BrokerProcess(Kind kind) : m_kind(kind), m_port(freePort())
{
    QByteArray text = "user root\npersistence true\nretain_available true\n"
                      "queue_qos0_messages true\npersistence_location " +
                      m_directory.path().toLocal8Bit() + "/\nlistener " +
                      QByteArray::number(m_port) + " 127.0.0.1\n";
    if (kind == Kind::Encrypted)
        makeCertificates();
    if (kind == Kind::Encrypted)
        text += "cafile " + file("ca.pem").toLocal8Bit() + "\ncertfile " +
                file("kmr.pem").toLocal8Bit() + "\nkeyfile " + file("kmr.key").toLocal8Bit() +
                "\nrequire_certificate true\n";
    if (kind == Kind::Guarded)
        guard(text);
    else
        text += "allow_anonymous true\n";
    saveFile(file("mosquitto.conf"), text);
    start();
}

BrokerProcess::~BrokerProcess()
{
    stop();
}

void BrokerProcess::makeCertificates()
{
    const QStringList common = {"req",    "-x509",    "-newkey",
                                "ec",     "-pkeyopt", "ec_paramgen_curve:P-256",
                                "-nodes", "-days",    "30"};
    runTool("openssl", common + QStringList{"-subj", "/CN=localhost", "-addext",
                                            "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout",
                                            file("kmr.key"), "-out", file("kmr.pem")});
    saveFile(file("ca.pem"), loadFile(file("kmr.pem")));
}

void BrokerProcess::guard(QByteArray &configuration)
{
    QByteArray users;
    for (const char *const user : {"kmr", "panel", "nobody"})
        users += QByteArray(user) + ":secret\n";
    saveFile(file("users"), users);
    runTool("mosquitto_passwd", {"-U", file("users")}); // hashes them
    saveFile(file("rights"), "user kmr\ntopic readwrite line/#\n"
                             "user panel\ntopic readwrite line/valve/#\n");
    configuration += "allow_anonymous false\npassword_file " + file("users").toLocal8Bit() +
                     "\nacl_file " + file("rights").toLocal8Bit() + '\n';
}

void BrokerProcess::start()
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start("/usr/sbin/mosquitto", {"-c", file("mosquitto.conf")});
    ASSERT_TRUE(m_process.waitForStarted());
    for (;;) {
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", static_cast<quint16>(m_port));
        if (socket.waitForConnected(PATIENCE_MS))
            return;
        ASSERT_FALSE(m_process.waitForFinished(50)) << m_process.readAll().toStdString();
    }
}

void BrokerProcess::stop()
{
    m_process.terminate();
    EXPECT_TRUE(m_process.waitForFinished(PATIENCE_MS));
}

void BrokerProcess::configure(const QByteArray &line) const
{
    saveFile(file("mosquitto.conf"), loadFile(file("mosquitto.conf")) + line + '\n');
}

QString BrokerProcess::url() const
{
    return QString("%1://127.0.0.1:%2")
        .arg(m_kind == Kind::Encrypted ? "mqtts" : "mqtt")
        .arg(m_port);
}

QStringList BrokerProcess::clientOptions(const QString &user) const
{
    QStringList options = {"-V", "mqttv5", "-h", "127.0.0.1", "-p", QString::number(m_port)};
    if (!user.isEmpty())
        options += QStringList{"-u", user, "-P", "secret"};
    if (m_kind == Kind::Encrypted)
        options += QStringList{"--cafile",      file("ca.pem"), "--cert",
                               file("kmr.pem"), "--key",        file("kmr.key")};
    return options;
}

Subscriber::Subscriber(const BrokerProcess &broker, const QString &topic, const QString &id,
                       const QString &user, const QString &format)
{
    m_process.start("stdbuf", QStringList{"-oL", "mosquitto_sub"} + broker.clientOptions(user) +
                                  QStringList{"-t", topic, "-i", id, "-c", "-q", "1", "-x", "3600",
                                              "-F", format});
    EXPECT_TRUE(m_process.waitForStarted());
}

Subscriber::~Subscriber()
{
    m_process.kill();
    m_process.waitForFinished(PATIENCE_MS);
}

QString Subscriber::waitFor(const QString &pattern)
{
    const QRegularExpression expression(pattern);
    const QDeadlineTimer end(PATIENCE_MS);
    QString seen;
    for (;;) {
        while (!m_process.canReadLine() || end.hasExpired()) {
            if (!m_process.waitForReadyRead(static_cast<int>(end.remainingTime()))) {
                ADD_FAILURE() << pattern.toStdString() << " did not come, but\n"
                              << seen.toStdString();
                return {};
            }
        }
        const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
        if (expression.match(line).hasMatch())
            return line;
        seen += line + '\n';
    }
}

QStringList Subscriber::rest()
{
    return QString::fromUtf8(m_process.readAll()).split('\n', Qt::SkipEmptyParts);
}

void publishTo(const BrokerProcess &broker, const QString &topic, const QStringList &options,
               const QString &user, const QByteArray &input)
{
    runTool("mosquitto_pub",
            broker.clientOptions(user) + QStringList{"-t", topic, "-q", "1"} + options, input);
}

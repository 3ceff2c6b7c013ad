#include "simulator/tcp_server.h"

#include <QHostInfo>

#include <memory>
#include <utility>

namespace simulator {

namespace {

// The address of `host`, a null address if there is none.
QHostAddress addressOf(const QString &host)
{
    const QHostAddress address(host);
    if (!address.isNull())
        return address;
    const QList<QHostAddress> addresses = QHostInfo::fromName(host).addresses();
    return addresses.isEmpty() ? QHostAddress() : addresses.first();
}

} // namespace

TcpServer::TcpServer(Responder respond, Pacing pacing)
    : m_respond(std::move(respond)), m_pacing(pacing)
{
    m_reopening.setSingleShot(true);
    QObject::connect(&m_reopening, &QTimer::timeout, &m_server, [this] { reopen(); });
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { accept(); });
}

QString TcpServer::listen(const QString &host, quint16 port)
{
    const QHostAddress address = addressOf(host);
    if (address.isNull())
        return "no such host; give an address of this machine, for example 127.0.0.1";
    if (m_server.listen(address, port))
        return {};
    const bool taken = m_server.serverError() == QAbstractSocket::AddressInUseError;
    return m_server.errorString() +
           (taken ? "; end the program that uses this port or give another port"
                  : "; give an address of this machine and a port that you may use");
}

void TcpServer::accept()
{
    while (QTcpSocket *client = m_server.nextPendingConnection()) {
        client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        const auto collector = std::make_shared<modbus::LineCollector>();
        QObject::connect(client, &QTcpSocket::readyRead, client,
                         [this, client, collector] { receive(client, *collector); });
        QObject::connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    }
}

void TcpServer::receive(QTcpSocket *client, modbus::LineCollector &collector)
{
    for (const QByteArray &line : collector.take(client->readAll())) {
        Plan plan = m_respond(line);
        if (plan.closedFor) {
            closeFor(*plan.closedFor);
            return;
        }
        m_pacing.slowDown(plan, line.size());
        sendPieces(plan, *client, [client](const QByteArray &bytes) { client->write(bytes); });
    }
}

void TcpServer::closeFor(std::chrono::milliseconds time)
{
    m_address = m_server.serverAddress();
    m_port = m_server.serverPort();
    m_server.close();
    for (QTcpSocket *client : m_server.findChildren<QTcpSocket *>())
        client->abort();
    m_reopening.start(time);
}

// Retries until it succeeds: another program may use the port for a while.
void TcpServer::reopen()
{
    if (!m_server.listen(m_address, m_port))
        m_reopening.start(std::chrono::milliseconds(100));
}

} // namespace simulator

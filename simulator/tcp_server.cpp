#include "simulator/tcp_server.h"

#include "modbus/ascii.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QTcpSocket>

#include <memory>

namespace simulator {

namespace {

// The address that `host` stands for, a null address when there is none.
QHostAddress addressOf(const QString &host)
{
    const QHostAddress address(host);
    if (!address.isNull())
        return address;
    const QList<QHostAddress> addresses = QHostInfo::fromName(host).addresses();
    return addresses.isEmpty() ? QHostAddress() : addresses.first();
}

} // namespace

TcpServer::TcpServer(Controller &controller) : m_controller(controller)
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { accept(); });
}

QString TcpServer::listen(const QString &host, quint16 port)
{
    const QHostAddress address = addressOf(host);
    if (address.isNull())
        return QString("cannot listen on tcp://%1:%2: no such host; give an address of this "
                       "machine, for example 127.0.0.1")
            .arg(host, QString::number(port));
    if (m_server.listen(address, port))
        return {};
    const bool taken = m_server.serverError() == QAbstractSocket::AddressInUseError;
    return QString("cannot listen on tcp://%1:%2: %3; %4")
        .arg(host, QString::number(port), m_server.errorString(),
             taken ? "end the program that uses this port or give another port"
                   : "give an address of this machine and a port that you may use");
}

void TcpServer::accept()
{
    while (QTcpSocket *client = m_server.nextPendingConnection()) {
        client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        const auto collector = std::make_shared<modbus::LineCollector>();
        QObject::connect(client, &QTcpSocket::readyRead, client, [this, client, collector] {
            for (const QByteArray &line : collector->take(client->readAll()))
                client->write(m_controller.answer(line));
        });
        QObject::connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    }
}

} // namespace simulator

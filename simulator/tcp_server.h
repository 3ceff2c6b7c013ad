// Serves the simulated controller, or another responder, over TCP.
#pragma once

#include "modbus/ascii.h"
#include "simulator/pacing.h"
#include "simulator/responder.h"

#include <QHostAddress>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

namespace simulator {

// Serves any number of clients at the same time, each over a line of its own. Needs a running Qt
// event loop. What `respond` refers to must outlive the server.
class TcpServer {
public:
    // `respond`: answers the lines; respondAs() for a controller. `pacing`: the pace of each line.
    explicit TcpServer(Responder respond, Pacing pacing = Pacing());

    // Starts to listen at `host` (an address or a name) and `port` (0 for any free one). Returns an
    // empty text, or what went wrong and what to do about it.
    QString listen(const QString &host, quint16 port);

    // The port on which it listens; 0 before listen() and while a fault keeps the link closed.
    quint16 port() const
    {
        return m_server.serverPort();
    }

private:
    void accept();
    void receive(QTcpSocket *client, modbus::LineCollector &collector);
    void closeFor(std::chrono::milliseconds time);
    void reopen();

    const Responder m_respond;
    const Pacing m_pacing;
    QTcpServer m_server;
    QTimer m_reopening;     // while a fault keeps the link closed
    QHostAddress m_address; // where it listened before
    quint16 m_port = 0;
};

} // namespace simulator

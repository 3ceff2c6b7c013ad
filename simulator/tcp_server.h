// Serves the simulated controller over TCP.
#pragma once

#include "simulator/controller.h"

#include <QString>
#include <QTcpServer>

namespace simulator {

// Any number of clients talk to the same controller at the same time, each over a line of its own.
// Needs a running Qt event loop. The controller must outlive the server.
class TcpServer {
public:
    explicit TcpServer(Controller &controller);

    // Starts to listen at `host` (an address or a name) and `port` (0 for any free one). Returns an
    // empty text, or else what went wrong and what to do about it.
    QString listen(const QString &host, quint16 port);

    // The port that it listens on, 0 before listen().
    quint16 port() const
    {
        return m_server.serverPort();
    }

private:
    void accept();

    Controller &m_controller;
    QTcpServer m_server;
};

} // namespace simulator

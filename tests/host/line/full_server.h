// A listener whose queue is full: attempts to connect hang, as if the machine were off.
#pragma once

#include <QString>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

class FullServer {
public:
    FullServer()
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        auto *const general = reinterpret_cast<sockaddr *>(&address);
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(m_listener, general, size), 0);
        EXPECT_EQ(listen(m_listener, 0), 0);
        EXPECT_EQ(getsockname(m_listener, general, &size), 0);
        EXPECT_EQ(connect(m_client, general, size), 0);
        m_port = ntohs(address.sin_port);
    }
    ~FullServer()
    {
        close(m_client);
        close(m_listener);
    }
    FullServer(const FullServer &) = delete;
    FullServer &operator=(const FullServer &) = delete;

    QString link() const
    {
        return QString("tcp://127.0.0.1:%1").arg(m_port);
    }

    // Makes room for one attempt to connect, which is never answered.
    void makeRoom()
    {
        close(accept(m_listener, nullptr, nullptr));
    }

private:
    const int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int m_client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_port = 0;
};

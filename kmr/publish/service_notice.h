// Reports the state of a service to systemd, as sd_notify(3) describes it. Does nothing when no
// service manager listens.
#pragma once

#include <QByteArray>

#include <chrono>

namespace kmr {

class ServiceNotice {
public:
    ServiceNotice();

    // Whether a service manager listens.
    bool isListening() const
    {
        return !m_address.isEmpty();
    }

    // It has started.
    void ready();

    // Says that it is still working, if it is time to. To be called often.
    void alive();

    // It is about to end.
    void stopping();

private:
    void send(const QByteArray &text) const;

    const QByteArray m_address;                        // of the manager's socket, or empty
    std::chrono::steady_clock::duration m_interval{0}; // 0: nobody watches
    std::chrono::steady_clock::time_point m_next;
};

} // namespace kmr

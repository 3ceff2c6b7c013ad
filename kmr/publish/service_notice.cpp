#include "kmr/publish/service_notice.h"

#include <QtGlobal>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>

namespace kmr {

namespace {

// Half of what the manager waits for a sign of life.
std::chrono::microseconds watchdogInterval()
{
    const QByteArray process = qgetenv("WATCHDOG_PID");
    if (!process.isEmpty() && process.toLongLong() != getpid())
        return {};
    return std::chrono::microseconds(qgetenv("WATCHDOG_USEC").toLongLong() / 2);
}

} // namespace

ServiceNotice::ServiceNotice() : m_address(qgetenv("NOTIFY_SOCKET")), m_interval(watchdogInterval())
{
}

void ServiceNotice::ready()
{
    send("READY=1");
}

void ServiceNotice::alive()
{
    const auto now = std::chrono::steady_clock::now();
    if (m_interval.count() <= 0 || now < m_next)
        return;
    m_next = now + m_interval;
    send("WATCHDOG=1");
}

void ServiceNotice::stopping()
{
    send("STOPPING=1");
}

void ServiceNotice::send(const QByteArray &text) const
{
    sockaddr_un address = {};
    const auto length = static_cast<std::size_t>(m_address.size());
    if (length == 0 || length >= sizeof address.sun_path)
        return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_address.constData(), length);
    if (address.sun_path[0] == '@') // a name that is no file
        address.sun_path[0] = '\0';
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
    const ssize_t sent =
        sendto(descriptor, text.constData(), static_cast<std::size_t>(text.size()),
               MSG_NOSIGNAL | MSG_DONTWAIT, reinterpret_cast<const sockaddr *>(&address), size);
    static_cast<void>(sent); // the manager notices silence by itself
    close(descriptor);
}

} // namespace kmr

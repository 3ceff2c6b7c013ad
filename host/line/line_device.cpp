#include "host/line/line_device.h"

#include "host/line/link.h"

#include <algorithm>

namespace kmr {

using std::chrono::milliseconds;

bool LineDevice::isLost() const
{
    return kmr::isLost(m_device);
}

bool LineDevice::send(const QByteArray &characters, std::chrono::nanoseconds limit)
{
    if (m_tap)
        m_tap(true, characters);
    if (m_device.write(characters) != characters.size())
        return false;
    const TimePoint latest = m_clock() + limit;
    while (m_device.bytesToWrite() > 0) {
        const bool written = m_device.waitForBytesWritten(static_cast<int>(STOP_CHECK.count()));
        if (!written && (m_stop || isLost() || m_clock() >= latest))
            return false;
    }
    return true;
}

QByteArray LineDevice::receive()
{
    QByteArray bytes = m_device.readAll();
    if (!bytes.isEmpty())
        m_heard = m_clock();
    if (m_tap && !bytes.isEmpty())
        m_tap(false, bytes);
    return bytes;
}

LineDevice::Wait LineDevice::waitUntil(TimePoint deadline)
{
    for (;;) {
        if (m_stop)
            return Wait::Broken;
        if (m_device.bytesAvailable() > 0)
            return Wait::Characters;
        const auto left = std::chrono::ceil<milliseconds>(deadline - m_clock());
        if (left.count() <= 0)
            return Wait::TimeOver;
        if (m_waitObserver)
            m_waitObserver();
        const int wait = static_cast<int>(std::min(left, STOP_CHECK).count());
        if (!m_device.waitForReadyRead(wait) && m_device.bytesAvailable() == 0 && isLost())
            return Wait::Broken;
    }
}

} // namespace kmr

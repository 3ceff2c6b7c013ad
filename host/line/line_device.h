// Sends and receives characters on a line's device. Waits end when the stop flag is set.
#pragma once

#include <QByteArray>
#include <QIODevice>

#include <atomic>
#include <chrono>
#include <functional>
#include <utility>

namespace kmr {

using Clock = std::function<std::chrono::steady_clock::time_point()>;

// Is called with all characters as they are sent and as they arrive, also with useless ones.
using Tap = std::function<void(bool isSent, const QByteArray &characters)>;

class LineDevice {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    enum class Wait { Characters, TimeOver, Broken };

    // The stop flag is checked at least this often.
    static constexpr std::chrono::milliseconds STOP_CHECK{50};

    // All arguments by reference must outlive this. `tap` may be empty.
    LineDevice(QIODevice &device, const std::atomic<bool> &stop, Clock clock, Tap tap)
        : m_device(device), m_stop(stop), m_clock(std::move(clock)), m_tap(std::move(tap))
    {
    }

    // Is called every 50 ms during a wait.
    void setWaitObserver(std::function<void()> observer)
    {
        m_waitObserver = std::move(observer);
    }

    TimePoint now() const
    {
        return m_clock();
    }
    bool isStopped() const
    {
        return m_stop;
    }
    bool isLost() const;

    // Sends all characters. Returns false if the program stopped, the line was lost, or the device
    // did not accept them within `limit`.
    bool send(const QByteArray &characters, std::chrono::nanoseconds limit);

    // Returns all that has arrived; does not wait.
    QByteArray receive();

    // Returns whether more has arrived; does not wait.
    bool hasMore()
    {
        return m_device.waitForReadyRead(0);
    }

    // Waits for characters until the deadline. Broken: stopped, or the line is lost.
    Wait waitUntil(TimePoint deadline);

    // When characters last arrived.
    TimePoint heard() const
    {
        return m_heard;
    }

private:
    QIODevice &m_device;
    const std::atomic<bool> &m_stop;
    const Clock m_clock;
    const Tap m_tap;
    std::function<void()> m_waitObserver;
    TimePoint m_heard;
};

} // namespace kmr

// A line without hardware and without waiting: answers come from a function, and time passes only
// while the host waits for characters.
#pragma once

#include "host/line/poll_loop.h"

#include <QIODevice>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>
#include <functional>
#include <vector>

namespace kmr {

// Characters that arrive so many milliseconds after the request or the piece before.
struct Piece {
    int after;
    QByteArray bytes;
};

class ScriptedDevice : public QIODevice {
public:
    using Responder = std::function<std::vector<Piece>(const QByteArray &request)>;

    explicit ScriptedDevice(Responder responder) : m_responder(std::move(responder))
    {
        open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    }

    Clock clock()
    {
        return [this] { return m_now; };
    }

    std::chrono::milliseconds elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_now.time_since_epoch());
    }

    // All frames sent so far, and the time of each.
    const std::vector<QByteArray> &sent() const
    {
        return m_sent;
    }
    const std::vector<std::chrono::milliseconds> &sentAt() const
    {
        return m_sentAt;
    }

    // Characters that come without a request.
    void arrive(int after, const QByteArray &bytes)
    {
        schedule({after, bytes});
    }

    bool isSequential() const override
    {
        return true;
    }
    qint64 bytesAvailable() const override
    {
        return isOpen() ? m_arrived.size() + QIODevice::bytesAvailable() : 0;
    }

    bool waitForReadyRead(int milliseconds) override
    {
        const auto end = m_now + std::chrono::milliseconds(milliseconds);
        if (!isOpen() || m_coming.empty() || m_coming.front().first > end) {
            m_now = end;
            return false;
        }
        m_now = std::max(m_now, m_coming.front().first);
        m_arrived += m_coming.front().second;
        m_coming.pop_front();
        return true;
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 size = std::min<qint64>(maxSize, m_arrived.size());
        std::memcpy(data, m_arrived.constData(), static_cast<std::size_t>(size));
        m_arrived.remove(0, static_cast<int>(size));
        return size;
    }

    qint64 writeData(const char *data, qint64 size) override
    {
        const QByteArray request(data, static_cast<int>(size));
        m_sent.push_back(request);
        m_sentAt.push_back(elapsed());
        for (const Piece &piece : m_responder(request))
            schedule(piece);
        return size;
    }

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void schedule(const Piece &piece)
    {
        const TimePoint from = m_coming.empty() ? m_now : m_coming.back().first;
        m_coming.push_back({from + std::chrono::milliseconds(piece.after), piece.bytes});
    }

    const Responder m_responder;
    TimePoint m_now;
    std::deque<std::pair<TimePoint, QByteArray>> m_coming;
    QByteArray m_arrived;
    std::vector<QByteArray> m_sent;
    std::vector<std::chrono::milliseconds> m_sentAt;
};

} // namespace kmr

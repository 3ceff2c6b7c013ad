// A line without hardware and without waiting, to search for shifted answers: a driver that
// sends the requests of a test, a controller whose values name address and request, and strays.
#pragma once

#include "host/line/answer_form.h"
#include "host/line/poll_loop.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"

#include <QIODevice>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <vector>

namespace kmr {

// What a stray is, and when it comes.
struct Stray {
    int answer = 0;                     // counted from 0 over all answers, check questions included
    std::chrono::microseconds after{0}; // the answer's own time
    bool isLate = false;                // the answer itself; else its repetition
};

class StrayLine : public QIODevice {
public:
    using Micros = std::chrono::microseconds;
    using StraysOf = std::function<std::vector<Stray>(int answer)>;

    static constexpr Micros ANSWER_TIME{10000};

    explicit StrayLine(StraysOf straysOf) : m_straysOf(std::move(straysOf))
    {
        open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    }

    Clock clock()
    {
        return [this] { return m_now; };
    }

    // Whether `reply` is an answer to `request` that the controller made since beginRequest().
    bool isTrue(const QByteArray &request, const QByteArray &reply) const
    {
        const auto [begin, end] = m_made.equal_range(request);
        return std::any_of(begin, end, [&](const auto &made) { return made.second == reply; });
    }
    void beginRequest()
    {
        m_made.clear();
    }

    bool isSequential() const override
    {
        return true;
    }
    qint64 bytesAvailable() const override
    {
        return m_arrived.size();
    }

    bool waitForReadyRead(int milliseconds) override
    {
        const auto end = m_now + std::chrono::milliseconds(milliseconds);
        if (m_coming.empty() || m_coming.begin()->first > end) {
            m_now = end;
            return false;
        }
        m_now = std::max(m_now, m_coming.begin()->first);
        m_arrived += m_coming.begin()->second;
        m_coming.erase(m_coming.begin());
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
        const int number = m_answers++;
        const QByteArray request(data, static_cast<int>(size));
        const QByteArray answer = answerTo(request, number);
        m_made.emplace(request, answer);
        bool isLate = false;
        for (const Stray &stray : m_straysOf(number)) {
            m_coming.emplace(m_now + ANSWER_TIME + stray.after, answer);
            isLate = isLate || stray.isLate;
        }
        if (!isLate)
            m_coming.emplace(m_now + ANSWER_TIME, answer);
        return size;
    }

private:
    // Reads are answered with the request's number, so that no two answers are equal.
    static QByteArray answerTo(const QByteArray &line, int number)
    {
        const QByteArray request = modbus::decodeLine(line).message;
        if (!modbus::isRead(modbus::byteAt(request, 1)))
            return modbus::encodeLine(request.left(6));
        const int bytes = answerBytes(request);
        QByteArray message = request.left(2) + static_cast<char>(bytes);
        for (int i = 0; i < bytes; ++i)
            message += static_cast<char>(number >> (8 * (i % 4)));
        return modbus::encodeLine(message);
    }

    const StraysOf m_straysOf;
    std::chrono::steady_clock::time_point m_now;
    std::multimap<std::chrono::steady_clock::time_point, QByteArray> m_coming;
    QByteArray m_arrived;
    int m_answers = 0;
    std::multimap<QByteArray, QByteArray> m_made;
};

} // namespace kmr

// Counts the answers that each station owes, because one that comes late could be taken for that
// of another request.
#pragma once

#include <QByteArray>

#include <chrono>
#include <map>

namespace kmr {

// A station is named by its two characters in the frames.
class OwedAnswers {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit OwedAnswers(std::chrono::milliseconds timeout) : m_timeout(timeout) {}

    // A request goes out. `isRetry`: it is the last one once more; else what the station owed
    // before counts as lost.
    void noteSent(const QByteArray &station, bool isRetry, TimePoint now);

    // The wait for its answer ended, with an answer or without.
    void noteEnd(const QByteArray &station, bool isAnswered, TimePoint now);

    // A line too much came. True if the station owed it, `awaited` being those that the request in
    // flight waits for.
    bool noteStray(const QByteArray &station, int awaited, TimePoint now);

    // Whether anything was sent to the station.
    bool isAsked(const QByteArray &station) const
    {
        return m_stations.count(station) > 0;
    }

    // When the last answer that the station owes has come or can be taken for lost; the past when
    // it owes none.
    TimePoint until(const QByteArray &station) const;

private:
    struct Owed {
        int answers = 0;
        TimePoint firstSent; // the oldest of their requests
        TimePoint lastSent;
        TimePoint until;                     // then what has not come is taken for lost
        std::chrono::nanoseconds slowest{0}; // what came late, came within this time
    };

    const std::chrono::milliseconds m_timeout;
    std::map<QByteArray, Owed> m_stations;
};

} // namespace kmr

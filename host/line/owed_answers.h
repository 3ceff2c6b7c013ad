// Counts the answers that each station still owes: a late answer could be taken for the answer to
// another request.
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

    // A request is sent. `isRetry`: it is the last one again; if not, answers that the station owed
    // before count as lost.
    void noteSent(const QByteArray &station, bool isRetry, TimePoint now);

    // The wait for its answer ended, with an answer or without.
    void noteEnd(const QByteArray &station, bool isAnswered, TimePoint now);

    // A surplus line came. Returns whether the station owed it. `awaited`: the answers that the
    // request in flight waits for, 0 or 1.
    bool noteStray(const QByteArray &station, int awaited, TimePoint now);

    // Whether anything was sent to the station.
    bool isAsked(const QByteArray &station) const
    {
        return m_stations.count(station) > 0;
    }

    // When an answer that the station owes counts as lost; the past if it owes none.
    TimePoint until(const QByteArray &station) const;

private:
    struct Owed {
        int answers = 0;
        TimePoint firstSent; // the oldest of their requests
        TimePoint lastSent;
        TimePoint until;                     // when the answers count as lost
        std::chrono::nanoseconds slowest{0}; // time of the slowest late answer
    };

    const std::chrono::milliseconds m_timeout;
    std::map<QByteArray, Owed> m_stations;
};

} // namespace kmr

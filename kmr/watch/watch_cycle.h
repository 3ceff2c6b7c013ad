// The cycle of 'kmr watch': all requests that refresh everything once.
#pragma once

#include "host/line/poll_loop.h"

#include <QString>

#include <chrono>
#include <cstdint>

namespace kmr {

class WatchCycle {
public:
    using Time = std::chrono::steady_clock::time_point;

    // `wanted`: time from the begin of a cycle to that of the next; 0: as fast as the line allows.
    explicit WatchCycle(std::chrono::milliseconds wanted) : m_wanted(wanted) {}

    // The first cycle begins. `requests`: those of each cycle, 1 or more.
    void begin(int requests, Time now);

    // A request has ended, also if it is sent again. Those that write are not of the cycle.
    void note(const Exchange &exchange, Time now);

    // Cycles that ended so far.
    std::uint64_t ended() const
    {
        return m_ended;
    }

    // Time until the next request may be made: 0, or until the next cycle begins.
    std::chrono::nanoseconds pause(Time now) const;

    // The time of the last cycle, "103 ms", or with the wanted time "512/500 ms".
    QString text() const;

private:
    const std::chrono::milliseconds m_wanted;
    int m_requests = 1;
    int m_done = 0; // of this cycle
    std::uint64_t m_ended = 0;
    Time m_begin; // of this cycle, maybe still to come
    std::chrono::nanoseconds m_reached{0};
};

} // namespace kmr

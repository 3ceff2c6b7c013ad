// The figures of the line below the live table.
#pragma once

#include "host/line/poll_loop.h"
#include "host/line/statistics.h"

#include <QString>

#include <chrono>

namespace kmr {

class WatchRates {
public:
    void note(const Exchange &exchange);

    // "20.0 exchanges/s  cycle 512/500 ms  retries 0  given up 0  line used 13 %", with `cycle`
    // as WatchCycle gives it. The rates are those of the last whole second.
    QString text(const QString &cycle, const Statistics &statistics);

private:
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    int m_exchanges = 0;                // since m_begin
    std::chrono::nanoseconds m_busy{0}; // since m_begin, from each request to its answer's end
    double m_rate = 0;                  // exchanges a second
    double m_use = 0;                   // per cent of the time
};

} // namespace kmr

// The figures of a line and of its publisher, for PREFIX/$line and for Prometheus.
#pragma once

#include "host/line/statistics.h"

#include <QByteArray>

#include <map>
#include <set>
#include <string>

namespace kmr {

struct LineReport {
    qint64 time = 0; // milliseconds since 1970 UTC
    bool isLost = false;
    const Statistics &statistics;
    std::set<int> silentStations;
    std::uint64_t waiting = 0;         // messages that wait for the broker
    std::uint64_t dropped = 0;         // messages: no room, or refused by the broker
    std::uint64_t requests = 0;        // to write, carried out or answered
    std::uint64_t requestsRefused = 0; // because there were too many at once

    // For Prometheus alone.
    bool isConnected = false;                      // to the broker
    std::uint64_t spooled = 0;                     // messages on disk
    std::uint64_t spoolBytes = 0;                  // that they hold
    std::map<std::string, std::uint64_t> outcomes; // of requests to write: how many had which
};

// For PREFIX/$line.
QByteArray toJson(const LineReport &report);

} // namespace kmr

// The figures of a line and of its publisher, as JSON for PREFIX/$line.
#pragma once

#include "host/line/statistics.h"

#include <QByteArray>

#include <set>

namespace kmr {

struct LineReport {
    qint64 time = 0; // milliseconds since 1970 UTC
    bool isLost = false;
    const Statistics &statistics;
    std::set<int> silentStations;
    std::uint64_t waiting = 0;         // messages that wait for the broker
    std::uint64_t dropped = 0;         // messages that found no place
    std::uint64_t requests = 0;        // to write, carried out or answered
    std::uint64_t requestsRefused = 0; // because there were too many at once
};

QByteArray toJson(const LineReport &report);

} // namespace kmr

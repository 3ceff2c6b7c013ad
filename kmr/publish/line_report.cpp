#include "kmr/publish/line_report.h"

#include "kmr/json_value.h"
#include "kmr/publish/payload.h"

#include <cmath>

namespace kmr {

namespace {

double milliseconds(std::chrono::nanoseconds time)
{
    return std::round(static_cast<double>(time.count()) / 1e3) / 1e3;
}

Json roundTrips(const Statistics &statistics)
{
    if (statistics.good() == 0)
        return nullptr;
    const RoundTrips trips = statistics.roundTrips();
    Json object = Json::object();
    object["min"] = milliseconds(trips.min);
    object["median"] = milliseconds(trips.median);
    object["p95"] = milliseconds(trips.p95);
    object["p99"] = milliseconds(trips.p99);
    object["max"] = milliseconds(trips.max);
    return object;
}

} // namespace

QByteArray toJson(const LineReport &report)
{
    const Statistics &statistics = report.statistics;
    Json object = Json::object();
    object["time"] = utcText(report.time).toStdString();
    object["line"] = report.isLost ? "lost" : "open";
    object["exchanges"] = statistics.sent();
    object["good"] = statistics.good();
    object["retries"] = statistics.retries();
    object["give_ups"] = statistics.giveUps();
    object["checks"] = statistics.checks();
    object["strays"] = statistics.strays();
    object["round_trip_ms"] = roundTrips(statistics);
    object["silent_stations"] = report.silentStations;
    object["waiting"] = report.waiting;
    object["dropped"] = report.dropped;
    object["requests"] = report.requests;
    object["requests_refused"] = report.requestsRefused;
    return QByteArray::fromStdString(object.dump());
}

} // namespace kmr

#include "host/line/statistics.h"

#include <algorithm>

namespace kmr {

namespace {

// `sorted` isn't empty, `percent` is 1 to 100.
std::chrono::nanoseconds percentile(const std::vector<std::chrono::nanoseconds> &sorted,
                                    std::size_t percent)
{
    const std::size_t rank = (sorted.size() * percent + 99) / 100;
    return sorted[rank - 1];
}

QString milliseconds(std::chrono::nanoseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1e6, 'f', 3);
}

} // namespace

void Statistics::countGood(std::chrono::nanoseconds roundTrip)
{
    m_min = m_good == 0 ? roundTrip : std::min(m_min, roundTrip);
    m_max = std::max(m_max, roundTrip);
    if (m_roundTrips.size() < KEPT_ROUND_TRIPS)
        m_roundTrips.push_back(roundTrip);
    else
        m_roundTrips[m_good % KEPT_ROUND_TRIPS] = roundTrip;
    ++m_good;
}

void Statistics::countRetry()
{
    ++m_retries;
}

void Statistics::countGiveUp()
{
    ++m_giveUps;
}

void Statistics::countInterrupted()
{
    ++m_interrupted;
}

void Statistics::countCheck(std::chrono::nanoseconds)
{
    ++m_checks;
}

void Statistics::countStray(std::optional<std::chrono::nanoseconds> late)
{
    ++m_strays;
    if (!late)
        return;
    ++m_late;
    m_latest = std::max(m_latest, *late);
}

RoundTrips Statistics::roundTrips() const
{
    if (m_roundTrips.empty())
        return {};
    std::vector<std::chrono::nanoseconds> sorted = m_roundTrips;
    std::sort(sorted.begin(), sorted.end());
    return {m_min, percentile(sorted, 50), percentile(sorted, 95), percentile(sorted, 99), m_max};
}

QString toText(const RoundTrips &trips)
{
    return QString("round trip min/median/p95/p99/max %1/%2/%3/%4/%5 ms")
        .arg(milliseconds(trips.min), milliseconds(trips.median), milliseconds(trips.p95),
             milliseconds(trips.p99), milliseconds(trips.max));
}

QString summary(const Statistics &statistics)
{
    QString counts = QString("%1 requests sent, %2 good, %3 sent again, %4 given up")
                         .arg(statistics.sent())
                         .arg(statistics.good())
                         .arg(statistics.retries())
                         .arg(statistics.giveUps());
    if (statistics.strays() > 0)
        counts += QString(", %1 answers out of step").arg(statistics.strays());
    return statistics.good() == 0 ? counts : counts + '\n' + toText(statistics.roundTrips());
}

} // namespace kmr

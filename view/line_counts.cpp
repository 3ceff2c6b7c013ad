#include "view/line_counts.h"

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr double SILENT_SECONDS = 3;   // of attempts without an answer
constexpr double LIMPING_SHARE = 0.99; // of answered attempts, below which a station limps

void noteRecent(std::deque<StationSecond> &recent, std::int64_t second, bool isAnswered)
{
    if (recent.empty() || recent.back().second != second)
        recent.push_back({second});
    if (recent.size() > LineCounts::RECENT_SECONDS)
        recent.pop_front();
    ++(isAnswered ? recent.back().answered : recent.back().failed);
}

} // namespace

void LineCounts::clear()
{
    *this = LineCounts();
}

void LineCounts::keepStations(const std::set<int> &stations)
{
    for (auto station = m_stations.begin(); station != m_stations.end();)
        station =
            stations.count(station->first) > 0 ? std::next(station) : m_stations.erase(station);
}

void LineCounts::add(const ExchangeNews &exchange)
{
    if (exchange.outcome == Exchange::Outcome::PassedOver)
        return;
    const auto second = static_cast<std::int64_t>(std::floor(exchange.time));
    if (m_seconds.empty() || m_seconds.back().second != second)
        m_seconds.push_back({second});
    if (m_seconds.size() > MOST_SECONDS)
        m_seconds.pop_front();
    SecondCounts &counts = m_seconds.back();
    StationCounts &station = m_stations[exchange.station];
    counts.characters += exchange.characters;
    const bool isRefused = exchange.failure.exceptionCode != 0;
    const bool isGood = exchange.outcome == Exchange::Outcome::Good;
    station.lastAttempt = exchange.time;
    noteRecent(station.recent, second, isGood || isRefused);
    if (isGood || isRefused)
        station.lastAnswer = exchange.time;
    if (isRefused) {
        ++counts.refused;
        ++station.refused;
    } else if (!isGood) {
        ++(exchange.failure.fault == ReplyFault::Silence ? counts.silent : counts.faulty);
        ++station.failed;
    }
    if (!isGood)
        return;
    const double roundTrip = std::chrono::duration<double>(exchange.roundTrip).count();
    ++counts.good;
    ++station.good;
    counts.roundTrips += roundTrip;
    counts.longest = std::max(counts.longest, roundTrip);
    station.roundTrips += roundTrip;
    station.longest = std::max(station.longest, roundTrip);
    m_roundTrips.push_back(roundTrip);
    if (m_roundTrips.size() > MOST_ROUND_TRIPS)
        m_roundTrips.pop_front();
}

double LineCounts::rate(double now, int seconds) const
{
    const auto end = static_cast<std::int64_t>(std::floor(now));
    int count = 0;
    for (const SecondCounts &counts : m_seconds) {
        if (counts.second >= end - seconds && counts.second < end)
            count += counts.good + counts.refused + counts.silent + counts.faulty;
    }
    return static_cast<double>(count) / seconds;
}

double LineCounts::wireShare(double now, int seconds, std::chrono::nanoseconds characterTime) const
{
    const auto end = static_cast<std::int64_t>(std::floor(now));
    qsizetype characters = 0;
    for (const SecondCounts &counts : m_seconds) {
        if (counts.second >= end - seconds && counts.second < end)
            characters += counts.characters;
    }
    return std::chrono::duration<double>(characterTime).count() * static_cast<double>(characters) /
           seconds;
}

StationState stateOf(const StationCounts &counts)
{
    if (counts.lastAnswer == 0)
        return {StationState::Kind::NeverAnswered, 0, 0};
    const double silent = counts.lastAttempt - counts.lastAnswer;
    if (silent > SILENT_SECONDS)
        return {StationState::Kind::Silent, 0, silent};
    int answered = 0;
    int failed = 0;
    for (const StationSecond &second : counts.recent) {
        answered += second.answered;
        failed += second.failed;
    }
    const double share = static_cast<double>(answered) / std::max(1, answered + failed);
    return {share < LIMPING_SHARE ? StationState::Kind::Limps : StationState::Kind::Good, share, 0};
}

RoundTripBins binsOf(const std::deque<double> &roundTrips, int bins)
{
    RoundTripBins result;
    result.counts.resize(static_cast<std::size_t>(bins));
    if (roundTrips.empty())
        return result;
    std::vector<double> sorted(roundTrips.begin(), roundTrips.end());
    const std::size_t most = (sorted.size() - 1) * 99 / 100;
    std::nth_element(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(most),
                     sorted.end());
    result.width = std::max(sorted[most] * 1.1, 1e-6) / bins;
    for (const double roundTrip : roundTrips) {
        const auto bin = static_cast<std::size_t>(roundTrip / result.width);
        ++result.counts[std::min(bin, result.counts.size() - 1)];
    }
    return result;
}

} // namespace kmr

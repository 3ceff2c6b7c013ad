// What the exchanges say of the line: by second, by station and by round trip.
#pragma once

#include "view/line_news.h"

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <vector>

namespace kmr {

struct SecondCounts {
    std::int64_t second = 0; // since 1970
    int good = 0;
    int refused = 0;
    int silent = 0;        // attempts without any answer
    int faulty = 0;        // attempts with a bad one
    double longest = 0;    // round trip, seconds
    double roundTrips = 0; // their sum
    qsizetype characters = 0;
};

// One station in one second.
struct StationSecond {
    std::int64_t second = 0;
    int answered = 0;
    int failed = 0;
};

struct StationCounts {
    std::uint64_t good = 0;
    std::uint64_t refused = 0;
    std::uint64_t failed = 0; // attempts without a good answer
    double lastAnswer = 0;    // time of it; 0: none
    double lastAttempt = 0;
    std::deque<StationSecond> recent; // of the last minute in which it was asked
    double longest = 0;
    double roundTrips = 0; // their sum
};

class LineCounts {
public:
    static constexpr std::size_t MOST_SECONDS = 3600;
    static constexpr std::size_t RECENT_SECONDS = 60;
    static constexpr std::size_t MOST_ROUND_TRIPS = 20000;

    void add(const ExchangeNews &exchange);
    void clear();

    // Forgets the other stations; the counts of the line stay.
    void keepStations(const std::set<int> &stations);

    // The oldest first; seconds without an exchange are left out.
    const std::deque<SecondCounts> &seconds() const
    {
        return m_seconds;
    }
    const std::map<int, StationCounts> &stations() const
    {
        return m_stations;
    }
    // The newest, in seconds.
    const std::deque<double> &roundTrips() const
    {
        return m_roundTrips;
    }

    // Of the last so many whole seconds before `now`: exchanges a second, and the share of the time
    // that their characters took on the wire.
    double rate(double now, int seconds) const;
    double wireShare(double now, int seconds, std::chrono::nanoseconds characterTime) const;

private:
    std::deque<SecondCounts> m_seconds;
    std::map<int, StationCounts> m_stations;
    std::deque<double> m_roundTrips;
};

// How a station answers.
struct StationState {
    enum class Kind { Good, Limps, Silent, NeverAnswered };

    Kind kind = Kind::Good;
    double share = 1;         // of the attempts of the last minute that were answered
    double silentSeconds = 0; // since the last answer, of Silent
};
StationState stateOf(const StationCounts &counts);

// How often each of `bins` equal steps from 0 on holds a round trip; those beyond the last step,
// which 99 of 100 do not reach, count there.
struct RoundTripBins {
    double width = 0; // seconds
    std::vector<int> counts;
};
RoundTripBins binsOf(const std::deque<double> &roundTrips, int bins);

} // namespace kmr

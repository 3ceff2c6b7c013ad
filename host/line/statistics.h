// Counts of what went over the link, and the round-trip times.
#pragma once

#include <QString>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kmr {

// Five figures of a set of round-trip times. Percentiles are nearest-rank.
struct RoundTrips {
    std::chrono::nanoseconds min{0};
    std::chrono::nanoseconds median{0};
    std::chrono::nanoseconds p95{0};
    std::chrono::nanoseconds p99{0};
    std::chrono::nanoseconds max{0};
};

class Statistics {
public:
    // Round trips kept for the percentiles, the newest ones.
    static constexpr std::size_t KEPT_ROUND_TRIPS = 65536;

    void countGood(std::chrono::nanoseconds roundTrip);
    void countRetry();
    void countGiveUp();
    void countCheck(std::chrono::nanoseconds roundTrip);           // 0: no answer came
    void countStray(std::optional<std::chrono::nanoseconds> late); // late: time since its request
    void countInterrupted(); // sent, but the line was lost or the user stopped before the answer

    std::uint64_t sent() const
    {
        return m_good + m_retries + m_giveUps + m_interrupted;
    }
    std::uint64_t good() const
    {
        return m_good;
    }
    // Bad exchanges after which the request was sent again.
    std::uint64_t retries() const
    {
        return m_retries;
    }
    std::uint64_t giveUps() const
    {
        return m_giveUps;
    }

    // Check questions (InStep), which are not counted as requests.
    std::uint64_t checks() const
    {
        return m_checks;
    }
    // Answers that no request waited for, and the late ones among them.
    std::uint64_t strays() const
    {
        return m_strays;
    }
    std::uint64_t late() const
    {
        return m_late;
    }
    // The longest time from a request to its late answer.
    std::chrono::nanoseconds latest() const
    {
        return m_latest;
    }

    // All zero before the first good exchange.
    RoundTrips roundTrips() const;

private:
    std::uint64_t m_good = 0;
    std::uint64_t m_retries = 0;
    std::uint64_t m_giveUps = 0;
    std::uint64_t m_interrupted = 0;
    std::uint64_t m_checks = 0;
    std::uint64_t m_strays = 0;
    std::uint64_t m_late = 0;
    std::chrono::nanoseconds m_latest{0};
    std::vector<std::chrono::nanoseconds> m_roundTrips; // a ring once it is full
    std::chrono::nanoseconds m_min{0};
    std::chrono::nanoseconds m_max{0};
};

// "round trip min/median/p95/p99/max 1.500/1.610/2.200/2.900/3.100 ms"
QString toText(const RoundTrips &trips);

// The summary at the end of a run: a line of counts, a line of round trips if there were any, and
// the answers out of step if there were any.
QString summary(const Statistics &statistics);

} // namespace kmr

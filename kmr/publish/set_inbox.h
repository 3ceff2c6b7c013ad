// Requests on their way from the network to the polling. A flood of them is limited and counted.
// Any function may be called from any thread.
#pragma once

#include "kmr/publish/broker.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace kmr {

class SetInbox {
public:
    static constexpr std::size_t MOST_WAITING = 32;
    static constexpr std::size_t MOST_REFUSED = 20; // that are remembered for an answer

    // Adds all that one message asks for, or refuses all if there is no room for it.
    void add(std::vector<Incoming> requests);

    // The oldest that waits.
    std::optional<Incoming> take();

    // Those that were refused since the last call, the first MOST_REFUSED of them.
    std::vector<Incoming> takeRefused();

    // How many were refused so far.
    std::uint64_t refused() const;

    // Sleeps for this time, or until a request waits.
    void await(std::chrono::nanoseconds time);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_change;
    std::deque<Incoming> m_waiting;
    std::vector<Incoming> m_refused;
    std::uint64_t m_refusedCount = 0;
};

} // namespace kmr

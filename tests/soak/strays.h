// Makes a controller's answers stray: each comes twice, late, or along with others.
#pragma once

#include "simulator/responder.h"

#include <chrono>
#include <random>

namespace soak {

struct StraySettings {
    double probability = 0; // that an answer strays
    bool isAlone = true;    // a stray has come before the next one is made
    std::chrono::milliseconds timeout{20};
};

// Not for several threads.
class Strays {
public:
    explicit Strays(StraySettings settings = {}, std::uint64_t seed = 0)
        : m_settings(settings), m_random(seed)
    {
    }

    // The plan of an answer, with what strays.
    simulator::Plan stray(simulator::Plan plan);

private:
    bool isTimeForOne();
    std::chrono::microseconds upTo(std::chrono::microseconds most);

    StraySettings m_settings;
    std::mt19937_64 m_random;
    // When the last one was made; one of an earlier line may still be on its way.
    std::chrono::steady_clock::time_point m_last = std::chrono::steady_clock::now();
    QByteArray m_kept; // by a gateway, to come all at once
    int m_keeps = 0;   // answers that it still keeps
};

} // namespace soak

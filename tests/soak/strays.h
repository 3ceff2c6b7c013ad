// Makes a controller's answers stray: each comes twice, late, or together with others.
#pragma once

#include "simulator/responder.h"

#include <chrono>
#include <random>

namespace soak {

struct StraySettings {
    double probability = 0; // that an answer strays
    bool isAlone = true;    // the effect of a stray is over before the next one is made
    std::chrono::milliseconds timeout{20};
};

// Not thread-safe.
class Strays {
public:
    explicit Strays(std::uint64_t seed) : m_random(seed) {}

    void set(const StraySettings &settings)
    {
        m_settings = settings;
    }

    // The plan of an answer, with what strays.
    simulator::Plan stray(simulator::Plan plan);

    // How many strayed so far.
    int count() const
    {
        return m_count;
    }

private:
    bool isTimeForOne();
    std::chrono::microseconds upTo(std::chrono::microseconds most);

    StraySettings m_settings;
    std::mt19937_64 m_random;
    std::chrono::steady_clock::time_point m_isQuietFrom; // the effect of the last one is over
    int m_count = 0;
    QByteArray m_kept; // by a gateway, to come all at once
    int m_keeps = 0;   // answers that it still keeps
};

} // namespace soak

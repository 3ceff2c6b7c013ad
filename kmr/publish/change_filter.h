// Decides which samples of a tag are worth a message: changes, and heartbeats.
#pragma once

#include "kmr/publish/payload.h"

#include <chrono>

namespace kmr {

class ChangeFilter {
public:
    using Time = std::chrono::steady_clock::time_point;

    // `deadband`: numbers that differ by less from the published ones are not news; 0: each
    // change is. `heartbeat`: after this time everything is; 0: never.
    ChangeFilter(double deadband, std::chrono::milliseconds heartbeat)
        : m_deadband(deadband), m_heartbeat(heartbeat)
    {
    }

    // Whether the sample is to be published. Texts, and values with a type that is not a number,
    // have no deadband.
    bool isNews(const Tag &tag, const Sample &sample, Time now) const;

    // It was published.
    void notePublished(Sample sample, Time now);

private:
    bool isOtherValue(const Tag &tag, const Values &values) const;

    const double m_deadband;
    const std::chrono::milliseconds m_heartbeat;
    bool m_hasPublished = false;
    Sample m_published;
    Time m_time; // when it was
};

} // namespace kmr

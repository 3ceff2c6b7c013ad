#include "host/line/station_pauses.h"

#include <algorithm>

namespace kmr {

void StationPauses::noteGiveUp(int station, TimePoint now)
{
    Silence &silence = m_silent[station];
    silence.pause = std::clamp(2 * silence.pause, FIRST_PAUSE, LONGEST_PAUSE);
    silence.until = now + silence.pause * m_timeout;
}

bool StationPauses::isSilent(int station) const
{
    const auto silence = m_silent.find(station);
    return silence != m_silent.end() && silence->second.pause > FIRST_PAUSE;
}

Turn StationPauses::turnOf(int station, TimePoint now) const
{
    if (m_silent.count(station) == 0)
        return Turn::Ask;
    return isPausing(station, now) && canAnotherBeAsked(station, now) ? Turn::PassOver
                                                                      : Turn::AskOnce;
}

bool StationPauses::isPausing(int station, TimePoint now) const
{
    const auto silence = m_silent.find(station);
    return silence != m_silent.end() && now < silence->second.until;
}

bool StationPauses::canAnotherBeAsked(int station, TimePoint now) const
{
    return std::any_of(m_stations.begin(), m_stations.end(),
                       [&](int other) { return other != station && !isPausing(other, now); });
}

} // namespace kmr

#include "host/station_pauses.h"

#include <algorithm>

namespace kmr {

void StationPauses::noteGiveUp(int station, TimePoint now)
{
    Silence &silence = m_silent[station];
    silence.until = now + silence.nextPause * m_timeout;
    silence.nextPause = std::clamp(2 * silence.nextPause, 1, LONGEST_PAUSE);
}

Turn StationPauses::turnOf(int station, TimePoint now) const
{
    if (m_silent.count(station) == 0 || m_stations.size() < 2)
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

#include "kmr/reconnection.h"

#include <algorithm>
#include <thread>

namespace kmr {

using std::chrono::steady_clock;

bool Reconnection::await(const std::function<bool()> &isOver)
{
    constexpr std::chrono::milliseconds STOP_CHECK(50);
    steady_clock::time_point next = steady_clock::now() + m_pause;
    while (!isOver()) {
        std::this_thread::sleep_for(STOP_CHECK);
        if (steady_clock::now() < next)
            continue;
        m_pause = std::min(2 * m_pause, LONGEST_PAUSE);
        if (m_connection.reconnect())
            return true;
        next = steady_clock::now() + m_pause;
    }
    return false;
}

} // namespace kmr

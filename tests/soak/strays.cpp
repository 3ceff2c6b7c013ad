#include "tests/soak/strays.h"

namespace soak {

namespace {

using std::chrono::microseconds;

constexpr int LATEST = 20;          // timeouts
constexpr int HARMFUL = 5;          // timeouts after a stray has come
constexpr microseconds TWICE(8000); // about three exchanges
constexpr int MOST_KEPT = 3;        // answers

} // namespace

simulator::Plan Strays::stray(simulator::Plan plan)
{
    if (plan.pieces.empty())
        return plan;
    if (m_keeps > 0) {
        m_kept += plan.pieces.back().bytes;
        plan.pieces.clear();
        if (--m_keeps == 0)
            plan.pieces.push_back({microseconds(0), std::exchange(m_kept, {})});
        return plan;
    }
    if (!isTimeForOne())
        return plan;
    ++m_count;
    microseconds delay(0);
    switch (m_random() % 5) {
    case 0:
        m_keeps = m_settings.isAlone ? 0 : 1 + static_cast<int>(m_random() % MOST_KEPT);
        break;
    case 1:
    case 2:
        delay = upTo(LATEST * m_settings.timeout);
        plan.pieces.front().after += delay;
        break;
    default:
        delay = upTo(TWICE);
        plan.pieces.push_back({delay, plan.pieces.back().bytes});
        break;
    }
    m_isQuietFrom = std::chrono::steady_clock::now() + delay + HARMFUL * m_settings.timeout;
    return plan;
}

bool Strays::isTimeForOne()
{
    if (m_settings.isAlone && std::chrono::steady_clock::now() < m_isQuietFrom)
        return false;
    return std::uniform_real_distribution<>(0, 1)(m_random) < m_settings.probability;
}

microseconds Strays::upTo(microseconds most)
{
    return microseconds(m_random() % static_cast<std::uint64_t>(most.count()));
}

} // namespace soak

#include "tests/soak/strays.h"

namespace soak {

namespace {

using std::chrono::microseconds;

constexpr int LATEST = 20;          // timeouts
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
    switch (m_random() % 5) {
    case 0:
        m_keeps = m_settings.isAlone ? 0 : 1 + static_cast<int>(m_random() % MOST_KEPT);
        break;
    case 1:
    case 2:
        plan.pieces.front().after += upTo(LATEST * m_settings.timeout);
        break;
    default:
        plan.pieces.push_back({upTo(TWICE), plan.pieces.back().bytes});
        break;
    }
    return plan;
}

bool Strays::isTimeForOne()
{
    const auto now = std::chrono::steady_clock::now();
    const bool isQuiet = now - m_last > (LATEST + 5) * m_settings.timeout;
    if ((m_settings.isAlone && !isQuiet) ||
        std::uniform_real_distribution<>(0, 1)(m_random) >= m_settings.probability)
        return false;
    m_last = now;
    return true;
}

microseconds Strays::upTo(microseconds most)
{
    return microseconds(m_random() % static_cast<std::uint64_t>(most.count()));
}

} // namespace soak

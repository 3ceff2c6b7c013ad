#include "host/session/quality.h"

namespace kmr {

namespace {

constexpr int BLOCK_BITS = 16;

} // namespace

QString toText(const Failure &failure)
{
    if (failure.exceptionCode != 0)
        return "refused: " + exceptionText(failure.exceptionCode);
    return toText(failure.fault);
}

void QualityMap::set(const ElementRange &run, const ElementState &state)
{
    for (int number = run.first; number < run.end(); ++number)
        m_states[{run.station, run.area, number}] = state;
}

void QualityMap::setStation(int station, const ElementState &state)
{
    for (auto &entry : m_states) {
        if (std::get<0>(entry.first) == station)
            entry.second = state;
    }
}

ElementState QualityMap::worst(const ElementRange &run) const
{
    for (int number = run.first; number < run.end(); ++number) {
        const auto found = m_states.find({run.station, run.area, number});
        if (found == m_states.end())
            return {};
        if (found->second.quality != Quality::Good)
            return found->second;
    }
    return {Quality::Good, {}};
}

ElementRange disturbedBy(const ElementRange &written)
{
    ElementRange run = written;
    if (isBitArea(run.area)) {
        run.first = written.first / BLOCK_BITS * BLOCK_BITS;
        run.count = (written.end() + BLOCK_BITS - 1) / BLOCK_BITS * BLOCK_BITS - run.first;
    } else if (isCounterArea(run.area)) {
        ++run.count;
    }
    return run;
}

} // namespace kmr

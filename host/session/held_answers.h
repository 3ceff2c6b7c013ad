// The content of answers that are not confirmed yet.
#pragma once

#include "host/session/quality.h"
#include "host/tags/element_range.h"

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace kmr {

// A good answer or a refusal to one read request.
struct HeldAnswer {
    std::uint64_t number = 0; // Exchange::number
    ElementRange run;
    ElementState state;                // the new state of the run
    std::vector<std::uint32_t> values; // one for each element if the state is Good
    std::set<int> spoilt;              // numbers of elements that were written since
};

class HeldAnswers {
public:
    void add(HeldAnswer answer)
    {
        m_answers[answer.run.station].push_back(std::move(answer));
    }

    // The elements were written: answers from before no longer apply to them.
    void spoil(const ElementRange &run);

    // Removes the answers of a station up to this number and returns them, the oldest first.
    std::vector<HeldAnswer> take(int station, std::uint64_t upTo);

    // Drops all answers of a station.
    void drop(int station)
    {
        m_answers.erase(station);
    }

    void clear()
    {
        m_answers.clear();
    }

private:
    std::map<int, std::vector<HeldAnswer>> m_answers; // by station
};

} // namespace kmr

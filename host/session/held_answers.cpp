#include "host/session/held_answers.h"

#include <algorithm>
#include <utility>

namespace kmr {

void HeldAnswers::spoil(const ElementRange &run)
{
    for (HeldAnswer &answer : m_answers[run.station]) {
        if (answer.run.area != run.area)
            continue;
        const int end = std::min(run.end(), answer.run.end());
        for (int number = std::max(run.first, answer.run.first); number < end; ++number)
            answer.spoilt.insert(number);
    }
}

std::vector<HeldAnswer> HeldAnswers::take(int station)
{
    return std::exchange(m_answers[station], {});
}

} // namespace kmr

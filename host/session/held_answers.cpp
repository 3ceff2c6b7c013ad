#include "host/session/held_answers.h"

#include <algorithm>
#include <iterator>

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

std::vector<HeldAnswer> HeldAnswers::take(int station, std::uint64_t upTo)
{
    std::vector<HeldAnswer> &held = m_answers[station];
    const auto end = std::find_if(held.begin(), held.end(), [upTo](const HeldAnswer &answer) {
        return answer.number > upTo;
    });
    std::vector<HeldAnswer> taken(std::make_move_iterator(held.begin()),
                                  std::make_move_iterator(end));
    held.erase(held.begin(), end);
    return taken;
}

} // namespace kmr

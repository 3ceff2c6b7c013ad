#include "view/poll_plan.h"

#include "host/session/request_ranges.h"

namespace kmr {

PollPlan planOf(const DriverFunctions &driver, const PlanQuestion &question)
{
    const Neighbours neighbours = question.inStep ? Neighbours::Unlike : Neighbours::Any;
    const QList<KEY_ADDRESS> keys =
        question.isRaw ? toRawKeys(question.tags)
                       : toKeys(readRanges(question.tags, question.groupLimit, neighbours));
    PollPlan plan;
    plan.tags = question.tags;
    plan.cycle = pollCycleOf(driver, keys, question.tags, question.groupLimit);
    plan.cost = question.inStep ? costInStep(plan.cycle) : costOf(plan.cycle);
    plan.time = question.characterTime * plan.cost.characters() + question.gap * plan.cost.requests;
    return plan;
}

std::vector<CellState> cellsOf(const PollPlan &plan, const PollBlock &block)
{
    std::vector<CellState> cells(static_cast<std::size_t>(block.refreshed.count),
                                 CellState::Unasked);
    for (const Tag &tag : plan.tags) {
        if (!overlap(tag.elements, block.refreshed))
            continue;
        for (int number = tag.elements.first; number < tag.elements.end(); ++number) {
            const int cell = number - block.refreshed.first;
            if (cell >= 0 && cell < block.refreshed.count)
                cells[static_cast<std::size_t>(cell)] = CellState::Asked;
        }
    }
    return cells;
}

} // namespace kmr

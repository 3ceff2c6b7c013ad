// What polling the tags takes: as it is, and what if.
#pragma once

#include "host/session/cycle_cost.h"
#include "host/session/poll_cycle.h"
#include "host/tags/tag.h"

#include <chrono>
#include <vector>

namespace kmr {

struct PlanQuestion {
    std::vector<Tag> tags;
    int groupLimit = 8;
    bool inStep = true;
    bool isRaw = false; // the tags as they are typed, as another host may pass them to the driver
    std::chrono::nanoseconds characterTime{0};
    std::chrono::milliseconds gap{0};
};

struct PollPlan {
    PollCycle cycle;
    CycleCost cost;                   // of one round
    std::chrono::nanoseconds time{0}; // of one round, on the wire and silent
    std::vector<Tag> tags;            // that were asked for
};

// Throws Error (Usage) as readRanges() does. `driver`: one that has no session.
PollPlan planOf(const DriverFunctions &driver, const PlanQuestion &question);

// What is read of an element by a block.
enum class CellState { Asked, Unasked };

// Of each element of the block.
std::vector<CellState> cellsOf(const PollPlan &plan, const PollBlock &block);

} // namespace kmr

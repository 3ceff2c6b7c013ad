// The poll plan as the model understands it: which elements each read block covers.
#pragma once

#include "tests/properties/model_frames.h"

#include <vector>

namespace model {

// One address run passed by the host.
struct Run {
    int station = 0;
    std::string area;
    int address = 0;
    int count = 0;
    bool bits = false; // the elements are single bits (one-shot reads only)
};

// The read blocks for `runs` in polling order. Limits below 1 count as 1.
std::vector<Variable> pollPlan(const std::vector<Run> &runs, int groupLimit);

} // namespace model

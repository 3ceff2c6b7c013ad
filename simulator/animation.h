// A little life in the simulated controller's memory.
#pragma once

#include "simulator/memory.h"

namespace simulator {

// One step, meant for a timer: counter CV2 200 goes up by one, word D 0 goes up by 7 and falls back
// below 1000, and one of the inputs X 0 to X 7, the next one each time, is on. The step depends on
// the memory alone, so that it goes on from what a panel wrote.
void advance(Memory &memory);

} // namespace simulator

// Changes values in the simulated controller's memory.
#pragma once

#include "simulator/memory.h"

namespace simulator {

// One step, to be called by a timer: counter CV2 200 goes up by 1, word D 0 goes up by 7 modulo
// 1000, and one of the inputs X 0 to X 7, the next one each time, is on. The step depends only on
// the memory, so that it continues from what a panel wrote.
void advance(Memory &memory);

} // namespace simulator

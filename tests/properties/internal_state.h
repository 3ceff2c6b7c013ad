// The internal state of the driver: its lists, its store and its counters.
#pragma once

#include "tests/properties/model_driver.h"

#include <string>

// The differences of the linked driver's state from that of the model; empty if there are none.
// With the loaded library, whose state is hidden, there are none.
std::string internalDifference(const model::Driver &expected);

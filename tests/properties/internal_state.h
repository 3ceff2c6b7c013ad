// What no exported function shows: the driver's lists, its store and its counters.
#pragma once

#include "tests/properties/model_driver.h"

#include <string>

// What of the linked driver's state differs from the model's; empty when nothing does. With the
// loaded library, whose state is hidden, nothing ever differs.
std::string internalDifference(const model::Driver &expected);

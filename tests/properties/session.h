// A session: calls made to the real library, with or without the model.
#pragma once

#include "tests/properties/call.h"

#include <cstdint>
#include <string>
#include <vector>

// What differed first, and at which call; empty when driver and model agree.
std::string firstDifference(const std::vector<Call> &calls);

// The session without the calls, and the list entries, that its failing doesn't need.
std::vector<Call> shrunk(std::vector<Call> calls);

// A hash of all results of the library.
std::uint64_t traceOf(const std::vector<Call> &calls);

// Numbers of exported calls in `calls`.
long exportedCalls(const std::vector<Call> &calls);

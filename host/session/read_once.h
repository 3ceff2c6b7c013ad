// Reads tags once, for sure: a value is shown only when the controller has just answered with it.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"

#include <vector>

namespace kmr {

struct Reading {
    RequestResult result;
    Values values; // only when the result is Done
};

// Reads all tags once, in the order of the tags. Words and counters are read by one-shot reads,
// bits are polled, since the driver has no one-shot reads for them. A station that does not answer
// is not asked again. Replaces the poll plan.
std::vector<Reading> readNow(Session &session, const std::vector<Tag> &tags);

} // namespace kmr

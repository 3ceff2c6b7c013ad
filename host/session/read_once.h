// Reads tags once, for sure: a value is shown only when the controller has just answered with it.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"

#include <vector>

namespace kmr {

struct Reading {
    RequestResult result; // NotSent: not asked
    Values values;        // only when the result is Done
    QString silentTag;    // not asked, because its station did not answer this tag
};

// Reads all tags once, in the order of the tags. Words and counters are read by one-shot reads,
// bits are polled, since the driver has no one-shot reads for them. A station that leaves two
// requests in a row without any answer, not even a damaged one, is not asked any more. Replaces the
// poll plan, and the session's observers of exchanges and confirmations.
std::vector<Reading> readNow(Session &session, const std::vector<Tag> &tags);

} // namespace kmr

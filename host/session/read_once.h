// Reads tags once: a value is shown only if the controller has just answered with it.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"

#include <vector>

namespace kmr {

struct Reading {
    RequestResult result; // NotSent: not asked
    Values values;        // only if the result is Done
    QString silentTag;    // if not asked because the station did not answer this tag: the tag
};

// Reads all tags once, in their order. Words and counters are read by one-shot reads; bits are
// polled, since the driver has no one-shot reads for them. A station that gives no answer, not even
// a damaged one, to two requests in a row is not asked any more. Replaces the poll plan, and the
// session's observers of exchanges and confirmations.
std::vector<Reading> readNow(Session &session, const std::vector<Tag> &tags);

} // namespace kmr

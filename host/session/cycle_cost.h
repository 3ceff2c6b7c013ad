// What one round of a poll cycle takes on the wire.
#pragma once

#include "host/session/poll_cycle.h"

namespace kmr {

struct CycleCost {
    int requests = 0; // check questions included
    int sent = 0;     // characters
    int received = 0;

    int characters() const
    {
        return sent + received;
    }
};

CycleCost costOf(const PollCycle &cycle);

// With the check questions that keep answers in step (InStep).
CycleCost costInStep(const PollCycle &cycle);

} // namespace kmr

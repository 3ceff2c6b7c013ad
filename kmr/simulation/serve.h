// Serves a controller, simulated or replayed, at the links that the command line names.
#pragma once

#include "kmr/commands/simulation.h"
#include "simulator/pacing.h"
#include "simulator/responder.h"

namespace kmr {

// Prints 'ready' and each link once all of them serve, and serves until SIGTERM or Ctrl-C. Throws
// Error (Usage, LinkFailed) before, when one can't.
void serve(const ServeOptions &where, const simulator::Responder &respond,
           simulator::Pacing pacing = simulator::Pacing());

} // namespace kmr

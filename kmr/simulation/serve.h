// Serves a controller, simulated or replayed, at the links that the command line names.
#pragma once

#include "simulator/pacing.h"
#include "simulator/responder.h"

#include <CLI/CLI.hpp>

#include <string>

namespace kmr {

// Where a command serves. With neither: at tcp://127.0.0.1:8888.
struct ServeOptions {
    std::string listen; // "tcp://127.0.0.1:8888", port 0 for any free one; empty: no TCP
    std::string pty;    // path for a link to a pseudo-terminal; empty: none
};

void addServeOptions(CLI::App &command, ServeOptions &options);

// Prints 'ready' and each link once all of them serve, and serves until SIGTERM or Ctrl-C. Throws
// Error (Usage, Link) before, when one can't.
void serve(const ServeOptions &where, const simulator::Responder &respond,
           simulator::Pacing pacing = simulator::Pacing());

} // namespace kmr

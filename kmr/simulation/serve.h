// Serves a controller, simulated or replayed, at the links of the command line.
#pragma once

#include "simulator/pacing.h"
#include "simulator/responder.h"

#include "kmr/command_definition.h"

#include <string>

namespace kmr {

// The links of a command. If both are empty: tcp://127.0.0.1:8888.
struct ServeOptions {
    std::string listen; // "tcp://127.0.0.1:8888", port 0 for any free one; empty: no TCP
    std::string pty;    // path for a link to a pseudo-terminal; empty: none
};

void addServeOptions(CommandDefinition &command, ServeOptions &options);

// Opens all links, prints 'ready' and each link, and serves until SIGTERM or Ctrl-C. Throws Error
// (Usage, Link) if one can't be opened.
void serve(const ServeOptions &where, const simulator::Responder &respond,
           simulator::Pacing pacing = simulator::Pacing());

} // namespace kmr

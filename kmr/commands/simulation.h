// The commands of kmr that stand in for a controller. As those of commands.h.
#pragma once

#include "kmr/command_line.h"

namespace CLI {
class App;
}

namespace kmr {

// Adds these commands to the command line; the one that it names sets `chosen`.
void addSimulation(CLI::App &app, Command &chosen);

// Where a command serves. With neither: at DEFAULT_LISTEN.
struct ServeOptions {
    QString listen; // "tcp://127.0.0.1:8888", port 0 for any free one; empty: no TCP
    QString pty;    // path for a link to a pseudo-terminal; empty: none
};

struct SimOptions {
    ServeOptions serve;
    bool animate = false;
    QStringList faults;     // as simulator::parseFault() takes them
    std::uint64_t seed = 0; // of the faults
    int baud = 0;           // pace of the line, bits a second; 0: none
    bool log = false;       // describe each request on stderr
    QString load;           // file with the memory at the beginning; empty: all 0
    QString save;           // file that receives the memory at the end; empty: none
};

// Runs a simulated controller of the options' station until SIGTERM or Ctrl-C.
ExitCode runSim(const Options &options, const SimOptions &sim);

struct ReplayOptions {
    ServeOptions serve;
    QString file; // what --capture has written
};

// Answers as the captured controller did, until SIGTERM or Ctrl-C.
ExitCode runReplay(const ReplayOptions &replay);

} // namespace kmr

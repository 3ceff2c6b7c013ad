// The commands of kmr that explain and test: frames, lines, addresses and poll plans. As those of
// commands.h.
#pragma once

#include "host/commands/commands.h"

#include <functional>

namespace CLI {
class App;
}

namespace kmr {

// Adds these commands to the command line; the one that it names sets `chosen`.
void addDiagnosis(CLI::App &app, std::function<ExitCode(const Options &)> &chosen);

// Explains lines of text one by one; an answer is explained by the request before it.
ExitCode runDecode(const QStringList &frames);

} // namespace kmr

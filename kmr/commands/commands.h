// The commands of kmr, each in the file of its name. Each function adds one to the command line,
// which sets `chosen` if the command is named. Values and records go to stdout, everything else to
// stderr. A command that can't begin throws Error.
#pragma once

#include "kmr/command_line.h"

namespace kmr {

class OptionReader;

void addAreas(CLI::App &app, Command &chosen);
void addCheck(CLI::App &app, Command &chosen);
void addConfig(CLI::App &app, Command &chosen, const OptionReader &reader);
void addDecode(CLI::App &app, Command &chosen);
void addDoctor(CLI::App &app, Command &chosen);
void addHelp(CLI::App &app); // runs while the command line is read
void addListen(CLI::App &app, Command &chosen);
void addLog(CLI::App &app, Command &chosen);
void addPing(CLI::App &app, Command &chosen);
void addPlan(CLI::App &app, Command &chosen);
void addPublish(CLI::App &app, Command &chosen, OptionReader &reader);
void addRead(CLI::App &app, Command &chosen);
void addRecipe(CLI::App &app, Command &chosen);
void addReplay(CLI::App &app, Command &chosen);
void addRun(CLI::App &app, Command &chosen);
void addScan(CLI::App &app, Command &chosen);
void addSeries(CLI::App &app, Command &chosen);
void addSim(CLI::App &app, Command &chosen);
void addTags(CLI::App &app, Command &chosen);
void addTrace(CLI::App &app, Command &chosen);
void addWatch(CLI::App &app, Command &chosen);
void addWrite(CLI::App &app, Command &chosen);

// The flag --version: the versions of kmr and its Qt, and the driver library with its Qt. A library
// that is missing or does not fit is reported, but is not a failure.
ExitCode runVersion(const Options &options);

} // namespace kmr

// The commands of kmr, each in the file of its name. Each function adds one to the command line,
// and that sets `chosen` when it is named. Values and records go to stdout, all else to stderr;
// what can't even be begun is thrown as Error.
#pragma once

#include "kmr/command_line.h"

namespace kmr {

class OptionReader;

void addAreas(CLI::App &app, Command &chosen);
void addCheck(CLI::App &app, Command &chosen);
void addConfig(CLI::App &app, Command &chosen, const OptionReader &reader);
void addDecode(CLI::App &app, Command &chosen);
void addDoctor(CLI::App &app, Command &chosen);
void addHelp(CLI::App &app); // it is done while the command line is read
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

// Not a command but the flag --version: the versions of kmr and of its Qt, and which driver library
// it loads, built with which Qt. A library that is missing or does not fit is reported, and no
// failure.
ExitCode runVersion(const Options &options);

} // namespace kmr

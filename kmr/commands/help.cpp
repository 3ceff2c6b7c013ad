// kmr help: the same texts as --help.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/output.h"

#include <memory>
#include <string>
#include <vector>

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr help
  kmr help recipe upload)";

} // namespace

void addHelp(CLI::App &app)
{
    const auto names = std::make_shared<std::vector<std::string>>();
    CommandDefinition command(app, "help", "Explain a command, as --help does");
    command.add("COMMAND", *names, "the command (default: kmr itself)");
    command.setHelp(HELP);
    command.setImmediateAction([&app, names] {
        print(helpOf(app, *names).trimmed()); // print() ends the line
    });
}

} // namespace kmr

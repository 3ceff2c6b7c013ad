// kmr help: the same texts as --help.
#include "host/error.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/output.h"

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr help
  kmr help recipe upload)";

const CLI::App *find(const CLI::App &app, const std::string &name)
{
    const auto commands = app.get_subcommands(
        [&name](const CLI::App *command) { return command->get_name() == name; });
    return commands.empty() ? nullptr : commands.front();
}

// Throws Error (Usage) for an unknown command. `App::help()` would explain the chosen command,
// which is this one.
QString helpOf(const CLI::App &app, const std::vector<std::string> &names)
{
    const CLI::App *command = &app;
    std::string path = app.get_name();
    for (const std::string &name : names) {
        const CLI::App *const next = find(*command, name);
        if (next == nullptr)
            throw Error(ErrorKind::Usage,
                        unknownWord(*command, toQString(name)) + "\n'kmr help' lists the commands");
        command = next;
        path += ' ' + name;
    }
    return toQString(
        command->get_formatter()->make_help(command, path, CLI::AppFormatMode::Normal));
}

} // namespace

void addHelp(CLI::App &app)
{
    const auto names = std::make_shared<std::vector<std::string>>();
    CLI::App *command = app.add_subcommand("help", "Explain a command, as --help does");
    command->add_option("COMMAND", *names, "the command (default: kmr itself)");
    command->footer(HELP);
    command->callback([&app, names] {
        print(helpOf(app, *names).trimmed()); // print() ends the line
        throw CLI::Success();
    });
}

} // namespace kmr

// kmr config: the settings in force, and their source.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/options.h"
#include "kmr/output.h"

namespace kmr {

namespace {

const char *const HELP = R"(The project's kmr.toml may hold each of these settings, for example
  link = "tcp://192.168.0.10:8888"
  tags = ["D100", "X0..17"]
The command line takes precedence over kmr.toml, and kmr.toml over the environment.

Examples:
  kmr config
  kmr config --config mixer/kmr.toml)";

ExitCode runConfig(const Options &options, const OptionReader &reader)
{
    RecordWriter records(options.format == Format::Plain ? Format::Table : options.format, "config",
                         {"key", "value", "source"}, false, print);
    for (const OptionReader::Row &row : reader.rows())
        records.add({}, {row.key, row.value, row.source});
    records.end();
    return ExitCode::Ok;
}

} // namespace

void addConfig(CLI::App &app, Command &chosen, const OptionReader &reader)
{
    CommandDefinition command(app, "config", "List the settings in force and their source");
    command.setHelp(HELP);
    command.setAction(chosen,
                      [&reader](const Options &options) { return runConfig(options, reader); });
}

} // namespace kmr

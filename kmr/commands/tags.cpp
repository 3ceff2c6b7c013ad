// kmr tags check: is a file of names good?
#include "host/project/name_table.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr tags check names.csv
  kmr read boiler.temp --names names.csv --link tcp://192.168.0.10:8888)";

const char *const CHECK_HELP =
    R"(A FILE holds a line NAME,TAG,UNIT,SCALE,COMMENT for each name, for example
  name,tag,unit,scale,comment
  boiler.temp,D100/int16,C,0.1,flow

Examples:
  kmr tags check names.csv
  kmr tags check names.csv --station 2)";

struct TagsCheckOptions {
    std::string file;
};

ExitCode runTagsCheck(const Options &options, const TagsCheckOptions &check)
{
    const QString file = toQString(check.file);
    const auto library = loadDriver(options);
    const TagReader reader(library->functions(), options.station, options.wordOrder);
    const NameTable names = loadNames(file, reader);
    printError(QString("%1: %2 names, all good").arg(file).arg(names.names().size()));
    return ExitCode::Ok;
}

} // namespace

void addTags(CLI::App &app, Command &chosen)
{
    CLI::App *tags = app.add_subcommand("tags", "Check files of names");
    tags->require_subcommand(1);
    tags->footer(HELP);

    const auto own = std::make_shared<TagsCheckOptions>();
    CLI::App *check = tags->add_subcommand("check", "Report every bad line of a file of names");
    check->add_option("FILE", own->file, "the file")->required();
    check->footer(CHECK_HELP);
    setAction(*check, chosen, own, runTagsCheck);
}

} // namespace kmr

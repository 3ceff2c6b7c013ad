// kmr tags check: is a file of names good?
#include "host/project/name_table.h"
#include "host/project/text_file.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr tags check names.csv
  kmr read boiler.temp --names names.csv --link tcp://192.168.0.10:8888)";

const char *const CHECK_HELP =
    R"(A FILE, in UTF-8, holds a line for each name. Its heading names the columns, in any order:
  name,tag,unit,scale,offset,texts,comment
  boiler.temp,D100/int16,C,0.1,-40,,flow
  valve,2#Y17,,,,0=closed;1=open,
  name        a letter or _, then anything but = , ; and double quotes
  tag         'kmr read --help' explains tags
  unit        of its numbers
  scale       shown is the controller's number times the scale, plus the offset
  offset
  texts       what numbers are called, when they are shown and written
  word-order  low or high: the word of a 32 or 64-bit value that comes first
  byte-order  low or high: the byte of a word that holds a text's first character
  comment
Only name and tag are needed. Semicolons or tabs may stand for all the commas; scale and offset may
then have a decimal comma. Lines that begin with # are comments.
A bad line stops only commands that use its name.

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
    const NameTable names = NameTable::parse(readTextFile(file), file);
    const QStringList faults = checkNames(names, tagReaderOf(options, *library));
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
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

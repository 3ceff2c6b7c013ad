// kmr: watches, reads and writes a controller of the Ostrel KMR line through its driver library.
#include "host/tags/tag.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/commands/diagnosis.h"
#include "kmr/commands/simulation.h"
#include "kmr/options.h"
#include "kmr/output.h"
#include "kmr/stop_signal.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>

#include <functional>
#include <string>
#include <vector>

namespace {

using kmr::Command;
using kmr::ExitCode;
using kmr::TAG_HELP;
using kmr::toQString;
using kmr::toQStrings;

// What CLI11 fills: it knows nothing of Qt's types.
struct CommandLine {
    std::vector<std::string> tags;
    std::string file;
    std::uint64_t count = 0;
    double seconds = 0;
    int cycle = 0;
    bool verify = false;
    bool dryRun = false;
};

const char *const EXIT_HELP =
    "Exit codes: 0 ok, 1 items failed for different reasons, or output could not be written,\n"
    "2 wrong usage, 3 the link could not be opened, 4 no answer, 5 refused by the controller,\n"
    "6 outcome unknown or verify differs, 7 driver library missing or not fitting.";

CLI::App *addTagCommand(CLI::App &app, CommandLine &line, const char *name, const char *text)
{
    CLI::App *command = app.add_subcommand(name, text);
    command->add_option("TAG", line.tags, "what to look at (default: the tags of kmr.toml)");
    return command;
}

// Each of these adds one command, and sets `chosen` when the command line names it.
void addAreas(CLI::App &app, Command &chosen)
{
    CLI::App *command = app.add_subcommand("areas", "List the controller's device areas");
    command->footer("Examples:\n  kmr areas\n  kmr areas --driver ./libostrel_kmr.so.1");
    command->callback([&chosen] { chosen = kmr::runAreas; });
}

void addConfig(CLI::App &app, const kmr::Settings &settings, Command &chosen)
{
    CLI::App *command = app.add_subcommand("config", "List the settings in force and their source");
    command->footer("The project's kmr.toml may hold each of them, for example\n"
                    "  link = \"tcp://192.168.0.10:8888\"\n  tags = [\"D100\", \"X0..17\"]\n\n"
                    "Examples:\n  kmr config\n  kmr config --config mixer/kmr.toml");
    command->callback([&settings, &chosen] {
        chosen = [&settings](const kmr::Options &options) {
            return kmr::runConfig(options, settings);
        };
    });
}

void addTags(CLI::App &app, CommandLine &line, Command &chosen)
{
    CLI::App *tags = app.add_subcommand("tags", "Look after files of names");
    tags->require_subcommand(1);
    tags->footer("Examples:\n  kmr tags check names.csv\n"
                 "  kmr read boiler.temp --names names.csv --link tcp://192.168.0.10:8888");
    CLI::App *check = tags->add_subcommand("check", "Name every bad line of a file of names");
    check->add_option("FILE", line.file, "the file")->required();
    check->footer("A FILE holds a line NAME,TAG,UNIT,SCALE,COMMENT for each name, for example\n"
                  "  name,tag,unit,scale,comment\n  boiler.temp,D100/int16,C,0.1,flow\n\n"
                  "Examples:\n  kmr tags check names.csv\n"
                  "  kmr tags check names.csv --station 2");
    check->callback([&line, &chosen] {
        chosen = [&line](const kmr::Options &options) {
            return kmr::runTagsCheck(options, toQString(line.file));
        };
    });
}

void addWatch(CLI::App &app, CommandLine &line, Command &chosen)
{
    CLI::App *command = addTagCommand(app, line, "watch", "Show tags as they change");
    CLI::Option *count = command->add_option("--count", line.count, "end after this many lines")
                             ->check(kmr::aboveZero(1e9));
    CLI::Option *seconds = command->add_option("--for", line.seconds, "end after this many seconds")
                               ->check(kmr::aboveZero(1e9));
    command
        ->add_option("--cycle", line.cycle,
                     "refresh all tags once in so many milliseconds (default: as fast as the line)")
        ->check(CLI::Range(1, 3600000));
    command->footer(
        std::string(
            "On a terminal it shows a live table (unless --count or --format is given), else a\n"
            "line for each change. A lost TCP connection is opened again.\n"
            "A station that stays silent is asked more seldom while others answer.\n"
            "Ctrl-C ends it, with a summary on stderr.\n\n") +
        TAG_HELP +
        "\n\nExamples:\n  kmr watch D100 X0x8 --link tcp://192.168.0.10:8888\n"
        "  kmr watch CV2200 --cycle 500 --count 10 --link serial:///dev/ttyUSB0");
    command->callback([&line, &chosen, count, seconds] {
        chosen = [&line, count, seconds](const kmr::Options &options) {
            kmr::WatchOptions watch{toQStrings(line.tags), {}, {}, {}};
            watch.cycle = std::chrono::milliseconds(line.cycle);
            if (count->count() > 0)
                watch.count = line.count;
            if (seconds->count() > 0)
                watch.duration =
                    std::chrono::milliseconds(static_cast<qint64>(line.seconds * 1000));
            return kmr::runWatch(options, watch);
        };
    });
}

void addRead(CLI::App &app, CommandLine &line, Command &chosen)
{
    CLI::App *command = addTagCommand(app, line, "read", "Read tags once");
    command->footer(std::string("Prints only what the controller has just answered.\n\n") +
                    TAG_HELP +
                    "\n\nExamples:\n  kmr read D100 D200x8 --link tcp://192.168.0.10:8888\n"
                    "  kmr read 2#X0x8 TV5.3 --link serial:///dev/ttyUSB0");
    command->callback([&line, &chosen] {
        chosen = [&line](const kmr::Options &options) {
            return kmr::runRead(options, toQStrings(line.tags));
        };
    });
}

void addWrite(CLI::App &app, CommandLine &line, Command &chosen)
{
    CLI::App *command = app.add_subcommand("write", "Write values, each acknowledged in turn");
    command->add_option("TAG=VALUE", line.tags, "what to write, in this order")->required();
    command->add_flag("--verify", line.verify, "read back and compare");
    command->add_flag("--dry-run", line.dryRun, "show the frames and send nothing");
    command->footer(std::string("Several values of one tag are separated by commas or blanks.\n"
                                "Behind a write that fails nothing more is written.\n\n") +
                    TAG_HELP +
                    "\n\nExamples:\n  kmr write D100=250 --link tcp://192.168.0.10:8888\n"
                    "  kmr write M0x3=1,0,1 CV2200=70000 --verify --link serial:///dev/ttyUSB0");
    command->callback([&line, &chosen] {
        chosen = [&line](const kmr::Options &options) {
            return kmr::runWrite(options, toQStrings(line.tags), {line.verify, line.dryRun});
        };
    });
}

void addRecipe(CLI::App &app, CommandLine &line, Command &chosen)
{
    CLI::App *recipe = app.add_subcommand("recipe", "Move a recipe to or from the controller");
    recipe->require_subcommand(1);
    recipe->footer("Examples:\n  kmr recipe upload mixer.csv D100 D110x3 --link "
                   "tcp://192.168.0.10:8888\n"
                   "  kmr recipe download mixer.csv --verify --link serial:///dev/ttyUSB0");
    const char *const fileHelp =
        "A recipe FILE holds a line TAG,VALUE for each tag (words and counters), for example\n"
        "  # bread\n  tag,value\n  D100,250\n  D110x3,1 2 3\n"
        "A line that begins with # is a remark; a column behind the values is refused.\n";

    CLI::App *download = recipe->add_subcommand("download", "Write a file's values");
    download->add_option("FILE", line.file, "the recipe file")->required();
    download->add_flag("--verify", line.verify, "read back and compare");
    download->footer(std::string(fileHelp) +
                     "\nExamples:\n  kmr recipe download mixer.csv --link tcp://192.168.0.10:8888\n"
                     "  kmr recipe download mixer.csv --station 2 --link serial:///dev/ttyUSB0");
    download->callback([&line, &chosen] {
        chosen = [&line](const kmr::Options &options) {
            return kmr::runRecipeDownload(options, toQString(line.file), line.verify);
        };
    });

    CLI::App *compare = recipe->add_subcommand("compare", "Show where values differ from a file's");
    compare->add_option("FILE", line.file, "the recipe file")->required();
    compare->footer(std::string(fileHelp) +
                    "\nExamples:\n  kmr recipe compare mixer.csv --link tcp://192.168.0.10:8888\n"
                    "  kmr recipe compare mixer.csv --format csv");
    compare->callback([&line, &chosen] {
        chosen = [&line](const kmr::Options &options) {
            return kmr::runRecipeCompare(options, toQString(line.file));
        };
    });

    CLI::App *upload = recipe->add_subcommand("upload", "Read values into a file");
    upload->add_option("FILE", line.file, "the recipe file; written whole or not at all")
        ->required();
    upload->add_option("TAG", line.tags, "what to upload (default: the tags that FILE holds)");
    upload->footer(
        std::string(fileHelp) +
        "Without a TAG the values in FILE are replaced and all else stays as it is; with "
        "TAGs\nFILE is written anew.\n"
        "\nExamples:\n  kmr recipe upload mixer.csv --link tcp://192.168.0.10:8888\n"
        "  kmr recipe upload new.csv D100 D110x3 --link serial:///dev/ttyUSB0");
    upload->callback([&line, &chosen] {
        chosen = [&line](const kmr::Options &options) {
            return kmr::runRecipeUpload(options, toQString(line.file), toQStrings(line.tags));
        };
    });
}

// Says at the end of each command's help where the options of all commands are listed.
void nameCommonOptions(CLI::App &app)
{
    for (CLI::App *command : app.get_subcommands({})) {
        command->footer(command->get_footer() + "\n\n'kmr --help' lists the options that go with "
                                                "every command, such as --link and --format.");
        nameCommonOptions(*command);
    }
}

// "kmr recipe": as far as the command line could be understood.
QString understoodCommand(const CLI::App &app)
{
    QString text = toQString(app.get_name());
    for (const CLI::App *command : app.get_subcommands())
        text += ' ' + understoodCommand(*command);
    return text;
}

// The parser's own words, but for what it doesn't know: it would only miss a command.
QString faultOf(const CLI::App &app, const CLI::ParseError &error)
{
    const std::vector<std::string> unknown = app.remaining(true);
    const bool isMissing = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    if (!isMissing || unknown.empty())
        return toQString(error.what());
    const QString first = toQString(unknown.front());
    return QString(first.startsWith('-') ? "unknown option %1" : "unknown command \"%1\"")
        .arg(first);
}

// Each line begins with the program's name, since those of several programs may mix.
ExitCode fail(ExitCode code, const QString &text)
{
    for (const QString &line : text.split('\n'))
        kmr::printError("kmr: " + line);
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    CommandLine line;
    Command chosen;
    CLI::App app("kmr talks to controllers of the Ostrel KMR line through their driver library.",
                 "kmr");
    app.fallthrough(); // global options may also follow the command
    app.require_subcommand(1);
    app.footer(std::string(EXIT_HELP) +
               "\n\nExamples:\n  kmr watch D100 X0x8 --link tcp://192.168.0.10:8888\n"
               "  kmr doctor --link serial:///dev/ttyUSB0?baud=19200\n\n"
               "'kmr COMMAND --help' tells more about a command.");
    kmr::Settings settings(app);
    app.set_version_flag("--version", "", "Tell the versions of kmr, Qt and the driver library");
    addAreas(app, chosen);
    addConfig(app, settings, chosen);
    addTags(app, line, chosen);
    addWatch(app, line, chosen);
    addRead(app, line, chosen);
    addWrite(app, line, chosen);
    addRecipe(app, line, chosen);
    kmr::addSimulation(app, chosen);
    kmr::addDiagnosis(app, chosen);
    nameCommonOptions(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForVersion &) {
        chosen = kmr::runVersion;
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // help was asked for
        return static_cast<int>(
            fail(ExitCode::Usage, QString("%1\n'%2 --help' tells more")
                                      .arg(faultOf(app, error), understoodCommand(app))));
    }
    try {
        kmr::catchStopSignals();
        return static_cast<int>(kmr::exitCodeAfterLosses(chosen(settings.resolve())));
    } catch (const kmr::Error &error) {
        return static_cast<int>(fail(kmr::exitCodeOf(error.kind()), error.text()));
    }
}

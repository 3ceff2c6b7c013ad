// kmr: watches, reads and writes a controller of the Ostrel KMR line through its driver library.
#include "host/line/frame_text.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/options.h"
#include "kmr/output.h"
#include "kmr/stop_signal.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>

#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace {

using kmr::ExitCode;
using kmr::toQString;

const char *const HELP =
    R"(Exit codes: 0 success, 1 items failed for different reasons, a step of 'kmr run' failed, or
output could not be written, 2 wrong usage, 3 the link could not be opened, 4 no answer,
5 refused by the controller, 6 outcome unknown or values differ, 7 driver library missing
or not suitable.

A tcp:// link is Modbus ASCII over raw TCP, not Modbus TCP.

Examples:
  kmr watch D100 X0x8 --link tcp://192.168.0.10:8888
  kmr doctor --link serial:///dev/ttyUSB0?baud=19200

'kmr COMMAND --help' explains a command.)";

// In the order of the help.
void addCommands(CLI::App &app, kmr::OptionReader &reader, kmr::Command &chosen)
{
    kmr::addHelp(app);
    kmr::addAreas(app, chosen);
    kmr::addConfig(app, chosen, reader);
    kmr::addTags(app, chosen);
    kmr::addWatch(app, chosen);
    kmr::addLog(app, chosen);
    kmr::addPublish(app, chosen, reader);
    kmr::addRead(app, chosen);
    kmr::addWrite(app, chosen);
    kmr::addRecipe(app, chosen);
    kmr::addRun(app, chosen);
    kmr::addSim(app, chosen);
    kmr::addReplay(app, chosen);
    kmr::addDecode(app, chosen);
    kmr::addTrace(app, chosen);
    kmr::addListen(app, chosen);
    kmr::addCheck(app, chosen);
    kmr::addSeries(app, chosen);
    kmr::addPing(app, chosen);
    kmr::addScan(app, chosen);
    kmr::addDoctor(app, chosen);
    kmr::addPlan(app, chosen);
}

// Adds a reference to the common options at the end of each command's help.
void nameCommonOptions(CLI::App &app)
{
    for (CLI::App *command : app.get_subcommands({})) {
        command->footer(command->get_footer() + "\n\n'kmr --help' lists the options of every "
                                                "command, such as --link and --format.");
        nameCommonOptions(*command);
    }
}

// The recognised part of the command line: "kmr recipe".
QString understoodCommand(const CLI::App &app)
{
    QString text = toQString(app.get_name());
    for (const CLI::App *command : app.get_subcommands())
        text += ' ' + understoodCommand(*command);
    return text;
}

// Each line begins with the program's name, since lines of several programs may mix.
ExitCode fail(ExitCode code, const QString &text)
{
    for (const QString &line : text.split('\n'))
        kmr::printError("kmr: " + line);
    return code;
}

ExitCode showHelp(const CLI::App &app)
{
    kmr::catchStopSignals(); // it is not an error if the reader has gone
    kmr::print(toQString(app.help()).trimmed());
    return kmr::exitCodeAfterLosses(ExitCode::Ok);
}

// The first argument that is not in the encoding of the locale: a file with another name than the
// typed one would be read or written.
std::optional<QByteArray> foreignArgument(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (QString::fromLocal8Bit(argv[i]).toLocal8Bit() != argv[i])
            return QByteArray(argv[i]);
    }
    return std::nullopt;
}

// Else what is opened next would take the place of a stream that the caller has closed, and values
// would be written there.
void occupyStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1)
            open("/dev/null", O_RDONLY); // takes the lowest number; what is written fails
    }
}

} // namespace

int main(int argc, char *argv[])
{
    occupyStandardStreams();
    const QCoreApplication application(argc, argv);
    if (const auto foreign = foreignArgument(argc, argv)) {
        return static_cast<int>(
            fail(ExitCode::Usage, QString("%1 is not UTF-8: kmr can't use that name; rename it, or "
                                          "link to it by another name")
                                      .arg(kmr::visible(*foreign))));
    }
    kmr::Command chosen;
    CLI::App app("kmr talks to controllers of the Ostrel KMR line through their driver library.",
                 "kmr");
    app.fallthrough(); // global options may also follow the command
    app.require_subcommand(1);
    app.footer(HELP);
    kmr::OptionReader reader(app);
    app.set_version_flag("-V,--version", "",
                         "Print the versions of kmr, Qt and the driver library");
    addCommands(app, reader, chosen);
    nameCommonOptions(app);

    if (argc == 1)
        return static_cast<int>(showHelp(app));
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForVersion &) {
        chosen = kmr::runVersion;
    } catch (const CLI::CallForHelp &) {
        return static_cast<int>(showHelp(app));
    } catch (const CLI::Success &) { // 'kmr help' has printed the help
        return static_cast<int>(kmr::exitCodeAfterLosses(ExitCode::Ok));
    } catch (const CLI::ParseError &error) {
        return static_cast<int>(fail(
            ExitCode::Usage,
            QString("%1\nsee '%2 --help'").arg(kmr::faultOf(app, error), understoodCommand(app))));
    } catch (const kmr::Error &error) {
        return static_cast<int>(fail(kmr::exitCodeOf(error.kind()), error.text()));
    }
    try {
        kmr::catchStopSignals();
        return static_cast<int>(kmr::exitCodeAfterLosses(chosen(reader.read())));
    } catch (const kmr::Error &error) {
        return static_cast<int>(fail(kmr::exitCodeOf(error.kind()), error.text()));
    }
}

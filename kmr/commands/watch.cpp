// kmr watch: shows tags as they change.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/reconnection.h"
#include "kmr/stop_signal.h"
#include "kmr/watch/terminal_state.h"
#include "kmr/watch/watcher.h"

#include <algorithm>
#include <thread>
#include <unistd.h>

namespace kmr {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds STOP_CHECK(50);

const char *const HELP =
    R"(Shows a live table on a terminal, unless --count or --format is given; otherwise a
line for each change. A lost line is opened again: a TCP connection, and a serial
port also under its adapter's name in /dev/serial/by-id.
A silent station is asked less often while others answer.
q or Ctrl-C ends it, with a summary on stderr.

Keys of the live table: arrows and pages move, / filters, s sorts, r reverses, space
freezes, f and F change the number format of one or all, x hides and X shows hidden
tags, w writes the selected tag after a confirmation, m shows messages, ? explains all.

)";
const char *const EXAMPLES = R"(

Examples:
  kmr watch D100 X0x8 --link tcp://192.168.0.10:8888
  kmr watch CV2200 --cycle 500 --count 10 --link serial:///dev/ttyUSB0)";

struct WatchOptions {
    std::vector<std::string> tags;
    std::optional<std::uint64_t> count; // changes to show
    std::optional<double> seconds;      // time to watch
    int cycle = 0;                      // milliseconds to refresh all tags; 0: the shortest
};

// Whether to show the live table. A terminal that can't is told why it gets lines.
bool isTable(const Options &options, const WatchOptions &watch)
{
    if (watch.count || options.isFormatAsked || isatty(STDOUT_FILENO) != 1)
        return false;
    const QString why = whyNoScreen();
    if (!why.isEmpty())
        printError("kmr: no live table, a line for each change instead: " + why);
    return why.isEmpty();
}

// Shows each change until the wanted end, or Ctrl-C.
ExitCode runWatch(const Options &options, const WatchOptions &watch)
{
    Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(toQStrings(watch.tags));
    Session &session = connection.open();
    Watcher watcher(session, tags, options.format, isTable(options, watch),
                    milliseconds(watch.cycle), watch.count);
    watcher.beginPolling();

    const steady_clock::time_point begin = steady_clock::now();
    const auto isOver = [&] {
        return stopFlag() || watcher.isOver() ||
               (watch.seconds &&
                steady_clock::now() - begin >= std::chrono::duration<double>(*watch.seconds));
    };
    Reconnection reconnection(connection);
    const auto bringBack = [&] {
        if (!watcher.isLost())
            reconnection.noteAnswer();
        watcher.noteLoss();
        return reconnection.await([&] {
            watcher.draw();
            return isOver();
        });
    };
    while (!isOver()) {
        const std::chrono::nanoseconds pause = watcher.pause();
        if (pause > std::chrono::nanoseconds::zero()) {
            session.confirm(false);
            std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(pause, STOP_CHECK));
        } else if (session.step() == PollLoop::Step::LineLost && bringBack()) {
            watcher.noteReconnection();
        }
        watcher.draw();
        watcher.writeConfirmed();
    }
    watcher.end();
    printError(summary(session.statistics()));
    return watcher.outcome();
}

} // namespace

void addWatch(CLI::App &app, Command &chosen)
{
    const auto watch = std::make_shared<WatchOptions>();
    CommandDefinition command(app, "watch", "Show tags as they change");
    command.add("TAG", watch->tags, WANTED_TAGS);
    command.add("--count", watch->count, "end after this many lines").between(1, 1000000000);
    command.add("--for", watch->seconds, "end after this many seconds").aboveZero(1e9);
    command
        .add("--cycle", watch->cycle,
             "milliseconds to refresh all tags once (default: as fast as the line)")
        .between(1, 3600000);
    command.setHelp(std::string(HELP) + TAG_HELP + EXAMPLES);
    command.setAction(chosen, watch, runWatch);
}

} // namespace kmr

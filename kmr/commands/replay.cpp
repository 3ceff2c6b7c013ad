// kmr replay: answers as a captured controller did.
#include "host/line/frame_text.h"
#include "host/project/capture.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/outcome.h"
#include "kmr/output.h"
#include "kmr/simulation/capture_replay.h"
#include "kmr/simulation/serve.h"

#include <set>

namespace kmr {

namespace {

const char *const HELP =
    R"(Each request is answered as in the capture: with the same delays,
or not at all. A repeated request gets the next captured answer, and after the last one that again.
A request that is not in the capture is reported on stderr and not answered.
Prints 'ready' and the link to use when it is ready. SIGTERM or Ctrl-C ends it.

Examples:
  kmr replay field.jsonl
  kmr replay field.jsonl --pty /tmp/controller)";

struct ReplayOptions {
    ServeOptions serve;
    std::string file;
};

ExitCode runReplay(const Options &, const ReplayOptions &replay)
{
    const QString file = toQString(replay.file);
    const Capture captured = readCapture(file);
    if (!captured.cut.isEmpty())
        printError(captured.cut);
    CaptureReplay capture(captured);
    std::set<QByteArray> reported; // each only once: a host repeats its requests
    serve(replay.serve, [&](const QByteArray &line) {
        const std::optional<simulator::Plan> plan = capture.answer(line);
        if (!plan && reported.insert(line).second) {
            printError(QString("%1 not in %2, no answer: %3  %4")
                           .arg(now(), file, visible(line), toText(explainLine(line))));
        }
        return plan.value_or(simulator::Plan());
    });
    return ExitCode::Ok;
}

} // namespace

void addReplay(CLI::App &app, Command &chosen)
{
    const auto replay = std::make_shared<ReplayOptions>();
    CommandDefinition command(app, "replay", "Answer as a captured controller did");
    command.add("FILE", replay->file, "a file of --capture").required();
    addServeOptions(command, replay->serve);
    command.setHelp(HELP);
    command.setAction(chosen, replay, runReplay);
}

} // namespace kmr

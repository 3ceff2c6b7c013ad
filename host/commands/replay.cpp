#include "host/capture.h"
#include "host/commands/capture_replay.h"
#include "host/commands/outcome.h"
#include "host/commands/output.h"
#include "host/commands/serve.h"
#include "host/commands/simulation.h"
#include "host/frame_text.h"

#include <set>

namespace kmr {

ExitCode runReplay(const ReplayOptions &replay)
{
    const Capture captured = readCapture(replay.file);
    if (!captured.cut.isEmpty())
        printError(captured.cut);
    CaptureReplay capture(captured);
    std::set<QByteArray> reported; // each once: a host sends the same again and again
    serve(replay.serve, [&](const QByteArray &line) {
        const std::optional<simulator::Plan> plan = capture.answer(line);
        if (!plan && reported.insert(line).second) {
            printError(QString("%1 not in %2, no answer: %3  %4")
                           .arg(now(), replay.file, visible(line), toText(explainLine(line))));
        }
        return plan.value_or(simulator::Plan());
    });
    return ExitCode::Ok;
}

} // namespace kmr

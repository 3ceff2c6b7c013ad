#include "host/line/frame_text.h"
#include "host/project/capture.h"
#include "kmr/commands/simulation.h"
#include "kmr/outcome.h"
#include "kmr/output.h"
#include "kmr/simulation/capture_replay.h"
#include "kmr/simulation/serve.h"

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

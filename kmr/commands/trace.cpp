// kmr trace: explains a capture's traffic.
#include "host/line/line_trace.h"
#include "host/project/capture.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/frame_records.h"
#include "kmr/output.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Each line: time, direction (> sent, < received), frame, meaning. With --trace any
command explains its traffic while it runs. An incomplete last line is reported and left
out; the command then ends with 1.

Examples:
  kmr read D100 --capture field.jsonl --link serial:///dev/ttyUSB0
  kmr trace field.jsonl)";

struct TraceOptions {
    std::string file;
};

ExitCode runTrace(const Options &options, const TraceOptions &what)
{
    const Capture capture = readCapture(toQString(what.file));
    RecordWriter records(options.format, "trace", tracedFieldNames(), false, print);
    LineTrace trace(
        [&records](const TracedLine &line) { records.add(toText(line), tracedFields(line)); });
    for (const CapturedPiece &piece : capture.pieces)
        trace.add(capture.begin.addMSecs(piece.microseconds / 1000), piece.isSent,
                  piece.characters);
    trace.flush();
    records.end();
    if (capture.cut.isEmpty())
        return ExitCode::Ok;
    printError(capture.cut);
    return ExitCode::ItemFailed;
}

} // namespace

void addTrace(CLI::App &app, Command &chosen)
{
    const auto trace = std::make_shared<TraceOptions>();
    CommandDefinition command(app, "trace", "Explain the traffic of a capture");
    command.add("FILE", trace->file, "a file of --capture").required();
    command.setHelp(HELP);
    command.setAction(chosen, trace, runTrace);
}

} // namespace kmr

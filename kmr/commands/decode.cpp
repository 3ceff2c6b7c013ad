// kmr decode: explains typed lines.
#include "host/line/frame_text.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/frame_records.h"
#include "kmr/output.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(An answer to a read does not say which elements it has: give the request before it.
Ends with 1 if a line is not a good frame.

Examples:
  kmr decode :01031064000880
  kmr decode :01031064000286 :01030400FA0001FD)";

struct DecodeOptions {
    std::vector<std::string> frames;
};

QString headline(const FrameText &frame)
{
    const QString station =
        frame.station == "00" ? QString("all stations") : "station " + frame.station;
    switch (frame.kind) {
    case FrameKind::Request:
        return "request to " + station;
    case FrameKind::Answer:
        return "answer of " + station;
    case FrameKind::RequestOrAnswer:
        return "request to " + station + ", or its answer, which is the same";
    case FrameKind::Refusal:
        return "refusal of " + station;
    case FrameKind::Unreadable:
        break;
    }
    return "not a frame of this line";
}

QString explanation(const FrameText &frame)
{
    const std::pair<const char *, QString> lines[] = {
        {"function", frame.function}, {"address ", frame.addressRange},
        {"elements", frame.elements}, {"also    ", frame.aliases.join(", ")},
        {"values  ", frame.values},   {"reason  ", frame.exception},
        {"LRC     ", frame.lrc}};
    QString text = headline(frame);
    for (const auto &[name, value] : lines) {
        if (!value.isEmpty())
            text += QString("\n  ") + name + "  " + value;
    }
    return text;
}

// An answer is explained by the request before it.
ExitCode runDecode(const Options &options, const DecodeOptions &decode)
{
    RecordWriter records(options.format, "decode", frameFieldNames(), false, print);
    ExitCode code = ExitCode::Ok;
    QByteArray before;
    for (const QString &typed : toQStrings(decode.frames)) {
        const QByteArray line = lineFromText(typed);
        const FrameText frame = explainLine(line, before);
        records.add(explanation(frame), frameFields(typed, kindName(frame.kind), frame));
        if (!frame.isGood) {
            printError(typed + ": " + frame.fault);
            code = ExitCode::ItemFailed;
        }
        before = line;
    }
    records.end();
    return code;
}

} // namespace

void addDecode(CLI::App &app, Command &chosen)
{
    const auto decode = std::make_shared<DecodeOptions>();
    CommandDefinition command(app, "decode", "Explain lines from the wire");
    command.add("FRAME", decode->frames, "a line, ':' to LRC; CR LF may be left out").required();
    command.setHelp(HELP);
    command.setAction(chosen, decode, runDecode);
}

} // namespace kmr

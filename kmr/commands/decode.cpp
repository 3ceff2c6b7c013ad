// Explains lines of text: those that are typed, and those of a capture.
#include "host/line/line_trace.h"
#include "host/project/capture.h"
#include "kmr/commands/diagnosis.h"
#include "kmr/output.h"

namespace kmr {

namespace {

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
    return "no frame of this line";
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

QString kindName(FrameKind kind)
{
    switch (kind) {
    case FrameKind::Request:
        return "request";
    case FrameKind::Answer:
        return "answer";
    case FrameKind::RequestOrAnswer:
        return "request or answer";
    case FrameKind::Refusal:
        return "refusal";
    case FrameKind::Unreadable:
        break;
    }
    return "unreadable";
}

// The direction may tell a request from its answer.
QString kindName(const TracedLine &line)
{
    if (line.isSent && line.frame.kind == FrameKind::RequestOrAnswer)
        return "request";
    return line.isEcho && line.frame.kind == FrameKind::Request ? "echo"
                                                                : kindName(line.frame.kind);
}

const QStringList &frameFieldNames()
{
    static const QStringList NAMES = {"frame",     "kind",     "station", "function",
                                      "address",   "elements", "also",    "values",
                                      "exception", "lrc",      "error"};
    return NAMES;
}

std::vector<Field> frameFields(const QString &characters, const QString &kind,
                               const FrameText &frame)
{
    return {characters,
            kind,
            textField(frame.station),
            textField(frame.function),
            textField(frame.addressRange),
            textField(frame.elements),
            textField(frame.aliases.join(", ")),
            textField(frame.values),
            textField(frame.exception),
            textField(frame.lrc),
            textField(frame.fault)};
}

} // namespace

ExitCode runDecode(const Options &options, const QStringList &frames)
{
    RecordWriter records(options.format, "decode", frameFieldNames(), false, print);
    ExitCode code = ExitCode::Ok;
    QByteArray before;
    for (const QString &typed : frames) {
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

ExitCode runTrace(const Options &options, const QString &file)
{
    const Capture capture = readCapture(file);
    RecordWriter records(options.format, "trace",
                         QStringList{"time", "direction"} + frameFieldNames(), false, print);
    LineTrace trace([&records](const TracedLine &line) {
        std::vector<Field> fields =
            frameFields(visible(line.characters), kindName(line), line.frame);
        fields.insert(fields.begin(), {timeText(line.time), line.isSent ? "sent" : "received"});
        records.add(toText(line), fields);
    });
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

} // namespace kmr

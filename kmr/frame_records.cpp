#include "kmr/frame_records.h"

namespace kmr {

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

QStringList tracedFieldNames()
{
    return QStringList{"time", "direction"} + frameFieldNames();
}

std::vector<Field> tracedFields(const TracedLine &line)
{
    std::vector<Field> fields = frameFields(visible(line.characters), kindName(line), line.frame);
    fields.insert(fields.begin(), {timeText(line.time), line.isSent ? "sent" : "received"});
    return fields;
}

} // namespace kmr

#include "host/commands/connection.h"
#include "host/commands/diagnosis.h"
#include "host/frame_text.h"

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

void printFrame(const FrameText &frame)
{
    print(headline(frame));
    if (!frame.function.isEmpty())
        print("  function  " + frame.function);
    if (!frame.addressRange.isEmpty())
        print("  address   " + frame.addressRange);
    if (!frame.elements.isEmpty())
        print("  elements  " + frame.elements);
    if (!frame.aliases.isEmpty())
        print("  also      " + frame.aliases.join(", "));
    if (!frame.values.isEmpty())
        print("  values    " + frame.values);
    if (!frame.exception.isEmpty())
        print("  reason    " + frame.exception);
    if (!frame.lrc.isEmpty())
        print("  LRC       " + frame.lrc);
}

} // namespace

ExitCode runDecode(const QStringList &frames)
{
    ExitCode code = ExitCode::Ok;
    QByteArray before;
    for (const QString &typed : frames) {
        const QByteArray line = lineFromText(typed);
        const FrameText frame = explainLine(line, before);
        printFrame(frame);
        if (!frame.isGood) {
            printError(typed + ": " + frame.fault);
            code = ExitCode::ItemFailed;
        }
        before = line;
    }
    return code;
}

} // namespace kmr

#include "host/trace.h"

#include "host/capture.h"
#include "host/commands/connection.h"
#include "host/commands/diagnosis.h"

namespace kmr {

ExitCode runTrace(const QString &file)
{
    const Capture capture = readCapture(file);
    LineTrace trace([](const QString &line) { print(line); });
    for (const CapturedPiece &piece : capture.pieces)
        trace.add(capture.begin.addMSecs(piece.microseconds / 1000), piece.isSent,
                  piece.characters);
    trace.flush();
    return ExitCode::Ok;
}

} // namespace kmr

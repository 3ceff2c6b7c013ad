// The output of commands: values and records on stdout, everything else on stderr.
#pragma once

#include "kmr/exit_code.h"

#include <QString>

#include <functional>

namespace kmr {

// Writes a line to stdout at once. If it can't be written, the stop flag is set and further lines
// are dropped; unless the reader has gone, reportLoss() says why.
void print(const QString &line);

// Sets the stop flag if nobody reads stdout any more. To be called often by code that may print
// nothing for a long time.
void stopWithoutReader();

// Writes a line to stderr, or hands it to the sink.
void printError(const QString &line);

// From now on printError() hands its lines to `sink`, so that a drawing on the terminal can make
// room for them. An empty sink ends this.
using ErrorSink = std::function<void(const QString &line)>;
void setErrorSink(ErrorSink sink);

// Writes a line to stderr, whatever the sink: for sinks.
void writeError(const QString &line);

// Reports on stderr what could not be written. The program continues.
void reportLoss(const QString &text);

// The program's exit code: `code`, but ItemFailed instead of Ok if a loss was reported.
ExitCode exitCodeAfterLosses(ExitCode code);

} // namespace kmr

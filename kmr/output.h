// What a command reports: values and records on stdout, all else on stderr.
#pragma once

#include "kmr/exit_code.h"

#include <QString>

#include <functional>

namespace kmr {

// Writes a line to stdout at once. When it can't be written, the stop flag is set and further lines
// are dropped; unless the reader has gone, reportLoss() says why.
void print(const QString &line);

// Sets the stop flag when nobody reads stdout any more. To be called often where there may be
// nothing to print for long.
void stopWithoutReader();

// Writes a line to stderr, or hands it to the sink.
void printError(const QString &line);

// From now on printError() hands its lines to `sink`, so that what is drawn on a terminal can make
// room for them. An empty one ends it.
using ErrorSink = std::function<void(const QString &line)>;
void setErrorSink(ErrorSink sink);

// Writes a line to stderr, whatever the sink: for the sink.
void writeError(const QString &line);

// Says on stderr what could not be written. The program goes on.
void reportLoss(const QString &text);

// The program's exit code: `code`, but ItemFailed instead of Ok once a loss was reported.
ExitCode exitCodeAfterLosses(ExitCode code);

} // namespace kmr

// What a command tells: values and records on stdout, all else on stderr.
#pragma once

#include "host/error.h"

#include <QString>

namespace kmr {

// Writes a line to stdout at once. When it can't be written, the stop flag is set and further lines
// are dropped; where the reason is another than a reader that has gone, reportLoss() tells it.
void print(const QString &line);

// Writes a line to stderr.
void printError(const QString &line);

// Tells on stderr what could not be written. The program goes on.
void reportLoss(const QString &text);

// The program's exit code: `code`, but ItemFailed instead of Ok once a loss was reported.
ExitCode exitCodeAfterLosses(ExitCode code);

} // namespace kmr

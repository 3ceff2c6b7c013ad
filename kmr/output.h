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

// Writes a line to stderr.
void printError(const QString &line);

// Sets functions that printError() calls before and after it writes, so that a drawing on the
// terminal can be removed and drawn again. Empty functions end this.
void setAroundErrors(std::function<void()> before, std::function<void()> after);

// Reports on stderr what could not be written. The program continues.
void reportLoss(const QString &text);

// The program's exit code: `code`, but ItemFailed instead of Ok if a loss was reported.
ExitCode exitCodeAfterLosses(ExitCode code);

} // namespace kmr

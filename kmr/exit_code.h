// The exit codes of kmr, for scripts.
#pragma once

#include "host/error.h"

namespace kmr {

enum class ExitCode {
    Ok = 0,
    ItemFailed = 1, // some items failed, for different reasons, or output could not be written
    Usage = 2,      // wrong arguments or a bad input file
    LinkFailed = 3, // the link could not be opened
    NoAnswer = 4,   // no answer, or none that could be understood; a write may have been done
    Refused = 5,    // the controller answered with an exception
    Unknown = 6,    // it is not known whether a write was carried out, or reading back differs
    Library = 7     // the driver library is missing or does not fit
};

inline ExitCode exitCodeOf(ErrorKind kind)
{
    switch (kind) {
    case ErrorKind::Usage:
        return ExitCode::Usage;
    case ErrorKind::Output:
        return ExitCode::ItemFailed;
    case ErrorKind::Link:
        return ExitCode::LinkFailed;
    case ErrorKind::Library:
        break;
    }
    return ExitCode::Library;
}

} // namespace kmr

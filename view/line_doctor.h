// Examines the line as 'kmr doctor' does, in the thread of the line.
#pragma once

#include "host/line/line_diagnosis.h"
#include "view/line_thread.h"

#include <optional>

namespace kmr {

// Opens the link on its own and asks for one element of the first tag, or for D0 of station 1.
// Nothing when it is stopped. No session may exist.
std::optional<Diagnosis> examine(const DriverFunctions &driver, const LineSetup &setup,
                                 const std::atomic<bool> &stop);

} // namespace kmr

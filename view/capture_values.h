// The values that a capture's answers confirmed, with their times, for trends.
#pragma once

#include "host/project/capture.h"
#include "view/recording.h"

namespace kmr {

// Each element that was read is a tag; an attempt that failed is a gap, a confirmed write a mark.
// Returns whether there is any value.
bool readValues(const Capture &capture, Recording &recording);

} // namespace kmr
